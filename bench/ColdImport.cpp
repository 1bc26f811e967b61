#include "bench/ColdImport.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// VmHWM of a running process, in bytes; -1 when it cannot be read.
std::int64_t PeakResident(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmHWM:", 0) == 0)
            return std::stoll(line.substr(6)) * 1024;
    }
    return -1;
}

// Starts argv in dir with its standard output on a pipe. With a stop line: the figures when
// the child prints it (then the child is killed); without: when the child exits, which must
// be with status 0.
ColdFigures Run(const std::vector<std::string>& argv, const std::string& dir,
                const std::string& stopLine) {
    ColdFigures figures;
    int out[2];
    if (pipe2(out, O_CLOEXEC) != 0)
        return figures;
    std::vector<char*> args;
    for (const std::string& a : argv)
        args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    const Clock::time_point start = Clock::now();
    const pid_t pid = fork();
    if (pid == 0) {
        if (!dir.empty() && chdir(dir.c_str()) != 0)
            _exit(127);
        dup2(out[1], STDOUT_FILENO);
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDERR_FILENO);
        execv(args[0], args.data());
        _exit(127);
    }
    close(out[1]);
    if (pid < 0) {
        close(out[0]);
        return figures;
    }
    std::string pending;
    std::string all;  // a run to its end keeps its whole output
    char buffer[4096];
    bool stopped = false;
    for (;;) {
        const ssize_t n = read(out[0], buffer, sizeof buffer);
        if (n <= 0)
            break;
        pending.append(buffer, static_cast<std::size_t>(n));
        if (stopLine.empty())
            all.append(buffer, static_cast<std::size_t>(n));
        if (!stopLine.empty() && pending.find(stopLine) != std::string::npos) {
            figures.m_Seconds = std::chrono::duration<double>(Clock::now() - start).count();
            figures.m_PeakBytes = PeakResident(pid);
            kill(pid, SIGKILL);
            stopped = true;
            break;
        }
        // Only the tail can still hold the start of the line.
        if (pending.size() > 2 * stopLine.size() + sizeof buffer)
            pending.erase(0, pending.size() - stopLine.size());
    }
    int status = 0;
    waitpid(pid, &status, 0);
    close(out[0]);
    if (stopped) {
        figures.m_Ok = figures.m_PeakBytes > 0;
    } else if (stopLine.empty()) {
        figures.m_Seconds = std::chrono::duration<double>(Clock::now() - start).count();
        // The child's own VmHWM; wait4's maximum would include the parent's pages at the fork.
        const std::size_t at = all.find("peak-kb ");
        figures.m_PeakBytes = at == std::string::npos ? 0 : std::stoll(all.substr(at + 8)) * 1024;
        figures.m_Ok = WIFEXITED(status) && WEXITSTATUS(status) == 0 && figures.m_PeakBytes > 0;
    }
    return figures;
}

}  // namespace

ColdFigures EngineColdImport(const std::string& engine, const std::string& model,
                             const std::string& look, const std::string& scratchDir) {
    const fs::path game = fs::path(scratchDir) / ("cold_" + look);
    fs::create_directories(game / "Assets");
    std::ofstream(game / "Assets" / "states.xml")
        << "<game>\n  <Title>cold import</Title>\n  <Width>64</Width>\n  <Height>64</Height>\n"
           "  <default>Model</default>\n  <model_look>"
        << look
        << "</model_look>\n  <state>\n    <type>MenuState</type>\n    <name>Model</name>\n"
           "    <resources>./Assets/model.xml</resources>\n  </state>\n</game>\n";
    std::ofstream(game / "Assets" / "model.xml")
        << "<state>\n  <Name>Model</Name>\n  <X_Position>0</X_Position>\n"
           "  <Y_Position>0</Y_Position>\n  <Z_Position>-30</Z_Position>\n  <URL>"
        << fs::absolute(model).string() << "</URL>\n</state>\n";
    return Run({fs::absolute(engine).string()}, game.string(), "Finished loading xml.");
}

ColdFigures PeerColdImport(const std::string& program, const std::string& model) {
    return Run({program, model}, "", "");
}
