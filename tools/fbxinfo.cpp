// fbxinfo FILE: prints a summary of an FBX file's scene (version, nodes, meshes, materials,
// textures, skins, take curves). Exits 0 when the file was read, 1 with the reason otherwise.
#include <cstdio>

#include "fbx/sdk/Summary.h"
#include "fbx/sdk/fbxsdk.h"

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
        std::fputs(fbx::SummarizeScene(*importer, *scene).c_str(), stdout);
    }
    manager->Destroy();
    return status;
}
