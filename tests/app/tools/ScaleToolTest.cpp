#include "HandFixture.h"

#include "app/entities/PolyEntity.h"

#include <algorithm>

namespace app
{
namespace
{
class ScaleToolTest : public HandFixture
{
protected:
    static ScaleTool& TheTool() { return *TheTools()->Get<ScaleTool>(); }
    void TearDown() override
    {
        HandFixture::TearDown();
        TheTool().UpdateGroup(Vec2(100, 100));
    }

    static EntityPtr At(const Vec2& pos) { return TheScene()->GetEntityAt(pos); }
    /// Takes the ring there and goes to the other point.
    static void Pull(const Vec2& ring, const Vec2& to)
    {
        ASSERT_TRUE(Begin(TheTool(), ring));
        Drag(TheTool(), ring, ring, to);
    }
    static void PullAndLetGo(const Vec2& ring, const Vec2& to)
    {
        Pull(ring, to);
        End(TheTool(), ring, to);
    }
    /// What the tool does in a frame with the mouse there.
    static void FrameAt(const Vec2& mouse)
    {
        MoveMouse(mouse);
        TheTool().Update(0.01f);
    }
    static Vec2 Factor() { return TheTool().GetCurrentScaleFactor(); }
};

// --- rings ---

TEST_F(ScaleToolTest, RingsStandOnCornersAndEdges)
{
    const math::BoundingBox box(Vec2(-4, -2), Vec2(4, 2));
    const struct
    {
        Vec2 pos;
        bool x, y;
        const char* cursor;
    } expected[] = {
        {Vec2(-4, 2), true, true, "arrow_north-west"},
        {Vec2(0, 2), false, true, "arrow_north-south"},
        {Vec2(4, 2), true, true, "arrow_north-east"},
        {Vec2(-4, 0), true, false, "arrow_west-east"},
        {Vec2(4, 0), true, false, "arrow_west-east"},
        {Vec2(-4, -2), true, true, "arrow_north-east"},
        {Vec2(0, -2), false, true, "arrow_north-south"},
        {Vec2(4, -2), true, true, "arrow_north-west"},
    };
    const RingList rings = CalcRingList(box);
    ASSERT_EQ(8u, rings.size());
    for (int i = 0; i < 8; ++i)
    {
        SCOPED_TRACE(i);
        EXPECT_EQ(expected[i].pos, rings[i].pos);
        EXPECT_EQ(-expected[i].pos, rings[i].anchor);
        EXPECT_EQ(expected[i].x, rings[i].axes.x);
        EXPECT_EQ(expected[i].y, rings[i].axes.y);
        EXPECT_STREQ(expected[i].cursor, rings[i].cursor);
        EXPECT_EQ(i, rings[i].index);
        EXPECT_FLOAT_EQ(0.5f * CM(), rings[i].radius);
    }
}

TEST_F(ScaleToolTest, RingsOnASmallBoxDoNotOverlap)
{
    const math::BoundingBox box(Vec2(-0.05f, -0.2f), Vec2(0.05f, 0.2f));
    const RingList rings = CalcRingList(box);
    EXPECT_FLOAT_EQ(0.0225f, rings[0].radius);
    for (const Ring& a : rings)
        for (const Ring& b : rings)
        {
            if (a.index == b.index)
                continue;
            EXPECT_GT(math::Distance(a.pos, b.pos), a.radius + b.radius);
        }
}

TEST_F(ScaleToolTest, ARingIsHitStrictlyInside)
{
    const math::BoundingBox box(Vec2(-4, -2), Vec2(4, 2));
    const float r = 0.5f * CM();
    ASSERT_TRUE(GetRingAt(box, Vec2(4, 2)));
    EXPECT_EQ(2, GetRingAt(box, Vec2(4, 2))->index);
    EXPECT_TRUE(GetRingAt(box, Vec2(4 + r * 0.99f, 2)));
    EXPECT_FALSE(GetRingAt(box, Vec2(4 + r * 1.01f, 2)));
    EXPECT_FALSE(GetRingAt(box, Vec2()));
    // One without a size has no ring that could be hit, and none of an empty or infinite box exists.
    EXPECT_FALSE(GetRingAt(math::BoundingBox(Vec2(), Vec2()), Vec2()));
    EXPECT_TRUE(CalcRingList(math::BoundingBox()).empty());
    EXPECT_TRUE(CalcRingList(math::BoundingBox::Everything()).empty());
}

TEST_F(ScaleToolTest, WhatHangsByAPinScalesAboutItUnlessTheRingIsRightAtIt)
{
    const GeomEntityPtr box = Make::Box(Vec2(), Vec2(4, 2));
    const struct
    {
        Vec2 pin;
        int ring;
        bool isPin;
    } cases[] = {
        {Vec2(0, 0), 4, true},        {Vec2(0.19f, 0), 4, true},  // 1.81 from the right edge
        {Vec2(0.21f, 0), 4, false},                               // 1.79, below 0.45 of 4
        {Vec2(0.21f, 0), 3, true},                                // the left edge
        {Vec2(0, 0.09f), 2, true},    {Vec2(0, 0.11f), 2, false}, // a corner wants both axes
        {Vec2(0.21f, 0), 2, false},   {Vec2(0, 0.11f), 4, true},  // an edge its own only
        {Vec2(0.5f, 0.09f), 1, true}, {Vec2(0.5f, 0.11f), 1, false},
    };
    const Group group{EntityPtr(box)};
    const math::BoundingBox aabb = group.CalcFiniteAABB();
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << "pin " << c.pin << ", ring " << c.ring);
        const HingePtr hinge = Make::Join<HingeEntity>(c.pin, c.pin);
        const Ring ring = CalcRingList(aabb)[c.ring];
        ExpectNear(c.isPin ? c.pin : ring.anchor, CalcScaleCenter(aabb, group, ring));
        TheScene()->RemoveEntity(hinge);
    }
    const Ring ring = CalcRingList(aabb)[0];
    EXPECT_EQ(ring.anchor, CalcScaleCenter(aabb, group, ring)) << "without a pin";
}

// --- which group ---

TEST_F(ScaleToolTest, TheSelectionShowsHandlesWhereverTheMouseIs)
{
    const GeomEntityPtr a = Make::Box(Vec2()), b = Make::Box(Vec2(5, 0));
    Select({a});
    TheTool().UpdateGroup(Vec2(5, 0));
    EXPECT_EQ(TheScene()->GetSelection(), TheTool().GetGroup());
    TheScene()->GetSelection()->Clear();
    TheTool().UpdateGroup(Vec2(5, 0));
    ASSERT_TRUE(TheTool().GetGroup());
    EXPECT_TRUE(TheTool().GetGroup()->Contains(b));
}

TEST_F(ScaleToolTest, WithoutASelectionWhatIsUnderTheMouseShowsHandles)
{
    const GeomEntityPtr a = Make::Box(Vec2());
    TheTool().UpdateGroup(Vec2(3, 3));
    EXPECT_FALSE(TheTool().GetGroup());
    TheTool().UpdateGroup(Vec2());
    ASSERT_TRUE(TheTool().GetGroup());
    EXPECT_TRUE(TheTool().GetGroup()->Contains(a));
    TheTool().UpdateGroup(Vec2(3, 3));
    ASSERT_TRUE(TheTool().GetGroup()) << "it stays until another takes over";
    TheScene()->RemoveEntity(a);
    TheTool().UpdateGroup(Vec2(3, 3));
    EXPECT_FALSE(TheTool().GetGroup());
}

TEST_F(ScaleToolTest, WhatTheBoxOfTheCurrentGroupContainsTakesOver)
{
    const GeomEntityPtr large = Make::Box(Vec2(), Vec2(4, 4));
    TheTool().UpdateGroup(Vec2(1, 0));
    const GeomEntityPtr small = Make::Box(Vec2(1, 0));
    TheTool().UpdateGroup(Vec2(1, 0));
    EXPECT_TRUE(TheTool().GetGroup()->Contains(small));
    // The large one's box is not in the small one's, and the mouse on the edge is not far.
    TheTool().UpdateGroup(Vec2(1, 0.51f));
    EXPECT_TRUE(TheTool().GetGroup()->Contains(small));
    TheTool().UpdateGroup(Vec2(-1, 0));
    EXPECT_TRUE(TheTool().GetGroup()->Contains(large));
}

TEST_F(ScaleToolTest, AnotherTakesOverBeyondATwentiethOfTheDiagonal)
{
    const GeomEntityPtr a = Make::Box(Vec2(-1.5f, 0), Vec2(3, 4)), // up to x = 0; the diagonal is 5
        b = Make::Box(Vec2(3, 1), Vec2(6, 6));
    const struct
    {
        Vec2 mouse;
        bool takesOver;
    } cases[] = {
        {Vec2(0.24f, 1), false},
        {Vec2(0.26f, 1), true},
        // On the right ring's rim, whose radius is 0.169: not that far.
        {Vec2(0.16f, 0), false},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.mouse);
        TheTool().UpdateGroup(Vec2(-2, 0));
        ASSERT_TRUE(TheTool().GetGroup()->Contains(a));
        TheTool().UpdateGroup(c.mouse);
        EXPECT_EQ(c.takesOver, TheTool().GetGroup()->Contains(b));
    }
}

TEST_F(ScaleToolTest, WhileTheMouseIsOnARingTheCurrentGroupStays)
{
    const GeomEntityPtr a =
        Make::Box(Vec2(-0.5f, 0), Vec2(1, 1)); // a twentieth of its diagonal is 0.07
    Make::Box(Vec2(3, 0), Vec2(6, 6));
    // The upper right ring: 0.1 to the right of the corner is on it.
    TheTool().UpdateGroup(Vec2(-0.9f, 0));
    TheTool().UpdateGroup(Vec2(0.1f, 0.5f));
    EXPECT_TRUE(TheTool().GetGroup()->Contains(a));
    // Between the rings it is as far, and not on one.
    TheTool().UpdateGroup(Vec2(0.1f, 0.25f));
    EXPECT_FALSE(TheTool().GetGroup()->Contains(a));
}

TEST_F(ScaleToolTest, APlaneHasNoHandlesAndHidesNoOthers)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    const GeomEntityPtr plane = Make::Plane(-2);
    TheTool().UpdateGroup(Vec2(0, -3));
    EXPECT_FALSE(TheTool().GetGroup());
    TheTool().UpdateGroup(Vec2(0, 0));
    ASSERT_TRUE(TheTool().GetGroup());
    TheTool().UpdateGroup(Vec2(0, -3));
    EXPECT_TRUE(TheTool().GetGroup()->Contains(box));
    Select({plane});
    EXPECT_FALSE(Begin(TheTool(), Vec2(0, -3)));
    // In a selection with others it counts for nothing.
    Select({plane, box});
    EXPECT_TRUE(Begin(TheTool(), Vec2(0.5f, 0.5f)));
}

// --- the drag ---

TEST_F(ScaleToolTest, ACornerScalesBothAxesFromTheOppositeCorner)
{
    Make::Box(Vec2(), Vec2(2, 1));
    PullAndLetGo(Vec2(1, 0.5f), Vec2(3, 1));
    ASSERT_EQ(1u, EntityCount());
    const EntityPtr scaled = TheScene()->GetEntities()[0];
    ExpectNear(Vec2(4, 1.5f), SizeOf(scaled));
    ExpectNear(Vec2(-1, -0.5f), scaled->GetAABB().GetMin());
    EXPECT_TRUE(TheScene()->IsSelected(scaled));
    EXPECT_EQ("UndoScale", NextUndo());
    EXPECT_FALSE(TheTool().IsInUse());
}

TEST_F(ScaleToolTest, AnEdgeScalesItsAxisOnly)
{
    Make::Box(Vec2(), Vec2(2, 1));
    PullAndLetGo(Vec2(-1, 0), Vec2(-3, 7));
    ExpectNear(Vec2(4, 1), SizeOf(TheScene()->GetEntities()[0]));
    ExpectNear(Vec2(-3, -0.5f), TheScene()->GetEntities()[0]->GetAABB().GetMin());
}

TEST_F(ScaleToolTest, AScaleIsUndoneAndRedoneToTheByte)
{
    const GeomEntityPtr a = Make::Box(Vec2(), Vec2(2, 1));
    Make::Join<HingeEntity>(Vec2(0, 0), Vec2(0, 0));
    Make::AddPen(Vec2(0.5f, 0.2f));
    Select({a});
    const util::String before = Save();
    PullAndLetGo(Vec2(1, 0.5f), Vec2(1.7f, 0.9f));
    ExpectUndoAndRedo(before);
}

TEST_F(ScaleToolTest, OneThatChangesNothingLeavesNothingToUndo)
{
    const GeomEntityPtr box = Make::Box(Vec2(), Vec2(2, 1));
    PullAndLetGo(Vec2(1, 0.5f), Vec2(1, 0.5f));
    EXPECT_EQ("", NextUndo());
    EXPECT_TRUE(TheScene()->HasEntity(box));
}

TEST_F(ScaleToolTest, TakesTheLeftButtonOnARingOnly)
{
    Make::Box(Vec2(), Vec2(2, 1));
    EXPECT_FALSE(Begin(TheTool(), Vec2(1, 0.5f), input::MouseRight));
    EXPECT_FALSE(Begin(TheTool(), Vec2(0, 0)));
    EXPECT_FALSE(Begin(TheTool(), Vec2(5, 5)));
    EXPECT_FALSE(TheTool().IsInUse());
}

TEST_F(ScaleToolTest, TheSceneIsNotTouchedBeforeTheReleaseButItsDrawingIs)
{
    const GeomEntityPtr box = Make::Box(Vec2(), Vec2(2, 1));
    const util::String before = Save();
    Pull(Vec2(1, 0.5f), Vec2(3, 0.5f));
    FrameAt(Vec2(3, 0.5f));
    EXPECT_EQ(before, Save());
    ExpectNear(Vec2(3, 0.5f), TransformCoordinate(box->GetDrawTransform(), Vec2(1, 0.5f)));
    ExpectNear(Vec2(-1, -0.5f), TransformCoordinate(box->GetDrawTransform(), Vec2(-1, -0.5f)));
    End(TheTool(), Vec2(1, 0.5f), Vec2(3, 0.5f));
    ExpectNear(Vec2(4, 1), SizeOf(TheScene()->GetEntities()[0]));
    EXPECT_EQ(math::Mat3(), TheScene()->GetEntities()[0]->GetDrawTransform());
    EXPECT_EQ(math::Mat3(), box->GetDrawTransform()) << "an undo brings it back";
}

TEST_F(ScaleToolTest, WithAltTheSceneFollowsInEveryFrame)
{
    Make::Box(Vec2(), Vec2(2, 1));
    const test::HeldKeys held({SDLK_LALT});
    Pull(Vec2(1, 0.5f), Vec2(1, 0.5f));
    for (float x : {2.0f, 0.5f, 3.0f})
    {
        FrameAt(Vec2(x, 0.5f));
        ASSERT_EQ(1u, EntityCount());
        ExpectNear(Vec2(x + 1, 1), SizeOf(TheScene()->GetEntities()[0]), 1e-3f);
        EXPECT_EQ(math::Mat3(), TheScene()->GetEntities()[0]->GetDrawTransform());
    }
    End(TheTool(), Vec2(1, 0.5f), Vec2(3, 0.5f));
    Undoer::GetInstancePtr()->Undo();
    ExpectNear(Vec2(2, 1), SizeOf(TheScene()->GetEntities()[0]));
    EXPECT_EQ("", NextUndo()) << "one step for all of it";
}

// Deliberate: what Alt has applied is in the scene, and has its step of undo.
TEST_F(ScaleToolTest, AScaleThatIsBrokenOffKeepsWhatAltHasApplied)
{
    const GeomEntityPtr box = Make::Box(Vec2(), Vec2(2, 1));
    Select({box});
    const util::String before = Save();
    Pull(Vec2(1, 0.5f), Vec2(1, 0.5f));
    {
        const test::HeldKeys held({SDLK_LALT});
        FrameAt(Vec2(3, 0.5f));
    }
    FrameAt(Vec2(7, 0.5f));
    EXPECT_TRUE(Escape(TheTool()));
    ExpectNear(Vec2(4, 1), SizeOf(TheScene()->GetEntities()[0]));
    EXPECT_EQ(math::Mat3(), TheScene()->GetEntities()[0]->GetDrawTransform());
    EXPECT_EQ("UndoScale", NextUndo());
    ExpectUndoAndRedo(before);
}

TEST_F(ScaleToolTest, AScaleThatIsBrokenOffWithoutAltLeavesTheSceneAsItWas)
{
    const GeomEntityPtr box = Make::Box(Vec2(), Vec2(2, 1));
    const util::String before = Save();
    Pull(Vec2(1, 0.5f), Vec2(3, 0.5f));
    FrameAt(Vec2(3, 0.5f));
    EXPECT_TRUE(TheTool().Disband());
    EXPECT_EQ(before, Save());
    EXPECT_EQ(math::Mat3(), box->GetDrawTransform());
    EXPECT_EQ("", NextUndo());
    EXPECT_FALSE(TheTool().Disband());
    EXPECT_FALSE(End(TheTool(), Vec2(1, 0.5f), Vec2(3, 0.5f)));
}

// --- factors ---

TEST_F(ScaleToolTest, TheFactorIsThatOfTheDistancesFromTheCentre)
{
    Make::Box(Vec2(), Vec2(2, 1)); // the centre will be (-1, -0.5)
    const struct
    {
        Vec2 mouse, factor;
    } cases[] = {
        {Vec2(1, 0.5f), Vec2(1, 1)},        {Vec2(3, 0), Vec2(2, 0.5f)},
        {Vec2(-2, -1), Vec2(-0.5f, -0.5f)}, {Vec2(-1, 0.5f), Vec2(1, 1)}, // 0 is 1
        {Vec2(0, 0.5f), Vec2(0.5f, 1)},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.mouse);
        Pull(Vec2(1, 0.5f), c.mouse);
        ExpectNear(c.factor, Factor());
        TheTool().Disband();
    }
}

TEST_F(ScaleToolTest, WithShiftACornerKeepsTheProportion)
{
    Make::Box(Vec2(), Vec2(2, 1));
    const test::HeldKeys held({SDLK_LSHIFT});
    Pull(Vec2(1, 0.5f), Vec2(7, 0.5f)); // (4, 1)
    ExpectNear(Vec2(2, 2), Factor());
    Drag(TheTool(), Vec2(), Vec2(), Vec2(-9, 0.5f)); // (-4, 1)
    ExpectNear(Vec2(-2, 2), Factor());
    Drag(TheTool(), Vec2(), Vec2(), Vec2(-9, -1.5f)); // (-4, -1)
    ExpectNear(Vec2(-2, -2), Factor());
}

// Deliberate: an edge has no proportion to keep, and stands still.
TEST_F(ScaleToolTest, WithShiftAnEdgeStandsStill)
{
    const GeomEntityPtr box = Make::Box(Vec2(), Vec2(2, 1));
    const test::HeldKeys held({SDLK_LSHIFT});
    for (const Vec2& ring : {Vec2(1, 0), Vec2(-1, 0), Vec2(0, 0.5f), Vec2(0, -0.5f)})
    {
        Pull(ring, ring * 3);
        EXPECT_EQ(Vec2(1, 1), Factor());
        End(TheTool(), ring, ring * 3);
    }
    EXPECT_TRUE(TheScene()->HasEntity(box));
    EXPECT_EQ("", NextUndo());
}

TEST_F(ScaleToolTest, WithCtrlFactorsAreWholeMultiplesAndFractions)
{
    Make::Box(Vec2(), Vec2(2, 2)); // the centre will be (-1, -1)
    const struct
    {
        float factor, snapped;
    } cases[] = {
        {1.4f, 1},          {1.6f, 2},     {2.4f, 2},
        {2.6f, 3},          {1, 1},        {0.7f, 1},
        {0.6f, 0.5f},       {0.41f, 0.5f}, {0.39f, 1 / 3.0f},
        {0.3f, 1 / 3.0f},   {-1.6f, -2},   {-0.45f, -0.5f},
        {-0.3f, -1 / 3.0f}, {0, 1},
    };
    for (int key : {SDLK_LCTRL, SDLK_RCTRL, SDLK_LMETA})
    {
        const test::HeldKeys held({key});
        for (const auto& c : cases)
        {
            SCOPED_TRACE(testing::Message() << c.factor << " with " << key);
            Pull(Vec2(1, 1), Vec2(-1 + 2 * c.factor, 0.9f));
            ExpectNear(Vec2(c.snapped, 1), Factor());
            TheTool().Disband();
        }
    }
}

TEST_F(ScaleToolTest, WithCtrlAndShiftACornerSnapsInProportion)
{
    Make::Box(Vec2(), Vec2(2, 2));
    const test::HeldKeys held({SDLK_LCTRL, SDLK_LSHIFT});
    Pull(Vec2(1, 1), Vec2(9, 1)); // (5, 1): 2.24 each
    ExpectNear(Vec2(2, 2), Factor());
}

TEST_F(ScaleToolTest, MirrorsBeyondTheCentre)
{
    Make::Box(Vec2(), Vec2(2, 1));
    PullAndLetGo(Vec2(1, 0), Vec2(-3, 0));
    ASSERT_EQ(1u, EntityCount());
    ExpectNear(Vec2(-3, -0.5f), TheScene()->GetEntities()[0]->GetAABB().GetMin());
    ExpectNear(Vec2(2, 1), SizeOf(TheScene()->GetEntities()[0]));
}

TEST_F(ScaleToolTest, APinHoldsTheCentre)
{
    Make::Box(Vec2(), Vec2(4, 2));
    const HingePtr hinge = Make::Join<HingeEntity>(Vec2(), Vec2());
    PullAndLetGo(Vec2(2, 1), Vec2(4, 2));
    const EntityPtr scaled = At(Vec2(3, 1.5f));
    ASSERT_TRUE(scaled);
    ExpectNear(Vec2(-4, -2), scaled->GetAABB().GetMin());
    ExpectNear(Vec2(4, 2), scaled->GetAABB().GetMax());
    EXPECT_TRUE(hinge->IsAlive());
}

TEST_F(ScaleToolTest, ABoxThatIsTurnedAndPulledInOneAxisBecomesAPolygon)
{
    const GeomEntityPtr box = Make::Box(Vec2(), Vec2(2, 1));
    box->GetGeom()->SetWorldPose(math::Mat2D::Rotation(0.5f));
    box->GetBody()->OnGeomChange();
    Select({box});
    const float right = box->GetAABB().GetMax().x;
    PullAndLetGo(Vec2(right, 0), Vec2(right + 2, 0));
    ASSERT_EQ(1u, EntityCount());
    EXPECT_TRUE(dynamic_cast<PolyEntity*>(TheScene()->GetEntities()[0].get()));
    ExpectNear(Vec2(2 * right + 2, box->GetAABB().GetSize().y),
               SizeOf(TheScene()->GetEntities()[0]), 1e-3f);
}

TEST_F(ScaleToolTest, AHingeAloneIsScaledAboutItsMiddle)
{
    Make::Box(Vec2());
    const HingePtr hinge = Make::Join<HingeEntity>(Vec2(), Vec2());
    Select({hinge});
    ASSERT_EQ(0.2f, hinge->GetSize());
    PullAndLetGo(Vec2(0.1f, 0.1f), Vec2(0.3f, 0.3f));
    EXPECT_NEAR(0.6f, hinge->GetSize(), 1e-4f);
    ExpectNear(Vec2(), hinge->GetWorldPoint(0));
    EXPECT_TRUE(hinge->IsAlive());
}

TEST_F(ScaleToolTest, APenAloneIsScaledAboutItsMiddle)
{
    Make::Box(Vec2());
    const PenEntityPtr pen = Make::AddPen(Vec2());
    Select({pen});
    PullAndLetGo(Vec2(0.1f, 0.1f), Vec2(0.2f, 0.2f));
    EXPECT_NEAR(0.4f, pen->GetSize(), 1e-4f);
}

TEST_F(ScaleToolTest, WeldedBodiesStayWelded)
{
    const GeomEntityPtr a = Make::Box(Vec2(-0.5f, 0)), b = Make::Box(Vec2(0.5f, 0));
    Make::Join<FixJointEntity>(a, b);
    Select({a, b});
    PullAndLetGo(Vec2(1, 0.5f), Vec2(3, 1.5f));
    TheScene()->Update(0.01f);
    ASSERT_EQ(3u, EntityCount());
    EXPECT_EQ(At(Vec2(0, 1))->AsGeomEntity()->GetBody(), At(Vec2(2, 1))->AsGeomEntity()->GetBody());
}

TEST_F(ScaleToolTest, AFactorBeyondAllMeasureLeavesTheWorldFinite)
{
    const GeomEntityPtr box = Make::Box(Vec2(), Vec2(2, 1));
    for (float far : {1e10f, 1e25f, 1e37f})
    {
        const math::BoundingBox aabb = TheScene()->GetEntities()[0]->GetAABB();
        Select({TheScene()->GetEntities()[0]});
        if (!Begin(TheTool(), aabb.GetMax()))
            break;
        const input::DragEvent end(Vec2(), Vec2(), Vec2(far, -far), input::MouseLeft);
        TheTool().OnDragEnd(end);
        EXPECT_FALSE(TheTool().IsInUse());
        ASSERT_EQ(1u, EntityCount());
        EXPECT_TRUE(TheScene()->GetEntities()[0]->GetAABB().IsFinite());
        while (Undoer::GetInstancePtr()->GetNextUndo())
            Undoer::GetInstancePtr()->Undo();
    }
    EXPECT_TRUE(TheScene()->HasEntity(box));
}

TEST_F(ScaleToolTest, WhatLeavesTheSceneDuringTheDragIsNotSelectedWithTheRest)
{
    const GeomEntityPtr a = Make::Box(Vec2(-1, 0)), b = Make::Box(Vec2(1, 0));
    Select({a, b});
    Pull(Vec2(1.5f, 0.5f), Vec2(2, 1));
    FrameAt(Vec2(2, 1));
    TheScene()->RemoveEntity(a);
    EXPECT_NE(math::Mat3(), a->GetDrawTransform());
    End(TheTool(), Vec2(1.5f, 0.5f), Vec2(2, 1));
    EXPECT_EQ(1u, EntityCount());
    EXPECT_FALSE(TheScene()->IsSelected(a));
    EXPECT_EQ(1u, TheScene()->GetSelection()->GetEntities().size());
    EXPECT_EQ(math::Mat3(), a->GetDrawTransform());
}

TEST_F(ScaleToolTest, WhenAllHasLeftTheSceneTheReleaseDoesNothing)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Pull(Vec2(0.5f, 0.5f), Vec2(1, 1));
    TheScene()->RemoveEntity(box);
    FrameAt(Vec2(1, 1));
    End(TheTool(), Vec2(0.5f, 0.5f), Vec2(1, 1));
    EXPECT_EQ(0u, EntityCount());
    EXPECT_EQ("", NextUndo());
    TheTool().Update(0.01f);
    EXPECT_FALSE(TheTool().GetGroup());
}

TEST_F(ScaleToolTest, AnUndoDuringTheDragBreaksItOff)
{
    TheTools()->Select(TheTools()->Get<ScaleTool>());
    const SnapshotPtr snapshot = Snapshot::TakeSnapshot();
    const util::String empty = Save();
    Make::Box(Vec2());
    Undoer::GetInstancePtr()->AddUndo(snapshot, "UndoBox");
    const test::HeldKeys held({SDLK_LALT});
    Pull(Vec2(0.5f, 0.5f), Vec2(1, 1));
    FrameAt(Vec2(1, 1));
    Undoer::GetInstancePtr()->Undo();
    EXPECT_FALSE(TheTool().IsInUse());
    EXPECT_EQ(empty, Save());
    End(TheTool(), Vec2(0.5f, 0.5f), Vec2(1, 1));
    TheTool().Update(0.01f);
    EXPECT_EQ(empty, Save());
}

TEST_F(ScaleToolTest, TheCursorIsThatOfTheRing)
{
    Make::Box(Vec2(), Vec2(2, 1));
    FrameAt(Vec2(0, 0));
    EXPECT_EQ("", TheTool().GetCursorName());
    FrameAt(Vec2(1, 0.5f));
    EXPECT_EQ("arrow_north-east", TheTool().GetCursorName());
    FrameAt(Vec2(1, -0.5f));
    EXPECT_EQ("arrow_north-west", TheTool().GetCursorName());
    FrameAt(Vec2(0, 0.5f));
    EXPECT_EQ("arrow_north-south", TheTool().GetCursorName());
    FrameAt(Vec2(-1, 0));
    EXPECT_EQ("arrow_west-east", TheTool().GetCursorName());
    // In use it is that of the ring that was taken.
    Pull(Vec2(-1, 0), Vec2(5, 5));
    FrameAt(Vec2(5, 5));
    EXPECT_EQ("arrow_west-east", TheTool().GetCursorName());
    TheTool().Disband();
    FrameAt(Vec2(3, 3));
    EXPECT_EQ("", TheTool().GetCursorName());
}
}
}
