// Keyboard input: the GLUT key callbacks set raw per-character flags; once per frame the
// keyboard step turns them into key states (0 up, 2 pressed this frame, 1 held).
#pragma once

#include "states/Keyboard.h"

// Raw flag of one character on or off, as the key callbacks set it.
void PressKey(Keyboard& keyboard, unsigned char key);
void ReleaseKey(Keyboard& keyboard, unsigned char key);

// Advances every key state from the raw flags; called once per frame before any reader.
void StepKeyboard(Keyboard& keyboard);

// GLUT key-down and key-up callbacks on the global Game's keyboard; the mouse position is
// ignored.
void OnKeyDown(unsigned char key, int x, int y);
void OnKeyUp(unsigned char key, int x, int y);
