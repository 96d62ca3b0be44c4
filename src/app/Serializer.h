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
    /// A part of it, to be a file of its own.
    util::String SerializeQuiblet(const GroupPtr& group);
    /// Runs the text.
    /// @return what it added to the scene; the same group every time
    /// @throws BadDataException  when the text does not parse; nothing has run then. A statement that
    ///                           fails is logged and costs itself only.
    GroupPtr Deserialize(const util::String& text);

    /// Ids as the text gave them that was loaded last, for those which it gave one.
    std::map<const Entity*, unsigned long> GetFileEntityIDs() const;
    std::map<const physics::Geom*, unsigned long> GetFileGeomIDs() const;

private:
    using Handler = void (Serializer::*)(const EntitySerializer&);

    void AddCommand(const char* name, Handler handler);
    void AddPlane(const EntitySerializer& serializer);
    void AddCircle(const EntitySerializer& serializer);
    void AddPolygon(const EntitySerializer& serializer);
    void AddBox(const EntitySerializer& serializer);
    void AddGroup(const EntitySerializer& serializer);
    void AddGeomEntity(const EntitySerializer& serializer,
                       const util::SharedPtr<GeomEntity>& entity);
    void AddEntity(const EntitySerializer& serializer, const EntityPtr& entity);
    void ForgetIDs();

    script::CodeBlockPtr GetMetaVarList();
    void SerializeSettings(script::CodeBlock& block);
    void SerializeEntities(script::CodeBlock& block, const std::vector<EntityPtr>& entities);
    void SerializeGroup(script::CodeBlock& block, const GroupPtr& group);

    void DeserializeOld(const util::String& text);

    GroupPtr m_loadedGroup;
    std::map<unsigned long, util::SharedPtr<physics::Geom>> m_geoms; // by the id in the file
    std::map<unsigned long, EntityPtr> m_entities;                   // by the id in the file
};
}
