#include "app/Serializer.h"

#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Background.h"
#include "app/Camera.h"
#include "app/Chain.h"
#include "app/EntitySerializer.h"
#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/entities/BoxEntity.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/PlaneEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/SpringEntity.h"
#include "app/entities/WeldBatch.h"
#include "app/widgets/Widget.h"
#include "physics/Geom.h"
#include "physics/Particle.h"
#include "physics/Simulation.h"
#include "physics/WorldGeom.h"
#include "script/Parser.h"
#include "util/FileSystem.h"

#include <algorithm>
#include <unordered_set>

using math::Vec2;
using math::Vec3;

namespace app
{
namespace
{
// Files from before scenes were programs begin with this, and are not run.
const char* const OldFileStart = "version = ";

template<typename T>
bool IsKind(const Entity& entity)
{
    return dynamic_cast<const T*>(&entity) != nullptr;
}

/// The assignment that sets the variable to what it is now.
void AddSetting(script::CodeBlock& block, const script::ClassObject& owner, const char* name)
{
    block.Add(owner.GetVariable(name)->ToExpression());
}

/// Where a joint's end or a pen lies, told by a geometry of the text if it is one.
struct Anchor
{
    const char *geom, *local, *world; // keys

    void WriteTo(EntitySerializer& serializer, const physics::GeomPtr& at, const Vec2& point,
                 const Serializer::FileIDs& ids) const
    {
        // Every text knows the world's.
        const auto found = ids.geoms.find(at->GetID());
        const int id = at->GetID() == 0 ? 0 : found != ids.geoms.end() ? found->second : -1;
        serializer.Set(geom, id);
        if (id >= 0)
            serializer.Set(local, point);
        else
            serializer.Set(world, math::TransformCoordinate(at->GetPose(), point));
    }
};
const Anchor JointEnds[] = {{"geom0", "geom0pos", "world0pos"}, {"geom1", "geom1pos", "world1pos"}};
const Anchor PenAnchor = {"geom", "relPoint", "pos"};

/// The number of the id in the text: the next one if it is new.
template<typename ID, typename Number>
Number NumberOf(std::unordered_map<ID, Number>& numbers, ID id)
{
    return numbers.emplace(id, static_cast<Number>(numbers.size() + 1)).first->second;
}

/// Each chain is walked once: it may have thousands of links. A link whose place another has taken is in
/// no chain any more.
auto FindChainPlaces(const std::vector<EntityPtr>& entities)
{
    std::unordered_map<unsigned long, Serializer::ChainPlace> places;
    std::unordered_set<unsigned long> walked;
    for (const EntityPtr& entity : entities)
    {
        const Chain* chain = entity->GetChain().get();
        if (!chain || !walked.insert(chain->GetID()).second)
            continue;
        for (const auto& [index, weak] : chain->GetSlots())
            if (const Entity* link = weak.GetUnlocked())
                places[link->GetID()] = {chain->GetID(), index};
    }
    return places;
}

/// The ids of the members in a text, ascending.
std::vector<unsigned long> GetMemberIDs(const Group& group, const Serializer::FileIDs* ids)
{
    if (!ids)
        return group.GetEnityIDs();
    std::vector<unsigned long> members;
    for (const EntityPtr& entity : group.GetEntities())
    {
        const auto id = ids->entities.find(entity->GetID());
        if (id != ids->entities.end())
            members.push_back(id->second);
    }
    std::sort(members.begin(), members.end());
    return members;
}
}

const std::vector<Serializer::Kind>& Serializer::GetKinds()
{
    static const std::vector<Kind>* kinds = new std::vector<Kind>{
        {"addPlane", "plane", &Serializer::AddPlane, &IsKind<PlaneEntity>},
        {"addCircle", "circle", &Serializer::AddCircle, &IsKind<CircleEntity>},
        {"addPolygon", "polygon", &Serializer::AddPolygon, &IsKind<PolyEntity>},
        {"addBox", "box", &Serializer::AddBox, &IsKind<BoxEntity>},
        {"addFixjoint", "fixjoint", &Serializer::AddFixjoint, &IsKind<FixJointEntity>},
        {"addHinge", "hinge", &Serializer::AddHinge, &IsKind<HingeEntity>},
        {"addSpring", "spring", &Serializer::AddSpring, &IsKind<SpringEntity>},
        {"addPen", "pen", &Serializer::AddPen, &IsKind<PenEntity>},
        {"addWater", "water", &Serializer::AddWater, nullptr},
        {"addGroup", "group", &Serializer::AddGroup, nullptr},
        {"addWidget", nullptr, &Serializer::AddWidget, nullptr},
    };
    return *kinds;
}

Serializer::Serializer()
    : m_loadedGroup(QUIB_NEW Group)
{
    FileInfo::GetInstancePtr()->AddToRoot();
    Scene* scene = Scene::GetInstancePtr();
    for (const Kind& kind : GetKinds())
        scene->AddCmd1(kind.command, [this, &kind](script::ObjectPtr argument)
                       { return Helper(kind, argument); });
}

Serializer::~Serializer() = default;

void Serializer::ForgetAll()
{
    m_loadedGroup->Clear();
    m_entities.clear();
    m_geoms.clear();
    m_chains.clear();
    m_entityIDs.clear();
    m_geomIDs.clear();
}

void Serializer::RegisterEntity(const EntityPtr& entity)
{
    m_entities[entity->GetID()] = entity;
    m_entityIDs[entity->GetID()] = entity->GetID();
    if (const GeomEntity* geomEntity = entity->AsGeomEntity())
    {
        const physics::GeomPtr& geom = geomEntity->GetGeom();
        m_geoms[geom->GetID()] = geom;
        m_geomIDs[geom->GetID()] = geom->GetID();
    }
}

void Serializer::ForgetEntity(const EntityPtr& entity)
{
    m_loadedGroup->Remove(entity);
    const auto forget = [](auto& ids, auto& objects, const auto& object)
    {
        const auto id = ids.find(object->GetID());
        if (id == ids.end())
            return;
        // A later one may bear the same id.
        const auto found = objects.find(id->second);
        if (found != objects.end() && found->second == object)
            objects.erase(found);
        ids.erase(id);
    };
    forget(m_entityIDs, m_entities, entity);
    if (const GeomEntity* geomEntity = entity->AsGeomEntity())
        forget(m_geomIDs, m_geoms, geomEntity->GetGeom());
}

unsigned long Serializer::GetFileID(const Entity& entity) const
{
    const auto id = m_entityIDs.find(entity.GetID());
    return id != m_entityIDs.end() ? id->second : entity.GetID();
}

unsigned long Serializer::GetFileGeomID(unsigned geomID) const
{
    const auto id = m_geomIDs.find(geomID);
    return id != m_geomIDs.end() ? id->second : geomID;
}

GroupPtr Serializer::Deserialize(const util::String& text)
{
    // Ids relate what stands in one text. Those of an earlier text mean nothing in this one.
    ForgetAll();
    script::Parser* parser = script::Parser::GetInstancePtr();
    const script::CodeBlockPtr program = parser->Parse(text);
    if (!program)
        QUIB_THROW(BadDataException("The text is not a valid scene or Quiblet"));
    // A text that tells no version must not mean what the text before it did.
    FileInfo::GetInstancePtr()->SetVersion(FileInfo::LATEST_VERSION);
    // What is there already is sorted together with what comes.
    Scene::GetInstancePtr()->DepthTagEntities();
    {
        WeldBatch welds;
        if (util::starts_with(text, OldFileStart))
        {
            Log(logging::LogVerbose, "Old (pre beta 4) file type detected");
            DeserializeOld(*program);
        }
        else
            parser->Execute(program);
    }
    Scene::GetInstancePtr()->SortByDepth();
    return m_loadedGroup;
}

// Writing.

util::String Serializer::SerializeScene()
{
    const Scene* scene = Scene::GetInstancePtr();
    script::CodeBlock block;
    for (const script::ExpressionPtr& statement : GetMetaVarList())
        block.Add(statement);
    SerializeSettings(block);
    const FileIDs ids = SerializeEntities(block, scene->GetEntities());
    SerializeWater(block);

    // By name, and those of one name by what the text tells of them. The ids of this run, by which the
    // scene orders these, are others once the text is loaded.
    using Entry = std::pair<std::vector<unsigned long>, GroupPtr>;
    std::vector<Entry> groups;
    for (const GroupPtr& group : scene->GetGroups())
        groups.emplace_back(GetMemberIDs(*group, &ids), group);
    std::stable_sort(groups.begin(), groups.end(),
                     [](const Entry& a, const Entry& b)
                     {
                         const int order = a.second->GetName().compare(b.second->GetName());
                         return order != 0 ? order < 0 : a.first < b.first;
                     });
    for (const Entry& entry : groups)
        SerializeGroup(block, entry.second, &ids);
    for (const WidgetPtr& widget : App::GetInstancePtr()->GetAppGUI()->GetWidgets())
        // The interface closes those whose entities have gone.
        if (widget->GetGroup() && !GetMemberIDs(*widget->GetGroup(), &ids).empty())
            SerializeWidget(block, *widget, &ids);
    return "// Quib scene created by " + util::FileSystem::GetInstancePtr()->NameAndVersion() +
           "\n\n" + block.ToCode();
}

util::String Serializer::SerializeQuiblet(const GroupPtr& group)
{
    std::vector<EntityPtr> entities;
    for (const EntityPtr& entity : Scene::GetInstancePtr()->GetEntities())
        if (group->Contains(entity))
            entities.push_back(entity);
    script::CodeBlock block;
    for (const script::ExpressionPtr& statement : GetMetaVarList())
        block.Add(statement);
    SerializeEntities(block, entities);
    return "// Quiblet created by " + util::FileSystem::GetInstancePtr()->NameAndVersion() +
           "\n\n" + block.ToCode();
}

script::ExpressionList Serializer::GetMetaVarList()
{
    FileInfo* info = FileInfo::GetInstancePtr();
    const Scene* scene = Scene::GetInstancePtr();
    if (info->GetTitle().empty())
        info->SetTitle(scene->GetTitle());
    if (info->GetAuthor().empty())
        info->SetAuthor(scene->GetAuthor());
    if (info->GetDescription().empty())
        info->SetDescription(scene->GetDescription());
    info->SetVersion(FileInfo::LATEST_VERSION);

    script::ExpressionList list;
    const auto add = [&list, info](const char* name)
    { list.push_back(info->GetVariable(name)->ToExpression()); };
    if (!info->GetTitle().empty())
        add("title");
    if (!info->GetAuthor().empty())
        add("author");
    if (!info->GetDescription().empty())
        add("description");
    add("version");
    return list;
}

void Serializer::SerializeSettings(script::CodeBlock& block, FadeSettings fadeSettings)
{
    const physics::Simulation* simulation = physics::Simulation::GetInstancePtr();
    const App* app = App::GetInstancePtr();
    const Camera* camera = Scene::GetInstancePtr()->GetCamera().get();
    const Background* background = app->GetBackground().get();
    for (const char* name :
         {"gravity", "gravitySwitch", "airSwitch", "airFrictionLinear", "airFrictionQuadratic",
          "rotFrictionLinear", "airDensity", "timeFactor"})
        AddSetting(block, *simulation, name);
    AddSetting(block, *app, "borders");
    AddSetting(block, *app, "waterColor");
    AddSetting(block, *camera, "pan");
    AddSetting(block, *camera, "zoom");
    AddSetting(block, *background, "cloudOpacity");
    AddSetting(block, *background, "drawClouds");
    AddSetting(block, *background, "skyColor");
    AddSetting(block, *app, "fadeColor");
    if (fadeSettings == FadeSettings::Always || app->GetFadeColor() != Vec3(0, 0, 0))
        for (const char* name : {"fadeScale", "fadeTranslate", "fadeRotate"})
            AddSetting(block, *app, name);
}

Serializer::FileIDs Serializer::SerializeEntities(script::CodeBlock& block,
                                                  const std::vector<EntityPtr>& entities)
{
    // As they will stand once the dead are gone: a text read and written again is the same. A dead one
    // shares its depth with the next, behind which it lies.
    float depth = 0;
    for (const EntityPtr& entity : Scene::GetInstancePtr()->GetEntities())
    {
        entity->SetZDepth(depth);
        if (entity->IsAlive())
            ++depth;
    }
    FileIDs ids;
    ids.chainPlaces = FindChainPlaces(entities);
    // Whoever reads knows a geometry before anything refers to it.
    std::vector<const Entity*> others;
    for (const EntityPtr& entity : entities)
    {
        if (!entity->IsAlive())
            continue;
        if (const GeomEntity* geomEntity = entity->AsGeomEntity())
        {
            NumberOf(ids.geoms, geomEntity->GetGeom()->GetID());
            SerializeEntity(block, *entity, ids);
        }
        else
            others.push_back(entity.get());
    }
    for (const Entity* entity : others)
        SerializeEntity(block, *entity, ids);
    return ids;
}

void Serializer::SerializeEntity(script::CodeBlock& block, const Entity& entity, FileIDs& ids)
{
    const auto kind =
        std::find_if(GetKinds().begin(), GetKinds().end(),
                     [&entity](const Kind& k) { return k.isKind && k.isKind(entity); });
    if (kind == GetKinds().end())
    {
        Log(logging::LogWarning, "Bad Entity");
        return;
    }
    EntitySerializer serializer;
    if (const JointEntity* joint = entity.AsJointEntity())
        for (int i = 0; i < 2; ++i)
            JointEnds[i].WriteTo(serializer, joint->GetGeom(i), joint->GetLocalPoint(i), ids);
    if (const PenEntity* pen = entity.AsPenEntity())
    {
        PenAnchor.WriteTo(serializer, pen->GetGeom(), pen->GetLocalPoint(), ids);
        // Not left to its default, which is the size that it was made with.
        serializer.Set("size", pen->GetSize());
    }
    entity.SerializeTo(serializer);
    // The entity has told the ids of this run.
    serializer.Set("entityID", NumberOf(ids.entities, entity.GetID()));
    if (const GeomEntity* geomEntity = entity.AsGeomEntity())
        serializer.Set("geomID", ids.geoms.at(geomEntity->GetGeom()->GetID()));
    const auto place = ids.chainPlaces.find(entity.GetID());
    if (place != ids.chainPlaces.end())
    {
        serializer.Set("chain", NumberOf(ids.chains, place->second.chain));
        serializer.Set("chainNr", static_cast<unsigned long>(place->second.index));
    }
    block.Add(serializer.ToFunctionCall(util::String("Scene.") + kind->command));
}

void Serializer::SerializeWater(script::CodeBlock& block)
{
    // Deliberate: velocities are not saved. Loaded water starts at rest.
    math::Vec2List positions;
    for (const physics::ParticlePtr& particle :
         physics::Simulation::GetInstancePtr()->GetParticles())
        positions.push_back(particle->GetPos());
    if (positions.empty())
        return;
    EntitySerializer serializer;
    serializer.Set("vecs", positions);
    block.Add(serializer.ToFunctionCall("Scene.addWater"));
}

void Serializer::SerializeGroup(script::CodeBlock& block, const GroupPtr& group, const FileIDs* ids)
{
    EntitySerializer serializer;
    group->SerializeTo(serializer);
    serializer.Set("entityIDs", GetMemberIDs(*group, ids));
    block.Add(serializer.ToFunctionCall("Scene.addGroup"));
}

void Serializer::SerializeWidget(script::CodeBlock& block, const Widget& widget, const FileIDs* ids)
{
    EntitySerializer serializer;
    serializer.Set("widgetID", widget.GetID());
    // A name that another group bears tells nothing: the members alone tell which one it is.
    const GroupPtr& group = widget.GetGroup();
    const bool isAmbiguous = Scene::GetInstancePtr()->IsNameShared(group);
    serializer.Set("groupID", isAmbiguous ? util::String() : group->GetName());
    serializer.Set("entityIDs", GetMemberIDs(*group, ids));
    serializer.Set("minimized", widget.IsMinimized());
    serializer.Set("pos", widget.GetPos());
    serializer.Set("title", widget.GetTitle());
    block.Add(serializer.ToFunctionCall("Scene.addWidget"));
}
}
