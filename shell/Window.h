// The window: the process-wide window values and game pointer that the GLUT callbacks use,
// the fixed OpenGL state and the reshape callback.
#pragma once

class Game;

extern int g_WindowWidth;  // client size; overwritten by every reshape
extern int g_WindowHeight;
extern int g_WindowX;  // placement, computed once at start-up
extern int g_WindowY;
extern int g_FullScreen;  // never set: the window always starts windowed
extern Game* g_Game;      // the one Game; the callbacks reach it only through this

// Where a window of the given extent starts so that it sits centred on the screen (negative
// when the screen is the smaller).
int CentredPosition(int screenExtent, int windowExtent);

// The OpenGL state set once after the window exists: smooth shading, depth test, light 0.
void SetFixedGlState();

// GLUT reshape callback: new viewport, identity projection, size copied into the Game.
void Reshape(int width, int height);
