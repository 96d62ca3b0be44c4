// How long does it take to find the contacts of one step? Four worlds, everything touching its
// neighbours a little; and for comparison the plain loops, that send every pair to its exact test.

#include "../tests/physics/PlainCollider.h"
#include "physics/Collider.h"
#include "physics/Contact.h"
#include "physics/ContactPool.h"
#include "physics/Simulation.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace
{
using namespace physics;
using math::Vec2;

template<typename T>
void Attach(BodyList& bodies, util::SharedPtr<T> geom)
{
    BodyPtr body = QUIB_NEW Body;
    body->SetGeom(geom);
    bodies.push_back(body);
}

void AddFloor(BodyList& bodies)
{
    PlanePtr plane = QUIB_NEW Plane(math::Plane2D(Vec2(0, 1), 0));
    Attach(bodies, plane);
}

BodyList MakePyramid()
{
    BodyList bodies;
    AddFloor(bodies);
    for (int row = 0; row < 40; ++row)
        for (int i = 0; i < 40 - row; ++i)
        {
            BoxPtr box = QUIB_NEW Box(Vec2(1, 1),
                                      Vec2(1.1f * (i - 0.5f * (39 - row)), 0.999f * row + 0.499f));
            Attach(bodies, box);
        }
    return bodies;
}

BodyList MakeWall()
{
    BodyList bodies;
    AddFloor(bodies);
    for (int row = 0; row < 25; ++row)
        for (int i = 0; i < 40; ++i)
        {
            BoxPtr box = QUIB_NEW Box(Vec2(1, 0.5f),
                                      Vec2(1.02f * i + 0.51f * (row % 2), 0.499f * row + 0.249f));
            Attach(bodies, box);
        }
    return bodies;
}

BodyList MakeCircles()
{
    BodyList bodies;
    AddFloor(bodies);
    for (int row = 0; row < 50; ++row)
        for (int i = 0; i < 40; ++i)
        {
            CirclePtr circle =
                QUIB_NEW Circle(Vec2(i + 0.5f * (row % 2), 0.865f * row + 0.499f), 0.5f);
            Attach(bodies, circle);
        }
    return bodies;
}

// 300 polygons, every third of them an L.
BodyList MakeRubble()
{
    BodyList bodies;
    AddFloor(bodies);
    for (int row = 0; row < 15; ++row)
        for (int i = 0; i < 20; ++i)
        {
            math::Vec2List points;
            if (i % 3 == 0)
                for (const Vec2& v : {Vec2(-0.5f, -0.5f), Vec2(0.5f, -0.5f), Vec2(0.5f, 0),
                                      Vec2(0, 0), Vec2(0, 0.5f), Vec2(-0.5f, 0.5f)})
                    points.push_back(v);
            else
                for (int k = 0; k < 7; ++k)
                    points.push_back(0.55f * Vec2(std::cos(0.9f * k), std::sin(0.9f * k)));
            for (Vec2& v : points)
                v += Vec2(0.97f * i, 0.97f * row + 0.5f);
            PolygonPtr polygon = QUIB_NEW Polygon(points);
            Attach(bodies, polygon);
        }
    return bodies;
}

size_t CountPlain(const BodyList& bodies)
{
    PlainCollider plain;
    plain.Collide(bodies, ParticleList());
    return plain.found.size();
}

void Fast(benchmark::State& state, BodyList (*make)())
{
    const BodyList bodies = make();
    ContactPool pool;
    util::VectorPOD<Contact*> found;
    for (auto _ : state)
    {
        pool.Reclaim();
        found.clear();
        Collider collider;
        collider.AssignBodies(bodies, ParticleList());
        collider.Collide(pool, found);
    }
    if (found.size() != CountPlain(bodies) || found.empty())
        state.SkipWithError("wrong contacts");
    state.counters["contacts"] = static_cast<double>(found.size());
    for (const BodyPtr& body : bodies)
        body->SetGeoms(GeomSet());
}

void Assign(benchmark::State& state, BodyList (*make)())
{
    const BodyList bodies = make();
    for (auto _ : state)
    {
        Collider collider;
        collider.AssignBodies(bodies, ParticleList());
    }
    for (const BodyPtr& body : bodies)
        body->SetGeoms(GeomSet());
}

void Plain(benchmark::State& state, BodyList (*make)())
{
    const BodyList bodies = make();
    for (auto _ : state)
        benchmark::DoNotOptimize(CountPlain(bodies));
    for (const BodyPtr& body : bodies)
        body->SetGeoms(GeomSet());
}

BENCHMARK_CAPTURE(Fast, pyramid, MakePyramid)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Fast, wall, MakeWall)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Fast, circles, MakeCircles)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Fast, rubble, MakeRubble)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Assign, pyramid, MakePyramid)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Assign, rubble, MakeRubble)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Plain, pyramid, MakePyramid)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Plain, wall, MakeWall)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Plain, circles, MakeCircles)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Plain, rubble, MakeRubble)->Unit(benchmark::kMicrosecond);
}

int main(int argc, char** argv)
{
    Simulation::GetInstancePtr();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
