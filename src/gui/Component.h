// A node of the GUI: it draws, gets input for itself and its children, and is a script object below
// its owner. The owner holds its children, a child knows its owner weakly.
//
// Positions and sizes are in GUI units: pixels divided by GUI.scale, y pointing down.
//
//   outer position, in the owner's inner coordinates
//   x----------------------+
//   | border               |     A component draws, and places its children, in its inner
//   |  x---------------+   |     coordinates, with (0, 0) at its inner top left.
//   |  | inner area    |   |
//   |  +---------------+   |
//   +----------------------+
#pragma once

#include "gui/Layout.h"
#include "input/InputDelegator.h"
#include "math/BoundingBox.h"
#include "math/Matrix.h"

#include <vector>

namespace gui
{
class Border;

class Component : public input::InputDelegator
{
public:
    /// @param layout  places the children; null leaves them where they are put
    explicit Component(const LayoutPtr& layout = nullptr);
    ~Component() override;

    // Tree.

    /// Moves it here when it has another owner. Without a layout the children are kept in ascending
    /// order of their priority; a layout takes them in the order of addition.
    void AddComponent(const ComponentPtr& child);
    /// One that is no child is ignored.
    void RemoveComponent(const ComponentPtr& child);
    void RemoveAllComponents();
    bool HasComponent(const ComponentPtr& child) const;
    const std::vector<ComponentPtr>& GetComponents() const { return m_children; }
    /// Null for one that hangs nowhere.
    Component* GetOwnerComponent() const { return m_ownerComponent.GetUnlocked(); }

    /// Calls function(Component*) for all children, from the last to the first, which is from front to
    /// back. One that leaves meanwhile is left out, one that comes too.
    template<typename F>
    void ForwardEvent(F&& function) const
    {
        Round round(*this);
        while (Component* child = round.Next())
            function(child);
    }

    // Drawing. An override calls its base.

    virtual void DrawCompAndChildren() const;
    /// In order: a later child is drawn on top of an earlier one.
    virtual void DrawChildren() const;
    /// The border.
    virtual void DrawComp() const;
    /// Once a frame, the children first.
    /// @param dt  seconds since the last frame
    virtual void Update(float dt);

    // Form. All lengths may be any number: neither the minimum nor the maximum holds a size that is
    // set, they are there for layouts and subclasses.

    /// From coordinates of the whole GUI to inner ones, as GUIToLocal.
    virtual math::Mat3 CalcWorldToLocalTransform() const;
    virtual void SetOuterPos(math::Vec2 pos);
    void SetOuterPos(float x, float y) { SetOuterPos(math::Vec2(x, y)); }
    virtual void SetInnerSize(math::Vec2 size);
    void SetInnerSize(float x, float y) { SetInnerSize(math::Vec2(x, y)); }
    void SetInnerSize(const math::Vec2u& size) { SetInnerSize(math::Vec2(size.x, size.y)); }
    virtual void SetMinSize(math::Vec2 size);
    /// Limits the inner size as it is now, not what it is set to later.
    virtual void SetMaxSize(math::Vec2 size);
    void SetOuterSize(math::Vec2 size);
    /// @param border  not null
    void SetBorder(const util::SharedPtr<Border>& border);
    void SetLayout(const LayoutPtr& layout);
    /// A list without spacing.
    void SetLayout(ListLayout::Flags flags);
    /// Lets the layout place the children anew.
    virtual void Reorganize();
    /// This one's position or size has changed, or its border.
    virtual void OnFormChange();
    virtual void OnChildFormChange();
    virtual void OnOwnerFormChange();

    const math::Vec2& GetOuterPos() const { return m_pos; }
    math::Vec2 GetInnerPos() const { return m_pos + GetInnerOffset(); }
    /// From the outer top left to the inner one.
    math::Vec2 GetInnerOffset() const;
    const math::Vec2& GetInnerSize() const { return m_size; }
    math::Vec2 GetOuterSize() const;
    const math::Vec2& GetMinSize() const { return m_minSize; }
    const math::Vec2& GetMaxSize() const { return m_maxSize; }
    /// In the owner's inner coordinates.
    math::BoundingBox GetOuterBB() const;
    math::BoundingBox GetOuterBBLocal() const;
    math::BoundingBox GetInnerBBLocal() const;
    const util::SharedPtr<Border>& GetBorder() const { return m_border; }
    const LayoutPtr& GetLayout() const { return m_layout; }

    /// Takes on the owner's size, at (0, 0), now and whenever that changes.
    void SetFillOwner(bool fill);
    /// The owner's layout leaves this one out.
    void SetFreePlacement(bool isFree) { m_isFreelyPlaced = isFree; }
    bool IsFreelyPlaced() const { return m_isFreelyPlaced; }
    /// Whether owner, children and callbacks hear of changes. Off while a layout moves the component.
    void SetFormNotifications(bool on) { m_formNotifications = on; }
    /// Called after each change of position, size or border of which others hear.
    void AddFormChangeCallback(const util::CallbackPtr& callback) { m_onForm.Add(callback); }

    /// Multiplied into the colour of this component and its children.
    void SetColor(const math::Vec4& color) { m_color = color; }
    const math::Vec4& GetColor() const { return m_color; }
    /// Added as z when the component is drawn, so that children stand in front of their owner.
    void SetDepth(float depth) { m_depth = depth; }

    // Coordinates of the whole GUI and inner ones.

    math::Vec2 GUIToLocal(math::Vec2 pos) const;
    math::Vec2 LocalToGUI(math::Vec2 pos) const;
    math::Vec2 GetMousePosLocal() const;

    // Mouse.

    /// Whether the mouse is in the outer box, and no component in front of this one has it.
    bool IsMouseOverOuter() const { return m_isMouseOver; }
    bool IsMouseOverInner() const;
    /// For the GUI, which knows.
    void SetMouseOverOuter(bool isOver);
    /// An override calls its base.
    virtual void OnMouseEnter();
    virtual void OnMouseLeave();
    /// Seconds, of the last enter or leave.
    double GetMouseChangeTime() const { return m_mouseChangeTime; }
    /// The mouse is never over this one nor over what is in it, but over what lies behind.
    void SetMouseTransparent(bool isTransparent);
    bool IsMouseTransparent() const { return m_isMouseTransparent; }

    /// Appears at the mouse when that has been over this component for a while.
    /// @param tooltip  null for none
    void SetTooltip(const ComponentPtr& tooltip);
    const ComponentPtr& GetTooltip() const { return m_tooltip; }

private:
    // A walk over the children as they are when it begins.
    class Round
    {
    public:
        explicit Round(const Component& component);
        ~Round();
        Round(const Round&) = delete;
        Round& operator=(const Round&) = delete;
        /// Valid until the next call; null at the end.
        Component* Next();

    private:
        const Component& m_component;
        size_t m_begin; // in the shared stack of all walks under way
        bool m_isUnderWay = false;
    };

    void SortChildren();
    void UpdateTooltip();
    void HideTooltip();
    void LeaveMouse();

    math::Vec2 m_pos;
    math::Vec2 m_size;
    math::Vec2 m_minSize;
    math::Vec2 m_maxSize;
    float m_depth = 0.01f;
    bool m_formNotifications = true;
    bool m_fillOwner = false;
    bool m_isFreelyPlaced = false;
    bool m_isMouseOver = false;
    bool m_isMouseTransparent = false;
    std::vector<ComponentPtr> m_children;
    util::WeakPtr<Component> m_ownerComponent;
    util::SharedPtr<Border> m_border; // never null
    LayoutPtr m_layout;               // may be null
    math::Vec4 m_color = math::Vec4(1, 1, 1, 1);
    ComponentPtr m_tooltip;         // may be null
    double m_mouseChangeTime;       // seconds
    util::CallbackSet m_onForm;     // form changes
    util::CallbackPtr m_onPriority; // the owner's registration here
};
}
