// What hinges, welds and pens have in common: a click on something fastens one there.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class AttachTool : public Tool
{
public:
    ~AttachTool() override;

    /// The second click of a double click is taken, and makes nothing; unless what the first one made has
    /// left the scene.
    void OnClick(const input::ClickEvent& event) override;

protected:
    /// @param undoName  see Undoer::AddUndo
    explicit AttachTool(const char* undoName);

    /// What Make asks for, of a kind with two ends.
    template<typename Joint>
    static EntityPtr MakeJoint(const math::Vec2& pos, float size)
    {
        const util::SharedPtr<Joint> joint = QUIB_NEW Joint(size);
        const math::Vec2 ends[2] = {pos, pos};
        joint->AttachAt(ends);
        if (!joint->GetGeom(0))
            return nullptr;
        return joint;
    }

private:
    /// Fastened there, and not in the scene yet. Null when there is nothing that it could be fastened to:
    /// joints reach beyond their bodies.
    /// @param pos   in the world
    /// @param size  world units
    virtual EntityPtr Make(const math::Vec2& pos, float size) const = 0;
    bool IsSecondOfTwo(const math::Vec2& pos, double time) const;

    const char* m_undoName;
    util::WeakPtr<Entity> m_last;
    // Of the click that made it.
    double m_lastTime = 0; // seconds
    math::Vec2 m_lastPos;  // GUI units
};
}
