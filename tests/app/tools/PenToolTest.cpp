#include "AttachFixture.h"

#include "app/tools/HingeTool.h"
#include "app/tools/PenTool.h"

namespace app
{
namespace
{
using PenToolTest = AttachFixture<PenTool>;

TEST_F(PenToolTest, FastensAPenToTheTopmostBody)
{
    Make::Box(Vec2(), Vec2(3, 3));
    const GeomEntityPtr above = Make::Box(Vec2());
    EXPECT_TRUE(Click(TheTool(), Vec2(0.2f, 0.1f)));
    const PenEntityPtr pen = Newest<PenEntity>();
    ASSERT_TRUE(pen);
    EXPECT_EQ(above->GetGeom(), pen->GetGeom());
    ExpectNear(Vec2(0.2f, 0.1f), pen->GetPos());
    EXPECT_FLOAT_EQ(App::GetInstancePtr()->GetDefaultJointSize(), pen->GetSize());
    EXPECT_EQ("UndoPen", NextUndo());
    // It draws from now on.
    Sim()->m_running = true;
    above->GetBody()->SetVel(Vec2(1, 0));
    Make::Frame(10);
    EXPECT_GT(pen->GetTrail().size(), 5u);
}

TEST_F(PenToolTest, IsUndoneAndRedoneToTheByte)
{
    Make::Box(Vec2());
    const util::String before = Save();
    Click(TheTool(), Vec2(0.2f, 0.1f));
    ExpectUndoAndRedo(before);
}

TEST_F(PenToolTest, DoesNothingOnTheBackground)
{
    EXPECT_FALSE(Click(TheTool(), Vec2()));
    EXPECT_EQ(0u, EntityCount());
    EXPECT_EQ("", NextUndo());
}

TEST_F(PenToolTest, ADoubleClickMakesOne)
{
    Make::Box(Vec2());
    Click(TheTool(), Vec2());
    EXPECT_TRUE(Click(TheTool(), Vec2()));
    EXPECT_EQ(2u, EntityCount());
}

TEST_F(PenToolTest, EachToolCountsItsOwnClicks)
{
    Make::Box(Vec2());
    Click(*TheTools()->Get<HingeTool>(), Vec2());
    Click(TheTool(), Vec2());
    EXPECT_EQ(3u, EntityCount());
}
}
}
