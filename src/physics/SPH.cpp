#include "physics/SPH.h"

#include <utility>

namespace physics
{
struct SPH::Arrays
{
};

SPH::SPH()
    : Reflected("SPH")
    , m_radius(this, "radius", 0.05f)
    , m_influence(this, "influence", 2.0f)
    , m_specialPressure(this, "specialPressure", true)
    , m_velocitySmoothing(this, "velocitySmoothing", true)
    , m_vaporizeTime(this, "vaporizeTime", 5.0f)
    , m_friction(this, "friction", 0.01f)
    , m_restitution(this, "restitution", 0.0f)
    , m_soundSpeed(this, "soundSpeed", 20.0f)
    , m_density(this, "density", 1.0f)
    , m_viscosity(this, "viscosity", 0.5f)
    , m_pressMultiplier(this, "pressMultiplier", 1.0f)
    , m_viscMultiplier(this, "viscMultiplier", 1.0f)
    , m_surfaceTension(this, "surfaceTension", 0.0f)
    , m_jitter(this, "jitter", 0.0f)
    , m_bucketSize(this, "bucketSize", 2.0f)
{
}

SPH::~SPH() = default;
}
