// The commands of the script object "Scene" by which a text makes what stands in it.

#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Chain.h"
#include "app/EntitySerializer.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/entities/BoxEntity.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/PlaneEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/entities/SpringEntity.h"
#include "app/widgets/WidgetFactory.h"
#include "input/Input.h"
#include "physics/Box.h"
#include "physics/Circle.h"
#include "physics/Particle.h"
#include "physics/Plane.h"
#include "physics/Polygon.h"
#include "physics/Simulation.h"
#include "physics/WorldGeom.h"

#include <limits>

using math::Vec2;

namespace app
{
namespace
{
/// How large a joint or a pen is drawn. An earlier file may not say it.
float ReadSize(const EntitySerializer& serializer)
{
    return serializer.Has("size") ? serializer.Get<float>("size")
                                  : App::GetInstancePtr()->GetDefaultJointSize();
}
}

EntitySerializer CallBlock(script::Function& function)
{
    // A formula keeps the closure of its block alive, and the variable there the formula: a block with one
    // stays for good. Which of its variables nobody will ever name can't be told.
    function.Call({});
    return EntitySerializer(*function.GetCallClosure());
}

script::ObjectPtr Serializer::Helper(const Kind& kind, const script::ObjectPtr& argument)
{
    auto* function = dynamic_cast<script::Function*>(argument.get());
    // One that a variable holds was not written here.
    if (!function || !function->GetOwner().IsNull() || function->GetArgCount() != 0)
        QUIB_THROW(script::ParseException("Bad argument to scene creator function, must be an "
                                          "inline function with zero arguments "
                                          "(i.e.: {...} )"));
    (this->*kind.handler)(CallBlock(*function));
    return QUIB_NEW script::Void;
}

// Geometries.

void Serializer::AddPlane(const EntitySerializer& serializer)
{
    const Vec2 normal = serializer.Has("normal") ? serializer.Get<Vec2>("normal") : Vec2(0, 1);
    const float dist = serializer.Has("dist") ? serializer.Get<float>("dist") : 0;
    if (!math::IsFinite(normal) || normal == Vec2())
        QUIB_THROW(BadDataException("Bad normal: it must have a direction"));
    if (!math::IsFinite(dist))
        QUIB_THROW(BadDataException("Bad dist"));
    const physics::PlanePtr geom = QUIB_NEW physics::Plane(math::Plane2D(normal, dist));
    AddGeomEntity(serializer, QUIB_NEW PlaneEntity(geom));
}

void Serializer::AddCircle(const EntitySerializer& serializer)
{
    const physics::CirclePtr geom = QUIB_NEW physics::Circle(Vec2(), 1);
    AddGeomEntity(serializer, QUIB_NEW CircleEntity(geom));
}

void Serializer::AddPolygon(const EntitySerializer& serializer)
{
    const physics::PolygonPtr geom =
        QUIB_NEW physics::Polygon(serializer.Get<math::Vec2List>("vecs"));
    AddGeomEntity(serializer, QUIB_NEW PolyEntity(geom));
}

void Serializer::AddBox(const EntitySerializer& serializer)
{
    const physics::BoxPtr geom = QUIB_NEW physics::Box(Vec2(1, 1), Vec2());
    AddGeomEntity(serializer, QUIB_NEW BoxEntity(geom));
}

void Serializer::AddGeomEntity(const EntitySerializer& serializer,
                               const util::SharedPtr<GeomEntity>& entity)
{
    if (serializer.Has("collide") && !serializer.Get<bool>("collide"))
        entity->SetCollideSet(0);
    const char* const idKey = serializer.Has("geomID") ? "geomID" : "id";
    const bool hasID = serializer.Has(idKey);
    const unsigned long id = hasID ? serializer.Get<unsigned long>(idKey) : 0;
    AddEntity(serializer, entity);
    if (!hasID)
        return;
    // A joint that names it would be fastened to something else.
    if (id == 0)
        Log(logging::LogWarning, "Bad geomID in scene file: 0 is the world's");
    else if (m_geoms.count(id))
        Log(logging::LogWarning,
            "Two geometries in scene file have the geomID " + util::ToString(id));
    m_geoms[id] = entity->GetGeom();
    m_geomIDs[entity->GetGeom()->GetID()] = id;
}

// Joints and pens.

void Serializer::AddFixjoint(const EntitySerializer& serializer)
{
    AttachJoint(serializer, QUIB_NEW FixJointEntity(ReadSize(serializer)));
}

void Serializer::AddHinge(const EntitySerializer& serializer)
{
    AttachJoint(serializer, QUIB_NEW HingeEntity(ReadSize(serializer)));
}

void Serializer::AddSpring(const EntitySerializer& serializer)
{
    AttachJoint(serializer, QUIB_NEW SpringEntity(ReadSize(serializer)));
}

void Serializer::AddPen(const EntitySerializer& serializer)
{
    const util::SharedPtr<PenEntity> pen = QUIB_NEW PenEntity(ReadSize(serializer));
    const physics::GeomPtr geom = FindGeom(serializer, "geom");
    const float nan = std::numeric_limits<float>::quiet_NaN();
    Vec2 point(nan, nan);
    if (geom && serializer.Has("relPoint"))
        point = serializer.Get<Vec2>("relPoint");
    else if (serializer.Has("pos"))
    {
        point = serializer.Get<Vec2>("pos");
        if (geom)
            point = math::TransformCoordinate(geom->GetPoseInv(), point);
    }
    if (!math::IsFinite(point))
    {
        Log(logging::LogError, "Bad pen");
        return;
    }
    if (geom)
        pen->AttachTo(geom, point);
    else
        pen->AttachAt(point);
    AddEntity(serializer, pen);
}

void Serializer::AttachJoint(const EntitySerializer& serializer,
                             const util::SharedPtr<JointEntity>& joint)
{
    const physics::GeomPtr worldGeom = physics::Simulation::GetInstancePtr()->GetWorldGeom();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const util::String ends[] = {"0", "1"};
    physics::GeomPtr geoms[2] = {FindGeom(serializer, "geom0"), FindGeom(serializer, "geom1")};
    Vec2 locals[2] = {Vec2(nan, nan), Vec2(nan, nan)};
    for (int i = 0; i < 2; ++i)
    {
        physics::GeomPtr& geom = geoms[i];
        const util::String worldKey = "world" + ends[i] + "pos";
        const util::String localKey = "geom" + ends[i] + "pos";
        // In files from before, and then the geometry may be whatever lies there.
        const util::String oldKey = serializer.Has("pos" + ends[i]) ? "pos" + ends[i] : "pos";
        Vec2 world(nan, nan);
        if (serializer.Has(worldKey))
        {
            world = serializer.Get<Vec2>(worldKey);
            if (!geom)
                geom = worldGeom;
        }
        else if (geom && serializer.Has(localKey))
        {
            // Not by way of the world: each load and save would move the point by a rounding.
            locals[i] = serializer.Get<Vec2>(localKey);
            continue;
        }
        else if (serializer.Has(oldKey))
        {
            world = serializer.Get<Vec2>(oldKey);
            if (!geom && math::IsFinite(world))
                for (const physics::GeomPtr& at : Scene::GetInstancePtr()->GetGeomsAt(world))
                    if (at != geoms[1 - i])
                    {
                        geom = at;
                        break;
                    }
        }
        if (geom)
            locals[i] = math::TransformCoordinate(geom->GetPoseInv(), world);
    }
    if (!math::IsFinite(locals[0]) || !math::IsFinite(locals[1]))
    {
        Log(logging::LogError, "Bad joint");
        return;
    }
    joint->AttachToLocal(geoms[0], locals[0], geoms[1], locals[1]);
    AddEntity(serializer, joint);
}

physics::GeomPtr Serializer::FindGeom(const EntitySerializer& serializer,
                                      const util::String& key) const
{
    const int id = serializer.Has(key) ? serializer.Get<int>(key) : -1;
    if (id < 0)
        return nullptr;
    if (id == 0)
        return physics::Simulation::GetInstancePtr()->GetWorldGeom();
    const auto found = m_geoms.find(id);
    return found != m_geoms.end() ? found->second : nullptr;
}

// What all entities have in common.

void Serializer::AddEntity(const EntitySerializer& serializer, const EntityPtr& entity)
{
    const bool hasID = serializer.Has("entityID");
    const unsigned long id = hasID ? serializer.Get<unsigned long>("entityID") : 0;
    entity->Deserialize(serializer);
    Scene* scene = Scene::GetInstancePtr();
    try
    {
        CheckChain(serializer, entity);
        scene->AddEntity(entity);
    }
    catch (...)
    {
        scene->RemoveFromGroups(entity);
        throw;
    }
    if (hasID)
    {
        if (m_entities.count(id))
            Log(logging::LogWarning,
                "Two entities in scene file have the entityID " + util::ToString(id));
        m_entities[id] = entity;
        m_entityIDs[entity->GetID()] = id;
    }
    m_loadedGroup->Add(entity);
}

void Serializer::CheckChain(const EntitySerializer& serializer, const EntityPtr& entity)
{
    if (!serializer.Has("chain") || !serializer.Has("chainNr"))
        return;
    const unsigned long index = serializer.Get<unsigned long>("chainNr");
    ChainPtr& chain = m_chains[serializer.Get<unsigned long>("chain")];
    if (!chain)
        chain = QUIB_NEW Chain;
    chain->AddEntity(index, entity);
}

// What is no entity.

void Serializer::AddWater(const EntitySerializer& serializer)
{
    physics::Simulation* simulation = physics::Simulation::GetInstancePtr();
    size_t badCount = 0;
    for (const Vec2& pos : serializer.Get<math::Vec2List>("vecs"))
    {
        if (math::IsFinite(pos))
            simulation->AddParticle(QUIB_NEW physics::Particle(pos, Vec2()));
        else
            ++badCount;
    }
    if (badCount)
        Log(logging::LogWarning,
            "Bad water in scene file: " + util::ToString(badCount) + " without a place");
}

EntitySet Serializer::ReadMembers(const EntitySerializer& serializer) const
{
    EntitySet members;
    if (serializer.Has("entityIDs"))
        for (unsigned long id : serializer.Get<std::vector<unsigned long>>("entityIDs"))
        {
            const auto found = m_entities.find(id);
            if (found != m_entities.end())
                members.insert(found->second);
        }
    return members;
}

void Serializer::AddGroup(const EntitySerializer& serializer)
{
    const GroupPtr group = QUIB_NEW Group;
    group->Deserialize(serializer);
    group->AddAll(ReadMembers(serializer));
    Scene::GetInstancePtr()->AddGroup(group);
}

void Serializer::AddWidget(const EntitySerializer& serializer)
{
    const util::String groupID =
        serializer.Has("groupID") ? serializer.Get<util::String>("groupID") : "";
    GroupPtr group;
    // Groups without a name are not told apart by it.
    if (!groupID.empty())
        group = Scene::GetInstancePtr()->GetGroupByName(groupID);
    if (!group)
    {
        group = QUIB_NEW Group;
        group->AddAll(ReadMembers(serializer));
    }
    const WidgetPtr widget = WidgetFactory::GetInstancePtr()->CreateWidget(
        serializer.Get<util::String>("widgetID"), group);
    if (serializer.Has("minimized"))
        widget->SetMinimized(serializer.Get<bool>("minimized"));
    const Vec2 pos = serializer.Has("pos") ? serializer.Get<Vec2>("pos")
                                           : input::Input::GetInstancePtr()->GetMousePos();
    if (!math::IsFinite(pos))
        QUIB_THROW(BadDataException("Bad pos"));
    widget->SetPos(pos);
    if (serializer.Has("title"))
        widget->SetTitle(serializer.Get<util::String>("title"));
    App::GetInstancePtr()->GetAppGUI()->AddWidget(widget);
}
}
