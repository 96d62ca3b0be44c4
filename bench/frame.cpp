// How long does a frame take, and where does the time go?
//
// The whole program runs, at 1024x768: window, events, scripts, GUI, picture. Each measurement is a process of
// its own. Where there is no DISPLAY an Xvfb is started, in which Mesa draws with the processor.
//
//   <scene>/shaders       milliseconds per frame, wall clock, median of 100 frames; the stages are those of 100
//   <scene>/plain         others, in which the driver has to finish with each. "plain" is without shaders
//   <scene>/shaders/own   CPU time of Quib's thread with the calls of OpenGL replaced by nothing
//   <scene>/plain/own
//   .../calls             what is called then, and how much of it sets what is set already: not a time
//
// bench_frame --benchmark_filter=water ... measures some of them.

#include "frame/Frames.h"
#include "frame/Scenes.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <set>
#include <vector>

namespace
{
using namespace bench;

struct Case
{
    const FrameScene* scene;
    FrameOptions options;
    FrameResult result;
    bool isMeasured = false;
};
std::vector<Case> g_cases;

std::string GetName(const Case& c)
{
    return std::string(c.scene->name) + (c.options.shaders ? "/shaders" : "/plain") +
           (c.options.mode == GLMode::Nothing    ? "/own"
            : c.options.mode == GLMode::Counting ? "/calls"
                                                 : "") +
           (c.options.mouseOver ? "/mouse" : "");
}

void Measure(benchmark::State& state, Case& c)
{
    for (auto _ : state)
    {
        FrameResult result;
        std::string fault = MeasureFrames(*c.scene, c.options, result);
        // The box that holds joints and pens is one more.
        const double count =
            c.scene->item && *c.scene->item == 'p' ? result.particles : result.entities;
        if (fault.empty() &&
            (count < double(c.scene->items) || count > double(c.scene->items) + 100))
            fault = "there are " + std::to_string(count);
        if (!fault.empty())
        {
            state.SkipWithError(fault.c_str());
            return;
        }
        state.SetIterationTime(result.ms * 1e-3);
        if (!c.isMeasured || result.ms < c.result.ms)
            c.result = result;
        c.isMeasured = true;
    }
}

void PrintFrames(bool shaders)
{
    const char* const stages[] = {"GUI::Update",        "Culling", "DrawMetaTex", "Texture::Copy",
                                  "Background::DrawBG", "Water",   "Entities",    "GUI::Draw",
                                  "SDL_GL_SwapBuffers"};
    std::printf(
        "\nms per frame in the machine's driver, %s shaders; GUI::Update holds the "
        "simulation, GUI::Draw\n"
        "all of the picture; cpu is that of all threads, the driver's included\n%-14s %8s %8s %8s",
        shaders ? "with" : "without", "scene", "frame", "best", "cpu");
    for (const char* stage : stages)
        std::printf(" %18s", stage);
    std::printf("\n");
    for (const Case& c : g_cases)
        if (c.isMeasured && c.options.mode == GLMode::Real && c.options.shaders == shaders)
        {
            std::printf("%-14s %8.2f %8.2f %8.2f", c.scene->name, c.result.ms, c.result.best,
                        c.result.cpu);
            for (const char* stage : stages)
            {
                const auto found = c.result.stages.find(stage);
                std::printf(" %18.3f", found == c.result.stages.end() ? 0 : found->second);
            }
            std::printf("\n");
        }
}

double GetEmpty(const FrameOptions& options)
{
    for (const Case& c : g_cases)
        if (c.isMeasured && !c.scene->items && !c.scene->isRunning &&
            c.options.mode == options.mode && c.options.shaders == options.shaders)
            return c.result.ms;
    return 0;
}

void PrintOwnTimes()
{
    std::printf("\nQuib's own CPU time, without a driver; per item: above that of the empty scene\n"
                "%-28s %12s %14s %10s %12s\n",
                "scene", "us/frame", "us/item", "at most", "allocations");
    for (const Case& c : g_cases)
        if (c.isMeasured && c.options.mode == GLMode::Nothing)
        {
            std::printf("%-28s %12.1f", GetName(c).c_str(), c.result.ms * 1e3);
            if (c.scene->items)
                std::printf(" %14.3f %10s",
                            (c.result.ms - GetEmpty(c.options)) * 1e3 / double(c.scene->items),
                            *c.scene->item == 'p' ? "0.3" : "1.5");
            else
                std::printf(" %14s %10s", "-", "-");
            std::printf(" %12.0f\n", c.result.allocations);
        }
}

void PrintCalls()
{
    for (const Case& c : g_cases)
        if (c.isMeasured && c.options.mode == GLMode::Counting)
        {
            double calls = 0, vain = 0;
            for (const auto& [name, n] : c.result.calls)
                calls += n;
            for (const auto& [name, n] : c.result.vain)
                vain += n;
            const double items = c.scene->items ? double(c.scene->items) : 1;
            std::printf(
                "\n%s: %.0f calls a frame, %.0f of them in vain; per item %.2f, %.2f in vain\n",
                GetName(c).c_str(), calls, vain, calls / items, vain / items);
            for (const auto& [name, n] : c.result.vain)
                if (n > 0)
                    std::printf("  %-28s %8.0f of %.0f\n", name.c_str(), n,
                                c.result.calls.at(name));
        }
}
}

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    for (GLMode mode : {GLMode::Real, GLMode::Nothing, GLMode::Counting})
        for (bool shaders : {true, false})
            for (const FrameScene& scene : GetFrameScenes())
                g_cases.push_back({&scene, {mode, shaders, false}, {}});
    for (const FrameScene& scene : GetFrameScenes())
        g_cases.push_back({&scene, {GLMode::Nothing, true, true}, {}});
    for (Case& c : g_cases)
        benchmark::RegisterBenchmark(GetName(c).c_str(),
                                     [&c](benchmark::State& s) { Measure(s, c); })
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    benchmark::RunSpecifiedBenchmarks();
    PrintFrames(true);
    PrintFrames(false);
    PrintOwnTimes();
    PrintCalls();
    return 0;
}
