#include "physics/Constraint.h"

#include "SimulationFixture.h"
#include "physics/ConstraintParams.h"

namespace physics
{
using math::Vec2;

using ConstraintTest = SimulationFixture;

TEST(ConstraintParams, AreThoseOfAnImplicitStepper)
{
    // 1 + 4 d = 21
    const ConstraintParams params(0.01f, 5, 1e8f, 0.005f);
    EXPECT_FLOAT_EQ(0.01f, params.dt);
    EXPECT_FLOAT_EQ(4 / 0.21f, params.dist);
    EXPECT_FLOAT_EQ(20.0f / 21, params.vel);
    EXPECT_FLOAT_EQ(0.005f, params.acc);
    EXPECT_FLOAT_EQ(4 / (1e-4f * 1e8f * 21), params.reg);
}

TEST(ConstraintParams, AreNotGuardedAgainstSenselessSettings)
{
    EXPECT_FALSE(math::IsFinite(ConstraintParams(0, 5, 1e8f, 0).dist));
    EXPECT_FALSE(math::IsFinite(ConstraintParams(0.01f, -0.25f, 1e8f, 0).vel));
}

TEST_F(ConstraintTest, CombinedMassAddsInverses)
{
    // Masses 2 and 2, inertias 1/3. Along x, at arms of 1 in y on both: 1 / (1 + 3 + 3).
    const BodyPtr a = AddBox(Vec2(1, 1), Vec2(0, 5));
    const BodyPtr b = AddBox(Vec2(1, 1), Vec2(0, 7));
    EXPECT_FLOAT_EQ(1, CombinedMass(*a, Vec2(), *b, Vec2(), Vec2(1, 0)));
    EXPECT_FLOAT_EQ(1.0f / 7, CombinedMass(*a, Vec2(0, 1), *b, Vec2(0, -1), Vec2(1, 0)));
    EXPECT_FLOAT_EQ(1, CombinedMass(*a, Vec2(0, 1), *b, Vec2(0, -1), Vec2(0, 1)));
    // Suspended, or of the world: infinitely heavy.
    EXPECT_FLOAT_EQ(2, CombinedMass(*a, Vec2(), *sim.GetWorldBody(), Vec2(), Vec2(1, 0)));
    b->SetSuspended(true);
    // 1 / (1/2 + 3)
    EXPECT_FLOAT_EQ(2.0f / 7, CombinedMass(*a, Vec2(0, 1), *b, Vec2(0, -1), Vec2(1, 0)));
}

TEST(ConstraintComparer, PutsTheLargestPriorityFirst)
{
    class Fake : public Constraint
    {
    public:
        explicit Fake(float priority) { m_priority = priority; }
        bool SolveInit() override { return false; }
        void CalcDesiredImpulse() override {}
        void ApplyImpulse() override {}
        void SolveExit() override {}
    };
    const Fake small(1), large(2), same(2);
    const ConstraintComparer before;
    EXPECT_TRUE(before(&large, &small));
    EXPECT_FALSE(before(&small, &large));
    EXPECT_FALSE(before(&large, &same));
    EXPECT_FALSE(before(&same, &large));
}
}
