// A stable text summary of an imported scene, for people and for tests.
//
// The first line names the file's version and encoding; every later line depends only on
// the scene's content, printed with fixed, modest precision, so that a scene's ASCII and
// binary files give the same text from the second line on. Sections: takes, node tree (with
// attribute types, transforms and materials), meshes (counts, bounds, layer elements),
// materials (class, colours, textures), skins (clusters), curves (key counts per take).
#pragma once

#include <string>

class KFbxImporter;
class KFbxScene;

namespace fbx {

std::string SummarizeScene(const KFbxImporter& importer, KFbxScene& scene);

// The name printed for an attribute type code ("mesh", "skeleton", ...).
const char* AttributeTypeName(int type);

}  // namespace fbx
