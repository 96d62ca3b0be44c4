#include "core/ResourceManager.h"

#include "TestSupport.h"
#include "rendering/GraphicsResource.h"
#include "script/Parser.h"

#include <gtest/gtest.h>

using core::ResourceManager;

namespace
{
class Resource : public rendering::GraphicsResource
{
public:
    ~Resource() noexcept override = default;

    void Load() override
    {
        if (isLoaded)
            return;
        ++builds;
        if (m_onBuild)
            m_onBuild();
        isLoaded = true;
    }
    void Unload() override { isLoaded = false; }
    unsigned long MemoryUsage() const override { return isLoaded ? 1000 : 0; }

    std::function<void()> m_onBuild;
    bool isLoaded = false;
    int builds = 0;
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
    Resource a, b;
};
}

TEST_F(ResourceManagerTest, LoadsWhatIsNotLoaded)
{
    a.Load();
    manager->LoadAll(false);
    EXPECT_TRUE(a.isLoaded && b.isLoaded);
    EXPECT_EQ(1, a.builds);
    EXPECT_EQ(1, b.builds);
}

TEST_F(ResourceManagerTest, ReloadingBuildsAllAnew)
{
    manager->LoadAll(false);
    manager->LoadAll(true);
    EXPECT_TRUE(a.isLoaded && b.isLoaded);
    EXPECT_EQ(2, a.builds);
}

TEST_F(ResourceManagerTest, OneThatFailsIsLoggedAndDoesNotKeepTheOthersFromLoading)
{
    a.m_onBuild = [] { QUIB_THROW(std::runtime_error("no picture")); };
    Resource c;
    c.m_onBuild = [] { throw 42; };
    test::LogCapture log(logging::LogError);
    manager->LoadAll(false);
    EXPECT_TRUE(b.isLoaded);
    EXPECT_FALSE(a.isLoaded);
    EXPECT_TRUE(log.Has("!! ERROR: no picture")) << log.Text();
    EXPECT_TRUE(log.Has("!! ERROR: Unknown error while loading ")) << log.Text();
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
    EXPECT_EQ("2000", Script("Resources.vramUsage"));
    manager->UnloadAll();
    EXPECT_EQ("0", Script("Resources.vramUsage"));
}

TEST_F(ResourceManagerTest, LogsWhatItDoes)
{
    test::LogCapture log;
    manager->LoadAll(true);
    manager->UnloadAll();
    EXPECT_EQ((std::vector<std::string>{"Unloading the old", "Loading the rest...",
                                        "2 resources loaded", "Destroying GL resources"}),
              log.Lines());
}
