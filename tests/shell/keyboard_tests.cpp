// The keyboard step: raw key flags become pressed (2), held (1) and up (0) once per frame.
#include <gtest/gtest.h>

#include <vector>

#include "shell/KeyboardInput.h"

namespace {

// Key states of one character over several frames, with the raw flag as given per frame.
std::vector<int> Frames(Keyboard& keyboard, unsigned char key, int frames) {
    std::vector<int> states;
    for (int i = 0; i < frames; ++i) {
        StepKeyboard(keyboard);
        states.push_back(keyboard.m_KeyState[key]);
    }
    return states;
}

TEST(KeyboardStepTest, HeldKeyReadsPressedThenHeldThenUpAfterRelease) {
    Keyboard keyboard;
    PressKey(keyboard, 'a');
    EXPECT_EQ(Frames(keyboard, 'a', 3), (std::vector<int>{2, 1, 1}));
    EXPECT_TRUE(keyboard.m_AnyKeyDown);
    ReleaseKey(keyboard, 'a');
    EXPECT_EQ(Frames(keyboard, 'a', 2), (std::vector<int>{0, 0}));
    EXPECT_FALSE(keyboard.m_AnyKeyDown);
}

TEST(KeyboardStepTest, PressAndReleaseBetweenFramesIsNeverSeen) {
    Keyboard keyboard;
    StepKeyboard(keyboard);
    PressKey(keyboard, 'g');
    ReleaseKey(keyboard, 'g');
    EXPECT_EQ(Frames(keyboard, 'g', 2), (std::vector<int>{0, 0}));
    EXPECT_FALSE(keyboard.m_AnyKeyDown);
}

TEST(KeyboardStepTest, AutoRepeatDoesNotPressAgain) {
    Keyboard keyboard;
    PressKey(keyboard, 'x');
    StepKeyboard(keyboard);
    PressKey(keyboard, 'x');
    PressKey(keyboard, 'x');
    EXPECT_EQ(Frames(keyboard, 'x', 2), (std::vector<int>{1, 1}));
}

TEST(KeyboardStepTest, CaseMattersAndAKeyUpOfAnotherCharacterLeavesTheKeyHeld) {
    Keyboard keyboard;
    PressKey(keyboard, 'r');
    StepKeyboard(keyboard);
    EXPECT_EQ(keyboard.m_KeyState['R'], 0);
    ReleaseKey(keyboard, 'R');  // Shift came up first: the other character is released
    EXPECT_EQ(Frames(keyboard, 'r', 2), (std::vector<int>{1, 1}));
    EXPECT_EQ(keyboard.m_KeyState['R'], 0);
    EXPECT_TRUE(keyboard.m_AnyKeyDown);
    ReleaseKey(keyboard, 'r');
    EXPECT_EQ(Frames(keyboard, 'r', 1), (std::vector<int>{0}));
}

TEST(KeyboardStepTest, EveryCharacterCodeHasItsOwnState) {
    Keyboard keyboard;
    PressKey(keyboard, 0);
    PressKey(keyboard, 255);
    StepKeyboard(keyboard);
    EXPECT_EQ(keyboard.m_KeyState[0], 2);
    EXPECT_EQ(keyboard.m_KeyState[255], 2);
    for (int code = 1; code < 255; ++code) {
        EXPECT_EQ(keyboard.m_KeyState[code], 0) << code;
    }
}

}  // namespace
