// The settings of the fluid, visible to scripts as "SPH".
#pragma once

#include "script/Attributes.h"
#include "script/Reflected.h"
#include "util/Singleton.h"

namespace physics
{
class SPH : public script::Reflected, public util::Singleton<SPH>
{
public:
    SPH();
    ~SPH() override;

    script::AttribWrapper<float> m_radius;         // particle radius
    script::AttribWrapper<float> m_influence;      // influence distance in radii
    script::AttribWrapper<bool> m_specialPressure; // the symmetric pressure term
    script::AttribWrapper<bool> m_velocitySmoothing;
    script::AttribWrapper<float> m_vaporizeTime; // seconds that a lonely droplet lives
    script::AttribWrapper<float> m_friction;     // against geometry
    script::AttribWrapper<float> m_restitution;  // against geometry
    script::AttribWrapper<float> m_soundSpeed;   // stiffness
    script::AttribWrapper<float> m_density;      // at rest
    script::AttribWrapper<float> m_viscosity;
    script::AttribWrapper<float> m_pressMultiplier;
    script::AttribWrapper<float> m_viscMultiplier;
    script::AttribWrapper<float> m_surfaceTension;
    script::AttribWrapper<float> m_jitter;     // random acceleration
    script::AttribWrapper<float> m_bucketSize; // hash cell size in influence distances
};
}
