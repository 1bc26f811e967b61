// Peak memory of one import, measured in a child process so that the benchmark's own heap
// does not hide it: the child reads its peak resident size (VmHWM) before and after the
// import and reports both.
#pragma once

#include <cstdint>
#include <string>

// Which import the child runs: "engine", "library" or "assimp".
// The child side: runs the import and prints "peak-kb BEFORE AFTER"; returns the exit code.
int RunPeakMemoryChild(const std::string& which, const std::string& path);

// The parent side: starts program (this benchmark) as a child for one import and returns
// the growth of its peak resident size in bytes, or -1 when the child failed.
std::int64_t MeasurePeakGrowth(const std::string& program, const std::string& which,
                               const std::string& path);

// The command-line flag that selects the child side.
inline constexpr const char* kPeakMemoryFlag = "--peak-memory-child";
