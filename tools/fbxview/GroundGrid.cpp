#include "tools/fbxview/GroundGrid.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>

namespace {

// About this many cells from one side of the grid to the other.
constexpr double kCellsAcross = 16.0;
// More lines than this on a side means the numbers went wrong: nothing is drawn.
constexpr int kMostLinesPerSide = 100;

// The round spacing (1, 2 or 5 times a power of ten) nearest above the rough one.
double RoundSpacing(double rough) {
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (double step : {1.0, 2.0, 5.0}) {
        if (step * power >= rough) {
            return step * power;
        }
    }
    return 10.0 * power;
}

}  // namespace

void DrawGroundGrid(const ModelBox& box) {
    const BoxSphere sphere = SphereAround(box);
    double half = sphere.m_Radius;
    double ground = sphere.m_Centre[1] - sphere.m_Radius;
    if (!box.m_Empty) {
        half = 1.5 * std::max(box.m_Max[0] - box.m_Min[0], box.m_Max[2] - box.m_Min[2]) / 2.0;
        half = std::max(half, sphere.m_Radius / 2.0);
        ground = box.m_Min[1];
    }
    const double spacing = RoundSpacing(2.0 * half / kCellsAcross);
    if (!std::isfinite(spacing) || !(spacing > 0.0) || !std::isfinite(ground)) {
        return;
    }
    const int lines = static_cast<int>(std::ceil(half / spacing));
    if (lines < 1 || lines > kMostLinesPerSide) {
        return;
    }
    const double reach = lines * spacing;
    const double x = sphere.m_Centre[0];
    const double z = sphere.m_Centre[2];

    glPushAttrib(GL_ENABLE_BIT | GL_CURRENT_BIT | GL_LINE_BIT);
    glDisable(GL_LIGHTING);
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_BLEND);
    glLineWidth(1.0f);
    glBegin(GL_LINES);
    for (int i = -lines; i <= lines; ++i) {
        const float grey = i == 0 ? 0.45f : 0.3f;
        glColor3f(grey, grey, grey);
        const double offset = i * spacing;
        glVertex3d(x + offset, ground, z - reach);
        glVertex3d(x + offset, ground, z + reach);
        glVertex3d(x - reach, ground, z + offset);
        glVertex3d(x + reach, ground, z + offset);
    }
    glEnd();
    glPopAttrib();
}
