// A set of entities, named or not: the selection, what the camera follows, the groups that a user
// made, and what operations hand around. The scene owns the named ones.
#pragma once

#include "math/BoundingBox.h"
#include "util/HashSet.h"
#include "util/SharedPtr.h"
#include "util/String.h"

#include <vector>

namespace app
{
class Entity;
class EntitySerializer;
class Group;
using EntityPtr = util::SharedPtr<Entity>;
using GroupPtr = util::SharedPtr<Group>;
using EntitySet = util::HashSet<EntityPtr>;

/// The names of the two groups that have a meaning of their own.
extern const char* const SelectedName;
extern const char* const TrackedName;

class Group : public util::Pointee
{
public:
    Group();
    explicit Group(const util::String& name);
    explicit Group(const EntityPtr& entity);
    ~Group() override;

    const util::String& GetName() const { return m_name; }
    const EntitySet& GetEntities() const { return m_entities; }
    bool Contains(const EntityPtr& entity) const;
    bool IsEmpty() const { return m_entities.empty(); }

    void Add(const EntityPtr& entity);
    void AddAll(const EntitySet& entities);
    void AddAll(const GroupPtr& group) { AddAll(group->GetEntities()); }
    void Remove(const EntityPtr& entity);
    void Clear();
    /// Replaces the contents.
    void Set(const GroupPtr& group);

    /// The ids of all members, ascending: the set itself has no order that a file could keep.
    /// Deliberate: the spelling.
    std::vector<unsigned long> GetEnityIDs() const;
    /// Around all members whose box is finite, and so without planes. Empty when there is none.
    math::BoundingBox CalcFiniteAABB() const;

    void SerializeTo(EntitySerializer& serializer) const;
    void Deserialize(const EntitySerializer& serializer);

private:
    util::String m_name; // "" for a group that nobody asks for by name
    EntitySet m_entities;
};

/// Where the camera looks when it follows the group: the centre of a single geometry, else the centre
/// of the group's box. (NaN, NaN) for no group and for one without a finite box.
math::Vec2 GetGroupCenter(const GroupPtr& group);
}
