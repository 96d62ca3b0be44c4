#include "AppFixture.h"
#include "HeldKeys.h"

#include "app/Background.h"
#include "input/Input.h"

#include <SDL_events.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

using math::Vec2;
using math::Vec3;
using math::Vec4;

namespace app
{
namespace
{
class AppTest : public AppFixture
{
protected:
    static App* TheApp() { return App::GetInstancePtr(); }

    static void Press(SDLKey key, bool down)
    {
        SDL_Event event = {};
        event.type = down ? SDL_KEYDOWN : SDL_KEYUP;
        event.key.keysym.sym = key;
        input::Input::GetInstancePtr()->HandleEvent(event);
    }

    /// How far the view moves in one frame with these keys held.
    static Vec2 Pan(std::initializer_list<SDLKey> keys, float dt)
    {
        TheCamera()->Reset();
        for (SDLKey key : keys)
            Press(key, true);
        TheApp()->Update(dt);
        for (SDLKey key : keys)
            Press(key, false);
        return TheCamera()->GetPan();
    }
};

TEST_F(AppTest, HasItsSettingsWithTheirDefaults)
{
    const struct
    {
        const char *name, *value;
    } settings[] = {
        {"DPI", "86.0"},
        {"autosaveTime", "30.0"},
        {"borderWidth", "0.1000000014901161"},
        {"borders", "true"},
        {"chainDensityFactor", "20.0"},
        {"dragToolStrength", "0.25"},
        {"drawBCs", "false"},
        {"drawBodyCenters", "false"},
        {"drawCollisions", "false"},
        {"drawMapOBBs", "false"},
        {"drawOBBs", "false"},
        {"drawParticleCenters", "false"},
        {"drawVertices", "false"},
        {"fadeColor", "[0.0, 0.0, 0.0]"},
        {"fadeRotate", "0.0"},
        {"fadeScale", "[0.949999988079071, 0.949999988079071]"},
        {"fadeTranslate", "[0.0, 0.0]"},
        {"language", "\"English\""},
        {"lineWidth", "4.0"},
        {"maxPointDist", "0.5"},
        {"maxSPHSpawn", "10000"},
        {"maxUndo", "25"},
        {"metaCutoff", "0.5"},
        {"minPointDist", "0.2000000029802322"},
        {"pointSize", "4.0"},
        {"polyTCFactor", "[10.0, 10.0]"},
        {"selectColor", "[1.0, 0.5, 0.5]"},
        {"simpleWater", "false"},
        {"waterColor", "[0.1000000014901161, 0.1000000014901161, 1.0, 0.699999988079071]"},
        {"waterElongation", "0.05000000074505806"},
        {"waterFanceyFactor", "10.0"},
        {"waterMaxElongation", "2.0"},
    };
    size_t found = 0;
    for (const script::VariablePtr& variable : TheApp()->GetVariables())
        found += dynamic_cast<script::AbstractAttrib*>(variable.get()) != nullptr;
    EXPECT_EQ(std::size(settings), found);
    for (const auto& setting : settings)
    {
        const script::VariablePtr variable = TheApp()->GetVariable(setting.name);
        ASSERT_TRUE(variable) << setting.name;
        EXPECT_EQ(util::String("App.") + setting.name + " = " + setting.value,
                  variable->ToExpression()->ToCode());
    }
}

TEST_F(AppTest, DeclaresItsSettingsInTheirOrder)
{
    std::vector<script::VariablePtr> attribs;
    for (const script::VariablePtr& variable : TheApp()->GetVariables())
        if (dynamic_cast<script::AbstractAttrib*>(variable.get()))
            attribs.push_back(variable);
    std::sort(attribs.begin(), attribs.end(),
              [](const script::VariablePtr& a, const script::VariablePtr& b)
              { return a->GetPointeeID() < b->GetPointeeID(); });
    std::vector<util::String> names;
    for (const script::VariablePtr& attrib : attribs)
        names.push_back(attrib->GetName());
    EXPECT_EQ((std::vector<util::String>{"language",
                                         "lineWidth",
                                         "pointSize",
                                         "drawOBBs",
                                         "drawMapOBBs",
                                         "drawBCs",
                                         "drawVertices",
                                         "drawCollisions",
                                         "drawParticleCenters",
                                         "drawBodyCenters",
                                         "polyTCFactor",
                                         "selectColor",
                                         "fadeColor",
                                         "fadeScale",
                                         "fadeTranslate",
                                         "fadeRotate",
                                         "minPointDist",
                                         "maxPointDist",
                                         "DPI",
                                         "maxSPHSpawn",
                                         "waterElongation",
                                         "waterMaxElongation",
                                         "metaCutoff",
                                         "borderWidth",
                                         "maxUndo",
                                         "autosaveTime",
                                         "chainDensityFactor",
                                         "dragToolStrength",
                                         "waterColor",
                                         "simpleWater",
                                         "waterFanceyFactor",
                                         "borders"}),
              names);
}

TEST_F(AppTest, UpdatesItsChildrenBeforeTheWorld)
{
    // A circle that starts to fall: 0 in what is saved means that the autosave saw the world before
    // the step.
    const auto circle = Add("Scene.addCircle { entityID = 1 }");
    boost::filesystem::remove(Dir() / "scenes/_AUTOSAVE.qib");
    Run("App.autosaveTime = 0.0");
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    TheApp()->Update(0.02f);
    Run("App.autosaveTime = 30.0");
    EXPECT_LT(GeomOf(circle).GetCenter().y, 0);
    EXPECT_NE(std::string::npos,
              test::Slurp(Dir() / "scenes/_AUTOSAVE.qib").find("pos = [0.0, 0.0]"));
}

TEST_F(AppTest, AssertsThatTheMouseIsSomewhere)
{
    input::Input* input = input::Input::GetInstancePtr();
    input->SetPosFromPixel([](int, int) { return Vec2(std::nanf(""), 0); });
    input->PumpEvents();
    test::LogCapture log;
    EXPECT_THROW(TheApp()->Update(0.01f), BadCoderException);
    EXPECT_TRUE(log.Has("IsFinite(GetMousePos())")) << log.Text();
    input->SetPosFromPixel([](int x, int y)
                           { return gui::GUI::GetInstancePtr()->PosFromPixel(x, y); });
    input->PumpEvents();
    EXPECT_NO_THROW(TheApp()->Update(0.01f));
}

TEST_F(AppTest, WishesForThePanelsAtAFirstStart)
{
    EXPECT_FALSE(TheApp()->GetAppGUI()->WantsDefaults());
    TheApp()->SetFirstTimeRunning();
    EXPECT_TRUE(TheApp()->GetAppGUI()->WantsDefaults());
}

TEST_F(AppTest, ShowsBackgroundAndInterfaceBelowItself)
{
    EXPECT_EQ("0.9", Run("App.Background.cloudOpacity"));
    EXPECT_EQ("true", Run("App.Background.drawClouds"));
    EXPECT_EQ("[0.3, 0.4, 1, 1]", Run("App.Background.skyColor"));
    EXPECT_TRUE(TheApp()->HasVariable("GUI"));
}

TEST_F(AppTest, PansWithTheArrowKeys)
{
    // 400 GUI units per second, at 150 to a world unit.
    const float way = 0.1f * 400 / 150;
    EXPECT_NEAR(way, Pan({SDLK_RIGHT}, 0.1f).x, 1e-5f);
    EXPECT_NEAR(-way, Pan({SDLK_LEFT}, 0.1f).x, 1e-5f);
    EXPECT_NEAR(way, Pan({SDLK_UP}, 0.1f).y, 1e-5f);
    EXPECT_NEAR(-way, Pan({SDLK_DOWN}, 0.1f).y, 1e-5f);
    EXPECT_EQ(Vec2(0, 0), Pan({SDLK_LEFT, SDLK_RIGHT}, 0.1f));
    EXPECT_EQ(Vec2(0, 0), Pan({SDLK_RIGHT}, 0));
}

TEST_F(AppTest, KeysThatSomebodyAboveHasTakenDoNotPan)
{
    TheCamera()->Reset();
    test::SendKey(SDLK_RIGHT, true, true);
    TheApp()->Update(0.1f);
    test::SendKey(SDLK_RIGHT, false, true);
    EXPECT_EQ(Vec2(0, 0), TheCamera()->GetPan());
}

TEST_F(AppTest, DrivesTheSimulationTheSceneAndTheCamera)
{
    const auto circle = Add("Scene.addCircle { pos = [0.0, 0.0] }");
    TheCamera()->SetTrackedGroup(QUIB_NEW Group(circle));
    gui::GUI::GetInstancePtr()->Update(0.016f);
    EXPECT_LT(GeomOf(circle).GetCenter().y, 0);
    // The camera comes last and so sees the place of this frame.
    EXPECT_EQ(GeomOf(circle).GetCenter(), TheCamera()->GetPan());
}

TEST_F(AppTest, WhatFallsOutOfTheWorldInAStepIsGoneInTheSameFrame)
{
    const auto circle = Add("Scene.addCircle { pos = [0.0, -99.999] }");
    Run("Sim.fallLimit = 100.0");
    circle->GetBody()->SetVel(Vec2(0, -100));
    gui::GUI::GetInstancePtr()->Update(0.016f);
    EXPECT_TRUE(TheScene()->GetEntities().empty());
    Run("Sim.fallLimit = 1000.0");
}

TEST_F(AppTest, MeasuresInScreenCentimetres)
{
    TheCamera()->SetZoom(100);
    EXPECT_FLOAT_EQ(0.01f, TheApp()->GetPixelSize());
    EXPECT_FLOAT_EQ(0.01f * 86 / 2.54f, TheApp()->GetScreenCM());
    EXPECT_FLOAT_EQ(0.001f * 86 / 2.54f, TheApp()->GetObjectBorderWidth());
    EXPECT_FLOAT_EQ(0.0066667f * 86 / 2.54f, TheApp()->GetDefaultJointSize());
    EXPECT_FLOAT_EQ(0.002f * 86 / 2.54f, TheApp()->GetMinimumPointDist());
    EXPECT_FLOAT_EQ(0.005f * 86 / 2.54f, TheApp()->GetMaximumPointDist());
    Run("GUI.scale = 2.0");
    EXPECT_FLOAT_EQ(0.005f, TheApp()->GetPixelSize());
    Run("GUI.scale = 1.0");
}

TEST_F(AppTest, BuildsWithNoSizeThatIsNone)
{
    TheCamera()->SetZoom(100);
    for (const char* bad : {"0.0", "-86.0", "0.0 / 0.0", "1.0 / 0.0"})
    {
        Run(util::String("App.DPI = ") + bad + "; App.chainDensityFactor = " + bad);
        EXPECT_FLOAT_EQ(0.01f * 86 / 2.54f, TheApp()->GetScreenCM()) << bad;
        EXPECT_EQ(20, TheApp()->GetChainDensityFactor()) << bad;
    }
    Run("App.DPI = 172.0; App.chainDensityFactor = 2.0");
    EXPECT_FLOAT_EQ(0.01f * 172 / 2.54f, TheApp()->GetScreenCM());
    EXPECT_EQ(2, TheApp()->GetChainDensityFactor());
    Run("App.DPI = 86.0; App.chainDensityFactor = 20.0");
}

TEST_F(AppTest, ColorsBordersBySelectionAndMouse)
{
    const auto box = Add("Scene.addBox { color = [0.2, 0.4, 0.6, 0.5] }");
    const struct
    {
        bool selected, mouseOver;
        Vec4 color;
    } cases[] = {
        {false, false, Vec4(0.1f, 0.2f, 0.3f, 0.5f)},
        {false, true, Vec4(0.2f, 0.2f, 0.2f, 1)},
        {true, false, Vec4(1, 1, 1, 1)},
        {true, true, Vec4(0.8f, 0.8f, 0.8f, 1)},
    };
    for (const auto& c : cases)
    {
        box->SetSelected(c.selected);
        box->SetMouseOver(c.mouseOver);
        EXPECT_EQ(c.color, TheApp()->GetBorderColor(box.get())) << c.selected << c.mouseOver;
    }
}

TEST_F(AppTest, MakesColorsThatShowAgainstTheSky)
{
    const Vec3 sky = TheApp()->GetBackground()->GetSkyColor().XYZ();
    int dark = 0, light = 0;
    for (int i = 0; i < 2000; ++i)
    {
        const Vec4 color = TheApp()->RandomEntityColor4();
        EXPECT_EQ(1, color.w);
        EXPECT_GE((color.x + color.y + color.z) / 3, 0.05f);
        EXPECT_GE(math::Distance(color.XYZ(), sky), 0.1f);
        const float lightness =
            (std::max({color.x, color.y, color.z}) + std::min({color.x, color.y, color.z})) / 2;
        dark += lightness < 0.5f;
        light += lightness > 0.5f;
    }
    EXPECT_NEAR(dark, light, 400);
}

TEST_F(AppTest, MakesColorsOfAllHuesAndMostlyStrongOnes)
{
    const int count = 3000;
    double depth = 0, saturation = 0;
    int hues[3] = {};
    for (int i = 0; i < count; ++i)
    {
        const Vec4 color = TheApp()->RandomEntityColor4();
        const float parts[] = {color.x, color.y, color.z};
        const auto [least, most] = std::minmax_element(std::begin(parts), std::end(parts));
        const float lightness = (*least + *most) / 2;
        depth += std::min(lightness, 1 - lightness);
        saturation += (*most - *least) / (1 - std::fabs(2 * lightness - 1));
        ++hues[most - std::begin(parts)];
    }
    // The means of half the cube root of a uniform number, and of the distance from the middle of a disc.
    EXPECT_NEAR(0.375, depth / count, 0.015);
    EXPECT_NEAR(2 / 3.0, saturation / count, 0.03);
    for (int hue : hues)
        EXPECT_NEAR(count / 3.0, hue, count * 0.05);
}

TEST_F(AppTest, FindsColorsUnderASkyThatIsNoColor)
{
    Run("App.Background.skyColor = [math.divide(0.0, 0.0), 0.0, 0.0, 1.0]");
    EXPECT_EQ(1, TheApp()->RandomEntityColor4().w);
    TheApp()
        ->GetBackground()
        ->GetVariable("skyColor")
        ->SetObject(script::ValueToObject(Vec4(0.3f, 0.4f, 1, 1)));
}

TEST_F(AppTest, RebuildsTheInterfaceForANewLanguage)
{
    const util::SharedPtr<AppGUI> before = TheApp()->GetAppGUI();
    before->SetPopup(QUIB_NEW gui::Component);
    Run("App.language = \"Klingon\"");
    EXPECT_EQ(before, TheApp()->GetAppGUI());
    EXPECT_FALSE(before->GetPopup());
    Run("App.language = \"English\"");
}

TEST_F(AppTest, SavesTheExitSceneAndForgetsTheAutosave)
{
    Add("Scene.addBox { }");
    test::Spit(Dir() / "scenes/_AUTOSAVE.qib", "x");
    TheApp()->OnShutdown();
    EXPECT_NE(std::string::npos,
              test::Slurp(Dir() / "scenes/_ONEXITSAVE.qib").find("Scene.addBox"));
    EXPECT_FALSE(boost::filesystem::exists(Dir() / "scenes/_AUTOSAVE.qib"));
}
}
}
