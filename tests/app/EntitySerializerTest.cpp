#include "AppFixture.h"

#include "app/EntitySerializer.h"

using math::Vec2;
using math::Vec3;
using math::Vec4;

namespace app
{
namespace
{
class Settings : public script::Reflected
{
public:
    Settings()
        : Reflected("Settings")
        , m_number(this, "number", 1.5f)
        , m_flag(this, "flag", true)
    {
        AddVariable2("plain", script::ValueToObject("text"));
    }

    script::AttribWrapper<float> m_number;
    script::AttribWrapper<bool> m_flag;
};

using EntitySerializerTest = AppFixture;

template<typename T>
void ExpectRoundTrip(const T& value)
{
    EntitySerializer serializer;
    EXPECT_FALSE(serializer.Has("key"));
    serializer.Set("key", value);
    EXPECT_TRUE(serializer.Has("key"));
    EXPECT_EQ(value, serializer.Get<T>("key"));
}

TEST_F(EntitySerializerTest, HoldsValuesOfEveryTypeThatEntitiesUse)
{
    ExpectRoundTrip(true);
    ExpectRoundTrip(-3);
    ExpectRoundTrip(7ul);
    ExpectRoundTrip(0.1f);
    ExpectRoundTrip(util::String("a \"b\""));
    ExpectRoundTrip(Vec2(1, 2));
    ExpectRoundTrip(Vec3(1, 2, 3));
    ExpectRoundTrip(Vec4(1, 2, 3, 4));
    ExpectRoundTrip(math::Vec2List{Vec2(1, 2), Vec2(3, 4)});
    ExpectRoundTrip(std::vector<unsigned long>{3, 1, 2});
    ExpectRoundTrip(std::vector<unsigned long>{});
}

TEST_F(EntitySerializerTest, RefusesAMissingKeyAndNamesIt)
{
    try
    {
        EntitySerializer().Get<float>("width");
        FAIL();
    }
    catch (BadDataException& e)
    {
        EXPECT_STREQ("Missing key \"width\"", e.what());
    }
}

TEST_F(EntitySerializerTest, RefusesAValueOfAnotherKindAndLogsItsKey)
{
    test::LogCapture log(logging::LogWarning);
    EntitySerializer serializer;
    serializer.Set("width", 1.5f);
    EXPECT_THROW(serializer.Get<bool>("width"), BadDataException);
    EXPECT_TRUE(log.Has("Bad value of key \"width\"")) << log.Text();
    EXPECT_THROW(serializer.Get<Vec2>("width"), BadDataException);
    EXPECT_THROW(serializer.Get<util::String>("width"), BadDataException);
    EXPECT_THROW(serializer.Get<int>("width"), BadDataException);
    EXPECT_THROW(serializer.Get<std::vector<unsigned long>>("width"), BadDataException);
}

TEST_F(EntitySerializerTest, ReadsTheVariablesOfAClosure)
{
    const script::ClosurePtr closure =
        QUIB_NEW script::Closure("block", Parser()->GetRootClosure());
    closure->AddVariable2("a", script::ValueToObject(5));
    const EntitySerializer serializer(*closure);
    EXPECT_TRUE(serializer.Has("a"));
    EXPECT_FALSE(serializer.Has("Scene")); // what lies around it does not count
    EXPECT_EQ(5, serializer.Get<int>("a"));
}

TEST_F(EntitySerializerTest, SkipsAttributesAtTheirDefaultOnly)
{
    const util::SharedPtr<Settings> settings = QUIB_NEW Settings;
    settings->m_flag = false;
    EntitySerializer serializer;
    EXPECT_FALSE(serializer.KeepsDefaults());
    serializer.SerializeAttributes(*settings);
    EXPECT_FALSE(serializer.Has("number"));
    EXPECT_FALSE(serializer.Get<bool>("flag"));
    EXPECT_EQ("text", serializer.Get<util::String>("plain"));
}

TEST_F(EntitySerializerTest, KeepsDefaultsWhenAsked)
{
    const util::SharedPtr<Settings> settings = QUIB_NEW Settings;
    EntitySerializer serializer(EntitySerializer::Defaults::Keep);
    EXPECT_TRUE(serializer.KeepsDefaults());
    serializer.SerializeAttributes(*settings);
    EXPECT_EQ(1.5f, serializer.Get<float>("number"));
    // So that what was changed later can be taken back.
    settings->m_number = 4;
    serializer.DeserializeAttributes(*settings);
    EXPECT_EQ(1.5f, settings->m_number);
}

TEST_F(EntitySerializerTest, GivesAttributesTheValuesOfTheirKeysAndIgnoresOthers)
{
    const util::SharedPtr<Settings> settings = QUIB_NEW Settings;
    EntitySerializer serializer;
    serializer.Set("number", 4);
    serializer.Set("unknown", 5);
    serializer.DeserializeAttributes(*settings);
    EXPECT_EQ(4, settings->m_number);
    EXPECT_TRUE(settings->m_flag);
    EXPECT_FALSE(settings->HasVariable("unknown"));
}

TEST_F(EntitySerializerTest, KeepsFormulas)
{
    const util::SharedPtr<Settings> settings = QUIB_NEW Settings;
    const auto formula = util::DynamicCast<script::CodeBlock>(Parser()->Parse("{ 2 + 5 }"))
                             ->GetElements()[0]
                             ->Evaluate(Parser()->GetRootClosure());
    settings->FindVariable("number")->SetObject(formula);
    EntitySerializer serializer;
    serializer.SerializeAttributes(*settings);
    EXPECT_EQ("{\n    number = {2 + 5};\n    plain = \"text\"\n}",
              serializer.ToFunctionDeclaration()->ToCode());
}

TEST_F(EntitySerializerTest, BecomesACallOfACommand)
{
    EntitySerializer serializer;
    EXPECT_EQ("a.b({})", serializer.ToFunctionCall("a.b")->ToCode());
    serializer.Set("f", 1.5f);
    serializer.Set("v", math::Vec2List{Vec2(1, 2)});
    serializer.Set("ids", std::vector<unsigned long>{3, 4});
    EXPECT_EQ("a.b({\n    v = [[1.0, 2.0]];\n    ids = [3, 4];\n    f = 1.5\n})",
              serializer.ToFunctionCall("a.b")->ToCode());
}
}
}
