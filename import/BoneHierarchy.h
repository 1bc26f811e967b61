// The bone hierarchy: every skeleton node under a skeleton root, recorded in the model's
// name-keyed node table with its parent bone's name and its own rotation in degrees.
#pragma once

#include <string>

#include "import/ImportContext.h"

class KFbxNode;

// Records node (when it is a skeleton node) and, recursively, the skeleton nodes below it.
void LoadBoneHierarchy(ImportContext* context, KFbxNode* node, const std::string& parentName);
