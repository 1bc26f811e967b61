// The keyboard record: raw key flags set by the GLUT callbacks and per-frame key states.
#pragma once

enum KeyState : int { kKeyUp = 0, kKeyHeld = 1, kKeyPressed = 2 };

struct Keyboard {
    bool m_AnyKeyDown = false;
    unsigned char m_RawDown[256] = {};  // 1 between key-down and key-up of that character
    int m_KeyState[256] = {};           // 0 up, 2 pressed this frame, 1 held
};
