#include "gui/components/WobbleComponent.h"

#include "gui/Border.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using gui::WobbleComponent;
using math::Mat3;
using math::Vec2;

namespace
{
using WobblePtr = util::SharedPtr<WobbleComponent>;

/// At (100, 100), 80 x 40, at rest there.
WobblePtr Make()
{
    const WobblePtr component = QUIB_NEW WobbleComponent;
    component->SetWobble(false);
    component->SetOuterPos(100, 100);
    component->SetInnerSize(80, 40);
    component->SetWobble(true);
    return component;
}

Vec2 Drawn(const WobblePtr& component, Vec2 pos)
{
    return TransformCoordinate(component->GetBend(), pos);
}
}

TEST(WobbleComponent, HasNoLayout)
{
    EXPECT_FALSE(Make()->GetLayout());
}

TEST(WobbleComponent, AtRestItIsNotBent)
{
    const WobblePtr component = Make();
    component->Update(0.1f);
    EXPECT_EQ(Mat3(), component->GetBend());
}

TEST(WobbleComponent, ItsBottomLagsBehindItsPosition)
{
    const WobblePtr component = Make();
    component->SetOuterPos(110, 120);
    component->Update(0.01f);
    // One step of 0.01: v = 0.01 * 300 * (10, 20), drawn by 0.01 * v of the way.
    const Vec2 d = Vec2(10, 20) * (1 - 0.01f * 0.01f * 300);
    EXPECT_NEAR(-d.x / 40, component->GetBend()[0][1], 1e-6f);
    EXPECT_NEAR(1 - d.y / 40, component->GetBend()[1][1], 1e-6f);
    EXPECT_EQ(1, component->GetBend()[0][0]);
    EXPECT_EQ(0, component->GetBend()[1][0]);
    EXPECT_EQ(Vec2(0, 0), Drawn(component, Vec2(0, 0)));
    EXPECT_EQ(Vec2(80, 0), Drawn(component, Vec2(80, 0))) << "the top is where it belongs";
    EXPECT_NEAR(40 - d.y, Drawn(component, Vec2(0, 40)).y, 1e-4f) << "the bottom where it was";
    EXPECT_NEAR(-d.x, Drawn(component, Vec2(0, 40)).x, 1e-4f);
}

TEST(WobbleComponent, AcrossTheOtherAxisItsRightSideLagsBehind)
{
    const WobblePtr component = Make();
    component->SetWobbleAxis(WobbleComponent::WobbleRight);
    component->SetOuterPos(110, 120);
    component->Update(0.01f);
    const Vec2 d = Vec2(10, 20) * (1 - 0.01f * 0.01f * 300);
    EXPECT_NEAR(1 - d.x / 80, component->GetBend()[0][0], 1e-6f);
    EXPECT_NEAR(-d.y / 80, component->GetBend()[1][0], 1e-6f);
    EXPECT_EQ(0, component->GetBend()[0][1]);
    EXPECT_EQ(1, component->GetBend()[1][1]);
}

TEST(WobbleComponent, TheBorderCountsAsItsHeight)
{
    const WobblePtr component = Make();
    component->SetBorder(QUIB_NEW gui::SimpleBorder(5, math::Vec4(), math::Vec4()));
    component->SetOuterPos(110, 100);
    component->Update(0.01f);
    EXPECT_NEAR(-10 * (1 - 0.03f) / 50, component->GetBend()[0][1], 1e-6f);
}

TEST(WobbleComponent, ComesToRest)
{
    const WobblePtr component = Make();
    component->SetOuterPos(200, 150);
    for (int i = 0; i < 200; ++i)
        component->Update(0.02f);
    EXPECT_NEAR(0, component->GetBend()[0][1], 1e-3f);
    EXPECT_NEAR(1, component->GetBend()[1][1], 1e-3f);
}

TEST(WobbleComponent, ALongFrameIsManySteps)
{
    const WobblePtr once = Make(), often = Make();
    once->SetOuterPos(110, 120);
    often->SetOuterPos(110, 120);
    once->Update(0.11f); // three steps, not two
    for (int i = 0; i < 3; ++i)
        often->Update(0.11f / 3);
    for (const int row : {0, 1})
        EXPECT_NEAR(often->GetBend()[row][1], once->GetBend()[row][1], 1e-5f);
    once->Update(60);
    EXPECT_NEAR(1, once->GetBend()[1][1], 1e-3f) << "and it is stable";
}

TEST(WobbleComponent, AFrameWithoutTimeChangesNothing)
{
    const WobblePtr component = Make();
    component->SetOuterPos(110, 100);
    component->Update(0);
    EXPECT_EQ(-10.0f / 40, component->GetBend()[0][1]);
}

TEST(WobbleComponent, TurnedOffItFollowsAtOnce)
{
    const WobblePtr component = Make();
    component->SetOuterPos(200, 150);
    component->Update(0.02f);
    ASSERT_NE(Mat3(), component->GetBend());
    component->SetWobble(false);
    EXPECT_EQ(Mat3(), component->GetBend());
    component->SetOuterPos(0, 0);
    component->SetWobble(true);
    component->Update(0.02f);
    EXPECT_EQ(Mat3(), component->GetBend()) << "whoever placed it meanwhile sees no swing";
}

TEST(WobbleComponent, WithoutHeightItIsNotBent)
{
    const WobblePtr component = Make();
    component->SetInnerSize(80, 0);
    component->SetOuterPos(200, 150);
    component->Update(0.02f);
    EXPECT_EQ(Mat3(), component->GetBend());
}

TEST(WobbleComponent, APositionThatIsNoNumberIsForgotten)
{
    const WobblePtr component = Make();
    component->SetOuterPos(std::numeric_limits<float>::infinity(), 0);
    component->Update(0.02f);
    component->SetOuterPos(50, 50);
    component->Update(0.02f);
    component->Update(0.02f);
    EXPECT_TRUE(std::isfinite(component->GetBend()[0][1]));
    EXPECT_TRUE(std::isfinite(component->GetBend()[1][1]));
}

TEST(WobbleComponent, TransformsByItsBentPicture)
{
    const WobblePtr component = Make();
    component->SetBorder(QUIB_NEW gui::SimpleBorder(5, math::Vec4(), math::Vec4()));
    component->SetOuterPos(110, 120);
    component->Update(0.01f);
    // Where the inner (30, 20) is drawn: bent from the outer top left.
    const Vec2 drawn = Drawn(component, Vec2(35, 25)) - Vec2(5, 5) + component->GetInnerPos();
    const Vec2 local = TransformCoordinate(component->CalcWorldToLocalTransform(), drawn);
    EXPECT_NEAR(30, local.x, 1e-3f);
    EXPECT_NEAR(20, local.y, 1e-3f);
    // The mouse finds it where it is.
    EXPECT_EQ(Vec2(30, 20), component->GUIToLocal(component->GetInnerPos() + Vec2(30, 20)));
    component->SetWobble(false);
    EXPECT_EQ(Vec2(30, 20), TransformCoordinate(component->CalcWorldToLocalTransform(),
                                                component->GetInnerPos() + Vec2(30, 20)));
}

TEST(WobbleComponent, APictureBentFlatTransformsAsAtRest)
{
    const WobblePtr component = Make();
    component->SetOuterPos(100, 140); // by just its height
    component->Update(0);
    ASSERT_EQ(0, component->GetBend().Determinant());
    EXPECT_EQ(Vec2(3, 4),
              TransformCoordinate(component->CalcWorldToLocalTransform(), Vec2(103, 144)));
}
