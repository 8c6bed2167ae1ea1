#include "gui/vector/matrix.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>

namespace {

constexpr float kTolerance = 1e-6F;

bool IsZero(float value) {
    return std::abs(value) <= kTolerance;
}

} // namespace

void VMatrix::touch(Type reached) {
    dirty = std::max(dirty, reached);
}

VMatrix& VMatrix::translate(float dx, float dy) {
    if (dx == 0 && dy == 0)
        return *this;
    mtx += dx * m11 + dy * m21;
    mty += dx * m12 + dy * m22;
    m33 += dx * m13 + dy * m23;
    touch(Translate);
    return *this;
}

VMatrix& VMatrix::scale(float sx, float sy) {
    if (sx == 1 && sy == 1)
        return *this;
    m11 *= sx, m12 *= sx, m13 *= sx;
    m21 *= sy, m22 *= sy, m23 *= sy;
    touch(Scale);
    return *this;
}

VMatrix& VMatrix::rotate(float degrees) {
    const float angle = degrees * std::numbers::pi_v<float> / 180;
    VMatrix turn;
    turn.m11 = turn.m22 = std::cos(angle);
    turn.m12 = std::sin(angle);
    turn.m21 = -turn.m12;
    turn.touch(Rotate);
    return *this = turn * *this;
}

VMatrix VMatrix::operator*(const VMatrix& o) const {
    VMatrix product;
    product.m11 = m11 * o.m11 + m12 * o.m21 + m13 * o.mtx;
    product.m12 = m11 * o.m12 + m12 * o.m22 + m13 * o.mty;
    product.m13 = m11 * o.m13 + m12 * o.m23 + m13 * o.m33;
    product.m21 = m21 * o.m11 + m22 * o.m21 + m23 * o.mtx;
    product.m22 = m21 * o.m12 + m22 * o.m22 + m23 * o.mty;
    product.m23 = m21 * o.m13 + m22 * o.m23 + m23 * o.m33;
    product.mtx = mtx * o.m11 + mty * o.m21 + m33 * o.mtx;
    product.mty = mtx * o.m12 + mty * o.m22 + m33 * o.mty;
    product.m33 = mtx * o.m13 + mty * o.m23 + m33 * o.m33;
    product.dirty = Project;
    return product;
}

VPointF VMatrix::map(VPointF point) const {
    const float x = point.x * m11 + point.y * m21 + mtx;
    const float y = point.x * m12 + point.y * m22 + mty;
    if (matrixType() != Project)
        return {x, y};
    const float w = point.x * m13 + point.y * m23 + m33;
    return {x / w, y / w};
}

// Worked out anew only when a change may have passed beyond what is known.
VMatrix::Type VMatrix::matrixType() const {
    if (dirty == Identity || dirty < type)
        return type;
    type = examine();
    dirty = Identity;
    return type;
}

// From the highest type down that the changes may have reached.
VMatrix::Type VMatrix::examine() const {
    if (dirty == Project && !(IsZero(m13) && IsZero(m23) && IsZero(m33 - 1)))
        return Project;
    if (dirty >= Rotate && !(IsZero(m12) && IsZero(m21)))
        return IsZero(m11 * m21 + m12 * m22) ? Rotate : Shear; // do the axes stay at right angles?
    if (dirty >= Scale && !(IsZero(m11 - 1) && IsZero(m22 - 1)))
        return Scale;
    return IsZero(mtx) && IsZero(mty) ? Identity : Translate;
}

bool VMatrix::operator==(const VMatrix& o) const {
    const float mine[] = {m11, m12, m13, m21, m22, m23, mtx, mty, m33};
    const float others[] = {o.m11, o.m12, o.m13, o.m21, o.m22, o.m23, o.mtx, o.mty, o.m33};
    return std::equal(std::begin(mine), std::end(mine), std::begin(others));
}
