// The frame: the GLUT display callback does a whole frame (keyboard step, global keys,
// timer, state updates, projection, drawing, swap, title) and asks for the next one at once.
#pragma once

class Game;

// Whether a stored key character was pressed in this frame. Only codes 0 to 127 can match,
// and the byte 0xFF (no key configured) never does.
bool KeyPressedThisFrame(const Game& game, char key);

// The reload key re-reads the state table; the return key goes back to the default state and
// resets every state in name order.
void HandleGlobalKeys(Game& game);

// Tells every state whether it is shown; the current state, once loaded, is updated with the
// elapsed milliseconds (and fills the draw list); otherwise the loader state is shown.
void UpdateStates(Game& game, int elapsed);

// Clears the frame, sets the perspective from the Game's viewport and draws the draw list.
void DrawFrame(Game& game);

// The GLUT display callback: one frame of the global Game.
void RunFrame();
