#include "app/entities/Entity.h"

#include "app/App.h"
#include "app/Camera.h"
#include "app/Chain.h"
#include "app/EntitySerializer.h"
#include "app/FileInfo.h"
#include "app/Scene.h"

namespace app
{
unsigned long Entity::s_idCounter = 1;

Entity::Entity()
    : Reflected("Entity")
    , m_id(s_idCounter++)
    , m_color(App::GetInstancePtr()->RandomEntityColor4())
{
}

Entity::~Entity() = default;

void Entity::SetChain(const ChainPtr& chain, size_t index)
{
    m_chain = chain;
    m_chainIndex = index;
}

void Entity::Update(float) {}

void Entity::CopyFrom(const Entity* other)
{
    m_color = other->m_color;
    m_zDepth = other->m_zDepth;
}

void Entity::SerializeTo(EntitySerializer& serializer) const
{
    serializer.SerializeAttributes(*this);
    serializer.Set("color", m_color);
    serializer.Set("entityID", m_id);
    serializer.Set("zDepth", m_zDepth);
}

void Entity::Deserialize(const EntitySerializer& serializer)
{
    serializer.DeserializeAttributes(*this);
    if (serializer.Has("color"))
    {
        math::Vec4 color;
        // A bag that has seen no file is of this version.
        if (FileInfo::GetInstancePtr()->GetVersion() <= 1 && !serializer.KeepsDefaults())
            color = math::Vec4(serializer.Get<math::Vec3>("color"), 1);
        else
            color = serializer.Get<math::Vec4>("color");
        if (!math::IsFinite(color))
            QUIB_THROW(BadDataException("Bad color"));
        m_color = color;
    }
    if (serializer.Has("zDepth"))
    {
        const float zDepth = serializer.Get<float>("zDepth");
        // Entities are sorted by it, and no order knows a NaN.
        if (!math::IsFinite(zDepth))
            QUIB_THROW(BadDataException("Bad zDepth"));
        m_zDepth = zDepth;
    }
    const bool isTracked = serializer.Has("tracked") && serializer.Get<bool>("tracked");
    util::String groupName;
    if (serializer.Has("group"))
        groupName = "group_" + util::ToString(serializer.Get<int>("group"));
    Check();

    // From here on nothing fails: a half-read entity must not stay in a group.
    Scene* scene = Scene::GetInstancePtr();
    if (!groupName.empty())
        scene->GetOrCreateGroupByName(groupName)->Add(this);
    if (isTracked)
        scene->GetCamera()->SetTrackedGroup(QUIB_NEW Group(EntityPtr(this)));
}

bool Entity::IsInView(const math::BoundingBox& view) const
{
    return Intersects(GetAABB(), view);
}
}
