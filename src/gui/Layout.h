// Layouts place the children of a component and make it as large as they need it. A layout has no
// memory of whom it has served: any number of components may share one.
#pragma once

#include "util/SharedPtr.h"

#include <vector>

namespace gui
{
class Component;
using ComponentPtr = util::SharedPtr<Component>;

class Layout : public util::Pointee
{
public:
    /// @param children  those of the component that are placed by its layout, in their order
    virtual void Organize(Component& component, const std::vector<ComponentPtr>& children) = 0;
};
using LayoutPtr = util::SharedPtr<Layout>;

// One after the other. The component grows with its children, and never shrinks by itself, but for one
// that has none (left): its size is (0, 0).
class ListLayout final : public Layout
{
public:
    enum Flags
    {
        Horizontal = 0,
        Vertical = 1,
        Stretch = 2, // all children become as large across as the largest of them
        AlignFar = 4 // children end at the far side across: the right, or the bottom
    };

    /// @param flags    of Flags, combined by |
    /// @param spacing  GUI units between two children
    explicit ListLayout(int flags, float spacing = 0);

    void Organize(Component& component, const std::vector<ComponentPtr>& children) override;

private:
    int m_flags;
    float m_spacing; // GUI units
};

inline ListLayout::Flags operator|(ListLayout::Flags a, ListLayout::Flags b)
{
    return static_cast<ListLayout::Flags>(int(a) | int(b));
}

// A row whose first child stands at its start, and whose others are packed against its far end.
class BorderLayout final : public Layout
{
public:
    /// @param axis  along which the row runs: 0 for x, 1 for y
    explicit BorderLayout(int axis);

    void Organize(Component& component, const std::vector<ComponentPtr>& children) override;

private:
    int m_axis;
};
}
