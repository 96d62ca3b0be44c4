// What does a drop of water cost? Time per particle and step, and memory, from 1,000 to 50,000 particles at
// the same density: a block without gravity that fills a closed box.
//
// bench_fluid [NUMBER...] measures other numbers of particles than those.
//
// Time is CPU time of the thread, the median of 100 steps after 100 others, the best of three runs. Memory is
// what the heap holds more after these steps than before there were any particles, in a process of its own.

#include "Measure.h"
#include "physics/Particle.h"
#include "physics/Plane.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace
{
using math::Vec2;

const float Spacing = 0.09f;

void AddWall(Vec2 point, Vec2 normal)
{
    const physics::BodyPtr body = QUIB_NEW physics::Body;
    body->SetGeom(QUIB_NEW physics::Plane(math::Plane2D::FromPointNormal(point, normal)));
    physics::Simulation::GetInstancePtr()->AddBody(body);
}

/// @return  the exit code
int Measure(size_t n)
{
    physics::Simulation& sim = *physics::Simulation::GetInstancePtr();
    sim.m_gravitySwitch = false;
    const int side = static_cast<int>(std::ceil(std::sqrt(double(n))));
    AddWall(Vec2(0, 0), Vec2(1, 0));
    AddWall(Vec2(0, 0), Vec2(0, 1));
    AddWall(Vec2(1, 1) * (side * Spacing), Vec2(-1, 0));
    AddWall(Vec2(1, 1) * (side * Spacing), Vec2(0, -1));
    sim.Step(true);
    double best = INFINITY;
    size_t heap = 0;
    for (int run = 0; run < 3; ++run)
    {
        const size_t before = bench::GetHeapBytes();
        for (size_t i = 0; i < n; ++i)
            sim.AddParticle(
                QUIB_NEW physics::Particle(Spacing * Vec2(i % side + 0.5f, float(i / side) + 0.5f),
                                           Vec2(0.1f * (i % 7), 0.1f * (i % 5))));
        std::vector<double> times;
        for (int step = 0; step < 200; ++step)
        {
            const double start = bench::GetThreadSeconds();
            sim.Step(true);
            times.push_back(bench::GetThreadSeconds() - start);
        }
        std::nth_element(times.begin() + 100, times.begin() + 150, times.end());
        best = std::min(best, times[150]);
        if (run == 0)
            heap = bench::GetHeapBytes() - before;
        if (sim.GetParticles().size() != n)
        {
            std::printf("%8zu  some are gone\n", n);
            return 1;
        }
        if (run < 2)
            sim.EraseWater();
    }
    size_t neighbors = 0;
    for (const physics::ParticlePtr& particle : sim.GetParticles())
        neighbors += particle->GetNeighborCount();
    std::printf("%8zu %10.3f %12.1f %12.2f %10.0f\n", n, best * 1e3, best * 1e9 / n,
                double(neighbors) / n, double(heap) / n);
    return 0;
}
}

int main(int argc, char** argv)
{
    std::vector<size_t> numbers;
    for (int i = 1; i < argc; ++i)
        if (const size_t n = std::strtoul(argv[i], nullptr, 10)) // bench/run hands on other options
            numbers.push_back(n);
    if (numbers.empty())
        numbers = {1000, 2000, 5000, 10000, 20000, 50000};
    std::printf("%8s %10s %12s %12s %10s\n", "number", "ms", "ns/particle", "neighbors",
                "bytes/particle");
    int exitCode = 0;
    for (size_t n : numbers)
    {
        std::fflush(stdout);
        const pid_t child = fork();
        if (child == 0)
        {
            const int code = Measure(n);
            std::fflush(stdout);
            _exit(code);
        }
        int status = 0;
        waitpid(child, &status, 0);
        exitCode |= status;
    }
    return exitCode != 0;
}
