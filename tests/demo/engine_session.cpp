#include "engine_session.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <regex>
#include <sstream>
#include <thread>

// Last: Xlib's macros would clash with names in the headers above.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

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

std::string MissingForWindows() {
    const char* display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0') {
        return "no X display";
    }
    const std::string tools = RunCommand("command -v xdotool && command -v xwininfo");
    return tools.find("xwininfo") == std::string::npos ? "xdotool or xwininfo missing" : "";
}

EngineSession::EngineSession(const fs::path& assets) {
    if (!assets.empty()) {
        fs::copy(assets, m_Dir.Root() / "Assets", fs::copy_options::recursive);
    }
}

EngineSession::~EngineSession() {
    if (m_Pid > 0) {
        kill(m_Pid, SIGKILL);
        waitpid(m_Pid, nullptr, 0);
    }
}

void EngineSession::Start() {
    std::fflush(stdout);  // or the child writes what is buffered a second time
    m_Pid = fork();
    if (m_Pid == 0) {
        if (chdir(Directory().c_str()) != 0 ||
            std::freopen((Directory() / "stdout.txt").c_str(), "w", stdout) == nullptr ||
            std::freopen((Directory() / "stderr.txt").c_str(), "w", stderr) == nullptr) {
            _exit(127);
        }
        execl(ENGINE_EXECUTABLE, ENGINE_EXECUTABLE, static_cast<char*>(nullptr));
        _exit(127);
    }
}

int EngineSession::WaitForExit(std::chrono::seconds limit) {
    for (const auto end = Clock::now() + limit; m_Pid > 0 && Clock::now() < end;) {
        int status = 0;
        if (waitpid(m_Pid, &status, WNOHANG) == m_Pid) {
            m_Pid = 0;
            return WIFEXITED(status) ? WEXITSTATUS(status) : -2;
        }
        std::this_thread::sleep_for(milliseconds(50));
    }
    return -1;
}

std::vector<unsigned long> EngineSession::TitledWindows() const {
    std::istringstream found(
        RunCommand("xdotool search --name '^" + m_Title + " : [0-9]+$' 2>/dev/null"));
    return {std::istream_iterator<unsigned long>(found), std::istream_iterator<unsigned long>()};
}

bool EngineSession::WaitForWindow(const std::string& title, bool drawn) {
    m_Title = title;
    m_Before = TitledWindows();
    m_Started = Clock::now();
    if (m_Pid == 0) {
        Start();
    }
    // Other runs on the same display may show windows of the same title: take one that was
    // not there before the start.
    for (int launches = 1; m_Window == 0 && Clock::now() - m_Started < std::chrono::seconds(40);) {
        // A busy X server can refuse a connection now and then; the engine then ends at once
        // ("failed to open display"). Start it again rather than wait for nothing.
        if (waitpid(m_Pid, nullptr, WNOHANG) == m_Pid) {
            m_Pid = 0;
            if (launches++ == 3) {
                return false;
            }
            Start();
        }
        for (unsigned long window : TitledWindows()) {
            if (std::find(m_Before.begin(), m_Before.end(), window) == m_Before.end()) {
                m_Window = window;
            }
        }
        std::this_thread::sleep_for(milliseconds(100));
    }
    if (m_Window == 0) {
        return false;
    }
    RunCommand("xdotool windowfocus --sync " + std::to_string(m_Window) + " 2>/dev/null");
    const auto lit = [](const WindowPicture& p) { return MeasureLit(p).m_Count > 1000; };
    return !drawn || lit(WaitForPicture(lit, milliseconds(20000)));
}

int EngineSession::TitleFrameRate() const {
    const std::string title = RunCommand("xdotool getwindowname " + std::to_string(m_Window));
    std::smatch match;
    return std::regex_match(title, match, std::regex("^" + m_Title + " : ([0-9]+)\n?"))
               ? std::stoi(match[1])
               : -1;
}

void EngineSession::Hold(const std::string& key, double seconds) const {
    const std::string window = std::to_string(m_Window);
    RunCommand("xdotool windowfocus --sync " + window + " keydown --window " + window + " " + key +
               " sleep " + std::to_string(seconds) + " keyup --window " + window + " " + key +
               " 2>/dev/null");
}

WindowPicture EngineSession::Capture() const {
    return CaptureWindow(m_Window);
}

WindowPicture EngineSession::StablePicture() const {
    WindowPicture last;
    const auto same = [&](const WindowPicture& picture) {
        const bool unchanged = DifferingPixels(last, picture) == 0;
        last = picture;
        return unchanged;
    };
    return WaitForPicture(same, milliseconds(2500));
}

WindowPicture EngineSession::WaitForPicture(const std::function<bool(const WindowPicture&)>& accept,
                                            milliseconds limit) const {
    const auto end = Clock::now() + limit;
    WindowPicture picture = Capture();
    while (!accept(picture) && Clock::now() < end) {
        std::this_thread::sleep_for(milliseconds(40));
        picture = Capture();
    }
    return picture;
}

int EngineSession::Close() {
    Display* display = m_Pid > 0 && m_Window != 0 ? XOpenDisplay(nullptr) : nullptr;
    if (display == nullptr) {
        return -1;
    }
    // As a window manager closes a window: WM_PROTOCOLS / WM_DELETE_WINDOW.
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = m_Window;
    event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
    event.xclient.data.l[1] = CurrentTime;
    const Status sent = XSendEvent(display, m_Window, False, NoEventMask, &event);
    XCloseDisplay(display);
    return sent != 0 ? WaitForExit(std::chrono::seconds(10)) : -1;
}
