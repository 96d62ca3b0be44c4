// Quib without a window: loads a scene, runs scripts, makes an exact number of steps and writes what
// came of it. For tests, benchmarks and batch experiments.
#pragma once

namespace app
{
/// The whole of quib-run. Needs no display.
/// @return  the exit code: 0, 1 when a named file can't be read or written, 2 for a bad command line
int RunHeadless(int argc, char** argv);
}
