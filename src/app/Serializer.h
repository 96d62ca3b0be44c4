// Writes scenes as script text, and offers scripts the commands that this text consists of: loading a
// scene is running it. Made at start, never destroyed.
#pragma once

#include "app/Group.h"
#include "script/Expressions.h"
#include "script/Objects.h"
#include "util/Singleton.h"

#include <map>
#include <unordered_map>
#include <vector>

namespace app
{
class GeomEntity;
class Widget;

class Serializer : public util::Pointee, public util::Singleton<Serializer>
{
public:
    Serializer();
    ~Serializer() override;

    /// The whole scene with its settings. Writes the version into FileInfo, and there the scene's texts
    /// where it had none; and into each entity its zDepth.
    util::String SerializeScene();
    /// Runs the text.
    /// @return what it added to the scene and is there still; the same group every time
    /// @throws BadDataException  when the text does not parse; nothing has run then. A statement that
    ///                           fails is logged and costs itself only.
    GroupPtr Deserialize(const util::String& text);

    /// The group's entities, to be brought into some other scene: without settings, water, groups and
    /// widgets. What it writes into FileInfo and the entities is as with a scene.
    util::String SerializeQuiblet(const GroupPtr& group);

    // The pieces of these texts, with the ids of this run. Entities get joints' ends by these too.

    /// What FileInfo says: the texts that are not empty, and the version.
    script::ExpressionList GetMetaVarList();
    /// Geometries first, then joints and pens, each in the order given. A joint's end that is not among
    /// them is written as a point of the world.
    void SerializeEntities(script::CodeBlock& block, const std::vector<EntityPtr>& entities);
    void SerializeGroup(script::CodeBlock& block, const GroupPtr& group);
    /// @param widget  one that has a group
    void SerializeWidget(script::CodeBlock& block, const Widget& widget);
    /// What comes next to be run may name the entity and its geometry by their ids of this run.
    void RegisterEntity(const EntityPtr& entity);

    /// The id as the text gave it that brought the entity, else the entity's own. A text may give one
    /// id to several entities.
    unsigned long GetFileID(const Entity& entity) const;
    /// The same for geometries; the world's has 0.
    /// @param geomID  its id in this run
    unsigned long GetFileGeomID(unsigned geomID) const;

    /// Lets go of everything that was read so far: its ids mean nothing any more.
    void ForgetAll();
    /// The same for one that has left the scene.
    void ForgetEntity(const EntityPtr& entity);

private:
    // What a scene can hold. One table serves reading and writing.
    struct Kind
    {
        const char* command; // of "Scene"
        const char* oldType; // in files from before scenes were programs; null where these had none
        void (Serializer::*handler)(const EntitySerializer&);
        bool (*isKind)(const Entity&); // null for what is no entity
    };
    static const std::vector<Kind>& GetKinds();

    script::ObjectPtr Helper(const Kind& kind, const script::ObjectPtr& argument);
    void AddPlane(const EntitySerializer& serializer);
    void AddCircle(const EntitySerializer& serializer);
    void AddPolygon(const EntitySerializer& serializer);
    void AddBox(const EntitySerializer& serializer);
    /// The entities that "entityIDs" names; unknown ids are skipped.
    EntitySet ReadMembers(const EntitySerializer& serializer) const;
    void AddGroup(const EntitySerializer& serializer);
    void AddWidget(const EntitySerializer& serializer);
    void AddGeomEntity(const EntitySerializer& serializer,
                       const util::SharedPtr<GeomEntity>& entity);
    void AddEntity(const EntitySerializer& serializer, const EntityPtr& entity);

    void SerializeSettings(script::CodeBlock& block);

    void DeserializeOld(const script::CodeBlock& program);
    void DeserializeOldEntity(EntitySerializer& serializer);

    GroupPtr m_loadedGroup;
    std::map<unsigned long, EntityPtr>
        m_entities; // by the id in the file; the latest of equal ones
    std::unordered_map<unsigned long, unsigned long> m_entityIDs; // of this run -> in the file
    std::unordered_map<unsigned, unsigned long> m_geomIDs;        // of this run -> in the file
};
}
