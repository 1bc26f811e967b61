// fbxinfo FILE: prints a summary of an FBX file's scene (version, takes and the game frames
// each plays at, nodes, meshes, materials, textures and where their images are, skins, take
// curves). Exits 0 when the file was read, 1 with the reason otherwise.
#include <cstdio>
#include <vector>

#include "fbx/sdk/Summary.h"
#include "fbx/sdk/fbxsdk.h"
#include "model/Pose.h"

namespace {

// The takes' frames as the game numbers them.
void NumberFrames(std::vector<fbx::TakeFrames>& takes) {
    std::vector<TakeSpan> spans(takes.size());
    for (std::size_t t = 0; t < takes.size(); ++t) {
        spans[t].m_Start = takes[t].start;
        spans[t].m_Stop = takes[t].stop;
    }
    NumberTakeFrames(spans);
    for (std::size_t t = 0; t < takes.size(); ++t) {
        takes[t].firstFrame = spans[t].m_FirstFrame;
        takes[t].lastFrame = spans[t].m_LastFrame;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: fbxinfo FILE\n");
        return 2;
    }
    KFbxSdkManager* manager = KFbxSdkManager::Create();
    KFbxScene* scene = KFbxScene::Create(manager, "");
    KFbxImporter* importer = KFbxImporter::Create(manager, "");
    int status = 0;
    if (!importer->Initialize(argv[1])) {
        std::fprintf(stderr, "fbxinfo: %s: %s\n", argv[1], importer->GetLastErrorString());
        status = 1;
    } else if (!importer->Import(scene)) {
        std::fprintf(stderr, "fbxinfo: %s: %s\n", argv[1], importer->GetLastErrorString());
        status = 1;
    } else {
        std::fputs(fbx::SummarizeScene(*importer, *scene, NumberFrames).c_str(), stdout);
    }
    manager->Destroy();
    return status;
}
