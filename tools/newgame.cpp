// newgame DIR MODEL.fbx...: writes a game folder the engine plays, one state per model. Each
// model is copied into DIR/Assets/models/ with the texture image files it names, placed in
// front of the camera so that it is seen whole, with the demo's movement keys, n and b between
// the models and a key per take (listed in DIR/README.txt). Run `engine` in DIR to play it.
// Exits 0 when the folder is written; 1 when DIR holds files already, a model cannot be read
// or a file cannot be written; 2 on wrong arguments.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "tools/newgame/GameFiles.h"
#include "tools/newgame/ModelSurvey.h"
#include "tools/newgame/StatePlacement.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kUsage =
    "usage: newgame DIR MODEL.fbx...\n"
    "       newgame --help | --version\n"
    "Writes a game folder DIR that the engine plays: one state per model, each model placed\n"
    "to be seen whole. Run `engine` in DIR; DIR/README.txt lists the keys:\n"
    "  j k i m   move the model left, right, up, down\n"
    "  a d w s   turn it\n"
    "  z x       zoom in and out\n"
    "  n b       next and previous model\n"
    "  1..9 ...  play the model's takes (the first plays while no key is held)\n"
    "  r l       back to the first model, reload the files\n"
    "DIR must not exist or be empty.\n";

// The command line: the folder and the model files; false after printing what to do instead,
// with the exit status in status.
bool ReadArguments(int argc, char** argv, std::string& dir, std::vector<std::string>& models,
                   int& status) {
    bool optionsEnd = false;
    std::vector<std::string> operands;
    for (int i = 1; i < argc; ++i) {
        const char* argument = argv[i];
        if (!optionsEnd && std::strcmp(argument, "--help") == 0) {
            std::fputs(kUsage, stdout);
            status = 0;
            return false;
        }
        if (!optionsEnd && std::strcmp(argument, "--version") == 0) {
            std::printf("newgame %s\n", TOOL_VERSION);
            status = 0;
            return false;
        }
        if (!optionsEnd && std::strcmp(argument, "--") == 0) {
            optionsEnd = true;
        } else if (!optionsEnd && argument[0] == '-' && argument[1] != '\0') {
            std::fprintf(stderr, "newgame: unknown option %s\n", argument);
            std::fputs(kUsage, stderr);
            status = 2;
            return false;
        } else {
            operands.emplace_back(argument);
        }
    }
    if (operands.size() < 2) {
        std::fputs(kUsage, stderr);
        status = 2;
        return false;
    }
    dir = operands.front();
    models.assign(operands.begin() + 1, operands.end());
    return true;
}

bool WriteText(const fs::path& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
    out.close();
    if (!out) {
        std::fprintf(stderr, "newgame: cannot write %s\n", path.string().c_str());
        return false;
    }
    return true;
}

bool CopyInto(const fs::path& from, const fs::path& to) {
    std::error_code error;
    fs::create_directories(to.parent_path(), error);
    if (!error)
        fs::copy_file(from, to, fs::copy_options::overwrite_existing, error);
    if (error) {
        std::fprintf(stderr, "newgame: cannot copy %s to %s: %s\n", from.string().c_str(),
                     to.string().c_str(), error.message().c_str());
        return false;
    }
    return true;
}

// A name not yet in names (case ignored, so that the folder works on any file system): the
// name itself, else with _2, _3, ... appended.
std::string UniqueName(const std::string& name, std::vector<std::string>& names) {
    auto lower = [](std::string text) {
        for (char& c : text)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return text;
    };
    std::string unique = name;
    for (int n = 2;; ++n) {
        bool taken = false;
        for (const std::string& other : names)
            taken = taken || lower(other) == lower(unique);
        if (!taken)
            break;
        unique = name + "_" + std::to_string(n);
    }
    names.push_back(unique);
    return unique;
}

// The state of each model: names, files and place. Reserves the loader's and the state
// table's file names.
std::vector<PlannedState> PlanStates(const std::vector<SurveyedModel>& models) {
    std::vector<std::string> stateNames = {"loading", "states"};
    std::vector<std::string> modelNames;
    std::vector<PlannedState> states;
    for (const SurveyedModel& model : models) {
        const fs::path source(model.m_File);
        PlannedState state;
        state.m_Name = UniqueName(PlainName(source.stem().string(), "Model"), stateNames);
        state.m_File = state.m_Name + ".xml";
        state.m_Model = "Assets/models/" +
                        UniqueName(PlainName(source.stem().string(), "model"), modelNames) + ".fbx";
        state.m_Source = model.m_File;
        state.m_Position = PlaceInView(model.m_Sphere);
        state.m_Takes = model.m_Takes;
        states.push_back(std::move(state));
    }
    return states;
}

// Each model and its texture files into the game folder; a texture file that another model
// already put at the same place is kept as the first one left it.
bool CopyModels(const fs::path& dir, const std::vector<SurveyedModel>& models,
                const std::vector<PlannedState>& states) {
    std::vector<fs::path> written;
    for (std::size_t m = 0; m < models.size(); ++m) {
        const fs::path copy = dir / states[m].m_Model;
        if (!CopyInto(models[m].m_File, copy))
            return false;
        written.push_back(copy.lexically_normal());
        for (const TextureFile& texture : models[m].m_Textures) {
            const fs::path placed = (copy.parent_path() / texture.m_Placed).lexically_normal();
            bool taken = false;
            for (const fs::path& other : written)
                taken = taken || other == placed;
            if (taken) {
                std::fprintf(stderr, "newgame: %s: %s is taken already; not copied\n",
                             models[m].m_File.c_str(), placed.string().c_str());
                continue;
            }
            if (!CopyInto(texture.m_Found, placed))
                return false;
            written.push_back(placed);
        }
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    std::string dirArgument;
    std::vector<std::string> files;
    int status = 0;
    if (!ReadArguments(argc, argv, dirArgument, files, status))
        return status;

    const fs::path dir(dirArgument);
    std::error_code error;
    if (fs::exists(dir, error) && !(fs::is_directory(dir, error) && fs::is_empty(dir, error))) {
        std::fprintf(stderr, "newgame: %s exists and is not an empty folder; give a new one\n",
                     dirArgument.c_str());
        return 1;
    }

    // Every model is read before anything is written.
    std::vector<SurveyedModel> models(files.size());
    for (std::size_t m = 0; m < files.size(); ++m) {
        std::string reason;
        if (!SurveyModel(files[m], models[m], reason)) {
            std::fprintf(stderr, "newgame: %s: %s\n", files[m].c_str(), reason.c_str());
            return 1;
        }
    }

    const std::vector<PlannedState> states = PlanStates(models);
    const std::string title =
        PlainName(fs::absolute(dir).lexically_normal().filename().string(), "Game");
    fs::create_directories(dir / "Assets" / "models", error);
    if (error) {
        std::fprintf(stderr, "newgame: cannot create %s: %s\n", dirArgument.c_str(),
                     error.message().c_str());
        return 1;
    }
    bool ok = CopyModels(dir, models, states) &&
              WriteText(dir / "Assets" / "states.xml", StateTableXml(states, title)) &&
              WriteText(dir / "Assets" / kLoaderFile, LoaderXml());
    for (std::size_t s = 0; ok && s < states.size(); ++s)
        ok = WriteText(dir / "Assets" / states[s].m_File, StateXml(states, s));
    ok = ok && WriteText(dir / "README.txt", ReadmeText(states, title));
    if (!ok)
        return 1;

    for (const PlannedState& state : states) {
        std::printf("newgame: state %s: %s at (%ld, %ld, %ld), %zu take%s\n", state.m_Name.c_str(),
                    state.m_Model.c_str(), state.m_Position.m_X, state.m_Position.m_Y,
                    state.m_Position.m_Z, state.m_Takes.size(),
                    state.m_Takes.size() == 1 ? "" : "s");
    }
    std::printf("newgame: wrote %s; run `engine` there (keys in README.txt)\n",
                dirArgument.c_str());
    return 0;
}
