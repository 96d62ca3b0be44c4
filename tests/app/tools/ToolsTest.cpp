#include "ToolFixture.h"

#include "../../AllocationCounter.h"

#include "app/tools/BoxTool.h"
#include "app/tools/BrushTool.h"
#include "app/tools/ChainTool.h"
#include "app/tools/CircleTool.h"
#include "app/tools/DragTool.h"
#include "app/tools/FixJointTool.h"
#include "app/tools/HingeTool.h"
#include "app/tools/MoveTool.h"
#include "app/tools/PanTool.h"
#include "app/tools/PenTool.h"
#include "app/tools/PlaneTool.h"
#include "app/tools/RotateTool.h"
#include "app/tools/ScaleTool.h"
#include "app/tools/SpringTool.h"
#include "rendering/Texture.h"
#include "util/Timer.h"

#include <SDL_keysym.h>

#include <stdexcept>
#include <string>

namespace app
{
namespace
{
class ToolsTest : public ToolFixture
{
protected:
    // Handed over as AppGUI does it.
    static bool Key(int key, bool down)
    {
        const input::KeyEvent event(key, 0, down, math::Vec2());
        test::SendKey(key, down, true); // the input's own memory of it
        TheTools()->OnKeyEvent(event);
        return event.IsHandled();
    }
    void SetUp() override
    {
        ToolFixture::SetUp();
        util::Timer::SetSource([](unsigned) { return s_now; });
    }
    void TearDown() override
    {
        util::Timer::SetSource(nullptr);
        ToolFixture::TearDown();
    }
    static void Wait(unsigned milliseconds) { s_now += milliseconds; }
    static void WaitLongerThanAClick() { Wait(401); }
    template<typename T>
    static bool IsCurrent()
    {
        return TheTools()->GetTool() == ToolPtr(TheTools()->Get<T>());
    }

private:
    static inline unsigned s_now = 1000000; // milliseconds
};

// Writes down what happens to it.
class NotingTool : public Tool
{
public:
    bool Disband() override
    {
        ++disbanded;
        if (throws)
            throw std::runtime_error("can't");
        return true;
    }
    void Update(float) override
    {
        if (throws)
            throw std::runtime_error("can't");
    }

    int disbanded = 0;
    bool throws = false;
};
using NotingToolPtr = util::SharedPtr<NotingTool>;

TEST_F(ToolsTest, BeginsWithTheSketchTool)
{
    EXPECT_TRUE(IsCurrent<SketchTool>());
    EXPECT_FALSE(TheTools()->HasActive());
}

TEST_F(ToolsTest, KnowsTheToolOfEachKey)
{
    const Tools& tools = *TheTools();
    const struct
    {
        int key;
        ToolPtr tool;
    } cases[] = {
        {'b', tools.Get<BrushTool>()},    {'k', tools.Get<SketchTool>()},
        {'d', tools.Get<DragTool>()},     {'p', tools.Get<PlaneTool>()},
        {'c', tools.Get<CircleTool>()},   {'x', tools.Get<BoxTool>()},
        {'n', tools.Get<ChainTool>()},    {'s', tools.Get<SpringTool>()},
        {'f', tools.Get<FixJointTool>()}, {'h', tools.Get<HingeTool>()},
        {'e', tools.Get<PenTool>()},      {'r', tools.Get<ScaleTool>()},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(c.tool, tools.ToolFromKey(c.key)) << char(c.key);
        EXPECT_EQ(c.key, tools.KeyFromTool(c.tool)) << char(c.key);
    }
    EXPECT_EQ(0, tools.KeyFromTool(tools.Get<MoveTool>()));
    EXPECT_EQ(0, tools.KeyFromTool(tools.Get<RotateTool>()));
    EXPECT_EQ(0, tools.KeyFromTool(tools.Get<PanTool>()));
    EXPECT_FALSE(tools.ToolFromKey('m'));
}

TEST_F(ToolsTest, AKeyThatIsTappedChoosesItsTool)
{
    EXPECT_TRUE(Key('c', true));
    EXPECT_TRUE(IsCurrent<CircleTool>());
    EXPECT_TRUE(Key('c', false));
    EXPECT_TRUE(IsCurrent<CircleTool>());
}

TEST_F(ToolsTest, AKeyThatIsHeldLendsItsTool)
{
    Key('c', true);
    WaitLongerThanAClick();
    EXPECT_TRUE(IsCurrent<CircleTool>());
    EXPECT_TRUE(Key('c', false));
    EXPECT_TRUE(IsCurrent<SketchTool>());
}

TEST_F(ToolsTest, AToolThatWasLentIsBrokenOffWhenItsKeyGoes)
{
    CircleTool& circle = *TheTools()->Get<CircleTool>();
    Key('c', true);
    Begin(circle, math::Vec2());
    Drag(circle, math::Vec2(), math::Vec2(), math::Vec2(1, 0));
    EXPECT_TRUE(circle.GetPreview());
    WaitLongerThanAClick();
    Key('c', false);
    EXPECT_FALSE(circle.IsInUse());
    EXPECT_FALSE(circle.GetPreview());
    EXPECT_FALSE(End(circle, math::Vec2(), math::Vec2(1, 0)));
    EXPECT_EQ(0u, EntityCount());
}

TEST_F(ToolsTest, AToolKeyDoesNothingWhileAnotherIsHeld)
{
    Key('c', true);
    EXPECT_FALSE(Key('x', true));
    EXPECT_TRUE(IsCurrent<CircleTool>());
    EXPECT_FALSE(Key('x', false));
    Key('c', false);
    EXPECT_TRUE(Key('x', true));
    Key('x', false);
    EXPECT_TRUE(IsCurrent<BoxTool>());
}

TEST_F(ToolsTest, TheKeyOfTheCurrentToolIsLeftToOthers)
{
    EXPECT_FALSE(Key('k', true));
    EXPECT_FALSE(Key('k', false));
    EXPECT_TRUE(IsCurrent<SketchTool>());
}

TEST_F(ToolsTest, ALentToolHidesThatOfTheGesture)
{
    Key('c', true);
    TheTools()->SetActive(TheTools()->Get<MoveTool>());
    EXPECT_TRUE(IsCurrent<CircleTool>());
    WaitLongerThanAClick();
    Key('c', false);
    EXPECT_TRUE(IsCurrent<MoveTool>());
    TheTools()->SetActive(nullptr);
    EXPECT_TRUE(IsCurrent<SketchTool>());
}

TEST_F(ToolsTest, TheBorderBetweenTappedAndHeldIsThatOfClicks)
{
    for (const int tolerance : {400, 200})
    {
        Run("GUI.clickTimeTolerance = " + std::to_string(tolerance / 1000.0));
        Key('c', true);
        Wait(tolerance + 1);
        Key('c', false);
        EXPECT_TRUE(IsCurrent<SketchTool>()) << tolerance;
        Key('c', true);
        Wait(tolerance - 1);
        Key('c', false);
        EXPECT_TRUE(IsCurrent<CircleTool>()) << tolerance;
        TheTools()->Select(TheTools()->Get<SketchTool>());
    }
    Run("GUI.clickTimeTolerance = 0.4");
}

TEST_F(ToolsTest, RepeatsOfAHeldKeyChangeNothing)
{
    Key('c', true);
    WaitLongerThanAClick();
    // Nor are they for anybody else.
    EXPECT_TRUE(Key('c', true));
    EXPECT_TRUE(Key('c', true));
    EXPECT_TRUE(IsCurrent<CircleTool>());
    // It still counts as held since its first press.
    Key('c', false);
    EXPECT_TRUE(IsCurrent<SketchTool>());
}

TEST_F(ToolsTest, BreaksOffTheToolThatGoes)
{
    const NotingToolPtr chosen = QUIB_NEW NotingTool, active = QUIB_NEW NotingTool;
    TheTools()->Select(chosen);
    TheTools()->SetActive(active);
    EXPECT_EQ(1, chosen->disbanded);
    EXPECT_EQ(0, active->disbanded);
    TheTools()->SetActive(nullptr);
    EXPECT_EQ(1, active->disbanded);
    TheTools()->Select(TheTools()->Get<BoxTool>());
    EXPECT_EQ(2, chosen->disbanded);
    // A lent one that comes, and one that goes.
    TheTools()->Select(chosen);
    Key('c', true);
    EXPECT_EQ(3, chosen->disbanded);
    WaitLongerThanAClick();
    Key('c', false);
    EXPECT_EQ(3, chosen->disbanded);
}

TEST_F(ToolsTest, ANewSceneBreaksOffTheGestureBehindALentTool)
{
    const NotingToolPtr active = QUIB_NEW NotingTool;
    Key('c', true);
    TheTools()->SetActive(active);
    TheScene()->ClearScene();
    EXPECT_EQ(1, active->disbanded);
    Key('c', false);
}

TEST_F(ToolsTest, ANewSceneBreaksOffTheGestureThatATappedKeyHasLeftBehind)
{
    Add("Scene.addBox { pos = [0.0, 0.0]; size = [1.0, 1.0] }");
    const util::SharedPtr<MoveTool>& move = TheTools()->Get<MoveTool>();
    Key('x', true);
    TheTools()->SetActive(move);
    EXPECT_TRUE(Begin(*move, math::Vec2()));
    Key('x', false);
    EXPECT_TRUE(IsCurrent<BoxTool>());
    EXPECT_TRUE(move->IsInUse());
    TheScene()->ClearScene();
    EXPECT_FALSE(move->IsInUse());
}

TEST_F(ToolsTest, EscapeBreaksOff)
{
    NotingTool tool;
    const input::KeyEvent escape(SDLK_ESCAPE, 0, true, math::Vec2());
    tool.OnKeyEvent(escape);
    EXPECT_EQ(1, tool.disbanded);
    EXPECT_TRUE(escape.IsHandled());
    tool.OnKeyEvent(escape);
    EXPECT_EQ(1, tool.disbanded) << "somebody had it already";
    tool.OnKeyEvent(input::KeyEvent(SDLK_ESCAPE, 0, false, math::Vec2()));
    EXPECT_EQ(1, tool.disbanded);
}

TEST_F(ToolsTest, WhatAToolThrowsInItsUpdateIsPassedOnWithALine)
{
    const NotingToolPtr tool = QUIB_NEW NotingTool;
    TheTools()->Select(tool);
    tool->throws = true;
    const test::LogCapture info(logging::LogInfo), other(1 | 6 | 16);
    EXPECT_THROW(TheTools()->Update(0.01f), std::runtime_error);
    EXPECT_TRUE(info.Has("Exception passed on at ")) << info.Text();
    EXPECT_FALSE(other.Has("Exception passed on at ")) << other.Text();
    tool->throws = false;
}

TEST_F(ToolsTest, AToolThatThrowsWhenItGoesIsGoneAllTheSame)
{
    const NotingToolPtr tool = QUIB_NEW NotingTool;
    TheTools()->Select(tool);
    Key('c', true);
    tool->throws = true;
    EXPECT_THROW(Key('c', false), std::runtime_error);
    EXPECT_EQ(ToolPtr(tool), TheTools()->GetTool());
    tool->throws = false;
    EXPECT_TRUE(Key('x', true));
    EXPECT_TRUE(Key('x', false));
    EXPECT_TRUE(IsCurrent<BoxTool>());
}

TEST_F(ToolsTest, LettersWithCtrlOrAltChooseNoTool)
{
    for (int modifier : {SDLK_LCTRL, SDLK_RCTRL, SDLK_LALT, SDLK_RALT, SDLK_LMETA})
    {
        const test::HeldKeys held({modifier});
        EXPECT_FALSE(Key('c', true)) << modifier;
        Key('c', false);
        EXPECT_TRUE(IsCurrent<SketchTool>()) << modifier;
    }
}

TEST_F(ToolsTest, AHandledPressChoosesNoTool)
{
    const input::KeyEvent event('c', 'c', true, math::Vec2());
    event.SetHandled(true);
    TheTools()->OnKeyEvent(event);
    EXPECT_TRUE(IsCurrent<SketchTool>());
}

TEST_F(ToolsTest, AReleaseThatSomebodyElseTookEndsTheLoan)
{
    Key('c', true);
    WaitLongerThanAClick();
    test::SendKey('c', false, true);
    EXPECT_TRUE(IsCurrent<CircleTool>());
    TheTools()->Update(0.01f);
    EXPECT_TRUE(IsCurrent<SketchTool>());
    EXPECT_TRUE(Key('x', true));
    Key('x', false);
}

TEST_F(ToolsTest, ChoosingAToolEndsTheGesture)
{
    TheTools()->SetActive(TheTools()->Get<MoveTool>());
    TheTools()->Select(TheTools()->Get<BoxTool>());
    EXPECT_FALSE(TheTools()->HasActive());
    EXPECT_TRUE(IsCurrent<BoxTool>());
}

class ToolsCursorTest : public ToolsTest
{
protected:
    void SetUp() override
    {
        ToolsTest::SetUp();
        Give("mouse");
    }
    void TearDown() override
    {
        boost::filesystem::remove_all(Dir() / "data/textures");
        ReloadTextures();
        ToolsTest::TearDown();
    }
    /// A picture of one pixel, for the name below the textures.
    static void Give(const std::string& name)
    {
        const std::string path = Dir() / ("data/textures/" + name + ".tga");
        boost::filesystem::create_directories(boost::filesystem::path(path).parent_path());
        test::Spit(path, std::string("\0\0\2\0\0\0\0\0\0\0\0\0\1\0\1\0\x18\0blu", 21));
        ReloadTextures();
    }
    static void ReloadTextures() { Run("Resources.reloadTextures"); }
    static const rendering::TextureProxy& Cursor()
    {
        return gui::GUI::GetInstancePtr()->GetCursor();
    }
    static bool IsCursor(const util::String& name)
    {
        return Cursor() && Cursor().GetMentor() == gui::GUI::LoadCursor(name).GetMentor();
    }
};

TEST_F(ToolsCursorTest, TheCursorIsThatOfTheToolInUse)
{
    Give("cursors/pan");
    TheTools()->Update(0.02f);
    EXPECT_TRUE(IsCursor("mouse"));
    TheTools()->SetActive(TheTools()->Get<PanTool>());
    TheTools()->Update(0.02f);
    EXPECT_TRUE(IsCursor("mouse")) << "not in use yet";
    TheTools()->Get<PanTool>()->SetInUse(true);
    TheTools()->Update(0.02f);
    EXPECT_TRUE(IsCursor("cursors/pan"));
    const size_t before = test::g_allocations;
    TheTools()->Update(0.02f);
    EXPECT_EQ(before, test::g_allocations) << "nothing is loaded again";
    TheTools()->SetActive(nullptr);
    TheTools()->Update(0.02f);
    EXPECT_TRUE(IsCursor("mouse"));
}

TEST_F(ToolsCursorTest, WithoutAPictureTheDefaultServesAndWithoutThatOneTheDesktops)
{
    TheTools()->SetActive(TheTools()->Get<PanTool>());
    TheTools()->Get<PanTool>()->SetInUse(true);
    TheTools()->Update(0.02f);
    EXPECT_TRUE(IsCursor("mouse"));
    Give("cursors/pan");
    TheTools()->Update(0.02f);
    EXPECT_TRUE(IsCursor("cursors/pan")) << "a picture may come later";
    boost::filesystem::remove_all(Dir() / "data/textures");
    ReloadTextures();
    TheTools()->Update(0.02f);
    EXPECT_FALSE(Cursor());
    TheTools()->SetActive(nullptr);
}
}
}
