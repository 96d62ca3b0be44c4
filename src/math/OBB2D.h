// An oriented box. The two axes are unit vectors.
#pragma once

#include "math/Mat2D.h"
#include "math/Matrix.h"
#include "math/Vector.h"

namespace math
{
class OBB2D
{
public:
    OBB2D()
        : m_axis{Vec2(1, 0), Vec2(0, 1)}
    {
    }
    OBB2D(const Vec2& center, const Vec2& axisX, const Vec2& axisY, float halfX, float halfY)
        : m_center(center)
        , m_axis{axisX, axisY}
        , m_half{halfX, halfY}
    {
    }

    /// An axis-aligned square.
    static OBB2D FromCenterRad(const Vec2& center, float r)
    {
        return OBB2D(center, Vec2(1, 0), Vec2(0, 1), r, r);
    }
    static OBB2D Empty();
    static OBB2D Everything();
    /// Around n > 1 points, along the given unit axis.
    static OBB2D Build(const Vec2* points, size_t n, const Vec2& axis);
    /// The smallest of nine candidates: along the farthest pair of the n > 1 points, and eight turns
    /// by 12 degrees each. Our own, and not the smallest of all boxes: that one has a side along the
    /// hull (Toussaint 1983, "Solving geometric problems with the rotating calipers").
    static OBB2D Build(const Vec2* points, size_t n);
    /// The two axes are rotated, the half sizes kept.
    static OBB2D Transform(const Mat2D& m, const OBB2D& obb)
    {
        return OBB2D(TransformCoordinate(m, obb.m_center), TransformNormal(m, obb.m_axis[0]),
                     TransformNormal(m, obb.m_axis[1]), obb.m_half[0], obb.m_half[1]);
    }

    const Vec2& GetCenter() const { return m_center; }
    const Vec2& GetAxis(int i) const { return m_axis[i]; }
    float GetHalf(int i) const { return m_half[i]; }
    Vec2 GetHalfSize() const { return Vec2(m_half[0], m_half[1]); }
    void SetHalfSize(const Vec2& half)
    {
        m_half[0] = half.x;
        m_half[1] = half.y;
    }

    float Area() const { return 4 * m_half[0] * m_half[1]; }
    float ProjectedRadius(const Vec2& axis) const
    {
        return std::fabs(Dot(axis, m_axis[0])) * m_half[0] +
               std::fabs(Dot(axis, m_axis[1])) * m_half[1];
    }
    static bool IsSeparatingAxis(const OBB2D& a, const OBB2D& b, const Vec2& axis)
    {
        return std::fabs(Dot(b.m_center - a.m_center, axis)) >
               a.ProjectedRadius(axis) + b.ProjectedRadius(axis);
    }
    bool Contains(const Vec2& p) const
    {
        const Vec2 d = p - m_center;
        return std::fabs(Dot(d, m_axis[0])) <= m_half[0] &&
               std::fabs(Dot(d, m_axis[1])) <= m_half[1];
    }
    /// Negative inside, and then the larger of the two axes' distances.
    float Distance(const Vec2& p) const
    {
        const Vec2 v = p - m_center;
        const float dx = std::fabs(Dot(v, m_axis[0])) - m_half[0];
        const float dy = std::fabs(Dot(v, m_axis[1])) - m_half[1];
        if (dx > 0 && dy > 0)
            return std::sqrt(dx * dx + dy * dy);
        return dx > dy ? dx : dy;
    }
    /// ++, +-, --, -+ of the two axes.
    void CalcCorners(Vec2 out[4]) const
    {
        const Vec2 x = m_axis[0] * m_half[0], y = m_axis[1] * m_half[1];
        out[0] = m_center + x + y;
        out[1] = m_center + x - y;
        out[2] = m_center - x - y;
        out[3] = m_center - x + y;
    }
    /// The rows are the two axes.
    Mat3 RotMat3() const
    {
        return Mat3(m_axis[0].x, m_axis[0].y, 0, m_axis[1].x, m_axis[1].y, 0, 0, 0, 1);
    }
    Mat3 WorldToOBBmatrix() const { return RotMat3() * Mat3::Translation2D(-m_center); }

private:
    Vec2 m_center;
    Vec2 m_axis[2];
    float m_half[2] = {0, 0};
};

/// Separating axis test over both boxes' axes. Touching boxes intersect.
inline bool Intersects(const OBB2D& a, const OBB2D& b)
{
    return !OBB2D::IsSeparatingAxis(a, b, a.GetAxis(0)) &&
           !OBB2D::IsSeparatingAxis(a, b, a.GetAxis(1)) &&
           !OBB2D::IsSeparatingAxis(a, b, b.GetAxis(0)) &&
           !OBB2D::IsSeparatingAxis(a, b, b.GetAxis(1));
}

/// The unit vector along the farthest pair of the n > 1 points, from the earlier to the later one; the
/// first such pair wins. Quadratic in n.
Vec2 FindMainAxisSimple(const Vec2* points, size_t n);
/// The same.
Vec2 FindMainAxisLinAlg(const Vec2* points, size_t n);
}
