// A 3 x 3 matrix for points of the plane, written row by row; a point is a row vector (x, y, 1) at its left.
#pragma once

#include <cstdint>

struct VPointF {
    float x = 0;
    float y = 0;

    VPointF operator+(VPointF other) const { return {x + other.x, y + other.y}; }
    VPointF operator-(VPointF other) const { return {x - other.x, y - other.y}; }
    VPointF operator*(float factor) const { return {x * factor, y * factor}; }
    bool operator==(const VPointF& other) const = default;
};

class VMatrix {
public:
    // What a matrix does at most; each type may do what the ones before it do.
    enum Type : uint8_t { Identity = 0, Translate = 1, Scale = 2, Rotate = 4, Shear = 8, Project = 16 };

    // What happens to a point before what the matrix did so far: (x, y) is moved, scaled, turned first.
    VMatrix& translate(float dx, float dy);
    VMatrix& scale(float sx, float sy);
    VMatrix& rotate(float degrees); // clockwise on the screen

    // First this matrix, then the other.
    VMatrix operator*(const VMatrix& other) const;

    VPointF map(VPointF point) const;

    Type matrixType() const;
    bool isIdentity() const { return matrixType() == Identity; }
    bool operator==(const VMatrix& other) const;

    float m11 = 1, m12 = 0, m13 = 0;
    float m21 = 0, m22 = 1, m23 = 0;
    float mtx = 0, mty = 0, m33 = 1;

private:
    void touch(Type reached);
    Type examine() const;

    mutable Type type = Identity;
    mutable Type dirty = Identity; // the type that the last change may have reached
};
