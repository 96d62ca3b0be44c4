#include "SerializerFixture.h"

#include "app/EntitySerializer.h"
#include "app/widgets/WidgetFactory.h"
#include "input/Input.h"

using math::Vec2;

namespace app
{
namespace
{
class WidgetTest : public SerializerFixture
{
protected:
    static AppGUI* TheGUI() { return App::GetInstancePtr()->GetAppGUI().get(); }
};

const char* const Boxes = "Scene.addBox { entityID = 1 }; "
                          "Scene.addBox { entityID = 2; pos = [5.0, 0.0]; zDepth = 1.0 }; "
                          "Scene.addGroup { name = \"pair\"; entityIDs = [1, 2] }; ";

TEST_F(WidgetTest, IsKeptByTheFileOfAScene)
{
    const util::String saved = ExpectStable(
        util::String(Boxes) + "Scene.addWidget { widgetID = \"GeomOptions\"; groupID = \"pair\"; "
                              "entityIDs = [1, 2]; minimized = true; pos = [30.0, 40.0]; "
                              "title = \"Two boxes\" }");
    ASSERT_EQ(1u, TheGUI()->GetWidgets().size());
    const WidgetPtr widget = TheGUI()->GetWidgets()[0];
    EXPECT_EQ("GeomOptions", widget->GetID());
    EXPECT_EQ(TheScene()->GetGroupByName("pair"), widget->GetGroup());
    EXPECT_TRUE(widget->IsMinimized());
    EXPECT_EQ(Vec2(30, 40), widget->GetPos());
    EXPECT_EQ("Two boxes", widget->GetTitle());
    const util::String block = Block(saved, "Scene.addWidget");
    EXPECT_EQ("\"GeomOptions\"", ValueOf(block, "widgetID"));
    EXPECT_EQ("\"pair\"", ValueOf(block, "groupID"));
    EXPECT_EQ("[1, 2]", ValueOf(block, "entityIDs"));
    EXPECT_EQ("true", ValueOf(block, "minimized"));
    EXPECT_EQ("[30.0, 40.0]", ValueOf(block, "pos"));
    EXPECT_EQ("\"Two boxes\"", ValueOf(block, "title"));
    EXPECT_LT(saved.find("Scene.addGroup"), saved.find("Scene.addWidget"));
}

TEST_F(WidgetTest, MakesAGroupOfItsEntitiesWhereNoneHasThatName)
{
    Load(util::String(Boxes) +
         "Scene.addWidget { widgetID = \"GeomOptions\"; groupID = \"gone\"; entityIDs = [2, 9] }; "
         "Scene.addWidget { widgetID = \"GeomOptions\"; entityIDs = [1] }");
    ASSERT_EQ(2u, TheGUI()->GetWidgets().size());
    const GroupPtr group = TheGUI()->GetWidgets()[0]->GetGroup();
    EXPECT_EQ(1u, group->GetEntities().size());
    EXPECT_TRUE(group->Contains(EntityAt(1)));
    EXPECT_TRUE(TheGUI()->GetWidgets()[1]->GetGroup()->Contains(EntityAt(0)));
    EXPECT_FALSE(TheScene()->GetGroupByName("gone"));
}

TEST_F(WidgetTest, MayBeOfAKindThatNobodyKnows)
{
    const util::String saved = ExpectStable(
        util::String(Boxes) + "Scene.addWidget { widgetID = \"FromTheFuture\"; entityIDs = [1] }");
    EXPECT_EQ("\"FromTheFuture\"", ValueOf(Block(saved, "Scene.addWidget"), "widgetID"));
}

TEST_F(WidgetTest, LiesAtTheMouseWhereTheFileSaysNothing)
{
    Load(util::String(Boxes) + "Scene.addWidget { widgetID = \"GeomOptions\"; entityIDs = [1] }");
    ASSERT_EQ(1u, TheGUI()->GetWidgets().size());
    const WidgetPtr widget = TheGUI()->GetWidgets()[0];
    EXPECT_EQ(input::Input::GetInstancePtr()->GetMousePos(), widget->GetPos());
    EXPECT_FALSE(widget->IsMinimized());
    EXPECT_EQ("", widget->GetTitle());
}

TEST_F(WidgetTest, OfNoKindOrNoPlaceIsLostAlone)
{
    test::LogCapture log;
    Load(util::String(Boxes) + "Scene.addWidget { entityIDs = [1] }; "
                               "Scene.addWidget { widgetID = \"A\"; pos = [0.0 / 0.0, 1.0] }; "
                               "Scene.addWidget { widgetID = \"A\"; pos = 3 }; "
                               "Scene.addWidget { widgetID = \"A\"; entityIDs = [1] }");
    EXPECT_TRUE(log.Has("Missing key \"widgetID\"")) << log.Text();
    EXPECT_EQ(1u, TheGUI()->GetWidgets().size()) << log.Text();
}

TEST_F(WidgetTest, OfTheLayoutBelongsToNoScene)
{
    Load(util::String(Boxes) + "Scene.addWidget { widgetID = \"GeomOptions\"; entityIDs = [1] }");
    const WidgetPtr panel = WidgetFactory::GetInstancePtr()->CreateWidget("Help", nullptr);
    TheGUI()->AddWidget(panel);
    EXPECT_FALSE(Has(Save(), "\"Help\""));
    TheScene()->ClearScene();
    EXPECT_EQ(std::vector<WidgetPtr>{panel}, TheGUI()->GetWidgets());
    TheGUI()->RemoveWidget(panel);
    EXPECT_TRUE(TheGUI()->GetWidgets().empty());
}

TEST_F(WidgetTest, ClosesWhenItsEntitiesHaveGone)
{
    Load(util::String(Boxes) + "Scene.addWidget { widgetID = \"A\"; groupID = \"pair\" }");
    TheScene()->RemoveEntity(EntityAt(0));
    TheGUI()->Update(0);
    EXPECT_EQ(1u, TheGUI()->GetWidgets().size());
    TheScene()->RemoveEntity(EntityAt(0));
    EXPECT_FALSE(Has(Save(), "Scene.addWidget"));
    TheGUI()->Update(0);
    EXPECT_TRUE(TheGUI()->GetWidgets().empty());
}

TEST_F(WidgetTest, TellsItsEntitiesWhereTheNameOfItsGroupIsThatOfAnother)
{
    Load(util::String(Boxes) + "Scene.addGroup { name = \"pair\"; entityIDs = [2] }");
    const GroupPtr group = QUIB_NEW Group("pair");
    group->Add(EntityAt(1));
    TheGUI()->AddWidget(WidgetFactory::GetInstancePtr()->CreateWidget("A", group));
    const util::String saved = Save();
    EXPECT_EQ("\"\"", ValueOf(Block(saved, "Scene.addWidget"), "groupID"));
    EXPECT_EQ("[2]", ValueOf(Block(saved, "Scene.addWidget"), "entityIDs"));
    Load(saved);
    EXPECT_EQ(1u, TheGUI()->GetWidgets().at(0)->GetGroup()->GetEntities().size());
}
}
}
