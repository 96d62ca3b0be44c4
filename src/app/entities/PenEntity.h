// A pen that rides on a geometry and leaves a trail.
#pragma once

#include "app/entities/PointEntity.h"
#include "script/Attributes.h"
#include "util/Callback.h"

#include <deque>

namespace physics
{
class Geom;
}

namespace app
{
class PenEntity;
using PenEntityPtr = util::SharedPtr<PenEntity>;

class PenEntity final : public PointEntity
{
public:
    // One step of the pen.
    struct TrailElement
    {
        double time; // simulated seconds
        math::Vec2 pos;
        math::Vec2
            side; // unit vector to the left of the way; (0, 0) while there is one element only
    };
    using Trail = std::deque<TrailElement>;

    /// @param size  world units
    explicit PenEntity(float size);
    ~PenEntity() override;

    const PenEntity* AsPenEntity() const override { return this; }

    /// A pen on the same geometry, with the same size, and in no scene. No trail; other attributes and
    /// the colour have their defaults.
    PenEntityPtr Clone() const;

    /// To what lies under the point of the world.
    void AttachAt(const math::Vec2& pos);
    /// @param geom   a pen without one is dead
    /// @param local  in the geometry's space
    void AttachTo(const util::SharedPtr<physics::Geom>& geom, const math::Vec2& local);
    const util::SharedPtr<physics::Geom>& GetGeom() const { return m_geom; }
    const math::Vec2& GetLocalPoint() const { return m_localPoint; }
    /// In the world.
    math::Vec2 GetPos() const;

    /// World units; how wide it writes, and how large it is drawn and picked.
    float GetSize() const { return m_size; }
    void SetSize(float size) { m_size = size; }
    /// From the oldest to the newest.
    const Trail& GetTrail() const { return m_trail; }
    void SetTrail(const Trail& trail) { m_trail = trail; }

    void Draw() const override;
    void AddToSimulation() override;
    void RemoveFromSimulation() override;
    bool IsAlive() const override;
    /// Nothing: a pen goes where its geometry goes.
    void Transform(const math::Mat2D& matrix) override;
    /// Always: the trail can be anywhere.
    bool IsInView(const math::BoundingBox& view) const override;

protected:
    void Check() const override;

private:
    void OnSimUpdate(float dt);
    math::BoundingCircle AsCircle() const override;
    void DrawTrail() const;
    /// @param setVertexData  called with the freshness (1: new, 0: faded), and whether it is the second
    ///                       one of an element, before each vertex
    template<typename F>
    void DrawRibbon(float width, F setVertexData) const;

    util::SharedPtr<physics::Geom> m_geom;
    math::Vec2 m_localPoint; // in the geometry's space
    Trail m_trail;
    double m_lastSampleTime;                            // simulated seconds
    util::SharedPtr<util::CallbackArg<float>> m_onStep; // while in the simulation
    script::AttribWrapper<float> m_size;                // world units
    script::AttribWrapper<float> m_fadeTime;            // simulated seconds
};
}
