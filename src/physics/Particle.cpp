#include "physics/Particle.h"

#include "physics/SPH.h"

namespace physics
{
using math::Vec2;

static_assert(sizeof(Particle) <= 192, "a particle is three cache lines");

Particle::Particle(Vec2 pos, Vec2 vel)
{
    const SPH& sph = *SPH::GetInstancePtr();
    m_hasPose = false;
    m_pos = pos;
    m_vel = vel;
    m_geom = QUIB_NEW ParticleGeom(this, sph.m_radius);
    SetAttribs(sph.m_radius, sph.m_density, sph.m_friction, sph.m_restitution);
}

Particle::~Particle()
{
    // Whoever else holds the geometry finds it without a body.
    m_geom->SetBody(nullptr);
}

void Particle::SetAttribs(float radius, float density, float friction, float restitution)
{
    m_attribsVersion = 0;
    m_area = radius * radius * math::PIf;
    m_mass = m_inertia = m_area * density;
    m_massInv = m_inertiaInv = 1 / m_mass;
    m_geom->SetFriction(friction);
    m_geom->SetRestitution(restitution);
}

std::vector<Particle::Neighbor> Particle::GetNeighbors() const
{
    return SPH::GetInstancePtr()->GetNeighbors(*this);
}

Particle::ParticleGeom::ParticleGeom(Particle* particle, float radius)
    : Circular(GeomKind::Other, radius, BodyReference::Plain)
{
    SetBody(particle);
}

Particle::ParticleGeom::~ParticleGeom() = default;
}
