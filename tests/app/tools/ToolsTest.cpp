#include "ToolFixture.h"

#include "app/tools/BoxTool.h"
#include "app/tools/CircleTool.h"
#include "app/tools/MoveTool.h"
#include "app/tools/SpringTool.h"

#include <SDL_keysym.h>

#include <chrono>
#include <thread>

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
    static void WaitLongerThanAClick()
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(430));
    }
    template<typename T>
    static bool IsCurrent()
    {
        return TheTools()->GetTool() == ToolPtr(TheTools()->Get<T>());
    }
};

TEST_F(ToolsTest, BeginsWithTheSketchTool)
{
    EXPECT_TRUE(IsCurrent<SketchTool>());
    EXPECT_FALSE(TheTools()->HasActive());
}

TEST_F(ToolsTest, KnowsTheToolOfEachKey)
{
    const util::String keys = "bkdpcxnsfher";
    for (char key : keys)
    {
        const ToolPtr tool = TheTools()->ToolFromKey(key);
        ASSERT_TRUE(tool) << key;
        EXPECT_EQ(key, TheTools()->KeyFromTool(tool));
    }
    EXPECT_EQ('c', TheTools()->KeyFromTool(TheTools()->Get<CircleTool>()));
    EXPECT_EQ('x', TheTools()->KeyFromTool(TheTools()->Get<BoxTool>()));
    EXPECT_EQ(0, TheTools()->KeyFromTool(TheTools()->Get<MoveTool>()));
    EXPECT_FALSE(TheTools()->ToolFromKey('m'));
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

TEST_F(ToolsTest, RepeatsOfAHeldKeyChangeNothing)
{
    Key('c', true);
    WaitLongerThanAClick();
    EXPECT_FALSE(Key('c', true));
    EXPECT_FALSE(Key('c', true));
    EXPECT_TRUE(IsCurrent<CircleTool>());
    // It still counts as held since its first press.
    Key('c', false);
    EXPECT_TRUE(IsCurrent<SketchTool>());
}

TEST_F(ToolsTest, LettersWithCtrlOrAltChooseNoTool)
{
    for (int modifier : {SDLK_LCTRL, SDLK_RCTRL, SDLK_LALT})
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
}
}
