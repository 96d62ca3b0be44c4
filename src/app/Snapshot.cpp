#include "app/Snapshot.h"

#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Camera.h"
#include "app/Chain.h"
#include "app/EntityState.h"
#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/GeomEntity.h"
#include "app/entities/JointEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/WeldBatch.h"
#include "app/widgets/Widget.h"
#include "gui/GUI.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Particle.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "script/Recursion.h"
#include "util/Failures.h"
#include "util/SameBits.h"
#include "util/ScopeProfiler.h"

#include <unordered_map>
#include <unordered_set>

namespace app
{
namespace
{
physics::Simulation* Sim()
{
    return physics::Simulation::GetInstancePtr();
}

/// What was dead, or can't be brought back, is in no group either.
GroupPtr CopyMembersInScene(const Group& group)
{
    const GroupPtr copy = QUIB_NEW Group(group.GetName());
    for (const EntityPtr& entity : Scene::GetInstancePtr()->GetEntities())
        if (group.Contains(entity))
            copy->Add(entity);
    return copy;
}
}

// The helpers of an older snapshot by what they are about. Mostly they stand where they stood.
class Snapshot::HelperFinder
{
public:
    /// @param helpers  must outlive this
    explicit HelperFinder(const std::vector<HelperPtr>& helpers)
        : m_helpers(helpers)
    {
    }

    /// Null when there is none.
    HelperPtr Find(const void* subject)
    {
        if (m_next >= m_helpers.size() || m_helpers[m_next]->GetSubject() != subject)
        {
            if (m_places.empty())
                for (size_t i = 0; i < m_helpers.size(); ++i)
                    m_places[m_helpers[i]->GetSubject()] = i;
            const auto place = m_places.find(subject);
            if (place == m_places.end())
                return nullptr;
            m_next = place->second;
        }
        return m_helpers[m_next++];
    }

private:
    const std::vector<HelperPtr>& m_helpers;
    std::unordered_map<const void*, size_t> m_places; // made when it is needed
    size_t m_next = 0;                                // where the next one is expected
};

class Snapshot::BodyInfo final : public RestoreHelper
{
public:
    explicit BodyInfo(const physics::BodyPtr& body)
        : RestoreHelper(body.get())
        , m_body(body)
        , m_placement(body->GetPlacement())
        , m_vel(body->GetVel())
        , m_angVel(body->GetAngVel())
    {
        m_geoms.reserve(body->GetParts().size());
        for (const physics::Body::BodyPart& part : body->GetParts())
            m_geoms.push_back(part.geom);
    }

    void Restore() const override
    {
        TakeGeoms();
        m_body->SetPlacement(m_placement);
        // Deliberate: one that a tool holds still keeps its rest. Both setters would refuse anyway.
        if (!m_body->IsSuspended() && m_body->GetMassInv() != 0)
        {
            m_body->SetVel(m_vel);
            m_body->SetAngVel(m_angVel);
        }
    }

    bool IsSame(const RestoreHelper& other) const override
    {
        const auto& o = static_cast<const BodyInfo&>(other);
        return m_geoms == o.m_geoms && util::HasSameBits(m_placement.pos, o.m_placement.pos) &&
               util::HasSameBits(m_placement.rot, o.m_placement.rot) &&
               util::HasSameBits(m_placement.mass, o.m_placement.mass) &&
               util::HasSameBits(m_placement.inertia, o.m_placement.inertia) &&
               util::HasSameBits(m_placement.area, o.m_placement.area) &&
               util::HaveSameBits(m_placement.geomsToBody, o.m_placement.geomsToBody) &&
               util::HasSameBits(m_vel, o.m_vel) && util::HasSameBits(m_angVel, o.m_angVel);
    }

    void Place() const
    {
        // A formula that was read meanwhile may have added something.
        if (m_body->GetParts().size() != m_geoms.size())
            TakeGeoms();
        m_body->SetPlacement(m_placement);
    }

    void AddToSimulation() const { Sim()->AddBody(m_body); }

private:
    void TakeGeoms() const
    {
        physics::GeomSet geoms;
        for (const physics::GeomPtr& geom : m_geoms)
            geoms.insert(geom);
        m_body->SetGeoms(geoms);
    }

    physics::BodyPtr m_body;
    std::vector<physics::GeomPtr> m_geoms; // by id, as the body's parts
    physics::Body::Placement m_placement;
    math::Vec2 m_vel;
    float m_angVel;
};

class Snapshot::JointInfo final : public RestoreHelper
{
public:
    explicit JointInfo(JointEntity& joint)
        : RestoreHelper(&joint)
        , m_joint(&joint)
    {
        for (int i : {0, 1})
        {
            m_geoms[i] = joint.GetGeom(i);
            m_localPoints[i] = joint.GetLocalPoint(i);
        }
    }

    void Restore() const override
    {
        // Nothing is in the simulation now, the world apart, to which it may have been welded.
        if (auto* weld = m_joint->ToFixJointEntity())
            weld->ForgetWeld();
        m_joint->AttachToLocal(m_geoms[0], m_localPoints[0], m_geoms[1], m_localPoints[1]);
    }

    bool IsSame(const RestoreHelper& other) const override
    {
        const auto& o = static_cast<const JointInfo&>(other);
        return m_geoms[0] == o.m_geoms[0] && m_geoms[1] == o.m_geoms[1] &&
               util::HasSameBits(m_localPoints[0], o.m_localPoints[0]) &&
               util::HasSameBits(m_localPoints[1], o.m_localPoints[1]);
    }

private:
    JointEntityPtr m_joint;
    physics::GeomPtr m_geoms[2];
    math::Vec2 m_localPoints[2];
};

class Snapshot::PenInfo final : public RestoreHelper
{
public:
    explicit PenInfo(PenEntity& pen)
        : RestoreHelper(&pen)
        , m_pen(&pen)
        , m_geom(pen.GetGeom())
        , m_localPoint(pen.GetLocalPoint())
        , m_trail(pen.GetTrail().begin(), pen.GetTrail().end())
    {
    }

    void Restore() const override
    {
        m_pen->AttachTo(m_geom, m_localPoint);
        m_pen->SetTrail(PenEntity::Trail(m_trail.begin(), m_trail.end()));
    }

    bool IsSame(const RestoreHelper& other) const override
    {
        const auto& o = static_cast<const PenInfo&>(other);
        return m_geom == o.m_geom && util::HasSameBits(m_localPoint, o.m_localPoint) &&
               util::HaveSameBits(m_trail, o.m_trail);
    }

private:
    PenEntityPtr m_pen;
    physics::GeomPtr m_geom;
    math::Vec2 m_localPoint;
    std::vector<PenEntity::TrailElement> m_trail;
};

class Snapshot::EntChainInfo final : public RestoreHelper
{
public:
    explicit EntChainInfo(const EntityPtr& entity)
        : RestoreHelper(&entity->GetChain()) // the entity itself may be a joint's subject
        , m_entity(entity)
        , m_chain(entity->GetChain())
        , m_index(m_entity->GetChainIndex())
    {
    }

    void Restore() const override { m_chain->AddEntity(m_index, m_entity); }
    void Detach() const { m_chain->Detach(); }

    bool IsSame(const RestoreHelper& other) const override
    {
        const auto& o = static_cast<const EntChainInfo&>(other);
        return m_chain == o.m_chain && m_index == o.m_index;
    }

private:
    EntityPtr m_entity;
    util::SharedPtr<Chain> m_chain;
    size_t m_index;
};

SnapshotPtr Snapshot::TakeSnapshot()
{
    QUIB_PROFILE("Snapshot::TakeSnapshot");
    return QUIB_NEW Snapshot;
}

Snapshot::Snapshot()
    : m_simTime(Sim()->GetSimTime())
{
    // A scene that is being loaded welds at its end only; until then its welds would count as dead.
    WeldBatch::SettleNow();
    // What entities write and read depends on it.
    FileInfo::GetInstancePtr()->SetVersion(FileInfo::LATEST_VERSION);

    const Scene* scene = Scene::GetInstancePtr();
    const Camera* camera = scene->GetCamera().get();
    m_selection = scene->GetSelection()->ShallowClone();
    if (camera->GetTrackedGroup())
        m_trackedGroup = camera->GetTrackedGroup()->ShallowClone();
    m_guiToWorld = camera->GUIToWorld();
    m_guiSize = gui::GUI::GetInstancePtr()->GetSize();
    m_pan = camera->GetObject("pan");
    m_zoom = camera->GetObject("zoom");
    m_title = scene->GetTitle();
    m_author = scene->GetAuthor();
    m_description = scene->GetDescription();
    StoreWater();
    StoreEntities();
    StoreHelpers();
    StoreGroups();
    s_latest = this;
}

Snapshot::~Snapshot()
{
    if (s_latest == this)
        s_latest = nullptr;
}

void Snapshot::StoreWater()
{
    m_particles = Sim()->GetParticles();
    m_particlePositions.reserve(m_particles.size());
    m_particleVelocities.reserve(m_particles.size());
    m_particleAges.reserve(m_particles.size());
    for (const physics::ParticlePtr& particle : m_particles)
    {
        m_particlePositions.push_back(particle->GetPos());
        m_particleVelocities.push_back(particle->GetVel());
        m_particleAges.push_back(particle->GetAge());
    }
}

void Snapshot::StoreEntities()
{
    // What is dead goes with the next update, and must not come back to life: a weld that fails to hold
    // would weld again.
    for (const EntityPtr& entity : Scene::GetInstancePtr()->GetEntities())
        if (entity->IsAlive())
            m_entities.push_back(entity);
    m_states.reserve(m_entities.size());
    // Mostly the entities still stand where they stood.
    const Snapshot* latest = s_latest;
    std::unordered_map<const Entity*, size_t> places;
    if (latest && latest->m_entities != m_entities)
        for (size_t i = 0; i < latest->m_entities.size(); ++i)
            places[latest->m_entities[i].get()] = i;
    for (size_t i = 0; i < m_entities.size(); ++i)
    {
        EntityStatePtr older;
        if (latest && i < latest->m_entities.size() && latest->m_entities[i] == m_entities[i])
            older = latest->m_states[i];
        else if (const auto place = places.find(m_entities[i].get()); place != places.end())
            older = latest->m_states[place->second];
        m_states.push_back(EntityState::Make(*m_entities[i], older));
    }
}

void Snapshot::StoreHelpers()
{
    const std::vector<HelperPtr> none;
    HelperFinder older(s_latest ? s_latest->m_helpers : none);
    StoreBodies(older);
    StoreJointsAndPens(older);
    StoreChains(older);
}

/// The helper of the older snapshot, when it is the same.
template<typename Info, typename Subject>
const Info* Snapshot::AddHelper(HelperFinder& older, Subject&& subject)
{
    HelperPtr helper = std::make_shared<Info>(subject);
    if (const HelperPtr found = older.Find(helper->GetSubject()); found && helper->IsSame(*found))
        helper = found;
    m_helpers.push_back(helper);
    return static_cast<const Info*>(helper.get());
}

void Snapshot::StoreBodies(HelperFinder& older)
{
    std::unordered_set<const physics::Body*> seen;
    for (const EntityPtr& entity : m_entities)
        if (const GeomEntity* geomEntity = entity->AsGeomEntity())
            seen.insert(geomEntity->GetGeom()->GetBodyBodyPtr());
    // In the order of the simulation, which is that in which they are solved. What lives is there.
    for (const physics::BodyPtr& body : Sim()->GetBodies())
        if (seen.erase(body.get()))
            m_bodies.push_back(AddHelper<BodyInfo>(older, body));
}

void Snapshot::StoreJointsAndPens(HelperFinder& older)
{
    for (const EntityPtr& entity : m_entities)
    {
        if (JointEntity* joint = entity->ToJointEntity())
            AddHelper<JointInfo>(older, *joint);
        if (PenEntity* pen = entity->ToPenEntity())
            AddHelper<PenInfo>(older, *pen);
    }
}

void Snapshot::StoreChains(HelperFinder& older)
{
    for (const EntityPtr& entity : m_entities)
        if (entity->GetChain())
            m_chained.push_back(AddHelper<EntChainInfo>(older, entity));
}

void Snapshot::StoreGroups()
{
    m_code = QUIB_NEW script::CodeBlock;
    for (const GroupPtr& group : Scene::GetInstancePtr()->GetGroups())
        Serializer::GetInstancePtr()->SerializeGroup(*m_code, group);
    for (const WidgetPtr& widget : App::GetInstancePtr()->GetAppGUI()->GetWidgets())
        if (widget->GetGroup())
            Serializer::GetInstancePtr()->SerializeWidget(*m_code, *widget);
    // As with entities: large groups seldom change.
    if (s_latest && s_latest->m_code->ToCode() == m_code->ToCode())
        m_code = s_latest->m_code;
}

void Snapshot::Restore()
{
    QUIB_PROFILE("Snapshot::Restore");
    // A tool that is broken off may hold the last handle but this.
    const SnapshotPtr keepAlive(this);
    // A script may ask for this with its last breath, and formulas that are read would unwind it halfway.
    const script::Allowance allowance(script::MaxRunCost, true);
    WeldBatch::SettleNow();
    FileInfo::GetInstancePtr()->SetVersion(FileInfo::LATEST_VERSION);
    QUIB_PASS_ON(ClearWorld());
    Sim()->SetSimTime(m_simTime);

    std::vector<bool> failed(m_entities.size());
    {
        // The bodies are given their placement below.
        physics::Body::GeomChangeHold hold;
        DeserializeEntities(failed);
        DetachChains();
        for (const auto& helper : m_helpers)
            helper->Restore();
        // Deliberate: once more, as some of what was read depends on what the helpers have put back.
        DeserializeEntities(failed);
    }
    for (const BodyInfo* body : m_bodies)
    {
        body->Place();
        body->AddToSimulation();
    }
    AddEntities(failed);
    RestoreWater();

    Scene* scene = Scene::GetInstancePtr();
    scene->SetTexts(m_title, m_author, m_description);
    scene->SetSelection(CopyMembersInScene(*m_selection));
    // A copy: the camera's group loses who leaves the scene.
    scene->GetCamera()->SetTrackedGroup(m_trackedGroup ? CopyMembersInScene(*m_trackedGroup)
                                                       : nullptr);
    RestoreView();
    script::Parser::GetInstancePtr()->Execute(m_code);
}

void Snapshot::ClearWorld() const
{
    const physics::BodyList bodies = Sim()->GetBodies();
    Scene::GetInstancePtr()->ClearScene();
    Sim()->Clear();
    // Otherwise each of ours would take its geometries from these one by one.
    for (const physics::BodyPtr& body : bodies)
        if (body != Sim()->GetWorldBody())
            body->SetGeoms(physics::GeomSet());
}

// The helpers only add members to chains, so that all must be out of theirs by then.
void Snapshot::DetachChains() const
{
    for (const EntityPtr& entity : m_entities)
        if (const util::SharedPtr<Chain> chain = entity->GetChain())
            chain->Detach();
    for (const EntChainInfo* link : m_chained)
        link->Detach();
}

void Snapshot::DeserializeEntities(std::vector<bool>& failed) const
{
    for (size_t i = 0; i < m_entities.size(); ++i)
    {
        if (failed[i])
            continue;
        try
        {
            m_states[i]->Deserialize(*m_entities[i]);
        }
        catch (std::exception& e)
        {
            CatchException(e, QUIB_LOCATION);
            Log(logging::LogError, util::String("An entity can't be brought back: ") + e.what());
            failed[i] = true;
        }
    }
}

void Snapshot::AddEntities(const std::vector<bool>& failed) const
{
    Scene* scene = Scene::GetInstancePtr();
    Serializer* serializer = Serializer::GetInstancePtr();
    for (size_t i = 0; i < m_entities.size(); ++i)
    {
        if (failed[i])
        {
            m_entities[i]->RemoveFromSimulation();
            continue;
        }
        m_entities[i]->SetDrawTransform(math::Mat3());
        scene->AddEntity(m_entities[i]);
        serializer->RegisterEntity(m_entities[i]);
    }
    // What the entities say of joints reaches these with the next frame, which may step before.
    for (const EntityPtr& entity : m_entities)
        if (JointEntity* joint = entity->ToJointEntity(); joint && joint->IsAlive())
            joint->Update(0);
}

void Snapshot::RestoreWater() const
{
    for (size_t i = 0; i < m_particles.size(); ++i)
    {
        physics::Particle& particle = *m_particles[i];
        particle.SetPos(m_particlePositions[i]);
        particle.SetVel(m_particleVelocities[i]);
        particle.SetAge(m_particleAges[i]);
        particle.ClearForces();
        Sim()->AddParticle(m_particles[i]);
    }
}

void Snapshot::RestoreView() const
{
    Camera* camera = Scene::GetInstancePtr()->GetCamera().get();
    camera->SetGUIToWorld(m_guiToWorld);
    if (m_guiSize == gui::GUI::GetInstancePtr()->GetSize())
    {
        camera->FindVariable("pan")->SetObject(m_pan);
        camera->FindVariable("zoom")->SetObject(m_zoom);
    }
}
}
