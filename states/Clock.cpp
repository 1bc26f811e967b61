#include "states/Clock.h"

#include <chrono>

int ClockMilliseconds() {
    using namespace std::chrono;
    // Counted from the first reading, so the int does not overflow for 24 days of running;
    // only differences between readings are used.
    static const steady_clock::time_point start = steady_clock::now();
    const auto elapsed = duration_cast<milliseconds>(steady_clock::now() - start);
    return static_cast<int>(elapsed.count());
}
