#include "gui/Component.h"

#include "rendering/Pushers.h"
#include "rendering/Renderer.h"

#include <GL/gl.h>

#include <algorithm>

namespace gui
{
Component::Component()
    : InputDelegator(50)
{
}

Component::~Component() = default;

void Component::AddComponent(const ComponentPtr& child)
{
    // The caller's handle may be an element of a vector that changes here.
    const ComponentPtr kept = child;
    if (Component* owner = kept->GetOwnerComponent())
        owner->RemoveComponent(kept);
    AddReflectedChild(kept);
    m_children.push_back(kept);
    kept->m_ownerComponent = util::WeakPtr<Component>(this);
    kept->OnOwnerFormChange();
    AddListener(util::WeakPtr<input::InputListener>(kept.get()));
    kept->m_onPriority = util::MakeCallback(&Component::SortChildren, this);
    kept->AddPriorityCallback(kept->m_onPriority);
    SortChildren();
}

void Component::RemoveComponent(const ComponentPtr& child)
{
    const ComponentPtr kept = child;
    const auto it = std::find(m_children.begin(), m_children.end(), kept);
    if (it == m_children.end())
        return;
    RemoveListener(util::WeakPtr<input::InputListener>(kept.get()));
    kept->RemovePriorityCallback(kept->m_onPriority);
    // It may be shown to scripts elsewhere by now: AddToRoot moves it.
    if (kept->GetOwner().GetUnlocked() == this)
        RemoveReflectedChild(kept);
    m_children.erase(it);
    kept->m_ownerComponent = util::WeakPtr<Component>();
}

void Component::RemoveAllComponents()
{
    while (!m_children.empty())
        RemoveComponent(m_children.back());
}

bool Component::HasComponent(const ComponentPtr& child) const
{
    return std::find(m_children.begin(), m_children.end(), child) != m_children.end();
}

void Component::SortChildren()
{
    std::stable_sort(m_children.begin(), m_children.end(),
                     [](const ComponentPtr& a, const ComponentPtr& b)
                     { return a->GetPriority() < b->GetPriority(); });
}

void Component::SetOuterPos(math::Vec2 pos)
{
    if (pos == m_pos)
        return;
    m_pos = pos;
    OnFormChange();
}

void Component::SetInnerSize(math::Vec2 size)
{
    if (size == m_size)
        return;
    m_size = size;
    OnFormChange();
}

void Component::SetFillOwner(bool fill)
{
    m_fillOwner = fill;
    OnOwnerFormChange();
}

void Component::OnFormChange()
{
    // From the last to the first, and by index: a child may leave meanwhile.
    for (size_t i = m_children.size(); i-- > 0;)
        if (i < m_children.size())
            ComponentPtr(m_children[i])->OnOwnerFormChange();
}

void Component::OnOwnerFormChange()
{
    Component* owner = GetOwnerComponent();
    if (!m_fillOwner || !owner)
        return;
    SetOuterPos(math::Vec2(0, 0));
    SetInnerSize(owner->GetInnerSize());
}

void Component::DrawCompAndChildren() const
{
    rendering::ColorPusher color;
    rendering::Renderer::GetInstancePtr()->MulColor4(m_color);
    DrawComp();
    DrawChildren();
}

void Component::DrawChildren() const
{
    for (const ComponentPtr& child : m_children)
    {
        glPushMatrix();
        rendering::Renderer::GetInstancePtr()->Translate(
            math::Vec3(child->m_pos.x, child->m_pos.y, child->m_depth));
        child->DrawCompAndChildren();
        glPopMatrix();
    }
}

void Component::DrawComp() const {}

void Component::Update(float dt)
{
    for (size_t i = m_children.size(); i-- > 0;)
        if (i < m_children.size())
            ComponentPtr(m_children[i])->Update(dt);
}
}
