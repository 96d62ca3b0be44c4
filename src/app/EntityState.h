// What an entity says of itself, in little room: thousands of entities are kept for each edit that can be
// undone, and few of them change from one to the next. Snapshots share them.
#pragma once

#include "script/Objects.h"
#include "util/SharedPtr.h"
#include "util/String.h"

#include <utility>
#include <vector>

namespace app
{
class Entity;
class EntityState;
using EntityStatePtr = util::SharedPtr<const EntityState>;

class EntityState : public util::Pointee
{
public:
    /// What Entity::SerializeTo gives, defaults included.
    /// @param older  of the same entity, may be null; equal values are shared with it
    /// @return the older state itself, when the entity says the same as it did then
    static EntityStatePtr Make(const Entity& entity, const EntityStatePtr& older);

    /// @throws what Entity::Deserialize throws
    void Deserialize(Entity& entity) const;

private:
    std::vector<std::pair<const util::String*, script::ObjectPtr>> m_values;
};
}
