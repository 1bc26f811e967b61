// fbxinfo FILE: prints a summary of an FBX file's scene (version, takes and the game frames
// each plays at, nodes, meshes, materials, textures and where their images are, skins, take
// curves). Exits 0 when the file was read, 1 with the reason otherwise, 2 on wrong arguments.
#include <cstdio>
#include <cstring>

#include "tools/common/SceneReport.h"

namespace {

constexpr const char* kUsage =
    "usage: fbxinfo FILE\n"
    "       fbxinfo --help | --version\n"
    "Prints what an FBX file holds as the engine reads it: version, takes and the game frames\n"
    "they play at, nodes, meshes, materials, textures and where their images are, skins and\n"
    "take curves.\n";

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
        std::printf("fbxinfo %s\n", TOOL_VERSION);
        return 0;
    }
    // "--" lets a file whose name starts with '-' through.
    const bool marked = argc == 3 && std::strcmp(argv[1], "--") == 0;
    if (!marked && (argc != 2 || (argv[1][0] == '-' && argv[1][1] != '\0'))) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    return PrintSceneReport("fbxinfo", argv[argc - 1]) ? 0 : 1;
}
