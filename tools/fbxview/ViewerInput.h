// The viewer's keys and mouse, as GLUT reports them:
//   arrows      orbit (left and right about the vertical axis, up and down tilt)
//   + - wheel   zoom in and out
//   left drag   orbit; right or middle drag: pan
//   c           classic look on and off
//   n p         next and previous take
//   space       play and pause
//   , .         one frame back and forward
//   f           frame the model again (the starting view)
//   s           screenshot beside the model file
//   q Escape    quit
#pragma once

#include "tools/fbxview/Viewer.h"

// What the viewer does after an input.
enum class InputResult { Nothing, Redraw, Quit };

// A character key (GLUT's keyboard callback).
InputResult HandleKey(Viewer& viewer, unsigned char key);

// A special key (GLUT's special callback: GLUT_KEY_LEFT ...).
InputResult HandleSpecialKey(Viewer& viewer, int key);

// A mouse button going down or up at (x, y) (GLUT's mouse callback; the wheel comes as
// buttons 3 and 4).
InputResult HandleMouseButton(Viewer& viewer, int button, int state, int x, int y);

// The pointer moving to (x, y) with a button down (GLUT's motion callback).
InputResult HandleMouseMotion(Viewer& viewer, int x, int y);
