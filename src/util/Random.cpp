#include "util/Random.h"

#include "util/Failures.h"

#include <boost/random/mersenne_twister.hpp>
#include <boost/random/normal_distribution.hpp>
#include <boost/random/uniform_01.hpp>
#include <boost/random/uniform_int_distribution.hpp>

namespace util
{
struct Random::Impl
{
    explicit Impl(unsigned seed)
        : generator(seed)
    {
    }

    boost::random::mt19937 generator;
    boost::random::uniform_01<float> uniform;
    boost::random::normal_distribution<float> normal;
};

unsigned& Random::NextSeed()
{
    static unsigned s_seed = 0;
    return s_seed;
}

Random::Random()
    : m_impl(new Impl(NextSeed()++))
{
}

Random::~Random() = default;

float Random::GetUniform()
{
    return m_impl->uniform(m_impl->generator);
}

float Random::GetUniform(float a, float b)
{
    CODE_ASSERT(a <= b);
    return a + GetUniform() * (b - a);
}

int Random::GetUniformInt(int a, int b)
{
    CODE_ASSERT(a < b);
    return boost::random::uniform_int_distribution<int>(a, b - 1)(m_impl->generator);
}

math::Vec2 Random::GetUniformVec2()
{
    const float x = 2 * GetUniform() - 1;
    const float y = 2 * GetUniform() - 1;
    return math::Vec2(x, y);
}

math::Vec2 Random::GetPointInCircle(float r)
{
    math::Vec2 p;
    do
        p = GetUniformVec2();
    while (p.LengthSq() > 1);
    return p * r;
}

math::Vec2 Random::GetNormalVec2()
{
    const float x = m_impl->normal(m_impl->generator);
    const float y = m_impl->normal(m_impl->generator);
    return math::Vec2(x, y);
}
}
