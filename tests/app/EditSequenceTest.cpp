// Random sequences of edits: as many undos bring back the start, as many redos the end, and each step
// on the way is what it was.
#include "AppFixture.h"
#include "app/Action.h"
#include "app/Chain.h"
#include "app/EntityActions.h"
#include "app/Snapshot.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/SpringEntity.h"
#include "physics/Particle.h"

#include <cstdio>
#include <functional>
#include <random>

namespace app
{
using math::Mat2D;
using math::Mat3;
using math::Vec2;

namespace
{
util::String Hex(float value)
{
    char text[32];
    std::snprintf(text, sizeof(text), " %a", value);
    return text;
}
util::String Hex(const Vec2& value)
{
    return Hex(value.x) + Hex(value.y);
}
}

class EditSequence : public AppFixture
{
protected:
    // What an entry of the undo stack leads back to, and what it led to.
    struct Step
    {
        util::String name;
        util::String before, after;
    };

    void TearDown() override
    {
        Run("App.maxUndo = 25");
        AppFixture::TearDown();
    }

    int Int(int count) { return int(m_random() % unsigned(count)); }
    float Float(float from, float to)
    {
        return from + (to - from) * float(m_random() % 10001) / 10000;
    }
    Vec2 Place() { return Vec2(Float(-8, 8), Float(0, 8)); }
    util::String Text(float value) { return util::ToString(value); }
    util::String Text(const Vec2& v) { return "[" + Text(v.x) + ", " + Text(v.y) + "]"; }

    /// All that a user could tell two states by, and what the physics will make of them.
    static util::String State()
    {
        util::String state = Serializer::GetInstancePtr()->SerializeScene();
        for (const EntityPtr& entity : TheScene()->GetEntities())
        {
            // These the next update would remove.
            if (!entity->IsAlive())
                continue;
            state += "\nentity " + util::ToString(entity->GetPointeeID());
            if (const JointEntity* joint = entity->AsJointEntity())
                state += Hex(joint->GetLocalPoint(0)) + Hex(joint->GetLocalPoint(1));
            if (const PenEntity* pen = entity->AsPenEntity())
                for (const PenEntity::TrailElement& element : pen->GetTrail())
                    state += Hex(element.pos) + Hex(element.side);
        }
        for (const physics::BodyPtr& body : Sim()->GetBodies())
        {
            // Not by its id: a weld that is erased once more parts its body with a new one.
            state += "\nbody" + Hex(body->GetPos()) + Hex(body->GetRot()) + Hex(body->GetVel()) +
                     Hex(body->GetAngVel()) + Hex(body->GetMass()) + Hex(body->GetInertia());
            for (const auto& part : body->GetParts())
                state += " geom " + util::ToString(part.geom->GetID()) +
                         Hex(part.geom->GetCenter()) + Hex(part.geom->GetPose().cos) +
                         Hex(part.geom->GetPose().sin);
        }
        for (const physics::ParticlePtr& particle : Sim()->GetParticles())
            state += "\ndrop" + Hex(particle->GetPos()) + Hex(particle->GetVel());
        return state;
    }

    EntityPtr AnyEntity()
    {
        const std::vector<EntityPtr>& all = TheScene()->GetEntities();
        return all.empty() ? nullptr : all[Int(int(all.size()))];
    }

    GroupPtr AnyGroup()
    {
        GroupPtr group = QUIB_NEW Group;
        const int share = 1 + Int(4);
        for (const EntityPtr& entity : TheScene()->GetEntities())
            if (Int(share) == 0)
                group->Add(entity);
        return group;
    }

    /// One that brings its snapshots, as tools do.
    void Edit(const char* name, const std::function<void()>& change)
    {
        Step step{name, State(), ""};
        const SnapshotPtr before = Snapshot::TakeSnapshot();
        change();
        Undoer::GetInstancePtr()->AddUndo(before, name);
        step.after = State();
        m_steps.push_back(step);
    }
    /// One that knows by itself how to be undone.
    void Do(const ActionPtr& action)
    {
        Step step{action->GetNameKey(), State(), ""};
        Undoer::GetInstancePtr()->Do(action);
        step.after = State();
        m_steps.push_back(step);
    }

    void Play()
    {
        if (!Sim()->m_running)
            Do(QUIB_NEW SimStart);
        for (int i = Int(12); i >= 0; --i)
        {
            Sim()->ClearTimeDebt();
            Sim()->Update(0.01);
            TheScene()->Update(0.01f);
            TheCamera()->Update(0.01f);
        }
        // It may go on running under the next edits.
        if (Int(3) != 0)
            Sim()->m_running = false;
    }

    void UndoOne()
    {
        if (m_steps.empty())
            return;
        Undoer::GetInstancePtr()->Undo();
        ASSERT_EQ(m_steps.back().before, State()) << "undo of " << m_steps.back().name;
        m_undone.push_back(m_steps.back());
        m_steps.pop_back();
    }
    void RedoOne()
    {
        if (m_undone.empty())
            return;
        Undoer::GetInstancePtr()->Redo();
        ASSERT_EQ(m_undone.back().after, State()) << "redo of " << m_undone.back().name;
        m_steps.push_back(m_undone.back());
        m_undone.pop_back();
    }

    /// The middle of some geometry.
    Vec2 Target()
    {
        const EntityPtr entity = AnyEntity();
        const GeomEntity* geomEntity = entity ? entity->AsGeomEntity() : nullptr;
        return geomEntity ? geomEntity->GetGeom()->GetCenter() : Place();
    }

    void Fasten()
    {
        const Vec2 a = Target(), points[2] = {a, Int(2) ? a : Target()};
        switch (Int(4))
        {
        case 0:
        {
            const util::SharedPtr<HingeEntity> hinge = QUIB_NEW HingeEntity(0.3f);
            hinge->AttachAt(points);
            if (Int(3) == 0)
                hinge->FindVariable("impulseLimit")->SetObject(script::ValueToObject(0.01f));
            TheScene()->AddEntity(hinge);
            break;
        }
        case 1:
        {
            const util::SharedPtr<SpringEntity> spring = QUIB_NEW SpringEntity(0.3f);
            const Vec2 ends[2] = {a, Target() + Vec2(0.1f, 0)};
            spring->AttachAt(ends);
            spring->SetTargetLength(Float(0.1f, 2));
            TheScene()->AddEntity(spring);
            break;
        }
        case 2:
        {
            const util::SharedPtr<FixJointEntity> weld = QUIB_NEW FixJointEntity(0.3f);
            weld->AttachAt(points);
            TheScene()->AddEntity(weld);
            break;
        }
        default:
        {
            const util::SharedPtr<PenEntity> pen = QUIB_NEW PenEntity(0.3f);
            pen->AttachAt(a);
            TheScene()->AddEntity(pen);
        }
        }
    }

    void AddSomething()
    {
        const util::String place = "pos = " + Text(Place()) + "; angle = " + Text(Float(-3, 3));
        switch (TheScene()->GetEntities().size() < 15 ? Int(5) : 4)
        {
        case 0:
            Run("Scene.addBox { " + place + "; size = [" + Text(Float(0.2f, 1.5f)) + ", " +
                Text(Float(0.2f, 1.5f)) + "] }");
            break;
        case 1:
            Run("Scene.addCircle { " + place + "; radius = " + Text(Float(0.1f, 0.8f)) + " }");
            break;
        case 2:
            Run("Scene.addPolygon { " + place +
                "; vecs = [[0, 0], [1, 0], [1.5, 1], [0.2, 1.1]] }");
            break;
        case 3:
            Run("Scene.addPlane { normal = " + Text(Vec2(Float(-0.3f, 0.3f), 1)) +
                "; dist = " + Text(Float(-3, -1)) + " }");
            break;
        default:
            Run("Scene.addWater { vecs = [" + Text(Place()) + ", " + Text(Place()) + "] }");
        }
    }

    void SetSomething(const EntityPtr& entity)
    {
        if (!entity)
            return;
        entity->SetColor4(math::Vec4(Float(0, 1), Float(0, 1), Float(0, 1), Float(0, 1)));
        // Some that are defaults, some that are not.
        for (const char* name : {"friction", "restitution", "density"})
            if (script::Variable* variable = entity->FindVariable(name); variable && Int(2))
                variable->SetObject(script::ValueToObject(Int(2) ? 0.5f : Float(0.1f, 2)));
        if (auto* hinge = dynamic_cast<HingeEntity*>(entity.get()))
        {
            if (Int(2))
                hinge->GetButtonForward().Assign(275);
            else
                hinge->GetButtonForward().Deserialize("");
            hinge->FindVariable("motor")->SetObject(script::ValueToObject(Int(2) == 0));
        }
        if (auto* spring = dynamic_cast<SpringEntity*>(entity.get()))
            spring->SetTargetLength(Float(0.1f, 2));
        if (script::Variable* variable = entity->FindVariable("collideSet"))
            variable->SetObject(script::ValueToObject(1 + Int(3)));
    }

    /// One that brings its own step, or finds nothing to do.
    void Act(void (*action)(const GroupPtr&))
    {
        Step step{"", State(), ""};
        const ActionPtr last = Undoer::GetInstancePtr()->GetNextUndo();
        action(AnyGroup());
        const ActionPtr next = Undoer::GetInstancePtr()->GetNextUndo();
        if (next == last)
            return;
        step.name = next->GetNameKey();
        step.after = State();
        m_steps.push_back(step);
    }

    /// Redone, an erasure erases from what is there then: what has moved by itself since the last entry
    /// must be in one, and what is dead must be gone, or a weld that goes would bring it back to life.
    void MakePointForErasing()
    {
        TheScene()->Update(0);
        Do(QUIB_NEW SnapshotAction);
    }

    void OneEdit()
    {
        const size_t count = m_steps.size();
        switch (Int(23))
        {
        case 19:
            Act(Int(2) ? OnMirror : Loosen);
            break;
        case 20:
            Act(Int(2) ? AddCenterHinge : TransformIntoCircles);
            break;
        case 21:
            if (Int(2))
            {
                Act(DissolveChain);
                break;
            }
            MakePointForErasing();
            Act(OnErase);
            break;
        case 22:
            if (Int(3) == 0)
                Act(Liquify);
            else if (TheScene()->GetEntities().size() < 12)
                Act(OnClone);
            break;
        case 0:
        case 1:
            Edit("UndoPolygon", [this] { AddSomething(); });
            break;
        case 16:
        case 17:
        case 18:
            if (TheScene()->GetEntities().size() < 20)
                Edit("UndoHinge", [this] { Fasten(); });
            break;
        case 2:
            Edit("UndoMove",
                 [this] {
                     TheScene()->Transform(
                         AnyGroup(), Mat2D::TranslationRotation(Place() * 0.2f, Float(-1, 1)));
                 });
            break;
        case 3:
            if (TheScene()->GetEntities().size() < 12)
                Edit("UndoClone",
                     [this]
                     {
                         const GroupPtr clones = TheScene()->CreateClone(AnyGroup());
                         TheScene()->SetSelection(clones);
                         TheScene()->Transform(clones, Mat2D::Translation(Vec2(0.3f, 0)));
                     });
            break;
        case 4:
            Edit("UndoScale",
                 [this] {
                     TheScene()->Transform(AnyGroup(),
                                           Mat3::Scale2D(Vec2(Float(0.7f, 1.4f), 1.1f)));
                 });
            break;
        case 5:
            Edit("UndoMirror",
                 [this] { TheScene()->Transform(AnyGroup(), Mat3::Scale2D(Vec2(-1, 1))); });
            break;
        case 6:
            Edit("UndoGroupAssignment",
                 [this]
                 {
                     const GroupPtr group = QUIB_NEW Group(Int(2) ? "" : "wheels");
                     group->AddAll(AnyGroup());
                     TheScene()->AddGroup(group);
                 });
            break;
        case 7:
            Edit("UndoGroupRemoval",
                 [this]
                 {
                     for (const GroupPtr& group : TheScene()->GetGroups())
                         if (Int(2))
                             TheScene()->RemoveGroup(group);
                 });
            break;
        case 8:
            Edit("UndoChain",
                 [this]
                 {
                     const util::SharedPtr<Chain> chain = QUIB_NEW Chain;
                     for (const EntityPtr& entity : TheScene()->GetEntities())
                         if (!entity->GetChain() && Int(2))
                             chain->AddEntity(entity);
                 });
            break;
        case 9:
            if (const EntityPtr entity = AnyEntity(); entity && entity->GetChain())
                Edit("UndoDissolveChain", [entity] { entity->GetChain()->Detach(); });
            break;
        case 10:
            MakePointForErasing();
            Do(QUIB_NEW EraseEntities(AnyGroup()));
            break;
        case 11:
            Edit("UndoRandomColor", [this] { SetSomething(AnyEntity()); });
            break;
        case 12:
            Edit("UndoSliderChange",
                 [this]
                 {
                     TheScene()->MoveToFront(AnyGroup());
                     TheScene()->SetSelection(AnyGroup());
                     TheCamera()->SetTrackedGroup(Int(2) ? AnyGroup() : nullptr);
                 });
            break;
        case 13:
            Play();
            break;
        case 14:
            for (int i = 1 + Int(4); i > 0; --i)
                UndoOne();
            return;
        case 15:
            for (int i = 1 + Int(4); i > 0; --i)
                RedoOne();
            return;
        }
        if (m_steps.size() != count)
            m_undone.clear();
    }

    /// @return whether all went well
    bool RunSequence(unsigned seed, int length)
    {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Reset();
        Run("App.maxUndo = 1000");
        m_random.seed(seed);
        m_steps.clear();
        m_undone.clear();
        Sim()->m_running = false;
        for (int i = Int(6); i > 0; --i)
            AddSomething();
        // Nobody edits between being loaded and the first frame.
        TheScene()->Update(0);

        for (int i = 0; i < length && !HasFailure(); ++i)
            OneEdit();
        // What comes after the last entry can't be redone.
        Do(QUIB_NEW SnapshotAction);
        m_undone.clear();
        const size_t count = m_steps.size();
        while (!m_steps.empty() && !HasFailure())
            UndoOne();
        EXPECT_FALSE(Undoer::GetInstancePtr()->GetNextUndo());
        for (size_t i = 0; i < count && !HasFailure(); ++i)
            RedoOne();
        EXPECT_FALSE(Undoer::GetInstancePtr()->GetNextRedo());
        return !HasFailure();
    }

    std::mt19937 m_random;
    std::vector<Step> m_steps;  // that can be undone
    std::vector<Step> m_undone; // that can be redone
};

TEST_F(EditSequence, IsUndoneAndRedoneToTheBit)
{
    for (unsigned seed = 1; seed <= 200; ++seed)
        ASSERT_TRUE(RunSequence(seed, 16));
}
}
