#include "SerializerFixture.h"

#include "app/Chain.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/SpringEntity.h"
#include "physics/WorldGeom.h"

#include <SDL_keysym.h>

using math::Vec2;

namespace app
{
namespace
{
class SerializerJointsTest : public SerializerFixture
{
protected:
    /// The last entity of the scene as one of that kind.
    template<typename T>
    static util::SharedPtr<T> Last()
    {
        if (TheScene()->GetEntities().empty())
            return nullptr;
        return util::DynamicCast<T>(TheScene()->GetEntities().back());
    }
    static physics::GeomPtr WorldGeom() { return Sim()->GetWorldGeom(); }
    static physics::GeomPtr GeomAt(size_t i)
    {
        return util::DynamicCast<GeomEntity>(EntityAt(i))->GetGeom();
    }
    static void ExpectPoint(const Vec2& expected, const Vec2& p)
    {
        EXPECT_NEAR(expected.x, p.x, 1e-5f);
        EXPECT_NEAR(expected.y, p.y, 1e-5f);
    }
};

// A turned box, so that a point of it is not the same in the world.
const char* const TwoBoxes = "Scene.addBox { entityID = 11; geomID = 21; pos = [3.0, 0.0]; "
                             "angle = 1.5707964; size = [2.0, 2.0]; zDepth = 0.0 }; "
                             "Scene.addBox { entityID = 12; geomID = 22; pos = [5.0, 0.0]; "
                             "size = [2.0, 2.0]; zDepth = 1.0 }; ";

TEST_F(SerializerJointsTest, FastensBothEndsToGeometriesOfTheText)
{
    Load(util::String(TwoBoxes) +
         "Scene.addHinge { entityID = 13; size = 0.5; geom0 = 21; geom0pos = [0.25, -1.0]; "
         "geom1 = 22; geom1pos = [-1.0, 0.25]; zDepth = 2.0 }");
    const auto hinge = Last<HingeEntity>();
    ASSERT_TRUE(hinge);
    EXPECT_EQ(GeomAt(0), hinge->GetGeom(0));
    EXPECT_EQ(GeomAt(1), hinge->GetGeom(1));
    ExpectPoint(Vec2(4, 0.25f), hinge->GetWorldPoint(0));
    ExpectPoint(Vec2(4, 0.25f), hinge->GetWorldPoint(1));
    EXPECT_EQ(0.5f, hinge->GetSize());
    EXPECT_TRUE(hinge->IsAlive());
    const util::String block = Block(Save(), "Scene.addHinge");
    EXPECT_EQ("1", ValueOf(block, "geom0"));
    EXPECT_EQ("[0.25, -1.0]", ValueOf(block, "geom0pos"));
    EXPECT_EQ("2", ValueOf(block, "geom1"));
    EXPECT_EQ("[-1.0, 0.25]", ValueOf(block, "geom1pos"));
    EXPECT_EQ("0.5", ValueOf(block, "size"));
    EXPECT_EQ("3", ValueOf(block, "entityID"));
    EXPECT_FALSE(Has(block, "world"));
    EXPECT_FALSE(Has(block, "motor"));
    EXPECT_FALSE(Has(block, "Limit"));
    EXPECT_FALSE(Has(block, "button"));
    EXPECT_FALSE(Has(block, "geomID"));
}

TEST_F(SerializerJointsTest, KnowsTheWorldUnderTheId0)
{
    Load("Scene.addBox { geomID = 3; pos = [0.0, 1.0]; size = [1.0, 2.0] }; "
         "Scene.addHinge { geom0 = 3; geom0pos = [0.0, 0.5]; geom1 = 0; geom1pos = [0.0, 1.5]; "
         "zDepth = 2.0 }");
    const auto hinge = Last<HingeEntity>();
    ASSERT_TRUE(hinge);
    EXPECT_EQ(WorldGeom(), hinge->GetGeom(1));
    EXPECT_TRUE(hinge->IsAttachedToWorld());
    ExpectPoint(Vec2(0, 1.5f), hinge->GetWorldPoint(0));
    EXPECT_EQ("0", ValueOf(Block(Save(), "Scene.addHinge"), "geom1"));
}

TEST_F(SerializerJointsTest, KeepsTheWorldUnderItsIdWhateverATextSays)
{
    test::LogCapture log(logging::LogWarning);
    Load("Scene.addBox { geomID = 0; pos = [0.0, 1.0] }; "
         "Scene.addBox { geomID = 1; pos = [0.0, 1.0]; zDepth = 1.0 }; "
         "Scene.addHinge { geom0 = 0; geom0pos = [0.0, 1.0]; geom1 = 1; geom1pos = [0.0, 0.0]; "
         "zDepth = 2.0 }");
    EXPECT_TRUE(log.Has("Bad geomID in scene file: 0 is the world's")) << log.Text();
    EXPECT_EQ(3u, TheScene()->GetEntities().size());
    EXPECT_EQ(WorldGeom(), Last<HingeEntity>()->GetGeom(0));
}

TEST_F(SerializerJointsTest, PinsAnEndToTheWorldWhereOnlyAPointOfItIsKnown)
{
    // Whatever lies there: the end was on something that is not in the text.
    Load(util::String(TwoBoxes) +
         "Scene.addHinge { geom0 = -1; world0pos = [5.0, 0.5]; geom1 = 22; geom1pos = [0.0, 0.5]; "
         "zDepth = 2.0 }; "
         "Scene.addHinge { geom0 = 22; geom0pos = [0.0, 0.5]; geom1 = 99; world1pos = [5.0, 0.5]; "
         "zDepth = 3.0 }");
    ASSERT_EQ(4u, TheScene()->GetEntities().size());
    const auto first = util::DynamicCast<HingeEntity>(EntityAt(2));
    const auto second = util::DynamicCast<HingeEntity>(EntityAt(3));
    EXPECT_EQ(WorldGeom(), first->GetGeom(0));
    ExpectPoint(Vec2(5, 0.5f), first->GetLocalPoint(0));
    EXPECT_EQ(WorldGeom(), second->GetGeom(1));
    EXPECT_EQ(GeomAt(1), second->GetGeom(0));
}

TEST_F(SerializerJointsTest, TakesThePointOfTheWorldBeforeThatOfTheGeometry)
{
    Load(util::String(TwoBoxes) +
         "Scene.addHinge { geom0 = 21; geom0pos = [0.0, 0.0]; world0pos = [3.5, 0.0]; "
         "geom1 = 0; world1pos = [3.5, 0.0]; zDepth = 2.0 }");
    const auto hinge = Last<HingeEntity>();
    EXPECT_EQ(GeomAt(0), hinge->GetGeom(0));
    ExpectPoint(Vec2(3.5f, 0), hinge->GetWorldPoint(0));
    ExpectPoint(Vec2(0, -0.5f), hinge->GetLocalPoint(0));
}

TEST_F(SerializerJointsTest, FindsWhatLiesAtThePointOfAnEarlierFile)
{
    const util::String boxes = "Scene.addBox { geomID = 1; size = [2.0, 2.0] }; "
                               "Scene.addBox { geomID = 2; size = [2.0, 2.0]; pos = [1.0, 0.0] }; ";
    const struct
    {
        const char *keys, *what;
        int geom0, geom1; // places in the scene, -1 the world
    } cases[] = {
        {"pos = [0.5, 0.0]", "the topmost, and what lies below it", 1, 0},
        {"pos = [-0.5, 0.0]", "the only one, and the world", 0, -1},
        {"pos0 = [-0.5, 0.0]; pos1 = [1.5, 0.0]", "a point each", 0, 1},
        {"pos0 = [-0.5, 0.0]; pos = [1.5, 0.0]", "its own point before the common one", 0, 1},
        {"pos = [0.5, 0.0]; geom1 = 2", "another than the other end has", 0, 1},
        {"pos = [0.5, 0.0]; geom0 = 1", "the other than the first end has", 0, 1},
        {"pos = [0.5, 0.0]; geom0 = 77; geom1 = 1", "for an unknown id", 1, 0},
        {"geom0 = 1; pos0 = [0.5, 0.0]; geom1 = 2; geom1pos = [-0.5, 0.0]", "a mixture", 0, 1},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        Load(boxes + "Scene.addHinge { zDepth = 5.0; " + c.keys + " }");
        ASSERT_EQ(3u, TheScene()->GetEntities().size());
        const auto hinge = Last<HingeEntity>();
        ASSERT_TRUE(hinge);
        EXPECT_EQ(GeomAt(c.geom0), hinge->GetGeom(0));
        EXPECT_EQ(c.geom1 < 0 ? WorldGeom() : GeomAt(c.geom1), hinge->GetGeom(1));
    }
}

TEST_F(SerializerJointsTest, DropsAJointWithoutAPlace)
{
    const char* const cases[] = {
        "",                                                                     // nothing at all
        "geom0 = 21; geom1 = 22",                                               // no points
        "geom0 = 21; geom0pos = [0.0, 0.0]; geom1 = 22",                        // one point
        "geom0 = 99; geom0pos = [0.0, 0.0]; geom1 = 22; geom1pos = [0.0, 0.0]", // unknown
        "geom0 = -1; geom0pos = [0.0, 0.0]; geom1 = 22; geom1pos = [0.0, 0.0]",
        "geom0 = 21; geom0pos = [0.0, 1.0 / 0.0]; geom1 = 22; geom1pos = [0.0, 0.0]",
        "pos = [0.0 / 0.0, 0.0]",
        "geom0 = -1; world0pos = [-1.0 / 0.0, 0.0]; geom1 = 0; geom1pos = [0.0, 0.0]",
        "geom0 = 0; geom0pos = [50.0, 50.0]; pos1 = [50.0, 50.0]", // only the world there
    };
    for (const char* keys : cases)
        for (const char* command : {"addHinge", "addSpring", "addFixjoint"})
        {
            SCOPED_TRACE(util::String(command) + " { " + keys + " }");
            test::LogCapture log(logging::LogError);
            Load(util::String(TwoBoxes) + "Scene." + command + " { " + keys + " }");
            EXPECT_EQ(1u, log.Count("Bad joint")) << log.Text();
            EXPECT_EQ(2u, TheScene()->GetEntities().size());
        }
}

TEST_F(SerializerJointsTest, LosesOnlyTheJointWhoseValuesAreBad)
{
    test::LogCapture log;
    Load(util::String(TwoBoxes) +
         "Scene.addHinge { geom0 = \"21\"; pos = [4.0, 0.0] }; "
         "Scene.addHinge { pos = 3 }; "
         "Scene.addHinge { size = -1.0; pos = [4.0, 0.0] }; "
         "Scene.addHinge { size = \"big\"; pos = [4.0, 0.0] }; "
         "Scene.addHinge { buttonForward = \"no_such_key\"; pos = [4.0, 0.0] }; "
         "Scene.addSpring { length = 0.0 / 0.0; pos0 = [3.0, 0.0]; pos1 = [5.0, 0.0] }; "
         "Scene.addPen { geom = [1]; pos = [3.0, 0.0] }; "
         "Scene.addHinge { pos = [4.0, 0.0]; zDepth = 9.0 }");
    EXPECT_EQ(3u, TheScene()->GetEntities().size()) << log.Text();
    EXPECT_TRUE(Last<HingeEntity>());
    EXPECT_TRUE(log.Has("Bad value of key \"geom0\"")) << log.Text();
}

TEST_F(SerializerJointsTest, KeepsWhatAHingeIsSetTo)
{
    Load(util::String(TwoBoxes) +
         "Scene.addHinge { pos = [4.0, 0.0]; zDepth = 2.0; motor = true; ccw = true; "
         "motorSpeed = 3.0; motorTorque = 7.0; impulseLimit = 5.0; distanceLimit = 0.5; "
         "buttonForward = \"a\"; buttonBack = \"toggle b\"; buttonBreak = \"left_ctrl c\" }");
    Load(Save());
    const util::String block = Block(Save(), "Scene.addHinge");
    EXPECT_EQ("true", ValueOf(block, "motor"));
    EXPECT_EQ("true", ValueOf(block, "ccw"));
    EXPECT_EQ("3.0", ValueOf(block, "motorSpeed"));
    EXPECT_EQ("7.0", ValueOf(block, "motorTorque"));
    EXPECT_EQ("5.0", ValueOf(block, "impulseLimit"));
    EXPECT_EQ("0.5", ValueOf(block, "distanceLimit"));
    EXPECT_EQ("\"a\"", ValueOf(block, "buttonForward"));
    EXPECT_EQ("\"toggle b\"", ValueOf(block, "buttonBack"));
    EXPECT_EQ("\"left_ctrl c\"", ValueOf(block, "buttonBreak"));
}

TEST_F(SerializerJointsTest, BindsTheArrowKeysOfAnEarlierHinge)
{
    Load(util::String(TwoBoxes) +
         "Scene.addHinge { pos = [4.0, 0.0]; zDepth = 2.0; controller = \"arrowkeys\" }");
    const auto hinge = Last<HingeEntity>();
    ASSERT_TRUE(hinge);
    EXPECT_EQ(std::vector<int>{275}, hinge->GetButtonForward().GetKeySet());
    EXPECT_EQ(std::vector<int>{276}, hinge->GetButtonBack().GetKeySet());
    EXPECT_EQ(std::vector<int>{274}, hinge->GetButtonBreak().GetKeySet());
    const util::String block = Block(Save(), "Scene.addHinge");
    EXPECT_EQ("true", ValueOf(block, "motor"));
    EXPECT_EQ("\"right\"", ValueOf(block, "buttonForward"));
    EXPECT_EQ("\"left\"", ValueOf(block, "buttonBack"));
    EXPECT_EQ("\"down\"", ValueOf(block, "buttonBreak"));
    EXPECT_FALSE(Has(block, "controller"));
}

TEST_F(SerializerJointsTest, TellsOfAnEarlierControllerThatItDoesNotKnow)
{
    test::LogCapture log(logging::LogWarning);
    Load(util::String(TwoBoxes) +
         "Scene.addHinge { pos = [4.0, 0.0]; zDepth = 2.0; controller = \"joystick\" }");
    EXPECT_TRUE(log.Has("Unknown controller of a hinge: joystick")) << log.Text();
    ASSERT_TRUE(Last<HingeEntity>());
    EXPECT_FALSE(Last<HingeEntity>()->GetButtonForward().IsBound());
}

TEST_F(SerializerJointsTest, KeepsTheLengthOfASpring)
{
    Load(util::String(TwoBoxes) +
         "Scene.addSpring { geom0 = 21; geom0pos = [0.0, 0.0]; geom1 = 22; geom1pos = [0.0, 0.0]; "
         "length = 1.25; strengthFactor = 0.5; dampingFactor = 0.75; zDepth = 2.0 }");
    const auto spring = Last<SpringEntity>();
    ASSERT_TRUE(spring);
    EXPECT_EQ(1.25f, spring->GetTargetLength());
    const util::String block = Block(Save(), "Scene.addSpring");
    EXPECT_EQ("1.25", ValueOf(block, "length"));
    EXPECT_EQ("0.5", ValueOf(block, "strengthFactor"));
    EXPECT_EQ("0.75", ValueOf(block, "dampingFactor"));
}

TEST_F(SerializerJointsTest, GivesASpringWithoutALengthThatOfItsEnds)
{
    Load(util::String(TwoBoxes) +
         "Scene.addSpring { pos0 = [3.0, 0.0]; pos1 = [5.0, 0.0]; zDepth = 2.0 }");
    ASSERT_TRUE(Last<SpringEntity>());
    EXPECT_NEAR(2, Last<SpringEntity>()->GetTargetLength(), 1e-5f);
    EXPECT_EQ("", ValueOf(Block(Save(), "Scene.addSpring"), "strengthFactor"));
}

TEST_F(SerializerJointsTest, WeldsWhatAFixJointNames)
{
    Load(util::String(TwoBoxes) +
         "Scene.addFixjoint { geom0 = 21; geom0pos = [0.0, -1.0]; geom1 = 22; "
         "geom1pos = [-1.0, 0.0]; zDepth = 2.0 }");
    ASSERT_TRUE(Last<FixJointEntity>());
    EXPECT_TRUE(Last<FixJointEntity>()->IsAlive());
    EXPECT_EQ(GeomAt(0)->GetBodyPtr(), GeomAt(1)->GetBodyPtr());
    const util::String saved = Save();
    EXPECT_EQ(1u, Count(saved, "Scene.addFixjoint"));
    Load(saved);
    EXPECT_EQ(GeomAt(0)->GetBodyPtr(), GeomAt(1)->GetBodyPtr());
}

TEST_F(SerializerJointsTest, PutsAPenWhereItWas)
{
    Load(util::String(TwoBoxes) +
         "Scene.addPen { geom = 21; relPoint = [0.5, 0.25]; size = 0.5; fadeTime = 3.0; "
         "zDepth = 2.0 }; "
         "Scene.addPen { geom = 22; pos = [5.5, 0.0]; zDepth = 3.0 }; "
         "Scene.addPen { geom = -1; pos = [3.5, 0.0]; zDepth = 4.0 }; "
         "Scene.addPen { geom = 99; relPoint = [0.0, 0.0]; pos = [50.0, 50.0]; zDepth = 5.0 }; "
         "Scene.addPen { pos = [4.5, 0.0]; zDepth = 6.0 }");
    ASSERT_EQ(7u, TheScene()->GetEntities().size());
    const auto pen = [](size_t i) { return util::DynamicCast<PenEntity>(EntityAt(2 + i)); };
    EXPECT_EQ(GeomAt(0), pen(0)->GetGeom());
    EXPECT_EQ(Vec2(0.5f, 0.25f), pen(0)->GetLocalPoint());
    EXPECT_EQ(0.5f, pen(0)->GetSize());
    EXPECT_EQ(GeomAt(1), pen(1)->GetGeom());
    ExpectPoint(Vec2(0.5f, 0), pen(1)->GetLocalPoint());
    EXPECT_EQ(GeomAt(0), pen(2)->GetGeom());
    ExpectPoint(Vec2(3.5f, 0), pen(2)->GetPos());
    EXPECT_EQ(WorldGeom(), pen(3)->GetGeom());
    EXPECT_EQ(GeomAt(1), pen(4)->GetGeom());
    const util::String block = Block(Save(), "Scene.addPen");
    EXPECT_EQ("1", ValueOf(block, "geom"));
    EXPECT_EQ("[0.5, 0.25]", ValueOf(block, "relPoint"));
    EXPECT_EQ("0.5", ValueOf(block, "size"));
    EXPECT_EQ("3.0", ValueOf(block, "fadeTime"));
    EXPECT_EQ("", ValueOf(block, "pos"));
}

TEST_F(SerializerJointsTest, DropsAPenWithoutAPlace)
{
    for (const char* keys :
         {"", "geom = 21", "geom = 99; relPoint = [0.0, 0.0]", "relPoint = [0.0, 0.0]",
          "geom = 21; relPoint = [0.0, 1.0 / 0.0]", "pos = [0.0 / 0.0, 0.0]"})
    {
        SCOPED_TRACE(keys);
        test::LogCapture log(logging::LogError);
        Load(util::String(TwoBoxes) + "Scene.addPen { " + keys + " }");
        EXPECT_EQ(1u, log.Count("Bad pen")) << log.Text();
        EXPECT_EQ(2u, TheScene()->GetEntities().size());
    }
}

TEST_F(SerializerJointsTest, PinsACopiedJointWhereItsOtherBodyStaysBehind)
{
    Load(util::String(TwoBoxes) +
         "Scene.addHinge { geom0 = 21; geom0pos = [0.25, -1.0]; geom1 = 22; "
         "geom1pos = [-1.0, 0.25]; zDepth = 2.0 }; "
         "Scene.addPen { geom = 21; relPoint = [0.0, 0.0]; zDepth = 3.0 }");
    const GroupPtr group = QUIB_NEW Group;
    for (size_t i = 1; i < 4; ++i)
        group->Add(EntityAt(i));
    const util::String text = TheSerializer()->SerializeQuiblet(group);
    util::String block = Block(text, "Scene.addHinge");
    EXPECT_EQ("-1", ValueOf(block, "geom0"));
    EXPECT_EQ("", ValueOf(block, "geom0pos"));
    EXPECT_EQ("1", ValueOf(block, "geom1"));
    EXPECT_EQ("[-1.0, 0.25]", ValueOf(block, "geom1pos"));
    EXPECT_EQ("", ValueOf(block, "world1pos"));
    EXPECT_EQ("-1", ValueOf(Block(text, "Scene.addPen"), "geom"));
    EXPECT_EQ("[3.0, 0.0]", ValueOf(Block(text, "Scene.addPen"), "pos"));

    // Pasted beside the original.
    const GroupPtr pasted = TheSerializer()->Deserialize(text);
    EXPECT_EQ(3u, pasted->GetEntities().size());
    EXPECT_EQ(7u, TheScene()->GetEntities().size());
    util::SharedPtr<HingeEntity> hinge;
    util::SharedPtr<GeomEntity> box;
    for (const EntityPtr& entity : pasted->GetEntities())
    {
        if (const auto isHinge = util::DynamicCast<HingeEntity>(entity))
            hinge = isHinge;
        if (const auto isGeom = util::DynamicCast<GeomEntity>(entity))
            box = isGeom;
    }
    ASSERT_TRUE(hinge && box);
    EXPECT_EQ(WorldGeom(), hinge->GetGeom(0));
    EXPECT_EQ(box->GetGeom(), hinge->GetGeom(1));
    ExpectPoint(Vec2(4, 0.25f), hinge->GetLocalPoint(0));
    EXPECT_TRUE(hinge->IsAlive());
}

TEST_F(SerializerJointsTest, WritesGeometriesBeforeWhatRefersToThem)
{
    // The hinge lies below both boxes.
    const util::String text =
        ExpectStable(util::String(TwoBoxes) +
                     "Scene.addHinge { geom0 = 21; geom0pos = [0.25, -1.0]; geom1 = 22; "
                     "geom1pos = [-1.0, 0.25]; zDepth = -5.0 }; "
                     "Scene.addGroup { name = \"g\"; entityIDs = [12] }");
    EXPECT_LT(text.rfind("Scene.addBox"), text.find("Scene.addHinge"));
    EXPECT_LT(text.find("Scene.addHinge"), text.find("Scene.addGroup"));
    EXPECT_EQ("0.0", ValueOf(Block(text, "Scene.addHinge"), "zDepth"));
    EXPECT_TRUE(util::DynamicCast<HingeEntity>(EntityAt(0)));
    EXPECT_EQ("[2]", ValueOf(Block(text, "Scene.addGroup"), "entityIDs"));
}

TEST_F(SerializerJointsTest, LeavesOutWhatHasDied)
{
    Load(util::String(TwoBoxes) +
         "Scene.addHinge { geom0 = 21; geom0pos = [0.25, -1.0]; geom1 = 22; "
         "geom1pos = [-1.0, 0.25]; zDepth = 2.0; entityID = 13 }; "
         "Scene.addGroup { name = \"g\"; entityIDs = [11, 12, 13] }");
    TheScene()->RemoveEntity(EntityAt(0));
    // The hinge goes with the next update. A file must not make a pin of it.
    const util::String text = Save();
    EXPECT_EQ(0u, Count(text, "Scene.addHinge"));
    EXPECT_EQ(1u, Count(text, "Scene.addBox"));
    EXPECT_EQ("[1]", ValueOf(Block(text, "Scene.addGroup"), "entityIDs"));
}

TEST_F(SerializerJointsTest, KeepsChains)
{
    util::String text;
    for (int i = 0; i < 5; ++i)
        text += "Scene.addCircle { entityID = " + util::ToString(i) +
                "; geomID = " + util::ToString(i + 1) + "; radius = 0.25; pos = [" +
                util::ToString(i) + ".0, 0.0]; chain = 70; chainNr = " + util::ToString(4 - i) +
                " }; ";
    text += "Scene.addCircle { pos = [0.0, 5.0]; chain = 71; chainNr = 0; zDepth = 1.0 }; "
            "Scene.addCircle { pos = [0.0, 9.0]; chain = 71; zDepth = 2.0 }";
    const util::String saved = ExpectStable(text);
    const ChainPtr chain = EntityAt(0)->GetChain();
    ASSERT_TRUE(chain);
    for (size_t i = 0; i < 5; ++i)
    {
        EXPECT_EQ(chain, EntityAt(i)->GetChain());
        EXPECT_EQ(4 - i, chain->IndexOf(*EntityAt(i)));
        const util::String block = Block(saved, "Scene.addCircle", int(i));
        EXPECT_EQ("1", ValueOf(block, "chain"));
        EXPECT_EQ(util::ToString(4 - i), ValueOf(block, "chainNr"));
    }
    EXPECT_NE(chain, EntityAt(5)->GetChain());
    EXPECT_EQ("2", ValueOf(Block(saved, "Scene.addCircle", 5), "chain"));
    // It takes both keys.
    EXPECT_FALSE(EntityAt(6)->GetChain());
    EXPECT_EQ("", ValueOf(Block(saved, "Scene.addCircle", 6), "chain"));
}

TEST_F(SerializerJointsTest, DoesNotMixTheChainsOfTwoTexts)
{
    const char* const text = "Scene.addCircle { chain = 1; chainNr = 0 }";
    TheSerializer()->Deserialize(text);
    TheSerializer()->Deserialize(text);
    ASSERT_EQ(2u, TheScene()->GetEntities().size());
    EXPECT_NE(EntityAt(0)->GetChain(), EntityAt(1)->GetChain());
    EXPECT_EQ("1", ValueOf(Block(Save(), "Scene.addCircle", 0), "chain"));
    EXPECT_EQ("2", ValueOf(Block(Save(), "Scene.addCircle", 1), "chain"));
}

TEST_F(SerializerJointsTest, LosesALinkWhosePlaceInTheChainIsBad)
{
    test::LogCapture log;
    Load("Scene.addCircle { chain = 1; chainNr = 100000; group = 3 }; "
         "Scene.addCircle { chain = 1; chainNr = -1; tracked = true }; "
         "Scene.addCircle { chain = 1; chainNr = \"last\" }; "
         "Scene.addCircle { chain = 1.5; chainNr = 1 }; "
         "Scene.addCircle { chain = 1; chainNr = 99999; color = [0.5, 0.5, 0.5, 1.0] }");
    EXPECT_EQ(1u, TheScene()->GetEntities().size()) << log.Text();
    EXPECT_TRUE(log.Has("Data assertion failed: \"index < 100000\"")) << log.Text();
    // Nor is it anywhere else.
    const GroupPtr group = TheScene()->GetGroupByName("group_3");
    EXPECT_TRUE(!group || group->IsEmpty());
    const GroupPtr tracked = TheCamera()->GetTrackedGroup();
    EXPECT_TRUE(!tracked || tracked->IsEmpty());
    EXPECT_EQ("99999", ValueOf(Block(Save(), "Scene.addCircle"), "chainNr"));
}

TEST_F(SerializerJointsTest, LeavesALinkThatAnotherHasPushedOutWithoutItsChain)
{
    const util::String saved = ExpectStable(
        "Scene.addCircle { chain = 1; chainNr = 0; color = [0.5, 0.5, 0.5, 1.0] }; "
        "Scene.addCircle { chain = 1; chainNr = 0; color = [0.5, 0.5, 0.5, 1.0]; zDepth = 1.0 }");
    EXPECT_EQ("", ValueOf(Block(saved, "Scene.addCircle", 0), "chain"));
    EXPECT_EQ("1", ValueOf(Block(saved, "Scene.addCircle", 1), "chain"));
}

TEST_F(SerializerJointsTest, KeepsTheIdsOfAFileApartWhateverWasAdded)
{
    // Ids of a text that are those which the program gives next.
    const unsigned long next = EntityPtr(Add("Scene.addBox { }"))->GetID() + 1;
    util::String text;
    for (unsigned long i = 0; i < 3; ++i)
        text += "Scene.addBox { entityID = " + util::ToString(next + 3 - i) +
                "; geomID = " + util::ToString(next + 3 - i) + "; pos = [" + util::ToString(i * 5) +
                ".0, 0.0] }; ";
    Load(text);
    TheSerializer()->Deserialize(text);
    Run("Scene.addBox { pos = [50.0, 0.0] }");
    const util::String saved = Save();
    std::set<util::String> ids, geomIDs;
    for (int i = 0; i < 7; ++i)
    {
        ids.insert(ValueOf(Block(saved, "Scene.addBox", i), "entityID"));
        geomIDs.insert(ValueOf(Block(saved, "Scene.addBox", i), "geomID"));
    }
    EXPECT_EQ((std::set<util::String>{"1", "2", "3", "4", "5", "6", "7"}), ids);
    EXPECT_EQ(ids, geomIDs);
}

TEST_F(SerializerJointsTest, TellsOfIdsThatStandTwiceInAText)
{
    test::LogCapture log(logging::LogWarning);
    Load("Scene.addBox { entityID = 1; geomID = 5 }; "
         "Scene.addBox { entityID = 1; geomID = 5; pos = [9.0, 0.0] }");
    EXPECT_TRUE(log.Has("Two entities in scene file have the entityID 1")) << log.Text();
    EXPECT_TRUE(log.Has("Two geometries in scene file have the geomID 5")) << log.Text();
    EXPECT_EQ(2u, TheScene()->GetEntities().size());
}
}
}
