#include "StrokeFixture.h"

#include "../../Dice.h"

#include "app/entities/FixJointEntity.h"
#include "app/entities/SpringEntity.h"
#include "util/Timer.h"

namespace app
{
namespace
{
// The time stands still for its life, but for what the test adds.
struct FakeClock
{
    static inline unsigned s_now = 100000; // milliseconds

    FakeClock()
    {
        util::Timer::SetSource([](unsigned) { return s_now; });
    }
    ~FakeClock() { util::Timer::SetSource(nullptr); }
};

class SketchToolTest : public StrokeFixture
{
protected:
    static SketchTool& Sketch() { return *TheTools()->Get<SketchTool>(); }
    static bool Draw(const Vec2List& points) { return DragAlong(Sketch(), points); }
    /// All of the stroke but its end.
    static void DrawWithoutEnd(const Vec2List& points)
    {
        Begin(Sketch(), points.front());
        for (size_t i = 1; i < points.size(); ++i)
            Drag(Sketch(), points[0], points[i - 1], points[i]);
    }
    static bool IsWaiting() { return !Sketch().GetPreviousLine().GetPoints().empty(); }
    static const Vec2List& Points() { return Sketch().GetStroke().GetPoints(); }

    /// From (0, 0) to (4, 0).
    static Vec2List Zigzag(float length, float width)
    {
        return {Vec2(0, 0), Vec2(1, width), Vec2(2, 0), Vec2(length, width), Vec2(4, 0)};
    }
    static bool IsZigzagASpring(float length, float width)
    {
        DrawWithoutEnd(Zigzag(length, width));
        const bool isSpring = Sketch().IsSpring();
        Sketch().Disband();
        StartAnew();
        return isSpring;
    }
    /// Points on a circle around the origin, and the first one again.
    static Vec2List Ring(float radius, int points)
    {
        Vec2List ring;
        for (int i = 0; i <= points; ++i)
        {
            const float angle = math::TwoPIf * float(i % points) / float(points);
            ring.push_back(radius * Vec2(std::cos(angle), std::sin(angle)));
        }
        return ring;
    }
    /// Where the distance is exactly 0. Few ways out of the origin have such a place, as floats have gaps.
    static Vec2 FindPlaceOnEdge(const physics::Geom& geom)
    {
        for (const Vec2& end : Ring(4, 4096))
        {
            Vec2 inside, outside = end, between = 0.5f * end;
            while (between != inside && between != outside)
            {
                const float distance = geom.DistanceWorld(between);
                if (distance == 0)
                    return between;
                (distance < 0 ? inside : outside) = between;
                between = math::Lerp(inside, outside, 0.5f);
            }
        }
        return Vec2();
    }
    static float Above(float x) { return std::nextafter(x, std::numeric_limits<float>::max()); }
    static float Below(float x) { return std::nextafter(x, -std::numeric_limits<float>::max()); }
};

// Collecting.

TEST_F(SketchToolTest, TakesADragOfTheLeftButtonAlone)
{
    for (int button : {input::MouseMiddle, input::MouseRight})
    {
        EXPECT_FALSE(Begin(Sketch(), Vec2(), button));
        EXPECT_FALSE(Sketch().IsInUse());
    }
    EXPECT_TRUE(Begin(Sketch(), Vec2(1, 1)));
    EXPECT_TRUE(Sketch().IsInUse());
    EXPECT_FALSE(Drag(Sketch(), Vec2(), Vec2(), Vec2(2, 2), input::MouseRight));
    EXPECT_FALSE(End(Sketch(), Vec2(), Vec2(2, 2), input::MouseRight));
    EXPECT_EQ(1u, Points().size());
    EXPECT_TRUE(Drag(Sketch(), Vec2(), Vec2(), Vec2(2, 2)));
    EXPECT_TRUE(End(Sketch(), Vec2(), Vec2(2, 2)));
    EXPECT_FALSE(Sketch().IsInUse());
    EXPECT_TRUE(Points().empty());
}

TEST_F(SketchToolTest, LeavesEventsAloneThatSomebodyElseHasTaken)
{
    const input::DragEvent taken(Vec2(), Vec2(), Vec2(128, 0), input::MouseLeft);
    taken.SetHandled(true);
    Sketch().OnDragBegin(taken);
    EXPECT_FALSE(Sketch().IsInUse());
    Begin(Sketch(), Vec2());
    Sketch().OnDrag(taken);
    Sketch().OnDragEnd(taken);
    EXPECT_TRUE(Sketch().IsInUse());
    EXPECT_EQ((Vec2List{Vec2(0, 0)}), Points());
}

TEST_F(SketchToolTest, TakesNothingThatItHasNotBegun)
{
    EXPECT_FALSE(Drag(Sketch(), Vec2(), Vec2(), Vec2(2, 2)));
    EXPECT_FALSE(End(Sketch(), Vec2(), Vec2(2, 2)));
    EXPECT_TRUE(Points().empty());
}

TEST_F(SketchToolTest, LeavesOutPointsNearerThanTheMinimumDistance)
{
    const float min = App::GetInstancePtr()->GetMinimumPointDist();
    Begin(Sketch(), Vec2());
    EXPECT_TRUE(Drag(Sketch(), Vec2(), Vec2(), Vec2(Below(min), 0)));
    EXPECT_EQ(1u, Points().size());
    Drag(Sketch(), Vec2(), Vec2(), Vec2(min, 0));
    EXPECT_EQ(2u, Points().size());
    // It counts from the last point that was taken.
    Drag(Sketch(), Vec2(), Vec2(), Vec2(1.9f * min, 0));
    EXPECT_EQ(2u, Points().size());
    End(Sketch(), Vec2(), Vec2(1.95f * min, 0));
    EXPECT_EQ((Vec2List{Vec2(), Vec2(min, 0)}), Sketch().GetPreviousLine().GetPoints());
}

TEST_F(SketchToolTest, HasTheSameGrainOnTheScreenAtEveryZoom)
{
    for (float zoom : {1.5f, 32.0f, 128.0f, 3000.0f})
    {
        TheCamera()->SetZoom(zoom);
        Begin(Sketch(), Vec2());
        Vec2 last;
        for (int pixel = 1; pixel <= 1000; ++pixel)
        {
            const Vec2 pos(float(pixel) / zoom, 0);
            Drag(Sketch(), Vec2(), last, pos);
            last = pos;
        }
        // 0.2 cm are 6.77 pixels, and so every seventh counts.
        EXPECT_EQ(143u, Points().size()) << zoom;
        Sketch().Disband();
    }
}

TEST_F(SketchToolTest, DrawsAStraightEdgeWhileShiftIsHeld)
{
    Begin(Sketch(), Vec2(1, -1));
    Drag(Sketch(), Vec2(1, -1), Vec2(1, -1), Vec2(1, -2));
    {
        const test::HeldKeys shift({SDLK_LSHIFT});
        EXPECT_FALSE(Drag(Sketch(), Vec2(1, -1), Vec2(1, -2), Vec2(2, -2)));
        EXPECT_FALSE(Drag(Sketch(), Vec2(1, -1), Vec2(2, -2), Vec2(3, -4)));
        EXPECT_EQ(2u, Points().size());
        MoveMouse(Vec2(3, -4));
    }
    // Both Shift keys end it, where the mouse is.
    for (int key : {SDLK_LSHIFT, SDLK_RSHIFT})
    {
        Begin(Sketch(), Vec2(1, -2));
        ReleaseKey(Sketch(), key, true);
        EXPECT_EQ(1u, Points().size()) << "somebody else's";
        ReleaseKey(Sketch(), key);
        ReleaseKey(Sketch(), key);
        EXPECT_EQ((Vec2List{Vec2(1, -2), Vec2(3, -4)}), Points());
        Sketch().Disband();
        ReleaseKey(Sketch(), key);
        EXPECT_TRUE(Points().empty());
    }
}

TEST_F(SketchToolTest, DrawsALineOfTwoPointsWhenShiftIsHeldAllTheTime)
{
    const test::HeldKeys shift({SDLK_RSHIFT});
    Draw({Vec2(0, 0), Vec2(1, 3), Vec2(3, -3), Vec2(5, 1)});
    EXPECT_EQ((Vec2List{Vec2(0, 0), Vec2(5, 1)}), Sketch().GetPreviousLine().GetPoints());
}

TEST_F(SketchToolTest, ForgetsTheStrokeAndThePreviousLineOnEscape)
{
    Draw({Vec2(0, 0), Vec2(4, 0)});
    Begin(Sketch(), Vec2(2, 2));
    EXPECT_TRUE(PressEscape(Sketch()));
    EXPECT_FALSE(Sketch().IsInUse());
    EXPECT_TRUE(Points().empty());
    EXPECT_FALSE(IsWaiting());
    // What comes after belongs to nobody, and nothing is there to be crossed.
    EXPECT_FALSE(End(Sketch(), Vec2(2, 2), Vec2(2, -2)));
    AddBox(Vec2(2, 0));
    Draw({Vec2(2, 2), Vec2(2, -2)});
    EXPECT_EQ("UndoErase", NextUndo());
}

TEST_F(SketchToolTest, LeavesEscapeToOthersBetweenStrokes)
{
    Draw({Vec2(0, 0), Vec2(4, 0)});
    EXPECT_FALSE(PressEscape(Sketch()));
    EXPECT_FALSE(IsWaiting());
}

TEST_F(SketchToolTest, MakesNothingOfAStrokeOfOnePoint)
{
    AddBox(Vec2(0, 0));
    Draw({Vec2(0, 0), Vec2(0.01f, 0), Vec2(0, 0), Vec2(0, 0)});
    EXPECT_TRUE(IsNothingDone(1));
    EXPECT_FALSE(IsWaiting());
    EXPECT_FALSE(Sketch().IsInUse());
    Sketch().AnalyzeDrawing();
    EXPECT_TRUE(IsNothingDone(1));
}

TEST_F(SketchToolTest, TakesNoPlaceThatIsNoNumber)
{
    const float infinity = std::numeric_limits<float>::infinity();
    for (float bad : {infinity, -infinity, std::numeric_limits<float>::quiet_NaN()})
    {
        EXPECT_FALSE(Begin(Sketch(), Vec2(bad, 0)));
        EXPECT_FALSE(Sketch().IsInUse());
        Begin(Sketch(), Vec2());
        EXPECT_TRUE(Drag(Sketch(), Vec2(), Vec2(), Vec2(1, bad)));
        EXPECT_EQ(1u, Points().size());
        End(Sketch(), Vec2(), Vec2(bad, bad));
        EXPECT_TRUE(IsNothingDone(0));
        EXPECT_FALSE(IsWaiting());
    }
}

TEST_F(SketchToolTest, SurvivesAMinimumDistanceThatMakesNoSense)
{
    for (const char* distance : {"0", "-1", "1 / 0", "0 / 0"})
    {
        Run(util::String("App.minPointDist = ") + distance);
        Draw({Vec2(0, 0), Vec2(0, 0), Vec2(1, 0), Vec2(1, 1), Vec2(0, 1), Vec2(0, 0)});
        EXPECT_FALSE(Sketch().IsInUse());
    }
    Run("App.minPointDist = 0.2");
    for (const char* distance : {"0", "-1", "1 / 0", "0 / 0"})
    {
        Run(util::String("App.maxPointDist = ") + distance);
        Draw(Square(Vec2(20, 20), 2));
        EXPECT_FALSE(Sketch().IsInUse());
    }
    Run("App.maxPointDist = 0.5");
}

// Springs.

TEST_F(SketchToolTest, MakesASpringOfAZigzag)
{
    const BoxPtr a = AddBox(Vec2(0, 0)), b = AddBox(Vec2(4, 0));
    const util::String before = Save();
    Draw({Vec2(0, 0), Vec2(0.5f, 0.5f), Vec2(1, -0.5f), Vec2(2, 0.5f), Vec2(3, -0.5f), Vec2(4, 0)});
    const auto spring = Newest<SpringEntity>();
    ASSERT_TRUE(spring);
    EXPECT_EQ(1, spring->GetSize()) << "as wide as the stroke";
    EXPECT_EQ(a->GetGeom(), spring->GetGeom(0));
    EXPECT_EQ(b->GetGeom(), spring->GetGeom(1));
    EXPECT_EQ(Vec2(0, 0), spring->GetWorldPoint(0));
    EXPECT_EQ(Vec2(4, 0), spring->GetWorldPoint(1));
    EXPECT_EQ(4, spring->GetTargetLength());
    EXPECT_TRUE(spring->IsAlive());
    ExpectUndoable(before, "UndoSpring");
}

// Deliberate: it is a question by name and promise, and makes the spring all the same.
TEST_F(SketchToolTest, MakesTheSpringWhileItAsksForIt)
{
    AddBox(Vec2(0, 0));
    DrawWithoutEnd(Zigzag(3, 1));
    const SketchTool& sketch = Sketch();
    EXPECT_TRUE(sketch.IsSpring());
    EXPECT_TRUE(Newest<SpringEntity>());
    EXPECT_EQ("UndoSpring", NextUndo());
}

TEST_F(SketchToolTest, KnowsASpringByItsWidth)
{
    const float least = 0.1f * 4, most = 0.5f * 4;
    const struct
    {
        float width;
        bool isSpring;
    } cases[] = {
        {Below(least), false}, {least, true}, {Above(least), true}, {1, true},
        {Below(most), true},   {most, true},  {Above(most), false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.isSpring, IsZigzagASpring(3, c.width)) << c.width;
}

TEST_F(SketchToolTest, KnowsASpringByHowLittleItOvershoots)
{
    const float most = 1.05f * 4;
    EXPECT_TRUE(IsZigzagASpring(4, 1));
    EXPECT_TRUE(IsZigzagASpring(Below(most), 1));
    EXPECT_TRUE(IsZigzagASpring(most, 1));
    EXPECT_FALSE(IsZigzagASpring(Above(most), 1));
}

TEST_F(SketchToolTest, MakesNoSpringInMidAir)
{
    Draw(Zigzag(3, 1));
    EXPECT_TRUE(IsNothingDone(0));
}

TEST_F(SketchToolTest, KeepsThePreviousLineWithASpring)
{
    AddBox(Vec2(2, 0), Vec2(8, 8));
    Draw({Vec2(0, 3), Vec2(4, 3)});
    Draw(Zigzag(3, 1));
    EXPECT_EQ("UndoSpring", NextUndo());
    EXPECT_TRUE(IsWaiting());
}

TEST_F(SketchToolTest, NeedsFivePointsForASpring)
{
    DrawWithoutEnd({Vec2(0, 0), Vec2(1, 1), Vec2(3, -1), Vec2(4, 0)});
    EXPECT_FALSE(Sketch().IsSpring());
    Sketch().Disband();
    DrawWithoutEnd({Vec2(0, 0), Vec2(1, 1), Vec2(2, 0), Vec2(3, -1), Vec2(4, 0)});
    EXPECT_TRUE(Sketch().IsSpring());
}

TEST_F(SketchToolTest, MakesNoSpringOfAStrokeBackToWhereItBegan)
{
    Draw({Vec2(0, 0), Vec2(2, 0), Vec2(2, 2), Vec2(0, 2), Vec2(0, 0)});
    EXPECT_TRUE(Newest<PolyEntity>());
    // Flat, and back on itself.
    DrawWithoutEnd({Vec2(5, 0), Vec2(6, 0), Vec2(7, 0), Vec2(6, 0), Vec2(5, 0)});
    EXPECT_FALSE(Sketch().IsSpring());
    End(Sketch(), Vec2(5, 0), Vec2(5, 0));
    EXPECT_EQ(1u, EntityCount());
}

// Lines.

// Deliberate.
TEST_F(SketchToolTest, OnlyWaitsWithAStraightStrokeThatHitsNothing)
{
    AddBox(Vec2(0, 5));
    const util::String before = Save();
    Draw({Vec2(0, 0), Vec2(4, 0)});
    EXPECT_EQ(before, Save());
    EXPECT_TRUE(IsNothingDone(1));
    EXPECT_EQ((Vec2List{Vec2(0, 0), Vec2(4, 0)}), Sketch().GetPreviousLine().GetPoints());
}

TEST_F(SketchToolTest, KnowsALineByHowLittleItsPointsAreOff)
{
    const float most = 0.15f * 4;
    const struct
    {
        float off;
        bool isLine;
    } cases[] = {{0, true}, {Below(most), true}, {most, true}, {Above(most), false}, {1, false}};
    for (const auto& c : cases)
        for (int side : {1, -1})
        {
            DrawWithoutEnd({Vec2(0, 0), Vec2(2, float(side) * c.off), Vec2(4, 0)});
            EXPECT_EQ(c.isLine, Sketch().IsLine()) << c.off;
            Sketch().Disband();
        }
    // Beyond the ends as well.
    DrawWithoutEnd({Vec2(0, 0), Vec2(4 + most, 0), Vec2(4, 0)});
    EXPECT_TRUE(Sketch().IsLine());
    Sketch().Disband();
    DrawWithoutEnd({Vec2(0, 0), Vec2(4.75f, 0), Vec2(4, 0)});
    EXPECT_FALSE(Sketch().IsLine());
}

TEST_F(SketchToolTest, TakesAStrokeThatCrossesItselfForNoLine)
{
    // Back for a bit, and on: beside what was drawn, or across it.
    for (float y : {0.5f, -0.25f})
    {
        DrawWithoutEnd({Vec2(0, 0), Vec2(3, 0), Vec2(2, 0.25f), Vec2(3.5f, y), Vec2(8, 0)});
        EXPECT_EQ(y > 0, Sketch().IsLine()) << y;
        Sketch().Disband();
    }
}

TEST_F(SketchToolTest, ForgetsThePreviousLineWithAStrokeThatIsNone)
{
    Draw({Vec2(0, 0), Vec2(4, 0)});
    EXPECT_TRUE(IsWaiting());
    Draw({Vec2(0, 4), Vec2(2, 6), Vec2(4, 4)});
    EXPECT_FALSE(IsWaiting());
    EXPECT_TRUE(IsNothingDone(0));
}

TEST_F(SketchToolTest, MakesAStraightStrokeThePreviousLineOfTheNext)
{
    Draw({Vec2(0, 0), Vec2(4, 0)});
    Draw({Vec2(0, 1), Vec2(4, 1)});
    EXPECT_EQ((Vec2List{Vec2(0, 1), Vec2(4, 1)}), Sketch().GetPreviousLine().GetPoints());
}

// Welds.

TEST_F(SketchToolTest, WeldsAtTheCrossingOfTwoStraightStrokes)
{
    const BoxPtr a = AddBox(Vec2(0, 0), Vec2(2, 1)), b = AddBox(Vec2(1, 0), Vec2(2, 1));
    const util::String before = Save();
    Draw({Vec2(0.375f, 0.25f), Vec2(0.625f, -0.25f)});
    Draw({Vec2(0.625f, 0.25f), Vec2(0.375f, -0.25f)});
    const auto weld = Newest<FixJointEntity>();
    ASSERT_TRUE(weld);
    EXPECT_EQ(Vec2(0.5f, 0), weld->GetWorldPoint(0));
    EXPECT_EQ(Vec2(0.5f, 0), weld->GetWorldPoint(1));
    EXPECT_EQ(b->GetGeom(), weld->GetGeom(0));
    EXPECT_EQ(a->GetGeom(), weld->GetGeom(1));
    EXPECT_EQ(a->GetBody(), b->GetBody());
    const float length = std::sqrt(0.25f * 0.25f + 0.5f * 0.5f);
    EXPECT_FLOAT_EQ(0.7f * length, weld->GetSize());
    EXPECT_FALSE(IsWaiting());
    ExpectUndoable(before, "UndoFixate");
}

TEST_F(SketchToolTest, SizesAWeldByBothStrokes)
{
    AddBox(Vec2(0, 0), Vec2(8, 8));
    Draw({Vec2(-0.5f, 0), Vec2(0.5f, 0)});
    Draw({Vec2(0, -2), Vec2(0, 2)});
    ASSERT_TRUE(Newest<FixJointEntity>());
    EXPECT_FLOAT_EQ(0.7f * 2, Newest<FixJointEntity>()->GetSize());
}

TEST_F(SketchToolTest, WeldsRatherThanErases)
{
    const BoxPtr box = AddBox(Vec2(0, 0));
    Draw({Vec2(-0.25f, 0), Vec2(0.25f, 0)});
    Draw({Vec2(0, -2), Vec2(0, 2)}); // cuts the box too
    EXPECT_TRUE(IsThere(box));
    EXPECT_EQ("UndoFixate", NextUndo());
}

TEST_F(SketchToolTest, ErasesWithAStrokeThatCrossesThePreviousLineTwice)
{
    Draw({Vec2(0, 0), Vec2(4, 0)});
    const BoxPtr box = AddBox(Vec2(6, -0.25f), Vec2(0.5f, 0.5f));
    Draw({Vec2(0, -0.25f), Vec2(1, 0.25f), Vec2(3, 0.25f), Vec2(4, -0.25f), Vec2(7, -0.25f)});
    EXPECT_FALSE(IsThere(box));
    EXPECT_EQ(0u, EntityCount());
    EXPECT_EQ("UndoErase", NextUndo());
    EXPECT_FALSE(IsWaiting());
}

TEST_F(SketchToolTest, KnowsOneCrossingFromTwoByTheWidthOfAPixel)
{
    const float pixel = App::GetInstancePtr()->GetPixelSize();
    for (float gap : {0.75f, 1.5f, 10.0f}) // pixels
    {
        AddBox(Vec2(2, 0), Vec2(8, 8));
        Draw({Vec2(0, 0), Vec2(4, 0)});
        // Up, and down again.
        const float height = 0.25f, half = gap * pixel / 2;
        Draw({Vec2(1, -height), Vec2(2, half / (1 - half) * height), Vec2(3, -height)});
        EXPECT_EQ(gap < 1, bool(Newest<FixJointEntity>())) << gap;
        Sketch().Disband();
        StartAnew();
    }
}

TEST_F(SketchToolTest, WeldsNothingInMidAir)
{
    Draw({Vec2(-1, 0), Vec2(1, 0)});
    Draw({Vec2(0, -1), Vec2(0, 1)});
    EXPECT_TRUE(IsNothingDone(0));
    EXPECT_FALSE(IsWaiting());
}

TEST_F(SketchToolTest, TakesACrossingAtAPointOfBothStrokesForOne)
{
    AddBox(Vec2(0, 0), Vec2(8, 8));
    Draw({Vec2(-1, 0), Vec2(0, 0), Vec2(1, 0)});
    Draw({Vec2(0, -1), Vec2(0, 0), Vec2(0, 1)});
    ASSERT_TRUE(Newest<FixJointEntity>());
    EXPECT_EQ(Vec2(0, 0), Newest<FixJointEntity>()->GetWorldPoint(0));
}

TEST_F(SketchToolTest, WaitsTwoSecondsForTheSecondStroke)
{
    const FakeClock clock;
    AddBox(Vec2(0, 0), Vec2(8, 8));
    Draw({Vec2(-1, 0), Vec2(1, 0)});
    FakeClock::s_now += 2000;
    Sketch().Update(0.1f);
    EXPECT_TRUE(IsWaiting());
    FakeClock::s_now += 1;
    Sketch().Update(0.1f);
    EXPECT_FALSE(IsWaiting());
    Draw({Vec2(0, -1), Vec2(0, 1)});
    EXPECT_TRUE(IsNothingDone(1));
    EXPECT_TRUE(IsWaiting());
    // Just in time.
    FakeClock::s_now += 2000;
    Sketch().Update(0.1f);
    Draw({Vec2(-1, 0), Vec2(1, 0)});
    EXPECT_EQ("UndoFixate", NextUndo());
}

TEST_F(SketchToolTest, LogsAWeldThatCanNotBeMade)
{
    AddBox(Vec2(0, 0), Vec2(8, 8));
    const EntityPtr bad = QUIB_NEW Unsaveable<std::runtime_error>(std::runtime_error("no luck"));
    TheScene()->AddEntity(bad);
    Draw({Vec2(-1, 0), Vec2(1, 0)});
    const test::LogCapture info(logging::LogInfo), severe(1 | 6);
    Draw({Vec2(0, -1), Vec2(0, 1)});
    EXPECT_TRUE(info.Has("Error: no luck")) << info.Text();
    EXPECT_FALSE(severe.Has("Error: no luck"));
    EXPECT_TRUE(IsNothingDone(2));
    // It goes on as a line.
    EXPECT_TRUE(IsWaiting());
    TheScene()->RemoveEntity(bad);
}

TEST_F(SketchToolTest, LogsAWeldThatFailsForReasonsUnknown)
{
    AddBox(Vec2(0, 0), Vec2(8, 8));
    const EntityPtr bad = QUIB_NEW Unsaveable<int>(7);
    TheScene()->AddEntity(bad);
    Draw({Vec2(-1, 0), Vec2(1, 0)});
    const test::LogCapture info(logging::LogInfo);
    Draw({Vec2(0, -1), Vec2(0, 1)});
    EXPECT_TRUE(info.Has("Fail")) << info.Text();
    EXPECT_TRUE(IsNothingDone(2));
    TheScene()->RemoveEntity(bad);
}

// Erasing.

TEST_F(SketchToolTest, ErasesWhatASlashCuts)
{
    const BoxPtr a = AddBox(Vec2(2, 0)), b = AddBox(Vec2(4, 0)), c = AddBox(Vec2(6, 3));
    const EntityPtr plane = AddPlane(0.25f);
    const util::String before = Save();
    // It ends below the ground.
    Draw({Vec2(0, 0.3f), Vec2(7, -0.3f)});
    EXPECT_FALSE(IsThere(a));
    EXPECT_FALSE(IsThere(b));
    EXPECT_TRUE(IsThere(c));
    EXPECT_TRUE(IsThere(plane));
    EXPECT_FALSE(IsWaiting());
    ExpectUndoable(before, "UndoErase");
}

TEST_F(SketchToolTest, ErasesAPlaneThatIsCutAlone)
{
    const EntityPtr plane = AddPlane(0);
    Draw({Vec2(0, 1), Vec2(1, -1)});
    EXPECT_FALSE(IsThere(plane));
    EXPECT_EQ("UndoErase", NextUndo());
}

// Deliberate, however much it looks as if one of them at least should go.
TEST_F(SketchToolTest, ErasesNeitherOfTwoPlanes)
{
    AddPlane(0);
    AddPlane(-0.5f);
    Draw({Vec2(0, 1), Vec2(1, -1)});
    EXPECT_TRUE(IsNothingDone(2));
    EXPECT_TRUE(IsWaiting());
}

// Deliberate.
TEST_F(SketchToolTest, ErasesTheWholeSelectionWithOneOfIt)
{
    const BoxPtr cut = AddBox(Vec2(2, 0)), far = AddBox(Vec2(4, 40)), other = AddBox(Vec2(4, 60));
    const EntityPtr plane = AddPlane(-30);
    TheScene()->SetSelection(GroupOf({cut, far, plane}));
    const util::String before = Save();
    Draw({Vec2(0, 0), Vec2(4, 0)});
    EXPECT_FALSE(IsThere(cut));
    EXPECT_FALSE(IsThere(far));
    EXPECT_TRUE(IsThere(other));
    EXPECT_TRUE(IsThere(plane)) << "planes go alone";
    ExpectUndoable(before, "UndoErase");
}

TEST_F(SketchToolTest, LeavesASelectionAloneThatIsNotCut)
{
    const BoxPtr cut = AddBox(Vec2(2, 0)), selected = AddBox(Vec2(4, 40));
    TheScene()->SetSelection(GroupOf({selected}));
    Draw({Vec2(0, 0), Vec2(4, 0)});
    EXPECT_FALSE(IsThere(cut));
    EXPECT_TRUE(IsThere(selected));
}

TEST_F(SketchToolTest, ErasesTheOthersWhenOneFails)
{
    TheScene()->AddEntity(QUIB_NEW Brittle);
    const BoxPtr box = AddBox(Vec2(2, 0));
    const test::LogCapture info(logging::LogInfo), severe(1 | 6);
    Draw({Vec2(0, 0), Vec2(4, 0)});
    EXPECT_FALSE(IsThere(box));
    EXPECT_EQ(1u, EntityCount());
    EXPECT_EQ(1u, info.Count("SketchTool::TestEraseLine, ErasedBy: snap")) << info.Text();
    EXPECT_FALSE(severe.Has("TestEraseLine"));
}

// Polygons.

TEST_F(SketchToolTest, MakesAPolygonOfAClosedStroke)
{
    const util::String before = Save();
    Draw({Vec2(0, 0), Vec2(4, 0), Vec2(4, 4), Vec2(0, 4), Vec2(0, 0.5f)});
    const auto polygon = Newest<PolyEntity>();
    ASSERT_TRUE(polygon);
    EXPECT_EQ(1u, EntityCount());
    EXPECT_NEAR(16, polygon->GetGeom()->Area(), 0.01f);
    EXPECT_TRUE(polygon->IsAlive());
    // So fine that the collisions see all of its sides.
    const float most = App::GetInstancePtr()->GetMaximumPointDist();
    for (const auto& side : static_cast<physics::Polygon&>(*polygon->GetGeom()).GetLines())
        EXPECT_LE(side.Length(), most * 1.0001f);
    ExpectUndoable(before, "UndoPolygon");
}

TEST_F(SketchToolTest, MakesAPolygonOfAStrokeThatEndsWhereItBegan)
{
    Draw({Vec2(0, 0), Vec2(4, 0), Vec2(0, 4), Vec2(0, 0)});
    ASSERT_TRUE(Newest<PolyEntity>());
    EXPECT_NEAR(8, Newest<PolyEntity>()->GetGeom()->Area(), 0.01f);
}

TEST_F(SketchToolTest, ClosesAStrokeWhoseEndsComeWithinAnEighthOfItsLength)
{
    Draw({Vec2(0, 0), Vec2(7, 0), Vec2(7, 2), Vec2(0, 2)});
    EXPECT_TRUE(IsNothingDone(0)) << "just an eighth";
    EXPECT_FALSE(IsWaiting());
    const float gap = Below(2);
    Draw({Vec2(0, 0), Vec2(7, 0), Vec2(7, gap), Vec2(0, gap)});
    EXPECT_TRUE(Newest<PolyEntity>());
}

// The loop is 10 long without its last side, at the crossing (2, 0).
TEST_F(SketchToolTest, MakesNoPolygonOfALoopShorterThanHalfTheStroke)
{
    const auto areaWithTail = [](float tail) -> float
    {
        Draw({Vec2(-tail, 0), Vec2(4, 0), Vec2(4, 4), Vec2(2, 4), Vec2(2, -1)});
        const auto polygon = Newest<PolyEntity>();
        const float area = polygon ? polygon->GetGeom()->Area() : 0;
        StartAnew();
        return area;
    };
    EXPECT_NEAR(8, areaWithTail(1), 0.01f);
    EXPECT_NEAR(8, areaWithTail(5), 0.01f) << "just half";
    EXPECT_EQ(0, areaWithTail(5.00001f));
    EXPECT_EQ(0, areaWithTail(9));
}

TEST_F(SketchToolTest, MakesNothingOfAFigureOfEightWithTwoEqualLoops)
{
    Draw({Vec2(0, 0), Vec2(2, 2), Vec2(4, 0), Vec2(2, -2), Vec2(0, 0), Vec2(-2, 2), Vec2(-4, 0),
          Vec2(-2, -2), Vec2(-0.25f, -0.25f), Vec2(0.5f, 0.5f)});
    EXPECT_TRUE(IsNothingDone(0));
}

TEST_F(SketchToolTest, LogsAShapeThatCrossesItselfWhereItCloses)
{
    const test::LogCapture info(logging::LogInfo), severe(1 | 6);
    // The ends are near each other, on two sides of what was drawn between.
    Draw({Vec2(0, 0.3f), Vec2(1, 0.3f), Vec2(1, 2), Vec2(-1, 2), Vec2(-1, 0), Vec2(2, 0),
          Vec2(2, -1), Vec2(0, -0.3f)});
    EXPECT_TRUE(IsNothingDone(0));
    ASSERT_FALSE(info.Lines().empty());
    EXPECT_TRUE(info.Has("Bad polygon")) << info.Text();
    EXPECT_FALSE(severe.Has("Bad polygon"));
}

TEST_F(SketchToolTest, MakesNothingOfAnyOtherStroke)
{
    AddBox(Vec2(2, 2));
    const util::String before = Save();
    Draw({Vec2(0, 0), Vec2(4, 0), Vec2(4, 4)});
    EXPECT_EQ(before, Save());
    EXPECT_TRUE(IsNothingDone(1));
    EXPECT_FALSE(IsWaiting());
}

TEST_F(SketchToolTest, LogsAPolygonThatCanNotBeMade)
{
    const EntityPtr bad = QUIB_NEW Unsaveable<std::runtime_error>(std::runtime_error("no luck"));
    TheScene()->AddEntity(bad);
    const test::LogCapture warning(logging::LogWarning), other(8 | 16);
    Draw(Square(Vec2(2, 2), 1));
    EXPECT_TRUE(warning.Has("Error while creating polygon: no luck")) << warning.Text();
    EXPECT_FALSE(other.Has("Error while creating polygon"));
    EXPECT_TRUE(IsNothingDone(1));
    EXPECT_FALSE(Sketch().IsInUse());
    TheScene()->RemoveEntity(bad);
}

// Selecting.

TEST_F(SketchToolTest, SelectsWhatAClosedStrokeGoesAround)
{
    const BoxPtr a = AddBox(Vec2(0, 0)), b = AddBox(Vec2(2, 0)), cut = AddBox(Vec2(4, 0));
    TheScene()->SetSelection(GroupOf({cut}));
    Draw(Rectangle(Vec2(-1, -1), Vec2(4, 1)));
    EXPECT_EQ((Entities{a, b}), TheScene()->GetSelection()->GetSorted());
    EXPECT_TRUE(IsNothingDone(3));
}

TEST_F(SketchToolTest, SelectsAnewWhateverKeyIsHeld)
{
    const BoxPtr a = AddBox(Vec2(0, 0)), b = AddBox(Vec2(4, 0));
    TheScene()->SetSelection(GroupOf({b}));
    const test::HeldKeys ctrl({SDLK_LCTRL});
    Draw(Square(Vec2(0, 0), 1));
    EXPECT_EQ((Entities{a}), TheScene()->GetSelection()->GetSorted());
}

TEST_F(SketchToolTest, SelectsAHingeOfTwoBodies)
{
    AddBox(Vec2(0, 0), Vec2(4, 4));
    AddBox(Vec2(1, 0), Vec2(4, 4));
    const auto hinge = Attach<HingeEntity>(0.25f, Vec2(0.5f, 0), Vec2(0.5f, 0));
    Draw(Square(Vec2(0.5f, 0), 0.5f));
    EXPECT_EQ((Entities{hinge}), TheScene()->GetSelection()->GetSorted());
    EXPECT_TRUE(IsNothingDone(3));
}

TEST_F(SketchToolTest, SelectsPinnedJointsWithWhatElseIsThere)
{
    AddBox(Vec2(0, 0), Vec2(8, 8));
    const auto hinge = Attach<HingeEntity>(0.25f, Vec2(0, 0), Vec2(0, 0));
    const BoxPtr box = AddBox(Vec2(1, 0), Vec2(0.5f, 0.5f));
    Draw(Square(Vec2(0.5f, 0), 1.5f));
    EXPECT_EQ((Entities{hinge, box}), TheScene()->GetSelection()->GetSorted());
    EXPECT_EQ(WorldGeom(), hinge->GetGeom(1)) << "not taken over";
}

// Adopting.

TEST_F(SketchToolTest, HandsJointsThatArePinnedToTheWorldOverToANewPolygon)
{
    const BoxPtr box = AddBox(Vec2(0, 0), Vec2(2, 2));
    const auto hinge = Attach<HingeEntity>(0.25f, Vec2(0.5f, 0), Vec2(0.5f, 0));
    ASSERT_EQ(WorldGeom(), hinge->GetGeom(1));
    const util::String before = Save();
    Draw(Square(Vec2(0.5f, 0), 0.4f));
    ASSERT_EQ(3u, EntityCount());
    const auto polygon = util::DynamicCast<PolyEntity>(TheScene()->GetEntities()[1]);
    ASSERT_TRUE(polygon);
    EXPECT_EQ(hinge, Newest<HingeEntity>()) << "above the new body";
    EXPECT_EQ(box->GetGeom(), hinge->GetGeom(0));
    EXPECT_EQ(polygon->GetGeom(), hinge->GetGeom(1));
    EXPECT_NEAR(0.5f, hinge->GetWorldPoint(1).x, 1e-5f);
    EXPECT_NEAR(0, hinge->GetWorldPoint(1).y, 1e-5f);
    TheScene()->Update(0.01f);
    EXPECT_TRUE(IsThere(hinge));
    EXPECT_TRUE(TheScene()->GetSelection()->IsEmpty());
    ExpectUndoable(before, "UndoPolygon");
    EXPECT_EQ(polygon->GetGeom(), hinge->GetGeom(1));
    Undoer::GetInstancePtr()->Undo();
    EXPECT_EQ(WorldGeom(), hinge->GetGeom(1));
}

// Deliberate: it is taken up whole.
TEST_F(SketchToolTest, HandsBothEndsOfAJointOverThoughOneIsOutside)
{
    const util::SharedPtr<HingeEntity> hinge = QUIB_NEW HingeEntity(0.25f);
    hinge->AttachToWorld(WorldGeom(), Vec2(0, 0), WorldGeom(), Vec2(5, 0));
    TheScene()->AddEntity(hinge);
    const util::String before = Save();
    Draw(Square(Vec2(0, 0), 1));
    const auto polygon = util::DynamicCast<PolyEntity>(TheScene()->GetEntities()[0]);
    ASSERT_TRUE(polygon);
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(polygon->GetGeom(), hinge->GetGeom(i));
        EXPECT_NEAR(i * 5, hinge->GetWorldPoint(i).x, 1e-5f);
    }
    ExpectUndoable(before, "UndoPolygon");
}

TEST_F(SketchToolTest, AdoptsASpringThatEndsInsideOnTheWorld)
{
    const BoxPtr box = AddBox(Vec2(5, 0));
    const auto spring = Attach<SpringEntity>(0.25f, Vec2(5, 0), Vec2(0, 0));
    Draw(Square(Vec2(0, 0), 1));
    ASSERT_EQ(3u, EntityCount());
    EXPECT_EQ(box->GetGeom(), spring->GetGeom(0));
    EXPECT_TRUE(dynamic_cast<physics::Polygon*>(spring->GetGeom(1).get()));
    EXPECT_EQ(5, spring->GetTargetLength());
    TheScene()->Update(0.01f);
    EXPECT_TRUE(IsThere(spring));
}

TEST_F(SketchToolTest, AdoptsAWeldToTheWorld)
{
    const BoxPtr box = AddBox(Vec2(0, 0), Vec2(4, 4));
    const auto weld = Attach<FixJointEntity>(0.25f, Vec2(0, 0), Vec2(0, 0));
    ASSERT_EQ(Sim()->GetWorldBody(), box->GetBody());
    const util::String before = Save();
    Draw(Square(Vec2(0, 0), 1));
    ASSERT_EQ(3u, EntityCount());
    const auto polygon = util::DynamicCast<PolyEntity>(TheScene()->GetEntities()[1]);
    ASSERT_TRUE(polygon);
    EXPECT_EQ(polygon->GetGeom(), weld->GetGeom(1));
    EXPECT_EQ(polygon->GetBody(), box->GetBody());
    EXPECT_NE(Sim()->GetWorldBody(), box->GetBody()) << "free to fall";
    TheScene()->Update(0.01f);
    EXPECT_TRUE(IsThere(weld));
    ExpectUndoable(before, "UndoPolygon");
}

TEST_F(SketchToolTest, LeavesAJointAloneThatIsPinnedOutside)
{
    AddBox(Vec2(5, 0));
    const auto hinge = Attach<HingeEntity>(0.25f, Vec2(5, 0), Vec2(5, 0));
    Draw(Square(Vec2(0, 0), 1));
    EXPECT_TRUE(Newest<PolyEntity>());
    EXPECT_EQ(WorldGeom(), hinge->GetGeom(1));
}

TEST_F(SketchToolTest, LeavesAnEndExactlyOnTheOutlineAlone)
{
    const Vec2List stroke = Ring(1, 32);
    Draw(stroke);
    const physics::GeomPtr outline = Newest<PolyEntity>()->GetGeom();
    const Vec2 edge = FindPlaceOnEdge(*outline);
    ASSERT_EQ(0, outline->DistanceWorld(edge));
    StartAnew();
    const auto hingeFrom = [&edge](const Vec2& start)
    {
        const util::SharedPtr<HingeEntity> hinge = QUIB_NEW HingeEntity(0.25f);
        hinge->AttachToWorld(WorldGeom(), start, WorldGeom(), edge);
        TheScene()->AddEntity(hinge);
        return hinge;
    };
    // It is no reason to take the joint over.
    const auto outside = hingeFrom(Vec2(5, 0));
    Draw(stroke);
    EXPECT_TRUE(Newest<PolyEntity>()) << "above the hinge, which is none of its own";
    EXPECT_EQ(WorldGeom(), outside->GetGeom(0));
    // And one that is taken over keeps it.
    StartAnew();
    const auto inside = hingeFrom(Vec2(0, 0));
    Draw(stroke);
    EXPECT_EQ(inside, Newest<HingeEntity>());
    EXPECT_NE(WorldGeom(), inside->GetGeom(0));
    EXPECT_EQ(WorldGeom(), inside->GetGeom(1));
}

TEST_F(SketchToolTest, MakesNoHingeWhereAJointLiesOnTheBody)
{
    AddBox(Vec2(0, 0), Vec2(8, 8));
    AddBox(Vec2(10, 0), Vec2(2, 2));
    Attach<SpringEntity>(0.25f, Vec2(-3, 0), Vec2(10, 0));
    Draw(Square(Vec2(0, 0), 0.5f));
    EXPECT_FALSE(Newest<HingeEntity>());
    EXPECT_EQ("UndoPolygon", NextUndo());
}

TEST_F(SketchToolTest, MakesAPolygonOfARoundStrokeOnABodyThatTakesOverAJoint)
{
    AddBox(Vec2(0, 0), Vec2(8, 8));
    Attach<HingeEntity>(0.25f, Vec2(0, 0), Vec2(0, 0));
    Draw(Square(Vec2(0, 0), 0.5f));
    EXPECT_EQ("UndoPolygon", NextUndo());
}

TEST_F(SketchToolTest, SurvivesJointsWhoseBodyHasJustGone)
{
    const BoxPtr box = AddBox(Vec2(0, 0), Vec2(4, 4));
    Attach<HingeEntity>(0.25f, Vec2(0, 0), Vec2(0, 0));
    Attach<FixJointEntity>(0.25f, Vec2(0.25f, 0), Vec2(0.25f, 0));
    Attach<SpringEntity>(0.25f, Vec2(0.5f, 0.5f), Vec2(9, 0));
    // No frame comes between.
    TheScene()->RemoveEntity(box);
    Draw(Square(Vec2(0, 0), 1));
    EXPECT_FALSE(Sketch().IsInUse());
    TheScene()->Update(0.01f);
    for (int i = 0; i < 3; ++i)
        Undoer::GetInstancePtr()->Undo();
    TheScene()->Update(0.01f);
    for (int i = 0; i < 3; ++i)
        Undoer::GetInstancePtr()->Redo();
    TheScene()->Update(0.01f);
    Draw({Vec2(-2, 0), Vec2(2, 0)});
    EXPECT_FALSE(Sketch().IsInUse());
}

// Hinges.

TEST_F(SketchToolTest, MakesAHingeOfASmallRoundStrokeOnABody)
{
    const BoxPtr box = AddBox(Vec2(0, 0), Vec2(4, 4));
    const util::String before = Save();
    Draw(Square(Vec2(1, 0.5f), 0.5f));
    const auto hinge = Newest<HingeEntity>();
    ASSERT_TRUE(hinge);
    EXPECT_EQ(box->GetGeom(), hinge->GetGeom(0));
    EXPECT_EQ(WorldGeom(), hinge->GetGeom(1));
    EXPECT_NEAR(1, hinge->GetWorldPoint(0).x, 1e-5f);
    EXPECT_NEAR(0.5f, hinge->GetWorldPoint(0).y, 1e-5f);
    EXPECT_NEAR(2 * std::sqrt(1 / math::PIf), hinge->GetSize(), 1e-5f);
    ExpectUndoable(before, "UndoHinge");
}

TEST_F(SketchToolTest, MakesNoHingeOnTheBackgroundOrThePlane)
{
    AddPlane(0);
    for (float y : {2.0f, -2.0f})
    {
        Draw(Square(Vec2(0, y), 0.5f));
        EXPECT_TRUE(Newest<PolyEntity>()) << y;
    }
}

TEST_F(SketchToolTest, MakesAHingeUpToHalfTheAreaOfTheBody)
{
    AddBox(Vec2(0, 0), Vec2(4, 1));
    // 2 of 4.
    Draw(Rectangle(Vec2(-1, -0.5f), Vec2(1, 0.5f)));
    EXPECT_TRUE(Newest<HingeEntity>()) << "just half";
    Undoer::GetInstancePtr()->Undo();
    Draw(Rectangle(Vec2(-1, -0.5f), Vec2(1, 0.50001f)));
    EXPECT_TRUE(Newest<PolyEntity>());
    EXPECT_EQ(2u, EntityCount());
}

// Of a rectangle the middles of the long sides come too near first.
TEST_F(SketchToolTest, MakesAHingeOfWhatIsRoundEnough)
{
    AddBox(Vec2(0, 0), Vec2(32, 32));
    const auto make = [](float x)
    {
        return util::SharedPtr<physics::Polygon>(QUIB_NEW physics::Polygon(
            Vec2List{Vec2(-x, -1), Vec2(0, -1), Vec2(x, -1), Vec2(x, 1), Vec2(0, 1), Vec2(-x, 1)}));
    };
    const auto bound = [&make](float x) { return std::sqrt(make(x)->Area() / math::PIf) / 1.8f; };
    float in = 2, out = 3;
    while (Above(in) < out)
    {
        const float middle = (in + out) / 2;
        (bound(middle) <= 1 ? in : out) = middle;
    }
    ASSERT_EQ(1, bound(in));
    EXPECT_TRUE(Sketch().IsHinge(make(in))) << "just as near";
    EXPECT_EQ("UndoHinge", NextUndo());
    Undoer::GetInstancePtr()->Undo();
    EXPECT_FALSE(Sketch().IsHinge(make(out)));
    EXPECT_TRUE(IsNothingDone(1));
}

// Of a star the tips are too far out first.
TEST_F(SketchToolTest, MakesNoHingeOfAStar)
{
    AddBox(Vec2(0, 0), Vec2(32, 32));
    const auto star = [](float tip)
    {
        Vec2List points;
        for (int i = 0; i < 32; ++i)
        {
            const float a = math::TwoPIf * float(i) / 32, r = i % 8 == 0 ? tip : 1;
            points.push_back(Vec2(r * std::cos(a), r * std::sin(a)));
        }
        return util::SharedPtr<physics::Polygon>(QUIB_NEW physics::Polygon(points));
    };
    const auto ratio = [&star](float tip)
    { return star(tip)->GetVertices()[0].Length() / std::sqrt(star(tip)->Area() / math::PIf); };
    float in = 1, out = 4;
    for (int i = 0; i < 15; ++i)
        (ratio((in + out) / 2) <= 1.8f ? in : out) = (in + out) / 2;
    EXPECT_GT(out, 1.8f);
    EXPECT_TRUE(Sketch().IsHinge(star(in)));
    EXPECT_FALSE(Sketch().IsHinge(star(out)));
}

TEST_F(SketchToolTest, MakesAPolygonWhenTheHingeFails)
{
    AddBox(Vec2(0, 0), Vec2(8, 8));
    const EntityPtr bad = QUIB_NEW Unsaveable<std::runtime_error>(std::runtime_error("no luck"));
    TheScene()->AddEntity(bad);
    const test::LogCapture warning(logging::LogWarning), other(8 | 16);
    Draw(Square(Vec2(0, 0), 0.5f));
    EXPECT_TRUE(warning.Has("Error while creating hinge: no luck")) << warning.Text();
    EXPECT_TRUE(warning.Has("Error while creating polygon: no luck")) << "it was tried";
    EXPECT_FALSE(other.Has("Error while creating"));
    EXPECT_TRUE(IsNothingDone(2));
    TheScene()->RemoveEntity(bad);
}

// What happens meanwhile.

TEST_F(SketchToolTest, ForgetsEverythingWhenTheSceneIsCleared)
{
    Draw({Vec2(0, 0), Vec2(4, 0)});
    DrawWithoutEnd({Vec2(0, 1), Vec2(1, 2)});
    TheScene()->ClearScene();
    EXPECT_FALSE(Sketch().IsInUse());
    EXPECT_TRUE(Points().empty());
    EXPECT_FALSE(IsWaiting());
    EXPECT_FALSE(Drag(Sketch(), Vec2(0, 1), Vec2(1, 2), Vec2(2, 2)));
    EXPECT_FALSE(End(Sketch(), Vec2(0, 1), Vec2(2, 2)));
}

TEST_F(SketchToolTest, GoesOnWhileTheUserZooms)
{
    Begin(Sketch(), Vec2(0, 0));
    Drag(Sketch(), Vec2(0, 0), Vec2(0, 0), Vec2(4, 0));
    TheCamera()->SetZoom(16);
    TheCamera()->SetPan(Vec2(32, -24));
    Drag(Sketch(), Vec2(0, 0), Vec2(4, 0), Vec2(4, 4));
    Drag(Sketch(), Vec2(0, 0), Vec2(4, 4), Vec2(0, 4));
    End(Sketch(), Vec2(0, 0), Vec2(0, 0));
    ASSERT_TRUE(Newest<PolyEntity>());
    EXPECT_NEAR(16, Newest<PolyEntity>()->GetGeom()->Area(), 0.01f);
}

TEST_F(SketchToolTest, MakesNoGiantsOfWhoZoomsFarInDuringAStroke)
{
    TheCamera()->SetZoom(1.5f);
    DrawWithoutEnd(Square(Vec2(0, 0), 200));
    TheCamera()->SetZoom(3000);
    const double start = Seconds();
    End(Sketch(), Vec2(-200, -200), Vec2(-200, -200));
    EXPECT_LT(Seconds() - start, 1);
    const auto polygon = Newest<PolyEntity>();
    ASSERT_TRUE(polygon);
    EXPECT_LT(static_cast<physics::Polygon&>(*polygon->GetGeom()).GetVertices().size(), 20000u);
}

TEST_F(SketchToolTest, SurvivesAnUndoDuringAStroke)
{
    const util::String empty = Save();
    Draw(Square(Vec2(2, 2), 1));
    DrawWithoutEnd({Vec2(0, 2), Vec2(4, 2)});
    Undoer::GetInstancePtr()->Undo();
    End(Sketch(), Vec2(0, 2), Vec2(5, 2));
    EXPECT_FALSE(Sketch().IsInUse());
    EXPECT_EQ(empty, Save());
}

TEST_F(SketchToolTest, DrawsThroughTheWholeInput)
{
    MouseDrag({Vec2(1, -1), Vec2(3, -1), Vec2(3, -3), Vec2(1, -3), Vec2(1, -1.25f)});
    ASSERT_TRUE(Newest<PolyEntity>());
    EXPECT_NEAR(4, Newest<PolyEntity>()->GetGeom()->Area(), 0.05f);
}

// Long strokes.

TEST_F(SketchToolTest, LooksThroughThousandsOfPointsInNoTime)
{
    // Round and round, without a crossing, and then across the turns.
    Vec2List spiral;
    for (int i = 0; i < 5000; ++i)
    {
        const float a = 0.1f * float(i), r = 0.5f + 0.1f * a;
        spiral.push_back(Vec2(r * std::cos(a), r * std::sin(a)));
    }
    // All over the place.
    Vec2List scribble;
    test::Dice dice;
    for (int i = 0; i < 5000; ++i)
        scribble.push_back(Vec2(dice.Uniform(0, 8), dice.Uniform(0, 6)));
    // A shape with a very fine outline.
    Vec2List wave;
    for (int i = 0; i < 5000; ++i)
    {
        const float a = math::TwoPIf * float(i) / 5000, r = 100 + 3 * std::sin(70 * a);
        wave.push_back(Vec2(r * std::cos(a), r * std::sin(a)));
    }
    for (const Vec2List& points : {spiral, scribble, wave})
    {
        const double start = Seconds();
        Draw(points);
        EXPECT_LT(Seconds() - start, 1.5) << points[1].x;
    }
    EXPECT_TRUE(Newest<PolyEntity>()) << "the wave";
    EXPECT_EQ(1u, EntityCount());
}

// What a hand draws.

class HandTest : public SketchToolTest
{
protected:
    // Sizes in pixels of the screen, around its middle. The hand trembles by two pixels either way and takes many steps.
    Vec2List Wobble(const Vec2List& corners, int steps)
    {
        float length = 0;
        for (size_t i = 1; i < corners.size(); ++i)
            length += math::Distance(corners[i - 1], corners[i]);
        Vec2List points;
        for (size_t i = 1; i < corners.size(); ++i)
        {
            const int n = std::max(
                1, int(float(steps) * math::Distance(corners[i - 1], corners[i]) / length));
            for (int k = 0; k < n; ++k)
                points.push_back(
                    ToWorld(math::Lerp(corners[i - 1], corners[i], float(k) / float(n))));
        }
        points.push_back(ToWorld(corners.back()));
        return points;
    }
    Vec2List Round(float radius, int steps, float turns = 1)
    {
        Vec2List points;
        for (int i = 0; i <= steps; ++i)
        {
            const float a = math::TwoPIf * turns * float(i) / float(steps);
            points.push_back(ToWorld(Vec2(radius * std::cos(a), 0.85f * radius * std::sin(a))));
        }
        return points;
    }
    Vec2 ToWorld(const Vec2& pixel)
    {
        const Vec2 tremble(m_dice.Uniform(-2, 2), m_dice.Uniform(-2, 2));
        const Vec2 middle(512, 384);
        const Vec2 p = middle + pixel + tremble;
        // The mouse is on whole pixels.
        return TheCamera()->GUIToWorld(Vec2(std::round(p.x), std::round(p.y)));
    }
    /// A box of that many pixels in the middle of the screen.
    BoxPtr AddScreenBox(float width, float height, const Vec2& at = Vec2())
    {
        const float unit = 1 / TheCamera()->GetZoom();
        return AddBox(TheCamera()->GUIToWorld(Vec2(512, 384) + at),
                      Vec2(width * unit, height * unit));
    }
    template<typename Make>
    void ForEachHand(Make&& test)
    {
        for (float zoom : {1.5f, 20.0f, 150.0f, 3000.0f})
            for (int steps : {20, 50, 100})
                for (int round = 0; round < 4; ++round)
                {
                    SCOPED_TRACE(testing::Message()
                                 << "zoom " << zoom << ", " << steps << " steps, round " << round);
                    TheScene()->ClearScene();
                    ForgetUndo();
                    TheCamera()->SetZoom(zoom);
                    TheCamera()->SetPan(Vec2(3, -7));
                    test(steps);
                }
    }

    test::Dice m_dice;
};

TEST_F(HandTest, DrawsPolygons)
{
    ForEachHand(
        [this](int steps)
        {
            Draw(Round(150, steps, 0.97f));
            EXPECT_EQ("UndoPolygon", NextUndo());
            // A little too far round.
            Draw(Round(220, steps, 1.05f));
            EXPECT_FALSE(TheScene()->GetSelection()->IsEmpty());
            TheScene()->ClearScene();
            Draw(Wobble({Vec2(-200, -100), Vec2(200, -100), Vec2(180, 100), Vec2(-210, 110),
                         Vec2(-205, -90)},
                        steps));
            EXPECT_TRUE(Newest<PolyEntity>());
        });
}

TEST_F(HandTest, DrawsHinges)
{
    ForEachHand(
        [this](int steps)
        {
            AddScreenBox(400, 200);
            Draw(Round(25, steps, 0.95f));
            EXPECT_EQ("UndoHinge", NextUndo());
        });
}

TEST_F(HandTest, DrawsSprings)
{
    ForEachHand(
        [this](int steps)
        {
            AddScreenBox(80, 80, Vec2(-200, 0));
            AddScreenBox(80, 80, Vec2(200, 0));
            Vec2List corners = {Vec2(-200, 0)};
            for (int i = -4; i <= 4; ++i)
                corners.push_back(Vec2(float(i) * 40, i % 2 ? 40.0f : -40.0f));
            corners.push_back(Vec2(200, 0));
            Draw(Wobble(corners, steps));
            EXPECT_EQ("UndoSpring", NextUndo());
            EXPECT_TRUE(Newest<SpringEntity>()->IsAlive());
        });
}

TEST_F(HandTest, DrawsWelds)
{
    ForEachHand(
        [this](int steps)
        {
            AddScreenBox(400, 400);
            Draw(Wobble({Vec2(-40, -40), Vec2(40, 40)}, steps));
            EXPECT_EQ("", NextUndo());
            Draw(Wobble({Vec2(40, -40), Vec2(-40, 40)}, steps));
            EXPECT_EQ("UndoFixate", NextUndo());
            EXPECT_TRUE(Newest<FixJointEntity>()->IsAlive());
        });
}

TEST_F(HandTest, Erases)
{
    ForEachHand(
        [this](int steps)
        {
            AddScreenBox(60, 60, Vec2(-100, 0));
            AddScreenBox(60, 60, Vec2(100, 10));
            Draw(Wobble({Vec2(-250, -20), Vec2(250, 30)}, steps));
            EXPECT_EQ("UndoErase", NextUndo());
            EXPECT_EQ(0u, EntityCount());
        });
}

TEST_F(HandTest, Selects)
{
    ForEachHand(
        [this](int steps)
        {
            AddScreenBox(60, 60, Vec2(-50, 0));
            AddScreenBox(60, 60, Vec2(60, 10));
            Draw(Round(200, steps, 0.99f));
            EXPECT_EQ("", NextUndo());
            EXPECT_EQ(2u, TheScene()->GetSelection()->GetEntities().size());
        });
}
}
}
