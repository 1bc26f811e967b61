// The generated model files that the import benchmarks read: a large skinned, animated scene
// and a larger grid, each written once in every encoding and layout and kept in a cache
// folder between runs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fbx/write/WriterSynthetic.h"

struct BenchFile {
    std::string m_Label;  // "binary 7500"
    std::string m_Path;
    int m_Version = 7500;
    bool m_Binary = true;
    std::uintmax_t m_Bytes = 0;
};

// The scene every import benchmark reads.
fbx::SyntheticOptions LargeSceneOptions();

// The start-up benchmark's large file: one grid of 1,000 x 1,000 quads (4 million polygon
// corners) with normals, UVs and a skin of 64 bones, no animation.
fbx::SyntheticOptions GridSceneOptions();

// Writes the large scene into dir in binary and ASCII, 7500 and 6100 layouts, unless a file
// of the same options is already there. Returns the four files; throws std::runtime_error
// when one cannot be written.
std::vector<BenchFile> EnsureBenchFiles(const std::string& dir,
                                        const fbx::SyntheticOptions& options);
