// The engine's clock: wall-clock milliseconds as a 32-bit count.
// (The C library's clock() counts CPU time in microseconds on Linux, so it cannot serve.)
#pragma once

int ClockMilliseconds();
