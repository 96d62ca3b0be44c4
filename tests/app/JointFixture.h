// Scenes of boxes with joints and pens, without gravity and air unless a test switches them on.
#pragma once

#include "AppFixture.h"

#include "app/EntitySerializer.h"
#include "app/entities/BoxEntity.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/PlaneEntity.h"
#include "app/entities/SpringEntity.h"
#include "physics/Box.h"
#include "physics/Hinge.h"
#include "physics/Plane.h"
#include "physics/Polygon.h"
#include "physics/SpringJoint.h"
#include "physics/WorldGeom.h"

#include <initializer_list>
#include <limits>

namespace app
{
using math::Vec2;
using math::Vec4;
using physics::BodyPtr;
using physics::GeomPtr;
using GeomEntityPtr = util::SharedPtr<GeomEntity>;
using HingePtr = util::SharedPtr<HingeEntity>;
using SpringPtr = util::SharedPtr<SpringEntity>;
using FixJointPtr = util::SharedPtr<FixJointEntity>;

class JointFixture : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        Run("Sim.gravitySwitch = false; Sim.airSwitch = false");
    }
    void TearDown() override
    {
        Run("Sim.gravitySwitch = true; Sim.airSwitch = true");
        AppFixture::TearDown();
    }

    /// A unit box unless told otherwise, in the scene.
    static GeomEntityPtr Box(const Vec2& pos, const Vec2& size = Vec2(1, 1))
    {
        const GeomEntityPtr box = QUIB_NEW BoxEntity(QUIB_NEW physics::Box(size, pos));
        TheScene()->AddEntity(box);
        return box;
    }
    /// Solid below the height.
    static GeomEntityPtr Plane(float height)
    {
        const GeomEntityPtr plane =
            QUIB_NEW PlaneEntity(QUIB_NEW physics::Plane(math::Plane2D(Vec2(0, 1), -height)));
        TheScene()->AddEntity(plane);
        return plane;
    }

    static GeomPtr WorldGeom() { return Sim()->GetWorldGeom(); }
    static BodyPtr WorldBody() { return Sim()->GetWorldBody(); }

    /// In the scene, fastened at one point of the world.
    template<typename T>
    static util::SharedPtr<T> Join(const GeomPtr& geom0, const GeomPtr& geom1,
                                   const Vec2& point = Vec2())
    {
        const util::SharedPtr<T> joint = QUIB_NEW T(0.2f);
        joint->AttachToWorld(geom0, point, geom1, point);
        TheScene()->AddEntity(joint);
        return joint;
    }
    template<typename T>
    static util::SharedPtr<T> Join(const GeomEntityPtr& a, const GeomEntityPtr& b,
                                   const Vec2& point = Vec2())
    {
        return Join<T>(a->GetGeom(), b->GetGeom(), point);
    }

    /// In the scene, fastened to what lies under the points.
    template<typename T>
    static util::SharedPtr<T> Join(const Vec2& a, const Vec2& b)
    {
        const util::SharedPtr<T> joint = QUIB_NEW T(0.2f);
        const Vec2 points[2] = {a, b};
        joint->AttachAt(points);
        TheScene()->AddEntity(joint);
        return joint;
    }
    static PenEntityPtr AddPen(const Vec2& pos)
    {
        const PenEntityPtr pen = QUIB_NEW PenEntity(0.2f);
        pen->AttachAt(pos);
        TheScene()->AddEntity(pen);
        return pen;
    }

    /// Each of the settings costs the entity, if it is not a number.
    template<typename T>
    static void ExpectRefusesNaN(std::initializer_list<const char*> settings)
    {
        for (const char* name : settings)
        {
            EntitySerializer bag;
            bag.Set(name, std::numeric_limits<float>::quiet_NaN());
            T entity(1);
            EXPECT_THROW(entity.Deserialize(bag), BadDataException) << name;
        }
    }

    static bool IsThere(const EntityPtr& entity) { return TheScene()->HasEntity(entity); }
    /// What the simulation does in a frame of one step, and then the scene.
    static void Frame(int n = 1)
    {
        for (int i = 0; i < n; ++i)
        {
            Sim()->ClearTimeDebt();
            Sim()->Update(Sim()->m_timeDelta);
            TheScene()->Update(Sim()->m_timeDelta);
        }
    }
    static float Radians(const GeomEntityPtr& entity)
    {
        return entity->GetGeom()->GetPose().GetAngle();
    }

    /// A square around the origin.
    static physics::PolygonPtr Square(float half)
    {
        return QUIB_NEW physics::Polygon(math::Vec2List{Vec2(-half, -half), Vec2(half, -half),
                                                        Vec2(half, half), Vec2(-half, half)});
    }
    static physics::LinesegmentList Stroke(const Vec2& from, const Vec2& to)
    {
        return {physics::Linesegment(from, to)};
    }
};
}
