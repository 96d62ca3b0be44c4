// Random numbers for tests: the same in every run, whichever tests run before.
#pragma once

#include <cstdint>
#include <random>

namespace test
{
class Dice
{
public:
    explicit Dice(unsigned seed = 1)
        : m_generator(seed)
    {
    }

    /// Uniform in [a, b).
    float Uniform(float a, float b)
    {
        return a + (b - a) * static_cast<float>(m_generator() >> 8) / 16777216.0f;
    }
    /// Uniform over a to b - 1.
    int Int(int a, int b) { return a + static_cast<int>(m_generator() % (b - a)); }
    /// True in one of n cases.
    bool OneIn(int n) { return Int(0, n) == 0; }

private:
    std::mt19937 m_generator;
};
}
