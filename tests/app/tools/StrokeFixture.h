// Strokes at a tool, in a view in which world and GUI units convert without rounding.
#pragma once

#include "../PlainEntity.h"
#include "ToolFixture.h"

#include "app/entities/BoxEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PlaneEntity.h"
#include "app/entities/PolyEntity.h"
#include "physics/Box.h"
#include "physics/Plane.h"
#include "physics/Polygon.h"
#include "physics/WorldGeom.h"

#include <limits>

namespace app
{
using math::Vec2;
using math::Vec2List;
using BoxPtr = util::SharedPtr<BoxEntity>;

// Keeps every snapshot from being taken: it can't be saved.
template<typename Thrown>
class Unsaveable final : public test::PlainEntity
{
public:
    explicit Unsaveable(const Thrown& thrown)
        : m_thrown(thrown)
    {
    }
    void SerializeTo(EntitySerializer&) const override { throw m_thrown; }

private:
    Thrown m_thrown;
};

// Breaks when it is cut.
class Brittle final : public test::PlainEntity
{
public:
    bool ErasedBy(const physics::LinesegmentList&) const override
    {
        throw std::runtime_error("snap");
    }
};

class StrokeFixture : public ToolFixture
{
protected:
    void SetUp() override
    {
        ToolFixture::SetUp();
        SetView();
        ASSERT_EQ(Vec2(128, -256), GUIPos(Vec2(1, 2)));
    }
    static void StartAnew()
    {
        ToolFixture::StartAnew();
        SetView();
    }
    /// A world unit is 128 pixels, and the middle of the world the corner of the window. Points of a stroke
    /// are no closer than 0.053 units.
    static void SetView()
    {
        TheCamera()->SetZoom(128);
        TheCamera()->SetPan(Vec2(4, -3));
    }

    static BoxPtr AddBox(const Vec2& pos, const Vec2& size = Vec2(1, 1))
    {
        const BoxPtr box = QUIB_NEW BoxEntity(QUIB_NEW physics::Box(size, pos));
        TheScene()->AddEntity(box);
        return box;
    }
    /// Solid below the height.
    static EntityPtr AddPlane(float height)
    {
        const EntityPtr plane =
            QUIB_NEW PlaneEntity(QUIB_NEW physics::Plane(math::Plane2D(Vec2(0, 1), -height)));
        TheScene()->AddEntity(plane);
        return plane;
    }
    /// In the scene, fastened to what lies there.
    template<typename T>
    static util::SharedPtr<T> Attach(float size, const Vec2& a, const Vec2& b)
    {
        const util::SharedPtr<T> joint = QUIB_NEW T(size);
        const Vec2 points[2] = {a, b};
        joint->AttachAt(points);
        TheScene()->AddEntity(joint);
        return joint;
    }
    template<typename T>
    static util::SharedPtr<T> Newest()
    {
        const auto& entities = TheScene()->GetEntities();
        return entities.empty() ? nullptr : util::DynamicCast<T>(entities.back());
    }
    static bool IsThere(const EntityPtr& entity) { return TheScene()->HasEntity(entity); }
    static physics::GeomPtr WorldGeom() { return Sim()->GetWorldGeom(); }
    static bool IsNothingDone(size_t entities)
    {
        return EntityCount() == entities && NextUndo() == "";
    }

    /// The corners of a rectangle, and back to the first.
    static Vec2List Rectangle(const Vec2& min, const Vec2& max)
    {
        return {min, Vec2(max.x, min.y), max, Vec2(min.x, max.y), min};
    }
    static Vec2List Square(const Vec2& center, float half)
    {
        return Rectangle(center - Vec2(half, half), center + Vec2(half, half));
    }
    /// From the first to the last point of a segment, without a corner.
    static Vec2List Straight(const Vec2& from, const Vec2& to, int points)
    {
        Vec2List line;
        for (int i = 0; i < points; ++i)
            line.push_back(math::Lerp(from, to, float(i) / float(points - 1)));
        return line;
    }

    /// What was done can be undone under that name, and redone, to the byte.
    static void ExpectUndoable(const util::String& before, const util::String& name)
    {
        const util::String after = Save();
        EXPECT_NE(before, after);
        EXPECT_EQ(name, NextUndo());
        Undoer::GetInstancePtr()->Undo();
        EXPECT_EQ(before, Save());
        EXPECT_EQ("", NextUndo()) << "one step";
        Undoer::GetInstancePtr()->Redo();
        EXPECT_EQ(after, Save());
    }

    static void ReleaseKey(Tool& tool, int key, bool isHandled = false)
    {
        const input::KeyEvent event(key, 0, false, Vec2());
        event.SetHandled(isHandled);
        tool.OnKeyEvent(event);
    }
    /// @return whether the tool took it
    static bool PressEscape(Tool& tool)
    {
        const input::KeyEvent event(SDLK_ESCAPE, 0, true, Vec2());
        tool.OnKeyEvent(event);
        return event.IsHandled();
    }
};
}
