#include "physics/SpringDamper.h"

#include "SimulationFixture.h"

namespace physics
{
using math::Vec2;

TEST(SpringDamper, PullsTheFirstEndTowardsTheSecondWhenStretched)
{
    const SpringDamper spring{10, 0, 1};
    const Vec2 still;
    EXPECT_EQ(Vec2(20, 0), spring.CalculateForces(Vec2(0, 0), Vec2(3, 0), still, still));
    EXPECT_EQ(Vec2(0, -5), spring.CalculateForces(Vec2(0, 2), Vec2(0, 2.5f), still, still));
    EXPECT_EQ(Vec2(), spring.CalculateForces(Vec2(0, 2), Vec2(0, 3), still, still));
}

TEST(SpringDamper, DampsWhatChangesItsLengthOnly)
{
    const SpringDamper spring{0, 2, 1};
    const Vec2 a(0, 0), b(2, 0);
    EXPECT_EQ(Vec2(6, 0), spring.CalculateForces(a, b, Vec2(), Vec2(3, 7)));
    EXPECT_EQ(Vec2(-6, 0), spring.CalculateForces(a, b, Vec2(3, -7), Vec2()));
    EXPECT_EQ(Vec2(), spring.CalculateForces(a, b, Vec2(5, 1), Vec2(5, 2)));
}

// Looks arbitrary and is required.
TEST(SpringDamper, PushesAlongXWhenItsEndsCoincide)
{
    const SpringDamper spring{10, 2, 0.5f};
    const Vec2 p(3, 4);
    EXPECT_EQ(Vec2((1e-6f - 0.5f) * 10, 0), spring.CalculateForces(p, p, Vec2(), Vec2()));
    // Velocities count along x too, and less than 1e-7 is nothing.
    EXPECT_EQ(Vec2((1e-6f - 0.5f) * 10 + 6, 0),
              spring.CalculateForces(Vec2(), Vec2(0, 5e-8f), Vec2(), Vec2(3, 7)));
}
}
