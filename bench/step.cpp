// How long is a step? Quib beside Box2D 2.4 and Chipmunk 7, the same worlds in the same process.
//
// The worlds are those of step/World.cpp, which tells the settings. *Settled* is the median of steps 200
// to 399, *falling* that of steps 0 to 99, in CPU time of the thread; of three runs the best counts. A
// run whose world has not come out as it must has no time.

#include "Measure.h"
#include "step/Engine.h"
#include "step/Memory.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace
{
using namespace bench;

struct Window
{
    const char* name;
    int first, last; // steps, both included
};
const Window Falling = {"falling", 0, 99};
const Window Settled = {"settled", 200, 399};

struct EngineEntry
{
    const char* name;
    EnginePtr (*make)(const World& world);
};
const EngineEntry Engines[] = {
    {"quib", MakeQuib}, {"box2d", MakeBox2D}, {"chipmunk", MakeChipmunk}};

struct Result
{
    double ms = 0; // 0: not measured
    double contacts = 0;
};
// By world, window and engine.
std::map<std::string, std::map<std::string, std::map<std::string, Result>>> g_results;

std::string CheckResult(const World& world, const Engine& engine)
{
    const std::vector<Vec2> positions = engine.GetPositions();
    if (positions.size() != world.shapes.size() + world.particles.size())
        return "a shape is gone";
    float top = -INFINITY, bottom = INFINITY;
    for (const Vec2& p : positions)
    {
        if (!math::IsFinite(p))
            return "a shape is nowhere";
        top = std::max(top, p.y);
        bottom = std::min(bottom, p.y);
    }
    if (top < world.minTop)
        return "the highest shape is at " + std::to_string(top);
    if (bottom < world.minBottom)
        return "the lowest shape is at " + std::to_string(bottom);
    return "";
}

double Median(const std::vector<double>& all, const Window& window)
{
    std::vector<double> some(all.begin() + window.first, all.begin() + window.last + 1);
    std::nth_element(some.begin(), some.begin() + some.size() / 2, some.end());
    return some[some.size() / 2];
}

void MeasureSteps(benchmark::State& state, const WorldEntry& entry, const EngineEntry& engineEntry)
{
    const World world = entry.make();
    for (auto _ : state)
    {
        const EnginePtr engine = engineEntry.make(world);
        std::vector<double> ms, contacts;
        for (int step = 0; step <= Settled.last; ++step)
        {
            const double start = GetThreadSeconds();
            engine->Step();
            ms.push_back((GetThreadSeconds() - start) * 1e3);
            contacts.push_back(static_cast<double>(engine->CountContacts()));
        }
        const std::string fault = CheckResult(world, *engine);
        if (!fault.empty())
        {
            state.SkipWithError(fault.c_str());
            return;
        }
        state.SetIterationTime(Median(ms, Settled) * 1e-3);
        for (const Window& window : {Falling, Settled})
        {
            Result& best = g_results[entry.name][window.name][engineEntry.name];
            if (best.ms == 0 || Median(ms, window) < best.ms)
                best = {Median(ms, window), Median(contacts, window)};
        }
    }
}

void RegisterSteps(const WorldEntry& world, const EngineEntry& engine)
{
    const std::string name = std::string(world.name) + "/" + engine.name;
    benchmark::RegisterBenchmark(name.c_str(),
                                 [&](benchmark::State& s) { MeasureSteps(s, world, engine); })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(3)
        ->ReportAggregatesOnly()
        ->Unit(benchmark::kMillisecond);
}

// Of two engines that have found very different numbers of contacts, the time per contact is compared.
// A star tells.
std::string FormatRatio(const Result& a, const Result& b, bool haveSameWorld)
{
    if (a.ms == 0 || b.ms == 0)
        return "-";
    double ratio = a.ms / b.ms;
    const bool perContact = haveSameWorld && a.contacts > 0 && b.contacts > 0 &&
                            std::fabs(a.contacts - b.contacts) > b.contacts / 5;
    if (perContact)
        ratio *= b.contacts / a.contacts;
    char text[32];
    std::snprintf(text, sizeof(text), "%.3f%s", ratio, perContact ? "*" : " ");
    return text;
}

std::string FormatGoal(float goal)
{
    char text[32];
    std::snprintf(text, sizeof(text), "%.3f", goal);
    return goal > 0 ? text : "-";
}

void PrintTable(const Window& window)
{
    std::printf(
        "\n%s: ms per step, median of steps %d to %d, best of 3 runs\n"
        "(* ratio of ms per contact, as the numbers of contacts differ by more than a fifth;\n"
        "water is compared with Box2D's wall)\n",
        window.name, window.first, window.last);
    std::printf("%-12s %9s %9s %9s %10s %10s %7s %7s   %s\n", "world", "quib", "box2d", "chipmunk",
                "/box2d", "/chipmunk", "must", "aim", "contacts: quib, box2d, chipmunk");
    for (const WorldEntry& world : GetWorlds())
    {
        auto found = g_results.find(world.name);
        if (found == g_results.end())
            continue;
        auto& r = found->second[window.name];
        const bool isWater = world.against != nullptr;
        const Result peer = isWater ? g_results[world.against][window.name]["box2d"] : r["box2d"];
        const bool isSettled = std::strcmp(window.name, Settled.name) == 0;
        const float must = isSettled ? world.must : world.must > 0 && !isWater ? MustFalling : 0;
        std::printf("%-12s %9.3f %9.3f %9.3f %10s %10s %7s %7s   %.0f, %.0f, %.0f\n", world.name,
                    r["quib"].ms, r["box2d"].ms, r["chipmunk"].ms,
                    FormatRatio(r["quib"], peer, !isWater).c_str(),
                    FormatRatio(r["quib"], r["chipmunk"], true).c_str(), FormatGoal(must).c_str(),
                    FormatGoal(isSettled ? world.aim : 0).c_str(), r["quib"].contacts,
                    r["box2d"].contacts, r["chipmunk"].contacts);
    }
}
}

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    PrintMemory();
    for (const WorldEntry& world : GetWorlds())
        for (const EngineEntry& engine : Engines)
            if (!world.against || &engine == &Engines[0])
                RegisterSteps(world, engine);
    benchmark::RunSpecifiedBenchmarks();
    PrintTable(Settled);
    PrintTable(Falling);
    return 0;
}
