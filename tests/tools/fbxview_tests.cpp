// fbxview, the model viewer, run as a game author runs it: its arguments and damaged files
// (no window may open for those), then one window on a textured cube with a take, driven with
// xdotool: the report it prints, how much of the window the model fills, a screenshot beside
// the file, orbiting, stepping a frame, the classic look, quitting.
#include <gmock/gmock.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

#include "engine_session.h"

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

const fs::path kCorpus = fs::path(ENGINE_CORPUS_DIR) / "fbx";
const fs::path kMalformed = fs::path(ENGINE_CORPUS_DIR) / "fbx-malformed";

// Reads again every 40 ms until what it reads is accepted or the time runs out; the last read.
template <class Read, class Accept>
auto WaitFor(Read read, Accept accept) {
    auto value = read();
    for (const auto end = Clock::now() + std::chrono::seconds(10);
         !accept(value) && Clock::now() < end; value = read()) {
        std::this_thread::sleep_for(milliseconds(40));
    }
    return value;
}

struct Finished {
    int m_Status = -1;
    std::string m_Out;
    std::string m_Err;
};

// Runs a program to its end in the folder, without an X display, so that a window it tried
// to open would fail loudly instead of appearing.
Finished RunWithoutDisplay(const ScratchDir& dir, const std::string& command) {
    const int status = std::system(("cd " + dir.Root().string() + " && env -u DISPLAY timeout 30 " +
                                    command + " >out.txt 2>err.txt")
                                       .c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadWholeFile(dir.Root() / "out.txt"),
            ReadWholeFile(dir.Root() / "err.txt")};
}

// One fbxview window on a copy of a corpus file in a scratch folder.
class ViewerRun {
public:
    // The copy is named after this process, so that its title is this run's alone.
    explicit ViewerRun(const std::string& corpusFile)
        : m_Name("model" + std::to_string(getpid()) + ".fbx") {
        fs::copy_file(kCorpus / corpusFile, m_Dir.Root() / m_Name);
        Start();
        const auto end = Clock::now() + std::chrono::seconds(30);
        for (int launches = 1; m_Window == 0 && Clock::now() < end;
             std::this_thread::sleep_for(milliseconds(100))) {
            // A busy X server now and then refuses a connection, and the viewer ends at once
            // ("failed to open display"): start it again rather than wait for nothing.
            if (waitpid(m_Pid, nullptr, WNOHANG) == m_Pid) {
                m_Pid = 0;
                if (launches++ == 3) {
                    return;
                }
                Start();
            }
            m_Window = std::strtoul(
                RunCommand("xdotool search --name '^fbxview - " + m_Name + " ' 2>/dev/null")
                    .c_str(),
                nullptr, 10);
        }
    }
    ~ViewerRun() {
        if (m_Pid > 0) {
            kill(m_Pid, SIGKILL);
            waitpid(m_Pid, nullptr, 0);
        }
    }

    // Sends the key (an xdotool key name) to the window.
    void Press(const std::string& key) const {
        const std::string window = std::to_string(m_Window);
        RunCommand("xdotool windowfocus --sync " + window + " key --window " + window + " " + key +
                   " 2>/dev/null");
    }
    std::string Title() const {
        const std::string title =
            RunCommand("xdotool getwindowname " + std::to_string(m_Window) + " 2>/dev/null");
        return title.substr(0, title.find('\n'));
    }
    // The exit status once it ends by itself, -1 while it still runs after a few seconds.
    int WaitForExit() {
        for (const auto end = Clock::now() + std::chrono::seconds(10); Clock::now() < end;
             std::this_thread::sleep_for(milliseconds(50))) {
            int status = 0;
            if (waitpid(m_Pid, &status, WNOHANG) == m_Pid) {
                m_Pid = 0;
                return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            }
        }
        return -1;
    }

    std::string Output() const { return ReadWholeFile(m_Dir.Root() / "stdout.txt"); }
    const ScratchDir& Dir() const { return m_Dir; }
    const std::string& Name() const { return m_Name; }
    unsigned long Window() const { return m_Window; }

private:
    // Starts fbxview on the copy in the scratch folder, its output going to files there.
    void Start() {
        std::fflush(stdout);  // or the child writes what is buffered a second time
        m_Pid = fork();
        if (m_Pid == 0) {
            if (chdir(m_Dir.Root().c_str()) != 0 ||
                std::freopen("stdout.txt", "w", stdout) == nullptr ||
                std::freopen("stderr.txt", "w", stderr) == nullptr) {
                _exit(127);
            }
            execl(FBXVIEW_EXECUTABLE, FBXVIEW_EXECUTABLE, m_Name.c_str(), nullptr);
            _exit(127);
        }
    }

    ScratchDir m_Dir;
    std::string m_Name;
    pid_t m_Pid = 0;
    unsigned long m_Window = 0;
};

// What the model covers: pixels that are neither the background (the top left pixel's
// colour) nor the ground grid's greys.
struct Coverage {
    double m_Share = 0.0;        // of the whole window
    bool m_TouchesEdge = false;  // on the window's outermost rows or columns
};

Coverage ModelCoverage(const WindowPicture& picture) {
    Coverage coverage;
    if (picture.m_Rgb.empty()) {
        return coverage;
    }
    const unsigned char* background = picture.At(0, 0);
    int covered = 0;
    for (int y = 0; y < picture.m_Height; ++y) {
        for (int x = 0; x < picture.m_Width; ++x) {
            const unsigned char* p = picture.At(x, y);
            const bool grey = std::max({p[0], p[1], p[2]}) - std::min({p[0], p[1], p[2]}) <= 2 &&
                              p[0] < kLitLevel;
            const bool model = !grey && (std::abs(p[0] - background[0]) > 16 ||
                                         std::abs(p[1] - background[1]) > 16 ||
                                         std::abs(p[2] - background[2]) > 16);
            covered += model;
            coverage.m_TouchesEdge |= model && (x == 0 || y == 0 || x == picture.m_Width - 1 ||
                                                y == picture.m_Height - 1);
        }
    }
    coverage.m_Share = double(covered) / (double(picture.m_Width) * picture.m_Height);
    return coverage;
}

// Width and height from a PNG file's header; 0 0 when it is not one.
std::pair<int, int> PngSize(const std::string& bytes) {
    if (bytes.size() < 24 || bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0) {
        return {0, 0};
    }
    const auto big = [&](std::size_t at) {
        return int((unsigned char)bytes[at]) << 24 | int((unsigned char)bytes[at + 1]) << 16 |
               int((unsigned char)bytes[at + 2]) << 8 | int((unsigned char)bytes[at + 3]);
    };
    return {big(16), big(20)};
}

TEST(FbxviewArguments, HelpVersionAndWrongArgumentsExitAsDocumented) {
    struct Case {
        std::string m_Arguments;
        int m_Status;
        std::string m_Out;  // what standard output starts with
        std::string m_Err;  // what standard error starts with
    };
    const Case cases[] = {
        {"--help", 0, "usage: fbxview FILE.fbx", ""},
        {"--version", 0, "fbxview ", ""},
        {"", 2, "", "usage: fbxview FILE.fbx"},
        {"one.fbx two.fbx", 2, "", "usage: fbxview FILE.fbx"},
        {"--frobnicate model.fbx", 2, "", "fbxview: unknown option --frobnicate\nusage:"},
    };
    for (const Case& c : cases) {
        ScratchDir dir;
        const Finished run = RunWithoutDisplay(dir, FBXVIEW_EXECUTABLE " " + c.m_Arguments);
        EXPECT_EQ(run.m_Status, c.m_Status) << c.m_Arguments;
        EXPECT_THAT(run.m_Out, StartsWith(c.m_Out)) << c.m_Arguments;
        EXPECT_THAT(run.m_Err, StartsWith(c.m_Err)) << c.m_Arguments;
        EXPECT_EQ(run.m_Out.empty(), c.m_Out.empty()) << c.m_Arguments;
        EXPECT_EQ(run.m_Err.empty(), c.m_Err.empty()) << c.m_Arguments;
    }
}

TEST(FbxviewFiles, UnreadableFileExitsWithTheReadersErrorBeforeAnyWindow) {
    // Cut short, not an FBX file, a version from the future, no file at all.
    for (const std::string& file :
         {(kMalformed / "fuzz_0000.fbx").string(), (kMalformed / "fuzz_0007.fbx").string(),
          (kMalformed / "fuzz_0017.fbx").string(), std::string("missing.fbx")}) {
        ScratchDir dir;
        const Finished info = RunWithoutDisplay(dir, FBXINFO_EXECUTABLE " " + file);
        const Finished view = RunWithoutDisplay(dir, FBXVIEW_EXECUTABLE " " + file);
        ASSERT_THAT(info.m_Err, StartsWith("fbxinfo: " + file + ": ")) << file;
        EXPECT_EQ(view.m_Status, 1) << file;
        // Word for word fbxinfo's error: not even a failed attempt at a display.
        EXPECT_EQ(view.m_Err, "fbxview" + info.m_Err.substr(7)) << file;
        EXPECT_EQ(view.m_Out, "") << file;
    }
}

TEST(FbxviewWindow, ShowsTheFramedModelAndAnswersItsKeys) {
    if (const std::string missing = MissingForWindows(); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    ViewerRun run("maya_textured_cube_7500_binary.fbx");
    ASSERT_NE(run.Window(), 0u) << "no fbxview window; it printed:\n" << run.Output();
    const std::string title = "fbxview - " + run.Name() + " - take Take 001 - frame ";
    EXPECT_EQ(run.Title(), title + "0");

    // The same report as fbxinfo's, first.
    ScratchDir scratch;
    const std::string file = run.Dir().Path(run.Name());
    EXPECT_THAT(run.Output(),
                StartsWith(RunWithoutDisplay(scratch, FBXINFO_EXECUTABLE " " + file).m_Out));

    // Framed: the whole model is seen, and it fills a fair part of the window.
    const auto capture = [&] { return CaptureWindow(run.Window()); };
    const WindowPicture start =
        WaitFor(capture, [](const WindowPicture& p) { return ModelCoverage(p).m_Share > 0.05; });
    EXPECT_GT(ModelCoverage(start).m_Share, 0.05);
    EXPECT_FALSE(ModelCoverage(start).m_TouchesEdge);

    // A screenshot of the window beside the file, its path printed as the file's was given.
    run.Press("s");
    const std::string shot = "\n" + run.Name().substr(0, run.Name().size() - 4) + "-1.png\n";
    EXPECT_THAT(WaitFor([&] { return run.Output(); },
                        [&](const std::string& out) { return out.find(shot) != out.npos; }),
                HasSubstr(shot));
    EXPECT_EQ(PngSize(ReadWholeFile(run.Dir().Root() / shot.substr(1, shot.size() - 2))),
              std::make_pair(start.m_Width, start.m_Height));

    // Each key changes what a user sees: the picture, or the frame in the title.
    struct KeyCase {
        std::string m_Key;
        bool m_Moves;               // the picture changes
        std::string m_TitleEnding;  // what the title then ends with
    };
    const KeyCase keys[] = {
        {"Right", true, "frame 0"},
        {"period", false, "frame 1"},
        {"comma", false, "frame 0"},
        {"c", true, "frame 0 - classic look"},
    };
    WindowPicture before = start;
    for (const KeyCase& key : keys) {
        run.Press(key.m_Key);
        const std::string& ending = key.m_TitleEnding;
        EXPECT_THAT(WaitFor([&] { return run.Title(); },
                            [&](const std::string& t) {
                                return t.size() >= ending.size() &&
                                       t.compare(t.size() - ending.size(), t.npos, ending) == 0;
                            }),
                    EndsWith(ending))
            << key.m_Key;
        if (key.m_Moves) {
            const WindowPicture after = WaitFor(
                capture, [&](const WindowPicture& p) { return DifferingPixels(before, p) > 5000; });
            EXPECT_GT(DifferingPixels(before, after), 5000) << key.m_Key;
            before = after;
        }
    }

    run.Press("q");
    EXPECT_EQ(run.WaitForExit(), 0);
}

}  // namespace
