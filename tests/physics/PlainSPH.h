// The fluid in its plain form: a map of cells, a list of neighbors for each particle, sums along the lists.
// Slow and obvious. What SPH does on flat arrays is compared with it, bit by bit.
#pragma once

#include "math/Vector.h"
#include "physics/SPH.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace physics
{
struct PlainSPH
{
    struct Neighbor
    {
        size_t particle;
        float distance, dx, dy;
    };
    struct Drop
    {
        math::Vec2 pos, vel;
        std::vector<Neighbor> neighbors;
        float density = 0, pressure = 0;
        math::Vec2 surfaceForce, force;
    };
    using Cell = std::vector<size_t>;

    explicit PlainSPH(const ParticleList& particles)
        : sph(*SPH::GetInstancePtr())
    {
        for (const ParticlePtr& particle : particles)
        {
            Drop drop;
            drop.pos = particle->GetPos();
            drop.vel = particle->GetVel();
            drops.push_back(drop);
        }
    }

    static int Cellify(float x, float scale)
    {
        const float q = x * scale;
        if (!(q > -1e9f))
            return -1000000000;
        return q < 1e9f ? static_cast<int>(q) : 1000000000;
    }

    void FindNeighbors(float bucketSize)
    {
        const float h = sph.InfluenceDistance();
        const float scale = 1 / (bucketSize * h);
        std::map<std::pair<int, int>, Cell> cells; // column by column
        for (size_t i = 0; i < drops.size(); ++i)
        {
            drops[i].neighbors.assign(1, {i, 0, 0, 0});
            cells[{Cellify(drops[i].pos.x, scale), Cellify(drops[i].pos.y, scale)}].push_back(i);
        }
        const int offsets[5][2] = {{0, 0}, {0, 1}, {1, -1}, {1, 0}, {1, 1}};
        for (const auto& [at, cell] : cells)
            for (const auto& offset : offsets)
            {
                const auto other = cells.find({at.first + offset[0], at.second + offset[1]});
                if (other != cells.end())
                    MatchCells(cell, other->second, h * h);
            }
    }

    void MatchCells(const Cell& a, const Cell& b, float maxDistSq)
    {
        for (size_t i = 0; i < a.size(); ++i)
            for (size_t j = &a == &b ? i + 1 : 0; j < b.size(); ++j)
            {
                const float dx = drops[b[j]].pos.x - drops[a[i]].pos.x;
                const float dy = drops[b[j]].pos.y - drops[a[i]].pos.y;
                const float distSq = dx * dx + dy * dy;
                if (distSq < maxDistSq)
                {
                    const float d = std::sqrt(distSq);
                    drops[a[i]].neighbors.push_back({b[j], d, dx, dy});
                    drops[b[j]].neighbors.push_back({a[i], d, -dx, -dy});
                }
            }
    }

    void CalcForces()
    {
        const float h = sph.InfluenceDistance();
        const float mass = sph.m_radius * sph.m_radius * math::PIf * sph.m_density;
        const float h3 = h * h * h;
        const float kernel64PiH9Inv = 1 / (64 * math::PIf * (h3 * h3 * h3));
        const float kernelPiH6Inv = 1 / (math::PIf * (h3 * h3));
        const float soundSpeed = sph.m_soundSpeed;
        for (Drop& i : drops)
        {
            for (const Neighbor& n : i.neighbors)
            {
                const float t = h * h - n.distance * n.distance;
                i.density += 315 * (t * t * t) * kernel64PiH9Inv * mass;
            }
            i.pressure = soundSpeed * soundSpeed * (i.density - sph.m_density);
        }
        for (Drop& i : drops)
        {
            math::Vec2 pressure, tension, viscosity;
            for (const Neighbor& n : i.neighbors)
            {
                const Drop& j = drops[n.particle];
                const float t = h - n.distance;
                const math::Vec2 g = 45 * (t * t) * kernelPiH6Inv * math::Vec2(n.dx, n.dy);
                const float q = sph.m_specialPressure
                                    ? (i.pressure + j.pressure) / (2 * i.density * j.density)
                                    : i.pressure / (i.density * i.density) +
                                          j.pressure / (j.density * j.density);
                pressure += q * g;
                tension += g / j.density;
                viscosity += 45 * t * kernelPiH6Inv * (j.vel - i.vel) / (j.density * i.density);
            }
            i.surfaceForce = sph.m_surfaceTension * mass * tension;
            i.force = (i.surfaceForce - mass * sph.m_pressMultiplier * pressure +
                       sph.m_viscosity * mass * sph.m_viscMultiplier * viscosity) *
                      mass;
        }
    }

    SPH& sph;
    std::vector<Drop> drops;
};
}
