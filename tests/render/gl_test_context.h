// A GoogleTest fixture with a live OpenGL context (one small GLUT window per test program),
// and helpers that read back where drawing put things.
#pragma once

#include <GL/gl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <vector>

// One vertex as the feedback buffer reports it: window position, lit colour, texture
// coordinates.
struct FedVertex {
    float m_Window[3];
    float m_Color[4];
    float m_TexCoord[4];
};

// Matches a float sequence element by element within tolerance.
inline auto Near(std::vector<float> expected, float tolerance = 1e-5f) {
    return ::testing::Pointwise(::testing::FloatNear(tolerance), expected);
}

const std::vector<float> kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

class GlTest : public ::testing::Test {
public:
    static constexpr int kSize = 64;  // the window's width and height in pixels

    // Skips without a display; otherwise resets matrices, viewport and the cleared frame.
    void SetUp() override;

    // The current model-view matrix, column-major as OpenGL keeps it.
    static std::array<float, 16> ModelView();
    // Where the current model-view matrix takes the point (x, y, z).
    static std::array<float, 3> Apply(float x, float y, float z);
    // Runs draw in feedback mode (identity projection unless the caller sets one) and
    // returns every vertex of every polygon it produced.
    static std::vector<FedVertex> Feedback(const std::function<void()>& draw);
    static int ModelViewDepth();
    // The colour of one pixel of the drawn (back) buffer, from the bottom left.
    static std::array<unsigned char, 3> PixelAt(int x, int y);
};
