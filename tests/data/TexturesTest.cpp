// The pictures that ship. Whether they please is for eyes; here: that each one the program asks for is
// there, in a form that it can use.
#include "rendering/Image.h"

#include <boost/filesystem.hpp>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace
{
namespace fs = boost::filesystem;

const fs::path Tree = QUIB_SOURCE_DIR;
const fs::path Textures = Tree / "data" / "textures";

const char* const Names[] = {"mouse",
                             "blank",
                             "pen",
                             "ring",
                             "hinge",
                             "fixjoint",
                             "spring",
                             "rotate_origo",
                             "simpleWater",
                             "cursors/move",
                             "cursors/clone",
                             "cursors/drag",
                             "cursors/pan",
                             "cursors/arrow_north-west",
                             "cursors/arrow_north-south",
                             "cursors/arrow_north-east",
                             "cursors/arrow_west-east",
                             "tools/sketch",
                             "tools/brush",
                             "tools/box",
                             "tools/circle",
                             "tools/plane",
                             "tools/chain",
                             "tools/spring",
                             "tools/fixjoint",
                             "tools/hinge",
                             "tools/pen",
                             "tools/drag",
                             "tools/scale",
                             "popup/erase",
                             "popup/clone",
                             "popup/mirror",
                             "popup/save",
                             "popup/color",
                             "popup/info",
                             "popup/springmenu",
                             "popup/hingemenu",
                             "popup/penmenu",
                             "file/save",
                             "file/open",
                             "file/clear",
                             "file/erasewater",
                             "file/zoom2scene",
                             "file/center",
                             "file/fullscreen",
                             "file/exit",
                             "gui/checkbox_off",
                             "gui/checkbox_on",
                             "gui/checkbox_mixed",
                             "gui/play",
                             "gui/pause",
                             "gui/undo",
                             "gui/redo",
                             "gui/close",
                             "gui/minimize",
                             "gui/maximize",
                             "gui/submenu",
                             "gui/pan",
                             "gui/zoom"};

std::string Read(const fs::path& path)
{
    std::ifstream file(path.string(), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

uint32_t BigEndian(const std::string& bytes, size_t at)
{
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i)
        value = value << 8 | static_cast<uint8_t>(bytes[at + i]);
    return value;
}

// A PNG opens with eight bytes of its own and the header's chunk: length, "IHDR", width, height, bits
// a channel, kind of color (6: red, green, blue and alpha).
void ExpectPng(const fs::path& path, uint32_t width, uint32_t height)
{
    SCOPED_TRACE(path.string());
    const std::string bytes = Read(path);
    ASSERT_LT(26u, bytes.size());
    EXPECT_EQ("\x89PNG\r\n\x1a\n", bytes.substr(0, 8));
    EXPECT_EQ(width, BigEndian(bytes, 16));
    EXPECT_EQ(height, BigEndian(bytes, 20));
    EXPECT_EQ(8, bytes[24]);
    EXPECT_EQ(6, bytes[25]);
}

// Without the extension.
std::set<std::string> NamesBelow(const fs::path& folder, const std::string& extension)
{
    std::set<std::string> names;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
    {
        const fs::path name = fs::relative(entry.path(), folder);
        if (name.extension() == extension)
            names.insert((name.parent_path() / name.stem()).generic_string());
    }
    return names;
}
}

TEST(Textures, AreThereUnderEachNameThatTheProgramAsksFor)
{
    for (const char* name : Names)
        ExpectPng(Textures / (std::string(name) + ".png"), 64,
                  name == std::string("spring") ? 256 : 64);
}

TEST(Textures, HoldFiveClouds)
{
    const std::set<std::string> clouds = NamesBelow(Textures / "background", ".png");
    EXPECT_EQ(5u, clouds.size());
    for (const std::string& name : clouds)
        ExpectPng(Textures / "background" / (name + ".png"), 512, 256);
}

TEST(Textures, AndTheirDrawingsHaveTheSameNames)
{
    std::set<std::string> textures = NamesBelow(Textures, ".png");
    for (const std::string& name : NamesBelow(Textures / "background", ".png"))
        textures.erase("background/" + name);
    textures.insert("Quib");
    EXPECT_EQ(textures, NamesBelow(Tree / "data-src", ".svg"));
}

// Beyond it there is nothing, and a driver may blend the outermost pixels with that.
TEST(Textures, EndInATransparentRim)
{
    const unsigned rim = 2; // pixels
    for (const std::string& name : NamesBelow(Textures, ".png"))
    {
        SCOPED_TRACE(name);
        const rendering::ImageRGBA32Ptr image =
            rendering::ImageRGBA32::LoadFile((Textures / (name + ".png")).string());
        const unsigned w = image->GetWidth(), h = image->GetHeight();
        int inside = 0, outside = 0; // pixels that show something
        for (unsigned y = 0; y < h; ++y)
            for (unsigned x = 0; x < w; ++x)
                if ((*image)(x, y).w != 0)
                    ++(x < rim || y < rim || x >= w - rim || y >= h - rim ? outside : inside);
        EXPECT_EQ(0, outside);
        // There is one that shows nothing, for those who want none.
        EXPECT_EQ(name == "blank", inside == 0);
    }
}

// The window's icon is drawn as it is, without alpha.
TEST(Textures, HaveTheWindowsIconBesideThem)
{
    const std::string bytes = Read(Tree / "Quib.bmp");
    ASSERT_EQ(54u + 3 * 64 * 64, bytes.size());
    EXPECT_EQ("BM", bytes.substr(0, 2));
    EXPECT_EQ(64, bytes[18]);
    EXPECT_EQ(64, bytes[22]);
    EXPECT_EQ(24, bytes[28]);
}
