// The program shell: starts SDL and the loggers, owns the OpenGL window, runs the frame loop and
// limits its rate. The script object "System".
#pragma once

#include "core/VideoMode.h"
#include "input/InputListener.h"
#include "script/Attributes.h"
#include "util/Singleton.h"

#include <functional>
#include <vector>

namespace core
{
class Subsystem : public input::InputListener, public util::Singleton<Subsystem>
{
public:
    /// Where the log goes beside its file and standard error. To be set before the service exists.
    static void SetLogToStandardOutput(bool on);
    /// Whether joysticks are looked for. To be set before the service exists.
    static void SetUseJoysticks(bool on);

    /// Brings up the log, SDL and the input.
    /// @throws std::runtime_error  when SDL can't be had
    Subsystem();
    ~Subsystem() override;

    void SetTitle(const util::String& title);

    /// Makes the window, or makes it anew: all GL resources are unloaded and built again.
    /// @throws std::runtime_error  when the mode can't be had; a window that was there before is back
    ///                             then, its parameters too
    void CreateWindow(WindowParams params);
    /// Brings what the attributes ask for into force.
    void ApplyParserConfig();

    /// The frame loop. Returns when somebody asked for the exit, with all GL resources unloaded.
    void Run();
    void Exit() { m_exit = true; }
    /// Once, at the end of the next frame that is drawn: the frame buffer holds all of it then, with the
    /// alpha that the scene left. A std::exception is logged as that of a screenshot and goes no further.
    void CallWithFrame(std::function<void()> function) { m_onFrame.push_back(std::move(function)); }
    /// Whether somebody has asked for the exit.
    bool IsExiting() const { return m_exit; }

    /// Whether the frame buffer keeps it.
    bool HasAlpha() const { return m_hasAlpha; }
    int GetWidth() const { return m_windowParams.GetWidth(); }
    int GetHeight() const { return m_windowParams.GetHeight(); }
    /// What the attributes ask for.
    const WindowParams& GetConfigParams() const { return m_configParams; }
    /// For the next ApplyParserConfig; the attributes tell the same.
    void SetConfigParams(const WindowParams& params);
    /// Sets both copies, without a new window.
    void SetParams(const WindowParams& params);

    /// Frames per second over the last second; 0 before the first measurement.
    double GetFPS() const { return m_fps; }

    /// Deliberate: false always, and a write has no effect. Swap control is not offered; the frame
    /// limiter is the only control of the rate.
    bool GetVSync() const { return false; }
    void SetVSync(bool on);

    void OnOtherEvent(const input::InputEvent& event) override;

    /// From here on SIGINT, SIGTERM and SIGHUP end the program like the closing of its window, and
    /// SIGUSR1 takes a screenshot. A second one of the same kind kills, should the loop not get to see
    /// the first. A reader of standard output that has gone ends nothing.
    static void HandleSignals();

private:
    template<typename T>
    void AddPoker(const util::String& name, T* remote);
    void MakeWindow(WindowParams params);
    void BringBackWindow(const VideoMode& mode, const WindowParams& params);
    void PumpEvents();
    void Draw();
    void UpdateProfilers();
    void ForceOpaque();
    void TakeScreenshot();
    void CallOnFrame();
    void MeasureRate();
    void LimitRate(float dt);

    script::AttribWrapper<math::Vec4> m_clearColor;
    script::AttribWrapper<float> m_minFPS; // below it the physics stops catching up
    script::AttribWrapper<float> m_maxFPS;
    script::AttribWrapper<bool> m_vSync;
    std::vector<util::SharedPtr<script::AbstractAttrib>> m_pokers; // on m_configParams
    bool m_screenshotAdded = false;
    std::vector<std::function<void()>> m_onFrame; // those who wait for the end of a frame
    bool m_wantsScreenshot = false;
    int m_frameCount = 0; // since the last measurement of the rate
    double m_fpsTime = 0; // seconds; of that measurement
    double m_fps = 0;
    unsigned m_profiledUntil = 0; // milliseconds of real time
    bool m_exit = false;
    bool m_mayShineThrough = true; // this window
    bool m_hasAlpha = false;       // its frame buffer
    VideoMode m_videoMode;
    WindowParams m_windowParams; // in force
    WindowParams m_configParams; // asked for
};

/// Milliseconds to sleep at the end of a frame.
/// @param dt      seconds from the start of the frame before to the start of this one
/// @param maxFPS  1 or more
unsigned CalcFrameSleep(float dt, float maxFPS);
}
