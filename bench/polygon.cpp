// How long does it take to build one polygon, its maps included?

#include "math/FarthestPair.h"
#include "physics/Linesegment.h"
#include "physics/Polygon.h"
#include "physics/Simulation.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace
{
using math::Vec2;

// A concave outline: a wave around a circle.
math::Vec2List MakeOutline(int n)
{
    math::Vec2List points;
    for (int i = 0; i < n; ++i)
    {
        const float a = math::TwoPIf * i / n, r = 2 + 0.5f * std::sin(7 * a);
        points.push_back(Vec2(10 + r * std::cos(a), 5 + r * std::sin(a)));
    }
    return points;
}

physics::LinesegmentList MakeLines(int n)
{
    const math::Vec2List points = MakeOutline(n);
    physics::LinesegmentList lines;
    for (int i = 0; i < n; ++i)
        lines.emplace_back(points[i], points[(i + 1) % n]);
    return lines;
}

void Build(benchmark::State& state)
{
    const math::Vec2List points = MakeOutline(static_cast<int>(state.range(0)));
    physics::PolygonPtr polygon;
    for (auto _ : state)
        polygon = QUIB_NEW physics::Polygon(points);
    // The middle lies 1.5 to 2.5 below the surface, three points make a triangle.
    const float depth = -polygon->DistanceWorld(Vec2(10, 5));
    if (!(depth > 0.8f && depth < 2.5f))
        state.SkipWithError("the map is wrong");
}
BENCHMARK(Build)->Arg(3)->Arg(20)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

void Clone(benchmark::State& state)
{
    physics::PolygonPtr polygon = QUIB_NEW physics::Polygon(MakeOutline(100));
    for (auto _ : state)
        benchmark::DoNotOptimize(polygon->Clone());
}
BENCHMARK(Clone)->Unit(benchmark::kMicrosecond);

// The two parts that grow with the square of the number of points.
void SelfIntersection(benchmark::State& state)
{
    const physics::LinesegmentList lines = MakeLines(static_cast<int>(state.range(0)));
    for (auto _ : state)
        if (physics::AnyIntersect(lines))
            state.SkipWithError("no lines cross");
}
BENCHMARK(SelfIntersection)->Arg(100)->Arg(10000)->Unit(benchmark::kMicrosecond);

// The same by the exact test of every pair.
void SelfIntersectionPlain(benchmark::State& state)
{
    const physics::LinesegmentList lines = MakeLines(static_cast<int>(state.range(0)));
    for (auto _ : state)
        for (size_t i = 0; i < lines.size(); ++i)
            for (size_t j = i + 1; j < lines.size(); ++j)
                if (physics::Intersects(lines[i], lines[j], nullptr))
                    state.SkipWithError("no lines cross");
}
BENCHMARK(SelfIntersectionPlain)->Arg(100)->Arg(10000)->Unit(benchmark::kMicrosecond);

// What a stroke of that many points costs at the end of the drag: a wave without a crossing, or a scribble
// all over the screen.
void MarkCrossings(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const bool isScribble = state.range(1) != 0;
    physics::LinesegmentList lines = MakeLines(n);
    if (isScribble)
        for (int i = 0; i < n; ++i)
            lines[i].p1 = lines[(i + 1) % n].p0 =
                Vec2(10 * std::fmod(0.618034f * i, 1.0f), 10 * std::fmod(0.414214f * i, 1.0f));
    std::vector<bool> marks;
    for (auto _ : state)
        marks = physics::FindIntersecting(lines);
    if (marks[n / 2] != isScribble)
        state.SkipWithError("wrong marks");
}
BENCHMARK(MarkCrossings)
    ->Args({100, 0})
    ->Args({5000, 0})
    ->Args({5000, 1})
    ->Args({20000, 0})
    ->Args({20000, 1})
    ->Unit(benchmark::kMicrosecond);

void FarthestPair(benchmark::State& state)
{
    const math::Vec2List points = MakeOutline(static_cast<int>(state.range(0)));
    math::PointPair pair;
    for (auto _ : state)
        pair = math::FindFarthestPair(points.data(), points.size());
    for (const Vec2& a : points)
        for (const Vec2& b : points)
            if (DistanceSq(a, b) > pair.distSq)
                state.SkipWithError("not the farthest");
}
BENCHMARK(FarthestPair)->Arg(100)->Arg(10000)->Unit(benchmark::kMicrosecond);
}

int main(int argc, char** argv)
{
    physics::Simulation::GetInstancePtr();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
