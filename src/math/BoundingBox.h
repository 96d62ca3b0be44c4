// An axis-aligned box. The default state is the empty box.
#pragma once

#include "math/Vector.h"

#include <array>
#include <limits>

namespace math
{
template<typename T, int N, typename Vec>
class TBoundingBox;

// Min above max means empty.
template<typename T, typename Vec>
class TBoundingBox<T, 2, Vec>
{
public:
    TBoundingBox()
        : m_min(Infinity(), Infinity())
        , m_max(-Infinity(), -Infinity())
    {
    }
    /// Orders the two points per axis.
    TBoundingBox(const Vec& a, const Vec& b)
        : m_min(a.x < b.x ? a.x : b.x, a.y < b.y ? a.y : b.y)
        , m_max(a.x < b.x ? b.x : a.x, a.y < b.y ? b.y : a.y)
    {
    }

    static TBoundingBox Empty() { return TBoundingBox(); }
    static TBoundingBox Everything()
    {
        return TBoundingBox(Vec(-Infinity(), -Infinity()), Vec(Infinity(), Infinity()));
    }

    const Vec& GetMin() const { return m_min; }
    const Vec& GetMax() const { return m_max; }

    void Include(const Vec& p)
    {
        if (p.x < m_min.x)
            m_min.x = p.x;
        if (p.y < m_min.y)
            m_min.y = p.y;
        if (p.x > m_max.x)
            m_max.x = p.x;
        if (p.y > m_max.y)
            m_max.y = p.y;
    }
    /// Including the empty box changes nothing.
    void Include(const TBoundingBox& b)
    {
        if (b.m_min.x < m_min.x)
            m_min.x = b.m_min.x;
        if (b.m_min.y < m_min.y)
            m_min.y = b.m_min.y;
        if (b.m_max.x > m_max.x)
            m_max.x = b.m_max.x;
        if (b.m_max.y > m_max.y)
            m_max.y = b.m_max.y;
    }
    /// Both corners move outward by m on both axes.
    void Grow(T m)
    {
        m_min -= Vec(m, m);
        m_max += Vec(m, m);
    }

    Vec GetCenter() const { return (m_min + m_max) * T(0.5); }
    Vec GetSize() const { return m_max - m_min; }
    T GetArea() const
    {
        const Vec s = GetSize();
        return s.x * s.y;
    }
    /// Bit 0 of the index picks max x, bit 1 max y.
    std::array<Vec, 4> GetCorners() const
    {
        return {Vec(m_min.x, m_min.y), Vec(m_max.x, m_min.y), Vec(m_min.x, m_max.y),
                Vec(m_max.x, m_max.y)};
    }

    bool Contains(const Vec& p) const
    {
        return p.x >= m_min.x && p.x <= m_max.x && p.y >= m_min.y && p.y <= m_max.y;
    }
    bool Contains(const TBoundingBox& b) const { return Contains(b.m_min) && Contains(b.m_max); }

    T ProjectedRadius(const Vec& axis) const
    {
        const Vec s = GetSize();
        return s.x / 2 * std::fabs(axis.x) + s.y / 2 * std::fabs(axis.y);
    }

    /// Outside, to the nearest point of the box. Inside, minus the smallest distance to a side.
    T Distance(const Vec& p) const
    {
        const T nearX = std::fabs(m_min.x - p.x) < std::fabs(m_max.x - p.x) ? m_min.x : m_max.x;
        const T nearY = std::fabs(m_min.y - p.y) < std::fabs(m_max.y - p.y) ? m_min.y : m_max.y;
        const T dx = std::fabs(nearX - p.x), dy = std::fabs(nearY - p.y);
        if (Contains(p))
            return -(dx < dy ? dx : dy);
        const T ox = p.x < m_min.x || p.x > m_max.x ? dx : T(0);
        const T oy = p.y < m_min.y || p.y > m_max.y ? dy : T(0);
        return std::sqrt(ox * ox + oy * oy);
    }

    bool IsFinite() const { return math::IsFinite(m_min) && math::IsFinite(m_max); }

    /// Inclusive on all sides: touching boxes intersect.
    friend bool Intersects(const TBoundingBox& a, const TBoundingBox& b)
    {
        return a.m_min.x <= b.m_max.x && b.m_min.x <= a.m_max.x && a.m_min.y <= b.m_max.y &&
               b.m_min.y <= a.m_max.y;
    }
    friend bool operator==(const TBoundingBox& a, const TBoundingBox& b)
    {
        return a.m_min == b.m_min && a.m_max == b.m_max;
    }
    friend bool operator!=(const TBoundingBox& a, const TBoundingBox& b) { return !(a == b); }

private:
    static T Infinity() { return std::numeric_limits<T>::infinity(); }

    Vec m_min, m_max;
};

using BoundingBox = TBoundingBox<float, 2, Vec2>;

/// p inside the box grown by r.
inline bool TestBBCircle(BoundingBox box, const Vec2& p, float r)
{
    box.Grow(r);
    return box.Contains(p);
}
}
