#include "model/Matrix4.h"

#include <cmath>
#include <utility>

namespace {
constexpr double kRadiansPerDegree = 3.14159265358979323846 / 180.0;
}  // namespace

Matrix4 Matrix4::Translation(const double (&t)[3]) {
    Matrix4 result;
    result.m[12] = t[0];
    result.m[13] = t[1];
    result.m[14] = t[2];
    return result;
}

Matrix4 Matrix4::Scaling(const double (&s)[3]) {
    Matrix4 result;
    result.m[0] = s[0];
    result.m[5] = s[1];
    result.m[10] = s[2];
    return result;
}

Matrix4 Matrix4::RotationAbout(int axis, double degrees) {
    Matrix4 result;
    const double c = std::cos(degrees * kRadiansPerDegree);
    const double s = std::sin(degrees * kRadiansPerDegree);
    // The two axes the rotation turns into each other.
    const int a = (axis + 1) % 3;
    const int b = (axis + 2) % 3;
    result(a, a) = c;
    result(a, b) = -s;
    result(b, a) = s;
    result(b, b) = c;
    return result;
}

Matrix4 Matrix4::RotationXYZ(const double (&degrees)[3]) {
    return RotationAbout(2, degrees[2]) * RotationAbout(1, degrees[1]) *
           RotationAbout(0, degrees[0]);
}

bool Matrix4::IsFinite() const {
    for (double v : m) {
        if (!std::isfinite(v))
            return false;
    }
    return true;
}

bool Matrix4::Invert(Matrix4& inverse) const {
    inverse = Matrix4();
    if (!IsFinite())
        return false;
    // Gauss-Jordan elimination with partial pivoting on [this | identity].
    double a[4][8];
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            a[r][c] = (*this)(r, c);
            a[r][c + 4] = r == c ? 1.0 : 0.0;
        }
    }
    double largest = 0.0;
    for (double v : m)
        largest = std::fmax(largest, std::fabs(v));
    const double tiny = largest * 1e-12;
    for (int c = 0; c < 4; ++c) {
        int pivot = c;
        for (int r = c + 1; r < 4; ++r) {
            if (std::fabs(a[r][c]) > std::fabs(a[pivot][c]))
                pivot = r;
        }
        if (!(std::fabs(a[pivot][c]) > tiny))
            return false;
        if (pivot != c) {
            for (int k = 0; k < 8; ++k)
                std::swap(a[c][k], a[pivot][k]);
        }
        const double scale = 1.0 / a[c][c];
        for (int k = 0; k < 8; ++k)
            a[c][k] *= scale;
        for (int r = 0; r < 4; ++r) {
            if (r == c || a[r][c] == 0.0)
                continue;
            const double factor = a[r][c];
            for (int k = 0; k < 8; ++k)
                a[r][k] -= factor * a[c][k];
        }
    }
    Matrix4 result;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c)
            result(r, c) = a[r][c + 4];
    }
    if (!result.IsFinite())
        return false;
    inverse = result;
    return true;
}

void Matrix4::TransformPoint(const float (&in)[3], float (&out)[3]) const {
    const double x = in[0], y = in[1], z = in[2];
    for (int r = 0; r < 3; ++r)
        out[r] = static_cast<float>(m[r] * x + m[4 + r] * y + m[8 + r] * z + m[12 + r]);
}

void Matrix4::TransformDirection(const float (&in)[3], float (&out)[3]) const {
    const double x = in[0], y = in[1], z = in[2];
    for (int r = 0; r < 3; ++r)
        out[r] = static_cast<float>(m[r] * x + m[4 + r] * y + m[8 + r] * z);
}

Matrix4 operator*(const Matrix4& a, const Matrix4& b) {
    Matrix4 result;
    for (int c = 0; c < 4; ++c) {
        for (int r = 0; r < 4; ++r) {
            double sum = 0.0;
            for (int k = 0; k < 4; ++k)
                sum += a.m[k * 4 + r] * b.m[c * 4 + k];
            result.m[c * 4 + r] = sum;
        }
    }
    return result;
}
