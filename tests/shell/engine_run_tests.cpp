// The real engine in an X display: its window, its title with the frame rate, its console
// output, and a clean exit when the window is closed.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "window_close.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

std::string RunCommand(const std::string& command) {
    std::string output;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[512];
        while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) {
            output += buffer;
        }
        pclose(pipe);
    }
    return output;
}

std::string Trim(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) {
        text.pop_back();
    }
    return text;
}

// The integer after "label" in xwininfo's report, or -1.
int InfoValue(const std::string& info, const std::string& label) {
    const std::regex pattern(label + R"(\s*(-?[0-9]+))");
    std::smatch match;
    return std::regex_search(info, match, pattern) ? std::stoi(match[1]) : -1;
}

class EngineRunTest : public ::testing::Test {
protected:
    void SetUp() override {
        const char* display = std::getenv("DISPLAY");
        if (display == nullptr || *display == '\0') {
            GTEST_SKIP() << "no X display";
        }
        if (Trim(RunCommand("command -v xdotool")).empty() ||
            Trim(RunCommand("command -v xwininfo")).empty()) {
            GTEST_SKIP() << "xdotool or xwininfo missing";
        }
        std::string pattern = (fs::temp_directory_path() / "engine-run-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        m_Dir = pattern;
        fs::create_directories(m_Dir / "Assets");
        std::ofstream(m_Dir / "Assets" / "states.xml")
            << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<game>\n"
               "  <Title>Demo</Title>\n"
               "  <default>Menu</default>\n"
               "  <state><type>MenuState</type><name>Menu</name>"
               "<resources>./Assets/menu.xml</resources></state>\n"
               "</game>\n";
        std::ofstream(m_Dir / "Assets" / "menu.xml")
            << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<state><Name>Menu</Name></state>\n";
    }

    void TearDown() override {
        if (m_Pid > 0) {
            kill(m_Pid, SIGKILL);
            waitpid(m_Pid, nullptr, 0);
        }
        if (!m_Dir.empty()) {
            std::error_code ignored;
            fs::remove_all(m_Dir, ignored);
        }
    }

    void Start() {
        m_Started = Clock::now();
        m_Pid = fork();
        ASSERT_GE(m_Pid, 0);
        if (m_Pid == 0) {
            if (chdir(m_Dir.c_str()) != 0 ||
                std::freopen((m_Dir / "stdout.txt").c_str(), "w", stdout) == nullptr) {
                _exit(127);
            }
            execl(ENGINE_EXECUTABLE, ENGINE_EXECUTABLE, static_cast<char*>(nullptr));
            _exit(127);
        }
    }

    // Windows titled like the engine's; those that exist before the start are not ours.
    static std::vector<unsigned long> DemoWindows() {
        std::vector<unsigned long> windows;
        std::istringstream found(RunCommand("xdotool search --name '^Demo : ' 2>/dev/null"));
        for (unsigned long window = 0; found >> window;) {
            windows.push_back(window);
        }
        return windows;
    }

    // The engine's window once its title shows the frame rate, or 0.
    unsigned long FindWindow(const std::vector<unsigned long>& others) {
        while (Clock::now() - m_Started < std::chrono::seconds(8)) {
            for (unsigned long window : DemoWindows()) {
                if (std::find(others.begin(), others.end(), window) == others.end()) {
                    return window;
                }
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return 0;
    }

    // Waits for the engine to end; its exit status, or -1 if it had to be killed.
    int WaitForExit() {
        while (Clock::now() - m_Started < std::chrono::seconds(15)) {
            int status = 0;
            if (waitpid(m_Pid, &status, WNOHANG) == m_Pid) {
                m_Pid = 0;
                return WIFEXITED(status) ? WEXITSTATUS(status) : -2;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        return -1;
    }

    std::string Output() const {
        std::ifstream file(m_Dir / "stdout.txt");
        std::stringstream text;
        text << file.rdbuf();
        return text.str();
    }

    fs::path m_Dir;
    pid_t m_Pid = 0;
    Clock::time_point m_Started;
};

TEST_F(EngineRunTest, OpensCentredWindowShowsFrameRateAndExitsCleanlyOnClose) {
    const std::vector<unsigned long> others = DemoWindows();
    Start();
    const unsigned long window = FindWindow(others);
    ASSERT_NE(window, 0u) << "no window titled \"Demo : N\"; engine printed:\n" << Output();

    const std::string root = RunCommand("xwininfo -root");
    const std::string info = RunCommand("xwininfo -id " + std::to_string(window));
    EXPECT_EQ(InfoValue(info, "Width:"), 640);
    EXPECT_EQ(InfoValue(info, "Height:"), 480);
    EXPECT_EQ(InfoValue(info, "Absolute upper-left X:"), (InfoValue(root, "Width:") - 640) / 2);
    EXPECT_EQ(InfoValue(info, "Absolute upper-left Y:"), (InfoValue(root, "Height:") - 480) / 2);

    // The frame rate is counted once a full second has passed.
    std::this_thread::sleep_until(m_Started + std::chrono::milliseconds(2500));
    const std::string title = Trim(RunCommand("xdotool getwindowname " + std::to_string(window)));
    std::smatch match;
    ASSERT_TRUE(std::regex_match(title, match, std::regex(R"(Demo : ([0-9]+))"))) << title;
    EXPECT_GT(std::stoi(match[1]), 0) << title;

    EXPECT_NE(Output().find("Finished loading xml.\n"), std::string::npos) << Output();

    ASSERT_TRUE(SendDeleteWindow(window));
    EXPECT_EQ(WaitForExit(), 0);
}

}  // namespace
