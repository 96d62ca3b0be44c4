#include "SerializerFixture.h"

#include "physics/Particle.h"
#include "physics/WorldGeom.h"

using math::Vec2;

namespace app
{
namespace
{
using SerializerTest = SerializerFixture;

TEST_F(SerializerTest, WritesTheEmptyScene)
{
    EXPECT_EQ("// Quib scene created by Quib beta 4.0\n"
              "\n"
              "FileInfo.version = 2;\n"
              "Sim.gravity = [0.0, -9.800000190734863];\n"
              "Sim.gravitySwitch = true;\n"
              "Sim.airSwitch = true;\n"
              "Sim.airFrictionLinear = 0.009999999776482582;\n"
              "Sim.airFrictionQuadratic = 0.0;\n"
              "Sim.rotFrictionLinear = 0.009999999776482582;\n"
              "Sim.airDensity = 0.009999999776482582;\n"
              "Sim.timeFactor = 1.0;\n"
              "App.borders = true;\n"
              "App.waterColor = [0.1000000014901161, 0.1000000014901161, 1.0, 0.699999988079071];\n"
              "Scene.Camera.pan = [0.0, 0.0];\n"
              "Scene.Camera.zoom = 150.0;\n"
              "App.Background.cloudOpacity = 0.8999999761581421;\n"
              "App.Background.drawClouds = true;\n"
              "App.Background.skyColor = [0.300000011920929, 0.4000000059604645, 1.0, 1.0];\n"
              "App.fadeColor = [0.0, 0.0, 0.0];\n"
              "Scene.addGroup({\n"
              "    name = \"selected\";\n"
              "    entityIDs = []\n"
              "})",
              Save());
}

TEST_F(SerializerTest, WritesTheTrailOnlyWhenThereIsOne)
{
    EXPECT_FALSE(Has(Save(), "App.fadeScale"));
    Run("App.fadeColor = [0.5, 0.0, 0.0]");
    const util::String text = Save();
    EXPECT_TRUE(Has(text, "App.fadeColor = [0.5, 0.0, 0.0];\n"
                          "App.fadeScale = [0.949999988079071, 0.949999988079071];\n"
                          "App.fadeTranslate = [0.0, 0.0];\n"
                          "App.fadeRotate = 0.0;\n"));
    Run("App.fadeColor = [0.0, 0.0, 0.0]");
}

TEST_F(SerializerTest, WritesTheTextsThatAreThere)
{
    Run("Scene.title = \"Door\"; FileInfo.author = \"Me\"");
    const util::String text = Save();
    EXPECT_TRUE(Has(text, "\n\nFileInfo.title = \"Door\";\nFileInfo.author = \"Me\";\n"
                          "FileInfo.version = 2;\n"));
    EXPECT_FALSE(Has(text, "FileInfo.description"));
}

TEST_F(SerializerTest, WritesOnlyTheKeysThatMakeAPlainEntity)
{
    const std::vector<util::String> common{"angle", "color", "entityID", "geomID", "pos", "zDepth"};
    const struct
    {
        const char *command, *key, *own;
    } kinds[] = {
        {"addBox", "size", "size = [3.0, 4.0]"},
        {"addCircle", "radius", "radius = 2.5"},
        {"addPolygon", "vecs", "vecs = [[-1.0, -1.0], [1.0, -1.0], [1.0, 1.0], [-1.0, 1.0]]"},
        {"addPlane", nullptr, ""},
    };
    for (const auto& kind : kinds)
    {
        SCOPED_TRACE(kind.command);
        Add(util::String("Scene.") + kind.command +
            " { color = [0.5, 0.25, 0.125, 1.0]; pos = [1.0, 2.0]; angle = 0.5; " + kind.own +
            " }");
        const util::String block = Block(Save(), util::String("Scene.") + kind.command + "({");
        std::vector<util::String> keys, expected = common;
        for (const util::String& line : util::Split(block, '\n'))
            if (line.find(" = ") != util::String::npos)
                keys.push_back(line.substr(4, line.find(" = ") - 4));
        if (kind.key)
            expected.push_back(kind.key);
        std::sort(keys.begin(), keys.end());
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(expected, keys);
        EXPECT_TRUE(Has(block, "    color = [0.5, 0.25, 0.125, 1.0]"));
        EXPECT_TRUE(Has(block, "    pos = [1.0, 2.0]"));
        EXPECT_TRUE(Has(block, "    angle = 0.5"));
        EXPECT_TRUE(Has(block, "    zDepth = 0.0"));
        EXPECT_TRUE(Has(block, kind.own)) << block;
        Reset();
    }
}

TEST_F(SerializerTest, GivesWhatWasAtItsDefaultTheDefaultOfWhereItIsRead)
{
    Add("Scene.addBox { friction = 0.75 }");
    const util::String text = Save();
    Run("Sim.defaultBodyDensity = 3.0; Sim.defaultBodyFriction = 0.25; "
        "Sim.defaultBodyRestitution = 0.75");
    Load(text);
    const EntityPtr read = TheScene()->GetEntities()[0];
    Run("Sim.defaultBodyDensity = 2.0; Sim.defaultBodyFriction = 0.5; "
        "Sim.defaultBodyRestitution = 0.5");
    EXPECT_EQ("3", Attribute(read, "density"));
    EXPECT_EQ("0.75", Attribute(read, "restitution"));
    EXPECT_EQ("0.75", Attribute(read, "friction")); // this one was written
}

TEST_F(SerializerTest, WritesWhatDiffersFromItsDefault)
{
    Add("Scene.addCircle { friction = 0.25; collideSet = 3; controllerInvertX = true; "
        "controllerAcc = 3.0; forceController = \"arrowkeys\" }");
    const util::String block = Block(Save(), "Scene.addCircle({");
    for (const char* part : {"friction = 0.25", "collideSet = 3", "controllerInvertX = true",
                             "controllerAcc = 3.0", "forceController = \"arrowkeys\""})
        EXPECT_TRUE(Has(block, part)) << part;
    EXPECT_FALSE(Has(block, "density"));
}

TEST_F(SerializerTest, WritesAFormulaAsItIs)
{
    Add("Scene.addCircle { friction = { Sim.airDensity } }");
    EXPECT_TRUE(Has(Save(), "friction = {Sim.airDensity}"));
}

TEST_F(SerializerTest, DropsAFormulaThatGivesTheDefault)
{
    // Deliberate: what counts is the value, not what it comes from.
    Add("Scene.addCircle { friction = { 0.5 } }");
    EXPECT_FALSE(Has(Save(), "friction"));
}

TEST_F(SerializerTest, WritesAllThatBelongsToAScene)
{
    const char* const scene =
        "FileInfo.title = \"T\"; FileInfo.version = 2; Sim.gravity = [1.0, -5.0]; "
        "Sim.airSwitch = false; Scene.Camera.pan = [1.0, 2.0]; Scene.Camera.zoom = 64.0; "
        "App.borders = true; "
        "Scene.addPlane { entityID = 1; geomID = 1; pos = [0.3, -1.7]; angle = 1.3 };"
        "Scene.addBox { entityID = 2; geomID = 2; pos = [0.1, 2.2]; angle = -2.1; "
        "size = [0.7, 1.3]; friction = 0.3; density = 0.7; color = [0.1, 0.2, 0.3, 0.4] };"
        "Scene.addCircle { entityID = 3; geomID = 3; pos = [-3.3, 2.1]; radius = 0.77; "
        "angle = 0.9 };"
        "Scene.addPolygon { entityID = 4; geomID = 4; pos = [5.1, 3.3]; angle = 0.123; "
        "vecs = [[0.11, 0.07], [1.23, 0.31], [0.77, 1.91], [0.5, 0.6]] };"
        "Scene.addGroup { name = \"pair\"; entityIDs = [2, 3] };"
        "Scene.addGroup { name = \"selected\"; entityIDs = [4] }";
    Load(scene);
    const util::String first = Save();
    Load(first);
    EXPECT_EQ(first, Save());

    ASSERT_EQ(4u, TheScene()->GetEntities().size());
    EXPECT_EQ(2u, TheScene()->GetGroupByName("pair")->GetEntities().size());
    EXPECT_TRUE(TheScene()->IsSelected(TheScene()->GetEntities()[3]));
    EXPECT_EQ(Vec2(1, 2), TheCamera()->GetPan());
    EXPECT_EQ("[1, -5]", Run("Sim.gravity"));
    Run("Sim.airSwitch = true");
}

TEST_F(SerializerTest, DoesNotLetAnglesCreep)
{
    for (int i = -300; i <= 300; ++i)
        Add("Scene.addCircle { pos = [" + util::ToString(i * 5) +
            ".0, 0.0]; angle = " + util::ToString(i / 97.0) + " }");
    const auto angles = [this]
    {
        std::vector<util::String> lines;
        for (const util::String& line : util::Split(Save(), '\n'))
            if (line.find("angle") != util::String::npos)
                lines.push_back(line);
        return lines;
    };
    const auto before = angles();
    ASSERT_EQ(601u, before.size());
    Load(Save());
    EXPECT_EQ(before, angles());
}

TEST_F(SerializerTest, WritesEntitiesInTheOrderOfTheScene)
{
    Add("Scene.addCircle { pos = [1.0, 0.0] }");
    Add("Scene.addPlane { }");
    Add("Scene.addBox { pos = [2.0, 0.0] }");
    const util::String text = Save();
    EXPECT_LT(text.find("Scene.addCircle"), text.find("Scene.addPlane"));
    EXPECT_LT(text.find("Scene.addPlane"), text.find("Scene.addBox"));
    EXPECT_TRUE(Has(Block(text, "Scene.addBox"), "zDepth = 2.0"));
}

TEST_F(SerializerTest, SortsWhatItReadsByDepth)
{
    Load("Scene.addBox { entityID = 1; zDepth = 2.0 }; "
         "Scene.addCircle { entityID = 2; zDepth = 1.0; pos = [5.0, 0.0] }");
    ASSERT_EQ(2u, TheScene()->GetEntities().size());
    EXPECT_EQ(1, TheScene()->GetEntities()[0]->GetZDepth());
}

TEST_F(SerializerTest, GivesWhatATextAdded)
{
    Add("Scene.addBox { pos = [9.0, 9.0] }");
    const GroupPtr loaded =
        TheSerializer()->Deserialize("Scene.addBox { }; Scene.addCircle { pos = [4.0, 0.0] }");
    EXPECT_EQ(2u, loaded->GetEntities().size());
    EXPECT_EQ(3u, TheScene()->GetEntities().size());
}

TEST_F(SerializerTest, RunsNothingOfATextThatDoesNotParse)
{
    EXPECT_THROW(TheSerializer()->Deserialize("x17 = 1; Scene.addBox { }; }"), BadDataException);
    EXPECT_TRUE(TheScene()->GetEntities().empty());
    EXPECT_FALSE(Parser()->GetRootClosure()->HasVariable("x17"));
    try
    {
        TheSerializer()->Deserialize("(");
        FAIL();
    }
    catch (BadDataException& e)
    {
        EXPECT_STREQ("The text is not a valid scene or Quiblet", e.what());
    }
}

TEST_F(SerializerTest, IsAProgramThatComputesWhatItStores)
{
    const auto box = Add("Scene.addBox { w = 1.5; size = [w, w + 1.0]; pos = [0.0, w * 2.0] }");
    ASSERT_TRUE(box);
    EXPECT_EQ(Vec2(0, 3), GeomOf(box).GetCenter());
}

TEST_F(SerializerTest, SkipsUnknownMembersOfAGroup)
{
    const auto box = Add("Scene.addBox { entityID = 5 }");
    Run("Scene.addGroup { name = \"g\"; entityIDs = [4, 5, 6] }");
    const GroupPtr group = TheScene()->GetGroupByName("g");
    ASSERT_TRUE(group);
    EXPECT_EQ(1u, group->GetEntities().size());
    EXPECT_TRUE(group->Contains(box));
}

TEST_F(SerializerTest, ForgetsTheIdsOfAnEarlierText)
{
    Load("Scene.addBox { entityID = 5 }");
    Load("Scene.addGroup { name = \"g\"; entityIDs = [5] }");
    EXPECT_TRUE(TheScene()->GetGroupByName("g")->IsEmpty());
}

TEST_F(SerializerTest, KnowsTheIdsThatTheTextGave)
{
    Load("Scene.addBox { entityID = 500; geomID = 700 }; "
         "Scene.addBox { id = 701; pos = [5.0, 0.0] }; "
         "Scene.addBox { entityID = 500; geomID = 700; pos = [9.0, 0.0] }");
    ASSERT_EQ(3u, TheScene()->GetEntities().size());
    const auto entity = [](int i)
    { return util::DynamicCast<GeomEntity>(TheScene()->GetEntities()[i]); };
    EXPECT_EQ(500u, TheSerializer()->GetFileID(*entity(0)));
    EXPECT_EQ(entity(1)->GetID(), TheSerializer()->GetFileID(*entity(1)));
    EXPECT_EQ(500u, TheSerializer()->GetFileID(*entity(2)));
    EXPECT_EQ(700u, TheSerializer()->GetFileGeomID(GeomOf(entity(0)).GetID()));
    EXPECT_EQ(701u, TheSerializer()->GetFileGeomID(GeomOf(entity(1)).GetID()));
    EXPECT_EQ(700u, TheSerializer()->GetFileGeomID(GeomOf(entity(2)).GetID()));
    EXPECT_EQ(0u, TheSerializer()->GetFileGeomID(Sim()->GetWorldGeom()->GetID()));
    // In a group it is the latest of them.
    Run("Scene.addGroup { name = \"g\"; entityIDs = [500] }");
    EXPECT_TRUE(TheScene()->GetGroupByName("g")->Contains(entity(2)));
    EXPECT_EQ(1u, TheScene()->GetGroupByName("g")->GetEntities().size());
}

TEST_F(SerializerTest, PutsNothingIntoAGroupThatHasLeftTheScene)
{
    Run("Scene.addBox { entityID = 5 }; Scene.Clear; Scene.addBox { entityID = 6 }; "
        "Scene.addGroup { name = \"g\"; entityIDs = [5, 6] }");
    EXPECT_EQ(1u, TheScene()->GetGroupByName("g")->GetEntities().size());
    const EntityPtr box = TheScene()->GetEntities()[0];
    EXPECT_EQ(6u, TheSerializer()->GetFileID(*box));
    TheScene()->RemoveEntity(box);
    EXPECT_EQ(box->GetID(), TheSerializer()->GetFileID(*box));
    Run("Scene.addGroup { name = \"h\"; entityIDs = [6] }");
    EXPECT_TRUE(TheScene()->GetGroupByName("h")->IsEmpty());
    // An erased one does not take the id along that a later one bears.
    Run("Scene.addBox { entityID = 7 }; Scene.addBox { entityID = 7; pos = [5.0, 0.0] }");
    TheScene()->RemoveEntity(TheScene()->GetEntities()[0]);
    Run("Scene.addGroup { name = \"i\"; entityIDs = [7] }");
    EXPECT_EQ(1u, TheScene()->GetGroupByName("i")->GetEntities().size());
}

TEST_F(SerializerTest, WarnsOfANewerVersionAndGoesOn)
{
    // Each time, not only when it is news.
    for (int i = 0; i < 2; ++i)
    {
        test::LogCapture log(logging::LogError);
        Load("FileInfo.version = 3; Scene.addBox { color = [0.1, 0.2, 0.3, 0.4] }");
        EXPECT_TRUE(log.Has("Loading scene from a newer version of Quib. Some things may be "
                            "missing; please get the latest version from the download page."))
            << log.Text();
        EXPECT_EQ(1u, TheScene()->GetEntities().size());
    }
}

TEST_F(SerializerTest, WritesWaterWithoutItsVelocities)
{
    EXPECT_FALSE(Has(Save(), "Scene.addWater"));
    Load("Scene.addWater { vecs = [[1.0, 2.0], [3.0, 4.0]] }; Scene.addWater { vecs = [[5.0, 6.0]] "
         "}; "
         "Scene.addWater { vecs = [] }");
    ASSERT_EQ(3u, Sim()->GetParticles().size());
    EXPECT_EQ(Vec2(), Sim()->GetParticles()[0]->GetVel());
    Sim()->GetParticles()[0]->SetVel(Vec2(7, 8));
    // Deliberate: water that flows when it is saved stands still when it is loaded.
    const util::String saved = Save();
    EXPECT_EQ(1u, Count(saved, "Scene.addWater"));
    EXPECT_TRUE(Has(saved, "Scene.addWater({vecs = [[1.0, 2.0], [3.0, 4.0], [5.0, 6.0]]})"));
    Load(saved);
    ASSERT_EQ(3u, Sim()->GetParticles().size());
    EXPECT_EQ(Vec2(1, 2), Sim()->GetParticles()[0]->GetPos());
    EXPECT_EQ(Vec2(), Sim()->GetParticles()[0]->GetVel());
}

TEST_F(SerializerTest, LeavesOutWaterWithoutAPlace)
{
    test::LogCapture log(logging::LogWarning);
    Load("Scene.addWater { vecs = [[1.0, 2.0], [0.0 / 0.0, 4.0], [1.0 / 0.0, 6.0]] }");
    EXPECT_TRUE(log.Has("Bad water in scene file: 2 without a place")) << log.Text();
    EXPECT_EQ(1u, Sim()->GetParticles().size());
    Load("Scene.addWater { }; Scene.addWater { vecs = 3 }; Scene.addWater { vecs = [1.0] }");
    EXPECT_TRUE(Sim()->GetParticles().empty());
}

TEST_F(SerializerTest, WritesAQuibletWithoutWhatBelongsToAScene)
{
    Load("FileInfo.title = \"T\"; Scene.addBox { entityID = 1 }; "
         "Scene.addCircle { entityID = 2; pos = [5.0, 0.0]; zDepth = 1.0 }; "
         "Scene.addCircle { entityID = 3; pos = [9.0, 0.0]; zDepth = 2.0 }; "
         "Scene.addWater { vecs = [[1.0, 9.0]] }; "
         "Scene.addGroup { name = \"g\"; entityIDs = [1, 2, 3] }; "
         "Scene.addWidget { widgetID = \"A\"; groupID = \"g\" }");
    const GroupPtr group = QUIB_NEW Group(EntityAt(2));
    group->Add(EntityAt(0));
    const util::String text = TheSerializer()->SerializeQuiblet(group);
    EXPECT_TRUE(util::starts_with(text, "// Quiblet created by Quib beta 4.0\n\n"
                                        "FileInfo.title = \"T\";\nFileInfo.version = 2;\n"
                                        "Scene.addBox({\n"))
        << text;
    EXPECT_EQ(1u, Count(text, "Scene.addCircle("));
    EXPECT_EQ("2.0", ValueOf(Block(text, "Scene.addCircle"), "zDepth"));
    EXPECT_EQ("2", ValueOf(Block(text, "Scene.addCircle"), "entityID"));
    for (const char* part : {"Sim.", "App.", "addWater", "addGroup", "addWidget"})
        EXPECT_FALSE(Has(text, part)) << part;
    // A group of nothing is a text too.
    EXPECT_EQ("// Quiblet created by Quib beta 4.0\n\nFileInfo.title = \"T\";\n"
              "FileInfo.version = 2",
              TheSerializer()->SerializeQuiblet(QUIB_NEW Group));
}

TEST_F(SerializerTest, SortsWhatItBringsInBetweenWhatIsThere)
{
    Add("Scene.addBox { }");
    Add("Scene.addCircle { pos = [9.0, 0.0] }");
    TheScene()->GetEntities()[0]->SetZDepth(100); // of long ago
    TheSerializer()->Deserialize("Scene.addPlane { zDepth = 0.5 }");
    EXPECT_FALSE(EntityAt(1)->GetAABB().IsFinite()); // the plane
    EXPECT_EQ(3u, TheScene()->GetEntities().size());
}

TEST_F(SerializerTest, TakesAColourWithoutAlphaInAFileOfVersion1)
{
    Load("FileInfo.version = 1; Scene.addBox { color = [0.1, 0.2, 0.3] }");
    EXPECT_EQ(math::Vec4(0.1f, 0.2f, 0.3f, 1), EntityAt(0)->GetColor4());
    // The version is that of one text.
    Load("Scene.addBox { color = [0.1, 0.2, 0.3, 0.5] }");
    ASSERT_EQ(1u, TheScene()->GetEntities().size());
    EXPECT_EQ(math::Vec4(0.1f, 0.2f, 0.3f, 0.5f), EntityAt(0)->GetColor4());
}

TEST_F(SerializerTest, LetsWhatIsRunNextNameWhatItHasRegistered)
{
    Load("Scene.addBox { entityID = 500; geomID = 600 }");
    const EntityPtr box = EntityAt(0);
    TheScene()->ClearScene();
    TheScene()->AddEntity(box);
    TheSerializer()->RegisterEntity(box);
    const unsigned geomID = box->AsGeomEntity()->GetGeom()->GetID();
    Run("Scene.addGroup { name = \"g\"; entityIDs = [" + util::ToString(box->GetID()) + "] }");
    EXPECT_TRUE(TheScene()->GetGroupByName("g")->Contains(box));
    Run("Scene.addHinge { geom0 = " + util::ToString(geomID) +
        "; geom0pos = [0.0, 0.0]; world1pos = [0.0, 0.0] }");
    EXPECT_EQ(2u, TheScene()->GetEntities().size());

    // The pieces of a snapshot tell the ids of this run.
    script::CodeBlock block;
    TheSerializer()->SerializeGroup(block, TheScene()->GetGroupByName("g"));
    EXPECT_EQ("[" + util::ToString(box->GetID()) + "]", ValueOf(block.ToCode(), "entityIDs"));
}

TEST_F(SerializerTest, TakesOnlyABlockThatStandsWhereItIsCalled)
{
    const char* const message = "Bad argument to scene creator function, must be an inline "
                                "function with zero arguments (i.e.: {...} )";
    for (const char* command :
         {"addPlane", "addCircle", "addPolygon", "addBox", "addFixjoint", "addHinge", "addSpring",
          "addPen", "addWater", "addGroup", "addWidget"})
        for (const char* argument : {"3", "\"text\"", "[1, 2]", "(x) => { x }", "kept", "Scene"})
        {
            SCOPED_TRACE(util::String(command) + "(" + argument + ")");
            test::LogCapture log;
            Run("kept = { size = [1.0, 1.0] }");
            Run(util::String("Scene.") + command + "(" + argument + ")");
            EXPECT_TRUE(log.Has(message)) << log.Text();
            EXPECT_TRUE(TheScene()->GetEntities().empty());
        }
    Parser()->GetRootClosure()->RemoveVariable("kept");
}

TEST_F(SerializerTest, FormulasOfABlockFindWhatTheyName)
{
    const float airDensity = Sim()->m_airDensity, fallLimit = Sim()->m_fallLimit;
    test::LogCapture log(logging::LogWarning);
    Load("Scene.addBox { half = 0.5; quarter = { half * 0.5 }; friction = { quarter + half }; "
         "restitution = { { half }; quarter } }; "
         // One that no attribute of the entity holds.
         "Scene.addBox { eighth = { 0.125 }; friction = { 0.75 }; Sim.airDensity = { eighth } }; "
         // By way of an operator, and from within functions that the block calls.
         "Scene.addBox { plus = (a, b) => { a + b }; infix 1 left: _ with _ => plus; friction = { "
         "0.25 "
         "with 0.125 } }; "
         "Scene.addBox { k = 0.375; start = { Sim.fallLimit = { k } }; start }; "
         "Scene.addBox { third = { 0.3125 }; Scene.addCircle { restitution = { third } } }");
    for (int i = 0; i < 3; ++i)
        Parser()->Update();
    EXPECT_EQ("", log.Text());
    EXPECT_EQ(0.375f, EntityAt(2)->AsGeomEntity()->GetGeom()->GetFriction());
    EXPECT_EQ(0.375f, Sim()->m_fallLimit);
    EXPECT_EQ(0.3125f, EntityAt(4)->AsGeomEntity()->GetGeom()->GetRestitution());
    EXPECT_EQ(0.75f, EntityAt(0)->AsGeomEntity()->GetGeom()->GetFriction());
    EXPECT_EQ(0.25f, EntityAt(0)->AsGeomEntity()->GetGeom()->GetRestitution());
    EXPECT_TRUE(EntityAt(0)->GetObject("friction")->IsFunction());
    EXPECT_EQ(0.75f, EntityAt(1)->AsGeomEntity()->GetGeom()->GetFriction());
    EXPECT_EQ(0.125f, Sim()->m_airDensity);
    Sim()->m_airDensity = airDensity;
    Sim()->m_fallLimit = fallLimit;
}

TEST_F(SerializerTest, OrdersGroupsAsTheyWillStandInTheFile)
{
    // The members' order of creation is not that of their depth.
    const util::String saved =
        ExpectStable("Scene.addBox { entityID = 1; zDepth = 2.0 }; "
                     "Scene.addBox { entityID = 2; pos = [5.0, 0.0]; zDepth = 1.0 }; "
                     "Scene.addGroup { name = \"b\"; entityIDs = [1] }; "
                     "Scene.addGroup { name = \"b\"; entityIDs = [2] }; "
                     "Scene.addGroup { name = \"a\"; entityIDs = [2] }");
    EXPECT_EQ("\"a\"", ValueOf(Block(saved, "Scene.addGroup", 0), "name"));
    EXPECT_EQ("[1]", ValueOf(Block(saved, "Scene.addGroup", 1), "entityIDs"));
    EXPECT_EQ("[2]", ValueOf(Block(saved, "Scene.addGroup", 2), "entityIDs"));
    EXPECT_EQ("\"selected\"", ValueOf(Block(saved, "Scene.addGroup", 3), "name"));
}

TEST_F(SerializerTest, ReadsBackWhatIsHugeTinyAndInfinite)
{
    const util::String saved = ExpectStable(
        "Scene.addBox { geomID = 1; pos = [3.5e20, -2.5e-20]; size = [1.5e-3, 2.5e6]; "
        "color = [0.1, 0.2, 0.3, 0.4] }; "
        "Scene.addHinge { geom0 = 1; geom0pos = [1.5e-20, 0.0]; geom1 = 0; geom1pos = [3.5e20, "
        "0.0]; "
        "motorTorque = 1.0 / 0.0; impulseLimit = -1.0 / 0.0; motorSpeed = 1.5e12; zDepth = 1.0 }");
    EXPECT_EQ(1u, Count(saved, "Scene.addBox"));
    EXPECT_EQ(1u, Count(saved, "Scene.addHinge"));
    EXPECT_EQ(2u, TheScene()->GetEntities().size());
}
}
}
