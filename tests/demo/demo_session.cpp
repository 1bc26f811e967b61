#include "demo_session.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

#include "picture_measures.h"
#include "window_close.h"

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

namespace {

std::vector<unsigned long> DemoWindows() {
    std::vector<unsigned long> windows;
    std::istringstream found(
        RunCommand("xdotool search --name '^FBX Engine Demo : [0-9]+$' 2>/dev/null"));
    for (unsigned long window = 0; found >> window;) {
        windows.push_back(window);
    }
    return windows;
}

}  // namespace

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

DemoSession::DemoSession(const fs::path& sourceAssets) {
    std::string pattern = (fs::temp_directory_path() / "demo-run-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        return;
    }
    m_Dir = pattern;
    std::error_code error;
    fs::copy(sourceAssets, m_Dir / "Assets", fs::copy_options::recursive, error);
    if (error) {
        return;
    }
    m_Before = DemoWindows();
    m_Started = Clock::now();
    Launch();
}

void DemoSession::Launch() {
    m_Pid = fork();
    if (m_Pid == 0) {
        if (chdir(m_Dir.c_str()) != 0 ||
            std::freopen((m_Dir / "stdout.txt").c_str(), "w", stdout) == nullptr) {
            _exit(127);
        }
        execl(ENGINE_EXECUTABLE, ENGINE_EXECUTABLE, static_cast<char*>(nullptr));
        _exit(127);
    }
}

DemoSession::~DemoSession() {
    if (m_Pid > 0) {
        kill(m_Pid, SIGKILL);
        waitpid(m_Pid, nullptr, 0);
    }
    if (!m_Dir.empty()) {
        std::error_code ignored;
        fs::remove_all(m_Dir, ignored);
    }
}

bool DemoSession::WaitForWindow() {
    if (m_Pid <= 0) {
        return false;
    }
    // Other runs on the same display may show windows of the same title: take the one of this
    // process, or failing that one that was not there before the start.
    int launches = 1;
    while (Clock::now() - m_Started < std::chrono::seconds(40) && m_Window == 0) {
        // A busy X server can refuse a connection now and then; the engine then ends at once
        // ("failed to open display"). Start it again rather than wait for nothing.
        if (waitpid(m_Pid, nullptr, WNOHANG) == m_Pid) {
            m_Pid = 0;
            if (launches == 3) {
                return false;
            }
            ++launches;
            Launch();
        }
        for (unsigned long window : DemoWindows()) {
            const std::string pid =
                RunCommand("xdotool getwindowpid " + std::to_string(window) + " 2>/dev/null");
            if (std::atoi(pid.c_str()) == m_Pid ||
                std::find(m_Before.begin(), m_Before.end(), window) == m_Before.end()) {
                m_Window = window;
            }
        }
        std::this_thread::sleep_for(milliseconds(100));
    }
    if (m_Window == 0) {
        return false;
    }
    RunCommand("xdotool windowfocus --sync " + std::to_string(m_Window) + " 2>/dev/null");
    const WindowPicture first = WaitForPicture(
        [](const WindowPicture& p) { return MeasureLit(p).m_Count > 1000; }, milliseconds(20000));
    return MeasureLit(first).m_Count > 1000;
}

void DemoSession::Hold(const std::string& key, double seconds) const {
    const std::string window = std::to_string(m_Window);
    RunCommand("xdotool windowfocus --sync " + window + " keydown --window " + window + " " + key +
               " sleep " + std::to_string(seconds) + " keyup --window " + window + " " + key +
               " 2>/dev/null");
}

WindowPicture DemoSession::Capture() const {
    return CaptureWindow(m_Window);
}

WindowPicture DemoSession::StablePicture() const {
    WindowPicture last = Capture();
    for (int attempt = 0; attempt < 40; ++attempt) {
        std::this_thread::sleep_for(milliseconds(60));
        WindowPicture next = Capture();
        if (DifferingPixels(last, next) == 0) {
            return next;
        }
        last = std::move(next);
    }
    return last;
}

WindowPicture DemoSession::WaitForPicture(const std::function<bool(const WindowPicture&)>& accept,
                                          milliseconds limit) const {
    const auto end = Clock::now() + limit;
    WindowPicture picture = Capture();
    while (!accept(picture) && Clock::now() < end) {
        std::this_thread::sleep_for(milliseconds(40));
        picture = Capture();
    }
    return picture;
}

int DemoSession::Close() {
    if (m_Pid <= 0 || m_Window == 0 || !SendDeleteWindow(m_Window)) {
        return -1;
    }
    const auto end = Clock::now() + std::chrono::seconds(10);
    while (Clock::now() < end) {
        int status = 0;
        if (waitpid(m_Pid, &status, WNOHANG) == m_Pid) {
            m_Pid = 0;
            return WIFEXITED(status) ? WEXITSTATUS(status) : -2;
        }
        std::this_thread::sleep_for(milliseconds(50));
    }
    return -1;
}

std::string DemoSession::Output() const {
    std::ifstream file(m_Dir / "stdout.txt");
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}
