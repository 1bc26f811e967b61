#include "tools/newgame/StatePlacement.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kPi = 3.14159265358979323846;
// The engine's projection (shell/Frame.cpp).
constexpr double kHalfFieldOfView = 22.5 * kPi / 180.0;
constexpr double kNearPlane = 0.1;
constexpr double kFarPlane = 10000.0;
// The sphere's diameter takes this share of the picture's height.
constexpr double kShareOfHeight = 2.0 / 3.0;
// Positions stay well inside what the engine's whole-number reading takes.
constexpr double kLargestPosition = 1e9;

long WholeNumber(double value) {
    if (!std::isfinite(value))
        return 0;
    return static_cast<long>(std::llround(std::clamp(value, -kLargestPosition, kLargestPosition)));
}

}  // namespace

StatePosition PlaceInView(const BoxSphere& sphere) {
    const double radius =
        std::isfinite(sphere.m_Radius) && sphere.m_Radius > 0.0 ? sphere.m_Radius : 1.0;
    // The sphere seen from this distance spans kShareOfHeight of the field of view.
    double distance = radius / (std::sin(kHalfFieldOfView) * kShareOfHeight);
    // Its far side inside the far plane as long as the sphere fits at all; its centre there
    // at least.
    distance = std::min(distance, std::max(kFarPlane - radius, kFarPlane / 2.0) - 1.0);
    // Its near side beyond the near plane, by at least one whole unit.
    distance = std::max(distance, radius + kNearPlane + 1.0);

    StatePosition position;
    position.m_X = WholeNumber(-sphere.m_Centre[0]);
    position.m_Y = WholeNumber(-sphere.m_Centre[1]);
    position.m_Z = WholeNumber(-sphere.m_Centre[2] - distance);
    return position;
}
