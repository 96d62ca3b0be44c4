// A rigid body: one or more geometries that move as one. The simulation holds it; each of its
// geometries points back and keeps it alive, until the body is removed or given other geometries.
#pragma once

#include "math/Mat2D.h"
#include "physics/AbstractBody.h"
#include "util/HashSet.h"

#include <vector>

namespace physics
{
class Geom;
using GeomPtr = util::SharedPtr<Geom>;
using GeomSet = util::HashSet<GeomPtr>;

class Body : public AbstractBody
{
public:
    // One attached geometry, and where it sits.
    struct BodyPart
    {
        /// @param geomToBody  geometry space to body space
        BodyPart(GeomPtr geom, math::TMat2D<float> geomToBody);
        BodyPart(const BodyPart& o);
        BodyPart& operator=(const BodyPart& o);
        ~BodyPart();

        GeomPtr geom;
        math::TMat2D<float> bodyToGeom;
        math::TMat2D<float> geomToBody;
    };

    Body();
    /// A body of its own: same state, new id, no geometries (a geometry has one body only).
    Body(const Body& o);
    ~Body() override;

    /// Brings pose and geometries to the present position and rotation.
    void ApplyPoseChange() override;
    /// Also when no geometry is left.
    bool IsBad() const override;

    /// Replaces all geometries and computes the mass properties from scratch: the body moves to their
    /// common center of mass, its rotation restarts at 0, its velocity stays. A geometry of another
    /// body is taken from it. One without positive mass, area and inertia is skipped with a warning.
    /// @throws BadCoderException  when this is the world body and the set lacks the world geometry, or
    ///                            when it takes that from the world body; when mass or inertia, here
    ///                            or of a body that loses geometries to this one, is too small to have
    ///                            an inverse. Nothing has changed then.
    void SetGeoms(const GeomSet& geoms);
    void SetGeom(GeomPtr geom);
    void AddGeom(GeomPtr geom);
    void AddGeoms(const GeomSet& geoms);
    /// Does nothing when the geometry is not attached.
    /// @throws BadCoderException  for the world geometry, unless this is the world body
    void RemoveGeom(GeomPtr geom);
    /// To be called when mass or shape of a geometry have changed.
    void OnGeomChange();

    // What SetGeoms computes from the geometries, and where the body has moved since. Kept aside and
    // brought back, it is the same to the bit: computed again it would be rounded again.
    struct Placement
    {
        math::Vec2 pos;
        float rot = 0; // radians
        float mass = 1;
        float inertia = 1;
        float area = 0;
        std::vector<math::TMat2D<float>> geomsToBody; // in the order of GetParts
    };
    Placement GetPlacement() const;
    /// Poses body and geometries. No force is left on the body; its velocity stays.
    /// @throws BadCoderException  when it is the placement of another number of geometries
    void SetPlacement(const Placement& placement);

    // While one lives, OnGeomChange does nothing on any body. For who changes many geometries and then
    // gives each body its geometries or its placement anew: a body of n geometries costs n, not n * n.
    class GeomChangeHold
    {
    public:
        GeomChangeHold() { ++s_holdCount; }
        ~GeomChangeHold() { --s_holdCount; }
        GeomChangeHold(const GeomChangeHold&) = delete;
        GeomChangeHold& operator=(const GeomChangeHold&) = delete;
    };

    const GeomSet& GetGeoms() const { return m_geoms; }
    /// In order of geometry id, which no sum over them may leave to addresses.
    const std::vector<BodyPart>& GetParts() const { return m_parts; }

    /// Body to world.
    const math::TMat2D<float>& GetPose() const { return m_pose; }
    /// World to body.
    const math::TMat2D<float>& GetPoseInv() const { return m_poseInv; }

private:
    static inline int s_holdCount = 0;

    struct NewParts;

    NewParts PrepareParts(const GeomSet& geoms) const;
    void TakeParts(const NewParts& parts);
    void DetachAll();
    bool TryAppendToWorld(const GeomPtr& geom);

    math::TMat2D<float> m_pose;
    math::TMat2D<float> m_poseInv;
    std::vector<BodyPart> m_parts;
    GeomSet m_geoms; // the same geometries as a set
};
using BodyPtr = util::SharedPtr<Body>;
using BodyList = std::vector<BodyPtr>;
}
