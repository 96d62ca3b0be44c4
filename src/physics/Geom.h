// A shape with material properties that hangs on a body: the base of all geometries.
//
// Entities and bodies hold geometries by handle. Everything here speaks in world coordinates unless
// it says otherwise.
#pragma once

#include "math/BoundingBox.h"
#include "math/BoundingSphere.h"
#include "math/Mat2D.h"
#include "math/OBB2D.h"
#include "math/Vector.h"
#include "util/Hash.h"
#include "util/HashSet.h"
#include "util/Pointee.h"
#include "util/SharedPtr.h"

#include <cstdint>

namespace physics
{
class AbstractBody;
class Body;

// What the collider sorts geometries by. Other takes no part in its pair loops.
enum class GeomKind
{
    Polygon,
    Circle,
    Plane,
    Box,
    Other
};

class Geom : public util::Pointee
{
public:
    enum CollideSets : unsigned
    {
        COLLIDE_DEFAULT_GROUP = 1,
        COLLIDE_MASK = 0x1F, // the bits that count
        COLLIDE_SET_COUNT = 5,
        COLLIDE_ALL = 0xFFFFFFFF
    };

    /// Releases its reference on the body.
    ~Geom() override;

    /// Signed distance of p to the outline, negative inside.
    virtual float DistanceWorld(const math::Vec2& p) const = 0;
    /// The outward unit normal near p; (0, 0) where the shape has none to tell.
    virtual math::Vec2 NormalWorld(const math::Vec2& p) const = 0;
    virtual float Area() const = 0;
    /// The moment of inertia about the center per unit of mass.
    virtual float InertiaSansMass() const = 0;
    /// The point of the outline that is nearest to p.
    virtual math::Vec2 GetClosestEdge(math::Vec2 p) const = 0;
    virtual math::BoundingBox GetAABBWorld() const = 0;
    virtual math::OBB2D GetOBBWorld() const = 0;
    virtual math::BoundingCircle GetBCWorld() const = 0;
    /// Overrides call this one first.
    virtual void SetWorldPose(const math::Mat2D& pose);

    float Mass() const { return m_density * Area(); }
    float Inertia() const { return InertiaSansMass() * Mass(); }

    /// Serial number. The first geometry made, the world's, has 0.
    unsigned GetID() const { return m_id; }
    GeomKind GetKind() const { return m_kind; }

    /// Counts a reference on the new body and releases the one on the old body, which may delete it
    /// (but see BodyReference). Null takes the geometry off its body. Bodies call it, nobody else:
    /// it does not enter the geometry in the body's list.
    void SetBody(AbstractBody* body);
    util::SharedPtr<AbstractBody> GetBody() const;
    AbstractBody* GetBodyPtr() const { return m_body; }
    /// The same as a Body; null when it is another kind of body.
    util::SharedPtr<Body> GetBodyBody() const;
    Body* GetBodyBodyPtr() const;

    const math::Mat2D& GetPose() const { return m_pose; }
    const math::Mat2D& GetPoseInv() const { return m_poseInv; }
    /// World position of the geometry's origin, which is its center of mass.
    const math::Vec2& GetCenter() const { return m_center; }
    /// Moves the center and keeps the rotation.
    void SetPos(math::Vec2 pos);

    /// Mass per area.
    float GetDensity() const { return m_density; }
    /// The owning body's mass follows. When it throws, as Body::SetGeoms does, nothing has changed; and
    /// so with the operations that change the shape.
    void SetDensity(float density);
    float GetFriction() const { return m_friction; }
    void SetFriction(float friction) { m_friction = friction; }
    float GetRestitution() const { return m_restitution; }
    void SetRestitution(float restitution) { m_restitution = restitution; }
    /// Weight of this geometry in air friction.
    float GetAirFrictionMult() const { return m_airFrictionMult; }
    void SetAirFrictionMult(float mult) { m_airFrictionMult = mult; }
    bool GetWaterCollide() const { return m_waterCollide; }
    void SetWaterCollide(bool collide) { m_waterCollide = collide; }
    /// Bit mask of collision layers; only the bits of COLLIDE_MASK count.
    int GetCollideSet() const { return m_collideSet; }
    void SetCollideSet(int set) { m_collideSet = set; }

    /// Geometries this one never collides with. Looked up on the first geometry of a pair only, so
    /// that whoever parts a pair enters each in the other's set. Without a count: two that enter the
    /// same pair lose it with the first removal.
    const util::HashSet<Geom*>& GetNoCollide() const { return m_noCollide; }
    void AddNoCollide(Geom* other) { m_noCollide.insert(other); }
    void RemoveNoCollide(Geom* other) { m_noCollide.erase(other); }

    /// Tells the owning body, if it is a Body, that mass or shape changed.
    void OnGeomChange();

protected:
    // Whether a geometry keeps its body alive. One that its body owns must not.
    enum class BodyReference : uint8_t
    {
        Counted,
        Plain
    };

    /// Density, friction and restitution come from the simulation's attributes, so the simulation
    /// must exist, if only half built.
    explicit Geom(GeomKind kind, BodyReference bodyReference = BodyReference::Counted);

    /// For Clone: shape, pose and material, with a new id and no body. Deliberate: the air friction
    /// multiplier starts at 1 again and the no-collide set empty.
    Geom(const Geom& o);
    Geom& operator=(const Geom&) = delete;

    /// Density, friction, restitution, collide set and water collision. Deliberate: not the air
    /// friction multiplier and not the no-collide set.
    void CopyMaterial(const Geom& o);

    /// OnGeomChange for a change that is taken back when the body can't bear it.
    template<typename TakeBack>
    void OnGeomChange(TakeBack takeBack)
    {
        try
        {
            OnGeomChange();
        }
        catch (...)
        {
            takeBack();
            throw;
        }
    }

private:
    static inline unsigned s_idCounter = 0;

    unsigned m_id;
    GeomKind m_kind;
    BodyReference m_bodyReference;
    AbstractBody* m_body = nullptr; // one reference on it is counted by hand, when it is counted
    math::Mat2D m_poseInv;          // world to geometry
    math::Mat2D m_pose;             // geometry to world
    math::Vec2 m_center;            // world units
    float m_density;                // mass per area
    float m_friction;
    float m_restitution;
    float m_airFrictionMult = 1;
    util::HashSet<Geom*> m_noCollide;
    bool m_waterCollide = true;
    int m_collideSet = COLLIDE_DEFAULT_GROUP;
};

using GeomPtr = util::SharedPtr<Geom>;
}
