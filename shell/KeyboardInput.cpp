#include "shell/KeyboardInput.h"

#include <GL/freeglut.h>

#include <cstdio>
#include <memory>

#include "shell/Window.h"
#include "states/Game.h"

namespace {
// The key message is formatted and dropped again: nothing shows it.
void FormatSilently(const char* format, unsigned char key) {
    const auto buffer = std::make_unique<char[]>(256);
    std::snprintf(buffer.get(), 256, format, key);
}
}  // namespace

void PressKey(Keyboard& keyboard, unsigned char key) {
    keyboard.m_RawDown[key] = 1;
}

void ReleaseKey(Keyboard& keyboard, unsigned char key) {
    keyboard.m_RawDown[key] = 0;
}

void StepKeyboard(Keyboard& keyboard) {
    bool anyDown = false;
    for (int code = 0; code < 256; ++code) {
        if (keyboard.m_RawDown[code] != 0) {
            keyboard.m_KeyState[code] =
                keyboard.m_KeyState[code] != kKeyUp ? kKeyHeld : kKeyPressed;
            anyDown = true;
        } else {
            keyboard.m_KeyState[code] = kKeyUp;
        }
    }
    keyboard.m_AnyKeyDown = anyDown;
}

void OnKeyDown(unsigned char key, int /*x*/, int /*y*/) {
    PressKey(g_Game->m_Keyboard, key);
    FormatSilently("Key pressed: %c\n", key);
    glutPostRedisplay();
}

void OnKeyUp(unsigned char key, int /*x*/, int /*y*/) {
    ReleaseKey(g_Game->m_Keyboard, key);
    FormatSilently("Key released: %c\n", key);
}
