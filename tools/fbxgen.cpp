// fbxgen: writes synthetic FBX files for tests, benchmarks and the demo.
//
//   fbxgen [--preset grid|cube|skinned|character] [--character] [--corners N] [--clusters K]
//          [--bones B] [--takes T] [--keys M] [--texture FILE] [--embed IMAGE]
//          [--password P] [--version 6100|7500] [--ascii|--binary] OUT.fbx
//
// --embed puts the bytes of the IMAGE file inside the written file, in every texture's video
// clip, as exporters embed images.
// --character (or --preset character) writes the skinned, animated character of
// MakeSkinnedCharacter(): --corners (default 5000), --bones (22..1000, default 30) and --takes
// (0..2, default both) size it, up to 2000000 corners; --password marks it too.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fbx/write/WriterScene.h"
#include "fbx/write/WriterSynthetic.h"

namespace {

constexpr const char* kUsage =
    "usage: fbxgen [--preset grid|cube|skinned|character] [--character]\n"
    "              [--corners N] [--clusters K] [--bones B] [--takes T] [--keys M]\n"
    "              [--texture FILE] [--embed IMAGE] [--password P]\n"
    "              [--version 6100|7500] [--ascii|--binary] OUT.fbx\n"
    "       fbxgen --help | --version\n"
    "Writes a synthetic FBX file for tests, benchmarks and the demo. --version with a number\n"
    "picks the file layout; alone it prints fbxgen's version.\n";

void PrintUsage() {
    std::fputs(kUsage, stderr);
}

// Reads a non-negative whole number no larger than max; false on anything else.
bool ParseCount(const char* text, unsigned long long max, unsigned long long& out) {
    if (!text || !*text || *text == '-')
        return false;
    char* end = nullptr;
    unsigned long long v = std::strtoull(text, &end, 10);
    if (*end != '\0' || v > max)
        return false;
    out = v;
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    fbx::SyntheticOptions options;
    std::string preset = "grid";
    std::string output;
    std::string embed;  // image file whose bytes the textures carry
    int version = 7500;
    bool binary = true;
    bool cornersGiven = false;
    bool takesGiven = false;
    fbx::CharacterOptions character;

    // Alone, --help and --version tell about the program (--version followed by a number
    // picks the file layout).
    if (argc == 2 && std::string(argv[1]) == "--help") {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (argc == 2 && std::string(argv[1]) == "--version") {
        std::printf("fbxgen %s\n", TOOL_VERSION);
        return 0;
    }
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        auto value = [&]() -> const char* { return i + 1 < argc ? argv[++i] : nullptr; };
        unsigned long long n = 0;
        if (arg == "--ascii") {
            binary = false;
        } else if (arg == "--binary") {
            binary = true;
        } else if (arg == "--character") {
            preset = "character";
        } else if (arg == "--preset") {
            const char* v = value();
            preset = v ? v : "";
            if (preset != "grid" && preset != "cube" && preset != "skinned" &&
                preset != "character") {
                std::fprintf(stderr, "fbxgen: unknown preset '%s'\n", preset.c_str());
                PrintUsage();
                return 2;
            }
        } else if (arg == "--texture" || arg == "--password" || arg == "--embed") {
            const char* v = value();
            if (!v) {
                std::fprintf(stderr, "fbxgen: %s needs a value\n", arg.c_str());
                return 2;
            }
            (arg == "--texture" ? options.texture
             : arg == "--embed" ? embed
                                : options.password) = v;
        } else if (arg == "--version") {
            const char* v = value();
            if (!ParseCount(v, 9999, n) || (n != 6100 && n != 7500)) {
                std::fprintf(stderr, "fbxgen: --version must be 6100 or 7500\n");
                PrintUsage();
                return 2;
            }
            version = static_cast<int>(n);
        } else if (arg == "--bones") {
            if (!ParseCount(value(), 1000, n) || n < 22) {
                std::fprintf(stderr, "fbxgen: --bones needs a whole number from 22 to 1000\n");
                return 2;
            }
            character.bones = static_cast<int>(n);
        } else if (arg == "--corners" || arg == "--clusters" || arg == "--takes" ||
                   arg == "--keys") {
            const unsigned long long max = arg == "--corners" ? 200000000ULL : 100000ULL;
            if (!ParseCount(value(), max, n)) {
                std::fprintf(stderr, "fbxgen: %s needs a whole number from 0 to %llu\n",
                             arg.c_str(), max);
                return 2;
            }
            if (arg == "--corners") {
                options.corners = static_cast<std::size_t>(n);
                cornersGiven = true;
            } else if (arg == "--clusters") {
                options.clusters = static_cast<int>(n);
            } else if (arg == "--takes") {
                options.takes = static_cast<int>(n);
                takesGiven = true;
            } else {
                options.keys = static_cast<int>(n);
            }
        } else if (!arg.empty() && arg[0] == '-') {
            std::fprintf(stderr, "fbxgen: unknown option '%s'\n", arg.c_str());
            PrintUsage();
            return 2;
        } else if (output.empty()) {
            output = arg;
        } else {
            std::fprintf(stderr, "fbxgen: more than one output file given\n");
            PrintUsage();
            return 2;
        }
    }
    if (output.empty()) {
        std::fprintf(stderr, "fbxgen: no output file given\n");
        PrintUsage();
        return 2;
    }
    if (options.takes > 0 && options.keys == 0)
        options.keys = 24;

    fbx::SceneDescription scene;
    if (preset == "cube") {
        scene = fbx::MakeCubeScene(options.texture);
        scene.password = options.password;
    } else if (preset == "character") {
        if (cornersGiven)
            character.corners = options.corners;
        if (takesGiven)
            character.takes = options.takes;
        if (character.corners > 2000000 || character.takes > 2) {
            std::fprintf(stderr, "fbxgen: the character takes up to 2000000 corners and 2 takes\n");
            return 2;
        }
        scene = fbx::MakeSkinnedCharacter(character);
        scene.password = options.password;
    } else {
        if (preset == "skinned") {
            if (!cornersGiven)
                options.corners = 4 * 64;
            if (options.clusters == 0)
                options.clusters = 4;
            if (options.takes == 0)
                options.takes = 1;
            if (options.keys == 0)
                options.keys = 24;
        }
        scene = fbx::MakeSyntheticScene(options);
    }
    if (!embed.empty()) {
        std::ifstream in(embed, std::ios::binary);
        const std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                                              std::istreambuf_iterator<char>());
        if (!in.good() && !in.eof()) {
            std::fprintf(stderr, "fbxgen: cannot read %s\n", embed.c_str());
            return 1;
        }
        for (fbx::desc::Texture& texture : scene.textures)
            texture.content = bytes;
    }
    std::string error;
    if (!fbx::WriteFile(output, scene, version, binary, &error)) {
        std::fprintf(stderr, "fbxgen: %s\n", error.c_str());
        return 1;
    }
    std::printf("fbxgen: wrote %s (FBX %d, %s)\n", output.c_str(), version,
                binary ? "binary" : "ASCII");
    return 0;
}
