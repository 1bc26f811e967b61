// One run of the real engine on a private copy of the demo's Assets/: start it, find its
// window, hold keys, capture pictures, read its console report, close it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "window_picture.h"

// Runs a shell command and returns what it printed.
std::string RunCommand(const std::string& command);

class DemoSession {
public:
    // Copies sourceAssets into a new temporary directory and runs the engine there.
    explicit DemoSession(const std::filesystem::path& sourceAssets);
    ~DemoSession();
    DemoSession(const DemoSession&) = delete;
    DemoSession& operator=(const DemoSession&) = delete;

    // True once the engine's window, titled with the demo's title and a frame rate, shows a
    // drawn picture.
    bool WaitForWindow();

    // Presses the key, keeps it down for the given time and lets it go again.
    void Hold(const std::string& key, double seconds) const;

    WindowPicture Capture() const;
    // A picture that stays the same over two captures (the scene has stopped moving).
    WindowPicture StablePicture() const;
    // Captures until the test accepts a picture or the time runs out; the last capture.
    WindowPicture WaitForPicture(const std::function<bool(const WindowPicture&)>& accept,
                                 std::chrono::milliseconds limit) const;

    // Closes the window as a window manager would; the engine's exit status, or -1.
    int Close();

    std::string Output() const;
    const std::filesystem::path& Directory() const { return m_Dir; }
    unsigned long Window() const { return m_Window; }

private:
    // Starts the engine in m_Dir with its standard output going to stdout.txt there.
    void Launch();

    std::filesystem::path m_Dir;
    pid_t m_Pid = 0;
    unsigned long m_Window = 0;
    std::vector<unsigned long> m_Before;  // demo windows that were there before this run
    std::chrono::steady_clock::time_point m_Started;
};
