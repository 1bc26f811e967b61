// The whole engine given a game whose files are missing or damaged: without a usable state
// table it ends at start-up saying which file is broken; with damaged models, textures and
// state files it opens its window, shows its title with a frame rate and keeps playing.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <string>
#include <thread>

#include "demo_session.h"
#include "hostile_support.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

bool HaveDisplay() {
    const char* display = std::getenv("DISPLAY");
    return display != nullptr && *display != '\0' && !RunCommand("command -v xdotool").empty();
}

struct Ending {
    bool m_Ended = false;  // false: still running after the time limit (it was killed)
    int m_Status = 0;
    std::string m_Errors;  // standard error
};

// Runs the engine in dir and waits up to limit for it to end by itself.
Ending RunUntilItEnds(const fs::path& dir, std::chrono::seconds limit) {
    const pid_t pid = fork();
    if (pid == 0) {
        if (chdir(dir.c_str()) != 0 ||
            std::freopen((dir / "stderr.txt").c_str(), "w", stderr) == nullptr ||
            std::freopen((dir / "stdout.txt").c_str(), "w", stdout) == nullptr) {
            _exit(127);
        }
        execl(ENGINE_EXECUTABLE, ENGINE_EXECUTABLE, static_cast<char*>(nullptr));
        _exit(127);
    }
    Ending ending;
    const auto end = Clock::now() + limit;
    while (Clock::now() < end && !ending.m_Ended) {
        if (waitpid(pid, &ending.m_Status, WNOHANG) == pid) {
            ending.m_Ended = true;
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
    }
    if (!ending.m_Ended) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    ending.m_Errors = ReadWholeFile((dir / "stderr.txt").string());
    return ending;
}

class HostileEngine : public ::testing::Test {
protected:
    void SetUp() override {
        if (!HaveDisplay()) {
            GTEST_SKIP() << "no X display or xdotool";
        }
    }
};

TEST_F(HostileEngine, WithoutAUsableStateTableItEndsAtStartUpNamingTheFile) {
    ScratchDir noAssets;
    Ending ending = RunUntilItEnds(noAssets.Root(), std::chrono::seconds(20));
    ASSERT_TRUE(ending.m_Ended) << "still running without Assets/";
    EXPECT_FALSE(WIFEXITED(ending.m_Status) && WEXITSTATUS(ending.m_Status) == 0);
    EXPECT_TRUE(std::regex_search(
        ending.m_Errors,
        std::regex("Fatal error in [^ ]*Assets/states\\.xml at line [0-9]+, column [0-9]+: ")))
        << ending.m_Errors;

    for (const std::string& text : {std::string(), std::string("<game><Title>x</Title>")}) {
        ScratchDir game;
        game.Write("Assets/states.xml", text);
        ending = RunUntilItEnds(game.Root(), std::chrono::seconds(20));
        ASSERT_TRUE(ending.m_Ended) << "still running with states.xml \"" << text << "\"";
        EXPECT_FALSE(WIFEXITED(ending.m_Status) && WEXITSTATUS(ending.m_Status) == 0);
        EXPECT_TRUE(std::regex_search(
            ending.m_Errors,
            std::regex("Fatal error in [^ ]*states\\.xml at line [0-9]+, column [0-9]+: ")))
            << ending.m_Errors;
    }
}

// The demo, with damaged models and textures added to its title screen and two states whose
// files are missing or are a folder.
fs::path DamagedDemo(const ScratchDir& dir) {
    const fs::path assets = dir.Root() / "Assets";
    fs::copy(fs::path(ENGINE_SOURCE_DIR) / "Assets", assets, fs::copy_options::recursive);
    for (const char* name : {"huge_counts.fbx", "bad_indices.fbx", "connection_loop.fbx",
                             "connection_loop_6100.fbx", "not_a_model.fbx"}) {
        fs::copy_file(DataFile(name), assets / "models" / name);
    }
    std::string quad = ReadWholeFile(DataFile("textured_quad.fbx"));
    quad = std::regex_replace(quad, std::regex("hostile\\.bmp"), "Assets/textures/lying.bmp");
    dir.Write("Assets/models/quad.fbx", quad);
    BitmapSpec lying;
    lying.m_Width = 30000;
    lying.m_Height = 30000;
    lying.m_ImageSize = 0xFFFFFFF0u;
    dir.Write("Assets/textures/lying.bmp", BitmapBytes(lying));
    dir.Write("Assets/models/deep.fbx", DeepAsciiFbx(50000, false));
    fs::create_directory(assets / "models" / "folder.fbx");

    std::string title = ReadWholeFile((assets / "title.xml").string());
    std::string urls;
    for (const char* name :
         {"missing.fbx", "folder.fbx", "not_a_model.fbx", "huge_counts.fbx", "deep.fbx",
          "connection_loop.fbx", "connection_loop_6100.fbx", "bad_indices.fbx", "quad.fbx"}) {
        urls += "    <URL>./Assets/models/" + std::string(name) + "</URL>\n";
    }
    title.insert(title.find("    <Default_Action>"), urls);
    dir.Write("Assets/title.xml", title);

    std::string table = ReadWholeFile((assets / "states.xml").string());
    table.insert(table.find("</game>"),
                 "<state><type>MenuState</type><name>Gone</name>"
                 "<resources>./Assets/gone.xml</resources></state>\n"
                 "<state><type>MenuState</type><name>Folder</name>"
                 "<resources>./Assets/models</resources></state>\n");
    dir.Write("Assets/states.xml", table);
    return assets;
}

int TitleFrameRate(unsigned long window) {
    const std::string title = RunCommand("xdotool getwindowname " + std::to_string(window));
    std::smatch match;
    if (!std::regex_search(title, match, std::regex("^FBX Engine Demo : ([0-9]+)"))) {
        return -1;
    }
    return std::stoi(match[1]);
}

TEST_F(HostileEngine, DamagedModelsTexturesAndStateFilesAreReportedAndTheGameGoesOn) {
    ScratchDir dir;
    DemoSession session(DamagedDemo(dir));
    ASSERT_TRUE(session.WaitForWindow()) << session.Output();
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    EXPECT_GT(TitleFrameRate(session.Window()), 0);

    const std::string output = session.Output();
    for (const std::string& line :
         {std::string("Failed to open ./Assets/models/missing.fbx.\n"),
          std::string("Error returned: Not a regular file: ./Assets/models/folder.fbx\n"),
          std::string("Error returned: Not an FBX file: ./Assets/models/not_a_model.fbx\n"),
          std::string("Loading mesh: Self\n"), std::string("Loading mesh: Liar\n"),
          std::string("Loading texture: QuadTexture\n"), std::string("Finished loading xml.\n")}) {
        EXPECT_NE(output.find(line), std::string::npos) << line << "in:\n" << output;
    }

    // A reset imports every model again, a reload re-reads every file: still playing.
    session.Hold("r", 0.3);
    session.Hold("l", 0.3);
    std::this_thread::sleep_for(std::chrono::milliseconds(2500));
    EXPECT_GT(TitleFrameRate(session.Window()), 0);
    EXPECT_EQ(session.Close(), 0);
}

}  // namespace
