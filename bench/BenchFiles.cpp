#include "bench/BenchFiles.h"

#include <filesystem>
#include <stdexcept>

#include "fbx/write/WriterScene.h"

fbx::SyntheticOptions LargeSceneOptions() {
    fbx::SyntheticOptions options;
    options.corners = 1000000;
    options.clusters = 64;
    options.takes = 2;
    options.keys = 240;
    return options;
}

fbx::SyntheticOptions GridSceneOptions() {
    fbx::SyntheticOptions options;
    options.corners = 4000000;
    options.clusters = 64;
    options.takes = 0;
    options.keys = 0;
    return options;
}

std::vector<BenchFile> EnsureBenchFiles(const std::string& dir,
                                        const fbx::SyntheticOptions& options) {
    namespace fs = std::filesystem;
    fs::create_directories(dir);
    // The options are part of the name, so a cache from other settings is never reused.
    const std::string stem =
        "grid_" + std::to_string(options.corners) + "c_" + std::to_string(options.clusters) + "k_" +
        std::to_string(options.takes) + "t_" + std::to_string(options.keys) + "f";
    struct Kind {
        const char* label;
        int version;
        bool binary;
    };
    const Kind kinds[] = {{"binary 7500", 7500, true},
                          {"binary 6100", 6100, true},
                          {"ascii 7500", 7500, false},
                          {"ascii 6100", 6100, false}};
    std::vector<BenchFile> files;
    bool haveScene = false;
    fbx::SceneDescription scene;
    for (const Kind& kind : kinds) {
        BenchFile file;
        file.m_Label = kind.label;
        file.m_Version = kind.version;
        file.m_Binary = kind.binary;
        file.m_Path = (fs::path(dir) / (stem + "_" + std::to_string(kind.version) +
                                        (kind.binary ? "_binary.fbx" : "_ascii.fbx")))
                          .string();
        std::error_code ec;
        if (!fs::exists(file.m_Path, ec) || fs::file_size(file.m_Path, ec) == 0) {
            if (!haveScene) {
                scene = fbx::MakeSyntheticScene(options);
                haveScene = true;
            }
            // Written under a temporary name first so that an interrupted run leaves no
            // half-written file behind to be taken for a finished one.
            const std::string partial = file.m_Path + ".part";
            std::string error;
            if (!fbx::WriteFile(partial, scene, kind.version, kind.binary, &error)) {
                throw std::runtime_error("cannot write " + partial + ": " + error);
            }
            fs::rename(partial, file.m_Path);
        }
        file.m_Bytes = fs::file_size(file.m_Path);
        files.push_back(file);
    }
    return files;
}
