#include "gui/Component.h"

#include "gui/Border.h"
#include "gui/GUI.h"
#include "gui/LookAndFeel.h"
#include "input/Input.h"
#include "rendering/Pushers.h"
#include "rendering/Renderer.h"
#include "util/Timer.h"

#include <GL/gl.h>

#include <algorithm>
#include <limits>

using math::BoundingBox;
using math::Vec2;

namespace gui
{
namespace
{
const float Infinity = std::numeric_limits<float>::infinity();

// Seconds.
const double TooltipDelay = 0.4;
const double TooltipFade = 0.2;
/// From the mouse to the tooltip, so that the cursor does not lie on top of it.
const Vec2 TooltipOffset(8, 12);

std::vector<ComponentPtr>& Walked()
{
    static auto* s_walked = new std::vector<ComponentPtr>;
    return *s_walked;
}

void PopWalked()
{
    // It may end here, and walk over its own children in that: not inside of the vector.
    const ComponentPtr last = std::move(Walked().back());
    Walked().pop_back();
}
}

// All walks share one stack, so that none of them allocates once it has its capacity.
Component::Round::Round(const Component& component)
    : m_component(component)
    , m_begin(Walked().size())
{
    Walked().insert(Walked().end(), component.m_children.begin(), component.m_children.end());
}

Component::Round::~Round()
{
    while (Walked().size() > m_begin)
        PopWalked();
}

Component* Component::Round::Next()
{
    // The one that was handed out stays on the stack until now, which keeps it alive.
    if (m_isUnderWay)
        PopWalked();
    while (Walked().size() > m_begin)
    {
        Component* child = Walked().back().get();
        m_isUnderWay = child->GetOwnerComponent() == &m_component;
        if (m_isUnderWay)
            return child;
        PopWalked();
    }
    m_isUnderWay = false;
    return nullptr;
}

Component::Component(const LayoutPtr& layout)
    : InputDelegator(50)
    , m_maxSize(Infinity, Infinity)
    , m_border(LookAndFeel::GetDefault()->GetEmptyBorder())
    , m_layout(layout)
    , m_mouseChangeTime(util::Timer::GetCurrentTime())
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
    Reorganize();
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
    kept->LeaveMouse();
    Reorganize();
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
    if (m_layout)
        return;
    std::stable_sort(m_children.begin(), m_children.end(),
                     [](const ComponentPtr& a, const ComponentPtr& b)
                     { return a->GetPriority() < b->GetPriority(); });
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
        const Vec2 pos = child->GetInnerPos();
        glPushMatrix();
        rendering::Renderer::GetInstancePtr()->Translate(math::Vec3(pos.x, pos.y, child->m_depth));
        child->DrawCompAndChildren();
        glPopMatrix();
    }
}

void Component::DrawComp() const
{
    m_border->Draw(m_size);
}

void Component::Update(float dt)
{
    ForwardEvent([dt](Component* child) { child->Update(dt); });
    if (m_tooltip)
        UpdateTooltip();
}

math::Mat3 Component::CalcWorldToLocalTransform() const
{
    const math::Mat3 toLocal = math::Mat3::Translation2D(-GetInnerPos());
    const Component* owner = GetOwnerComponent();
    return owner ? toLocal * owner->CalcWorldToLocalTransform() : toLocal;
}

void Component::SetOuterPos(Vec2 pos)
{
    if (pos == m_pos)
        return;
    m_pos = pos;
    OnFormChange();
}

void Component::SetInnerSize(Vec2 size)
{
    if (size == m_size)
        return;
    m_size = size;
    OnFormChange();
}

void Component::SetMinSize(Vec2 size)
{
    m_minSize = size;
}

void Component::SetMaxSize(Vec2 size)
{
    if (size == m_maxSize)
        return;
    m_maxSize = size;
    SetInnerSize(Vec2(std::min(m_size.x, size.x), std::min(m_size.y, size.y)));
}

void Component::SetOuterSize(Vec2 size)
{
    SetInnerSize(size - m_border->GetSize());
}

void Component::SetBorder(const BorderPtr& border)
{
    CODE_ASSERT(border);
    m_border = border;
    OnFormChange();
}

void Component::SetLayout(const LayoutPtr& layout)
{
    m_layout = layout;
    SortChildren();
    Reorganize();
}

void Component::SetLayout(ListLayout::Flags flags)
{
    SetLayout(QUIB_NEW ListLayout(flags));
}

void Component::Reorganize()
{
    if (!m_layout)
        return;
    std::vector<ComponentPtr> placed;
    placed.reserve(m_children.size());
    for (const ComponentPtr& child : m_children)
        if (!child->m_isFreelyPlaced)
            placed.push_back(child);
    const LayoutPtr kept = m_layout;
    kept->Organize(*this, placed);
}

void Component::OnFormChange()
{
    Reorganize();
    if (!m_formNotifications)
        return;
    ForwardEvent([](Component* child) { child->OnOwnerFormChange(); });
    if (Component* owner = GetOwnerComponent())
        owner->OnChildFormChange();
    m_onForm.CallAll();
}

void Component::OnChildFormChange()
{
    Reorganize();
}

void Component::OnOwnerFormChange()
{
    const Component* owner = GetOwnerComponent();
    if (!m_formNotifications || !m_fillOwner || !owner)
        return;
    SetOuterPos(Vec2(0, 0));
    SetOuterSize(owner->GetInnerSize());
}

Vec2 Component::GetInnerOffset() const
{
    return m_border->GetTopLeftSize();
}

Vec2 Component::GetOuterSize() const
{
    return m_size + m_border->GetSize();
}

BoundingBox Component::GetOuterBB() const
{
    return BoundingBox(m_pos, m_pos + GetOuterSize());
}

BoundingBox Component::GetOuterBBLocal() const
{
    return BoundingBox(-GetInnerOffset(), m_size + m_border->GetBottomRightSize());
}

BoundingBox Component::GetInnerBBLocal() const
{
    return BoundingBox(Vec2(0, 0), m_size);
}

void Component::SetFillOwner(bool fill)
{
    m_fillOwner = fill;
    OnOwnerFormChange();
}

Vec2 Component::GUIToLocal(Vec2 pos) const
{
    for (const Component* component = this; component; component = component->GetOwnerComponent())
        pos -= component->GetInnerPos();
    return pos;
}

Vec2 Component::LocalToGUI(Vec2 pos) const
{
    for (const Component* component = this; component; component = component->GetOwnerComponent())
        pos += component->GetInnerPos();
    return pos;
}

Vec2 Component::GetMousePosLocal() const
{
    return GUIToLocal(input::Input::GetInstancePtr()->GetMousePos());
}

bool Component::IsMouseOverInner() const
{
    return m_isMouseOver && GetInnerBBLocal().Contains(GetMousePosLocal());
}

void Component::SetMouseOverOuter(bool isOver)
{
    if (isOver == m_isMouseOver)
        return;
    m_isMouseOver = isOver;
    if (isOver)
        OnMouseEnter();
    else
        OnMouseLeave();
}

void Component::OnMouseEnter()
{
    m_mouseChangeTime = util::Timer::GetCurrentTime();
}

void Component::OnMouseLeave()
{
    m_mouseChangeTime = util::Timer::GetCurrentTime();
}

void Component::SetMouseTransparent(bool isTransparent)
{
    m_isMouseTransparent = isTransparent;
    if (isTransparent)
        LeaveMouse();
}

/// Where the walk of the mouse does not come any more, and perhaps no update either, nobody else would
/// take back what the mouse has brought.
void Component::LeaveMouse()
{
    SetMouseOverOuter(false);
    HideTooltip();
    ForwardEvent([](Component* child) { child->LeaveMouse(); });
}

void Component::SetTooltip(const ComponentPtr& tooltip)
{
    HideTooltip();
    m_tooltip = tooltip;
}

void Component::UpdateTooltip()
{
    const ComponentPtr layer = GUI::GetInstancePtr()->GetTooltipLayer();
    const bool isShown = m_tooltip->GetOwnerComponent() == layer.get();
    const double passed = util::Timer::GetCurrentTime() - m_mouseChangeTime;
    math::Vec4 color = m_tooltip->GetColor();
    if (m_isMouseOver && passed > TooltipDelay)
    {
        if (!isShown)
        {
            const Vec2 pos = layer->GetMousePosLocal() + TooltipOffset;
            m_tooltip->SetOuterPos(pos);
            m_tooltip->SetInnerSize(Vec2(0, 0));
            // At the very edge there is no room at all.
            m_tooltip->SetMaxSize(Vec2(std::max(layer->GetInnerSize().x - pos.x, 0.0f), Infinity));
            layer->AddComponent(m_tooltip);
        }
        color.w = static_cast<float>(std::clamp((passed - TooltipDelay) / TooltipFade, 0.0, 1.0));
        m_tooltip->SetColor(color);
    }
    else if (!m_isMouseOver && isShown)
    {
        color.w = static_cast<float>(1 - passed / TooltipFade);
        m_tooltip->SetColor(color);
        if (color.w <= 0)
            layer->RemoveComponent(m_tooltip);
    }
}

void Component::HideTooltip()
{
    if (!m_tooltip || !GUI::Exists())
        return;
    const ComponentPtr layer = GUI::GetInstancePtr()->GetTooltipLayer();
    if (m_tooltip->GetOwnerComponent() == layer.get())
        layer->RemoveComponent(m_tooltip);
}
}
