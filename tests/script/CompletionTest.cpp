#include "ScriptFixture.h"
#include "script/Attributes.h"

using namespace script;

namespace
{
class Completion : public test::Script
{
protected:
    /// The completed line, then the candidates.
    static std::string Expand(std::string line)
    {
        const std::vector<std::string> candidates = Parser().Expand(line);
        return candidates.empty() ? line : line + " | " + util::Join(candidates, " ");
    }

    static ReflectedPtr AddChild(Reflected& parent, const char* name)
    {
        const ReflectedPtr child = QUIB_NEW Reflected(name);
        parent.AddReflectedChild(child);
        return child;
    }
};
}

TEST_F(Completion, ReachesADotAtOnce)
{
    EXPECT_EQ("math.", Expand("ma"));
    EXPECT_EQ("x = math.", Expand("x = ma"));
    EXPECT_EQ("Keys.", Expand("ke"));
}

TEST_F(Completion, OffersWhatFits)
{
    EXPECT_EQ("math.s | sin subtract", Expand("math.s"));
    EXPECT_EQ("math.sin", Expand("math.si"));
    EXPECT_EQ("math.sin", Expand("MATH.SI"));
    EXPECT_EQ("math.a | acos add asin atan", Expand("math.a"));
    EXPECT_EQ("1 + (math.cos", Expand("1 + (math.co"));
    EXPECT_EQ("math. | acos add asin atan cos divide multiply negate pi sin subtract tan",
              Expand("math."));
}

TEST_F(Completion, LeavesAloneWhatFitsNothing)
{
    EXPECT_EQ("nothing", Expand("nothing"));
    EXPECT_EQ("NoThing.x", Expand("NoThing.x"));
    EXPECT_EQ("x", Expand("x"));
    EXPECT_EQ("math.xyz", Expand("math.xyz"));
    EXPECT_EQ("math.sin.x", Expand("math.sin.x"));
    EXPECT_EQ("a + ", Expand("a + ").substr(0, 4));
}

TEST_F(Completion, GoesOnAsFarAsAllCandidatesDo)
{
    const ReflectedPtr shop = AddChild(Root(), "Shop");
    for (const char* name : {"priceHigh", "priceLow", "PriceMid"})
        shop->AddVariable2(name, ValueToObject(1));
    EXPECT_EQ("Shop.Price | PriceMid priceHigh priceLow", Expand("shop.P"));
    EXPECT_EQ("Shop.price | PriceMid priceHigh priceLow", Expand("shop.p"));
    EXPECT_EQ("Shop.priceLow", Expand("shop.pricel"));
    // A mixed first letter stays as typed; the rest agrees.
    EXPECT_EQ("Shop.Price | PriceMid priceHigh priceLow", Expand("shop.PRICE"));
    Root().RemoveVariable("Shop");
}

TEST_F(Completion, CorrectsTheCaseWhereAllAgree)
{
    const ReflectedPtr shop = AddChild(Root(), "Shop");
    shop->AddVariable2("ABcOne", ValueToObject(1));
    shop->AddVariable2("ABcTwo", ValueToObject(1));
    EXPECT_EQ("Shop.ABc | ABcOne ABcTwo", Expand("sHOP.abC"));
    Root().RemoveVariable("Shop");
}

TEST_F(Completion, FollowsAliases)
{
    const ReflectedPtr inner = AddChild(*AddChild(Root(), "Outer"), "Inner");
    inner->AddVariable2("depth", ValueToObject(1));
    Run("short = { Outer.Inner }; wrong = { nothing.at.all }; two = { Outer; Outer }");
    EXPECT_EQ("short.depth", Expand("SHORT.de"));
    EXPECT_EQ("wrong.de", Expand("wrong.de"));
    EXPECT_EQ("two.In", Expand("two.In"));
    EXPECT_EQ("Outer.Inner.depth", Expand("outer.inner.d"));
    Root().RemoveVariable("Outer");
}

TEST_F(Completion, MarksObjectsThatHoldSomething)
{
    AddChild(Root(), "Box_empty");
    AddChild(Root(), "Box_full")->AddVariable2("x", ValueToObject(1));
    EXPECT_EQ("Box_ | Box_empty Box_full.", Expand("box"));
    Root().RemoveVariable("Box_empty");
    Root().RemoveVariable("Box_full");
}

TEST_F(Completion, EndsWithObjectsThatHoldEachOther)
{
    Run("math.again = math");
    std::string line = "MATH";
    for (int i = 0; i < 50; ++i)
        line += ".AGAIN";
    Parser().Expand(line);
    EXPECT_EQ("math.again", line.substr(0, 10));
    std::string longLine = "MATH";
    for (int i = 0; i < 1000000; ++i)
        longLine += ".AGAIN";
    const std::string before = longLine;
    Parser().Expand(longLine);
    EXPECT_EQ(before, longLine);
    static_cast<ClassObject&>(*Root().GetObject("math")).RemoveVariable("again");
}

TEST_F(Completion, OfLongNamesTakesLinearTime)
{
    const std::string name(1000000, 'n');
    Root().AddVariable2(name + "a", ValueToObject(1));
    Root().AddVariable2(name + "b", ValueToObject(1));
    std::string line = "1 + nnn";
    EXPECT_EQ(2u, Parser().Expand(line).size());
    EXPECT_EQ("1 + " + name, line);
}
