// fbxinfo FILE: prints a summary of an FBX file's scene (version, takes and the game frames
// each plays at, nodes, meshes, materials, textures and where their images are, skins, take
// curves). Exits 0 when the file was read, 1 with the reason otherwise.
#include <cstdio>

#include "tools/common/SceneReport.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: fbxinfo FILE\n");
        return 2;
    }
    return PrintSceneReport("fbxinfo", argv[1]) ? 0 : 1;
}
