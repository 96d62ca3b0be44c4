// Writes scenes as script text, and offers scripts the commands that this text consists of: loading a
// scene is running it. Made at start, never destroyed.
#pragma once

#include "app/Group.h"
#include "script/Expressions.h"
#include "script/Objects.h"
#include "util/Singleton.h"

#include <map>
#include <vector>

namespace physics
{
class Geom;
}

namespace app
{
class GeomEntity;

class Serializer : public util::Pointee, public util::Singleton<Serializer>
{
public:
    Serializer();
    ~Serializer() override;

    /// The whole scene with its settings.
    util::String SerializeScene();
    /// Runs the text.
    /// @return what it added to the scene; the same group every time
    /// @throws BadDataException  when the text does not parse; nothing has run then. A statement that
    ///                           fails is logged and costs itself only.
    GroupPtr Deserialize(const util::String& text);

    /// Ids as the text gave them that was loaded last, for those which it gave one.
    std::map<const Entity*, unsigned long> GetFileEntityIDs() const;
    /// The same for geometries; the world's has 0.
    std::map<const physics::Geom*, unsigned long> GetFileGeomIDs() const;

private:
    // What a scene can hold. One table serves reading and writing.
    struct Kind
    {
        const char* command; // of "Scene"
        void (Serializer::*handler)(const EntitySerializer&);
        bool (*isKind)(const Entity&); // null for what is no entity
    };
    static const std::vector<Kind>& GetKinds();

    script::ObjectPtr Helper(const Kind& kind, const script::ObjectPtr& argument);
    void AddPlane(const EntitySerializer& serializer);
    void AddCircle(const EntitySerializer& serializer);
    void AddPolygon(const EntitySerializer& serializer);
    void AddBox(const EntitySerializer& serializer);
    void AddGroup(const EntitySerializer& serializer);
    void AddGeomEntity(const EntitySerializer& serializer,
                       const util::SharedPtr<GeomEntity>& entity);
    void AddEntity(const EntitySerializer& serializer, const EntityPtr& entity);
    void ForgetIDs();

    void SerializeMetaVars(script::CodeBlock& block);
    void SerializeSettings(script::CodeBlock& block);
    void SerializeEntities(script::CodeBlock& block, const std::vector<EntityPtr>& entities);
    void SerializeGroup(script::CodeBlock& block, const GroupPtr& group);

    void DeserializeOld(const script::CodeBlock& program);
    void DeserializeOldEntity(EntitySerializer serializer);

    GroupPtr m_loadedGroup;
    std::map<unsigned long, util::SharedPtr<physics::Geom>> m_geoms; // by the id in the file
    std::map<unsigned long, EntityPtr> m_entities;                   // by the id in the file
};
}
