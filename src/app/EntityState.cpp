#include "app/EntityState.h"

#include "app/EntitySerializer.h"
#include "app/entities/Entity.h"
#include "util/SameBits.h"

#include <algorithm>
#include <unordered_set>

namespace app
{
namespace
{
/// The one copy of the key, for keys are few and their uses many.
const util::String* Intern(const util::String& key)
{
    static auto* keys = new std::unordered_set<util::String>;
    return &*keys->insert(key).first;
}

template<typename T>
const T& ValueOf(const script::ObjectPtr& object)
{
    return static_cast<const script::Value<T>&>(*object).GetValue();
}

bool IsSameValue(const script::ObjectPtr& a, const script::ObjectPtr& b)
{
    if (a == b)
        return true;
    if (!a || !b || a->GetKind() != b->GetKind())
        return false;
    switch (a->GetKind())
    {
    case script::ObjectKind::Bool:
        return ValueOf<bool>(a) == ValueOf<bool>(b);
    case script::ObjectKind::Int:
        return ValueOf<script::Int>(a) == ValueOf<script::Int>(b);
    case script::ObjectKind::Float:
        return util::HasSameBits(ValueOf<script::Float>(a), ValueOf<script::Float>(b));
    case script::ObjectKind::String:
        return ValueOf<util::String>(a) == ValueOf<util::String>(b);
    case script::ObjectKind::List:
    {
        const script::ObjectList& listA = static_cast<const script::List&>(*a).GetElements();
        const script::ObjectList& listB = static_cast<const script::List&>(*b).GetElements();
        return std::equal(listA.begin(), listA.end(), listB.begin(), listB.end(), IsSameValue);
    }
    default:
        return false;
    }
}
}

EntityStatePtr EntityState::Make(const Entity& entity, const EntityStatePtr& older)
{
    EntitySerializer serializer(EntitySerializer::Defaults::Keep);
    entity.SerializeTo(serializer);
    util::SharedPtr<EntityState> state = QUIB_NEW EntityState;
    state->m_values.reserve(serializer.GetValues().size());
    bool isSame = older && older->m_values.size() == serializer.GetValues().size();
    for (const auto& value : serializer.GetValues())
    {
        const util::String* key = Intern(value.first);
        const size_t i = state->m_values.size();
        state->m_values.emplace_back(key, value.second);
        const bool isEqual = older && i < older->m_values.size() &&
                             older->m_values[i].first == key &&
                             IsSameValue(older->m_values[i].second, value.second);
        if (isEqual)
            state->m_values[i].second = older->m_values[i].second;
        isSame = isSame && isEqual;
    }
    return isSame ? older : EntityStatePtr(state.get());
}

void EntityState::Deserialize(Entity& entity) const
{
    EntitySerializer serializer(EntitySerializer::Defaults::Keep);
    for (const auto& value : m_values)
        serializer.SetObject(*value.first, value.second);
    entity.Deserialize(serializer);
}
}
