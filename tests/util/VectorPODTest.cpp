#include "util/VectorPOD.h"

#include "util/Array2D.h"

#include <gtest/gtest.h>

#include <new>

using util::Array2D;
using util::VectorPOD;

TEST(VectorPOD, StartsWithoutMemory)
{
    VectorPOD<int> v;
    EXPECT_EQ(nullptr, v.begin());
    EXPECT_EQ(0u, v.size());
    EXPECT_EQ(0u, v.capacity());
    EXPECT_TRUE(v.empty());
    v.reserve(0);
    EXPECT_EQ(nullptr, v.begin());
}

TEST(VectorPOD, DoublesWhatItNeedsWhenItGrows)
{
    VectorPOD<int> v;
    v.append(1);
    EXPECT_EQ(2u, v.capacity()); // 2 x 1
    v.append(2);
    EXPECT_EQ(2u, v.capacity());
    v.append(3);
    EXPECT_EQ(6u, v.capacity()); // 2 x 3
    for (int i = 4; i <= 7; ++i)
        v.append(i);
    EXPECT_EQ(14u, v.capacity());
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(i + 1, v[i]);
}

TEST(VectorPOD, ReservesExactly)
{
    VectorPOD<int> v;
    v.append(4);
    v.reserve(10);
    EXPECT_EQ(10u, v.capacity());
    EXPECT_EQ(1u, v.size());
    EXPECT_EQ(4, v[0]);
    v.reserve(3);
    EXPECT_EQ(10u, v.capacity());
}

TEST(VectorPOD, LeavesNewElementsAsTheyCome)
{
    VectorPOD<int> v;
    v.append(1);
    v.append(77);
    v.pop_back();
    v.resize(2);
    EXPECT_EQ(77, v[1]) << "constructed, where it must be left alone";
    v.clear();
    EXPECT_EQ(2u, v.capacity());
    v.resize(2);
    EXPECT_EQ(1, v[0]);
}

TEST(VectorPOD, AppendsItsOwnElement)
{
    VectorPOD<int> v;
    v.append(5);
    v.append(6);
    v.append(v[0]); // grows meanwhile
    EXPECT_EQ(5, v[2]);
}

TEST(VectorPOD, AssertsItsRange)
{
    VectorPOD<int> v;
    EXPECT_THROW(v.pop_back(), BadCoderException);
    v.append(1);
    EXPECT_THROW(v[1], BadCoderException);
    const VectorPOD<int>& constant = v;
    EXPECT_THROW(constant[1], BadCoderException);
    v.pop_back();
    EXPECT_THROW(v[0], BadCoderException);
    EXPECT_THROW(v.back(), BadCoderException);
}

TEST(VectorPOD, ThrowsBadAllocWhenThereIsNoMemory)
{
    VectorPOD<int> v;
    v.append(3);
    EXPECT_THROW(v.reserve(static_cast<size_t>(-1)), std::bad_alloc);
#if !defined(__SANITIZE_ADDRESS__) // which ends the program instead
    EXPECT_THROW(v.reserve(size_t(1) << 60), std::bad_alloc);
#endif
    ASSERT_EQ(1u, v.size());
    EXPECT_EQ(3, v[0]);
}

TEST(VectorPOD, CopiesAndMoves)
{
    VectorPOD<int> a;
    a.append(1);
    a.append(2);
    VectorPOD<int> b(a);
    b[0] = 9;
    EXPECT_EQ(1, a[0]);
    const int* memory = b.begin();
    VectorPOD<int> c(std::move(b));
    EXPECT_EQ(memory, c.begin());
    a = c;
    EXPECT_EQ(9, a[0]);
    const VectorPOD<int>& same = a;
    a = same;
    EXPECT_EQ(2u, a.size());
    a = VectorPOD<int>();
    EXPECT_TRUE(a.empty());
}

TEST(Array2D, LiesInRowOrder)
{
    Array2D<int> a(3, 2);
    for (int i = 0; i < 6; ++i)
        a.data()[i] = i;
    EXPECT_EQ(3u, a.GetWidth());
    EXPECT_EQ(2u, a.GetHeight());
    EXPECT_EQ(2, a(2, 0));
    EXPECT_EQ(3, a(0, 1));
    a(1, 1) = 10;
    EXPECT_EQ(10, a.data()[4]);
}

TEST(Array2D, AssertsItsRange)
{
    Array2D<int> a(3, 2);
    const Array2D<int>& constant = a;
    for (const auto& p : {std::pair<int, int>(3, 0), {0, 2}, {-1, 0}, {0, -1}})
        try
        {
            constant(p.first, p.second);
            FAIL() << p.first << ", " << p.second;
        }
        catch (BadCoderException& e)
        {
            EXPECT_EQ(0u,
                      std::string(e.what()).find(
                          "Code assertion failed: \"x < m_width && y < m_height\" in function "));
        }
    EXPECT_THROW(Array2D<int>().Clamped(0, 0), BadCoderException);
}

TEST(Array2D, ClampsBothCoordinates)
{
    Array2D<int> a(2, 2);
    for (int i = 0; i < 4; ++i)
        a.data()[i] = i;
    EXPECT_EQ(0, a.Clamped(-5, -1));
    EXPECT_EQ(1, a.Clamped(7, 0));
    EXPECT_EQ(2, a.Clamped(-1, 9));
    EXPECT_EQ(3, a.Clamped(2, 2));
    EXPECT_EQ(2, a.Clamped(0, 1));
}

TEST(Array2D, SamplesBetweenItsFourNeighbours)
{
    Array2D<float> a(2, 2);
    a(0, 0) = 0;
    a(1, 0) = 4;
    a(0, 1) = 8;
    a(1, 1) = 16;
    EXPECT_FLOAT_EQ(0, a.Sample(0, 0));
    EXPECT_FLOAT_EQ(16, a.Sample(1, 1));
    EXPECT_FLOAT_EQ(1, a.Sample(0.25f, 0));
    EXPECT_FLOAT_EQ(4, a.Sample(0, 0.5f));
    EXPECT_FLOAT_EQ(7, a.Sample(0.5f, 0.5f));
    // Beyond the grid the border goes on.
    EXPECT_FLOAT_EQ(0, a.Sample(-0.5f, -0.5f));
    EXPECT_FLOAT_EQ(10, a.Sample(7.25f, 0.5f));
    EXPECT_FLOAT_EQ(2, a.Sample(0.5f, -3));
}
