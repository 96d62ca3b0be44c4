#include "ScriptFixture.h"
#include "script/Attributes.h"
#include "util/FileSystem.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace script;

namespace
{
class Config : public test::Script
{
protected:
    Config() { util::FileSystem::Create(); }

    test::TempDir m_dir;
    const std::string m_path = m_dir / "config.cfg";
};

class Settings : public Reflected
{
public:
    Settings()
        : Reflected("Settings")
        , zoom(this, "zoom", 1.0f)
        , title(this, "title", "")
    {
    }

    AttribWrapper<float> zoom;
    AttribWrapper<util::String> title;
};
}

TEST_F(Config, IsTheRootAsText)
{
    const util::SharedPtr<Settings> settings = QUIB_NEW Settings;
    settings->AddToRoot();
    settings->zoom = 2.5f;
    settings->title = "a\"b";
    Run("x = 3");
    Parser().SaveConfig(m_path);
    EXPECT_EQ("Settings.title = \"a\\\"b\";\n"
              "Settings.zoom = 2.5;\n"
              "x = 3",
              test::Slurp(m_path));
}

TEST_F(Config, ComesBack)
{
    const util::SharedPtr<Settings> settings = QUIB_NEW Settings;
    settings->AddToRoot();
    Run("Double = (a) => { a * 2.0 }; Settings.zoom = { Double(4) }; list = [1, [\"a\", true]]");
    const std::string saved = Parser().ToCode();
    Parser().SaveConfig(m_path);
    Run("Settings.zoom = 1.0; Double = 0; list = 0");
    Parser().LoadConfig(m_path);
    EXPECT_EQ(saved, Parser().ToCode());
    EXPECT_EQ(8.0f, settings->zoom);
}

TEST_F(Config, RunsInNameOrder)
{
    // A formula is tried at once, so that one that needs a name further down is lost.
    const util::SharedPtr<Settings> settings = QUIB_NEW Settings;
    settings->AddToRoot();
    test::Spit(m_path, "Settings.zoom = { zz };\nzz = 3.0");
    Parser().LoadConfig(m_path);
    EXPECT_EQ("Settings.title = \"\";\nSettings.zoom = 1.0;\nzz = 3.0", Parser().ToCode());
}

TEST_F(Config, ThatPrintsNothingLeavesTheFileAlone)
{
    // Deliberate.
    test::Spit(m_path, "old = 1");
    EXPECT_EQ("", Parser().ToCode());
    Parser().SaveConfig(m_path);
    EXPECT_EQ("old = 1", test::Slurp(m_path));
    Parser().SaveConfig(m_dir / "new.cfg");
    EXPECT_FALSE(util::FileSystem::GetInstancePtr()->FileExists(m_dir / "new.cfg"));
}

TEST_F(Config, UnknownSettingsBecomeVariablesAndAreSavedAgain)
{
    // Deliberate.
    const util::SharedPtr<Settings> settings = QUIB_NEW Settings;
    settings->AddToRoot();
    test::Spit(m_path, "Settings.gone = 1;\nforgotten = 2;\nNowhere.x = 3;\nSettings.zoom = 4.0");
    test::LogCapture log(logging::LogWarning);
    Parser().LoadConfig(m_path);
    EXPECT_EQ(1u, log.Lines().size());
    EXPECT_TRUE(log.Has("Failed to evaluate: Nowhere.x = 3, Nowhere not found in scope"));
    EXPECT_EQ("Settings.gone = 1;\nSettings.title = \"\";\nSettings.zoom = 4.0;\nforgotten = 2",
              Parser().ToCode());
}

TEST_F(Config, LeavesOutWhatStandsInThePlaceOfTheIntrinsics)
{
    const ObjectPtr math = Root().GetObject("math");
    Run("x = 3; math = 5");
    EXPECT_EQ("5", Run("math"));
    EXPECT_EQ("error", Run("1 + 1"));
    test::LogCapture log(logging::LogWarning);
    Parser().SaveConfig(m_path);
    EXPECT_EQ("x = 3", test::Slurp(m_path));
    EXPECT_EQ(1u, log.Lines().size());
    EXPECT_TRUE(log.Has("Failed to print math: all arithmetic would be lost with it"));
    Root().GetVariable("math")->SetObject(math);
    // What is added to the intrinsics themselves harms nobody.
    Run("math.own = 4");
    Parser().SaveConfig(m_path);
    EXPECT_EQ("math.own = 4;\nx = 3", test::Slurp(m_path));
    EXPECT_EQ("2", Run("1 + 1"));
}

TEST_F(Config, SaysWhatItReads)
{
    test::Spit(m_path, "x = 1");
    test::LogCapture progress(logging::LogVerbose), severe(7);
    Parser().LoadConfig(m_path);
    EXPECT_EQ(std::vector<std::string>{"Parsing " + m_path + "..."}, progress.Lines());
    EXPECT_EQ("", severe.Text());
}

TEST_F(Config, AMissingFileIsALoggedFailure)
{
    test::LogCapture log;
    Parser().LoadConfig(m_path);
    EXPECT_TRUE(log.Has("Parsing " + m_path + "..."));
    EXPECT_TRUE(
        log.Has("!! ERROR: Failed loading config file: Failed to open file \"" + m_path + "\""));
}

TEST_F(Config, BadFilesAreContained)
{
    const std::string good = "a = 1;\nf = {\n    a;\n    \"text\"\n};\nl = [1, 2]";
    for (size_t length = 0; length <= good.size(); ++length)
    {
        test::Spit(m_path, good.substr(0, length));
        Parser().LoadConfig(m_path);
    }
    EXPECT_EQ("[1, 2]", Run("l"));
    std::string binary;
    for (int i = 0; i < 5000; ++i)
        binary += static_cast<char>(i * 37 % 256);
    test::Spit(m_path, binary);
    test::LogCapture log(logging::LogWarning);
    Parser().LoadConfig(m_path);
    EXPECT_FALSE(log.Lines().empty());
    Parser().LoadConfig(m_dir.Path());
    EXPECT_EQ("2", Run("1 + 1"));
}

TEST_F(Config, AFailedSaveIsLoggedAndLeavesTheOldFile)
{
    Run("x = 3");
    test::LogCapture log(logging::LogError);
    Parser().SaveConfig(m_dir / "missing/config.cfg");
    EXPECT_TRUE(log.Has("!! ERROR: Failed saving config file: Failed to write file \"" +
                        (m_dir / "missing/config.cfg") + "\""));
}

TEST_F(Config, FormulasAreUpToDateBeforeAFileIsRead)
{
    const util::SharedPtr<Settings> settings = QUIB_NEW Settings;
    settings->AddToRoot();
    Run("n = 1.0; Settings.zoom = { n }");
    Root().GetVariable("n")->SetObject(ValueToObject(2.0));
    Parser().LoadConfig(m_path);
    EXPECT_EQ(2.0f, settings->zoom);
}

TEST_F(Config, AnObjectThatWasStoredUnderASecondNameIsPrintedOnceForEach)
{
    const util::SharedPtr<Settings> settings = QUIB_NEW Settings;
    settings->AddToRoot();
    Root().RemoveVariable("Settings");
    settings->AddToRoot();
    Run("zz = Settings");
    const std::string once = "Settings.title = \"\";\nSettings.zoom = 1.0";
    EXPECT_EQ(once + ";\n" + once, Parser().ToCode());
    Run("zz = 1");
}
