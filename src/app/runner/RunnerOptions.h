// The command line of quib-run.
#pragma once

#include <string>
#include <vector>

namespace app
{
// One -e or -f, in the order of the command line.
struct ScriptSource
{
    bool isFile;
    std::string text; // the code, or the name of the file
};

struct RunnerOptions
{
    std::string scene;
    std::string workDir;
    std::vector<ScriptSource> scripts;
    bool hasSteps = false;
    long steps = 0;
    bool hasSeconds = false;
    double seconds = 0;
    std::string save, saveConfig, csv, contactsCsv, waterCsv, times;
    long every = 1;
    bool stats = false;
    bool isQuiet = false;
};

/// Prints what --help and --version ask for.
/// @return  false when that was all there is to do
/// @throws RunFailure  for a bad command line
bool ReadCommandLine(int argc, char** argv, RunnerOptions& options);
}
