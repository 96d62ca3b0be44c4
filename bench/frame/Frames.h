// Runs the program for some frames, in a process of its own.
#pragma once

#include "frame/GL.h"

#include <map>
#include <string>

namespace bench
{
struct FrameScene;

struct FrameOptions
{
    GLMode mode = GLMode::Real;
    bool shaders = true;
    bool mouseOver = false; // the middle of the picture; else the mouse is outside
};

struct FrameResult
{
    double ms = 0; // per frame: of the wall's clock with a real driver, else CPU time of the thread
    double best = 0;
    double cpu = 0; // of all threads, which a machine with other work changes little
    double entities = 0, particles = 0, allocations = 0;
    std::map<std::string, double>
        stages; // ms per frame by the name of the scope, what is nested included
    std::map<std::string, double> calls; // per frame by function
    std::map<std::string, double> vain;  // of these, those that set what was set
};

/// @return  what went wrong; empty: nothing did
std::string MeasureFrames(const FrameScene& scene, const FrameOptions& options,
                          FrameResult& result);
}
