// Start-up cost of model loading: throughput of ParseBuffer on the largest corpus files of
// each encoding, held in memory so only parsing is measured.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fbx/format/Parse.h"

namespace {

struct Input {
    std::string label;
    std::vector<std::uint8_t> bytes;
};

std::vector<std::uint8_t> Load(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in),
                                     std::istreambuf_iterator<char>());
}

// The largest file whose name contains each of the given markers.
std::vector<Input> LargestCorpusFiles() {
    struct Kind {
        const char* label;
        const char* marker;
        bool old;  // pre-7000 layout (scalar lists) rather than 7000+ arrays
    };
    const Kind kinds[] = {
        {"binary_7xxx", "_binary.fbx", false},
        {"binary_6100", "_binary.fbx", true},
        {"ascii_7xxx", "_ascii.fbx", false},
        {"ascii_6100", "_ascii.fbx", true},
    };
    std::vector<Input> inputs;
    const std::filesystem::path dir = std::filesystem::path(ENGINE_CORPUS_DIR) / "fbx";
    for (const Kind& kind : kinds) {
        std::filesystem::path best;
        std::uintmax_t bestSize = 0;
        std::error_code ec;
        for (const auto& entry : std::filesystem::directory_iterator(dir, ec)) {
            const std::string name = entry.path().filename().string();
            const bool old = name.find("_6100_") != std::string::npos ||
                             name.find("_5800_") != std::string::npos;
            if (name.find(kind.marker) == std::string::npos || old != kind.old)
                continue;
            if (entry.file_size() > bestSize) {
                bestSize = entry.file_size();
                best = entry.path();
            }
        }
        if (!best.empty()) {
            inputs.push_back(
                {std::string(kind.label) + "/" + best.filename().string(), Load(best)});
        }
    }
    // TODO: add large synthetic scenes (millions of vertices, both encodings) once the FBX
    // writer can produce them in memory; the corpus files are all under about 1 MB.
    return inputs;
}

void ParseInput(benchmark::State& state, const Input* input) {
    for (auto _ : state) {
        fbx::ParseResult result = fbx::ParseBuffer(input->bytes.data(), input->bytes.size());
        if (!result.ok) {
            state.SkipWithError(result.error.c_str());
            break;
        }
        benchmark::DoNotOptimize(result.document.root.children.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(input->bytes.size()));
}

}  // namespace

int main(int argc, char** argv) {
    static const std::vector<Input> inputs = LargestCorpusFiles();
    for (const Input& input : inputs) {
        benchmark::RegisterBenchmark(("ParseBuffer/" + input.label).c_str(), ParseInput, &input)
            ->Unit(benchmark::kMicrosecond);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
