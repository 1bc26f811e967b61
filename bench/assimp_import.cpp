// assimp_import: the peer of the cold-process benchmark. Imports one file with Debian's assimp
// as a program of its own would (aiImportFile, no post-processing) and prints the faces read.
//
//   assimp_import FILE
#include <assimp/cimport.h>
#include <assimp/scene.h>

#include <cstdio>

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
    aiReleaseImport(scene);
    return 0;
}
