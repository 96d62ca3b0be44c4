#include "os/Platform.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <SDL.h>

namespace fs = boost::filesystem;

TEST(CalcDataDir, IsTheCurrentFolderWhenDataLiesThere)
{
    test::TempDir dir;
    fs::create_directory(dir / "data");
    test::InDirectory in(dir.Path());
    EXPECT_EQ("", os::CalcDataDir("anything/quib"));
}

TEST(CalcDataDir, IsTheProgramsFolderWhenDataLiesThere)
{
    // The folder of this very program.
    const fs::path folder = fs::read_symlink("/proc/self/exe").parent_path();
    ASSERT_FALSE(fs::exists(folder / "data"));
    test::TempDir dir;
    test::InDirectory in(dir.Path());
    fs::create_directory(folder / "data");
    const std::string found = os::CalcDataDir("quib");
    fs::remove(folder / "data");
    EXPECT_EQ(folder.string() + "/", found);
}

TEST(CalcDataDir, IsTheCurrentFolderWhenThereIsNoData)
{
    test::TempDir dir;
    test::Spit(dir / "data", "a file of that name does not count");
    test::InDirectory in(dir.Path());
    EXPECT_EQ("", os::CalcDataDir("/nowhere/quib"));
}

TEST(GetDisplaySize, IsUnknownBeforeSDL)
{
    math::TVector2<int> size(-1, -2);
    os::NoteDisplaySize();
    EXPECT_FALSE(os::GetDisplaySize(size));
    EXPECT_EQ((math::TVector2<int>(-1, -2)), size) << "left alone";
}

TEST(Clipboard, IsEmptyUntilSomethingIsCopied)
{
    EXPECT_EQ("", os::GetClipboardText());
    os::SetClipboardText("caf\xe9");
    EXPECT_EQ("caf\xe9", os::GetClipboardText());
    os::SetClipboardText("");
    EXPECT_EQ("", os::GetClipboardText());
}

TEST(ShowErrorPopup, WritesToStandardErrorAndStandsForTheFirstButton)
{
    testing::internal::CaptureStderr();
    EXPECT_FALSE(os::ShowErrorPopup("Exception caught", "what it was"));
    EXPECT_EQ("Exception caught: what it was\n", testing::internal::GetCapturedStderr());
}
