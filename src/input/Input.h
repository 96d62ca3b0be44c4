// The one place where SDL's event queue is read, and the root of the tree of listeners.
#pragma once

#include "input/InputDelegator.h"
#include "input/Joystick.h"
#include "input/Key.h"
#include "util/Singleton.h"

#include <initializer_list>
#include <optional>

union SDL_Event;

namespace input
{
struct RecordedFrame;

// Keys that others are held with.
enum Modifier
{
    ModNone, // none of them is held
    ModShift,
    ModLeftShift,
    ModRightShift,
    ModCtrl, // or the command key, and so with the next two
    ModLeftCtrl,
    ModRightCtrl,
    ModAlt,
    ModLeftAlt,
    ModRightAlt,
    ModMeta,
    ModLeftMeta,
    ModRightMeta,
    ModNumLock,
    ModCapsLock
};

/// Key repeat and unicode translation.
void SetTextInput(bool on);
using util::Plural;

class Input : public InputDelegator, public util::Singleton<Input>
{
public:
    /// Calls nothing of SDL: the services that it would ask do not exist yet.
    Input();

    /// Once SDL is up. Needs no window.
    void InitializeSDL();

    /// Once a frame: delivers all waiting events, however many, reads the mouse, and makes a drag of a
    /// press that was held for long. Of several resizes only the last is delivered, after all other
    /// events: each one costs a new GL context. What an event of a key or of the mouse throws is logged.
    /// During a replay the frame's recorded events come in place of all that.
    void PumpEvents();

    /// Delivers one event as PumpEvents does.
    void HandleEvent(const SDL_Event& event);

    /// A key never seen is up.
    bool IsKeyDown(int key) const;
    /// Not zero when the modifier is held: SDL says so, and its key has been seen to go down, as SDL's own
    /// state may stick when the window loses the focus. For what is no Modifier the mask of SDL's state.
    int CheckModifier(Modifier modifier) const;
    /// In GUI units. While events are delivered, where the mouse was at the latest of them: in a slow
    /// frame it may have clicked in one place and be in another by now.
    const math::Vec2& GetMousePos() const { return m_mousePos; }
    /// Seconds; when the last PumpEvents began.
    double GetPumpTime() const { return m_pumpTime; }

    /// Notches so far: up counts, down counts back.
    int GetWheel() const { return m_wheel; }
    /// Whether the latest event of a mouse button was a press.
    bool IsMouseButtonDown() const { return m_isMouseButtonDown; }

    /// By SDL's index; null when there is none.
    JoystickPtr GetJoystick(int index) const;
    /// Opens all that are there.
    void LookForJoysticks();
    /// As all sticks stand now is their centre.
    void CalibrateJoysticks();

    /// Whether mouse and keyboard stay with the window, away from all others.
    void SetGrabInput(bool grab);
    void SetShowCursor(bool show);

    // The clipboard of the desktop, in Latin-1.

    util::String GetClipboardText();
    void SetClipboardText(const util::String& text);

    /// How pixels become positions. Set by the GUI, which lies above this; one to one before that.
    using PosFromPixelFunction = math::Vec2 (*)(int x, int y);
    void SetPosFromPixel(PosFromPixelFunction function) { m_posFromPixel = function; }

    // What a press, a release and the motion between them may differ by and be a click still.
    struct ClickLimits
    {
        float time;     // seconds
        float distance; // GUI units
    };
    /// Set by the GUI, whose attributes they are.
    using ClickLimitsFunction = ClickLimits (*)();
    void SetClickLimits(ClickLimitsFunction function) { m_clickLimits = function; }

    void OnKeyEvent(const KeyEvent& event) override;
    void OnMouseMove(const MouseEvent& event) override;

private:
    void NoteDisplay();
    void PumpRealEvents();
    void PumpReplay(const RecordedFrame& frame);
    void ReturnFromReplay();
    /// @param mods  SDL's modifiers as they were with the event
    void Deliver(const SDL_Event& event, int mods);
    void KeepResize(const SDL_Event& event);

    // Keys (InputKeys.cpp).
    int GetModState() const;
    bool IsAnyKeyDown(std::initializer_list<int> keys) const;
    KeyEvent BuildKeyEvent(const SDL_Event& event, bool down);
    char BuildCharacter(int key);

    // Joysticks (InputJoysticks.cpp).
    void HandleHat(const SDL_Event& event);

    // Releases that nobody tells of (InputButtons.cpp).
    /// @param x, y  where the mouse is, in pixels
    void ReleaseLostButtons(int x, int y);
    void EndGestureBeforeResize();
    // Of the three that make clicks and drags, as SDL's masks.
    unsigned GetButtonsDown() const;
    void ReleaseButtons(unsigned buttons, int x, int y);

    // Clicks and drags (InputGestures.cpp).
    //
    // A press arms; a release then is a click. Motion beyond the limit, or the limit of time, makes it
    // a drag, which lasts until the release. Other buttons meanwhile change nothing.
    enum GestureState
    {
        Idle,
        Armed,
        Dragging
    };
    static int MaxClickCount() { return 1; }
    void OnButtonPress(const KeyEvent& event);
    void OnButtonRelease(const KeyEvent& event);
    void CheckClickTimeout();
    bool FireClick();
    bool FireDragBegin();
    /// @param delta  see DragEvent
    bool FireDrag(const math::Vec2& delta, const math::Vec2& position);

    double m_pumpTime = 0;
    bool m_isMouseButtonDown = false;
    std::vector<JoystickPtr> m_joysticks; // by SDL's index; null for one that can't be opened
    std::map<int, bool> m_keys;
    int m_wheel = 0;
    math::Vec2 m_mousePos;
    std::optional<int>
        m_mods; // SDL's modifiers as of the event under way, or of the replayed frame

    bool m_isResized = false; // to m_newSize, which is not delivered yet
    math::TVector2<int> m_newSize;

    // SDL's bits of the buttons that are down here: those that the desktop has seen held too, and of
    // these the ones that it saw released, of which we have not been told.
    unsigned m_heldButtons = 0;
    unsigned m_lostButtons = 0;

    GestureState m_state = Idle;
    double m_pressTime = 0; // seconds
    math::Vec2 m_pressPos;
    int m_button = 0;
    int m_clickCount = 0;

    bool m_isUnicodeReported = false;
    PosFromPixelFunction m_posFromPixel;
    ClickLimitsFunction m_clickLimits;
};
}
