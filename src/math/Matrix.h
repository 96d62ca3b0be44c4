// Matrices in row-major order, for column vectors.
#pragma once

#include "math/Mat2D.h"
#include "math/Vector.h"
#include "util/Failures.h"

namespace math
{
template<typename T>
struct TMatrix2
{
    T m00 = 1, m01 = 0, m10 = 0, m11 = 1;

    TMatrix2() = default;
    TMatrix2(T a, T b, T c, T d)
        : m00(a)
        , m01(b)
        , m10(c)
        , m11(d)
    {
    }

    friend TVector2<T> operator*(const TMatrix2& m, const TVector2<T>& v)
    {
        return TVector2<T>(m.m00 * v.x + m.m01 * v.y, m.m10 * v.x + m.m11 * v.y);
    }
    friend TMatrix2 operator+(const TMatrix2& a, const TMatrix2& b)
    {
        return TMatrix2(a.m00 + b.m00, a.m01 + b.m01, a.m10 + b.m10, a.m11 + b.m11);
    }
    friend TMatrix2 operator*(const TMatrix2& m, T s)
    {
        return TMatrix2(m.m00 * s, m.m01 * s, m.m10 * s, m.m11 * s);
    }
};

template<typename T>
TMatrix2<T> Inverted(const TMatrix2<T>& m)
{
    const T det = m.m00 * m.m11 - m.m01 * m.m10;
    CODE_ASSERT(det != 0);
    const T r = T(1) / det;
    return TMatrix2<T>(m.m11 * r, -m.m01 * r, -m.m10 * r, m.m00 * r);
}

// A homogeneous transform of the plane.
template<typename T>
struct TMatrix3
{
    T m[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};

    TMatrix3() = default;
    TMatrix3(T a, T b, T c, T d, T e, T f, T g, T h, T i)
        : m{{a, b, c}, {d, e, f}, {g, h, i}}
    {
    }
    explicit TMatrix3(const TMat2D<T>& r)
        : m{{r.cos, -r.sin, r.x}, {r.sin, r.cos, r.y}, {0, 0, 1}}
    {
    }

    static TMatrix3 Translation2D(const TVector2<T>& v)
    {
        return TMatrix3(1, 0, v.x, 0, 1, v.y, 0, 0, 1);
    }
    static TMatrix3 Scale2D(const TVector2<T>& s)
    {
        return TMatrix3(s.x, 0, 0, 0, s.y, 0, 0, 0, 1);
    }

    T* operator[](int row) { return m[row]; }
    const T* operator[](int row) const { return m[row]; }

    /// The first two elements of column i.
    TVector2<T> GetColumn2(int i) const { return TVector2<T>(m[0][i], m[1][i]); }
    void SetColumn2(int i, const TVector2<T>& v)
    {
        m[0][i] = v.x;
        m[1][i] = v.y;
    }

    TMatrix3 Transpose() const
    {
        return TMatrix3(m[0][0], m[1][0], m[2][0], m[0][1], m[1][1], m[2][1], m[0][2], m[1][2],
                        m[2][2]);
    }
    /// The adjugate: the transposed cofactors.
    TMatrix3 Adj() const
    {
        return TMatrix3(
            m[1][1] * m[2][2] - m[1][2] * m[2][1], m[0][2] * m[2][1] - m[0][1] * m[2][2],
            m[0][1] * m[1][2] - m[0][2] * m[1][1], m[1][2] * m[2][0] - m[1][0] * m[2][2],
            m[0][0] * m[2][2] - m[0][2] * m[2][0], m[0][2] * m[1][0] - m[0][0] * m[1][2],
            m[1][0] * m[2][1] - m[1][1] * m[2][0], m[0][1] * m[2][0] - m[0][0] * m[2][1],
            m[0][0] * m[1][1] - m[0][1] * m[1][0]);
    }
    T Determinant() const
    {
        return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
               m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
               m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
    }

    friend TMatrix3 operator*(const TMatrix3& a, const TMatrix3& b)
    {
        TMatrix3 r;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                r.m[i][j] = a.m[i][0] * b.m[0][j] + a.m[i][1] * b.m[1][j] + a.m[i][2] * b.m[2][j];
        return r;
    }
    friend TVector3<T> operator*(const TMatrix3& a, const TVector3<T>& v)
    {
        return TVector3<T>(a.m[0][0] * v.x + a.m[0][1] * v.y + a.m[0][2] * v.z,
                           a.m[1][0] * v.x + a.m[1][1] * v.y + a.m[1][2] * v.z,
                           a.m[2][0] * v.x + a.m[2][1] * v.y + a.m[2][2] * v.z);
    }
    friend bool operator==(const TMatrix3& a, const TMatrix3& b)
    {
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                if (a.m[i][j] != b.m[i][j])
                    return false;
        return true;
    }
    friend bool operator!=(const TMatrix3& a, const TMatrix3& b) { return !(a == b); }
};

/// The adjugate divided by the determinant, which must not be 0.
template<typename T>
TMatrix3<T> Inverted(const TMatrix3<T>& a)
{
    const T det = a.Determinant();
    CODE_ASSERT(det != 0);
    TMatrix3<T> r = a.Adj();
    for (auto& row : r.m)
        for (T& e : row)
            e /= det;
    return r;
}

template<typename T>
TVector2<T> TransformCoordinate(const TMatrix3<T>& m, const TVector2<T>& v)
{
    const TVector3<T> r = m * TVector3<T>(v.x, v.y, 1);
    return TVector2<T>(r.x / r.z, r.y / r.z);
}

template<typename T>
TVector2<T> TransformDirection(const TMatrix3<T>& m, const TVector2<T>& v)
{
    return TransformCoordinate(m, v) - TransformCoordinate(m, TVector2<T>());
}

/// By the inverse transpose of the upper 2 x 2 block. Not normalised.
template<typename T>
TVector2<T> TransformNormal2D(const TMatrix3<T>& a, const TVector2<T>& n)
{
    const T det = a.m[0][0] * a.m[1][1] - a.m[0][1] * a.m[1][0];
    return TVector2<T>((n.x * a.m[1][1] - n.y * a.m[1][0]) / det,
                       (n.y * a.m[0][0] - n.x * a.m[0][1]) / det);
}

template<typename T>
struct TMatrix4
{
    T m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

    /// Multiplies the current OpenGL matrix. float and double only.
    void MultToGL() const;
    /// Reads an OpenGL matrix, such as GL_MODELVIEW_MATRIX.
    void LoadFromGL(unsigned pname);

    friend TMatrix4 operator*(const TMatrix4& a, const TMatrix4& b)
    {
        TMatrix4 r;
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j)
            {
                r.m[i][j] = 0;
                for (int k = 0; k < 4; ++k)
                    r.m[i][j] += a.m[i][k] * b.m[k][j];
            }
        return r;
    }
};

/// The 4 x 4 matrix that holds a planar transform.
template<typename T>
TMatrix4<T> Mat4FromMat2D(const TMatrix3<T>& a)
{
    TMatrix4<T> r;
    const int to[3] = {0, 1, 3};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            r.m[to[i]][to[j]] = a.m[i][j];
    return r;
}

using Mat3 = TMatrix3<float>;
using Mat4 = TMatrix4<float>;
}
