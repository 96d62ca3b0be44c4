// The solver over flat rows against the plain sweep that defines its results.

#include "physics/RowSolver.h"

#include "Dice.h"
#include "SimulationFixture.h"
#include "physics/Hinge.h"
#include "util/Random.h"

#include <algorithm>
#include <set>

namespace physics
{
using math::Vec2;

namespace
{
// Holds two points together along one direction: any constraint that is no contact.
class Tie : public Constraint
{
public:
    Tie(AbstractBody* a, AbstractBody* b, Vec2 point, Vec2 dir)
        : m_dir(dir)
    {
        m_bodies[0] = a;
        m_bodies[1] = b;
        m_r[0] = point - a->GetPos();
        m_r[1] = point - b->GetPos();
        m_mass = CombinedMass(*a, m_r[0], *b, m_r[1], dir);
    }

    bool SolveInit() override { return true; }
    void CalcDesiredImpulse() override
    {
        const Vec2 w =
            (m_bodies[1]->GetVelChange() + Cross(m_bodies[1]->GetAngVelChange(), m_r[1])) -
            (m_bodies[0]->GetVelChange() + Cross(m_bodies[0]->GetAngVelChange(), m_r[0]));
        m_delta = -m_mass * (Dot(w, m_dir) + 0.1f);
        m_priority = m_delta * m_delta;
    }
    void ApplyImpulse() override
    {
        Constraint::ApplyImpulse(m_delta * m_dir);
        m_total += m_delta;
    }
    void SolveExit() override {}

    float m_total = 0;

private:
    Vec2 m_dir;
    float m_mass;
    float m_delta = 0;
};

// What the sweeps are defined to do.
void PlainSweeps(ConstraintList constraints, int iterations, bool preSort)
{
    if (preSort)
    {
        for (Constraint* constraint : constraints)
            constraint->CalcDesiredImpulse();
        std::stable_sort(constraints.begin(), constraints.end(), ConstraintComparer());
    }
    for (int i = 0; i < iterations; ++i)
        for (Constraint* constraint : constraints)
        {
            constraint->CalcDesiredImpulse();
            constraint->ApplyImpulse();
        }
}
}

class RowSolverTest : public SimulationFixture
{
protected:
    RowSolver baseline{RowSolver::Instructions::Baseline};

    struct State
    {
        std::vector<Vec2> vel;
        std::vector<float> angVel;
        std::vector<float> totals;
    };

    /// The present hinges and contacts in the order of a solve, warm-started.
    ConstraintList InitContacts()
    {
        sim.SetupSolver();
        for (const BodyPtr& body : sim.GetBodies())
            body->SetVelChange(Vec2(), 0);
        ConstraintList list;
        for (const HingePtr& hinge : sim.GetHinges())
            if (hinge->SolveInit())
                list.append(hinge.get());
        for (const ContactPtr& contact : sim.GetContacts())
            if (contact->SolveInit())
                list.append(contact.get());
        return list;
    }

    State Save(const ConstraintList& constraints) const
    {
        State state;
        for (const BodyPtr& body : sim.GetBodies())
        {
            state.vel.push_back(body->GetVelChange());
            state.angVel.push_back(body->GetAngVelChange());
        }
        for (Constraint* constraint : constraints)
            if (constraint->IsContact())
            {
                state.totals.push_back(static_cast<Contact*>(constraint)->GetTotalN());
                state.totals.push_back(static_cast<Contact*>(constraint)->GetTotalT());
            }
            else if (const Hinge* hinge = dynamic_cast<Hinge*>(constraint))
            {
                state.totals.push_back(hinge->GetTotalImpulse().x);
                state.totals.push_back(hinge->GetTotalImpulse().y);
                state.totals.push_back(hinge->GetMotorTotal());
                state.totals.push_back(hinge->IsBroken());
            }
            else
                state.totals.push_back(static_cast<Tie*>(constraint)->m_total);
        return state;
    }

    /// Solves the constraints by rows, with either set of instructions, and plainly, from the same start.
    /// @return how many constraints were at work
    size_t Compare(const ConstraintList& constraints)
    {
        std::vector<Contact> contacts;
        std::vector<Hinge> hinges;
        std::vector<float> ties;
        for (Constraint* constraint : constraints)
            if (constraint->IsContact())
                contacts.push_back(*static_cast<Contact*>(constraint));
            else if (const Hinge* hinge = dynamic_cast<Hinge*>(constraint))
                hinges.push_back(*hinge);
            else
                ties.push_back(static_cast<Tie*>(constraint)->m_total);
        const State start = Save(constraints);

        const auto restart = [&]
        {
            for (size_t i = 0; i < sim.GetBodies().size(); ++i)
                sim.GetBodies()[i]->SetVelChange(start.vel[i], start.angVel[i]);
            size_t contact = 0, h = 0, tie = 0;
            for (Constraint* constraint : constraints)
                if (constraint->IsContact())
                    *static_cast<Contact*>(constraint) = contacts[contact++];
                else if (Hinge* hinge = dynamic_cast<Hinge*>(constraint))
                    *hinge = hinges[h++];
                else
                    static_cast<Tie*>(constraint)->m_total = ties[tie++];
        };

        sim.GaussSeidelSolver(constraints);
        const State rows = Save(constraints);
        restart();
        baseline.Solve(constraints, sim.m_solveIter, sim.m_solvePreSortConstraints);
        const State baselineRows = Save(constraints);
        restart();
        PlainSweeps(constraints, sim.m_solveIter, sim.m_solvePreSortConstraints);
        const State plain = Save(constraints);

        ExpectSameBits(plain, rows);
        ExpectSameBits(plain, baselineRows);
        return constraints.size();
    }

    /// The bits; one pattern for all that is not a number, whose sign and payload mean nothing.
    static uint32_t BitsOf(float x) { return math::IsNaN(x) ? 0x7FC00000 : Bits(x); }

    static void ExpectSameBits(const State& plain, const State& rows)
    {
        for (size_t i = 0; i < plain.vel.size(); ++i)
        {
            EXPECT_EQ(BitsOf(plain.vel[i].x), BitsOf(rows.vel[i].x)) << "body " << i;
            EXPECT_EQ(BitsOf(plain.vel[i].y), BitsOf(rows.vel[i].y)) << "body " << i;
            EXPECT_EQ(BitsOf(plain.angVel[i]), BitsOf(rows.angVel[i])) << "body " << i;
        }
        for (size_t i = 0; i < plain.totals.size(); ++i)
            EXPECT_EQ(BitsOf(plain.totals[i]), BitsOf(rows.totals[i])) << "total " << i;
    }

    void AddBasin()
    {
        AddFloor();
        AddBodyWith(QUIB_NEW Plane(math::Plane2D(Vec2(0.6f, 0.8f), 3)));
        AddBodyWith(QUIB_NEW Plane(math::Plane2D(Vec2(-0.6f, 0.8f), 3)));
    }

    void AddRandomBodies(util::Random& random, int count)
    {
        for (int i = 0; i < count; ++i)
        {
            const Vec2 pos(random.GetUniform(-3, 3), 1 + 0.15f * i);
            BodyPtr body;
            switch (i % 3)
            {
            case 0:
                body = AddBox(Vec2(random.GetUniform(0.2f, 1), random.GetUniform(0.2f, 1)), pos);
                break;
            case 1:
                body = AddCircle(pos, random.GetUniform(0.1f, 0.5f));
                break;
            default:
                body = AddBodyWith(QUIB_NEW Polygon(
                    {pos + Vec2(-0.4f, -0.3f), pos + Vec2(0.4f, -0.3f), pos + Vec2(0.1f, 0),
                     pos + Vec2(0.3f, 0.4f), pos + Vec2(-0.3f, 0.4f)}));
            }
            GeomOf(body)->SetFriction(random.GetUniform(0, 1));
            GeomOf(body)->SetRestitution(random.GetUniform(0, 1));
            GeomOf(body)->SetDensity(random.GetUniform(0.1f, 10));
            body->SetVel(random.GetUniformVec2());
            body->SetAngVel(random.GetUniform(-2, 2));
        }
    }

    /// Between bodies that were added one after the other, and to the world: plain ones, motors, weak
    /// ones, several on one pair.
    void AddRandomHinges(test::Dice& dice, int count)
    {
        const BodyList& bodies = sim.GetBodies();
        for (int i = 0; i < count; ++i)
        {
            const BodyPtr& a = bodies[dice.Int(4, int(bodies.size()) - 1)];
            const BodyPtr& b =
                dice.OneIn(5) ? bodies[0] : bodies[dice.Int(4, int(bodies.size()) - 1)];
            HingePtr hinge = QUIB_NEW Hinge(
                GeomOf(a), GeomOf(b), Vec2(dice.Uniform(-0.5f, 0.5f), dice.Uniform(-0.5f, 0.5f)),
                b == bodies[0] ? a->GetPos() : Vec2(dice.Uniform(-0.5f, 0.5f), 0));
            if (dice.OneIn(3))
            {
                hinge->SetMotor(true);
                hinge->SetMotorSpeed(dice.Uniform(-5, 5));
                hinge->SetMotorTorque(dice.Uniform(0, 200));
            }
            if (dice.OneIn(3))
                hinge->SetImpulseLimit(dice.Uniform(0.01f, 2));
            sim.AddConstraint(hinge);
        }
    }
};

TEST_F(RowSolverTest, GivesTheBitsOfThePlainSweepOnRandomWorlds)
{
    util::Random random;
    size_t solved = 0;
    for (int world = 0; world < 6; ++world)
    {
        Reset();
        sim.m_solvePreSortConstraints = world % 3 != 2;
        sim.m_warmStart = world % 4 != 3;
        sim.m_leapFrog = world != 4;
        sim.m_adHocSolver = world == 5;
        AddBasin();
        AddRandomBodies(random, 60);
        for (int step = 0; step < 120; ++step)
        {
            sim.Step(true);
            sim.CalcContacts();
            solved += Compare(InitContacts());
            if (HasFailure())
                FAIL() << "world " << world << ", step " << step;
        }
    }
    EXPECT_GT(solved, 20000u);
}

TEST_F(RowSolverTest, GivesTheBitsOfThePlainSweepWithHinges)
{
    util::Random random;
    test::Dice dice;
    size_t solved = 0, broken = 0, turned = 0;
    for (int world = 0; world < 8; ++world)
    {
        Reset();
        sim.m_solvePreSortConstraints = world % 3 != 2;
        sim.m_warmStart = world % 4 != 3;
        sim.m_adHocSolver = world == 5;
        if (world == 6)
            sim.m_maxPositionCorrection = 0.05f;
        AddBasin();
        AddRandomBodies(random, 40);
        for (int step = 0; step < 60; ++step)
        {
            // Some are pulled apart by a suspended body.
            for (size_t i = 4; i < sim.GetBodies().size(); ++i)
                sim.GetBodies()[i]->SetSuspended((i + step / 10) % 7 == 0);
            sim.Step(true);
            sim.FlushBadBodies();
            // New ones, of which the weak break at once.
            if (step % 3 == 0)
                AddRandomHinges(dice, 4);
            sim.CalcContacts();
            solved += Compare(InitContacts());
            for (const HingePtr& hinge : sim.GetHinges())
            {
                broken += hinge->IsBroken();
                turned += hinge->GetMotorTotal() != 0;
            }
            if (HasFailure())
                FAIL() << "world " << world << ", step " << step;
        }
    }
    EXPECT_GT(solved, 20000u);
    EXPECT_GT(broken, 50u);
    EXPECT_GT(turned, 1000u);
}

TEST_F(RowSolverTest, GivesTheBitsOfThePlainSweepOnChains)
{
    // Taut, with a weight at the end: every hinge waits for its neighbours.
    AddFloor(-50);
    for (int chain = 0; chain < 3; ++chain)
    {
        GeomPtr last = sim.GetWorldGeom();
        for (int i = 0; i < 30; ++i)
        {
            const Vec2 pos(0.2f * i + 0.1f, 3.0f * chain);
            const GeomPtr geom = GeomOf(AddCircle(pos, i == 29 ? 1 : 0.1f));
            sim.AddConstraint(QUIB_NEW Hinge(last, geom, pos - Vec2(0.1f, 0)));
            last = geom;
        }
    }
    for (int step = 0; step < 100; ++step)
    {
        sim.m_solvePreSortConstraints = step % 10 != 9;
        sim.Step(true);
        Compare(InitContacts());
        if (HasFailure())
            FAIL() << "step " << step;
    }
}

TEST_F(RowSolverTest, ABreakingHingeTellsItsNeighboursNothing)
{
    // All in one batch, of which every other one breaks: none of what it wanted reaches its bodies.
    std::vector<HingePtr> hinges;
    for (int i = 0; i < 8; ++i)
    {
        const BodyPtr box = AddBox(Vec2(1, 1), Vec2(3 * i, 5));
        box->SetVel(Vec2(0, -1));
        hinges.push_back(QUIB_NEW Hinge(GeomOf(box), sim.GetWorldGeom(), Vec2(3 * i, 5)));
        hinges.back()->SetImpulseLimit(i % 2 ? 0.5f : 100);
        hinges.back()->SetMotor(i % 4 < 2);
        hinges.back()->SetMotorSpeed(1);
        sim.AddConstraint(hinges.back());
    }
    Compare(InitContacts());
    for (int i = 0; i < 8; ++i)
    {
        const Body& body = *sim.GetBodies()[i + 1];
        EXPECT_EQ(i % 2 == 1, hinges[i]->IsBroken());
        EXPECT_EQ(i % 2 == 1, body.GetVelChange() == Vec2());
        EXPECT_EQ(i % 4 == 0, body.GetAngVelChange() != 0);
    }
}

TEST_F(RowSolverTest, KeepsOtherConstraintsInTheirPlace)
{
    util::Random random;
    AddBasin();
    AddRandomBodies(random, 40);
    for (int step = 0; step < 100; ++step)
    {
        sim.Step(true);
        sim.CalcContacts();
        ConstraintList list = InitContacts();
        // Between neighbours, and to the world: some early and some late in the sorted order.
        std::vector<util::SharedPtr<Tie>> ties;
        const BodyList& bodies = sim.GetBodies();
        for (size_t i = 4; i + 1 < bodies.size(); i += 3)
        {
            const Vec2 middle = (bodies[i]->GetPos() + bodies[i + 1]->GetPos()) * 0.5f;
            ties.push_back(QUIB_NEW Tie(bodies[i].get(), bodies[i + 1].get(), middle,
                                        math::Normalized(random.GetUniformVec2())));
            ties.push_back(QUIB_NEW Tie(bodies[i].get(), bodies[0].get(), middle,
                                        math::Normalized(random.GetUniformVec2())));
        }
        for (const auto& tie : ties)
            list.append(tie.get());
        sim.m_solvePreSortConstraints = step % 2 == 0;
        Compare(list);
        if (HasFailure())
            FAIL() << "step " << step;
    }
}

TEST_F(RowSolverTest, GivesTheBitsOfThePlainSweepWhereNumbersHaveNoEnd)
{
    const float values[] = {Inf,   -Inf,   std::numeric_limits<float>::quiet_NaN(),
                            3e38f, -3e38f, 1e30f};
    test::Dice dice;
    util::Random random;
    size_t bad = 0, badPriorities = 0;
    for (int world = 0; world < 12; ++world)
    {
        Reset();
        sim.m_solveIter = 3; // what is bad reaches all that touch before long
        sim.m_warmStart = world % 2 == 0;
        AddBasin();
        AddRandomBodies(random, 60);
        Steps(60 + 5 * world);
        if (world % 3 == 1)
            AddRandomHinges(dice, 20);
        sim.CalcContacts();
        std::vector<Contact> sound;
        for (const ContactPtr& contact : sim.GetContacts())
            sound.push_back(*contact);
        std::vector<Hinge> soundHinges;
        for (const HingePtr& hinge : sim.GetHinges())
            soundHinges.push_back(*hinge);
        for (int round = 0; round < 10; ++round)
        {
            for (size_t i = 0; i < sound.size(); ++i)
                *sim.GetContacts()[i] = sound[i];
            size_t h = 0;
            for (const HingePtr& hinge : sim.GetHinges())
                *hinge = soundHinges[h++];
            sim.m_solvePreSortConstraints = round % 3 != 2;
            // One bad velocity, force, or velocity gathered so far; the rest of the world is sound.
            const BodyList& bodies = sim.GetBodies();
            Body& body = *bodies[4 + dice.Int(0, int(bodies.size()) - 4)];
            const Vec2 vel = body.GetVel();
            const float value = values[dice.Int(0, 6)];
            if (round % 2)
                body.SetVel(Vec2(0, value));
            else
                body.AddForce(Vec2(value, 0));
            const ConstraintList list = InitContacts();
            if (round == 7)
                body.SetVelChange(Vec2(value, value), 0);
            Compare(list);
            for (Constraint* constraint : list)
            {
                constraint->CalcDesiredImpulse();
                badPriorities += math::IsNaN(constraint->GetPriority());
            }
            const State state = Save(list);
            for (const float total : state.totals)
                bad += !math::IsFinite(total);
            body.SetVel(vel);
            body.ClearForces();
            if (HasFailure())
                FAIL() << "world " << world << ", round " << round;
        }
    }
    EXPECT_GT(bad, 1000u);
    EXPECT_GT(badPriorities, 1000u);
}

TEST_F(RowSolverTest, SortsWhatIsNotANumberLastAndInOrder)
{
    std::vector<BodyPtr> boxes;
    for (int i = 0; i < 5; ++i)
        boxes.push_back(AddBox(Vec2(1, 1), Vec2(2 * i, 0.49f)));
    class Note : public Constraint
    {
    public:
        Note(AbstractBody* a, AbstractBody* b, float priority, int name, std::vector<int>& log)
            : m_name(name)
            , m_wish(priority)
            , m_log(log)
        {
            m_bodies[0] = a;
            m_bodies[1] = b;
        }
        bool SolveInit() override { return true; }
        void CalcDesiredImpulse() override { m_priority = m_wish; }
        void ApplyImpulse() override { m_log.push_back(m_name); }
        void SolveExit() override {}

    private:
        int m_name;
        float m_wish;
        std::vector<int>& m_log;
    };
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float priorities[] = {nan, 0, 2, -nan, Inf, 0, 3e38f, nan, 1e-45f, 2};
    std::vector<int> log;
    std::vector<util::SharedPtr<Note>> notes;
    ConstraintList list;
    for (int i = 0; i < 10; ++i)
    {
        notes.push_back(
            QUIB_NEW Note(boxes[i % 5].get(), boxes[(i + 1) % 5].get(), priorities[i], i, log));
        list.append(notes.back().get());
    }
    baseline.Solve(list, 1, true);
    EXPECT_EQ((std::vector<int>{4, 6, 2, 9, 8, 1, 5, 0, 3, 7}), log);
    log.clear();
    PlainSweeps(list, 1, true);
    EXPECT_EQ((std::vector<int>{4, 6, 2, 9, 8, 1, 5, 0, 3, 7}), log);
    log.clear();
    baseline.Solve(list, 1, false);
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}), log);
}

TEST_F(RowSolverTest, LeavesSuspendedBodiesAlone)
{
    util::Random random;
    AddBasin();
    AddRandomBodies(random, 40);
    for (int step = 0; step < 100; ++step)
    {
        for (size_t i = 4; i < sim.GetBodies().size(); ++i)
            sim.GetBodies()[i]->SetSuspended((i + step / 10) % 5 == 0);
        sim.Step(true);
        sim.CalcContacts();
        Compare(InitContacts());
        for (const BodyPtr& body : sim.GetBodies())
            if (body->IsSuspended())
            {
                EXPECT_EQ(Vec2(), body->GetVelChange());
                EXPECT_EQ(0, body->GetAngVelChange());
            }
        if (HasFailure())
            FAIL() << "step " << step;
    }
}

TEST_F(RowSolverTest, SolvesAContactOfABodyWithItself)
{
    const BodyPtr box = AddBox(Vec2(1, 1), Vec2(0, 5));
    const BodyPtr other = AddBox(Vec2(1, 1), Vec2(0, 6));
    box->SetVel(Vec2(0, 1));
    box->SetAngVel(2);
    sim.SetupSolver();
    const ContactPtr self = QUIB_NEW Contact(GeomOf(box).get(), GeomOf(box).get(), 0,
                                             Vec2(0.5f, 5.2f), Vec2(0, 1), 0.1f);
    const ContactPtr pair = QUIB_NEW Contact(GeomOf(box).get(), GeomOf(other).get(), 0,
                                             Vec2(0.2f, 5.5f), Vec2(0, 1), 0.1f);
    ConstraintList list;
    for (const ContactPtr& contact : {self, pair})
    {
        ASSERT_TRUE(contact->SolveInit());
        list.append(contact.get());
    }
    Compare(list);
}

TEST_F(RowSolverTest, SolvesContactsThatShareNoBodyOnTheirOwn)
{
    // Circles that touch nothing but the floor or one other circle, of which some move too fast for
    // numbers.
    AddFloor();
    for (int i = 0; i < 100; ++i)
    {
        const BodyPtr circle = AddCircle(Vec2(3.0f * i, 0.49f), 0.5f);
        circle->SetVel(Vec2(0.1f * i, -1));
        circle->SetAngVel(0.3f * (i % 7));
        if (i % 29 == 3)
            circle->SetVel(Vec2(0, -3e38f));
        if (i % 31 == 4)
            circle->SetAngVel(Inf);
        const float y = 10 + 3.0f * i;
        AddCircle(Vec2(-10, y), 0.5f)->SetVel(Vec2(1, 0.2f));
        AddCircle(Vec2(-9.1f, y), 0.4f)->SetVel(Vec2(-1, 0));
    }
    for (int step = 0; step < 3; ++step)
    {
        sim.CalcContacts();
        EXPECT_EQ(200u, sim.GetContacts().size());
        Compare(InitContacts());
    }
}

TEST_F(RowSolverTest, SweepsContactsOfOneBodyOneAfterTheOther)
{
    // A star: every contact shares the body in the middle, so that no two fit a batch.
    const BodyPtr middle = AddCircle(Vec2(0, 10), 1);
    ConstraintList list;
    std::vector<ContactPtr> contacts;
    sim.SetupSolver();
    for (int i = 0; i < 40; ++i)
    {
        const float a = 0.15f * i;
        const Vec2 n(std::cos(a), std::sin(a));
        const BodyPtr satellite = AddCircle(Vec2(0, 10) + 1.2f * n, 0.2f);
        satellite->SetVel(-(1 + 0.1f * i) * n);
        contacts.push_back(QUIB_NEW Contact(GeomOf(middle).get(), GeomOf(satellite).get(), 0,
                                            Vec2(0, 10) + n, n, 0.01f));
        ASSERT_TRUE(contacts.back()->SolveInit());
        list.append(contacts.back().get());
    }
    Compare(list);
    EXPECT_NE(Vec2(), middle->GetVelChange());
}

// The queue of the prioritised solver in its plainest form: a list, searched from end to end.
void PlainPriorities(const ConstraintList& constraints, int iterations)
{
    const ConstraintComparer before;
    std::vector<Constraint*> queue; // sorted
    const auto find = [&](Constraint* c)
    {
        return std::find_if(queue.begin(), queue.end(),
                            [&](Constraint* q) { return !before(q, c) && !before(c, q); });
    };
    const auto insert = [&](Constraint* c)
    {
        if (find(c) != queue.end())
            return; // one of each priority
        queue.push_back(c);
        std::sort(queue.begin(), queue.end(), before);
    };
    for (Constraint* c : constraints)
    {
        c->CalcDesiredImpulse();
        insert(c);
    }
    for (size_t i = 0; i < iterations * constraints.size(); ++i)
    {
        Constraint* largest = queue.front();
        largest->ApplyImpulse();
        std::set<Constraint*, ConstraintCreationComparer> touched;
        for (Constraint* c : constraints)
            for (int k = 0; k < 4; ++k)
                if (c->GetBodyPtr(k / 2) == largest->GetBodyPtr(k % 2) &&
                    !c->GetBodyPtr(k / 2)->IsImmovable())
                    touched.insert(c);
        for (Constraint* c : touched)
        {
            const auto found = find(c);
            if (found != queue.end())
                queue.erase(found);
            c->CalcDesiredImpulse();
            insert(c);
        }
    }
}

TEST_F(RowSolverTest, ThePrioritisedSolverTakesHingesAsThePlainQueueDoes)
{
    util::Random random;
    test::Dice dice;
    sim.m_prioritizedSolver = true;
    sim.m_solveIter = 5;
    AddBasin();
    AddRandomBodies(random, 25);
    size_t broken = 0;
    for (int step = 0; step < 40; ++step)
    {
        sim.GetBodies()[4 + step % 5]->SetSuspended(step % 3 == 0);
        sim.Step(true);
        sim.FlushBadBodies();
        if (step % 5 == 0)
            AddRandomHinges(dice, 6);
        sim.CalcContacts();
        const ConstraintList list = InitContacts();
        const State start = Save(list);
        std::vector<Contact> contacts;
        std::vector<Hinge> hinges;
        for (Constraint* constraint : list)
            if (constraint->IsContact())
                contacts.push_back(*static_cast<Contact*>(constraint));
            else
                hinges.push_back(*static_cast<Hinge*>(constraint));
        sim.PrioritizedSolver(list);
        const State queue = Save(list);

        for (size_t i = 0; i < sim.GetBodies().size(); ++i)
            sim.GetBodies()[i]->SetVelChange(start.vel[i], start.angVel[i]);
        size_t contact = 0, hinge = 0;
        for (Constraint* constraint : list)
            if (constraint->IsContact())
                *static_cast<Contact*>(constraint) = contacts[contact++];
            else
                *static_cast<Hinge*>(constraint) = hinges[hinge++];
        PlainPriorities(list, sim.m_solveIter);
        ExpectSameBits(Save(list), queue);
        for (const HingePtr& h : sim.GetHinges())
            broken += h->IsBroken();
        if (HasFailure())
            FAIL() << "step " << step;
    }
    EXPECT_GT(broken, 5u);
}

TEST_F(RowSolverTest, SolvesNothingWithoutIterationsOrConstraints)
{
    const BodyPtr body = AddBox(Vec2(1, 1), Vec2(0, 5));
    body->SetVelChange(Vec2(1, 2), 3);
    sim.GaussSeidelSolver(ConstraintList());
    EXPECT_EQ(Vec2(1, 2), body->GetVelChange());

    AddBasin();
    AddBox(Vec2(1, 1), Vec2(0, 0.49f));
    sim.CalcContacts();
    const ConstraintList list = InitContacts();
    for (int iterations : {0, -5})
    {
        sim.m_solveIter = iterations;
        const State before = Save(list);
        sim.GaussSeidelSolver(list);
        const State after = Save(list);
        EXPECT_EQ(before.totals, after.totals);
        EXPECT_EQ(before.angVel, after.angVel);
    }
}
}
