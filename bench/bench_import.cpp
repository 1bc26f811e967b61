// Import and frame benchmarks on one large generated scene (a million polygon corners, 64
// skin clusters, animated takes) in both encodings and both layouts: reader throughput, the
// library's import, the engine's whole import, assimp's import of the same 7500 files, peak
// memory per corner, and the time of drawing many models. Ends with one summary table.
//
// Then the start-up table: every file of that scene and of a 4-million-corner grid imported in
// a new process, the engine itself in both looks and assimp's own small program, each with its
// wall time and peak resident memory (the median of --cold-runs runs).
//
//   bench_import [--data-dir=DIR] [--no-frames] [--no-memory] [--no-cold] [--cold-runs=N]
//                [benchmark flags]
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/BenchFiles.h"
#include "bench/CharacterBench.h"
#include "bench/ColdImport.h"
#include "bench/FrameBench.h"
#include "bench/Importers.h"
#include "bench/PeakMemory.h"
#include "fbx/format/Parse.h"
#include "fbx/write/WriterScene.h"

namespace {

constexpr int kFrameModels = 64;
// The crowd of skinned, animated characters drawn in both looks.
constexpr int kCrowd = 16;
constexpr std::size_t kCharacterCorners = 5000;
constexpr int kCharacterBones = 30;
constexpr std::size_t kFrameModelCorners = 16384;

std::vector<std::uint8_t> ReadAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in),
                                     std::istreambuf_iterator<char>());
}

// Keeps the median of every benchmark's repetitions (or its only run) for the table.
class TableReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.error_occurred)
                continue;
            const std::string name = run.run_name.function_name;
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (run.run_type == Run::RT_Iteration && m_Seconds.count(name) == 0) {
                m_Seconds[name] = Seconds(run);
            } else if (median) {
                m_Seconds[name] = Seconds(run);
            }
        }
    }
    // Seconds per iteration, or -1 when the benchmark did not run.
    double Get(const std::string& name) const {
        const auto found = m_Seconds.find(name);
        return found == m_Seconds.end() ? -1.0 : found->second;
    }

private:
    static double Seconds(const Run& run) {
        return run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
    }
    std::map<std::string, double> m_Seconds;
};

struct Loaded {
    BenchFile file;
    std::vector<std::uint8_t> bytes;
};

void Parse(benchmark::State& state, const Loaded* input) {
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

// One import per iteration; what it produced is released outside the timing (a state keeps
// its models for the life of the game).
void ImportFile(benchmark::State& state, const BenchFile* file, ImportFunction import) {
    QuietStdout quiet;
    for (auto _ : state) {
        std::unique_ptr<Imported> result = import(file->m_Path);
        if (result->Size() == 0) {
            state.SkipWithError("the import failed");
            break;
        }
        state.PauseTiming();
        result.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(file->m_Bytes));
}

void FirstFrame(benchmark::State& state, FrameScene* scene) {
    for (auto _ : state) {
        state.PauseTiming();
        scene->Reset();
        state.ResumeTiming();
        scene->DrawFrame();
    }
}

void SteadyFrame(benchmark::State& state, FrameScene* scene) {
    scene->Reset();
    scene->DrawFrame();  // compiles the display lists
    for (auto _ : state)
        scene->DrawFrame();
}

// Steady frames of the crowd: the game's clock moves on by each frame's real duration.
void CrowdFrame(benchmark::State& state, CharacterCrowd* crowd) {
    crowd->DrawFrame(0);  // compiles what is compiled once
    int elapsed = 16;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        crowd->DrawFrame(elapsed);
        elapsed = static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                       std::chrono::steady_clock::now() - start)
                                       .count());
    }
}

std::string Cell(double value, const char* format) {
    if (value < 0)
        return "-";
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

// The run of median time among runs of one cold import; not ok when any run failed.
ColdFigures MedianRun(int runs, const std::function<ColdFigures()>& run) {
    std::vector<ColdFigures> all;
    for (int i = 0; i < runs; ++i) {
        all.push_back(run());
        if (!all.back().m_Ok)
            return all.back();
    }
    std::sort(all.begin(), all.end(),
              [](const ColdFigures& a, const ColdFigures& b) { return a.m_Seconds < b.m_Seconds; });
    return all[all.size() / 2];
}

// Start-up as a user meets it: every file imported in a new process.
struct ColdFile : BenchFile {
    std::string m_Scene;  // which generated scene: "scene" or "grid"
};

void ColdTable(const std::vector<ColdFile>& files, const std::string& dataDir, int runs) {
    std::printf(
        "\nStart-up: each import in a new process, median of %d (engine: process start to "
        "\"Finished loading xml.\"; assimp: assimp_import start to exit); peak resident MB\n",
        runs);
    const char* row = "%-20s %6s %8s %8s %8s %8s %7s %7s %9s %9s %9s %9s\n";
    std::printf(row, "file", "MB", "classic", "classic", "authored", "authored", "assimp", "assimp",
                "classic/", "classic/", "authored/", "authored/");
    std::printf(row, "", "", "s", "MB", "s", "MB", "s", "MB", "assimp s", "assimp MB", "assimp s",
                "assimp MB");
    for (const ColdFile& file : files) {
        ColdFigures looks[2];
        const char* names[2] = {"classic", "authored"};
        for (int l = 0; l < 2; ++l) {
            looks[l] = MedianRun(runs, [&] {
                return EngineColdImport(ENGINE_EXECUTABLE, file.m_Path, names[l], dataDir);
            });
        }
        ColdFigures peer;
        if (file.m_Version >= 7000)
            peer = MedianRun(runs, [&] { return PeerColdImport(PEER_EXECUTABLE, file.m_Path); });
        const auto seconds = [](const ColdFigures& f) { return f.m_Ok ? f.m_Seconds : -1.0; };
        const auto mb = [](const ColdFigures& f) {
            return f.m_Ok ? static_cast<double>(f.m_PeakBytes) / 1e6 : -1.0;
        };
        const auto ratio = [&](const ColdFigures& f, double ours, double theirs) {
            return Cell(peer.m_Ok && f.m_Ok ? ours / theirs : -1, "%.2f");
        };
        const ColdFigures& classic = looks[0];
        const ColdFigures& authored = looks[1];
        std::printf(row, (file.m_Scene + " " + file.m_Label).c_str(),
                    Cell(static_cast<double>(file.m_Bytes) / 1e6, "%.1f").c_str(),
                    Cell(seconds(classic), "%.2f").c_str(), Cell(mb(classic), "%.0f").c_str(),
                    Cell(seconds(authored), "%.2f").c_str(), Cell(mb(authored), "%.0f").c_str(),
                    Cell(seconds(peer), "%.2f").c_str(), Cell(mb(peer), "%.0f").c_str(),
                    ratio(classic, classic.m_Seconds, peer.m_Seconds).c_str(),
                    ratio(classic, mb(classic), mb(peer)).c_str(),
                    ratio(authored, authored.m_Seconds, peer.m_Seconds).c_str(),
                    ratio(authored, mb(authored), mb(peer)).c_str());
        std::fflush(stdout);
    }
}

std::string MachineName() {
    std::ifstream cpuinfo("/proc/cpuinfo");
    std::string line;
    while (std::getline(cpuinfo, line)) {
        if (line.rfind("model name", 0) == 0) {
            const std::size_t colon = line.find(':');
            if (colon != std::string::npos)
                return line.substr(colon + 2);
        }
    }
    return "unknown CPU";
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 4 && std::strcmp(argv[1], kPeakMemoryFlag) == 0) {
        return RunPeakMemoryChild(argv[2], argv[3]);
    }
    std::string dataDir = ENGINE_BENCH_DATA_DIR;
    bool frames = true;
    bool memory = true;
    bool cold = true;
    int coldRuns = 3;
    std::vector<char*> rest = {argv[0]};
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg.rfind("--data-dir=", 0) == 0) {
            dataDir = arg.substr(11);
        } else if (arg == "--no-frames") {
            frames = false;
        } else if (arg == "--no-memory") {
            memory = false;
        } else if (arg == "--no-cold") {
            cold = false;
        } else if (arg.rfind("--cold-runs=", 0) == 0) {
            coldRuns = std::max(1, std::atoi(arg.c_str() + 12));
        } else {
            rest.push_back(argv[i]);
        }
    }
    int restCount = static_cast<int>(rest.size());

    const fbx::SyntheticOptions options = LargeSceneOptions();
    std::printf("Scene: %zu polygon corners, %d skin clusters, %d takes of %d keys; files in %s\n",
                options.corners, options.clusters, options.takes, options.keys, dataDir.c_str());
    std::fflush(stdout);
    std::vector<Loaded> inputs;
    for (const BenchFile& file : EnsureBenchFiles(dataDir, options)) {
        inputs.push_back({file, ReadAll(file.m_Path)});
    }

    // A smaller model for the frame benchmark, drawn many times.
    std::unique_ptr<FrameScene> frameScene;
    std::unique_ptr<CharacterCrowd> authoredCrowd, classicCrowd;
    if (frames && OpenFrameWindow(restCount, rest.data())) {
        fbx::SyntheticOptions small;
        small.corners = kFrameModelCorners;
        small.clusters = 4;
        small.takes = 1;
        small.keys = 24;
        const std::string path = dataDir + "/frame_model_7500_binary.fbx";
        if (!fbx::WriteFile(path, fbx::MakeSyntheticScene(small), 7500, true)) {
            std::fprintf(stderr, "cannot write %s\n", path.c_str());
            return 1;
        }
        frameScene = std::make_unique<FrameScene>(path, kFrameModels);

        fbx::CharacterOptions character;
        character.corners = kCharacterCorners;
        character.bones = kCharacterBones;
        const std::string characterPath = dataDir + "/character_7500_binary.fbx";
        if (!fbx::WriteFile(characterPath, fbx::MakeSkinnedCharacter(character), 7500, true)) {
            std::fprintf(stderr, "cannot write %s\n", characterPath.c_str());
            return 1;
        }
        authoredCrowd =
            std::make_unique<CharacterCrowd>(characterPath, ModelLook::Authored, kCrowd);
        classicCrowd = std::make_unique<CharacterCrowd>(characterPath, ModelLook::Classic, kCrowd);
    } else if (frames) {
        std::printf("No X display: frame benchmarks skipped (scripts/bench.sh starts Xvfb).\n");
    }

    for (const Loaded& input : inputs) {
        const std::string& label = input.file.m_Label;
        benchmark::RegisterBenchmark(("Parse/" + label).c_str(), Parse, &input)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime()
            ->Repetitions(3)
            ->ReportAggregatesOnly(true);
        benchmark::RegisterBenchmark(("Library/" + label).c_str(), ImportFile, &input.file,
                                     LibraryImport)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime()
            ->Repetitions(3)
            ->ReportAggregatesOnly(true);
        benchmark::RegisterBenchmark(("Engine/" + label).c_str(), ImportFile, &input.file,
                                     EngineImport)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime()
            ->Repetitions(3)
            ->ReportAggregatesOnly(true);
        // assimp reads the 7000+ layout only.
        if (input.file.m_Version >= 7000) {
            benchmark::RegisterBenchmark(("Assimp/" + label).c_str(), ImportFile, &input.file,
                                         AssimpImport)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime()
                ->Repetitions(3)
                ->ReportAggregatesOnly(true);
        }
    }
    if (frameScene) {
        benchmark::RegisterBenchmark("Frame/first", FirstFrame, frameScene.get())
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime()
            ->Iterations(3);
        benchmark::RegisterBenchmark("Frame/steady", SteadyFrame, frameScene.get())
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
        benchmark::RegisterBenchmark("Crowd/authored", CrowdFrame, authoredCrowd.get())
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime()
            ->MinTime(2.0);
        benchmark::RegisterBenchmark("Crowd/classic", CrowdFrame, classicCrowd.get())
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime()
            ->MinTime(2.0);
    }

    benchmark::Initialize(&restCount, rest.data());
    if (benchmark::ReportUnrecognizedArguments(restCount, rest.data()))
        return 1;
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    // Peak memory of one import of each file, each in its own child process.
    std::map<std::string, std::int64_t> peak;
    if (memory) {
        for (const Loaded& input : inputs) {
            const std::string& label = input.file.m_Label;
            peak["Engine/" + label] =
                MeasurePeakGrowth("/proc/self/exe", "engine", input.file.m_Path);
            if (input.file.m_Version >= 7000) {
                peak["Assimp/" + label] =
                    MeasurePeakGrowth("/proc/self/exe", "assimp", input.file.m_Path);
            }
        }
    }
    auto perCorner = [&](const std::string& key) {
        const auto found = peak.find(key);
        if (found == peak.end() || found->second < 0)
            return -1.0;
        return static_cast<double>(found->second) / static_cast<double>(options.corners);
    };

    std::printf("\nImport of %zu polygon corners, %d clusters, %d takes x %d keys (%s, %u cores)\n",
                options.corners, options.clusters, options.takes, options.keys,
                MachineName().c_str(), std::thread::hardware_concurrency());
    std::printf("%-12s %7s %9s %9s %9s %9s %9s %8s %8s %9s %9s\n", "file", "MB", "parse", "library",
                "engine", "assimp", "engine/", "library/", "library", "engine", "assimp");
    std::printf("%-12s %7s %9s %9s %9s %9s %9s %8s %8s %9s %9s\n", "", "", "MB/s", "ms", "ms", "ms",
                "assimp", "assimp", "MB/s", "B/corner", "B/corner");
    for (const Loaded& input : inputs) {
        const std::string& label = input.file.m_Label;
        const double mb = static_cast<double>(input.file.m_Bytes) / 1e6;
        const double parse = reporter.Get("Parse/" + label);
        const double library = reporter.Get("Library/" + label);
        const double engine = reporter.Get("Engine/" + label);
        const double assimp = reporter.Get("Assimp/" + label);
        std::printf("%-12s %7.1f %9s %9s %9s %9s %9s %8s %8s %9s %9s\n", label.c_str(), mb,
                    Cell(parse > 0 ? mb / parse : -1, "%.0f").c_str(),
                    Cell(library * 1e3, "%.0f").c_str(), Cell(engine * 1e3, "%.0f").c_str(),
                    Cell(assimp * 1e3, "%.0f").c_str(),
                    Cell(assimp > 0 && engine > 0 ? engine / assimp : -1, "%.2f").c_str(),
                    Cell(assimp > 0 && library > 0 ? library / assimp : -1, "%.2f").c_str(),
                    Cell(library > 0 ? mb / library : -1, "%.0f").c_str(),
                    Cell(perCorner("Engine/" + label), "%.0f").c_str(),
                    Cell(perCorner("Assimp/" + label), "%.0f").c_str());
    }
    if (cold) {
        std::vector<ColdFile> coldFiles;
        for (const Loaded& input : inputs)
            coldFiles.push_back({input.file, "scene"});
        for (const BenchFile& file : EnsureBenchFiles(dataDir, GridSceneOptions()))
            coldFiles.push_back({file, "grid"});
        ColdTable(coldFiles, dataDir, coldRuns);
    }
    if (frameScene) {
        std::printf("\nFrames: %d models of %zu corners (display lists), 640x480\n",
                    frameScene->Copies(), frameScene->CornersPerModel());
        std::printf("  first frame (lists compiled) %s ms, steady frame %s ms\n",
                    Cell(reporter.Get("Frame/first") * 1e3, "%.1f").c_str(),
                    Cell(reporter.Get("Frame/steady") * 1e3, "%.2f").c_str());
        const double authored = reporter.Get("Crowd/authored");
        const double classic = reporter.Get("Crowd/classic");
        std::printf(
            "Crowd: %d skinned, animated characters of %zu corners and %zu bones, 640x480\n",
            authoredCrowd->Count(), authoredCrowd->Corners(), authoredCrowd->Bones());
        std::printf(
            "  authored look steady frame %s ms (%s frames/s); classic look %s ms (%s frames/s)\n",
            Cell(authored * 1e3, "%.2f").c_str(),
            Cell(authored > 0 ? 1.0 / authored : -1, "%.0f").c_str(),
            Cell(classic * 1e3, "%.2f").c_str(),
            Cell(classic > 0 ? 1.0 / classic : -1, "%.0f").c_str());
    }
    return 0;
}
