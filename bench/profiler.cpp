// What does a profiled place cost, while somebody listens and while nobody does?
#include "util/Profiler.h"
#include "util/Profiler2.h"
#include "util/ScopeProfiler.h"
#include "util/StaticProfilerData.h"

#include <benchmark/benchmark.h>

namespace
{
// Each switching takes effect in an Update.
class Listening
{
public:
    Listening(bool tree, bool flat) { Switch(tree, flat); }
    ~Listening() { Switch(false, false); }

private:
    static void Switch(bool tree, bool flat)
    {
        util::Profiler::GetInstancePtr()->SetActive(tree);
        util::Profiler::GetInstancePtr()->Update();
        util::Profiler2::GetInstancePtr()->SetActive(flat);
        util::Profiler2::GetInstancePtr()->Update(0);
    }
};

void Check(benchmark::State& state, bool isRight)
{
    if (!isRight)
        state.SkipWithError("the profiler did not count what it was to count");
}

// One of nine siblings, in their middle as it were: the search is half the way.
void Scope(benchmark::State& state)
{
    const bool tree = state.range(0) != 0, flat = state.range(1) != 0;
    const Listening listening(tree, flat);
    static const char names[4][2] = {"a", "b", "c", "d"};
    for (const char* name : names)
        const util::ScopeProfiler sibling(name);
    for (auto _ : state)
    {
        QUIB_PROFILE("Scope");
        benchmark::ClobberMemory();
    }
    const util::Profiler* profiler = util::Profiler::GetInstancePtr();
    Check(state, !tree || (profiler->GetRoot().GetChildCount() == 5 &&
                           profiler->GetOutput() == "No output generated yet."));
}
BENCHMARK(Scope)->ArgNames({"tree", "flat"})->Args({0, 0})->Args({1, 0})->Args({1, 1});

void Place(benchmark::State& state)
{
    const bool flat = state.range(0) != 0;
    const Listening listening(false, flat);
    for (auto _ : state)
    {
        QUIB_PROFILE_OFTEN("Place");
        benchmark::ClobberMemory();
    }
    Check(state, util::StaticProfilerData::GetFirst()->GetName() == "Place" &&
                     util::StaticProfilerData::GetFirst()->GetCalls() ==
                         (flat ? static_cast<unsigned>(state.iterations()) : 0));
}
BENCHMARK(Place)->ArgName("flat")->Arg(0)->Arg(1);
}

BENCHMARK_MAIN();
