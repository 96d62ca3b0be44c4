#include "step/Memory.h"

#include "Measure.h"
#include "step/Engine.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>

namespace bench
{
namespace
{
const int Count = 4000;

// Side by side on the ground, if there is one.
World MakeRow(bool hasGround, Shape::Kind kind)
{
    World world = {};
    if (hasGround)
        world.planes.push_back(math::Plane2D(Vec2(0, 1), 0));
    for (int i = 0; i < Count; ++i)
    {
        Shape shape{kind, Vec2(2.0f * i, 0.499f), Vec2(1, 1)};
        if (kind == Shape::Polygon)
            for (int k = 0; k < 8; ++k)
                shape.points.push_back(
                    0.5f * Vec2(std::cos(math::TwoPIf * k / 8), std::sin(math::TwoPIf * k / 8)));
        world.shapes.push_back(shape);
    }
    return world;
}

World MakePool()
{
    World world = {};
    for (int i = 0; i < Count; ++i)
        world.particles.push_back(Vec2(0.09f * (i % 100), 0.09f * (i / 100)));
    return world;
}

// While the world runs.
double CountBytesWith(const World& world)
{
    const EnginePtr engine = MakeQuib(world);
    for (int step = 0; step < 20; ++step)
        engine->Step();
    return static_cast<double>(GetHeapBytes());
}

// That the world has added to what there was, for each of its things.
double MeasureBytes(const World& world)
{
    const double before = static_cast<double>(GetHeapBytes());
    return (CountBytesWith(world) - before) / Count;
}

// In a process of its own, which has made nothing before.
template<typename Measure>
void Print(const char* what, Measure measure)
{
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0)
    {
        MakeQuib(World()); // what there is of it in any case
        std::printf("  %-36s %8.0f\n", what, measure());
        std::fflush(stdout);
        _exit(0);
    }
    waitpid(child, nullptr, 0);
}
}

void PrintMemory()
{
    std::printf("\nMemory of Quib in bytes, %d of each, lists of the step included\n", Count);
    Print("box at rest, with its two contacts",
          [] { return MeasureBytes(MakeRow(true, Shape::Box)); });
    Print("box that touches nothing", [] { return MeasureBytes(MakeRow(false, Shape::Box)); });
    Print("contact",
          []
          {
              // The second world takes the places of the first.
              const double without = CountBytesWith(MakeRow(false, Shape::Box));
              return (CountBytesWith(MakeRow(true, Shape::Box)) - without) / (2 * Count);
          });
    Print("polygon with eight corners",
          [] { return MeasureBytes(MakeRow(false, Shape::Polygon)); });
    Print("particle of water", [] { return MeasureBytes(MakePool()); });
}
}
