#include "physics/Polygon.h"

#include "Dice.h"
#include "GeomFixture.h"
#include "TestSupport.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace physics
{
using math::Vec2;
using math::Vec2List;

namespace
{
const float inf = std::numeric_limits<float>::infinity();
const float nan = std::numeric_limits<float>::quiet_NaN();

const Vec2List square = {Vec2(0, 0), Vec2(2, 0), Vec2(2, 2), Vec2(0, 2)};
// An L of three unit squares.
const Vec2List corner = {Vec2(0, 0), Vec2(2, 0), Vec2(2, 1), Vec2(1, 1), Vec2(1, 2), Vec2(0, 2)};

class PolygonTest : public GeomFixture
{
protected:
    static PolygonPtr Make(const Vec2List& points) { return QUIB_NEW Polygon(points); }

    static std::string MessageOf(const Vec2List& points)
    {
        try
        {
            Make(points);
        }
        catch (BadDataException& e)
        {
            return std::string("BadData: ") + e.what();
        }
        catch (Exception& e)
        {
            return e.what();
        }
        return "";
    }

    /// An outline of n points around a center, its radius going up and down.
    static Vec2List Blob(test::Dice& dice, int n, Vec2 center, float radius)
    {
        Vec2List points;
        for (int i = 0; i < n; ++i)
        {
            const float a = math::TwoPIf * i / n, r = radius * dice.Uniform(0.5f, 1);
            points.push_back(center + r * Vec2(std::cos(a), std::sin(a)));
        }
        return points;
    }
};
}

TEST_F(PolygonTest, KnowsItsAreaCentroidAndInertia)
{
    PolygonPtr p = Make(square);
    EXPECT_FLOAT_EQ(4, p->Area());
    EXPECT_FLOAT_EQ(2.0f / 3, p->InertiaSansMass());
    ExpectNear(Vec2(1, 1), p->GetCenter());
    EXPECT_FLOAT_EQ(8, p->GetPerimeter());

    // By hand: areas 2 and 1 with centers (1, 0.5) and (0.5, 1.5).
    PolygonPtr l = Make(corner);
    EXPECT_FLOAT_EQ(3, l->Area());
    ExpectNear(Vec2(5.0f / 6, 5.0f / 6), l->GetCenter());
    // Each square 1/6, plus the squares' own distances from the centroid: (1/3)^2 + (1/3)^2 for the
    // corner, (2/3)^2 + (1/3)^2 for the other two, all divided by 3.
    EXPECT_NEAR(1.0f / 6 + (2.0f / 9 + 2 * 5.0f / 9) / 3, l->InertiaSansMass(), 1e-5f);
}

TEST_F(PolygonTest, StandsWhereThePointsWereGiven)
{
    PolygonPtr p = Make(corner);
    for (size_t i = 0; i < corner.size(); ++i)
        ExpectNear(corner[i], p->GetWorldVertices()[i]);
    EXPECT_EQ(0, p->GetPose().GetAngle());
    // The origin of polygon space is the centroid.
    ExpectNear(-1 * p->GetCenter(), p->GetVertices()[0]);
    PolygonPtr q = Make(p->GetVertices());
    ExpectNear(Vec2(0, 0), q->GetCenter());
}

TEST_F(PolygonTest, WhatIsMadeOfItsVerticesIsTheSameToTheBitWhereverItWasDrawn)
{
    test::Dice dice(7);
    for (int i = 0; i < 2000; ++i)
    {
        // A hand's stroke, in pixels, in either direction.
        const float distance = i % 2 ? 3.0f : 300.0f, radius = dice.Uniform(0.2f, 2);
        const Vec2 middle(dice.Uniform(-distance, distance), dice.Uniform(-distance, distance));
        const int count = dice.Int(3, 60);
        Vec2List points;
        for (int k = 0; k < count; ++k)
        {
            const float angle = 6.2831853f * static_cast<float>(k) / static_cast<float>(count);
            const float r = radius * dice.Uniform(0.8f, 1);
            points.push_back(middle + r * Vec2(std::cos(angle), std::sin(angle)));
        }
        if (i % 3 == 0)
            std::reverse(points.begin(), points.end());
        const PolygonPtr drawn = Make(points), loaded = Make(drawn->GetVertices());
        ASSERT_EQ(drawn->GetVertices(), loaded->GetVertices()) << i;
        ASSERT_EQ(drawn->Area(), loaded->Area()) << i;
        ASSERT_EQ(drawn->InertiaSansMass(), loaded->InertiaSansMass()) << i;
        ASSERT_EQ(Vec2(), loaded->GetCenter()) << i;
    }
}

TEST_F(PolygonTest, KeepsItsShapeFarFromTheOrigin)
{
    Vec2List points;
    for (const Vec2& v : square)
        points.push_back(v + Vec2(3000, -2000));
    PolygonPtr p = Make(points);
    EXPECT_FLOAT_EQ(4, p->Area());
    EXPECT_EQ(Vec2(3001, -1999), p->GetCenter());
    EXPECT_FLOAT_EQ(2.0f / 3, p->InertiaSansMass());
}

TEST_F(PolygonTest, ComesOutCounterClockwise)
{
    Vec2List clockwise(square.rbegin(), square.rend());
    PolygonPtr p = Make(clockwise);
    EXPECT_FLOAT_EQ(4, p->Area());
    EXPECT_FLOAT_EQ(2.0f / 3, p->InertiaSansMass());
    ExpectNear(Vec2(1, 1), p->GetCenter());
    ASSERT_EQ(4u, p->GetVertices().size());
    for (size_t i = 0; i < 4; ++i)
    {
        ExpectNear(square[i], p->GetWorldVertices()[i]);
        const Linesegment& line = p->GetLines()[i];
        EXPECT_TRUE(line.IsPointOnTheLeft(Vec2(0, 0)));
        EXPECT_EQ(p->GetVertices()[(i + 1) % 4], line.p1);
        ExpectNear(line.p0 + p->GetCenter(), p->GetWorldLines()[i].p0);
    }
    EXPECT_LT(p->DistanceWorld(Vec2(1, 1)), 0);
}

TEST_F(PolygonTest, DropsRepeatedAndClosingPoints)
{
    Vec2List points = {Vec2(0, 0), Vec2(0, 0), Vec2(2, 0), Vec2(2, 2), Vec2(2, 2),
                       Vec2(2, 2), Vec2(0, 2), Vec2(0, 0), Vec2(0, 0)};
    EXPECT_EQ(4u, Make(points)->GetVertices().size());
    EXPECT_EQ(3u, Make({Vec2(0, 0), Vec2(1, 0), Vec2(0, 1)})->GetVertices().size());
}

TEST_F(PolygonTest, NeedsThreeDistinctPoints)
{
    EXPECT_EQ("BadData: Bad polygon", MessageOf({}));
    EXPECT_EQ("BadData: Bad polygon", MessageOf({Vec2(1, 1)}));
    EXPECT_EQ("BadData: Bad polygon", MessageOf({Vec2(1, 1), Vec2(1, 1), Vec2(1, 1)}));
    EXPECT_EQ("BadData: Bad polygon", MessageOf({Vec2(0, 0), Vec2(1, 0)}));
    EXPECT_EQ("BadData: Bad polygon", MessageOf({Vec2(0, 0), Vec2(1, 0), Vec2(0, 0)}));
}

TEST_F(PolygonTest, RefusesAnOutlineThatCrossesItself)
{
    EXPECT_EQ("BadData: Self-intersecting polygon",
              MessageOf({Vec2(0, 0), Vec2(2, 2), Vec2(2, 0), Vec2(0, 3)}));
    // Also where the areas of the two loops cancel.
    EXPECT_EQ("BadData: Self-intersecting polygon",
              MessageOf({Vec2(0, 0), Vec2(2, 2), Vec2(2, 0), Vec2(0, 2)}));
    // Touching itself at a vertex counts.
    EXPECT_EQ("BadData: Self-intersecting polygon",
              MessageOf({Vec2(0, 0), Vec2(2, 0), Vec2(1, 1), Vec2(2, 2), Vec2(0, 2), Vec2(1, 1)}));
}

TEST_F(PolygonTest, SaysWhereItThrew)
{
    test::LogCapture log;
    MessageOf({Vec2(0, 0), Vec2(1, 0)});
    EXPECT_TRUE(log.Has("Exception thrown: Bad polygon")) << log.Text();
    EXPECT_TRUE(log.Has("src/physics/Polygon.cpp")) << log.Text();
}

TEST_F(PolygonTest, RefusesOutlinesWithoutArea)
{
    EXPECT_NE(std::string::npos,
              MessageOf({Vec2(0, 0), Vec2(1, 0), Vec2(2, 0)}).find("m_inertiaSansMass > 0"));
    EXPECT_NE("", MessageOf({Vec2(0, 0), Vec2(2, 0), Vec2(1, 0)}));
}

TEST_F(PolygonTest, RefusesStrangeNumbers)
{
    const Vec2List cases[] = {
        {Vec2(nan, 0), Vec2(1, 0), Vec2(0, 1)},
        {Vec2(0, 0), Vec2(inf, 0), Vec2(0, 1)},
        {Vec2(0, 0), Vec2(1, 0), Vec2(0, -inf)},
        {Vec2(0, 0), Vec2(1e30f, 0), Vec2(0, 1e30f)},
        {Vec2(0, 0), Vec2(3e38f, 0), Vec2(0, 3e38f)},
        {Vec2(-3e38f, -3e38f), Vec2(3e38f, 0), Vec2(0, 3e38f)},
        {Vec2(0, 0), Vec2(1e30f, 0), Vec2(0, 1e-30f)},
        {Vec2(0, 0), Vec2(2e19f, 0), Vec2(0, 2e19f)},
        {Vec2(0, 0), Vec2(1e-20f, 0), Vec2(0, 1e-20f)},
        {Vec2(0, 0), Vec2(1e-44f, 0), Vec2(0, 1e-44f)},
        {Vec2(0, 0), Vec2(1, 0), Vec2(1, 1e-12f), Vec2(0, 1)},
    };
    for (const Vec2List& points : cases)
        EXPECT_NE("", MessageOf(points)) << points[0] << points[1] << points[2];
}

TEST_F(PolygonTest, TakesLargeAndSmallOnes)
{
    for (float size : {0.1f, 1.0f, 1e3f, 1e6f, 1e9f})
    {
        PolygonPtr p = Make({Vec2(0, 0), Vec2(size, 0), Vec2(size, size), Vec2(0, size)});
        EXPECT_FLOAT_EQ(size * size, p->Area());
        const Vec2 middle(size / 2, size / 2);
        EXPECT_NEAR(-0.5f, p->DistanceWorld(middle) / size, 0.05f) << size;
        EXPECT_GT(p->DistanceWorld(middle + Vec2(size, 0)), 0) << size;
    }
}

// So small that its edges count as parallel, a figure of eight is not found out by its crossing. The
// map is, whose first cell would lie inside: next to it comes the loop that runs the other way.
TEST_F(PolygonTest, RefusesAnOutlineWhoseMapIsInsideOut)
{
    Vec2List points = {Vec2(3, -2), Vec2(-0.3f, 3), Vec2(0.3f, 3), Vec2(-3, -2)};
    EXPECT_EQ("BadData: Self-intersecting polygon", MessageOf(points));
    for (Vec2& v : points)
        v *= 1e-5f;
    EXPECT_EQ("Bad distance map generated", MessageOf(points));
}

TEST_F(PolygonTest, NeverCrashesOnWhateverItIsGiven)
{
    test::Dice dice;
    int good = 0, bad = 0;
    for (int round = 0; round < 3000; ++round)
    {
        Vec2List points = Blob(dice, dice.Int(3, 12), Vec2(), 1);
        const float scale = std::pow(10.0f, dice.Uniform(-40, 38));
        for (Vec2& p : points)
        {
            if (round % 2)
                p *= scale;
            if (dice.OneIn(20))
                p[dice.Int(0, 2)] =
                    std::pow(10.0f, dice.Uniform(-45, 39)) * (dice.OneIn(2) ? -1 : 1);
            if (dice.OneIn(100))
                p[dice.Int(0, 2)] = dice.OneIn(2) ? nan : inf;
        }
        try
        {
            PolygonPtr p = Make(points);
            ++good;
            EXPECT_GT(p->GetDistMap()(0, 0), 0);
            for (const Vec2& v : p->GetWorldVertices())
            {
                EXPECT_TRUE(math::IsFinite(p->DistanceWorld(v)));
                EXPECT_TRUE(math::IsFinite(p->NormalWorld(v)));
            }
            for (const Vec2& v :
                 {Vec2(nan, 0), Vec2(inf, -inf), Vec2(1e38f, 1e38f), Vec2(0, -3e38f)})
            {
                EXPECT_FALSE(p->DistanceWorld(v) < 0);
                EXPECT_EQ(Vec2(), p->NormalWorld(v));
                p->GetClosestEdge(v);
            }
        }
        catch (Exception&)
        {
            ++bad;
        }
    }
    EXPECT_GT(good, 500);
    EXPECT_GT(bad, 500);
}

TEST_F(PolygonTest, TakesTenThousandPoints)
{
    test::Dice dice;
    PolygonPtr p = Make(Blob(dice, 10000, Vec2(5, 5), 20));
    EXPECT_EQ(10000u, p->GetVertices().size());
    EXPECT_LT(p->DistanceWorld(Vec2(5, 5)), -5);
}

TEST_F(PolygonTest, RefusesMoreThanAHundredThousandPoints)
{
    test::Dice dice;
    EXPECT_EQ("BadData: Polygon with more than 100000 points",
              MessageOf(Blob(dice, 100001, Vec2(), 1000)));
    // Repeated points don't count. (The reason is found at once.)
    Vec2List many(200000, Vec2());
    EXPECT_EQ("BadData: Bad polygon", MessageOf(many));
    many.insert(many.end(), square.begin(), square.end());
    EXPECT_EQ(4u, Make(many)->GetVertices().size());
}

TEST_F(PolygonTest, BoundsFollowThePose)
{
    PolygonPtr p = Make({Vec2(0, 0), Vec2(4, 0), Vec2(4, 2), Vec2(0, 2)});
    p->SetWorldPose(math::Mat2D::TranslationRotation(Vec2(10, 20), math::PIf / 2));
    ExpectNear(Vec2(9, 18), p->GetAABBWorld().GetMin());
    ExpectNear(Vec2(11, 22), p->GetAABBWorld().GetMax());
    ExpectNear(Vec2(10, 20), p->GetOBBWorld().GetCenter());
    EXPECT_NEAR(8, p->GetOBBWorld().Area(), 1e-4f);
    ExpectNear(Vec2(10, 20), p->GetBCWorld().center);
    EXPECT_FLOAT_EQ(std::sqrt(5.0f), p->GetBCWorld().radius);
    ExpectNear(Vec2(11, 18), p->GetWorldVertices()[0]);
    ExpectNear(Vec2(11, 18), p->GetWorldLines()[0].p0);
    ExpectNear(Vec2(11, 22), p->GetWorldLines()[0].p1);
    ExpectNear(Vec2(11, 18), p->GetWorldLines()[3].p1);
    EXPECT_LT(p->DistanceWorld(Vec2(10, 21.5f)), 0);
    ExpectNear(Vec2(0, 1), p->NormalWorld(Vec2(10, 21.9f)), 1e-3f);
}

TEST_F(PolygonTest, FarOutsideTheDistanceIsThatOfTheBox)
{
    PolygonPtr p = Make(corner);
    // The notch of the L lies inside its box: above it, the box is nearer than the outline.
    const Vec2 above(5, 5);
    const math::OBB2D box = p->GetOBBWorld();
    EXPECT_FLOAT_EQ(box.Distance(above), p->DistanceWorld(above));
    EXPECT_LE(p->DistanceWorld(above), Distance(above, p->GetClosestEdge(above)));
    EXPECT_GT(p->DistanceWorld(above), 0);
}

TEST_F(PolygonTest, OutsideTheMapThereIsNoNormal)
{
    PolygonPtr p = Make(square);
    EXPECT_EQ(Vec2(0, 0), p->NormalWorld(Vec2(5, 1)));
    ExpectNear(Vec2(1, 0), p->NormalWorld(Vec2(2.1f, 1)), 1e-3f);
    EXPECT_EQ(Vec2(0, 0), p->NormalPolygon(Vec2(4, 0)));
}

TEST_F(PolygonTest, MapTellsTheTrueDistanceWithinACell)
{
    PolygonPtr p = Make(corner);
    test::Dice dice;
    for (int i = 0; i < 1000; ++i)
    {
        const Vec2 v(dice.Uniform(-0.1f, 2.1f), dice.Uniform(-0.1f, 2.1f));
        const float trueDistance = Distance(v, p->GetClosestEdge(v));
        EXPECT_NEAR(trueDistance, std::fabs(p->DistanceWorld(v)), 0.05f) << v;
        const bool inside = v.x > 0 && v.y > 0 && v.x < 2 && v.y < 2 && (v.x < 1 || v.y < 1);
        if (trueDistance > 0.05f)
        {
            EXPECT_EQ(inside, p->DistanceWorld(v) < 0) << v;
        }
    }
}

TEST_F(PolygonTest, ClosestEdgeIsTheFirstOfTheNearestPoints)
{
    PolygonPtr p = Make(square);
    ExpectNear(Vec2(2, 0.5f), p->GetClosestEdge(Vec2(3, 0.5f)));
    ExpectNear(Vec2(2, 2), p->GetClosestEdge(Vec2(3, 3)));
    // All four are as near.
    ExpectNear(Vec2(1, 0), p->GetClosestEdge(Vec2(1, 1)));
}

TEST_F(PolygonTest, ContainsWhatLiesWhollyInside)
{
    PolygonPtr big = Make({Vec2(0, 0), Vec2(8, 0), Vec2(8, 8), Vec2(0, 8)});
    PolygonPtr small = Make({Vec2(3, 3), Vec2(5, 3), Vec2(4, 5)});
    PolygonPtr crossing = Make({Vec2(3, 3), Vec2(9, 3), Vec2(4, 5)});
    PolygonPtr outside = Make({Vec2(20, 3), Vec2(21, 3), Vec2(20, 5)});
    EXPECT_TRUE(big->Contains(*small));
    EXPECT_FALSE(small->Contains(*big));
    EXPECT_FALSE(big->Contains(*crossing));
    EXPECT_FALSE(big->Contains(*outside));
    // All vertices inside, but one of the notched one's lies in the other: the L around a box in its
    // notch.
    PolygonPtr l = Make({Vec2(0, 0), Vec2(8, 0), Vec2(8, 4), Vec2(4, 4), Vec2(4, 8), Vec2(0, 8)});
    PolygonPtr bridge = Make({Vec2(6.5f, 0.5f), Vec2(7.5f, 3), Vec2(3, 7.5f), Vec2(0.5f, 6.5f)});
    EXPECT_FALSE(l->Contains(*bridge));
}

TEST_F(PolygonTest, CountsCrossingsWithItsOutline)
{
    PolygonPtr p = Make(square);
    p->SetPos(Vec2(11, 1));
    EXPECT_EQ(2, p->IntersectCount({Linesegment(Vec2(9, 1), Vec2(13, 1.1f))}));
    EXPECT_EQ(3, p->IntersectCount({Linesegment(Vec2(9, 1), Vec2(13, 1.1f)),
                                    Linesegment(Vec2(9, 1), Vec2(11, 1.1f))}));
}

TEST_F(PolygonTest, CreateBoxSetsSamplePointsBesideTheCorners)
{
    PolygonPtr box = Polygon::CreateBox(Vec2(0, 0), Vec2(3.2f, 1.6f), 0);
    const Vec2 expected[16] = {
        Vec2(0, 0),       Vec2(0.1f, 0),     Vec2(1.6f, 0),    Vec2(3.1f, 0),
        Vec2(3.2f, 0),    Vec2(3.2f, 0.05f), Vec2(3.2f, 0.8f), Vec2(3.2f, 1.55f),
        Vec2(3.2f, 1.6f), Vec2(3.1f, 1.6f),  Vec2(1.6f, 1.6f), Vec2(0.1f, 1.6f),
        Vec2(0, 1.6f),    Vec2(0, 1.55f),    Vec2(0, 0.8f),    Vec2(0, 0.05f),
    };
    ASSERT_EQ(16u, box->GetWorldVertices().size());
    for (int i = 0; i < 16; ++i)
        ExpectNear(expected[i], box->GetWorldVertices()[i]);
    EXPECT_FLOAT_EQ(3.2f * 1.6f, box->Area());
}

TEST_F(PolygonTest, CreateBoxIgnoresItsLastArgument)
{
    PolygonPtr a = Polygon::CreateBox(Vec2(0, 0), Vec2(3, 2), 0);
    PolygonPtr b = Polygon::CreateBox(Vec2(0, 0), Vec2(3, 2), 0.01f);
    EXPECT_EQ(a->GetVertices(), b->GetVertices());
}

TEST_F(PolygonTest, ScaleActsAboutTheWorldsOrigin)
{
    PolygonPtr p = Make(square);
    p->SetFriction(0.1f);
    p->SetAirFrictionMult(3);
    p->SetWorldPose(math::Mat2D::Translation(Vec2(5, 1)));
    PolygonPtr s = p->Scale(Vec2(2, 3));
    EXPECT_FLOAT_EQ(24, s->Area());
    EXPECT_EQ(p->GetPose(), s->GetPose());
    EXPECT_EQ(p->GetCenter(), s->GetCenter());
    EXPECT_EQ(0.1f, s->GetFriction());
    EXPECT_EQ(1, s->GetAirFrictionMult());
    EXPECT_NE(p->GetID(), s->GetID());
    ExpectNear(Vec2(-2, -3), s->GetVertices()[0]);
    ExpectNear(Vec2(3, -2), s->GetWorldVertices()[0]);
}

TEST_F(PolygonTest, ScaleTurnsTheOrderOfAMirroredOutline)
{
    PolygonPtr p = Make({Vec2(0, 0), Vec2(4, 0), Vec2(0, 2)});
    PolygonPtr s = p->Scale(Vec2(-1, 1));
    EXPECT_FLOAT_EQ(4, s->Area());
    // The right angle is now at the right end.
    ExpectNear(Vec2(4.0f / 3, -2.0f / 3), s->GetVertices()[2]);
    for (const Linesegment& line : s->GetLines())
        EXPECT_TRUE(line.IsPointOnTheLeft(Vec2(0, 0)));
}

TEST_F(PolygonTest, ScaleByOneIsAClone)
{
    PolygonPtr p = Make(square);
    p->SetWorldPose(math::Mat2D::TranslationRotation(Vec2(5, 1), 0.3f));
    PolygonPtr s = p->Scale(Vec2(1, 1));
    EXPECT_EQ(p->GetVertices(), s->GetVertices());
    EXPECT_EQ(p->GetPose(), s->GetPose());
}

TEST_F(PolygonTest, ScaleToNothingThrows)
{
    PolygonPtr p = Make(square);
    EXPECT_THROW(p->Scale(Vec2(0, 1)), BadDataException);
    EXPECT_THROW(p->Scale(Vec2(nan, 1)), BadDataException);
}

TEST(AssertMaxDist, SplitsLongSidesEvenly)
{
    const Vec2List ring = {Vec2(0, 0), Vec2(4, 0), Vec2(4, 0), Vec2(4, 1), Vec2(0, 0)};
    const Vec2List expected = {
        Vec2(0, 0), Vec2(4.0f / 3, 0),        Vec2(8.0f / 3, 0),       Vec2(4, 0),
        Vec2(4, 1), Vec2(8.0f / 3, 2.0f / 3), Vec2(4.0f / 3, 1.0f / 3)};
    const Vec2List actual = AssertMaxDist(ring, 1.5f);
    ASSERT_EQ(expected.size(), actual.size());
    for (size_t i = 0; i < expected.size(); ++i)
    {
        EXPECT_NEAR(expected[i].x, actual[i].x, 1e-6f) << i;
        EXPECT_NEAR(expected[i].y, actual[i].y, 1e-6f) << i;
    }
}

TEST(AssertMaxDist, LeavesSidesOfJustThatLength)
{
    const Vec2List ring = {Vec2(0, 0), Vec2(1, 0), Vec2(1, 1), Vec2(0, 1), Vec2(0, 0)};
    EXPECT_EQ(Vec2List(ring.begin(), ring.end() - 1), AssertMaxDist(ring, 1));
}

TEST(AssertMaxDist, WantsAClosedRing)
{
    try
    {
        AssertMaxDist({Vec2(0, 0), Vec2(1, 0), Vec2(1, 1)}, 1);
        ADD_FAILURE() << "no assertion";
    }
    catch (BadDataException& e)
    {
        EXPECT_EQ(0u, std::string(e.what()).find(
                          "Data assertion failed: \"ret.front() == ret.back()\" in function "))
            << e.what();
    }
    EXPECT_TRUE(AssertMaxDist({}, 1).empty());
}

TEST(AssertMaxDist, RefusesMillionsOfPieces)
{
    EXPECT_THROW(AssertMaxDist({Vec2(0, 0), Vec2(1e30f, 0), Vec2(0, 0)}, 0.1f), BadDataException);
    EXPECT_THROW(AssertMaxDist({Vec2(0, 0), Vec2(1, 0), Vec2(0, 0)}, 0), BadDataException);
    // Nor may they come together from many sides.
    Vec2List ring;
    for (int i = 0; i < 100; ++i)
        ring.push_back(Vec2(i % 2 ? 2000 : 0, i));
    ring.push_back(ring.front());
    EXPECT_EQ(100000, AssertMaxDist({Vec2(0, 0), Vec2(50000, 0), Vec2(0, 0)}, 1).size());
    EXPECT_THROW(AssertMaxDist(ring, 1), BadDataException);
}

TEST(AssertMinDist, DropsPointsThatAreTooNear)
{
    const Vec2List points = {Vec2(0, 0), Vec2(0.5f, 0), Vec2(1, 0), Vec2(1.5f, 0), Vec2(3, 0)};
    // 1 is not farther than 1 from 0.
    EXPECT_EQ((Vec2List{Vec2(0, 0), Vec2(1.5f, 0), Vec2(3, 0)}), AssertMinDist(points, 1));
}

TEST(AssertMinDist, JoinsTheEndsThatMeet)
{
    const Vec2List points = {Vec2(0, 0), Vec2(4, 0), Vec2(4, 4), Vec2(0, 0.5f)};
    EXPECT_EQ((Vec2List{Vec2(0, 0.25f), Vec2(4, 0), Vec2(4, 4)}), AssertMinDist(points, 1));
    EXPECT_EQ((Vec2List{Vec2(1, 1)}), AssertMinDist({Vec2(1, 1), Vec2(1, 1.5f)}, 1));
    EXPECT_TRUE(AssertMinDist({}, 1).empty());
}
}
