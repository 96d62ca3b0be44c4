// A place for a persistent structure that finds near pairs. Bodies have none: the collider tests all
// against all. So every operation is empty, and nothing depends on them.
#pragma once

namespace physics
{
class Geom;
class Particle;

class BroadPhase
{
public:
    void AddGeom(Geom*) {}
    void RemoveGeom(Geom*) {}
    void AddParticle(Particle*) {}
    void RemoveParticle(Particle*) {}
    void Update() {}
};
}
