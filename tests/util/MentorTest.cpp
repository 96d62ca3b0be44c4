#include "util/Mentor.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

using util::Mentor;
using util::MentorProxy;
using util::SharedPtr;

namespace
{
struct Picture : util::Pointee
{
    explicit Picture(std::string text)
        : text(std::move(text))
    {
    }
    std::string text;
};
using PictureMentor = Mentor<Picture>;
using PictureProxy = MentorProxy<Picture>;

class MentorTest : public testing::Test
{
protected:
    MentorTest()
    {
        PictureMentor::s_default = QUIB_NEW PictureMentor([] { return new Picture("default"); });
    }
    void TearDown() override { PictureMentor::s_default = nullptr; }

    /// Counts what it makes. Null for "", throws "no <name>" for a name with a question mark.
    SharedPtr<PictureMentor> Make(const std::string& name)
    {
        const SharedPtr<PictureMentor> mentor = QUIB_NEW PictureMentor(
            [this, name]() -> Picture*
            {
                ++builds;
                if (name.find('?') != std::string::npos)
                    QUIB_THROW(std::runtime_error("no " + name));
                return name.empty() ? nullptr : new Picture(name);
            });
        mentor->AddCreateCallback(QUIB_NEW util::Callback([this] { ++creations; }, owner.get()));
        mentor->AddDestroyCallback(
            QUIB_NEW util::Callback([this] { ++destructions; }, owner.get()));
        return mentor;
    }

    util::SharedPtr<util::Pointee> owner = QUIB_NEW util::Pointee; // of the callbacks
    int builds = 0, creations = 0, destructions = 0;
};
}

TEST_F(MentorTest, BuildsAtTheFirstUseAndOnce)
{
    const PictureProxy proxy(Make("cat"));
    EXPECT_EQ(0, builds);
    EXPECT_EQ("cat", proxy->text);
    EXPECT_EQ("cat", proxy->text);
    proxy.GetMentor()->Load();
    EXPECT_EQ(1, builds);
}

TEST_F(MentorTest, BuildsAnewAfterUnload)
{
    const SharedPtr<PictureMentor> mentor = Make("cat");
    mentor->Load();
    mentor->Unload();
    EXPECT_EQ("cat", mentor->GetPtr()->text);
    EXPECT_EQ(2, builds);
    EXPECT_EQ(2, creations);
    EXPECT_EQ(1, destructions);
}

TEST_F(MentorTest, UnloadOfAnEmptyOneDoesNothing)
{
    const SharedPtr<PictureMentor> mentor = Make("cat");
    mentor->Unload();
    EXPECT_EQ(0, destructions);
    mentor->Load();
    mentor->Unload();
    mentor->Unload();
    EXPECT_EQ(1, destructions);
}

TEST_F(MentorTest, DestroyCallbacksStillFindTheResource)
{
    const SharedPtr<PictureMentor> mentor = Make("cat");
    std::string found;
    mentor->AddDestroyCallback(
        QUIB_NEW util::Callback([&] { found = mentor->GetPtr()->text; }, owner.get()));
    mentor->Load();
    mentor->Unload();
    EXPECT_EQ("cat", found);
    EXPECT_EQ(1, builds);
}

TEST_F(MentorTest, TheDefaultStandsInForOneThatThrows)
{
    const PictureProxy proxy(Make("cat?"));
    test::LogCapture log(logging::LogError);
    EXPECT_EQ("default", proxy->text);
    EXPECT_TRUE(log.Has("!! ERROR: no cat?")) << log.Text();
    EXPECT_FALSE(proxy);
    EXPECT_EQ(0, creations) << "the default was built, not the picture";
}

TEST_F(MentorTest, TheDefaultStandsInForOneThatGivesNothing)
{
    const PictureProxy proxy(Make(""));
    EXPECT_EQ("default", proxy->text);
    EXPECT_FALSE(proxy);
    EXPECT_EQ(0, creations);
}

TEST_F(MentorTest, ThrownOtherThingsAreLoggedWithTheType)
{
    const PictureProxy proxy([]() -> Picture* { throw 42; });
    test::LogCapture log(logging::LogError);
    EXPECT_EQ("default", proxy->text);
    EXPECT_TRUE(
        log.Has(std::string("!! ERROR: Unknown error while loading ") + typeid(Picture).name()))
        << log.Text();
}

TEST_F(MentorTest, AFailedOneIsTriedAgainOnlyAfterUnload)
{
    const SharedPtr<PictureMentor> mentor = Make("");
    mentor->Load();
    mentor->Load();
    EXPECT_EQ(1, builds);
    mentor->Unload();
    EXPECT_EQ(1, destructions);
    mentor->Load();
    EXPECT_EQ(2, builds);
}

TEST_F(MentorTest, ADefaultThatFailsHasNoStandIn)
{
    PictureMentor::s_default = QUIB_NEW PictureMentor([]() -> Picture* { return nullptr; });
    EXPECT_FALSE(PictureMentor::s_default->GetPtr());
    const PictureProxy proxy(Make(""));
    EXPECT_FALSE(proxy);
    EXPECT_THROW(proxy->text.size(), std::runtime_error) << "and is no null pointer";
}

TEST_F(MentorTest, AProxyTellsItsOwnPictureFromTheDefault)
{
    EXPECT_TRUE(PictureProxy(Make("cat")));
    EXPECT_FALSE(PictureProxy());
    EXPECT_FALSE(PictureProxy(PictureMentor::s_default));
    PictureMentor::s_default = nullptr;
    EXPECT_TRUE(PictureProxy(Make("cat")));
    EXPECT_FALSE(PictureProxy(Make("")));
}

TEST_F(MentorTest, AProxyWithoutAMentorThrowsWhenUsed)
{
    const PictureProxy proxy;
    EXPECT_THROW(proxy->text.size(), std::runtime_error);
}
