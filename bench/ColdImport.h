// Imports as a user meets them: each in a new process, timed from the process's start. The
// engine itself runs a one-state game that shows the model, until it prints
// "Finished loading xml."; the peer is a small assimp program run to its end. Both report
// wall time and peak resident memory (VmHWM).
#pragma once

#include <cstdint>
#include <string>

struct ColdFigures {
    bool m_Ok = false;
    double m_Seconds = 0.0;        // from fork to the line (engine) or to the exit (peer)
    std::int64_t m_PeakBytes = 0;  // the process's peak resident size by then
};

// Runs the engine in a game folder made under scratchDir whose one state shows the model in
// the given look ("classic" or "authored"). Needs a display.
ColdFigures EngineColdImport(const std::string& engine, const std::string& model,
                             const std::string& look, const std::string& scratchDir);

// Runs the peer program on the model; it reports its own peak ("peak-kb N").
ColdFigures PeerColdImport(const std::string& program, const std::string& model);
