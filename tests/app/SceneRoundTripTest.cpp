// Scenes of everything that there is, by chance: loaded and saved twice they give two files that are the
// same to the byte.
#include "SerializerFixture.h"

#include "../Dice.h"

using math::Vec2;

namespace app
{
namespace
{
class SceneRoundTripTest : public SerializerFixture
{
protected:
    /// The text of a scene.
    static util::String MakeScene(unsigned seed)
    {
        test::Dice dice(seed);
        const auto number = [&dice](float a, float b)
        { return util::ToString(dice.Uniform(a, b)) + "0"; };
        const auto decimal = [](const util::String& n)
        { return n.find('.') == util::String::npos ? n + ".0" : n; };
        const auto real = [&](float a, float b) { return decimal(number(a, b)); };
        const auto vec = [&](float a, float b)
        { return "[" + real(a, b) + ", " + real(a, b) + "]"; };

        util::String text = "FileInfo.version = 2; ";
        const int geomCount = dice.Int(1, 25), jointCount = dice.Int(0, 25);
        for (int i = 1; i <= geomCount; ++i)
        {
            const char* const commands[] = {"addBox", "addCircle", "addPolygon", "addPlane"};
            const util::String command = commands[dice.Int(0, 4)];
            text += "Scene." + command + " { entityID = " + util::ToString(i) +
                    "; geomID = " + util::ToString(100 + i) + "; pos = " + vec(-20, 20) +
                    "; angle = " + real(-4, 4) + "; zDepth = " + real(0, 50);
            if (command == "addBox")
                text += "; size = " + vec(0.1f, 3);
            if (command == "addCircle")
                text += "; radius = " + real(0.1f, 2);
            if (command == "addPolygon")
                text += "; vecs = [[" + real(1, 2) + ", 0.0], [" + real(0.1f, 0.5f) + ", " +
                        real(1, 2) + "], [" + real(-2, -1) + ", 0.0], [0.0, " + real(-2, -1) + "]]";
            if (command != "addPlane" && dice.OneIn(3))
                text += "; density = " + real(0.5f, 3) +
                        "; controllerInvertX = true; "
                        "forceController = \"keys up right down left\"";
            if (dice.OneIn(3))
                text += "; friction = " + real(0, 1) +
                        "; collideSet = " + util::ToString(dice.Int(0, 32)) +
                        "; collideWater = false";
            if (dice.OneIn(4))
                text += "; chain = " + util::ToString(dice.Int(1, 3)) +
                        "; chainNr = " + util::ToString(dice.Int(0, 12));
            if (dice.OneIn(6))
                text += "; group = " + util::ToString(dice.Int(1, 3));
            if (dice.OneIn(6))
                text += "; color = [0.1, 0.2, 0.3, 0.4]; restitution = { 0.25 + 0.5 }";
            text += " }; ";
        }
        for (int i = 1; i <= jointCount; ++i)
        {
            const char* const commands[] = {"addHinge", "addSpring", "addFixjoint", "addPen"};
            const util::String command = commands[dice.Int(0, 4)];
            const auto geom = [&] { return util::ToString(100 + dice.Int(1, geomCount + 1)); };
            text += "Scene." + command + " { entityID = " + util::ToString(1000 + i) +
                    "; zDepth = " + real(0, 50) + "; size = " + real(0.1f, 1);
            if (command == "addPen")
                text += "; geom = " + geom() + "; relPoint = " + vec(-1, 1) +
                        "; fadeTime = " + real(1, 20);
            else
            {
                for (const char* end : {"0", "1"})
                {
                    const int form = dice.Int(0, 5);
                    if (form <= 2)
                        text += util::String("; geom") + end + " = " + geom() + "; geom" + end +
                                "pos = " + vec(-1, 1);
                    else if (form == 3)
                        text += util::String("; world") + end + "pos = " + vec(-9, 9);
                    else
                        text += util::String("; pos") + end + " = " + vec(-9, 9);
                }
            }
            if (command == "addHinge" && dice.OneIn(2))
                text += "; motor = true; motorSpeed = " + real(0, 5) +
                        "; buttonForward = \"toggle a b\"; distanceLimit = " + real(0, 5);
            if (command == "addSpring")
                text += "; length = " + real(0, 5) + "; dampingFactor = " + real(0, 1);
            if (dice.OneIn(6))
                text += "; chain = 2; chainNr = " + util::ToString(dice.Int(0, 12));
            text += " }; ";
        }
        if (dice.OneIn(2))
            text += "Scene.addWater { vecs = [" + vec(-9, 9) + ", " + vec(-9, 9) + "] }; ";
        for (int i = dice.Int(0, 5); i > 0; --i)
        {
            util::String ids;
            for (int n = dice.Int(1, 6); n > 0; --n)
                ids += util::String(ids.empty() ? "" : ", ") +
                       util::ToString(dice.OneIn(3) ? 1000 + dice.Int(1, 25) : dice.Int(1, 25));
            const char* const names[] = {"selected", "tracked", "a", "b", ""};
            const util::String name = names[dice.Int(0, 5)];
            text += "Scene.addGroup { name = \"" + name + "\"; entityIDs = [" + ids + "] }; ";
            if (dice.OneIn(2))
                text += "Scene.addWidget { widgetID = \"HingeOptions\"; groupID = \"" + name +
                        "\"; entityIDs = [" + ids + "]; pos = " + vec(0, 500) +
                        "; title = \"T\"; minimized = true }; ";
        }
        return text;
    }
};

TEST_F(SceneRoundTripTest, GivesTheSameFileAgain)
{
    size_t entityCount = 0;
    for (unsigned seed = 1; seed <= 100 && !HasFailure(); ++seed)
    {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Load(MakeScene(seed));
        // What has died tells groups of one name apart only until it is gone.
        TheScene()->Update(0);
        entityCount += TheScene()->GetEntities().size();
        const util::String first = Save();
        EXPECT_EQ(first, Save());
        Load(first);
        EXPECT_EQ(first, Save());
    }
    EXPECT_GT(entityCount, 1500u);
}

TEST_F(SceneRoundTripTest, GivesTheSameFileAgainAfterTheWorldHasMoved)
{
    for (unsigned seed = 1; seed <= 30 && !HasFailure(); ++seed)
    {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Load(MakeScene(seed));
        for (int i = 0; i < 20; ++i)
        {
            Sim()->Step(Sim()->m_timeDelta);
            TheScene()->Update(Sim()->m_timeDelta);
        }
        // What has turned step by step is read as the turn of its angle: the first file may differ from
        // the second in last places, the second from no later one.
        Load(Save());
        ExpectStable(Save());
    }
}

TEST_F(SceneRoundTripTest, GivesTheSameFileWhateverIsPastedAndTakenAwayAgain)
{
    for (unsigned seed = 1; seed <= 20 && !HasFailure(); ++seed)
    {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Load(MakeScene(seed));
        TheScene()->Update(0.01f);
        const util::String saved = Save();
        const GroupPtr pasted = TheSerializer()->Deserialize(
            "Scene.addBox { entityID = 1; geomID = 101; zDepth = 3.0; pos = [300.0, 0.0] }; "
            "Scene.addHinge { entityID = 2; geom0 = 101; geom0pos = [0.0, 0.0]; "
            "world1pos = [300.0, 0.0]; zDepth = 1.0 }");
        ASSERT_EQ(2u, pasted->GetEntities().size());
        const std::vector<EntityPtr> entities(pasted->GetEntities().begin(),
                                              pasted->GetEntities().end());
        for (const EntityPtr& entity : entities)
            TheScene()->RemoveEntity(entity);
        EXPECT_EQ(saved, Save());
    }
}
}
}
