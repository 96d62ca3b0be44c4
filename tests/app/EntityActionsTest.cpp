#include "app/EntityActions.h"

#include "AppFixture.h"
#include "app/Chain.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/entities/SpringEntity.h"
#include "math/Plane.h"
#include "physics/Particle.h"
#include "physics/Plane.h"

#include <functional>

using math::Vec2;

namespace app
{
namespace
{
class EntityActionsTest : public AppFixture
{
protected:
    using Action = void (*)(const GroupPtr&);

    void SetUp() override
    {
        AppFixture::SetUp();
        Sim()->m_running = false;
    }

    static AppGUI* TheGUI() { return App::GetInstancePtr()->GetAppGUI().get(); }
    static util::String NextUndo()
    {
        const ActionPtr action = Undoer::GetInstancePtr()->GetNextUndo();
        return action ? action->GetNameKey() : "";
    }
    static util::SharedPtr<GeomEntity> AddBox(float x, float y)
    {
        return Add("Scene.addBox { pos = [" + util::ToString(x) + ", " + util::ToString(y) +
                   "]; size = [1.0, 1.0] }");
    }
    static util::SharedPtr<GeomEntity> AddPolygon(const util::String& more = "")
    {
        return Add("Scene.addPolygon { vecs = [[0, 0], [2, 0], [2, 1], [0, 1]]; " + more + " }");
    }
    template<typename T>
    static util::SharedPtr<T> Fasten(const Vec2& a, const Vec2& b)
    {
        const util::SharedPtr<T> joint = QUIB_NEW T(0.3f);
        const Vec2 points[2] = {a, b};
        joint->AttachAt(points);
        TheScene()->AddEntity(joint);
        return joint;
    }
    static util::SharedPtr<PenEntity> AddPen(const Vec2& pos)
    {
        const util::SharedPtr<PenEntity> pen = QUIB_NEW PenEntity(0.3f);
        pen->AttachAt(pos);
        TheScene()->AddEntity(pen);
        return pen;
    }
    static GroupPtr All() { return GroupOf(TheScene()->GetEntities()); }
    /// Does it, and sees that it closes the popup, is one step, and is undone and redone to the byte.
    static void DoAndUndo(Action action, const GroupPtr& group, const char* name)
    {
        SCOPED_TRACE(name);
        ForgetUndo();
        const util::String before = Save();
        TheGUI()->OpenMenu();
        action(group);
        EXPECT_FALSE(TheGUI()->GetPopup());
        ASSERT_EQ(name, NextUndo());
        const util::String after = Save();
        Undoer::GetInstancePtr()->Undo();
        EXPECT_EQ(before, Save());
        EXPECT_EQ("", NextUndo());
        Undoer::GetInstancePtr()->Redo();
        EXPECT_EQ(after, Save());
    }
    /// @return the one entity of the kind
    template<typename T>
    static util::SharedPtr<T> Only()
    {
        util::SharedPtr<T> found;
        for (const EntityPtr& entity : TheScene()->GetEntities())
            if (const auto one = util::DynamicCast<T>(entity))
            {
                EXPECT_FALSE(found);
                found = one;
            }
        return found;
    }
};

TEST_F(EntityActionsTest, ErasesTheGroup)
{
    AddBox(3, 0);
    DoAndUndo(OnErase, GroupOf({AddBox(0, 0), AddBox(1, 0)}), "UndoErase");
    EXPECT_EQ(1u, TheScene()->GetEntities().size());
}

TEST_F(EntityActionsTest, ErasesTheSelectionItself)
{
    TheScene()->SetSelection(GroupOf({AddBox(0, 0)}));
    OnErase(TheScene()->GetSelection());
    EXPECT_TRUE(TheScene()->GetEntities().empty());
}

TEST_F(EntityActionsTest, ClonesBesideTheOriginalsAndSelectsTheClones)
{
    const auto a = AddBox(0, 0), b = AddBox(3, 0);
    TheScene()->SetSelection(GroupOf({a}));
    Sim()->m_running = true;
    OnClone(TheScene()->GetSelection());
    EXPECT_FALSE(Sim()->m_running);
    ASSERT_EQ(3u, TheScene()->GetEntities().size());
    const EntityPtr clone = TheScene()->GetEntities()[1];
    EXPECT_TRUE(TheScene()->IsSelected(clone));
    EXPECT_FALSE(TheScene()->IsSelected(a));
    EXPECT_NEAR(App::GetInstancePtr()->GetScreenCM(),
                clone->AsGeomEntity()->GetGeom()->GetCenter().x, 1e-6f);
    EXPECT_EQ(0, clone->AsGeomEntity()->GetGeom()->GetCenter().y);
    EXPECT_EQ(Vec2(0, 0), GeomOf(a).GetCenter());
    EXPECT_EQ(Vec2(3, 0), GeomOf(b).GetCenter());
    DoAndUndo(OnClone, TheScene()->GetSelection(), "UndoClone");
}

TEST_F(EntityActionsTest, MirrorsAroundTheMiddle)
{
    const auto left = AddBox(0, 0);
    const auto right = Add("Scene.addCircle { pos = [4.0, 1.0]; radius = 0.5; angle = 0.3 }");
    const GroupPtr group = GroupOf({left, right});
    const Vec2 center = group->CalcRotationCenter();
    DoAndUndo(OnMirror, group, "UndoMirror");
    ASSERT_EQ(2u, TheScene()->GetEntities().size());
    const auto where = [](size_t i)
    { return TheScene()->GetEntities()[i]->AsGeomEntity()->GetGeom()->GetCenter(); };
    EXPECT_NEAR(2 * center.x, where(0).x, 1e-5f);
    EXPECT_NEAR(0, where(0).y, 1e-6f);
    EXPECT_NEAR(2 * center.x - 4, where(1).x, 1e-5f);
    EXPECT_NEAR(1, where(1).y, 1e-6f);
}

TEST_F(EntityActionsTest, MirrorsAPlaneWithItsNormal)
{
    const auto plane = Add("Scene.addPlane { normal = [0.6, 0.8]; dist = 0.0 }");
    OnMirror(GroupOf({plane}));
    ASSERT_EQ(1u, TheScene()->GetEntities().size());
    const auto geom =
        util::DynamicCast<physics::Plane>(TheScene()->GetEntities()[0]->AsGeomEntity()->GetGeom());
    ASSERT_TRUE(geom);
    EXPECT_NEAR(-0.6f, geom->GetPlane().normal.x, 1e-6f);
    EXPECT_NEAR(0.8f, geom->GetPlane().normal.y, 1e-6f);
}

TEST_F(EntityActionsTest, MirroringTwiceBringsBackTheShape)
{
    AddPolygon("angle = 0.4");
    const auto outline = []
    {
        const auto& geom = *TheScene()->GetEntities()[0]->AsGeomEntity()->GetGeom();
        util::String text;
        for (float x = -3; x <= 3; x += 0.25f)
            for (float y = -3; y <= 3; y += 0.25f)
                text += geom.DistanceWorld(Vec2(x, y)) < -0.02f  ? '#'
                        : geom.DistanceWorld(Vec2(x, y)) > 0.02f ? '.'
                                                                 : '?';
        return text;
    };
    const util::String before = outline();
    OnMirror(All());
    EXPECT_NE(before, outline());
    OnMirror(All());
    EXPECT_EQ(before, outline());
}

TEST_F(EntityActionsTest, AllThatIsLiquifiedIsNoMoreWaterThanTheLimit)
{
    const auto first = AddBox(0, 0);
    const size_t count =
        util::DynamicCast<FiniteGeomEntity>(EntityPtr(first))->GetEquidistantPoints().size();
    AddBox(5, 0);
    const auto last = AddBox(10, 0);
    Run("App.maxSPHSpawn = " + std::to_string(2 * count + 1));
    const test::LogCapture log;
    Liquify(GroupOf(TheScene()->GetEntities()));
    EXPECT_EQ(2 * count, Sim()->GetParticles().size());
    EXPECT_EQ(Entities{last}, TheScene()->GetEntities());
    EXPECT_TRUE(log.Has("App.maxSPHSpawn")) << log.Text();
    Run("App.maxSPHSpawn = 10000");
}

TEST_F(EntityActionsTest, WhatGivesNoWaterStays)
{
    const EntityPtr box = AddBox(0, 0);
    const EntityPtr speck = Add("Scene.addBox { pos = [5.0, 0.0]; size = [0.01, 0.01] }");
    DoAndUndo(Liquify, GroupOf({box, speck}), "UndoLiquify");
    EXPECT_EQ(Entities{speck}, TheScene()->GetEntities());

    AddBox(0, 0);
    ForgetUndo();
    for (const char* limit : {"0", "-1"})
    {
        Run(util::String("App.maxSPHSpawn = ") + limit);
        const test::LogCapture log;
        Liquify(GroupOf(TheScene()->GetEntities()));
        EXPECT_EQ(2u, TheScene()->GetEntities().size()) << limit;
        EXPECT_TRUE(log.Has("App.maxSPHSpawn")) << log.Text();
        EXPECT_EQ("", NextUndo());
    }
    Run("App.maxSPHSpawn = 10000");
}

TEST_F(EntityActionsTest, LiquifiesBodiesIntoWaterThatMovesAsTheyDid)
{
    const auto box = AddBox(0, 0);
    const auto plane = Add("Scene.addPlane { normal = [0.0, 1.0]; dist = -5.0 }");
    box->GetBody()->SetVel(Vec2(2, 1));
    box->GetBody()->SetAngVel(3);
    const size_t count =
        util::DynamicCast<FiniteGeomEntity>(EntityPtr(box))->GetEquidistantPoints().size();
    EXPECT_GT(count, 10u);
    DoAndUndo(Liquify, GroupOf({box, plane}), "UndoLiquify");
    EXPECT_EQ(Entities{plane}, TheScene()->GetEntities());
    ASSERT_EQ(count, Sim()->GetParticles().size());
    bool differ = false;
    for (const auto& particle : Sim()->GetParticles())
    {
        const Vec2 pos = particle->GetPos();
        EXPECT_LT(std::max(std::fabs(pos.x), std::fabs(pos.y)), 0.5f);
        EXPECT_NEAR(2 - 3 * pos.y, particle->GetVel().x, 1e-4f);
        EXPECT_NEAR(1 + 3 * pos.x, particle->GetVel().y, 1e-4f);
        differ |= particle->GetVel() != Vec2(2, 1);
    }
    EXPECT_TRUE(differ);
}

TEST_F(EntityActionsTest, LoosensOneKindAtATimeWeldsFirst)
{
    const auto a = AddBox(0, 0), b = AddBox(0.5f, 0), c = AddBox(5, 0);
    Fasten<SpringEntity>(Vec2(-0.4f, 0), Vec2(0, 3));
    Fasten<HingeEntity>(Vec2(-0.2f, 0), Vec2(-0.2f, 0));
    Fasten<FixJointEntity>(Vec2(0.25f, 0.2f), Vec2(0.25f, 0.2f));
    const auto far = Fasten<FixJointEntity>(Vec2(5, 0), Vec2(5, 0));
    const GroupPtr group = GroupOf({a});
    DoAndUndo(Loosen, group, "UndoLoosen");
    EXPECT_EQ(far, Only<FixJointEntity>());
    EXPECT_TRUE(Only<HingeEntity>());
    DoAndUndo(Loosen, group, "UndoLoosen");
    EXPECT_FALSE(Only<HingeEntity>());
    EXPECT_TRUE(Only<SpringEntity>());
    DoAndUndo(Loosen, group, "UndoLoosen");
    EXPECT_FALSE(Only<SpringEntity>());
    // Nothing is left that holds it.
    ForgetUndo();
    Loosen(group);
    EXPECT_EQ("", NextUndo());
    EXPECT_EQ(4u, TheScene()->GetEntities().size());
}

TEST_F(EntityActionsTest, LoosensAnEndOfEitherSide)
{
    const auto a = AddBox(0, 0), b = AddBox(3, 0);
    Fasten<SpringEntity>(Vec2(0, 0), Vec2(3, 0));
    Loosen(GroupOf({b}));
    EXPECT_FALSE(Only<SpringEntity>());
}

TEST_F(EntityActionsTest, HingesABodyAtItsCentreToTheBackground)
{
    DoAndUndo(AddCenterHinge, GroupOf({AddBox(1, 2)}), "UndoCenterHinge");
    const auto hinge = Only<HingeEntity>();
    ASSERT_TRUE(hinge);
    EXPECT_EQ(Vec2(1, 2), hinge->GetWorldPoint(0));
    EXPECT_EQ(Vec2(1, 2), hinge->GetWorldPoint(1));
    EXPECT_TRUE(hinge->IsAttachedToWorld());
    EXPECT_FLOAT_EQ(App::GetInstancePtr()->GetDefaultJointSize(), hinge->GetSize());
}

TEST_F(EntityActionsTest, HingesABodyAtItsCentreToTheOneBesideIt)
{
    const auto below = AddBox(0.2f, 0), box = AddBox(0, 0);
    AddCenterHinge(GroupOf({box}));
    const auto hinge = Only<HingeEntity>();
    ASSERT_TRUE(hinge);
    EXPECT_FALSE(hinge->IsAttachedToWorld());
    EXPECT_EQ(box->GetGeom(), hinge->GetGeom(0));
    EXPECT_EQ(below->GetGeom(), hinge->GetGeom(1));
}

TEST_F(EntityActionsTest, HingesWeldedBodiesOnce)
{
    const auto a = AddBox(0, 0), b = AddBox(0.5f, 0);
    Fasten<FixJointEntity>(Vec2(0.25f, 0), Vec2(0.25f, 0));
    ASSERT_EQ(a->GetBody(), b->GetBody());
    AddCenterHinge(GroupOf({a, b}));
    const auto hinge = Only<HingeEntity>();
    ASSERT_TRUE(hinge);
    EXPECT_EQ(Vec2(0.25f, 0), hinge->GetWorldPoint(0));
    EXPECT_TRUE(hinge->IsAttachedToWorld());
}

TEST_F(EntityActionsTest, HingesNothingThatHasNoCentreToTurnAround)
{
    const auto pinned = AddBox(0, 0);
    Fasten<FixJointEntity>(Vec2(0, 0), Vec2(0, 0));
    const auto plane = Add("Scene.addPlane { normal = [0.0, 1.0]; dist = -5.0 }");
    // Its centre lies beside it.
    const auto hook = Add("Scene.addPolygon { vecs = [[0, 0], [4, 0], [4, 0.2], [0.2, 0.2], "
                          "[0.2, 4], [0, 4]]; pos = [20.0, 0.0] }");
    ForgetUndo();
    AddCenterHinge(GroupOf({pinned, plane, hook}));
    EXPECT_FALSE(Only<HingeEntity>());
    EXPECT_EQ("", NextUndo());
}

TEST_F(EntityActionsTest, MakesCirclesOfPolygons)
{
    const auto polygon = AddPolygon("pos = [1.0, 2.0]; friction = 0.25; color = [1.0, 0.0, 0.0, "
                                    "1.0]");
    const auto box = AddBox(6, 0);
    const Vec2 center = GeomOf(polygon).GetCenter();
    const float area = GeomOf(polygon).Area();
    const GroupPtr group = GroupOf({polygon, box});
    TheScene()->SetSelection(group);
    DoAndUndo(TransformIntoCircles, TheScene()->GetSelection(), "UndoToCircle");
    ASSERT_EQ(2u, TheScene()->GetEntities().size());
    const auto circle = util::DynamicCast<CircleEntity>(TheScene()->GetEntities()[0]);
    ASSERT_TRUE(circle);
    EXPECT_NEAR(center.x, GeomOf(circle).GetCenter().x, 1e-5f);
    EXPECT_NEAR(center.y, GeomOf(circle).GetCenter().y, 1e-5f);
    EXPECT_NEAR(area, GeomOf(circle).Area(), 1e-4f);
    EXPECT_EQ("0.25", Attribute(circle, "friction"));
    EXPECT_EQ(math::Vec4(1, 0, 0, 1), circle->GetColor4());
    EXPECT_TRUE(TheScene()->IsSelected(circle));
    EXPECT_EQ(EntityPtr(box), TheScene()->GetEntities()[1]);
    EXPECT_TRUE(circle->GetBody());
}

TEST_F(EntityActionsTest, CirclesKeepJointsAndPens)
{
    const auto polygon = AddPolygon();
    const auto other = AddBox(1, 0.9f);
    TheScene()->MoveToBack(GroupOf({other}));
    // Two of them at a corner that the circle does not reach.
    const Vec2 corner = GeomOf(polygon).GetCenter() + Vec2(0.95f, 0.45f);
    const auto hinge = Fasten<HingeEntity>(corner, corner);
    const auto pen = AddPen(corner);
    const Vec2 inside = GeomOf(polygon).GetCenter();
    const auto weld = Fasten<FixJointEntity>(inside, inside);
    const auto spring = Fasten<SpringEntity>(inside, Vec2(9, 9));
    ASSERT_EQ(polygon->GetGeom(), hinge->GetGeom(0));
    ASSERT_EQ(polygon->GetBody(), other->GetBody());
    DoAndUndo(TransformIntoCircles, GroupOf({polygon}), "UndoToCircle");
    const auto circle = Only<CircleEntity>();
    ASSERT_TRUE(circle);
    EXPECT_EQ(circle->GetGeom(), hinge->GetGeom(0));
    EXPECT_EQ(circle->GetGeom(), pen->GetGeom());
    EXPECT_EQ(circle->GetGeom(), spring->GetGeom(0));
    EXPECT_EQ(circle->GetBody(), other->GetBody());
    EXPECT_NEAR(corner.x, pen->GetPos().x, 1e-4f);
    EXPECT_NEAR(corner.x, hinge->GetWorldPoint(0).x, 1e-4f);
    EXPECT_NEAR(9, spring->GetWorldPoint(1).x, 1e-4f);
    TheScene()->Update(0.01f);
    EXPECT_EQ(6u, TheScene()->GetEntities().size());
}

TEST_F(EntityActionsTest, CirclesStayInGroupsAndChains)
{
    const auto polygon = AddPolygon();
    const auto box = AddBox(6, 0);
    const ChainPtr chain = QUIB_NEW Chain;
    chain->AddEntity(box);
    chain->AddEntity(polygon);
    const GroupPtr wheels = TheScene()->GetOrCreateGroupByName("wheels");
    wheels->Add(polygon);
    TransformIntoCircles(GroupOf({polygon}));
    const auto circle = Only<CircleEntity>();
    ASSERT_TRUE(circle);
    EXPECT_TRUE(wheels->Contains(circle));
    EXPECT_EQ(1u, wheels->GetEntities().size());
    EXPECT_EQ((Entities{box, circle}), chain->GetEntities());
}

TEST_F(EntityActionsTest, DissolvesWholeChains)
{
    const auto a = AddBox(0, 0), b = AddBox(2, 0), c = AddBox(4, 0);
    const ChainPtr chain = QUIB_NEW Chain;
    for (const auto& box : {a, b, c})
        chain->AddEntity(box);
    DoAndUndo(DissolveChain, GroupOf({b}), "UndoDissolveChain");
    EXPECT_FALSE(a->GetChain() || b->GetChain() || c->GetChain());
    ForgetUndo();
    DissolveChain(GroupOf({b}));
    EXPECT_EQ("", NextUndo());
}

TEST_F(EntityActionsTest, ClearsTrailsWithoutAStepOfUndo)
{
    AddBox(0, 0);
    const auto pen = AddPen(Vec2(0, 0)), other = AddPen(Vec2(0.1f, 0));
    for (const auto& one : {pen, other})
        one->SetTrail({{1.0, Vec2(1, 1), Vec2()}, {2.0, Vec2(2, 1), Vec2(0, 1)}});
    ForgetUndo();
    TheGUI()->OpenMenu();
    OnPenClearTrail(GroupOf({pen}));
    EXPECT_FALSE(TheGUI()->GetPopup());
    EXPECT_TRUE(pen->GetTrail().empty());
    EXPECT_EQ(2u, other->GetTrail().size());
    EXPECT_EQ("", NextUndo());
}

TEST_F(EntityActionsTest, NothingToActOnLeavesNoStepBehind)
{
    const auto plane = Add("Scene.addPlane { normal = [0.0, 1.0]; dist = -5.0 }");
    const auto box = AddBox(0, 0);
    TheScene()->RemoveEntity(box);
    ForgetUndo();
    const util::String before = Save();
    for (const GroupPtr& group : {GroupOf({}), GroupOf({box})})
        for (Action action : {Liquify, Loosen, AddCenterHinge, TransformIntoCircles, DissolveChain,
                              OnPenClearTrail})
            action(group);
    for (Action action : {OnErase, OnClone, OnMirror})
        action(GroupOf({}));
    for (Action action : {Liquify, Loosen, AddCenterHinge, TransformIntoCircles, DissolveChain})
        action(GroupOf({plane}));
    EXPECT_EQ("", NextUndo());
    EXPECT_EQ(before, Save());
}
}
}
