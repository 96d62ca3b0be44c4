#include "HandFixture.h"

namespace app
{
namespace
{
class PanToolTest : public HandFixture
{
protected:
    static PanTool& TheTool() { return *TheTools()->Get<PanTool>(); }
};

TEST_F(PanToolTest, ThePictureFollowsTheMouse)
{
    const Vec2 start(1, 1);
    const Vec2 from = GUIPos(start), to = from + Vec2(50, 20);
    TheTool().OnDragBegin(input::DragEvent(from, Vec2(), from, input::MouseRight));
    TheTool().OnDrag(input::DragEvent(from, to - from, to, input::MouseRight));
    ExpectNear(Vec2(-0.5f, 0.2f), TheCamera()->GetPan());
    ExpectNear(start, TheCamera()->GUIToWorld(to));
}

TEST_F(PanToolTest, TakesTheRightButtonOnly)
{
    EXPECT_FALSE(DragAlong(TheTool(), {Vec2(), Vec2(1, 0)}, input::MouseLeft));
    EXPECT_EQ(Vec2(), TheCamera()->GetPan());
    EXPECT_TRUE(Begin(TheTool(), Vec2(), input::MouseRight));
    EXPECT_TRUE(Drag(TheTool(), Vec2(), Vec2(), Vec2(1, 0), input::MouseRight));
    EXPECT_TRUE(End(TheTool(), Vec2(), Vec2(1, 0), input::MouseRight));
}

TEST_F(PanToolTest, HasACursorWhileInUse)
{
    EXPECT_EQ("", TheTool().GetCursorName());
    Begin(TheTool(), Vec2(), input::MouseRight);
    EXPECT_EQ("pan", TheTool().GetCursorName());
    End(TheTool(), Vec2(), Vec2(), input::MouseRight);
    EXPECT_EQ("", TheTool().GetCursorName());
}

TEST_F(PanToolTest, LeavesNothingToUndo)
{
    DragAlong(TheTool(), {Vec2(), Vec2(1, 0)}, input::MouseRight);
    EXPECT_NE(Vec2(), TheCamera()->GetPan());
    EXPECT_EQ("", NextUndo());
}

TEST_F(PanToolTest, BreakingItOffKeepsTheView)
{
    Begin(TheTool(), Vec2(), input::MouseRight);
    Drag(TheTool(), Vec2(), Vec2(), Vec2(1, 0), input::MouseRight);
    const Vec2 pan = TheCamera()->GetPan();
    EXPECT_TRUE(Escape(TheTool()));
    EXPECT_EQ(pan, TheCamera()->GetPan());
    EXPECT_FALSE(Drag(TheTool(), Vec2(), Vec2(), Vec2(1, 0), input::MouseRight));
    EXPECT_EQ(pan, TheCamera()->GetPan());
    EXPECT_FALSE(TheTool().Disband());
}
}
}
