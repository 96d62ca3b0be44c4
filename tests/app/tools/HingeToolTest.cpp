#include "AttachFixture.h"

#include "app/tools/HingeTool.h"

namespace app
{
namespace
{
using HingeToolTest = AttachFixture<HingeTool>;

TEST_F(HingeToolTest, FastensASingleBodyToTheBackground)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    EXPECT_TRUE(Click(TheTool(), Vec2(0.2f, 0.1f)));
    ASSERT_EQ(2u, EntityCount());
    const HingePtr hinge = Newest<HingeEntity>();
    ASSERT_TRUE(hinge);
    EXPECT_TRUE(hinge->IsAlive());
    EXPECT_EQ(box->GetGeom(), hinge->GetGeom(0));
    EXPECT_TRUE(hinge->IsAttachedToWorld());
    ExpectNear(Vec2(0.2f, 0.1f), hinge->GetWorldPoint(0));
    ExpectNear(Vec2(0.2f, 0.1f), hinge->GetWorldPoint(1));
    EXPECT_FLOAT_EQ(App::GetInstancePtr()->GetDefaultJointSize(), hinge->GetSize());
    EXPECT_EQ("UndoHinge", NextUndo());
}

TEST_F(HingeToolTest, JoinsTwoBodiesThatOverlap)
{
    const GeomEntityPtr below = Make::Box(Vec2(-0.3f, 0)), above = Make::Box(Vec2(0.3f, 0));
    Click(TheTool(), Vec2());
    const HingePtr hinge = Newest<HingeEntity>();
    ASSERT_TRUE(hinge);
    EXPECT_EQ(above->GetGeom(), hinge->GetGeom(0));
    EXPECT_EQ(below->GetGeom(), hinge->GetGeom(1));
    EXPECT_FALSE(hinge->IsAttachedToWorld());
}

TEST_F(HingeToolTest, IsUndoneAndRedoneToTheByte)
{
    Make::Box(Vec2());
    const util::String before = Save();
    Click(TheTool(), Vec2(0.2f, 0.1f));
    ExpectUndoAndRedo(before);
}

TEST_F(HingeToolTest, DoesNothingOnTheBackground)
{
    Make::Box(Vec2());
    EXPECT_FALSE(Click(TheTool(), Vec2(3, 0)));
    EXPECT_EQ(1u, EntityCount());
    EXPECT_EQ("", NextUndo());
}

TEST_F(HingeToolTest, MakesNothingOnAPartOfAJointThatIsInMidAir)
{
    // Half of the hinge looks out beyond the edge of its body.
    Add("Scene.addBox { pos = [0.0, 0.0]; size = [1.0, 1.0]; geomID = 1 }");
    Run("Scene.addHinge { geom0 = 1; geom0pos = [0.5, 0.0]; geom1 = 0; geom1pos = [0.5, 0.0]; size "
        "= 1.0 }");
    ASSERT_EQ(2u, EntityCount());
    Click(TheTool(), Vec2(0.75f, 0));
    EXPECT_EQ(2u, EntityCount());
    EXPECT_EQ("", NextUndo());
}

TEST_F(HingeToolTest, TakesSingleClicksOfTheLeftButton)
{
    Make::Box(Vec2());
    EXPECT_FALSE(Click(TheTool(), Vec2(), input::MouseRight));
    EXPECT_FALSE(Click(TheTool(), Vec2(), input::MouseMiddle));
    EXPECT_FALSE(Click(TheTool(), Vec2(), input::MouseLeft, 2));
    const input::ClickEvent event(GUIPos(Vec2()), input::MouseLeft, 1);
    event.SetHandled(true);
    TheTool().OnClick(event);
    EXPECT_EQ(1u, EntityCount());
    EXPECT_EQ("", NextUndo());
}

TEST_F(HingeToolTest, ADoubleClickMakesOneHinge)
{
    Make::Box(Vec2(), Vec2(3, 3));
    const Vec2 first = GUIPos(Vec2());
    const float tolerance = gui::GUI::GetInstancePtr()->GetClickTolerance();
    const auto clickAt = [this](const Vec2& pos)
    {
        const input::ClickEvent event(pos, input::MouseLeft, 1);
        TheTool().OnClick(event);
        EXPECT_TRUE(event.IsHandled());
    };
    clickAt(first);
    clickAt(first);
    clickAt(first + Vec2(tolerance, 0));
    EXPECT_EQ(2u, EntityCount());
    // Elsewhere it is a click of its own.
    clickAt(first + Vec2(tolerance + 1, 0));
    EXPECT_EQ(3u, EntityCount());
}

TEST_F(HingeToolTest, TwoSlowClicksMakeTwo)
{
    Make::Box(Vec2());
    Click(TheTool(), Vec2());
    WaitLongerThanAClick();
    Click(TheTool(), Vec2());
    EXPECT_EQ(3u, EntityCount());
}

TEST_F(HingeToolTest, AClickThatMadeNothingIsNoFirstOfTwo)
{
    EXPECT_FALSE(Click(TheTool(), Vec2()));
    Make::Box(Vec2());
    EXPECT_TRUE(Click(TheTool(), Vec2()));
    EXPECT_EQ(2u, EntityCount());
}

TEST_F(HingeToolTest, AClickWhoseHingeHasGoneIsNoFirstOfTwo)
{
    Run("GUI.clickTimeTolerance = 1.0e6");
    Make::Box(Vec2());
    Click(TheTool(), Vec2());
    ASSERT_EQ(2u, EntityCount());
    Undoer::GetInstancePtr()->Undo();
    ASSERT_EQ(1u, EntityCount());
    EXPECT_TRUE(Click(TheTool(), Vec2()));
    EXPECT_EQ(2u, EntityCount());
    EXPECT_TRUE(Click(TheTool(), Vec2())) << "the second of two, of which nobody else is to know";
    EXPECT_EQ(2u, EntityCount());
}

TEST_F(HingeToolTest, ThereIsNothingToBreakOff)
{
    EXPECT_FALSE(TheTool().Disband());
    EXPECT_EQ("", TheTool().GetCursorName());
}
}
}
