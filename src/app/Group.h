// A set of entities, named or not: the selection, what the camera follows, the groups that a user
// made, and what operations hand around. The scene owns the named ones.
#pragma once

#include "math/BoundingBox.h"
#include "util/HashMap.h"
#include "util/HashSet.h"
#include "util/SharedPtr.h"
#include "util/String.h"

#include <optional>
#include <vector>

namespace app
{
class Entity;
class EntitySerializer;
class Group;
using EntityPtr = util::SharedPtr<Entity>;
using GroupPtr = util::SharedPtr<Group>;
using EntitySet = util::HashSet<EntityPtr>;
using EntityMap = util::HashMap<EntityPtr, EntityPtr>;

/// In order of id. The order of a set is that of addresses, which differ from run to run.
std::vector<EntityPtr> SortedByID(const EntitySet& entities);

/// The names of the two groups that have a meaning of their own.
extern const char* const SelectedName;
extern const char* const TrackedName;

class Group : public util::Pointee
{
public:
    Group();
    explicit Group(const util::String& name);
    explicit Group(const EntityPtr& entity);
    explicit Group(const EntitySet& entities);
    ~Group() override;

    const util::String& GetName() const { return m_name; }
    const EntitySet& GetEntities() const { return m_entities; }
    bool Contains(const EntityPtr& entity) const;
    bool IsEmpty() const { return m_entities.empty(); }

    // Any argument may be this group or its set.
    void Add(const EntityPtr& entity);
    void AddAll(const EntitySet& entities);
    void AddAll(const GroupPtr& group);
    void Remove(const EntityPtr& entity);
    void RemoveAll(const EntitySet& entities);
    void RemoveAll(const GroupPtr& group);
    void Clear();
    /// Replaces the contents.
    void Set(const EntitySet& entities);
    void Set(const GroupPtr& group);
    /// Replaces each member that is a key of the map by its value.
    void Update(const EntityMap& map);

    bool ContainsAny(const EntitySet& entities) const;
    bool ContainsAll(const EntitySet& entities) const;
    /// Whether there are members, and all of them are of the kind T.
    template<typename T>
    bool AreAll() const;
    template<typename T>
    bool ContainsAny() const;
    /// The one with the lowest id, or null.
    EntityPtr GetFirst() const;
    /// Its id; the highest there is for an empty group. Mostly known without a search.
    unsigned long GetLowestID() const;
    std::vector<EntityPtr> GetSorted() const;

    /// A new group with the same name and members.
    GroupPtr ShallowClone() const;
    /// A new group with those that are in exactly one of the two.
    static GroupPtr XOR(const GroupPtr& a, const GroupPtr& b);

    /// A key of the language files, such as "Box" when there is nothing but boxes.
    util::String GetDescriptiveName() const;

    /// The ids of all members, ascending: the set itself has no order that a file could keep.
    /// Deliberate: the spelling.
    std::vector<unsigned long> GetEnityIDs() const;
    /// Around all members whose box is finite, and so without planes. Empty when there is none.
    math::BoundingBox CalcFiniteAABB() const;

    /// Weighed by area, not by mass. A plane counts next to nothing, and at the mouse.
    math::Vec2 CalcCenterByWeight() const;
    /// The point by which the group hangs, if it hangs by one.
    std::optional<math::Vec2> CalcScaleCenter() const;
    /// That, else CalcCenterByWeight.
    math::Vec2 CalcRotationCenter() const;
    /// What moves when the group moves: geometries first, then joints, then pens. With Alt held, no
    /// geometry but the members.
    std::vector<EntityPtr> GetTransformEntities() const;

    void SerializeTo(EntitySerializer& serializer) const;
    /// Before the group is in the scene, which finds it by its name.
    void Deserialize(const EntitySerializer& serializer);

private:
    util::String m_name; // "" for a group that nobody asks for by name
    EntitySet m_entities;
    mutable std::optional<unsigned long> m_lowestID; // unless it must be found again
};

template<typename T>
bool Group::AreAll() const
{
    for (const EntityPtr& entity : m_entities)
        if (!dynamic_cast<const T*>(entity.get()))
            return false;
    return !m_entities.empty();
}

template<typename T>
bool Group::ContainsAny() const
{
    for (const EntityPtr& entity : m_entities)
        if (dynamic_cast<const T*>(entity.get()))
            return true;
    return false;
}

/// Where the camera looks when it follows the group: the centre of a single geometry, else the centre
/// of the group's box. (NaN, NaN) for no group and for one without a finite box.
math::Vec2 GetGroupCenter(const GroupPtr& group);
}
