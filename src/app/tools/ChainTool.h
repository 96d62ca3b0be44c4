// Draws ropes: circles that are joined by hinges and laid out behind the mouse. Its links are part of the
// scene as soon as they are laid, and all of them are one step of undo.
#pragma once

#include "app/tools/Tool.h"

namespace physics
{
class Geom;
using GeomPtr = util::SharedPtr<Geom>;
}

namespace app
{
class Chain;
class HingeEntity;

class ChainTool final : public Tool
{
public:
    /// A rope grows no longer than that, which a single jump of the mouse takes 0.25 s for. Only a drag
    /// that goes on under another zoom reaches so far.
    static constexpr int MaxLinks = 10000;

    ChainTool();
    ~ChainTool() override;

    void OnDragBegin(const input::DragEvent& event) override;
    void OnDrag(const input::DragEvent& event) override;
    void OnDragEnd(const input::DragEvent& event) override;
    void Draw() const override;
    /// What has been laid leaves the scene.
    bool Disband() override;

private:
    /// Lays links towards the point, as long as a whole one has room.
    void AppendChain(const math::Vec2& point);
    void AppendLink(const math::Vec2& dir, float radius, const physics::GeomPtr& under);
    /// The last hinge holds whatever lies there, or goes.
    void FinishEnd(const math::Vec2& pos);
    /// Gives up what has left the scene since the last event.
    void CheckEnd();
    /// Of the rope, in the world. It moves with what it is on.
    math::Vec2 GetLastPoint() const;
    void SetEnd(const physics::GeomPtr& geom, const math::Vec2& worldPoint);
    /// The topmost that is not the last link.
    physics::GeomPtr FindGeomAt(const math::Vec2& pos) const;
    /// By the last hinge, or a new one when there is none.
    /// @param local  in the geometry's space
    /// @param size   of a new one
    void FastenEnd(const physics::GeomPtr& geom, const math::Vec2& local, float size);
    void Add(const EntityPtr& entity);

    physics::GeomPtr m_firstGeom;
    // Where the next link begins: on the last one, or on the first geometry.
    physics::GeomPtr m_endGeom;
    math::Vec2 m_endLocal; // in the geometry's space
    bool m_isEndOnLink = false;
    util::SharedPtr<HingeEntity>
        m_lastHinge;                // holds the end for the time being; null before a link
    SnapshotPtr m_before;           // null before the first link
    util::SharedPtr<Chain> m_chain; // null when not in use
    math::Vec4 m_linkColor;
    math::Vec4 m_hingeColor;
    int m_linkCount = 0;
};
}
