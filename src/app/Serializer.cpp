#include "app/Serializer.h"

#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Background.h"
#include "app/Camera.h"
#include "app/EntitySerializer.h"
#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/entities/BoxEntity.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/PlaneEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/widgets/WidgetFactory.h"
#include "input/Input.h"
#include "physics/Box.h"
#include "physics/Circle.h"
#include "physics/Plane.h"
#include "physics/Polygon.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/FileSystem.h"

#include <algorithm>
#include <cmath>

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

/// The function's variables once it has run.
EntitySerializer CallBlock(script::Function& function)
{
    function.Call({});
    return EntitySerializer(*function.GetCallClosure());
}

// What an entity of an earlier file says it is.
util::String OldType(const EntitySerializer& serializer)
{
    return serializer.Has("type") ? serializer.Get<util::String>("type") : "";
}

bool IsOneOf(const util::String& text, std::initializer_list<const char*> words)
{
    return std::find(words.begin(), words.end(), text) != words.end();
}

bool IsOnBox(const Vec2& p, const Vec2& half)
{
    const float tolerance = 1e-7f;
    const float dx = std::fabs(p.x) - half.x, dy = std::fabs(p.y) - half.y;
    return (std::fabs(dx) <= tolerance && dy <= tolerance) ||
           (std::fabs(dy) <= tolerance && dx <= tolerance);
}

/// Boxes once were polygons with rounded corners. True when this is one, and then its "size" is set.
bool PolygonAsBox(EntitySerializer& serializer)
{
    const math::Vec2List vecs = serializer.Get<math::Vec2List>("vecs");
    if (vecs.size() != 12 && vecs.size() != 16)
        return false;
    const Vec2 half(std::fabs(vecs.back().x), std::fabs(vecs.back().y));
    for (const Vec2& p : vecs)
        if (!IsOnBox(p, half))
            return false;
    serializer.Set("size", half * 2.0f);
    return true;
}
}

const std::vector<Serializer::Kind>& Serializer::GetKinds()
{
    static const std::vector<Kind>* kinds = new std::vector<Kind>{
        {"addPlane", "plane", &Serializer::AddPlane, &IsKind<PlaneEntity>},
        {"addCircle", "circle", &Serializer::AddCircle, &IsKind<CircleEntity>},
        {"addPolygon", "polygon", &Serializer::AddPolygon, &IsKind<PolyEntity>},
        {"addBox", "box", &Serializer::AddBox, &IsKind<BoxEntity>},
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

void Serializer::ForgetAll()
{
    m_loadedGroup->Clear();
    m_entities.clear();
    m_entityIDs.clear();
    m_geomIDs.clear();
}

void Serializer::RegisterEntity(const EntityPtr& entity)
{
    m_entities[entity->GetID()] = entity;
    m_entityIDs[entity->GetID()] = entity->GetID();
}

void Serializer::ForgetEntity(const EntityPtr& entity)
{
    m_loadedGroup->Remove(entity);
    const auto id = m_entityIDs.find(entity->GetID());
    if (id != m_entityIDs.end())
    {
        const auto found = m_entities.find(id->second);
        if (found != m_entities.end() && found->second == entity)
            m_entities.erase(found);
        m_entityIDs.erase(id);
    }
    if (const GeomEntity* geomEntity = entity->AsGeomEntity())
        m_geomIDs.erase(geomEntity->GetGeom()->GetID());
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

// Reading.

GroupPtr Serializer::Deserialize(const util::String& text)
{
    // Ids relate what stands in one text. Those of an earlier text mean nothing in this one.
    ForgetAll();
    script::Parser* parser = script::Parser::GetInstancePtr();
    const script::CodeBlockPtr program = parser->Parse(text);
    if (!program)
        QUIB_THROW(BadDataException("The text is not a valid scene or Quiblet"));
    if (util::starts_with(text, OldFileStart))
    {
        Log(logging::LogVerbose, "Old (pre beta 4) file type detected");
        DeserializeOld(*program);
    }
    else
        parser->Execute(program);
    Scene::GetInstancePtr()->SortByDepth();
    return m_loadedGroup;
}

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
    const math::Vec2List vecs = serializer.Get<math::Vec2List>("vecs");
    if (!std::all_of(vecs.begin(), vecs.end(), [](const Vec2& v) { return math::IsFinite(v); }))
        QUIB_THROW(BadDataException("Bad polygon"));
    const physics::PolygonPtr geom = QUIB_NEW physics::Polygon(vecs);
    AddGeomEntity(serializer, QUIB_NEW PolyEntity(geom));
}

void Serializer::AddBox(const EntitySerializer& serializer)
{
    const physics::BoxPtr geom = QUIB_NEW physics::Box(Vec2(1, 1), Vec2());
    AddGeomEntity(serializer, QUIB_NEW BoxEntity(geom));
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
    GroupPtr group;
    if (serializer.Has("groupID"))
        group = Scene::GetInstancePtr()->GetGroupByName(serializer.Get<util::String>("groupID"));
    if (!group)
    {
        group = QUIB_NEW Group;
        group->AddAll(ReadMembers(serializer));
    }
    const WidgetPtr widget = WidgetFactory::GetInstancePtr()->CreateWidget(
        serializer.Get<util::String>("widgetID"), group);
    if (serializer.Has("minimized"))
        widget->SetMinimized(serializer.Get<bool>("minimized"));
    widget->SetPos(serializer.Has("pos") ? serializer.Get<Vec2>("pos")
                                         : input::Input::GetInstancePtr()->GetMousePos());
    if (serializer.Has("title"))
        widget->SetTitle(serializer.Get<util::String>("title"));
    App::GetInstancePtr()->GetAppGUI()->AddWidget(widget);
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
    if (hasID)
        m_geomIDs[entity->GetGeom()->GetID()] = id;
}

void Serializer::AddEntity(const EntitySerializer& serializer, const EntityPtr& entity)
{
    const bool hasID = serializer.Has("entityID");
    const unsigned long id = hasID ? serializer.Get<unsigned long>("entityID") : 0;
    entity->Deserialize(serializer);
    Scene::GetInstancePtr()->AddEntity(entity);
    if (hasID)
    {
        m_entities[id] = entity;
        m_entityIDs[entity->GetID()] = id;
    }
    m_loadedGroup->Add(entity);
}

// Reading files from before scenes were programs: named blocks that each tell their type, and are
// called here one by one. Nothing else in them runs.

void Serializer::DeserializeOld(const script::CodeBlock& program)
{
    FileInfo::GetInstancePtr()->SetVersion(0);
    const script::ClosurePtr closure = QUIB_NEW script::Closure(
        "Deserialize_closure", script::Parser::GetInstancePtr()->GetRootClosure());
    // Joints name geometries and groups name entities, which must be there by then.
    std::vector<EntitySerializer> geoms, joints, others;
    for (const script::ExpressionPtr& statement : program.GetElements())
    {
        try
        {
            const script::Assignment* assignment = statement->AsAssignment();
            if (!assignment)
            {
                Log(logging::LogWarning,
                    "Unknown garbage found in scene file: " + statement->ToCode());
                continue;
            }
            const script::ExpressionPtr& value = assignment->GetValue();
            const util::String name = assignment->GetTarget()->GetName();
            if (dynamic_cast<const script::FunctionDeclaration*>(value.get()))
            {
                const auto function = util::DynamicCast<script::Function>(value->Evaluate(closure));
                const EntitySerializer serializer = CallBlock(*function);
                const util::String type = OldType(serializer);
                (IsOneOf(type, {"polygon", "circle", "plane", "box"})    ? geoms
                 : IsOneOf(type, {"fixjoint", "hinge", "spring", "pen"}) ? joints
                                                                         : others)
                    .push_back(serializer);
            }
            else if (name == "version")
                FileInfo::GetInstancePtr()->SetVersion(
                    script::ObjectToValue<int>(value->Evaluate(closure)));
            else
                Log(logging::LogWarning, "Unknown constant declared in scene file: " + name);
        }
        catch (std::exception& e)
        {
            CatchException(e, QUIB_LOCATION);
            Log(logging::LogWarning,
                util::String("An error occurred while deserializing: ") + e.what());
        }
    }
    for (auto* list : {&geoms, &joints, &others})
        for (EntitySerializer& serializer : *list)
            DeserializeOldEntity(serializer);
}

void Serializer::DeserializeOldEntity(EntitySerializer& serializer)
{
    try
    {
        util::String type = OldType(serializer);
        if (type == "polygon" && PolygonAsBox(serializer))
            type = "box";
        for (const Kind& kind : GetKinds())
            if (kind.oldType && type == kind.oldType)
            {
                (this->*kind.handler)(serializer);
                return;
            }
        Log(logging::LogWarning, "Unknown type: " + type);
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogWarning,
            util::String("An error occurred while deserializing: ") + e.what());
    }
}

// Writing.

util::String Serializer::SerializeScene()
{
    const Scene* scene = Scene::GetInstancePtr();
    script::CodeBlock block;
    for (const script::ExpressionPtr& statement : GetMetaVarList())
        block.Add(statement);
    SerializeSettings(block);
    SerializeEntities(block, scene->GetEntities());
    for (const GroupPtr& group : scene->GetGroups())
        SerializeGroup(block, group);
    for (const WidgetPtr& widget : App::GetInstancePtr()->GetAppGUI()->GetWidgets())
        if (widget->GetGroup())
            SerializeWidget(block, *widget);
    return "// Quib scene created by " + util::FileSystem::GetInstancePtr()->NameAndVersion() +
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

void Serializer::SerializeSettings(script::CodeBlock& block)
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
    if (app->GetFadeColor() != Vec3(0, 0, 0))
        for (const char* name : {"fadeScale", "fadeTranslate", "fadeRotate"})
            AddSetting(block, *app, name);
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

void Serializer::SerializeEntities(script::CodeBlock& block, const std::vector<EntityPtr>& entities)
{
    Scene::GetInstancePtr()->DepthTagEntities();
    for (const EntityPtr& entity : entities)
    {
        const auto kind =
            std::find_if(GetKinds().begin(), GetKinds().end(),
                         [&entity](const Kind& k) { return k.isKind && k.isKind(*entity); });
        if (kind == GetKinds().end())
        {
            Log(logging::LogWarning, "Bad Entity");
            continue;
        }
        EntitySerializer serializer;
        entity->SerializeTo(serializer);
        block.Add(serializer.ToFunctionCall(util::String("Scene.") + kind->command));
    }
}

void Serializer::SerializeGroup(script::CodeBlock& block, const GroupPtr& group)
{
    EntitySerializer serializer;
    group->SerializeTo(serializer);
    serializer.Set("entityIDs", group->GetEnityIDs());
    block.Add(serializer.ToFunctionCall("Scene.addGroup"));
}

void Serializer::SerializeWidget(script::CodeBlock& block, const Widget& widget)
{
    EntitySerializer serializer;
    serializer.Set("widgetID", widget.GetID());
    serializer.Set("groupID", widget.GetGroup()->GetName());
    serializer.Set("entityIDs", widget.GetGroup()->GetEnityIDs());
    serializer.Set("minimized", widget.IsMinimized());
    serializer.Set("pos", widget.GetPos());
    serializer.Set("title", widget.GetTitle());
    block.Add(serializer.ToFunctionCall("Scene.addWidget"));
}
}
