// A stable text summary of an imported scene, for people and for tests.
//
// The first line names the file's version and encoding; every later line depends only on
// the scene's content (and, for texture images, on the files beside the model), printed with
// fixed, modest precision, so that a scene's ASCII and binary files give the same text from
// the second line on. Sections: takes, node tree (with attribute types, transforms and
// materials), meshes (counts, bounds, layer elements), materials (class, colours, textures and
// where each texture's image is: embedded, a file found as LocateTextureImage finds it, or
// missing), skins (clusters), curves (key counts per take).
//
// Given a frame numbering, each take line is followed by the game frames the take plays at
// and its length: "  frames 0 to 30 (2.00 s)".
#pragma once

#include <functional>
#include <string>
#include <vector>

class KFbxImporter;
class KFbxScene;

namespace fbx {

// One take's span (mLocalTimeSpan, in seconds) and the game frames it is played at.
struct TakeFrames {
    double start = 0.0;
    double stop = 0.0;
    int firstFrame = 0;
    int lastFrame = 0;
};

// Fills the frames of the scene's takes, given in the order of KFbxScene::GetTakeNames().
// The library knows no game: the caller brings the game's numbering.
using FrameNumbering = std::function<void(std::vector<TakeFrames>& takes)>;

std::string SummarizeScene(const KFbxImporter& importer, KFbxScene& scene,
                           const FrameNumbering& numbering = nullptr);

// The name printed for an attribute type code ("mesh", "skeleton", ...).
const char* AttributeTypeName(int type);

}  // namespace fbx
