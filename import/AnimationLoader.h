// Animation takes: turns the translation, rotation and scaling curves of one node, in all
// its takes but "Default", into one flat sequence of key frames stored in the model.
#pragma once

class KFbxNode;
struct Model;

// Prints "Loading animation: NAME" and "Added animation for NAME with N keys."; always
// returns false.
bool LoadAnimation(KFbxNode* node, Model& model);
