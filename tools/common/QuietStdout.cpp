#include "tools/common/QuietStdout.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

QuietStdout::QuietStdout() {
    std::fflush(stdout);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0) {
        return;
    }
    m_Saved = dup(STDOUT_FILENO);
    if (m_Saved >= 0 && dup2(nowhere, STDOUT_FILENO) < 0) {
        close(m_Saved);
        m_Saved = -1;
    }
    close(nowhere);
}

QuietStdout::~QuietStdout() {
    if (m_Saved < 0) {
        return;
    }
    std::fflush(stdout);
    dup2(m_Saved, STDOUT_FILENO);
    close(m_Saved);
}
