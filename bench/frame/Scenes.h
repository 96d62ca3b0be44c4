// What is drawn while frames are measured.
#pragma once

#include <cstddef>
#include <vector>

namespace bench
{
struct FrameScene
{
    const char* name;
    const char* item; // what there are many of; null: nothing to divide by
    size_t items;
    bool isRunning;   // the simulation, while frames are measured
    int settleFrames; // with the simulation running, before
    void (*make)();   // the services and the window are there
};
const std::vector<FrameScene>& GetFrameScenes();
}
