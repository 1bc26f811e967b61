// The frame's global keys and state walk: which states are shown, updated and reset.
#include <memory>
#include <string>
#include <vector>

#include "shell/Frame.h"
#include "shell/KeyboardInput.h"
#include "shell_test_support.h"
#include "states/GameState.h"

namespace {

// A state that writes what the frame asks of it into a shared log.
class RecordingState : public GameState {
public:
    RecordingState(Game* game, const std::string& file, std::string name,
                   std::vector<std::string>* log, bool loaded = true)
        : GameState(game, file), m_Label(std::move(name)), m_Log(log), m_IsLoaded(loaded) {}

    bool IsLoaded() override { return m_IsLoaded; }
    void SetVisible(bool visible) override {
        m_Log->push_back(m_Label + (visible ? " shown" : " hidden"));
    }
    void Update(int value) override {
        m_Log->push_back(m_Label + " update " + std::to_string(value));
    }
    void Reset() override { m_Log->push_back(m_Label + " reset"); }

    std::string m_Label;
    std::vector<std::string>* m_Log;
    bool m_IsLoaded;
};

class FrameTest : public ShellTest {
protected:
    void SetUp() override {
        m_Game = MakeGame();
        m_StateFile =
            Write("plain.xml", "<?xml version=\"1.0\"?>\n<state><Name>x</Name></state>\n");
    }
    void TearDown() override {
        delete m_Game->m_Loader;
        m_Game->m_Loader = nullptr;
    }

    RecordingState* AddState(const std::string& name, bool loaded = true) {
        auto* state = new RecordingState(m_Game.get(), m_StateFile, name, &m_Log, loaded);
        m_Game->m_States[name] = state;  // the Game deletes its states
        return state;
    }
    void AddLoader() {
        m_Game->m_Loader = new RecordingState(m_Game.get(), m_StateFile, "loader", &m_Log);
    }
    // One frame's keyboard step and global keys, with the key's raw flag as given.
    void KeyFrame(unsigned char key, bool down) {
        if (down) {
            PressKey(m_Game->m_Keyboard, key);
        } else {
            ReleaseKey(m_Game->m_Keyboard, key);
        }
        StepKeyboard(m_Game->m_Keyboard);
        m_Game->HandleGlobalKeys();
    }

    std::unique_ptr<Game> m_Game;
    std::string m_StateFile;
    std::vector<std::string> m_Log;
};

TEST_F(FrameTest, LoadedCurrentStateIsShownUpdatedAndHidesTheLoader) {
    AddState("c");
    AddState("a");
    AddState("b");
    AddLoader();
    m_Game->m_CurrentState = "b";
    m_Game->UpdateStates(16);
    EXPECT_EQ(m_Log, (std::vector<std::string>{"a hidden", "b shown", "b update 16",
                                               "loader hidden", "c hidden"}));
}

TEST_F(FrameTest, UnloadedCurrentStateShowsTheLoaderInstead) {
    AddState("a");
    AddState("b", false);
    AddLoader();
    m_Game->m_CurrentState = "b";
    m_Game->UpdateStates(16);
    EXPECT_EQ(m_Log, (std::vector<std::string>{"a hidden", "b hidden", "loader shown"}));
}

TEST_F(FrameTest, NoMatchingStateHidesEveryStateAndUpdatesNone) {
    AddState("a");
    AddState("B");  // names compare exactly
    m_Game->m_CurrentState = "b";
    m_Game->UpdateStates(16);
    EXPECT_EQ(m_Log, (std::vector<std::string>{"B hidden", "a hidden"}));
}

TEST_F(FrameTest, ReturnKeyGoesToTheDefaultStateAndResetsOnce) {
    AddState("zed");
    AddState("alpha");
    m_Game->m_DefaultState = "alpha";
    m_Game->m_CurrentState = "zed";
    m_Game->m_ReturnKey = 'r';
    KeyFrame('r', true);
    EXPECT_EQ(m_Game->m_CurrentState, "alpha");
    EXPECT_EQ(m_Log, (std::vector<std::string>{"alpha reset", "zed reset"}));
    m_Game->m_CurrentState = "zed";
    KeyFrame('r', true);  // still held: nothing more happens
    KeyFrame('r', true);
    EXPECT_EQ(m_Game->m_CurrentState, "zed");
    EXPECT_EQ(m_Log.size(), 2u);
}

TEST_F(FrameTest, OnlyKeyCodesBelow128CanFire) {
    m_Game->m_Keyboard.m_KeyState['q'] = kKeyPressed;
    m_Game->m_Keyboard.m_KeyState[200] = kKeyPressed;
    m_Game->m_Keyboard.m_KeyState[255] = kKeyPressed;
    m_Game->m_Keyboard.m_KeyState['h'] = kKeyHeld;
    EXPECT_TRUE(m_Game->KeyPressedThisFrame('q'));
    EXPECT_FALSE(m_Game->KeyPressedThisFrame('h'));
    EXPECT_FALSE(m_Game->KeyPressedThisFrame(static_cast<char>(200)));
    EXPECT_FALSE(m_Game->KeyPressedThisFrame(static_cast<char>(0xFF)));

    AddState("a");
    m_Game->m_ReturnKey = static_cast<char>(200);
    m_Game->HandleGlobalKeys();
    EXPECT_TRUE(m_Log.empty());
}

TEST_F(FrameTest, ReloadKeyRereadsTheStateTable) {
    m_Game->m_ReloadKey = 'l';
    Write("states.xml",
          "<?xml "
          "version=\"1.0\"?>\n<game><reload_action>l</reload_action><Title>Reloaded</Title></"
          "game>\n");
    KeyFrame('l', true);
    EXPECT_EQ(m_Game->m_Title, "Reloaded");
    Write("states.xml",
          "<?xml "
          "version=\"1.0\"?>\n<game><reload_action>l</reload_action><Title>Again</Title></game>\n");
    KeyFrame('l', true);  // held: no second reload
    EXPECT_EQ(m_Game->m_Title, "Reloaded");
}

}  // namespace
