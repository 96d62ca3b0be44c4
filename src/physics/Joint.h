// A connection of two geometries by forces: the base of springs. What holds them together as a hard
// constraint is a Hinge.
//
// The simulation keeps those that are entered; it removes one that is no longer good. The bodies are
// looked up through the geometries at every use: geometries change bodies when they are welded.
#pragma once

#include "util/Pointee.h"
#include "util/SharedPtr.h"

#include <cstdint>

namespace physics
{
class Body;
class Geom;
using BodyPtr = util::SharedPtr<Body>;
using GeomPtr = util::SharedPtr<Geom>;

class Joint : public util::Pointee
{
public:
    /// @throws BadCoderException  when a geometry is null
    Joint(GeomPtr g0, GeomPtr g1);
    ~Joint() override;

    /// Called when the joint enters the simulation.
    virtual void Activate() {}
    /// Called before it leaves.
    virtual void Deactivate() {}
    /// Called once per step, after the forces on bodies and particles.
    virtual void ApplyForce() {}
    /// False when the ends are one geometry or on one body, or a body is not in the simulation.
    virtual bool IsGood() const;

    /// @param i  0 or 1
    const GeomPtr& GetGeom(int i) const { return m_geoms[i]; }
    /// @param out  two bodies; null where a geometry has none
    void GetBodies(BodyPtr* out) const;

    /// Counted up over all joints of the process.
    uint64_t GetCreationNumber() const { return m_creationNumber; }

protected:
    GeomPtr m_geoms[2];

private:
    uint64_t m_creationNumber;

    static inline uint64_t s_creationCounter = 0;
};
using JointPtr = util::SharedPtr<Joint>;
}
