// Vectors of two, three and four components.
#pragma once

#include "math/Scalar.h"

#include <cmath>
#include <ostream>
#include <type_traits>
#include <vector>

namespace math
{
template<typename T>
struct TVector2
{
    T x = 0, y = 0;

    TVector2() = default;
    TVector2(T x_, T y_)
        : x(x_)
        , y(y_)
    {
    }

    T& operator[](int i) { return i == 0 ? x : y; }
    const T& operator[](int i) const { return i == 0 ? x : y; }

    TVector2& operator+=(const TVector2& o)
    {
        x += o.x;
        y += o.y;
        return *this;
    }
    TVector2& operator-=(const TVector2& o)
    {
        x -= o.x;
        y -= o.y;
        return *this;
    }
    TVector2& operator*=(T s)
    {
        x *= s;
        y *= s;
        return *this;
    }
    TVector2& operator/=(T s) { return *this = *this / s; }

    friend TVector2 operator+(const TVector2& a, const TVector2& b)
    {
        return TVector2(a.x + b.x, a.y + b.y);
    }
    friend TVector2 operator-(const TVector2& a, const TVector2& b)
    {
        return TVector2(a.x - b.x, a.y - b.y);
    }
    friend TVector2 operator-(const TVector2& a) { return TVector2(-a.x, -a.y); }
    friend TVector2 operator*(const TVector2& a, T s) { return TVector2(a.x * s, a.y * s); }
    friend TVector2 operator*(T s, const TVector2& a) { return TVector2(s * a.x, s * a.y); }
    /// Multiplies by the reciprocal.
    friend TVector2 operator/(const TVector2& a, T s)
    {
        static_assert(std::is_floating_point<T>::value, "the reciprocal of a whole number is 0");
        const T r = T(1) / s;
        return TVector2(a.x * r, a.y * r);
    }
    friend bool operator==(const TVector2& a, const TVector2& b)
    {
        return a.x == b.x && a.y == b.y;
    }
    friend bool operator!=(const TVector2& a, const TVector2& b) { return !(a == b); }

    static TVector2 Mul(const TVector2& a, const TVector2& b)
    {
        return TVector2(a.x * b.x, a.y * b.y);
    }
    static TVector2 Div(const TVector2& a, const TVector2& b)
    {
        return TVector2(a.x / b.x, a.y / b.y);
    }
    static TVector2 Max(const TVector2& a, const TVector2& b)
    {
        return TVector2(a.x > b.x ? a.x : b.x, a.y > b.y ? a.y : b.y);
    }

    T LengthSq() const { return x * x + y * y; }
    T Length() const { return std::sqrt(LengthSq()); }

    /// In place. Returns the former length; below 1e-7 the vector becomes (0, 0) and 0 is returned.
    T Normalize()
    {
        const T length = Length();
        if (IsZero(length))
        {
            x = y = 0;
            return 0;
        }
        *this = *this / length;
        return length;
    }
};

template<typename T>
struct TVector3
{
    T x = 0, y = 0, z = 0;

    TVector3() = default;
    TVector3(T x_, T y_, T z_)
        : x(x_)
        , y(y_)
        , z(z_)
    {
    }

    T& operator[](int i) { return (&x)[i]; }
    const T& operator[](int i) const { return (&x)[i]; }

    TVector3& operator+=(const TVector3& o)
    {
        x += o.x;
        y += o.y;
        z += o.z;
        return *this;
    }
    TVector3& operator-=(const TVector3& o)
    {
        x -= o.x;
        y -= o.y;
        z -= o.z;
        return *this;
    }
    TVector3& operator*=(T s)
    {
        x *= s;
        y *= s;
        z *= s;
        return *this;
    }
    TVector3& operator/=(T s) { return *this = *this / s; }

    friend TVector3 operator+(const TVector3& a, const TVector3& b)
    {
        return TVector3(a.x + b.x, a.y + b.y, a.z + b.z);
    }
    friend TVector3 operator-(const TVector3& a, const TVector3& b)
    {
        return TVector3(a.x - b.x, a.y - b.y, a.z - b.z);
    }
    friend TVector3 operator-(const TVector3& a) { return TVector3(-a.x, -a.y, -a.z); }
    friend TVector3 operator*(const TVector3& a, T s)
    {
        return TVector3(a.x * s, a.y * s, a.z * s);
    }
    friend TVector3 operator*(T s, const TVector3& a) { return a * s; }
    /// Multiplies by the reciprocal.
    friend TVector3 operator/(const TVector3& a, T s)
    {
        static_assert(std::is_floating_point<T>::value, "the reciprocal of a whole number is 0");
        return a * (T(1) / s);
    }
    friend bool operator==(const TVector3& a, const TVector3& b)
    {
        return a.x == b.x && a.y == b.y && a.z == b.z;
    }
    friend bool operator!=(const TVector3& a, const TVector3& b) { return !(a == b); }

    static TVector3 Mul(const TVector3& a, const TVector3& b)
    {
        return TVector3(a.x * b.x, a.y * b.y, a.z * b.z);
    }
    static TVector3 Div(const TVector3& a, const TVector3& b)
    {
        return TVector3(a.x / b.x, a.y / b.y, a.z / b.z);
    }
    static TVector3 Max(const TVector3& a, const TVector3& b)
    {
        return TVector3(a.x > b.x ? a.x : b.x, a.y > b.y ? a.y : b.y, a.z > b.z ? a.z : b.z);
    }

    T LengthSq() const { return x * x + y * y + z * z; }
    T Length() const { return std::sqrt(LengthSq()); }
};

template<typename T>
struct TVector4
{
    T x = 0, y = 0, z = 0, w = 0;

    TVector4() = default;
    TVector4(T x_, T y_, T z_, T w_)
        : x(x_)
        , y(y_)
        , z(z_)
        , w(w_)
    {
    }
    TVector4(const TVector3<T>& v, T w_)
        : x(v.x)
        , y(v.y)
        , z(v.z)
        , w(w_)
    {
    }

    T& operator[](int i) { return (&x)[i]; }
    const T& operator[](int i) const { return (&x)[i]; }
    TVector3<T> XYZ() const { return TVector3<T>(x, y, z); }

    TVector4& operator+=(const TVector4& o)
    {
        x += o.x;
        y += o.y;
        z += o.z;
        w += o.w;
        return *this;
    }
    TVector4& operator-=(const TVector4& o)
    {
        x -= o.x;
        y -= o.y;
        z -= o.z;
        w -= o.w;
        return *this;
    }
    TVector4& operator*=(T s)
    {
        x *= s;
        y *= s;
        z *= s;
        w *= s;
        return *this;
    }
    TVector4& operator/=(T s) { return *this = *this / s; }

    friend TVector4 operator+(const TVector4& a, const TVector4& b)
    {
        return TVector4(a.x + b.x, a.y + b.y, a.z + b.z, a.w + b.w);
    }
    friend TVector4 operator-(const TVector4& a, const TVector4& b)
    {
        return TVector4(a.x - b.x, a.y - b.y, a.z - b.z, a.w - b.w);
    }
    friend TVector4 operator-(const TVector4& a) { return TVector4(-a.x, -a.y, -a.z, -a.w); }
    friend TVector4 operator*(const TVector4& a, T s)
    {
        return TVector4(a.x * s, a.y * s, a.z * s, a.w * s);
    }
    friend TVector4 operator*(T s, const TVector4& a) { return a * s; }
    /// Multiplies by the reciprocal.
    friend TVector4 operator/(const TVector4& a, T s)
    {
        static_assert(std::is_floating_point<T>::value, "the reciprocal of a whole number is 0");
        return a * (T(1) / s);
    }
    friend bool operator==(const TVector4& a, const TVector4& b)
    {
        return a.x == b.x && a.y == b.y && a.z == b.z && a.w == b.w;
    }
    friend bool operator!=(const TVector4& a, const TVector4& b) { return !(a == b); }

    static TVector4 Mul(const TVector4& a, const TVector4& b)
    {
        return TVector4(a.x * b.x, a.y * b.y, a.z * b.z, a.w * b.w);
    }
    static TVector4 Div(const TVector4& a, const TVector4& b)
    {
        return TVector4(a.x / b.x, a.y / b.y, a.z / b.z, a.w / b.w);
    }
    static TVector4 Max(const TVector4& a, const TVector4& b)
    {
        return TVector4(a.x > b.x ? a.x : b.x, a.y > b.y ? a.y : b.y, a.z > b.z ? a.z : b.z,
                        a.w > b.w ? a.w : b.w);
    }
};

using Vec2 = TVector2<float>;
using Vec2i = TVector2<int>;
using Vec2u = TVector2<unsigned>;
using Vec3 = TVector3<float>;
using Vec4 = TVector4<float>;
using Color4 = TVector4<unsigned char>;
using Vec2List = std::vector<Vec2>;

template<typename T>
T Dot(const TVector2<T>& a, const TVector2<T>& b)
{
    return a.x * b.x + a.y * b.y;
}
template<typename T>
T Dot(const TVector3<T>& a, const TVector3<T>& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline float Cross(const Vec2& a, const Vec2& b)
{
    return a.x * b.y - a.y * b.x;
}
/// The velocity of a point at v that turns with w radians per second.
inline Vec2 Cross(float w, const Vec2& v)
{
    return Vec2(-w * v.y, w * v.x);
}
inline Vec3 Cross(const Vec3& a, const Vec3& b)
{
    return Vec3(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}
inline Vec2 Rot90CCW(const Vec2& v)
{
    return Vec2(-v.y, v.x);
}
inline Vec2 Rot90CW(const Vec2& v)
{
    return Vec2(v.y, -v.x);
}

inline Vec2 Normalized(Vec2 v)
{
    v.Normalize();
    return v;
}

inline float DistanceSq(const Vec2& a, const Vec2& b)
{
    return (a - b).LengthSq();
}
inline float Distance(const Vec2& a, const Vec2& b)
{
    return (a - b).Length();
}
inline float Distance(const Vec3& a, const Vec3& b)
{
    return (a - b).Length();
}

inline bool IsFinite(const Vec2& v)
{
    return IsFinite(v.x) && IsFinite(v.y);
}
inline bool IsFinite(const Vec3& v)
{
    return IsFinite(v.x) && IsFinite(v.y) && IsFinite(v.z);
}
inline bool IsFinite(const Vec4& v)
{
    return IsFinite(v.x) && IsFinite(v.y) && IsFinite(v.z) && IsFinite(v.w);
}

template<typename T>
std::ostream& operator<<(std::ostream& out, const TVector2<T>& v)
{
    return out << '(' << v.x << ", " << v.y << ')';
}
template<typename T>
std::ostream& operator<<(std::ostream& out, const TVector3<T>& v)
{
    return out << '(' << v.x << ", " << v.y << ", " << v.z << ')';
}
template<typename T>
std::ostream& operator<<(std::ostream& out, const TVector4<T>& v)
{
    return out << '(' << v.x << ", " << v.y << ", " << v.z << ", " << v.w << ')';
}
}
