// The imports that the benchmarks compare, each reading one file from disk: the engine's
// whole import into a Model, our library alone into a scene, and assimp as a peer.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

// The engine's import reports its progress on standard output: QuietStdout keeps it out of
// the benchmark's tables.
#include "tools/common/QuietStdout.h"

// What one import produced, released when it goes, so that benchmarks can leave the
// tear-down out of the timing. Size() counts what was read (corners, nodes or faces) and is
// 0 when the import failed.
class Imported {
public:
    virtual ~Imported() = default;
    virtual std::size_t Size() const = 0;
};

using ImportFunction = std::unique_ptr<Imported> (*)(const std::string& path);

// The engine's import as a state runs it (ImportModelFile, SDK objects made and destroyed
// inside) into a Model. Prints progress: silence stdout.
std::unique_ptr<Imported> EngineImport(const std::string& path);

// KFbxImporter Initialize and Import into a KFbxScene; the scene's manager is released with
// the result.
std::unique_ptr<Imported> LibraryImport(const std::string& path);

// aiImportFile(path, 0), no post-processing; aiReleaseImport with the result.
std::unique_ptr<Imported> AssimpImport(const std::string& path);
