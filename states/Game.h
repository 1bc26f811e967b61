// Game: the one top-level object. It reads the state table ("./Assets/states.xml"), owns
// the states, and holds what the frame loop works on: timer and tick flag, keyboard record,
// current state name, title, viewport and the per-frame draw list.
#pragma once

#include <list>
#include <map>
#include <string>

#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/HandlerBase.hpp>

#include "model/ModelLook.h"
#include "states/Keyboard.h"

class GameState;
struct Model;

struct Viewport {
    virtual ~Viewport() = default;
    int m_Width = 0;
    int m_Height = 0;
};

class Game {
public:
    // Reads the state table, then prints "Finished loading xml.\n".
    Game();
    // Reads the state table from another file (tests); same behaviour as Game().
    explicit Game(std::string statesFile);
    virtual ~Game();

    // (Re)reads the state table named by m_StatesFile. An unknown model look is named in one
    // console line and the classic look is used.
    void LoadStates();

    // Whether a stored key character was pressed in this frame. Only codes 0 to 127 can
    // match, and the byte 0xFF (no key configured) never does.
    bool KeyPressedThisFrame(char key) const;
    // The reload key re-reads the state table; the return key returns to the default state.
    void HandleGlobalKeys();
    // Makes the default state current and resets every state in name order.
    void ReturnToDefaultState();
    // Tells every state whether it is shown; the current state, once loaded, is updated with
    // the elapsed milliseconds (and fills the draw list); until then the loading screen shows.
    void UpdateStates(int elapsed);

    bool m_Active = true;
    int m_TimerLastClock = 0;
    int m_TimerCurrentClock = 0;
    int m_SpareCounter = 0;
    int m_TickAccumulator = 0;
    int m_FrameStartClock = 0;
    int m_FrameEndClock = 0;
    int m_FrameDuration = 20;
    std::string m_StatesFile = "./Assets/states.xml";
    // Read from an optional "reload_action" element; 0xFF (never fires) without one.
    char m_ReloadKey = static_cast<char>(0xFF);
    char m_ReturnKey = 0;
    char m_PauseKey = 'P';
    std::string m_DefaultState;
    std::map<std::string, GameState*> m_States;
    GameState* m_Loader = nullptr;
    std::map<std::string, void*> m_SecondNames;
    std::string m_SpareText;
    int m_FramesPerSecond = 0;
    int m_FrameCounter = 0;
    int m_SecondAccumulator = 0;
    xercesc::XercesDOMParser* m_Parser = nullptr;
    xercesc::HandlerBase* m_ErrorHandler = nullptr;
    int m_TickRate = 15;
    bool m_Tick = false;
    std::string m_Title;
    std::string m_CurrentState;
    xercesc::DOMDocument* m_Data = nullptr;
    Keyboard m_Keyboard;
    Viewport m_Viewport;
    std::list<Model*> m_DrawList;
    // How models are imported and drawn: from the optional "model_look" element ("classic",
    // the default, or "authored"); read before any state is loaded.
    ModelLook m_ModelLook = ModelLook::Classic;
};
