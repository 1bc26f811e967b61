// assimp_import: the peer of the cold-process benchmark. Imports one file with Debian's assimp
// as a program of its own would (aiImportFile, no post-processing) and prints the faces read
// and its own peak resident size ("peak-kb N", VmHWM: a parent's wait4 figure would count the
// memory the parent had when it forked).
//
//   assimp_import FILE
#include <assimp/cimport.h>
#include <assimp/scene.h>

#include <cstdio>
#include <cstring>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: assimp_import FILE\n");
        return 2;
    }
    const aiScene* scene = aiImportFile(argv[1], 0);
    if (scene == nullptr) {
        std::fprintf(stderr, "assimp_import: %s\n", aiGetErrorString());
        return 1;
    }
    unsigned long faces = 0;
    for (unsigned int m = 0; m < scene->mNumMeshes; ++m)
        faces += scene->mMeshes[m]->mNumFaces;
    std::printf("faces %lu\n", faces);
    if (FILE* status = std::fopen("/proc/self/status", "r")) {
        char line[256];
        while (std::fgets(line, sizeof line, status)) {
            unsigned long kb = 0;
            if (std::sscanf(line, "VmHWM: %lu", &kb) == 1)
                std::printf("peak-kb %lu\n", kb);
        }
        std::fclose(status);
    }
    aiReleaseImport(scene);
    return 0;
}
