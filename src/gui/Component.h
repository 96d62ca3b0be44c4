// A node of the GUI: it draws, gets input for itself and its children, and is a script object below
// its owner. The owner holds its children, a child knows its owner weakly.
//
// Positions and sizes are in GUI units: pixels divided by GUI.scale, y pointing down. A component
// draws in its own coordinates, with (0, 0) at its top left.
#pragma once

#include "input/InputDelegator.h"
#include "math/BoundingBox.h"

#include <vector>

namespace gui
{
class Component;
using ComponentPtr = util::SharedPtr<Component>;

class Component : public input::InputDelegator
{
public:
    Component();
    ~Component() override;

    // Tree.

    /// Moves it here when it has another owner.
    void AddComponent(const ComponentPtr& child);
    void RemoveComponent(const ComponentPtr& child);
    void RemoveAllComponents();
    bool HasComponent(const ComponentPtr& child) const;
    const std::vector<ComponentPtr>& GetComponents() const { return m_children; }
    /// Null for one that hangs nowhere.
    Component* GetOwnerComponent() const { return m_ownerComponent.GetUnlocked(); }

    // Form.

    /// In the owner's coordinates.
    virtual void SetOuterPos(math::Vec2 pos);
    virtual void SetInnerSize(math::Vec2 size);
    const math::Vec2& GetOuterPos() const { return m_pos; }
    const math::Vec2& GetInnerSize() const { return m_size; }
    math::BoundingBox GetOuterBB() const { return math::BoundingBox(m_pos, m_pos + m_size); }
    /// Takes on the owner's size, at (0, 0), now and whenever that changes.
    void SetFillOwner(bool fill);

    /// Multiplied into the colour of this component and its children.
    void SetColor(const math::Vec4& color) { m_color = color; }
    const math::Vec4& GetColor() const { return m_color; }
    /// Added as z when the component is drawn, so that children stand in front of their owner.
    void SetDepth(float depth) { m_depth = depth; }

    // For GUI and subclasses. An override calls its base.

    virtual void DrawCompAndChildren() const;
    /// In order: a later child is drawn on top of an earlier one.
    virtual void DrawChildren() const;
    virtual void DrawComp() const;
    /// @param dt  seconds since the last frame
    virtual void Update(float dt);
    virtual void OnFormChange();
    virtual void OnOwnerFormChange();

private:
    void SortChildren();

    math::Vec2 m_pos;
    math::Vec2 m_size;
    float m_depth = 0.01f;
    bool m_fillOwner = false;
    math::Vec4 m_color = math::Vec4(1, 1, 1, 1);
    std::vector<ComponentPtr> m_children; // ascending by listener priority
    util::WeakPtr<Component> m_ownerComponent;
    util::CallbackPtr m_onPriority; // the owner's registration here
};
}
