#include "script/ValueConversions.h"

#include "ScriptFixture.h"

using namespace script;

namespace
{
using Conversions = test::Script;

template<typename T>
std::string ErrorOf(const ObjectPtr& object)
{
    try
    {
        ObjectToValue<T>(object);
    }
    catch (ScriptException& e)
    {
        return e.what();
    }
    return "nothing thrown";
}
}

TEST_F(Conversions, GoThereAndBack)
{
    EXPECT_EQ(true, ObjectToValue<bool>(ValueToObject(true)));
    EXPECT_EQ(-7, ObjectToValue<int>(ValueToObject(-7)));
    EXPECT_EQ(7ul, ObjectToValue<unsigned long>(ValueToObject(7ul)));
    EXPECT_EQ(0.1f, ObjectToValue<float>(ValueToObject(0.1f)));
    EXPECT_EQ("text", ObjectToValue<util::String>(ValueToObject("text")));
    EXPECT_EQ("text", ObjectToValue<util::String>(ValueToObject(util::String("text"))));
    EXPECT_EQ(math::Vec2(1, 2), ObjectToValue<math::Vec2>(ValueToObject(math::Vec2(1, 2))));
    EXPECT_EQ(math::Vec3(1, 2, 3), ObjectToValue<math::Vec3>(ValueToObject(math::Vec3(1, 2, 3))));
    EXPECT_EQ(math::Vec4(1, 2, 3, 4),
              ObjectToValue<math::Vec4>(ValueToObject(math::Vec4(1, 2, 3, 4))));
    EXPECT_EQ(math::Vec2i(1, 2), ObjectToValue<math::Vec2i>(ValueToObject(math::Vec2i(1, 2))));
    const math::BoundingBox box(math::Vec2(1, 2), math::Vec2(4, 6));
    EXPECT_EQ(box, ObjectToValue<math::BoundingBox>(ValueToObject(box)));
    EXPECT_EQ("[[1, 2], [3, 4]]", ValueToObject(box)->ToText());
    EXPECT_EQ("[1, 2]", ValueToObject(math::Vec2i(1, 2))->ToText());
    const ObjectPtr function = Evaluate("(a)=>{}");
    EXPECT_EQ(function, ValueToObject(ObjectToValue<FunctionPtr>(function)));
}

TEST_F(Conversions, KeepDoublesOnTheWayInAndRoundThemOnTheWayOut)
{
    const ObjectPtr object = ValueToObject(0.1);
    EXPECT_EQ(0.1, static_cast<const Value<Float>&>(*object).GetValue());
    EXPECT_EQ(static_cast<long double>(0.1), ObjectToValue<long double>(object));
    // Deliberate: single precision.
    EXPECT_EQ(static_cast<double>(0.1f), ObjectToValue<double>(object));
    EXPECT_EQ(0.1f, ObjectToValue<float>(object));
    EXPECT_EQ(16777216.0, ObjectToValue<double>(ValueToObject(16777217)));
}

TEST_F(Conversions, LetAnIntPassForAFloatAndNothingElseForAnythingElse)
{
    EXPECT_EQ(3.0f, ObjectToValue<float>(ValueToObject(3)));
    EXPECT_EQ(3.0L, ObjectToValue<long double>(ValueToObject(3)));
    const ObjectPtr wrong[] = {ValueToObject(true), ValueToObject("1"), QUIB_NEW Void, ObjectPtr(),
                               Evaluate("[1]")};
    for (const ObjectPtr& object : wrong)
    {
        EXPECT_EQ("Not a float", ErrorOf<float>(object));
        EXPECT_EQ("Not a float", ErrorOf<double>(object));
        EXPECT_EQ("Not a float", ErrorOf<long double>(object));
        EXPECT_EQ("Not an integer", ErrorOf<int>(object));
        EXPECT_EQ("Not an integer", ErrorOf<unsigned long>(object));
    }
    EXPECT_EQ("Not an integer", ErrorOf<int>(ValueToObject(1.0)));
    EXPECT_EQ("Not a string", ErrorOf<util::String>(ValueToObject(1)));
    EXPECT_EQ("Not a string", ErrorOf<util::String>(ObjectPtr()));
    EXPECT_EQ("Not a bool", ErrorOf<bool>(ValueToObject(1)));
    EXPECT_EQ("Not a bool", ErrorOf<bool>(ObjectPtr()));
}

TEST_F(Conversions, ReadLists)
{
    EXPECT_EQ(2u, ObjectToValue<ObjectList>(Evaluate("[1, \"a\"]")).size());
    EXPECT_EQ("Not a list", ErrorOf<ObjectList>(ValueToObject(1)));
    EXPECT_EQ((std::vector<unsigned long>{3, 4}),
              ObjectToValue<std::vector<unsigned long>>(Evaluate("[3, 4]")));
    EXPECT_EQ("Not a list", ErrorOf<std::vector<unsigned long>>(ValueToObject(1)));
    EXPECT_EQ("Not an integer", ErrorOf<std::vector<unsigned long>>(Evaluate("[1, 2.0]")));
    EXPECT_EQ((math::Vec2List{{1, 2}, {3, 4}}),
              ObjectToValue<math::Vec2List>(Evaluate("[[1, 2], [3.0, 4]]")));
    EXPECT_EQ("Not a list", ErrorOf<math::Vec2List>(ValueToObject(1)));
    EXPECT_EQ("Not a vector", ErrorOf<math::Vec2List>(Evaluate("[1, 2]")));
}

TEST_F(Conversions, ReadVectorsOfExactlyTheRightLength)
{
    EXPECT_EQ(math::Vec2(1, 2.5f), ObjectToValue<math::Vec2>(Evaluate("[1, 2.5]")));
    EXPECT_EQ("Not a vector", ErrorOf<math::Vec2>(Evaluate("[1, 2, 3]")));
    EXPECT_EQ("Not a vector", ErrorOf<math::Vec2>(Evaluate("[1]")));
    EXPECT_EQ("Not a vector", ErrorOf<math::Vec2>(ValueToObject(1)));
    EXPECT_EQ("Not a vector", ErrorOf<math::Vec3>(Evaluate("[1, 2]")));
    EXPECT_EQ("Not a vector", ErrorOf<math::Vec4>(Evaluate("[1, 2, 3]")));
    EXPECT_EQ("Not a float", ErrorOf<math::Vec2>(Evaluate("[1, true]")));
    EXPECT_EQ("Not an integer", ErrorOf<math::Vec2i>(Evaluate("[1, 2.0]")));
    EXPECT_EQ("Not a bounding box", ErrorOf<math::BoundingBox>(Evaluate("[1, 2, 3]")));
    EXPECT_EQ("Not a bounding box", ErrorOf<math::BoundingBox>(ValueToObject(1)));
    EXPECT_EQ("Not a vector", ErrorOf<math::BoundingBox>(Evaluate("[1, 2]")));
}

TEST_F(Conversions, AssertThatAFunctionIsOne)
{
    for (const char* text : {"1", "math.add", "[1]"})
        try
        {
            ObjectToValue<FunctionPtr>(Evaluate(text));
            FAIL() << text;
        }
        catch (BadDataException& e)
        {
            EXPECT_EQ(0u, std::string(e.what()).find("Data assertion failed: \"ret\"")) << text;
        }
}

TEST_F(Conversions, RoundTheRightOperandOfAFloatOnly)
{
    // Deliberate: the left operand keeps its double.
    const auto valueOf = [](const char* text)
    { return static_cast<const Value<Float>&>(*Evaluate(text)).GetValue(); };
    EXPECT_EQ(1.5 + static_cast<double>(0.1f), valueOf("1.5 + 0.1"));
    EXPECT_EQ(0.1 + 1.5, valueOf("0.1 + 1.5"));
    EXPECT_NE(valueOf("1.5 + 0.1"), valueOf("0.1 + 1.5"));
    EXPECT_EQ(1 + 0.1, valueOf("1 + 0.1"));
    EXPECT_EQ(0.1 * 16777216, valueOf("0.1 * 16777217"));
    EXPECT_EQ(std::sin(static_cast<double>(0.1f)), valueOf("math.sin(0.1)"));
}

TEST_F(Conversions, WrapAnUnsignedLongThatIsTooLargeForAnInt)
{
    EXPECT_EQ("2147483647", ValueToObject(2147483647ul)->ToText());
    EXPECT_EQ("-2147483648", ValueToObject(2147483648ul)->ToText());
    EXPECT_EQ("-1", ValueToObject(4294967295ul)->ToText());
    EXPECT_EQ("0", ValueToObject(4294967296ul)->ToText());
    // And back as that int.
    EXPECT_EQ(~0ul, ObjectToValue<unsigned long>(ValueToObject(4294967295ul)));
}
