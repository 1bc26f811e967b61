// The model look chosen by the state table: which values it takes, what an unknown one says,
// that the look reaches the import, and the next frame and tick fraction the authored look
// hands its models.
#include <gtest/gtest.h>

#include <memory>

#include "model/Model.h"
#include "scratch_dir.h"
#include "states/Game.h"
#include "states/MenuState.h"

namespace {

class ModelLookTest : public ::testing::Test {
protected:
    std::string Table(const std::string& body) {
        return m_Dir.Write("states.xml", "<game>" + body + "</game>");
    }

    ScratchDir m_Dir;
};

std::string Unknown(const std::string& value) {
    return "Unknown model_look \"" + value +
           "\": expected \"classic\" or \"authored\"; using the classic look.\n";
}

TEST_F(ModelLookTest, TableChoosesTheLookAndAnUnknownOneIsNamedOnceAndPlaysClassic) {
    struct Case {
        std::string m_Element;
        ModelLook m_Look;
        std::string m_Line;
    };
    const Case cases[] = {
        {"", ModelLook::Classic, ""},
        {"<model_look>classic</model_look>", ModelLook::Classic, ""},
        {"<model_look>authored</model_look>", ModelLook::Authored, ""},
        {"<model_look>\n  authored\n</model_look>", ModelLook::Authored, ""},
        {"<model_look>shiny</model_look>", ModelLook::Classic, Unknown("shiny")},
        {"<model_look>Authored</model_look>", ModelLook::Classic, Unknown("Authored")},
        {"<model_look/>", ModelLook::Classic, Unknown("")},
        {"<model_look>a\nb</model_look>", ModelLook::Classic, Unknown("a b")},
        {"<model_look>" + std::string(500, 'x') + "</model_look>", ModelLook::Classic,
         Unknown(std::string(80, 'x') + "...")},
    };
    for (const Case& c : cases) {
        ::testing::internal::CaptureStdout();
        Game game(Table("<Title>T</Title>" + c.m_Element));
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), c.m_Line + "Finished loading xml.\n")
            << c.m_Element;
        EXPECT_EQ(game.m_ModelLook, c.m_Look) << c.m_Element;
    }
}

TEST_F(ModelLookTest, StatesImportTheirModelsInTheLookAndOnlyImagesThatNowLoadChangeTheReport) {
    const std::string state =
        m_Dir.Write("menu.xml", "<state><Name>Menu</Name><URL>" ENGINE_SOURCE_DIR
                                "/Assets/models/loading.fbx</URL></state>");
    std::string reports[2];
    for (const ModelLook look : {ModelLook::Classic, ModelLook::Authored}) {
        const bool authored = look == ModelLook::Authored;
        ::testing::internal::CaptureStdout();
        Game game(Table(std::string(authored ? "<model_look>authored</model_look>" : "") +
                        "<loader>" + state + "</loader><state><type>MenuState</type><name>Menu" +
                        "</name><resources>" + state + "</resources></state>"));
        reports[authored] = ::testing::internal::GetCapturedStdout();
        for (GameState* holder : {game.m_Loader, game.m_States["Menu"]}) {
            ASSERT_NE(holder, nullptr);
            ASSERT_EQ(holder->m_Models.size(), 1u);
            EXPECT_EQ(holder->m_Models.front()->m_Authored != nullptr, authored);
        }
        delete game.m_Loader;
    }
    // The loading screen's PNG textures fail in the classic look and load in the authored one.
    for (const char* line :
         {"Failed to load ../textures/sky.png.\n", "Failed to load ../textures/stripes.png.\n"}) {
        const std::string failure = line;
        std::size_t erased = 0;
        for (std::size_t at; (at = reports[0].find(failure)) != std::string::npos; ++erased)
            reports[0].erase(at, failure.size());
        EXPECT_EQ(erased, 2u) << line;  // the loader and the state
    }
    EXPECT_EQ(reports[0], reports[1]);
}

TEST_F(ModelLookTest, AuthoredLookHandsModelsTheActionsNextFrameAndTheTickFraction) {
    Game game(Table("<model_look>authored</model_look>"));
    MenuState state(&game, m_Dir.Write("menu.xml",
                                       "<state><Name>Menu</Name><URL>m.fbx</URL>"
                                       "<Default_Action>Idle</Default_Action><Action><Name>Idle"
                                       "</Name><Start_Frame>5</Start_Frame><End_Frame>8"
                                       "</End_Frame></Action></state>"));
    const Model& model = *state.m_Models.front();
    // Current frame, ticks accumulated (of 66 ms a tick), next frame and fraction.
    struct Case {
        int m_Frame;
        int m_Accumulated;
        int m_Next;
        float m_Fraction;
    };
    const Case cases[] = {{5, 0, 6, 0.0f},  {6, 33, 7, 0.5f}, {7, 66, 5, 1.0f},
                          {8, 99, 5, 1.0f}, {9, -5, 9, 0.0f}, {-3, 11, -2, 1.0f / 6.0f}};
    for (const Case& c : cases) {
        state.m_CurrentFrame = c.m_Frame;
        game.m_TickAccumulator = c.m_Accumulated;
        game.m_DrawList.clear();
        state.Update(16);
        EXPECT_EQ(model.m_Frame, c.m_Frame);
        EXPECT_EQ(model.m_NextFrame, c.m_Next) << c.m_Frame;
        EXPECT_FLOAT_EQ(model.m_FrameFraction, c.m_Fraction) << c.m_Accumulated;
    }
    // Without a running action the next frame is the frame itself.
    state.m_DefaultAction = "Nothing";
    state.Update(16);
    EXPECT_EQ(model.m_NextFrame, -3);

    // The classic look leaves both alone.
    Game classic(Table(""));
    MenuState plain(&classic, m_Dir.Write("plain.xml",
                                          "<state><URL>m.fbx</URL><Default_Action>Idle"
                                          "</Default_Action><Action><Name>Idle</Name>"
                                          "<End_Frame>9</End_Frame></Action></state>"));
    classic.m_TickAccumulator = 33;
    plain.Update(16);
    EXPECT_EQ(plain.m_Models.front()->m_NextFrame, 0);
    EXPECT_EQ(plain.m_Models.front()->m_FrameFraction, 0.0f);
}

}  // namespace
