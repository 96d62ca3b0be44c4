// An engine that runs a world. Quib and its peers are made by the functions below, each in its own file.
#pragma once

#include "step/World.h"

#include <memory>
#include <vector>

namespace bench
{
class Engine
{
public:
    virtual ~Engine() = default;

    virtual void Step() = 0;
    /// Centers of mass of the shapes that are still there, then of the particles.
    virtual std::vector<Vec2> GetPositions() const = 0;
    /// How many contact points the last step had.
    virtual size_t CountContacts() const = 0;
};
using EnginePtr = std::unique_ptr<Engine>;

EnginePtr MakeQuib(const World& world);
EnginePtr MakeBox2D(const World& world);
EnginePtr MakeChipmunk(const World& world);
}
