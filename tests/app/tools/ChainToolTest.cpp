#include "app/tools/ChainTool.h"

#include "ToolFixture.h"

#include "app/Chain.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/HingeEntity.h"
#include "physics/Circle.h"
#include "physics/Hinge.h"
#include "physics/WorldGeom.h"

#include <SDL_keysym.h>

#include <set>

using math::Vec2;
using physics::GeomPtr;

namespace app
{
namespace
{
class ChainToolTest : public ToolFixture
{
protected:
    using HingePtr = util::SharedPtr<HingeEntity>;
    using LinkPtr = util::SharedPtr<CircleEntity>;

    void TearDown() override
    {
        Run("App.DPI = 86; App.chainDensityFactor = 20");
        ToolFixture::TearDown();
    }

    static ChainTool& Tool() { return *TheTools()->Get<ChainTool>(); }
    static float Radius() { return 0.4f * App::GetInstancePtr()->GetScreenCM(); }
    static GeomPtr WorldGeom() { return Sim()->GetWorldGeom(); }

    // Of the scene, from back to front.
    template<typename T>
    static std::vector<util::SharedPtr<T>> All()
    {
        std::vector<util::SharedPtr<T>> all;
        for (const EntityPtr& entity : TheScene()->GetEntities())
            if (const auto found = util::DynamicCast<T>(entity))
                if (found->GetChain())
                    all.push_back(found);
        return all;
    }
    static std::vector<LinkPtr> Links() { return All<CircleEntity>(); }
    static std::vector<HingePtr> Hinges() { return All<HingeEntity>(); }
    static const physics::Circle& CircleOf(const LinkPtr& link)
    {
        return static_cast<const physics::Circle&>(*link->GetGeom());
    }

    static void ExpectNear(const Vec2& a, const Vec2& b, float tolerance = 1e-4f)
    {
        EXPECT_NEAR(a.x, b.x, tolerance);
        EXPECT_NEAR(a.y, b.y, tolerance);
    }
    /// Every hinge joins what lies there, and the rope hangs together.
    static void ExpectWhole()
    {
        const auto links = Links();
        const auto hinges = Hinges();
        ASSERT_FALSE(links.empty());
        ASSERT_GE(hinges.size(), links.size());
        for (size_t i = 0; i < links.size(); ++i)
        {
            EXPECT_EQ(links[i]->GetGeom(), hinges[i]->GetGeom(1));
            EXPECT_TRUE(hinges[i]->IsAlive());
            if (i > 0)
            {
                EXPECT_EQ(links[i - 1]->GetGeom(), hinges[i]->GetGeom(0));
            }
            ExpectNear(hinges[i]->GetWorldPoint(0), hinges[i]->GetWorldPoint(1));
        }
    }
};

TEST_F(ChainToolTest, LinksLieInALineFromTheStart)
{
    const float r = Radius();
    EXPECT_NEAR(0.4f * 0.01f * 86 / 2.54f, r, 1e-5f);
    const Vec2 start(1, -1), dir(0.6f, 0.8f);
    EXPECT_TRUE(DragAlong(Tool(), {start, start + 5.5f * 2 * r * dir}));
    const auto links = Links();
    ASSERT_EQ(5u, links.size());
    for (size_t i = 0; i < links.size(); ++i)
    {
        SCOPED_TRACE(i);
        EXPECT_FLOAT_EQ(r, CircleOf(links[i]).GetRadius());
        ExpectNear(start + (2 * float(i) + 1) * r * dir, CircleOf(links[i]).GetCenter());
        EXPECT_NEAR(std::atan2(0.8f, 0.6f), CircleOf(links[i]).GetPose().GetAngle(), 1e-4f);
    }
    ExpectWhole();
    EXPECT_FALSE(Tool().IsInUse());
    EXPECT_EQ("UndoChain", NextUndo());
}

TEST_F(ChainToolTest, ManySmallStepsLayTheSameRopeAsOneJump)
{
    std::vector<Vec2> points;
    for (int i = 0; i <= 100; ++i)
        points.push_back(Vec2(0.02f * float(i), 0));
    DragAlong(Tool(), points);
    const size_t n = Links().size();
    EXPECT_EQ(static_cast<size_t>(2 / (2 * Radius())), n);
    const Vec2 last = CircleOf(Links().back()).GetCenter();
    StartAnew();
    DragAlong(Tool(), {points.front(), points.back()});
    ASSERT_EQ(n, Links().size());
    ExpectNear(last, CircleOf(Links().back()).GetCenter());
}

TEST_F(ChainToolTest, TheRopeFollowsTheWayOfTheMouse)
{
    DragAlong(Tool(), {Vec2(0, 0), Vec2(1, 0), Vec2(1, 1)});
    ExpectWhole();
    EXPECT_NEAR(0, CircleOf(Links().front()).GetCenter().y, 1e-4f);
    EXPECT_NEAR(1, CircleOf(Links().back()).GetCenter().x, 0.2f);
    EXPECT_GT(CircleOf(Links().back()).GetCenter().y, 0.5f);
}

TEST_F(ChainToolTest, ADragShorterThanALinkMakesNothing)
{
    const util::String before = Save();
    for (float length : {0.0f, 1.0f, 1.999f})
    {
        EXPECT_TRUE(DragAlong(Tool(), {Vec2(), Vec2(length * Radius(), 0)}));
        EXPECT_EQ(0u, EntityCount());
        EXPECT_EQ(0u, BodyCount());
        EXPECT_EQ("", NextUndo());
        EXPECT_EQ(before, Save());
    }
    DragAlong(Tool(), {Vec2(), Vec2(2.001f * Radius(), 0)});
    EXPECT_EQ(1u, Links().size());
}

TEST_F(ChainToolTest, LinksAreHeavyAndHingesThreeQuartersOfARadius)
{
    DragAlong(Tool(), {Vec2(), Vec2(1, 0)});
    const float density = Sim()->m_defaultBodyDensity;
    for (const LinkPtr& link : Links())
    {
        EXPECT_FLOAT_EQ(20 * density, link->GetGeom()->GetDensity());
        EXPECT_FLOAT_EQ(20 * density * CircleOf(link).Area(), link->GetBody()->GetMass());
    }
    for (const HingePtr& hinge : Hinges())
        EXPECT_FLOAT_EQ(0.75f * Radius(), hinge->GetSize());
    StartAnew();
    Run("App.chainDensityFactor = 2.5");
    DragAlong(Tool(), {Vec2(), Vec2(1, 0)});
    EXPECT_FLOAT_EQ(2.5f * density, Links()[0]->GetGeom()->GetDensity());
}

TEST_F(ChainToolTest, LinksHaveOneColourAndHingesAnother)
{
    std::set<float> reds;
    for (int i = 0; i < 3; ++i)
    {
        StartAnew();
        DragAlong(Tool(), {Vec2(), Vec2(1, 0)});
        const auto links = Links();
        const auto hinges = Hinges();
        EXPECT_NE(links[0]->GetColor4(), hinges[0]->GetColor4());
        for (const LinkPtr& link : links)
            EXPECT_EQ(links[0]->GetColor4(), link->GetColor4());
        for (const HingePtr& hinge : hinges)
            EXPECT_EQ(hinges[0]->GetColor4(), hinge->GetColor4());
        reds.insert(links[0]->GetColor4().x);
    }
    EXPECT_GT(reds.size(), 1u);
}

TEST_F(ChainToolTest, HingesAndLinksAlternateInTheChainAndInTheScene)
{
    const EntityPtr body = Add("Scene.addBox { pos = [0, 0]; size = [1, 1] }");
    DragAlong(Tool(), {Vec2(0.4f, 0), Vec2(2, 0)});
    const auto& entities = TheScene()->GetEntities();
    const auto links = Links();
    ASSERT_EQ(links.size() * 2 + 1 + 1, entities.size());
    const ChainPtr chain = links[0]->GetChain();
    for (size_t i = 1; i < entities.size(); ++i)
    {
        EXPECT_EQ(chain, entities[i]->GetChain());
        EXPECT_EQ(i - 1, entities[i]->GetChainIndex());
        EXPECT_EQ(i % 2 == 1, bool(util::DynamicCast<HingeEntity>(entities[i]))) << i;
    }
    EXPECT_FALSE(body->GetChain());
    DragAlong(Tool(), {Vec2(-3, 0), Vec2(-3, 1)});
    EXPECT_NE(chain, Links().back()->GetChain());
}

TEST_F(ChainToolTest, FromBackgroundToBackgroundTheLastLinkIsFree)
{
    DragAlong(Tool(), {Vec2(), Vec2(1, 0), Vec2(2, 0)});
    const auto hinges = Hinges();
    ASSERT_EQ(Links().size(), hinges.size());
    EXPECT_EQ(WorldGeom(), hinges[0]->GetGeom(0));
    ExpectNear(Vec2(), hinges[0]->GetWorldPoint(0));
    ExpectWhole();
    // It hangs from its beginning.
    Play(600);
    const Vec2 end = CircleOf(Links().back()).GetCenter();
    EXPECT_LT(end.y, -0.8f);
    EXPECT_NEAR(0, math::Distance(end, Vec2()) - (2 * float(Links().size()) - 1) * Radius(), 0.1f);
}

TEST_F(ChainToolTest, FromABodyToTheBackgroundItIsPinnedWhereItEnds)
{
    const auto body = Add("Scene.addBox { pos = [0, 0]; size = [1, 1] }");
    const Vec2 end(2, 0.3f);
    DragAlong(Tool(), {Vec2(0.4f, 0), end});
    const auto hinges = Hinges();
    const auto links = Links();
    ASSERT_EQ(links.size() + 1, hinges.size());
    EXPECT_EQ(body->GetGeom(), hinges[0]->GetGeom(0));
    EXPECT_EQ(links.back()->GetGeom(), hinges.back()->GetGeom(0));
    EXPECT_EQ(WorldGeom(), hinges.back()->GetGeom(1));
    ExpectNear(end, hinges.back()->GetWorldPoint(1));
    // At the rim of the last link.
    EXPECT_NEAR(Radius(), hinges.back()->GetLocalPoint(0).x, 1e-5f);
    EXPECT_NEAR(0, hinges.back()->GetLocalPoint(0).y, 1e-5f);
    ExpectWhole();
}

TEST_F(ChainToolTest, FromTheBackgroundToABodyItHoldsTheBody)
{
    const auto body = Add("Scene.addBox { pos = [2, 0]; size = [1, 1] }");
    DragAlong(Tool(), {Vec2(), Vec2(1, 0.1f), Vec2(1.6f, 0.1f)});
    const auto hinges = Hinges();
    ASSERT_EQ(Links().size() + 1, hinges.size());
    EXPECT_EQ(WorldGeom(), hinges[0]->GetGeom(0));
    EXPECT_EQ(body->GetGeom(), hinges.back()->GetGeom(1));
    ExpectNear(Vec2(1.5f, 0.1f), hinges.back()->GetWorldPoint(1));
}

TEST_F(ChainToolTest, FromABodyToABodyItIsABridge)
{
    const auto left = Add("Scene.addCircle { pos = [-2, 0]; radius = 1 }");
    const auto right = Add("Scene.addBox { pos = [2, 0]; size = [1, 1] }");
    DragAlong(Tool(), {Vec2(-1.2f, 0), Vec2(0, 0.1f), Vec2(1.6f, 0)});
    const auto hinges = Hinges();
    ASSERT_EQ(Links().size() + 1, hinges.size());
    EXPECT_EQ(left->GetGeom(), hinges[0]->GetGeom(0));
    EXPECT_EQ(right->GetGeom(), hinges.back()->GetGeom(1));
    ExpectNear(Vec2(-1, 0), hinges[0]->GetWorldPoint(0));
    ExpectNear(Vec2(1.5f, 0), hinges.back()->GetWorldPoint(1));
    ExpectWhole();
}

TEST_F(ChainToolTest, FromABodyAndBackToItBothEndsHold)
{
    const auto body = Add("Scene.addBox { pos = [0, 0]; size = [2, 1] }");
    DragAlong(Tool(), {Vec2(-0.9f, 0.4f), Vec2(-0.9f, 2), Vec2(0.9f, 2), Vec2(0.9f, 0.4f)});
    const auto hinges = Hinges();
    ASSERT_EQ(Links().size() + 1, hinges.size());
    EXPECT_EQ(body->GetGeom(), hinges.front()->GetGeom(0));
    EXPECT_EQ(body->GetGeom(), hinges.back()->GetGeom(1));
}

TEST_F(ChainToolTest, FromAPlaneToTheBackgroundItIsPinned)
{
    const auto plane = Add("Scene.addPlane { pos = [0, 0]; angle = 1.5707963 }");
    DragAlong(Tool(), {Vec2(0, -0.1f), Vec2(0, 2)});
    const auto hinges = Hinges();
    ASSERT_EQ(Links().size() + 1, hinges.size());
    EXPECT_EQ(plane->GetGeom(), hinges.front()->GetGeom(0));
    ExpectNear(Vec2(), hinges.front()->GetWorldPoint(0));
    EXPECT_EQ(WorldGeom(), hinges.back()->GetGeom(1));
}

TEST_F(ChainToolTest, BeginsOnTheRimOfABodyAndNotInside)
{
    const auto body = Add("Scene.addCircle { pos = [0, 0]; radius = 1 }");
    DragAlong(Tool(), {Vec2(0, 0.8f), Vec2(0, 3)});
    ExpectNear(Vec2(0, 1), Hinges()[0]->GetWorldPoint(0));
    ExpectNear(Vec2(0, 1 + Radius()), CircleOf(Links()[0]).GetCenter());
}

TEST_F(ChainToolTest, BeginsOnAnEntityWithoutDrawInside)
{
    Add("Scene.addCircle { pos = [0, 0]; radius = 1 }");
    EXPECT_FALSE(App::GetInstancePtr()->GetAppGUI()->GetDrawInside());
    EXPECT_TRUE(DragAlong(Tool(), {Vec2(), Vec2(3, 0)}));
    EXPECT_FALSE(Links().empty());
}

TEST_F(ChainToolTest, WhileItIsDrawnItsEndHangsOnWhatIsUnderTheMouse)
{
    const auto body = Add("Scene.addBox { pos = [2, 0]; size = [1, 1] }");
    Begin(Tool(), Vec2());
    Drag(Tool(), Vec2(), Vec2(), Vec2(1, 0));
    ASSERT_EQ(Links().size() + 1, Hinges().size());
    EXPECT_EQ(WorldGeom(), Hinges().back()->GetGeom(1));
    ExpectNear(Vec2(2 * float(Links().size()) * Radius(), 0), Hinges().back()->GetWorldPoint(1));
    const HingePtr open = Hinges().back();
    Drag(Tool(), Vec2(), Vec2(1, 0), Vec2(2, 0));
    // It is the same that now joins two links.
    EXPECT_EQ(WorldGeom(), Hinges().front()->GetGeom(0));
    EXPECT_TRUE(util::DynamicCast<physics::Circle>(open->GetGeom(1)));
    EXPECT_EQ(body->GetGeom(), Hinges().back()->GetGeom(1));
    End(Tool(), Vec2(), Vec2(2, 0));
    ExpectWhole();
}

// The mouse may turn back upon the last link. A hinge of that with itself would hold nothing.
TEST_F(ChainToolTest, ReleasedOnItsOwnLastLinkTheEndIsFree)
{
    const float r = Radius();
    DragAlong(Tool(), {Vec2(), Vec2(6.5f * r, 0), Vec2(5.5f * r, 0)});
    EXPECT_EQ(3u, Links().size());
    EXPECT_EQ(3u, Hinges().size());
    ExpectWhole();
}

TEST_F(ChainToolTest, AStepOfExactlyOneLinkDoesNotHingeTheLinkToItself)
{
    Add("Scene.addBox { pos = [-1, 0]; size = [1, 1] }");
    const Vec2 start(-0.5f, 0);
    Begin(Tool(), start);
    for (int i = 1; i <= 20; ++i)
    {
        Drag(Tool(), start, start, start + Vec2(2 * float(i) * Radius(), 0));
        for (const HingePtr& hinge : Hinges())
            EXPECT_NE(hinge->GetGeom(0), hinge->GetGeom(1));
    }
    Tool().Disband();
}

TEST_F(ChainToolTest, ReleasedOnAnEarlierLinkItIsARing)
{
    const float r = Radius();
    DragAlong(Tool(), {Vec2(), Vec2(1, 0), Vec2(1, 1), Vec2(0, 1), Vec2(r, 0)});
    ASSERT_EQ(Links().size() + 1, Hinges().size());
    EXPECT_EQ(Links()[0]->GetGeom(), Hinges().back()->GetGeom(1));
}

TEST_F(ChainToolTest, WithShiftTheMouseGoesAhead)
{
    {
        const test::HeldKeys shift({SDLK_LSHIFT});
        EXPECT_TRUE(Begin(Tool(), Vec2()));
        EXPECT_TRUE(Drag(Tool(), Vec2(), Vec2(), Vec2(0, 2)));
        EXPECT_TRUE(Drag(Tool(), Vec2(), Vec2(0, 2), Vec2(2, 0)));
        EXPECT_EQ(0u, EntityCount());
    }
    Drag(Tool(), Vec2(), Vec2(2, 0), Vec2(2.01f, 0));
    ASSERT_FALSE(Links().empty());
    // Straight.
    for (const LinkPtr& link : Links())
        EXPECT_NEAR(0, CircleOf(link).GetCenter().y, 1e-4f);
    End(Tool(), Vec2(), Vec2(2.01f, 0));
}

TEST_F(ChainToolTest, TheReleaseLaysTheRestWithShiftToo)
{
    const test::HeldKeys shift({SDLK_LSHIFT});
    DragAlong(Tool(), {Vec2(), Vec2(0, 2), Vec2(2, 0)});
    EXPECT_EQ(static_cast<size_t>(1 / Radius()), Links().size());
    ExpectWhole();
}

TEST_F(ChainToolTest, UndoAndRedoBringBackTheSceneByteForByte)
{
    Add("Scene.addCircle { pos = [-2, 0]; radius = 1 }");
    Add("Scene.addBox { pos = [2, 0]; size = [1, 1] }");
    const util::String before = Save();
    DragAlong(Tool(), {Vec2(-1.2f, 0), Vec2(0, 0.1f), Vec2(1.6f, 0)});
    const util::String after = Save();
    EXPECT_NE(before, after);
    EXPECT_EQ("UndoChain", NextUndo());
    Undoer::GetInstancePtr()->Undo();
    EXPECT_EQ(before, Save());
    EXPECT_EQ("", NextUndo());
    Undoer::GetInstancePtr()->Redo();
    EXPECT_EQ(after, Save());
    TheScene()->ClearScene();
    Serializer::GetInstancePtr()->Deserialize(after);
    EXPECT_EQ(Links().size() + 1, Hinges().size());
    ExpectWhole();
}

TEST_F(ChainToolTest, EscapeTakesBackWhatHasBeenLaid)
{
    Add("Scene.addCircle { pos = [-2, 0]; radius = 1 }");
    const util::String before = Save();
    Begin(Tool(), Vec2(-1.2f, 0));
    Drag(Tool(), Vec2(-1.2f, 0), Vec2(-1.2f, 0), Vec2(2, 0));
    EXPECT_LT(2u, EntityCount());
    const input::KeyEvent escape(SDLK_ESCAPE, 0, true, Vec2());
    Tool().OnKeyEvent(escape);
    EXPECT_TRUE(escape.IsHandled());
    EXPECT_FALSE(Tool().IsInUse());
    EXPECT_EQ(before, Save());
    EXPECT_EQ(1u, BodyCount());
    EXPECT_EQ("", NextUndo());
    EXPECT_FALSE(Drag(Tool(), Vec2(-1.2f, 0), Vec2(2, 0), Vec2(3, 0)));
    EXPECT_FALSE(End(Tool(), Vec2(-1.2f, 0), Vec2(3, 0)));
    EXPECT_EQ(before, Save());
    EXPECT_FALSE(Tool().Disband());
}

TEST_F(ChainToolTest, ARopeThatIsDoneOutlivesTheNextEscape)
{
    DragAlong(Tool(), {Vec2(), Vec2(2, 0)});
    const util::String after = Save();
    EXPECT_FALSE(Tool().Disband());
    Begin(Tool(), Vec2(0, 2));
    Tool().Disband();
    EXPECT_EQ(after, Save());
}

TEST_F(ChainToolTest, ClearingTheSceneBreaksOff)
{
    TheTools()->Select(TheTools()->Get<ChainTool>());
    Begin(Tool(), Vec2());
    Drag(Tool(), Vec2(), Vec2(), Vec2(2, 0));
    TheScene()->ClearScene();
    EXPECT_FALSE(Tool().IsInUse());
    EXPECT_EQ(0u, EntityCount());
    EXPECT_EQ(0u, BodyCount());
    End(Tool(), Vec2(), Vec2(3, 0));
    EXPECT_EQ(0u, EntityCount());
    EXPECT_EQ("", NextUndo());
}

TEST_F(ChainToolTest, AnUndoUnderTheMouseBreaksOff)
{
    TheTools()->Select(TheTools()->Get<ChainTool>());
    DragAlong(Tool(), {Vec2(-3, 0), Vec2(-3, 2)});
    const util::String first = Save();
    Begin(Tool(), Vec2());
    Drag(Tool(), Vec2(), Vec2(), Vec2(2, 0));
    Undoer::GetInstancePtr()->Undo();
    EXPECT_EQ(0u, EntityCount());
    End(Tool(), Vec2(), Vec2(3, 0));
    EXPECT_EQ(0u, EntityCount());
    Undoer::GetInstancePtr()->Redo();
    EXPECT_EQ(first, Save());
}

TEST_F(ChainToolTest, OnlyTheLeftButtonDraws)
{
    for (int button : {325, 326})
        EXPECT_FALSE(DragAlong(Tool(), {Vec2(), Vec2(2, 0)}, button));
    EXPECT_EQ(0u, EntityCount());
}

TEST_F(ChainToolTest, GoesOnFromItsBodyWhereverThatHasMoved)
{
    const auto body = Add("Scene.addCircle { pos = [0, 0]; radius = 1 }");
    Begin(Tool(), Vec2(0, 0.9f));
    body->GetBody()->SetPos(Vec2(0, -2));
    body->GetBody()->ApplyPoseChange();
    Drag(Tool(), Vec2(0, 0.9f), Vec2(0, 0.9f), Vec2(0, 2));
    ExpectNear(Vec2(0, -1), Hinges()[0]->GetWorldPoint(0));
    ExpectNear(Vec2(0, -1 + Radius()), CircleOf(Links()[0]).GetCenter());
    ExpectWhole();
    Tool().Disband();
}

TEST_F(ChainToolTest, HangsTogetherWhenItIsDrawnWhileTheWorldRuns)
{
    const auto body = Add("Scene.addBox { pos = [0, 0]; size = [1, 1] }");
    Begin(Tool(), Vec2(0.4f, 0));
    for (int i = 1; i <= 60; ++i)
    {
        Drag(Tool(), Vec2(0.4f, 0), Vec2(), Vec2(0.4f + 0.05f * float(i), 0));
        Play(3);
    }
    End(Tool(), Vec2(0.4f, 0), Vec2(3.4f, 0));
    const auto hinges = Hinges();
    ASSERT_GT(Links().size(), 8u);
    ASSERT_EQ(Links().size() + 1, hinges.size());
    for (size_t i = 0; i + 1 < hinges.size(); ++i)
        ExpectNear(hinges[i]->GetWorldPoint(0), hinges[i]->GetWorldPoint(1), Radius() / 2);
    // The body hangs on it now.
    Play(500);
    TheScene()->Update(0.01f);
    EXPECT_GT(GeomOf(body).GetCenter().y, -8);
    for (const HingePtr& hinge : Hinges())
        ExpectNear(hinge->GetWorldPoint(0), hinge->GetWorldPoint(1), Radius() / 2);
}

TEST_F(ChainToolTest, GoesOnInTheAirWhenTheBodyOfItsStartHasGone)
{
    const EntityPtr body = Add("Scene.addCircle { pos = [0, 0]; radius = 1 }");
    Begin(Tool(), Vec2(0, 0.9f));
    TheScene()->RemoveEntity(body);
    Drag(Tool(), Vec2(0, 0.9f), Vec2(0, 0.9f), Vec2(0, 3));
    ASSERT_FALSE(Links().empty());
    EXPECT_EQ(WorldGeom(), Hinges()[0]->GetGeom(0));
    ExpectNear(Vec2(0, 1), Hinges()[0]->GetWorldPoint(0));
    End(Tool(), Vec2(0, 0.9f), Vec2(0, 3));
    EXPECT_EQ(Links().size(), Hinges().size());
    TheScene()->Update(0.01f);
    ExpectWhole();
}

TEST_F(ChainToolTest, HangsTogetherWhenWhatWasUnderTheMouseHasGone)
{
    const EntityPtr body = Add("Scene.addBox { pos = [2, 0]; size = [1, 1] }");
    Begin(Tool(), Vec2());
    Drag(Tool(), Vec2(), Vec2(), Vec2(2, 0));
    TheScene()->RemoveEntity(body);
    TheScene()->Update(0.01f);
    Drag(Tool(), Vec2(), Vec2(2, 0), Vec2(4, 0));
    ExpectWhole();
    End(Tool(), Vec2(), Vec2(4, 0));
    TheScene()->Update(0.01f);
    EXPECT_EQ(Links().size(), Hinges().size());
    ExpectWhole();
}

TEST_F(ChainToolTest, NobodyIsPinnedWhenTheLastLinkHasGone)
{
    const auto body = Add("Scene.addBox { pos = [2, 0]; size = [1, 1] }");
    Begin(Tool(), Vec2());
    Drag(Tool(), Vec2(), Vec2(), Vec2(1.4f, 0));
    TheScene()->RemoveEntity(Links().back());
    TheScene()->Update(0.01f);
    End(Tool(), Vec2(), Vec2(1.6f, 0));
    for (const HingePtr& hinge : Hinges())
        EXPECT_NE(body->GetGeom(), hinge->GetGeom(1));
    EXPECT_EQ("UndoChain", NextUndo());
}

TEST_F(ChainToolTest, SoFarOutThatALinkIsNothingTheRopeEnds)
{
    TheCamera()->SetZoom(Camera::GetMaxZoom());
    DragAlong(Tool(), {Vec2(1e7f, 1e7f), Vec2(1e7f + 8, 1e7f)});
    EXPECT_GT(10u, Links().size());
}

TEST_F(ChainToolTest, AJumpAcrossTheWidestViewIsARopeOfFewLinks)
{
    TheCamera()->SetZoom(Camera::GetMinZoom());
    const Vec2 from = TheCamera()->GUIToWorld(Vec2(0, 0));
    const Vec2 to = TheCamera()->GUIToWorld(Vec2(1023, 767));
    DragAlong(Tool(), {from, to});
    EXPECT_EQ(47u, Links().size());
}

TEST_F(ChainToolTest, ARopeGrowsNoLongerThanItsLimitAndIsFreeThere)
{
    Add("Scene.addBox { pos = [3000, 0]; size = [100, 100] }");
    DragAlong(Tool(), {Vec2(), Vec2(3000, 0)});
    EXPECT_EQ(size_t(ChainTool::MaxLinks), Links().size());
    EXPECT_EQ(size_t(ChainTool::MaxLinks), Hinges().size());
    EXPECT_EQ("UndoChain", NextUndo());
}

TEST_F(ChainToolTest, DrawsWithTheMouseOnceItsKeyIsTapped)
{
    Tap('n');
    MouseDrag({Vec2(0, 0), Vec2(0.5f, 0), Vec2(1, 0), Vec2(2, 0)});
    EXPECT_EQ(7u, Links().size());
    EXPECT_EQ("UndoChain", NextUndo());
}
}
}
