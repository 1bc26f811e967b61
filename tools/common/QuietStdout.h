// Keeps a stretch of the program's standard output unprinted: the viewer prints fbxinfo's
// report of the file and newgame its own lines, not the engine import's console report.
#pragma once

// While it lives, whatever is written to standard output (the C stream and the descriptor
// beneath it) goes nowhere; when it ends, standard output prints again.
class QuietStdout {
public:
    QuietStdout();
    ~QuietStdout();
    QuietStdout(const QuietStdout&) = delete;
    QuietStdout& operator=(const QuietStdout&) = delete;

private:
    int m_Saved = -1;  // the real standard output, duplicated; -1 when it could not be
};
