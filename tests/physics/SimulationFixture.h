// An empty world with default settings for each test, and short ways to fill it.
#pragma once

#include "physics/Body.h"
#include "physics/Box.h"
#include "physics/Circle.h"
#include "physics/Contact.h"
#include "physics/Plane.h"
#include "physics/Polygon.h"
#include "physics/Simulation.h"
#include "physics/WorldGeom.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <vector>

namespace physics
{
class SimulationFixture : public testing::Test
{
protected:
    SimulationFixture()
        : sim(*Simulation::GetInstancePtr())
    {
        Reset();
    }
    ~SimulationFixture() override { Reset(); }

    void Reset()
    {
        sim.Clear();
        sim.m_running = true;
        sim.m_timeFactor = 1.0f;
        sim.m_timeDelta = 0.01f;
        sim.m_gravity = math::Vec2(0, -9.8f);
        sim.m_gravitySwitch = true;
        sim.m_airSwitch = true;
        sim.m_airFrictionLinear = 0.01f;
        sim.m_airFrictionQuadratic = 0.0f;
        sim.m_rotFrictionLinear = 0.01f;
        sim.m_airDensity = 0.01f;
        sim.m_springForce = 1000.0f;
        sim.m_defaultBodyDensity = 2.0f;
        sim.m_defaultBodyFriction = 0.5f;
        sim.m_defaultBodyRestitution = 0.5f;
        sim.m_fallLimit = 1000.0f;
        sim.m_prioritizedSolver = false;
        sim.m_targetPenetration = 0.001f;
        sim.m_solveIter = 30;
        sim.m_solveConstant = 1e8f;
        sim.m_solveDcontacts = 5.0f;
        sim.m_solveDconstraints = 5.0f;
        sim.m_solvePenetrationDamping = false;
        sim.m_solveDistFactor = 1.0f;
        sim.m_solveVelFactor = 1.0f;
        sim.m_solveAccFactor = 1.0f;
        sim.m_solveRegularizationFactor = 1.0f;
        sim.m_solvePreSortConstraints = true;
        sim.m_leapFrog = true;
        sim.m_adHocSolver = false;
        sim.m_warmStart = true;
        sim.m_warmStartFactor = 0.5f;
        sim.m_maxPositionCorrection = std::numeric_limits<float>::infinity();
        sim.SetSimTime(0);
        sim.SetFrameBudget(0.05f);
        sim.SetStepLimit(0);
        Contact::s_params = ConstraintParams();
    }

    BodyPtr AddBodyWith(GeomPtr geom)
    {
        BodyPtr body = QUIB_NEW Body;
        body->SetGeom(geom);
        sim.AddBody(body);
        return body;
    }
    BodyPtr AddBox(math::Vec2 size, math::Vec2 pos) { return AddBodyWith(QUIB_NEW Box(size, pos)); }
    BodyPtr AddCircle(math::Vec2 pos, float radius)
    {
        return AddBodyWith(QUIB_NEW Circle(pos, radius));
    }
    /// Solid below a height.
    BodyPtr AddFloor(float height = 0)
    {
        return AddBodyWith(QUIB_NEW Plane(math::Plane2D(math::Vec2(0, 1), -height)));
    }
    static GeomPtr GeomOf(const BodyPtr& body) { return body->GetParts()[0].geom; }

    static void Place(const BodyPtr& body, math::Vec2 pos, float rot = 0)
    {
        body->SetPos(pos);
        body->SetRot(rot);
        body->ApplyPoseChange();
    }

    /// A row of n boxes of size 1 at the bottom, one less in each row above, on a floor at height 0.
    std::vector<BodyPtr> AddPyramid(int n)
    {
        AddFloor();
        std::vector<BodyPtr> bodies;
        for (int row = 0; row < n; ++row)
            for (int i = 0; i < n - row; ++i)
                bodies.push_back(AddBox(math::Vec2(1, 1),
                                        math::Vec2(1.1f * (i - 0.5f * (n - row - 1)), row + 0.5f)));
        return bodies;
    }

    void Steps(int n)
    {
        for (int i = 0; i < n; ++i)
            sim.Step(true);
    }

    static const float Inf;

    Simulation& sim;
};
inline const float SimulationFixture::Inf = std::numeric_limits<float>::infinity();

/// The bits of a float, so that comparisons tell -0 from 0.
inline uint32_t Bits(float x)
{
    uint32_t bits;
    std::memcpy(&bits, &x, sizeof(bits));
    return bits;
}

#define EXPECT_VEC_NEAR(ex, ey, v, tolerance)                                                      \
    do                                                                                             \
    {                                                                                              \
        const math::Vec2 value_ = (v);                                                             \
        EXPECT_NEAR(ex, value_.x, tolerance);                                                      \
        EXPECT_NEAR(ey, value_.y, tolerance);                                                      \
    } while (false)

/// The statement throws the exception, and its text holds the condition.
#define EXPECT_ASSERTION(statement, condition)                                                     \
    do                                                                                             \
    {                                                                                              \
        try                                                                                        \
        {                                                                                          \
            statement;                                                                             \
            ADD_FAILURE() << "no assertion";                                                       \
        }                                                                                          \
        catch (const BadCoderException& e)                                                         \
        {                                                                                          \
            EXPECT_NE(std::string::npos,                                                           \
                      std::string(e.what()).find("Code assertion failed: \"" condition "\""))      \
                << e.what();                                                                       \
        }                                                                                          \
    } while (false)
}
