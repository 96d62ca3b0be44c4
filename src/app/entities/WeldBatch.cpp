#include "app/entities/WeldBatch.h"

#include "app/Scene.h"
#include "app/entities/FixJointEntity.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"
#include "physics/WorldGeom.h"
#include "util/Failures.h"

#include <algorithm>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

using physics::BodyPtr;
using physics::GeomPtr;
using physics::Simulation;

namespace app
{
namespace
{
using GeomPair = std::pair<GeomPtr, GeomPtr>;
using GeomPairs = std::vector<GeomPair>;

// What is asked for while a batch is open. Of the two lists one is empty: asking for the other kind
// settles what is waiting.
GeomPairs s_welds;
GeomPairs s_unwelds;
int s_openBatches = 0;

// Sets of numbers that are only ever united. Path halving and union by size: Tarjan and van Leeuwen
// 1984, "Worst-case analysis of set union algorithms".
class UnionFind
{
public:
    int Add()
    {
        m_parents.push_back(static_cast<int>(m_parents.size()));
        m_sizes.push_back(1);
        return m_parents.back();
    }
    int Find(int i)
    {
        while (m_parents[i] != i)
            i = m_parents[i] = m_parents[m_parents[i]];
        return i;
    }
    /// @return the one that now stands for both
    int Unite(int a, int b)
    {
        a = Find(a);
        b = Find(b);
        if (a == b)
            return a;
        if (m_sizes[a] < m_sizes[b])
            std::swap(a, b);
        m_parents[b] = a;
        m_sizes[a] += m_sizes[b];
        return a;
    }

private:
    std::vector<int> m_parents;
    std::vector<int> m_sizes;
};

class GeomSet : public physics::GeomSet
{
public:
    bool Contains(const GeomPtr& geom) const { return count(geom) != 0; }
};

GeomSet Intersection(const GeomSet& a, const GeomSet& b)
{
    GeomSet both;
    for (const GeomPtr& geom : a)
        if (b.Contains(geom))
            both.insert(geom);
    return both;
}

// --- welding ---

/// One body takes over all others of its heap.
/// @param merged  gets those that are left without anything
void MergeBodies(std::vector<BodyPtr>& bodies, physics::BodyList& merged)
{
    std::sort(bodies.begin(), bodies.end(),
              [](const BodyPtr& a, const BodyPtr& b) { return a->GetID() < b->GetID(); });
    physics::GeomSet geoms;
    for (const BodyPtr& body : bodies)
        for (const GeomPtr& geom : body->GetGeoms())
            geoms.insert(geom);
    bodies[0]->SetGeoms(geoms);
    merged.insert(merged.end(), bodies.begin() + 1, bodies.end());
}

void MakeWelds(const GeomPairs& welds)
{
    UnionFind sets;
    std::vector<BodyPtr> bodies; // by number
    std::unordered_map<unsigned, int> numbers;
    const auto numberOf = [&](const BodyPtr& body)
    {
        const auto [it, isNew] = numbers.emplace(body->GetID(), 0);
        if (isNew)
        {
            it->second = sets.Add();
            bodies.push_back(body);
        }
        return it->second;
    };
    for (const GeomPair& weld : welds)
    {
        const BodyPtr body0 = weld.first->GetBodyBody(), body1 = weld.second->GetBodyBody();
        // It may have left since it was asked for.
        if (body0 && body1 && body0 != body1)
            sets.Unite(numberOf(body0), numberOf(body1));
    }
    std::vector<std::vector<BodyPtr>> heaps(bodies.size());
    for (size_t i = 0; i < bodies.size(); ++i)
        heaps[sets.Find(static_cast<int>(i))].push_back(bodies[i]);
    physics::BodyList merged;
    for (std::vector<BodyPtr>& heap : heaps)
        if (!heap.empty())
            MergeBodies(heap, merged);
    Simulation::GetInstancePtr()->RemoveBodies(merged);
}

// --- unwelding ---

// Undoes welds one after the other, as far as the outcome goes, in linear time.
//
// Which welds part something is found backwards: starting from what holds together when all are undone,
// each weld that is put back either joins two heaps or finds them joined. The joins make a tree; walked
// from its root, in the order in which the welds are undone, it tells which heap keeps the body and which
// ones get new ones.
class Splitter
{
public:
    explicit Splitter(const GeomPairs& unwelds)
        : m_unwelds(unwelds)
    {
        AddNode(true); // the world and the planes on it
        for (const EntityPtr& entity : Scene::GetInstancePtr()->GetEntities())
        {
            const JointEntity* joint = entity->AsJointEntity();
            const FixJointEntity* weld = joint ? joint->AsFixJointEntity() : nullptr;
            if (weld && weld->GetWelded(0))
                Unite(NumberOf(weld->GetWelded(0)), NumberOf(weld->GetWelded(1)));
        }
        for (const GeomPair& unweld : m_unwelds)
        {
            NumberOf(unweld.first);
            NumberOf(unweld.second);
        }
        // What holds together in the end.
        m_heapOf.resize(m_geoms.size());
        for (size_t i = 0; i < m_geoms.size(); ++i)
            m_heapOf[i] = m_nodeOf[m_sets.Find(static_cast<int>(i))];
    }

    void Split()
    {
        FindParts();
        ChooseBodies();
        MoveGeoms();
    }

private:
    struct Node
    {
        bool hasWorld = false;
        int body = -1; // an index of m_newBodies; -1 for what stays
    };
    struct Part
    {
        int whole = -1, first = -1, second = -1; // nodes; -1 when nothing comes apart
    };
    struct NewBody
    {
        BodyPtr from;
        physics::GeomSet geoms;
    };

    static bool IsWorld(const GeomPtr& geom)
    {
        // A plane is part of the world body.
        return geom->GetID() == 0 || geom->GetKind() == physics::GeomKind::Plane;
    }

    int AddNode(bool hasWorld)
    {
        const int number = m_sets.Add();
        m_geoms.emplace_back();
        m_nodeOf.push_back(static_cast<int>(m_nodes.size()));
        m_nodes.push_back({hasWorld, -1});
        return number;
    }

    int NumberOf(const GeomPtr& geom)
    {
        if (IsWorld(geom))
            return 0;
        const auto [it, isNew] = m_numbers.emplace(geom->GetID(), 0);
        if (isNew)
        {
            it->second = AddNode(false);
            m_geoms[it->second] = geom;
        }
        return it->second;
    }

    void Unite(int a, int b)
    {
        const int nodeA = m_nodeOf[m_sets.Find(a)], nodeB = m_nodeOf[m_sets.Find(b)];
        if (nodeA == nodeB)
            return;
        m_nodes[nodeA].hasWorld |= m_nodes[nodeB].hasWorld;
        m_nodeOf[m_sets.Unite(a, b)] = nodeA;
    }

    // Null when there is nothing to split.
    static BodyPtr BodyOf(const GeomPair& unweld)
    {
        const BodyPtr body0 = unweld.first->GetBodyBody(), body1 = unweld.second->GetBodyBody();
        if (body0 && body1 && body0 != body1)
            return nullptr;
        // One of the two may have left its body: what hung on it must come apart all the same.
        const BodyPtr body = body0 ? body0 : body1;
        return Simulation::GetInstancePtr()->HasBody(body) ? body : nullptr;
    }

    void FindParts()
    {
        m_parts.resize(m_unwelds.size());
        for (size_t i = m_unwelds.size(); i-- > 0;)
        {
            if (!BodyOf(m_unwelds[i]))
                continue;
            const int a = NumberOf(m_unwelds[i].first), b = NumberOf(m_unwelds[i].second);
            const int nodeA = m_nodeOf[m_sets.Find(a)], nodeB = m_nodeOf[m_sets.Find(b)];
            if (nodeA == nodeB)
                continue;
            Part& part = m_parts[i];
            part.whole = static_cast<int>(m_nodes.size());
            part.first = m_nodes[nodeB].hasWorld ? nodeB : nodeA;
            part.second = m_nodes[nodeB].hasWorld ? nodeA : nodeB;
            m_nodes.push_back({m_nodes[nodeA].hasWorld || m_nodes[nodeB].hasWorld, -1});
            m_nodeOf[m_sets.Unite(a, b)] = part.whole;
        }
    }

    void ChooseBodies()
    {
        for (size_t i = 0; i < m_unwelds.size(); ++i)
        {
            const Part& part = m_parts[i];
            if (part.whole < 0)
                continue;
            m_nodes[part.first].body = m_nodes[part.whole].body;
            m_nodes[part.second].body = static_cast<int>(m_newBodies.size());
            m_newBodies.emplace_back();
            m_newBodies.back().from = BodyOf(m_unwelds[i]);
        }
    }

    void MoveGeoms()
    {
        for (size_t i = 1; i < m_geoms.size(); ++i)
        {
            const int body = m_nodes[m_heapOf[i]].body;
            if (body >= 0 && m_geoms[i]->GetBodyBody() == m_newBodies[body].from)
                m_newBodies[body].geoms.insert(m_geoms[i]);
        }
        // By id of the body that they come from.
        std::map<unsigned, std::vector<const NewBody*>> leaving;
        for (const NewBody& newBody : m_newBodies)
            if (!newBody.geoms.empty())
                leaving[newBody.from->GetID()].push_back(&newBody);
        // All of them leave before any is put on a body: to take a geometry from another body is to look
        // at all others there.
        physics::BodyList empty;
        for (const auto& [id, newBodies] : leaving)
        {
            Leave(newBodies[0]->from, newBodies);
            if (newBodies[0]->from->GetGeoms().empty())
                empty.push_back(newBodies[0]->from);
        }
        Simulation::GetInstancePtr()->RemoveBodies(empty);
        for (const NewBody& newBody : m_newBodies)
            if (!newBody.geoms.empty())
                EnterNewBody(newBody);
    }

    static void Leave(const BodyPtr& body0, const std::vector<const NewBody*>& newBodies)
    {
        const physics::WorldGeomPtr worldGeom = Simulation::GetInstancePtr()->GetWorldGeom();
        GeomSet geomSets[2]; // those that stay, those that leave
        for (const NewBody* newBody : newBodies)
            for (const GeomPtr& geom : newBody->geoms)
                geomSets[1].insert(geom);
        for (const GeomPtr& geom : body0->GetGeoms())
            if (!geomSets[1].Contains(geom))
                geomSets[0].insert(geom);
        CODE_ASSERT(Intersection(geomSets[0], geomSets[1]).empty());
        if (body0->GetGeoms().count(worldGeom))
        {
            CODE_ASSERT(geomSets[0].Contains(worldGeom));
            CODE_ASSERT(geomSets[0].size() > 0);
        }
        body0->SetGeoms(geomSets[0]);
        if (geomSets[0].empty())
            CODE_ASSERT(body0->GetID() != 0);
    }

    static void EnterNewBody(const NewBody& newBody)
    {
        const BodyPtr body = QUIB_NEW physics::Body;
        body->SetGeoms(newBody.geoms);
        body->SetVel(newBody.from->GetVel());
        body->SetAngVel(newBody.from->GetAngVel());
        Simulation::GetInstancePtr()->AddBody(body);
    }

    const GeomPairs& m_unwelds;
    UnionFind m_sets;                            // of geometries, by number; 0 is the world
    std::unordered_map<unsigned, int> m_numbers; // by geometry id
    std::vector<GeomPtr> m_geoms;                // by number; null for the world
    std::vector<int> m_nodeOf;                   // by number, right for those that stand for a set
    std::vector<int> m_heapOf;                   // by number: the node that it ends in
    std::vector<Node> m_nodes;
    std::vector<Part> m_parts; // by unweld
    std::vector<NewBody> m_newBodies;
};

void Settle()
{
    // Emptied first: what fails must not be tried again and again.
    GeomPairs welds, unwelds;
    welds.swap(s_welds);
    unwelds.swap(s_unwelds);
    if (!welds.empty())
        MakeWelds(welds);
    if (!unwelds.empty())
        Splitter(unwelds).Split();
}
}

WeldBatch::WeldBatch()
{
    ++s_openBatches;
}

WeldBatch::~WeldBatch()
{
    if (--s_openBatches > 0)
        return;
    try
    {
        Settle();
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
    }
}

void WeldBatch::SettleNow()
{
    Settle();
}

void WeldBatch::Weld(const GeomPtr& geom0, const GeomPtr& geom1)
{
    if (!s_unwelds.empty())
        Settle();
    const BodyPtr body0 = geom0->GetBodyBody(), body1 = geom1->GetBodyBody();
    if (!body0 && !body1)
    {
        physics::GeomSet geoms;
        geoms.insert(geom0);
        geoms.insert(geom1);
        const BodyPtr body = QUIB_NEW physics::Body;
        body->SetGeoms(geoms);
        Simulation::GetInstancePtr()->AddBody(body);
    }
    else if (!body0)
        body1->AddGeom(geom0);
    else if (!body1)
        body0->AddGeom(geom1);
    else if (body0 != body1)
    {
        s_welds.emplace_back(geom0, geom1);
        if (s_openBatches == 0)
            Settle();
    }
}

void WeldBatch::Unweld(const GeomPtr& geom0, const GeomPtr& geom1)
{
    if (!s_welds.empty())
        Settle();
    s_unwelds.emplace_back(geom0, geom1);
    if (s_openBatches == 0)
        Settle();
}
}
