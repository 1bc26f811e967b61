// GameState: the base of every state. A state is described by its own XML file: name,
// position, size, the model files it shows ("URL") and its actions. Loading parses that
// file and builds the models; each frame the running state places its models and appends
// them to the Game's draw list.
#pragma once

#include <list>
#include <map>
#include <string>

#include <xercesc/dom/DOMDocument.hpp>

class Game;
struct Model;
struct StateAction;

class GameState {
public:
    // Loads the state file at once (the GameState versions of the operations run).
    GameState(Game* game, std::string file);
    virtual ~GameState();

    virtual void Load();
    virtual void SubmitModels();
    virtual void Reset();
    virtual bool IsLoaded();
    virtual void Update(int value);
    virtual void SetVisible(bool visible);
    virtual std::string GetName();
    virtual void CompleteLoad();

    // Runs the per-frame action pass: held triggers select actions, events switch states,
    // the current frame steps on ticks. applyMovement: also apply the ten movements.
    void RunActions(bool applyMovement);

    std::list<Model*> m_Models;
    float m_Position[3] = {0.0f, 0.0f, 0.0f};
    float m_Rotation[3] = {0.0f, 0.0f, 0.0f};
    int m_Width = 1;
    int m_Height = 1;
    int m_CurrentFrame = 1;
    std::map<std::string, StateAction*> m_Actions;
    std::string m_CurrentAction;
    xercesc::DOMDocument* m_Document = nullptr;
    std::string m_BackgroundMusic;
    bool m_Loaded = false;
    int m_LastUpdate = 0;
    std::string m_Name;
    Game* m_Game = nullptr;
    std::string m_DefaultAction;
    std::string m_File;
    std::map<std::string, Model*> m_NamedModels;

protected:
    // Imports one model file into a new Model appended to m_Models (empty when the file
    // cannot be read).
    void LoadModelFile(const std::string& url);

private:
    // The parts of Load that read the state's document.
    void ReadStateValues();
    void ReadModels();
    void ReadActions();
    // One of the ten movements ("RotateUp" ... "ZoomOut") by action name; others do nothing.
    void ApplyMovement(const std::string& actionName);
};
