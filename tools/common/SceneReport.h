// The scene report of the model tools: what fbxinfo prints and fbxview prints on start.
#pragma once

// Reads the file as the engine's FBX library reads it and prints its scene summary
// (fbx/sdk/Summary.h, each take with the game frames it is played at) to standard output.
// When the file cannot be read, prints "PROGRAM: FILE: REASON" to standard error instead.
// Returns whether the file was read.
bool PrintSceneReport(const char* program, const char* file);
