// A rigid transform of the plane: rotation and translation, no scale.
#pragma once

#include "math/Vector.h"

namespace math
{
template<typename T>
struct TMat2D
{
    T cos = 1, sin = 0, x = 0, y = 0;

    TMat2D() = default;
    TMat2D(T cos_, T sin_, T x_, T y_)
        : cos(cos_)
        , sin(sin_)
        , x(x_)
        , y(y_)
    {
    }

    static TMat2D Translation(const TVector2<T>& v) { return TMat2D(1, 0, v.x, v.y); }
    static TMat2D Rotation(T angle) { return TMat2D(std::cos(angle), std::sin(angle), 0, 0); }
    /// Translation(v) * Rotation(angle)
    static TMat2D TranslationRotation(const TVector2<T>& v, T angle)
    {
        return TMat2D(std::cos(angle), std::sin(angle), v.x, v.y);
    }

    TVector2<T> GetTranslation() const { return TVector2<T>(x, y); }
    void SetTranslation(const TVector2<T>& v)
    {
        x = v.x;
        y = v.y;
    }
    T GetAngle() const { return std::atan2(sin, cos); }

    friend TMat2D operator*(const TMat2D& a, const TMat2D& b)
    {
        return TMat2D(a.cos * b.cos - a.sin * b.sin, a.sin * b.cos + a.cos * b.sin,
                      a.cos * b.x - a.sin * b.y + a.x, a.sin * b.x + a.cos * b.y + a.y);
    }
    friend bool operator==(const TMat2D& a, const TMat2D& b)
    {
        return a.cos == b.cos && a.sin == b.sin && a.x == b.x && a.y == b.y;
    }
    friend bool operator!=(const TMat2D& a, const TMat2D& b) { return !(a == b); }

    /// Multiplies the current OpenGL matrix. Defined with TMatrix4.
    void MultToGL() const;
};

template<typename T>
TMat2D<T> Inverted(const TMat2D<T>& m)
{
    return TMat2D<T>(m.cos, -m.sin, -(m.cos * m.x + m.sin * m.y), m.sin * m.x - m.cos * m.y);
}

template<typename T>
TVector2<T> TransformCoordinate(const TMat2D<T>& m, const TVector2<T>& p)
{
    return TVector2<T>(m.cos * p.x - m.sin * p.y + m.x, m.sin * p.x + m.cos * p.y + m.y);
}

/// The rotation only.
template<typename T>
TVector2<T> TransformNormal(const TMat2D<T>& m, const TVector2<T>& n)
{
    return TVector2<T>(m.cos * n.x - m.sin * n.y, m.sin * n.x + m.cos * n.y);
}

using Mat2D = TMat2D<float>;
}
