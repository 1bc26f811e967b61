#include "tools/fbxview/OrbitCamera.h"

#include <GL/gl.h>
#include <GL/glu.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kStartYaw = 30.0;
constexpr double kStartPitch = 20.0;
// How much room is left round the framed sphere.
constexpr double kMargin = 1.15;
// The framed sphere and its grid fit within this many radii of the target.
constexpr double kSceneRadii = 3.0;

double Radians(double degrees) {
    return degrees * kPi / 180.0;
}

double Aspect(int width, int height) {
    return width > 0 && height > 0 ? static_cast<double>(width) / height : 1.0;
}

// Half the height of the view at the target's distance.
double HalfViewHeight(const OrbitCamera& camera) {
    return camera.m_Distance * std::tan(Radians(kFieldOfView / 2.0));
}

// The unit directions from the target to the eye, to the eye's right and to its up.
void Axes(const OrbitCamera& camera, double (&back)[3], double (&right)[3], double (&up)[3]) {
    const double yaw = Radians(camera.m_Yaw);
    const double pitch = Radians(camera.m_Pitch);
    back[0] = std::cos(pitch) * std::sin(yaw);
    back[1] = std::sin(pitch);
    back[2] = std::cos(pitch) * std::cos(yaw);
    right[0] = std::cos(yaw);
    right[1] = 0.0;
    right[2] = -std::sin(yaw);
    // up = back x right
    up[0] = back[1] * right[2] - back[2] * right[1];
    up[1] = back[2] * right[0] - back[0] * right[2];
    up[2] = back[0] * right[1] - back[1] * right[0];
}

}  // namespace

OrbitCamera FrameSphere(const BoxSphere& sphere, int width, int height) {
    OrbitCamera camera;
    std::copy(sphere.m_Centre, sphere.m_Centre + 3, camera.m_Target);
    camera.m_Radius = sphere.m_Radius;
    camera.m_Yaw = kStartYaw;
    camera.m_Pitch = kStartPitch;
    // The narrower of the two fields of view decides.
    const double halfHeight = Radians(kFieldOfView / 2.0);
    const double halfWidth = std::atan(std::tan(halfHeight) * Aspect(width, height));
    camera.m_Distance = sphere.m_Radius * kMargin / std::sin(std::min(halfHeight, halfWidth));
    return camera;
}

void Orbit(OrbitCamera& camera, double yawDegrees, double pitchDegrees) {
    if (!std::isfinite(yawDegrees) || !std::isfinite(pitchDegrees)) {
        return;
    }
    camera.m_Yaw = std::fmod(camera.m_Yaw + yawDegrees, 360.0);
    camera.m_Pitch = std::clamp(camera.m_Pitch + pitchDegrees, -kMaxPitch, kMaxPitch);
}

void Zoom(OrbitCamera& camera, double factor) {
    if (!(factor > 0.0) || !std::isfinite(factor)) {
        return;
    }
    camera.m_Distance =
        std::clamp(camera.m_Distance / factor, camera.m_Radius * 0.01, camera.m_Radius * 1000.0);
}

void Pan(OrbitCamera& camera, double right, double up) {
    if (!std::isfinite(right) || !std::isfinite(up)) {
        return;
    }
    double back[3], rightAxis[3], upAxis[3];
    Axes(camera, back, rightAxis, upAxis);
    const double height = 2.0 * HalfViewHeight(camera);
    for (int i = 0; i < 3; ++i) {
        const double moved = camera.m_Target[i] + (right * rightAxis[i] + up * upAxis[i]) * height;
        // The target stays where single-precision matrices can still place it.
        camera.m_Target[i] = std::clamp(moved, -1e30, 1e30);
    }
}

void ApplyCamera(const OrbitCamera& camera, int width, int height) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    const double far = camera.m_Distance + kSceneRadii * camera.m_Radius;
    const double near = std::max(camera.m_Distance - kSceneRadii * camera.m_Radius, far / 1000.0);
    gluPerspective(kFieldOfView, Aspect(width, height), near, far);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    double back[3], right[3], up[3];
    Axes(camera, back, right, up);
    const double* target = camera.m_Target;
    const double distance = camera.m_Distance;
    gluLookAt(target[0] + back[0] * distance, target[1] + back[1] * distance,
              target[2] + back[2] * distance, target[0], target[1], target[2], up[0], up[1], up[2]);
}
