// One run of the real engine in a scratch folder: start it, find its window, hold keys,
// capture pictures, read what it printed, close it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "scratch_dir.h"
#include "window_picture.h"

// Runs a shell command and returns what it printed.
std::string RunCommand(const std::string& command);

// Why the end-to-end tests cannot run here (no X display, no xdotool or xwininfo), or "".
std::string MissingForWindows();

class EngineSession {
public:
    // A scratch folder holding a copy of assets as its Assets/ (nothing when assets is empty).
    explicit EngineSession(const std::filesystem::path& assets = {});
    ~EngineSession();

    // Starts the engine in the folder, standard output and error going to files there.
    void Start();
    // Waits for the engine to end by itself: its exit status, -2 when a signal ended it, -1
    // while it still runs after limit.
    int WaitForExit(std::chrono::seconds limit);

    // Starts the engine unless Start() did; true once this run's window, titled "title :
    // frames-per-second", is found and, when drawn is set, shows a drawn picture.
    bool WaitForWindow(const std::string& title, bool drawn = true);
    // The frame rate in the window's title, or -1 when the title is not "title : N".
    int TitleFrameRate() const;

    // Presses the key, keeps it down for the given time and lets it go again.
    void Hold(const std::string& key, double seconds) const;
    // The window's current picture; empty if it cannot be read.
    WindowPicture Capture() const;
    // A picture that stays the same over two captures (the scene has stopped moving).
    WindowPicture StablePicture() const;
    // Captures until the test accepts a picture or the time runs out; the last capture.
    WindowPicture WaitForPicture(const std::function<bool(const WindowPicture&)>& accept,
                                 std::chrono::milliseconds limit) const;

    // Closes the window as a window manager would; the engine's exit status, or -1.
    int Close();

    std::string Output() const { return ReadWholeFile(Directory() / "stdout.txt"); }
    std::string Errors() const { return ReadWholeFile(Directory() / "stderr.txt"); }
    const ScratchDir& Files() const { return m_Dir; }
    const std::filesystem::path& Directory() const { return m_Dir.Root(); }
    unsigned long Window() const { return m_Window; }

private:
    std::vector<unsigned long> TitledWindows() const;

    ScratchDir m_Dir;
    std::string m_Title;
    pid_t m_Pid = 0;
    unsigned long m_Window = 0;
    std::vector<unsigned long> m_Before;  // windows of the same title before this run
    std::chrono::steady_clock::time_point m_Started;
};
