#include "core/ResourceManager.h"

#include "FreshProcess.h"
#include "TestSupport.h"
#include "rendering/GraphicsResource.h"
#include "rendering/Renderer.h"
#include "rendering/ResourceSettings.h"
#include "rendering/Shader.h"
#include "rendering/Texture.h"
#include "script/Parser.h"
#include "script/Recursion.h"
#include "util/Mentor.h"

#include <gtest/gtest.h>

using core::ResourceManager;
using rendering::ResourceSettings;

namespace
{
template<int N>
struct Resource : rendering::GraphicsResource
{
    unsigned long MemoryUsage() const override { return 1000 * N; }
};
using Font = Resource<1>; // stands for any
using Sound = Resource<2>;

/// Counts what it makes.
template<typename T>
struct Owner
{
    int builds = 0;
    bool isLoaded = false;
    util::SharedPtr<util::Mentor<T>> mentor = QUIB_NEW util::Mentor<T>(
        [this]
        {
            ++builds;
            isLoaded = true;
            return new T;
        });
    Owner()
    {
        mentor->AddDestroyCallback(
            QUIB_NEW util::Callback([this] { isLoaded = false; }, mentor.get()));
    }
};

class ResourceManagerTest : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        if (ResourceManager::GetInstancePtr()->GetOwner().IsNull())
            ResourceManager::GetInstancePtr()->AddToRoot();
    }
    util::String Script(const util::String& code)
    {
        return script::Parser::GetInstancePtr()->ExecuteToString(code);
    }

    ResourceManager* manager = ResourceManager::GetInstancePtr();
    Owner<Font> a, b;
    Owner<Sound> c;
};
}

TEST_F(ResourceManagerTest, LoadsWhatIsNotLoaded)
{
    a.mentor->Load();
    manager->LoadAll(false);
    EXPECT_TRUE(a.isLoaded && b.isLoaded && c.isLoaded);
    EXPECT_EQ(1, a.builds);
    EXPECT_EQ(1, b.builds);
}

TEST_F(ResourceManagerTest, ReloadingBuildsAllAnew)
{
    manager->LoadAll(false);
    manager->LoadAll(true);
    EXPECT_TRUE(a.isLoaded && b.isLoaded);
    EXPECT_EQ(2, a.builds);
    EXPECT_EQ(2, c.builds);
}

TEST_F(ResourceManagerTest, LoadsThoseOfOneType)
{
    manager->LoadClass<Font>(false);
    EXPECT_TRUE(a.isLoaded && b.isLoaded);
    EXPECT_FALSE(c.isLoaded);
    manager->LoadClass<Font>(false);
    EXPECT_EQ(1, a.builds);
    manager->LoadType(typeid(Font), true);
    EXPECT_EQ(2, a.builds);
    EXPECT_EQ(0, c.builds);
}

TEST_F(ResourceManagerTest, OneThatFailsDoesNotKeepTheOthersFromLoading)
{
    const util::SharedPtr<util::Mentor<Font>> bad = QUIB_NEW util::Mentor<Font>(
        []() -> Font* { QUIB_THROW(std::runtime_error("no picture")); });
    test::LogCapture log(logging::LogError);
    manager->LoadAll(false);
    EXPECT_TRUE(a.isLoaded && b.isLoaded && c.isLoaded);
    EXPECT_TRUE(log.Has("!! ERROR: no picture")) << log.Text();
}

TEST_F(ResourceManagerTest, ScriptsCanUnloadLoadAndReload)
{
    Script("Resources.loadAll");
    EXPECT_TRUE(a.isLoaded);
    Script("Resources.unloadAll");
    EXPECT_FALSE(a.isLoaded);
    Script("Resources.reloadAll");
    Script("Resources.reloadAll");
    EXPECT_EQ(3, a.builds);
}

TEST_F(ResourceManagerTest, SumsUpTheVideoMemoryInUse)
{
    manager->LoadAll(false);
    EXPECT_EQ("4000", Script("Resources.vramUsage"));
    manager->UnloadAll();
    EXPECT_EQ("0", Script("Resources.vramUsage"));
    a.mentor->GetPtr();
    EXPECT_EQ("1000", Script("Resources.vramUsage")) << "what the first use has brought back";
}

TEST_F(ResourceManagerTest, TellsRenderingWhatTheUserWants)
{
    EXPECT_TRUE(ResourceSettings::s_useShaders);
    EXPECT_FALSE(ResourceSettings::s_force16BitTextures);
    Script("Resources.shaders = false; Resources.force16BitTextures = true");
    EXPECT_FALSE(ResourceSettings::s_useShaders);
    EXPECT_TRUE(ResourceSettings::s_force16BitTextures);
    Script("Resources.shaders = true; Resources.force16BitTextures = false");
    EXPECT_TRUE(ResourceSettings::s_useShaders);
    EXPECT_FALSE(ResourceSettings::s_force16BitTextures);
}

// Without a window there is no GL: what would load now could only fail.
TEST_F(ResourceManagerTest, BeforeAWindowTheSwitchesLoadNothing)
{
    test::LogCapture log;
    Script("Resources.shaders = false; Resources.force16BitTextures = true");
    Script("Resources.shaders = true; Resources.force16BitTextures = false");
    EXPECT_EQ(std::vector<std::string>(), log.Lines());
}

TEST_F(ResourceManagerTest, LogsWhatItDoes)
{
    const std::string texture = typeid(rendering::Texture).name();
    const std::string shader = typeid(rendering::Shader).name();
    test::LogCapture log;
    manager->LoadAll(true);
    manager->UnloadAll();
    EXPECT_EQ((std::vector<std::string>{"Unloading the old", "Reloading " + texture,
                                        "Reloading " + shader, "Loading the rest...",
                                        "3 resources loaded", "Destroying GL resources"}),
              log.Lines());
}

TEST_F(ResourceManagerTest, ShadersThatNobodyWantsAreNotAskedFor)
{
    test::LogCapture log;
    Script("Resources.shaders = false");
    manager->LoadAll(false);
    Script("Resources.shaders = true");
    EXPECT_FALSE(log.Has(typeid(rendering::Shader).name())) << log.Text();
}

TEST_F(ResourceManagerTest, AScriptThatReloadsWithoutEndIsStopped)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        std::string text = "d0 = { Resources.reloadAll };";
        for (int i = 1; i <= 40; ++i)
        {
            const std::string before = "d" + util::ToString(i - 1);
            text += "d" + util::ToString(i) + " = { " + before + "; " + before + " };";
        }
        Script(text);
        test::LogCapture log(logging::LogWarning);
        Script("d40");
        EXPECT_TRUE(log.Has("Script runs too long")) << log.Text();
        EXPECT_GT(1000, a.builds);
    });
}

// A formula that asked for the sum, and a scene with many bodies, took seconds for each frame.
TEST_F(ResourceManagerTest, AScriptPaysForWhatIsWalked)
{
    const auto priceOf = [this](const char* code)
    {
        const script::Allowance allowance(script::MaxRunCost);
        Script(code);
        return allowance.GetSpent();
    };
    const int64_t before = priceOf("Resources.vramUsage");
    {
        const std::vector<Font> many(1000);
        EXPECT_EQ(before + 1000 * script::ElementCost, priceOf("Resources.vramUsage"));
    }
    for (const char* name : {"unloadAll", "loadAll", "reloadTextures"})
        EXPECT_LT(4000000, priceOf((std::string("Resources.") + name).c_str())) << name;
}

TEST_F(ResourceManagerTest, AScriptThatCannotPayForASwitchLeavesItAsItWas)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        rendering::GLHasLoaded(); // there is nothing that would call it
        test::LogCapture log;
        {
            const script::Allowance poor(1000000);
            Script("Resources.shaders = false; Resources.force16BitTextures = true");
        }
        EXPECT_EQ(2u, log.Count("Exception thrown: Script runs too long")) << log.Text();
        EXPECT_FALSE(log.Has("changed value to")) << log.Text();
        EXPECT_TRUE(ResourceSettings::s_useShaders);
        EXPECT_FALSE(ResourceSettings::s_force16BitTextures);
        EXPECT_EQ("[true, false]", Script("[Resources.shaders, Resources.force16BitTextures]"));

        Script("f = { Resources.shaders = false }");
        {
            const script::Allowance poor(1000000);
            Script("f");
        }
        EXPECT_TRUE(ResourceSettings::s_useShaders);
        EXPECT_EQ("true", Script("Resources.shaders"));
        Script("f");
        EXPECT_FALSE(ResourceSettings::s_useShaders);
        EXPECT_TRUE(log.Has("Resources.shaders changed value to false")) << log.Text();
        Script("Resources.shaders = true");
        EXPECT_TRUE(log.Has("LoadClass<Shader>")) << log.Text();
    });
}
