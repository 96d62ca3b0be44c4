#include "gui/Layout.h"

#include "gui/Component.h"

#include <algorithm>

using math::Vec2;

namespace gui
{
namespace
{
// While a layout moves children, they do not tell the component that is being organized, which would
// organize itself again.
class QuietChildren
{
public:
    explicit QuietChildren(const std::vector<ComponentPtr>& children)
        : m_children(children)
    {
        Set(false);
    }
    ~QuietChildren() { Set(true); }
    QuietChildren(const QuietChildren&) = delete;
    QuietChildren& operator=(const QuietChildren&) = delete;

private:
    void Set(bool on)
    {
        for (const ComponentPtr& child : m_children)
            child->SetFormNotifications(on);
    }

    const std::vector<ComponentPtr>& m_children;
};
}

ListLayout::ListLayout(int flags, float spacing)
    : m_flags(flags)
    , m_spacing(spacing)
{
}

void ListLayout::Organize(Component& component, const std::vector<ComponentPtr>& children)
{
    if (children.empty())
    {
        component.SetInnerSize(Vec2(0, 0));
        return;
    }
    const int along = m_flags & Vertical ? 1 : 0, across = 1 - along;
    math::BoundingBox box;
    {
        QuietChildren quiet(children);
        Vec2 pos;
        for (const ComponentPtr& child : children)
        {
            Vec2 maxSize = child->GetMaxSize();
            maxSize[across] = std::min(maxSize[across], component.GetMaxSize()[across]);
            child->SetMaxSize(maxSize);
            child->SetOuterPos(pos);
            pos[along] += child->GetOuterSize()[along] + m_spacing;
            box.Include(child->GetOuterBB());
        }
        if (m_flags & Stretch)
            for (const ComponentPtr& child : children)
            {
                Vec2 size = child->GetOuterSize();
                size[across] = box.GetSize()[across];
                child->SetOuterSize(size);
            }
        if (m_flags & AlignFar)
            for (const ComponentPtr& child : children)
            {
                Vec2 place = child->GetOuterPos();
                place[across] = box.GetMax()[across] - child->GetOuterSize()[across];
                child->SetOuterPos(place);
            }
    }
    // Deliberate: a list grows with its children and does not shrink with them. What a panel shows may
    // change at every frame, and its edges must not dance.
    if (box.IsFinite())
        component.SetInnerSize(Vec2::Max(component.GetInnerSize(), box.GetSize()));
}

BorderLayout::BorderLayout(int axis)
    : m_axis(axis)
{
    CODE_ASSERT(axis == 0 || axis == 1);
}

void BorderLayout::Organize(Component& component, const std::vector<ComponentPtr>& children)
{
    if (children.empty())
        return;
    const int along = m_axis, across = 1 - m_axis;
    Vec2 needed;
    {
        QuietChildren quiet(children);
        for (const ComponentPtr& child : children)
        {
            const Vec2 size = child->GetOuterSize();
            needed[along] += size[along];
            needed[across] = std::max(needed[across], size[across]);
        }
        needed[along] = std::max(needed[along], component.GetInnerSize()[along]);
        children.front()->SetOuterPos(Vec2(0, 0));
        Vec2 pos;
        pos[along] = needed[along];
        for (size_t i = children.size(); i-- > 1;)
        {
            pos[along] -= children[i]->GetOuterSize()[along];
            children[i]->SetOuterPos(pos);
        }
    }
    // A size that is no number would be another one each time.
    if (IsFinite(needed))
        component.SetInnerSize(Vec2::Max(component.GetInnerSize(), needed));
}
}
