// Matrix4: a 4x4 transform in double precision, column-major as OpenGL takes it (element
// [column * 4 + row]; the translation is in elements 12, 13, 14). Points are column vectors:
// (A * B) * p applies B first.
#pragma once

struct Matrix4 {
    double m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

    static Matrix4 Identity() { return Matrix4(); }
    static Matrix4 Translation(const double (&t)[3]);
    static Matrix4 Scaling(const double (&s)[3]);
    // Rotation by Euler angles in degrees, X applied first: Rz * Ry * Rx.
    static Matrix4 RotationXYZ(const double (&degrees)[3]);
    // Rotation about one axis (0 X, 1 Y, 2 Z), degrees.
    static Matrix4 RotationAbout(int axis, double degrees);

    double& operator()(int row, int column) { return m[column * 4 + row]; }
    double operator()(int row, int column) const { return m[column * 4 + row]; }

    // The general inverse; a singular or non-finite matrix gives the identity and false.
    bool Invert(Matrix4& inverse) const;
    // Whether every element is finite.
    bool IsFinite() const;
    // The point transformed (with translation) and the direction (without).
    void TransformPoint(const float (&in)[3], float (&out)[3]) const;
    void TransformDirection(const float (&in)[3], float (&out)[3]) const;
};

Matrix4 operator*(const Matrix4& a, const Matrix4& b);
