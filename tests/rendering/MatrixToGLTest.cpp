// OpenGL keeps its matrices column by column, ours are row by row.

#include "math/Mat2D.h"
#include "math/Matrix.h"
#include "rendering/RecordedGL.h"

#include <GL/gl.h>
#include <gtest/gtest.h>

using Log = std::vector<std::string>;

TEST(MatrixToGL, MultipliesATransposedCopy)
{
    math::TMatrix4<float> m;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            m.m[i][j] = 10.0f * i + j;
    recorded::Clear();
    m.MultToGL();
    EXPECT_EQ((Log{"glMultMatrixf 0 10 20 30 1 11 21 31 2 12 22 32 3 13 23 33"}),
              recorded::Calls());
}

TEST(MatrixToGL, MultipliesInItsOwnPrecision)
{
    math::TMatrix4<double> m;
    m.m[0][3] = 0.5;
    recorded::Clear();
    m.MultToGL();
    EXPECT_EQ((Log{"glMultMatrixd 1 0 0 0 0 1 0 0 0 0 1 0 0.5 0 0 1"}), recorded::Calls());
}

TEST(MatrixToGL, TransposesWhatItReads)
{
    recorded::Clear();
    math::TMatrix4<float> m;
    m.LoadFromGL(GL_MODELVIEW_MATRIX);
    math::TMatrix4<double> d;
    d.LoadFromGL(GL_PROJECTION_MATRIX);
    EXPECT_EQ((Log{"glGetFloatv " + std::to_string(GL_MODELVIEW_MATRIX),
                   "glGetFloatv " + std::to_string(GL_PROJECTION_MATRIX)}),
              recorded::Calls());
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
        {
            EXPECT_EQ(4 * j + i, m.m[i][j]);
            EXPECT_EQ(4 * j + i, d.m[i][j]);
        }
}

TEST(MatrixToGL, APlanarTransformTurnsAboutZAndShiftsInThePlane)
{
    recorded::Clear();
    math::Mat2D(2, 3, 11, 13).MultToGL();
    EXPECT_EQ((Log{"glMultMatrixf 2 3 0 0 -3 2 0 0 0 0 1 0 11 13 0 1"}), recorded::Calls());
}
