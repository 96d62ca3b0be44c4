// The random source. A run is reproducible: the sequence of each generator depends only on the order
// in which generators are made.
#pragma once

#include "math/Vector.h"

#include <memory>

namespace util
{
// A Mersenne twister (mt19937: Matsumoto and Nishimura 1998) seeded with its identity, which counts
// up from 0 over all generators of the process.
class Random
{
public:
    Random();
    ~Random();
    Random(const Random&) = delete;
    Random& operator=(const Random&) = delete;

    /// Uniform in [0, 1).
    float GetUniform();
    /// Uniform from a to b; a <= b.
    float GetUniform(float a, float b);
    /// Uniform over a to b - 1; a < b. Deliberate: b itself never comes.
    int GetUniformInt(int a, int b);
    /// Each component uniform in [-1, 1).
    math::Vec2 GetUniformVec2();
    /// Uniform over the disc of radius r.
    math::Vec2 GetPointInCircle(float r);
    /// Each component normal with mean 0 and deviation 1.
    math::Vec2 GetNormalVec2();

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;

    static unsigned& NextSeed();
};
}
