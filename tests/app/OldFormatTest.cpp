// Files from before scenes were programs.
#include "SerializerFixture.h"

using math::Vec2;

namespace app
{
namespace
{
using OldFormatTest = SerializerFixture;

TEST_F(OldFormatTest, DoesNotRunAnEarlierFormat)
{
    test::LogCapture log;
    Load("version = 1; x18 = { type = \"box\"; size = [2.0, 2.0]; color = [0.1, 0.2, 0.3]; "
         "entityID = 1 }; "
         "b = { type = \"circle\"; radius = 0.5; pos = [5.0, 0.0] }; "
         "g = { type = \"group\"; name = \"g\"; entityIDs = [1] }; "
         "h = { type = \"wheel\" }; "
         "odd = 3; "
         "Scene.addBox { }");
    EXPECT_TRUE(log.Has("Old (pre beta 4) file type detected"));
    EXPECT_TRUE(log.Has("Unknown type: wheel"));
    EXPECT_TRUE(log.Has("Unknown constant declared in scene file: odd"));
    EXPECT_TRUE(log.Has("Unknown garbage found in scene file: Scene.addBox({})"));
    EXPECT_EQ(1, FileInfo::GetInstancePtr()->GetVersion());
    EXPECT_EQ(2u, TheScene()->GetEntities().size());
    EXPECT_EQ(1u, TheScene()->GetGroupByName("g")->GetEntities().size());
    EXPECT_FALSE(Parser()->GetRootClosure()->HasVariable("x18"));
}

TEST_F(OldFormatTest, AssumesVersion0OfAnEarlierFormatUntilToldOtherwise)
{
    test::LogCapture log;
    // Read before the version is: in this format the order of statements does not matter to it.
    Load("version = 0; b = { type = \"box\"; color = [0.1, 0.2, 0.3] }");
    EXPECT_EQ(1u, TheScene()->GetEntities().size());
    EXPECT_EQ(0, FileInfo::GetInstancePtr()->GetVersion());
}

TEST_F(OldFormatTest, LosesOnlyWhatIsBadInAnEarlierFormat)
{
    test::LogCapture log(logging::LogWarning);
    Load("version = 1; a = { type = \"circle\"; radius = -1.0 }; b = { radius = 1.0 }; "
         "c = { type = \"circle\" }; d = { type = 3 }; e = (x) => { type = \"box\" }");
    EXPECT_TRUE(log.Has("An error occurred while deserializing: Bad radius")) << log.Text();
    EXPECT_TRUE(log.Has("Unknown type: ")) << log.Text();
    EXPECT_TRUE(log.Has("An error occurred while deserializing: Not a string")) << log.Text();
    EXPECT_TRUE(log.Has("An error occurred while deserializing: Wrong number of arguments"))
        << log.Text();
    EXPECT_EQ(1u, TheScene()->GetEntities().size());
}

TEST_F(OldFormatTest, TakesTypesOfAnEarlierFormatLetterByLetter)
{
    for (const char* type :
         {"BOX", "Group", "Circle", "Water", "addBox", "addWidget", "widget", ""})
    {
        test::LogCapture log(logging::LogWarning);
        Load(util::String("version = 1; a = { type = \"") + type + "\" }");
        EXPECT_TRUE(log.Has(util::String("Unknown type: ") + type)) << log.Text();
        EXPECT_TRUE(TheScene()->GetEntities().empty()) << type;
    }
    // What has no name is no entity.
    test::LogCapture log(logging::LogWarning);
    Load("version = 1; { type = \"box\" }");
    EXPECT_TRUE(log.Has("Unknown garbage found in scene file: {")) << log.Text();
    EXPECT_TRUE(TheScene()->GetEntities().empty());
}

TEST_F(OldFormatTest, ReadsGroupsOfAnEarlierFormatAfterAllElse)
{
    test::LogCapture log;
    Load("version = 1; g = { type = \"group\"; name = \"g\"; entityIDs = [1] }; "
         "w = { type = \"odd\" }; h = { type = \"hinge\" }; "
         "a = { type = \"box\"; entityID = 1 }");
    EXPECT_EQ(1u, TheScene()->GetGroupByName("g")->GetEntities().size());
    EXPECT_LT(log.Text().find("Bad joint"), log.Text().find("Unknown type: odd"));
}

TEST_F(OldFormatTest, ReadsAPlaneOfAnEarlierFormat)
{
    Load("version = 1; p = { type = \"plane\"; id = 7; normal = [1.0, 0.0]; dist = 2.0; "
         "entityID = 3 }");
    ASSERT_EQ(1u, TheScene()->GetEntities().size());
    const auto plane = util::DynamicCast<GeomEntity>(TheScene()->GetEntities()[0]);
    EXPECT_NEAR(7, GeomOf(plane).DistanceWorld(Vec2(5, 5)), 1e-5f);
    EXPECT_EQ(7u, TheSerializer()->GetFileGeomID(GeomOf(plane).GetID()));
    EXPECT_EQ(3u, TheSerializer()->GetFileID(*plane));
}

TEST_F(OldFormatTest, NeverRunsATextThatStartsLikeAnEarlierFormat)
{
    // Programs, every one of them.
    for (const char* start : {"version = 2; ", "version = \"new\"; ", "version = { 2 }; "})
    {
        SCOPED_TRACE(start);
        test::LogCapture log;
        Load(util::String(start) + "Scene.addBox { }");
        EXPECT_TRUE(log.Has("Old (pre beta 4) file type detected"));
        EXPECT_TRUE(log.Has("Unknown garbage found in scene file: Scene.addBox({})"));
        EXPECT_TRUE(TheScene()->GetEntities().empty());
        EXPECT_FALSE(Parser()->GetRootClosure()->HasVariable("version"));
    }
    // And these do not start like it.
    for (const char* start : {"version=2; ", " version = 2; ", "// A comment.\nversion = 2; "})
    {
        SCOPED_TRACE(start);
        Load(util::String(start) + "Scene.addBox { }");
        EXPECT_EQ(1u, TheScene()->GetEntities().size());
        Parser()->GetRootClosure()->RemoveVariable("version");
    }
}

TEST_F(OldFormatTest, MakesABoxOfAnEarlierRoundedBox)
{
    const util::String rounded =
        "vecs = [[-2.0, -0.9], [-2.0, 0.0], [-2.0, 0.9], [-1.9, 1.0], [0.0, 1.0], [1.9, 1.0], "
        "[2.0, 0.9], [2.0, 0.0], [2.0, -0.9], [1.9, -1.0], [0.0, -1.0], [-2.0, -1.0]]";
    Load("version = 1; a = { type = \"polygon\"; " + rounded + " }");
    EXPECT_TRUE(Has(Save(), "Scene.addBox({"));
    EXPECT_TRUE(Has(Save(), "size = [4.0, 2.0]"));
    // Only there: in this format a polygon is a polygon.
    Load("Scene.addPolygon { " + rounded + " }");
    EXPECT_TRUE(Has(Save(), "Scene.addPolygon({"));
    Load("version = 1; a = { type = \"polygon\"; vecs = [[0.0, 0.0], [1.0, 0.0], [0.0, 1.0]] }");
    EXPECT_TRUE(Has(Save(), "Scene.addPolygon({"));
}
}
}
