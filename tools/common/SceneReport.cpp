#include "tools/common/SceneReport.h"

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

bool PrintSceneReport(const char* program, const char* file) {
    KFbxSdkManager* manager = KFbxSdkManager::Create();
    KFbxScene* scene = KFbxScene::Create(manager, "");
    KFbxImporter* importer = KFbxImporter::Create(manager, "");
    const bool read = importer->Initialize(file) && importer->Import(scene);
    if (read) {
        std::fputs(fbx::SummarizeScene(*importer, *scene, NumberFrames).c_str(), stdout);
    } else {
        std::fprintf(stderr, "%s: %s: %s\n", program, file, importer->GetLastErrorString());
    }
    manager->Destroy();
    return read;
}
