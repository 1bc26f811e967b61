#include "bench/PeakMemory.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

#include "bench/Importers.h"

namespace {

// A "Name:   1234 kB" field of /proc/self/status, in kB; -1 when missing.
long StatusKb(const char* field) {
    std::ifstream status("/proc/self/status");
    std::string line;
    const std::size_t length = std::strlen(field);
    while (std::getline(status, line)) {
        if (line.compare(0, length, field) == 0 && line.size() > length && line[length] == ':') {
            return std::stol(line.substr(length + 1));
        }
    }
    return -1;
}

}  // namespace

int RunPeakMemoryChild(const std::string& which, const std::string& path) {
    const long before = StatusKb("VmHWM");
    const ImportFunction import = which == "engine"    ? EngineImport
                                  : which == "library" ? LibraryImport
                                  : which == "assimp"  ? AssimpImport
                                                       : nullptr;
    if (!import)
        return 2;
    std::size_t size = 0;
    {
        QuietStdout quiet;
        size = import(path)->Size();
    }
    const long after = StatusKb("VmHWM");
    if (size == 0)
        return 1;
    std::printf("peak-kb %ld %ld\n", before, after);
    return 0;
}

std::int64_t MeasurePeakGrowth(const std::string& program, const std::string& which,
                               const std::string& path) {
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0)
        return -1;
    const pid_t child = fork();
    if (child < 0) {
        close(pipeEnds[0]);
        close(pipeEnds[1]);
        return -1;
    }
    if (child == 0) {
        dup2(pipeEnds[1], STDOUT_FILENO);
        close(pipeEnds[0]);
        close(pipeEnds[1]);
        // A fresh program, so the child's peak starts from its own start-up, not ours.
        execl(program.c_str(), program.c_str(), kPeakMemoryFlag, which.c_str(), path.c_str(),
              static_cast<char*>(nullptr));
        _exit(127);
    }
    close(pipeEnds[1]);
    std::string output;
    char buffer[256];
    ssize_t n;
    while ((n = read(pipeEnds[0], buffer, sizeof buffer)) > 0)
        output.append(buffer, n);
    close(pipeEnds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return -1;

    std::istringstream in(output);
    std::string tag;
    long before = 0, after = 0;
    if (!(in >> tag >> before >> after) || tag != "peak-kb")
        return -1;
    return static_cast<std::int64_t>(after - before) * 1024;
}
