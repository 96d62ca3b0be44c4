#include "app/PictureTaker.h"

#include "core/Subsystem.h"
#include "rendering/Renderer.h"

#include <cmath>

namespace app
{
namespace
{
const double FramesPerSecond = 60;
const int FarAway = -10000; // pixels; where the mouse is

/// The first one shows the scene as it was loaded.
size_t CountFrames(double seconds)
{
    return 1 + static_cast<size_t>(std::lround(seconds * FramesPerSecond));
}
}

input::Recording PictureTaker::MakeRecording(double seconds)
{
    input::Recording recording;
    recording.start.mouseX = recording.start.mouseY = FarAway;
    // The picture ends the program in the last but one.
    for (size_t i = 0; i <= CountFrames(seconds); ++i)
    {
        input::RecordedFrame frame = recording.start;
        frame.time = static_cast<unsigned>(std::lround(double(i) * 1000 / FramesPerSecond));
        recording.frames.push_back(frame);
    }
    return recording;
}

PictureTaker::PictureTaker(util::String file, double seconds)
    : m_file(std::move(file))
    , m_framesLeft(CountFrames(seconds))
{
}

void PictureTaker::Update(float dt)
{
    Component::Update(dt);
    if (m_framesLeft > 0 && --m_framesLeft == 0)
        core::Subsystem::GetInstancePtr()->CallWithFrame([this] { Take(); });
}

void PictureTaker::Take()
{
    core::Subsystem::GetInstancePtr()->Exit();
    rendering::Renderer::GetInstancePtr()->ScreenShotToPng(m_file);
    m_isDone = true;
}
}
