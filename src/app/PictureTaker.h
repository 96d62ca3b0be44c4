// Lets a scene run for a while, takes one picture and ends the program. Nobody is at the controls: a
// replay of nothing makes time go in even steps, whatever the machine is capable of, and keeps mouse and
// keyboard away, so that the same scene gives the same picture.
#pragma once

#include "gui/Component.h"
#include "input/Recording.h"

namespace app
{
class PictureTaker final : public gui::Component
{
public:
    static constexpr double MaxSeconds = 3600;

    /// What is to be replayed meanwhile.
    static input::Recording MakeRecording(double seconds);

    /// @param file     a PNG
    /// @param seconds  of the program's time before the picture; 0 to MaxSeconds
    PictureTaker(util::String file, double seconds);

    void Update(float dt) override;

    /// Whether the file is there.
    bool IsDone() const { return m_isDone; }

private:
    void Take();

    util::String m_file;
    size_t m_framesLeft;
    bool m_isDone = false;
};
}
