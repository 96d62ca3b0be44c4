// A drop of water: the light kind of body that the fluid is made of.
//
// The simulation holds it by handle, among its particles and not among its bodies. It is integrated as a
// body is, touches geometry through contacts as a tiny circle, and leaves with the same flush. What
// particles do to each other is SPH's.
#pragma once

#include "physics/AbstractBody.h"
#include "physics/Circle.h"
#include "util/SmallBlocks.h"

#include <cstdint>
#include <vector>

namespace physics
{
class Particle final : public AbstractBody
{
public:
    class ParticleGeom;

    // Another particle within the influence distance, or the particle itself.
    struct Neighbor
    {
        Particle* particle;
        float distance; // world units
        float dx, dy;   // from the particle whose neighbor it is
    };

    /// With the attributes that SPH has now.
    Particle(math::Vec2 pos, math::Vec2 vel);
    ~Particle() override;
    Particle(const Particle&) = delete;

    /// Particles that are made in a row lie in a row.
    static void* operator new(size_t) { return util::AllocSmallBlock(BlockSize); }
    static void operator delete(void* block) { util::FreeSmallBlock(block, BlockSize); }

    /// Area and mass follow. Deliberate: the inertia is the mass. A particle turns freely, and nothing
    /// reads its rotation.
    /// @param density  mass per area
    void SetAttribs(float radius, float density, float friction, float restitution);

    /// Mass per area, of the last SPH::CalcForces.
    float GetDensity() const { return m_density; }
    /// Of the last SPH::CalcForces.
    float GetPressure() const { return m_pressure; }
    /// Force of the surface tension, of the last SPH::CalcForces.
    const math::Vec2& GetSurfaceForce() const { return m_surfaceForce; }
    /// Of the last SPH::Update, itself as the first entry. For inspection: each call walks all particles of
    /// the fluid. The pointers hold for as long as no particle goes.
    std::vector<Neighbor> GetNeighbors() const;
    /// Their number, itself included.
    size_t GetNeighborCount() const { return m_neighborCount; }
    /// Seconds of loneliness.
    float GetAge() const { return m_age; }
    void SetAge(float age) { m_age = age; }
    /// By which contacts reach the particle; friction and restitution come from it. Deliberate: it stays
    /// where it was made, at the origin. Contacts bring their position along.
    ParticleGeom* GetGeom() const { return m_geom.get(); }

    /// The line of the fluid's own data too.
    void Prefetch() const
    {
        AbstractBody::Prefetch();
        __builtin_prefetch(&m_density);
    }

private:
    friend class SPH;

    static const size_t BlockSize = 192; // whole cache lines

    float m_density = 0;
    float m_pressure = 0;
    math::Vec2 m_surfaceForce;
    float m_age = 0;
    uint32_t m_neighborCount = 0;
    uint32_t m_place = ~0u;        // among the particles of the last update
    uint32_t m_attribsVersion = 0; // which attributes of SPH it has; 0 is none of them
    util::SharedPtr<ParticleGeom> m_geom;
};
using ParticlePtr = util::SharedPtr<Particle>;
using ParticleList = std::vector<ParticlePtr>;

// The geometry of a particle. It hangs on no Body, and its kind keeps it out of every list of geometries.
// Unlike other geometries it does not keep its body alive: that one owns it.
class Particle::ParticleGeom final : public Circular
{
public:
    ParticleGeom(Particle* particle, float radius);
    ~ParticleGeom() override;
};
}
