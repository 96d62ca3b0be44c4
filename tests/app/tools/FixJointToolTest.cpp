#include "AttachFixture.h"

#include "app/tools/FixJointTool.h"

namespace app
{
namespace
{
using FixJointToolTest = AttachFixture<FixJointTool>;

TEST_F(FixJointToolTest, WeldsASingleBodyToTheBackground)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    EXPECT_TRUE(Click(TheTool(), Vec2(0.2f, 0.1f)));
    const FixJointPtr weld = Newest<FixJointEntity>();
    ASSERT_TRUE(weld);
    EXPECT_TRUE(weld->IsAlive());
    EXPECT_EQ(Sim()->GetWorldBody(), box->GetBody());
    EXPECT_FLOAT_EQ(App::GetInstancePtr()->GetDefaultJointSize(), weld->GetSize());
    EXPECT_EQ("UndoFixate", NextUndo());
}

TEST_F(FixJointToolTest, WeldsTwoBodiesThatOverlap)
{
    const GeomEntityPtr a = Make::Box(Vec2(-0.3f, 0)), b = Make::Box(Vec2(0.3f, 0));
    Click(TheTool(), Vec2());
    EXPECT_EQ(a->GetBody(), b->GetBody());
    EXPECT_NE(Sim()->GetWorldBody(), a->GetBody());
}

TEST_F(FixJointToolTest, IsUndoneAndRedoneToTheByte)
{
    const GeomEntityPtr a = Make::Box(Vec2(-0.3f, 0)), b = Make::Box(Vec2(0.3f, 0));
    const util::String before = Save();
    Click(TheTool(), Vec2());
    ExpectUndoAndRedo(before);
    Undoer::GetInstancePtr()->Undo();
    EXPECT_NE(a->GetBody(), b->GetBody());
}

TEST_F(FixJointToolTest, DoesNothingOnTheBackground)
{
    EXPECT_FALSE(Click(TheTool(), Vec2()));
    EXPECT_EQ(0u, EntityCount());
    EXPECT_EQ("", NextUndo());
}

TEST_F(FixJointToolTest, ADoubleClickMakesOne)
{
    Make::Box(Vec2());
    Click(TheTool(), Vec2());
    EXPECT_TRUE(Click(TheTool(), Vec2()));
    EXPECT_EQ(2u, EntityCount());
}
}
}
