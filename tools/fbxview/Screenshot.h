// Screenshots of the viewer's window, written as PNG files beside the model file.
#pragma once

#include <string>

// The model file's path without its ".fbx" ending (in any case), to which a screenshot's
// "-N.png" is added.
std::string ScreenshotStem(const std::string& modelFile);

// Reads the width x height pixels of OpenGL's current read buffer and writes them as a PNG
// at the first free name beside the model, STEM-1.png, STEM-2.png, ... (an existing file is
// never overwritten). Returns the path written; empty when nothing could be written.
std::string SaveScreenshot(const std::string& modelFile, int width, int height);
