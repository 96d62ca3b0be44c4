// Files from before scenes were programs.
#include "SerializerFixture.h"

#include "app/Chain.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/SpringEntity.h"

using math::Vec2;

namespace app
{
namespace
{
class OldFormatTest : public SerializerFixture
{
protected:
    static void LoadFile(const char* name)
    {
        Load(test::Slurp(util::String(QUIB_SOURCE_DIR "/tests/app/old/") + name));
    }
    static const physics::Geom* GeomAt(size_t i)
    {
        return EntityAt(i)->AsGeomEntity()->GetGeom().get();
    }
};

TEST_F(OldFormatTest, ReadsEverythingThatAFileCouldHold)
{
    test::LogCapture errors(logging::LogError), warnings(logging::LogWarning);
    LoadFile("machine.qib");
    EXPECT_EQ("", errors.Text());
    EXPECT_EQ("", warnings.Text());
    EXPECT_EQ(1, FileInfo::GetInstancePtr()->GetVersion());
    ASSERT_EQ(12u, TheScene()->GetEntities().size());

    EXPECT_NEAR(5, GeomAt(0)->DistanceWorld(Vec2(3, 5)), 1e-5f);
    EXPECT_EQ(math::Vec4(0.8f, 0.4f, 0.1f, 1), EntityAt(1)->GetColor4());
    EXPECT_EQ("0.75", Attribute(EntityAt(1), "friction"));
    EXPECT_EQ("0", Attribute(EntityAt(2), "collideSet"));
    EXPECT_EQ("1", Attribute(EntityAt(1), "collideSet"));
    EXPECT_EQ(Vec2(4, 3), GeomAt(3)->GetCenter());

    const auto axle = util::DynamicCast<HingeEntity>(EntityAt(7));
    ASSERT_TRUE(axle);
    EXPECT_EQ(GeomAt(2), axle->GetGeom(0).get()); // the topmost there
    EXPECT_EQ(GeomAt(1), axle->GetGeom(1).get());
    EXPECT_TRUE(axle->GetButtonForward().IsBound());
    const auto pin = util::DynamicCast<HingeEntity>(EntityAt(8));
    ASSERT_TRUE(pin);
    EXPECT_EQ(GeomAt(3), pin->GetGeom(0).get());
    EXPECT_TRUE(pin->IsAttachedToWorld());
    const auto weld = util::DynamicCast<FixJointEntity>(EntityAt(9));
    ASSERT_TRUE(weld);
    EXPECT_EQ(GeomAt(1)->GetBodyPtr(), GeomAt(4)->GetBodyPtr());
    const auto coil = util::DynamicCast<SpringEntity>(EntityAt(10));
    ASSERT_TRUE(coil);
    EXPECT_EQ(GeomAt(3), coil->GetGeom(0).get());
    EXPECT_TRUE(coil->IsAttachedToWorld());
    EXPECT_EQ(2, coil->GetTargetLength());
    const auto pen = util::DynamicCast<PenEntity>(EntityAt(11));
    ASSERT_TRUE(pen);
    EXPECT_EQ(GeomAt(2), pen->GetGeom().get());
    EXPECT_NEAR(0.5f, pen->GetLocalPoint().y, 1e-5f);
    EXPECT_EQ("2", Attribute(pen, "fadeTime"));

    ASSERT_TRUE(EntityAt(5)->GetChain());
    EXPECT_EQ(EntityAt(5)->GetChain(), EntityAt(6)->GetChain());
    EXPECT_EQ(1u, EntityAt(6)->GetChain()->IndexOf(*EntityAt(6)));
    EXPECT_EQ(2u, TheScene()->GetGroupByName("pair")->GetEntities().size());
    EXPECT_EQ(2u, TheScene()->GetGroupByName("group_7")->GetEntities().size());
    ASSERT_TRUE(TheCamera()->GetTrackedGroup());
    EXPECT_TRUE(TheCamera()->GetTrackedGroup()->Contains(EntityAt(3)));
    EXPECT_EQ(3u, Sim()->GetParticles().size());

    // Saved it is a file of today.
    const util::String saved = Save();
    EXPECT_TRUE(Has(saved, "FileInfo.version = 2;"));
    Load(saved);
    EXPECT_EQ(saved, Save());
    EXPECT_EQ(12u, TheScene()->GetEntities().size());
}

TEST_F(OldFormatTest, LogsWhatItDoesNotUnderstandAndKeepsTheRest)
{
    test::LogCapture progress(logging::LogVerbose);
    test::LogCapture log(logging::LogWarning);
    test::LogCapture errors(logging::LogError);
    LoadFile("faults.qib");
    EXPECT_TRUE(progress.Has("Old (pre beta 4) file type detected"));
    const char* const lines[] = {
        "Unknown constant declared in scene file: title",
        "Unknown constant declared in scene file: size",
        "Unknown type: wheel",
        "Unknown type: ",
        "An error occurred while deserializing: Not a string",
        "An error occurred while deserializing: Wrong number of arguments",
        "Unknown garbage found in scene file: Scene.addBox({})",
        "Unknown garbage found in scene file: 1 + 2",
        "Unknown garbage found in scene file: {",
        "An error occurred while deserializing: Bad size: both sides must be above 0",
        "An error occurred while deserializing: Missing key \"vecs\"",
        "An error occurred while deserializing: Not a vector",
    };
    for (const char* line : lines)
        EXPECT_TRUE(log.Has(line)) << line << "\n" << log.Text();
    EXPECT_TRUE(errors.Has("Bad joint")) << errors.Text();
    // The last one, and the one whose size could not be computed.
    ASSERT_EQ(2u, TheScene()->GetEntities().size());
    EXPECT_EQ(math::Vec4(0.1f, 0.2f, 0.3f, 1), EntityAt(1)->GetColor4());
    EXPECT_TRUE(Sim()->GetParticles().empty());
    EXPECT_EQ(1u, TheScene()->GetGroups().size());
    EXPECT_FALSE(Parser()->GetRootClosure()->HasVariable("good"));
    EXPECT_FALSE(Parser()->GetRootClosure()->HasVariable("title"));
}

TEST_F(OldFormatTest, ShortensGarbage)
{
    test::LogCapture log(logging::LogWarning);
    const util::String longText(100000, 'x');
    Load("version = 1; f(\"" + longText + "\"); " + longText + " = 3; a = { type = \"" + longText +
         "\" }");
    EXPECT_EQ(3u, log.Lines().size());
    for (const std::string& line : log.Lines())
        EXPECT_LT(line.size(), 1500u);
}

TEST_F(OldFormatTest, MakesBoxesOfRoundedBoxesOnly)
{
    LoadFile("rounded.qib");
    const util::String saved = Save();
    EXPECT_EQ(2u, Count(saved, "Scene.addBox({"));
    EXPECT_EQ(3u, Count(saved, "Scene.addPolygon({"));
    const util::String first = Block(saved, "Scene.addBox({", 0);
    EXPECT_EQ("[4.0, 2.0]", ValueOf(first, "size"));
    EXPECT_EQ("0.25", ValueOf(first, "angle"));
    EXPECT_EQ("3.0", ValueOf(first, "density"));
    const util::String second = Block(saved, "Scene.addBox({", 1);
    EXPECT_EQ("[1.0, 1.0]", ValueOf(second, "size"));
    EXPECT_EQ("[9.0, 0.0]", ValueOf(second, "pos"));
}

TEST_F(OldFormatTest, ForgetsTheIdsOfAnEarlierText)
{
    Load("version = 1; a = { type = \"box\"; id = 5; entityID = 6 }");
    TheSerializer()->Deserialize("version = 1; g = { type = \"group\"; name = \"g\"; "
                                 "entityIDs = [6] }");
    EXPECT_TRUE(TheScene()->GetGroupByName("g")->IsEmpty());
}

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

// A text of blocks that multiply ran for hours: each had the time of a whole run.
TEST_F(OldFormatTest, GivesAllBlocksTogetherTheTimeOfOneRun)
{
    // Strings cost much, and take little time.
    util::String doubling = "s = \"0123456789abcdef\"; ";
    for (int i = 0; i < 15; ++i)
        doubling += "s = s + s; ";
    util::String sums;
    for (int i = 0; i < 1100; ++i)
        sums += "s + s; ";
    test::LogCapture log(logging::LogWarning);
    Load("version = 1; a = { type = \"box\"; size = [2.0, 2.0] }; "
         "hog = { " +
         doubling + sums +
         "type = \"circle\" }; "
         "b = { type = \"box\"; size = [1.0, 1.0] }");
    EXPECT_TRUE(log.Has("An error occurred while deserializing: Script runs too long"))
        << log.Text();
    // What was read before is there; for what comes behind nothing was left.
    ASSERT_EQ(1u, TheScene()->GetEntities().size());
    EXPECT_TRUE(Has(Save(), "size = [2.0, 2.0]"));
    // The next text has all of its own.
    Load("version = 1; a = { type = \"box\"; size = [2.0, 2.0] }");
    EXPECT_EQ(1u, TheScene()->GetEntities().size());
}

TEST_F(OldFormatTest, FormulasGoOnAfterTheLoading)
{
    Load("version = 1; a = { type = \"box\"; half = 0.5; friction = { Sim.airDensity + half } }");
    ASSERT_EQ(1u, TheScene()->GetEntities().size());
    Sim()->m_airDensity = 0.25f;
    test::LogCapture log(logging::LogWarning);
    for (int i = 0; i < 2; ++i)
        Parser()->Update();
    EXPECT_EQ("", log.Text());
    EXPECT_EQ(0.75f, EntityAt(0)->AsGeomEntity()->GetGeom()->GetFriction());
    Sim()->m_airDensity = 0.01f;
    EXPECT_TRUE(Has(Save(), "Sim.airDensity + half"));
}

TEST_F(OldFormatTest, TakesNoDottedNameForOneOfItsOwn)
{
    test::LogCapture log(logging::LogWarning);
    Load("version = 1; FileInfo.version = 3; Scene.Camera.version = 7; Sim.gravity = [0.0, 0.0]; "
         "Scene.box = { type = \"box\" }");
    for (const char* name :
         {"FileInfo.version", "Scene.Camera.version", "Sim.gravity", "Scene.box"})
        EXPECT_TRUE(log.Has(util::String("Unknown constant declared in scene file: ") + name))
            << log.Text();
    EXPECT_EQ(1, FileInfo::GetInstancePtr()->GetVersion());
    EXPECT_TRUE(TheScene()->GetEntities().empty());
    EXPECT_NE(Vec2(), Sim()->GetGravity());
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
