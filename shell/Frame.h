// The frame: the GLUT display callback does a whole frame (keyboard step, the Game's global
// keys, timer, the Game's state updates, projection, drawing, swap, title) and asks for the
// next one at once.
#pragma once

class Game;

// Clears the frame, sets the perspective from the Game's viewport and draws the draw list.
void DrawFrame(Game& game);

// The GLUT display callback: one frame of the global Game.
void RunFrame();
