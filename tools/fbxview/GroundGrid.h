// The viewer's ground: a square grid of lines on the horizontal plane under the model.
#pragma once

#include "tools/common/ModelBox.h"

// Draws the grid at the height of the box's bottom, centred under the box and reaching half
// as far again as its footprint, with lines a round distance apart (1, 2 or 5 times a power
// of ten). Drawn unlit and untextured in dim greys, the line through the centre a little
// lighter; every OpenGL state it changes is restored. An empty box gets a grid round the
// origin.
void DrawGroundGrid(const ModelBox& box);
