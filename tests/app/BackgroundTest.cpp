#include "AppFixture.h"

#include "app/Background.h"
#include "app/CloudPicture.h"

#include <algorithm>
#include <cmath>
#include <limits>

using math::BoundingBox;
using math::Vec2;

namespace app
{
namespace
{
class BackgroundTest : public AppFixture
{
protected:
    BackgroundTest() { TheCamera()->Reset(); }

    static Background* TheBackground() { return App::GetInstancePtr()->GetBackground().get(); }
    static const std::vector<Background::Particle>& Clouds()
    {
        return TheBackground()->GetClouds();
    }
    static std::vector<Vec2> Middles()
    {
        std::vector<Vec2> middles;
        for (const Background::Particle& cloud : Clouds())
            middles.push_back(
                TheBackground()->CalcCloudBox(cloud, TheCamera()->GetZoom()).GetCenter());
        return middles;
    }
    static BoundingBox View() { return BoundingBox(Vec2(), TheBackground()->GetInnerSize()); }

    /// For each cloud that has not gone around, how far it has moved.
    template<typename F>
    static void ForEachMove(const std::vector<Vec2>& before, F f)
    {
        const std::vector<Vec2> now = Middles();
        size_t moved = 0;
        for (size_t i = 0; i < now.size(); ++i)
            if ((now[i] - before[i]).Length() < 600)
            {
                f(Clouds()[i], now[i] - before[i]);
                ++moved;
            }
        EXPECT_GT(moved, 20u);
    }
};

TEST_F(BackgroundTest, HasItsSettings)
{
    const auto code = [](const char* name)
    { return TheBackground()->GetVariable(name)->ToExpression()->ToCode(); };
    EXPECT_EQ("App.Background.skyColor = [0.300000011920929, 0.4000000059604645, 1.0, 1.0]",
              code("skyColor"));
    EXPECT_EQ("App.Background.cloudOpacity = 0.8999999761581421", code("cloudOpacity"));
    EXPECT_EQ("App.Background.drawClouds = true", code("drawClouds"));
}

TEST_F(BackgroundTest, HasThirtyCloudsFromTheFarthestToTheNearest)
{
    const auto isNearer = [](const auto& a, const auto& b) { return a.depth < b.depth; };
    ASSERT_EQ(30u, Clouds().size());
    EXPECT_TRUE(std::is_heap(Clouds().begin(), Clouds().end(), isNearer));
    EXPECT_TRUE(std::is_sorted(Clouds().rbegin(), Clouds().rend(), isNearer));
    for (const Background::Particle& cloud : Clouds())
    {
        EXPECT_GE(cloud.depth, 1);
        EXPECT_LE(cloud.depth, 10);
        EXPECT_GE(cloud.size * cloud.depth, 1.999f);
        EXPECT_LE(cloud.size * cloud.depth, 6.001f);
        EXPECT_LE(std::fabs(cloud.pos.x), 0.5f);
        EXPECT_LE(std::fabs(cloud.pos.y), 0.5f);
    }
}

TEST_F(BackgroundTest, DriftsCloudsTheSlowerTheFartherTheyAre)
{
    const std::vector<Vec2> before = Middles();
    TheBackground()->Update(10);
    ForEachMove(before,
                [](const auto& cloud, const Vec2& moved)
                {
                    EXPECT_NEAR(50 / cloud.depth, moved.x, 0.05f);
                    EXPECT_NEAR(0, moved.y, 1e-3f);
                });
}

TEST_F(BackgroundTest, DriftsCloudsWhileTheSimulationIsPaused)
{
    Run("Sim.running = false");
    const std::vector<Vec2> before = Middles();
    App::GetInstancePtr()->Update(2);
    ForEachMove(before, [](const auto& cloud, const Vec2& moved)
                { EXPECT_NEAR(10 / cloud.depth, moved.x, 0.05f); });
}

TEST_F(BackgroundTest, MovesCloudsByTheirDepthWhenTheCameraPans)
{
    TheBackground()->Update(0);
    const std::vector<Vec2> before = Middles();
    TheCamera()->PanView(Vec2(200, -100));
    TheBackground()->Update(0);
    ForEachMove(before,
                [](const auto& cloud, const Vec2& moved)
                {
                    EXPECT_NEAR(200 / cloud.depth, moved.x, 0.05f);
                    EXPECT_NEAR(-100 / cloud.depth, moved.y, 0.05f);
                });
}

TEST_F(BackgroundTest, ZoomsCloudsAroundTheMiddleTheLessTheFartherTheyAre)
{
    const Vec2 middle = TheBackground()->GetInnerSize() * 0.5f;
    const Background::Particle &farthest = Clouds().front(), &nearest = Clouds().back();
    const auto growth = [&](const Background::Particle& cloud)
    {
        const BoundingBox before = TheBackground()->CalcCloudBox(cloud, 150),
                          after = TheBackground()->CalcCloudBox(cloud, 1500);
        const float growth = after.GetSize().x / before.GetSize().x;
        EXPECT_NEAR(growth * (before.GetCenter() - middle).x, (after.GetCenter() - middle).x, 0.1f);
        return growth;
    };
    EXPECT_GT(growth(farthest), 1.01f);
    EXPECT_GT(growth(nearest), growth(farthest));
    EXPECT_LT(growth(nearest), 3.0f);
}

TEST_F(BackgroundTest, LetsNoCloudJumpWhereItCanBeSeen)
{
    for (Background::Particle cloud : Clouds())
        for (float zoom : {Camera::GetMinZoom(), 150.0f, Camera::GetMaxZoom()})
            for (float other : {-0.3f, 0.2f})
                for (float edge : {-0.5f, 0.4999999f})
                {
                    cloud.pos = Vec2(edge, other);
                    BoundingBox seen = TheBackground()->CalcCloudBox(cloud, zoom);
                    seen.Grow(-0.1f);
                    EXPECT_FALSE(Intersects(seen, View())) << cloud.depth << " at " << zoom;
                    cloud.pos = Vec2(other, edge);
                    seen = TheBackground()->CalcCloudBox(cloud, zoom);
                    seen.Grow(-0.1f);
                    EXPECT_FALSE(Intersects(seen, View())) << cloud.depth << " at " << zoom;
                }
}

TEST_F(BackgroundTest, BringsACloudInOnTheOtherSide)
{
    EXPECT_FLOAT_EQ(-0.4f, Background::WrapField(0.6f));
    EXPECT_FLOAT_EQ(0.4f, Background::WrapField(-0.6f));
    EXPECT_FLOAT_EQ(-0.5f, Background::WrapField(0.5f));
    EXPECT_FLOAT_EQ(0.25f, Background::WrapField(1000.25f));
    EXPECT_FLOAT_EQ(0.1f, Background::WrapField(0.1f));
}

TEST_F(BackgroundTest, KeepsItsCloudsWhateverTheCameraDoes)
{
    TheBackground()->Update(0);
    for (const Vec2& pan : {Vec2(3e38f, 0), Vec2(-3e38f, 3e38f), Vec2(1e20f, -1e20f), Vec2()})
    {
        TheCamera()->SetPan(pan);
        TheCamera()->SetZoom(3000);
        TheBackground()->Update(0.01f);
        for (const Background::Particle& cloud : Clouds())
            ASSERT_TRUE(std::fabs(cloud.pos.x) <= 0.5f && std::fabs(cloud.pos.y) <= 0.5f) << pan;
    }
    TheBackground()->Update(std::numeric_limits<float>::quiet_NaN());
    for (const Background::Particle& cloud : Clouds())
        ASSERT_TRUE(std::fabs(cloud.pos.x) <= 0.5f);
}

TEST(CloudPicture, FindsTheSmallPartThatCanBeSeen)
{
    rendering::ImageRGBA32 image(64, 64, "");
    std::fill_n(image.data(), 64 * 64, rendering::PixelRGBA32(255, 255, 255, 0));
    EXPECT_TRUE(CloudPicture::FindVisible(image).empty());
    image(20, 17).w = 255;
    image(40, 17).w = 255;
    float area = 0;
    BoundingBox all;
    for (const BoundingBox& part : CloudPicture::FindVisible(image))
    {
        area += part.GetArea();
        all.Include(part);
    }
    EXPECT_TRUE(all.Contains(Vec2(19.5f / 64, 16.5f / 64)));
    EXPECT_TRUE(all.Contains(Vec2(41.5f / 64, 18.5f / 64)));
    EXPECT_FLOAT_EQ(area, all.GetArea()) << "nothing twice, no gap";
    EXPECT_LT(area, 0.3f);
}
}
}
