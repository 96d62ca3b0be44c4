#include "math/Matrix.h"

#include <GL/gl.h>

namespace math
{
namespace
{
void MultTransposed(const float* m)
{
    glMultMatrixf(m);
}
void MultTransposed(const double* m)
{
    glMultMatrixd(m);
}
}

template<typename T>
void TMatrix4<T>::MultToGL() const
{
    T transposed[16];
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            transposed[j * 4 + i] = m[i][j];
    MultTransposed(transposed);
}

template<typename T>
void TMatrix4<T>::LoadFromGL(unsigned pname)
{
    float transposed[16];
    glGetFloatv(pname, transposed);
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            m[i][j] = transposed[j * 4 + i];
}

template<typename T>
void TMat2D<T>::MultToGL() const
{
    Mat4FromMat2D(TMatrix3<T>(*this)).MultToGL();
}

template struct TMatrix4<float>;
template struct TMatrix4<double>;
template void TMat2D<float>::MultToGL() const;
}
