// A setting that is a button: one key, or several that must be down together. Works by the input's
// events, so that a key which the interface has taken does not press it.
#pragma once

#include "util/Pointee.h"
#include "util/SharedPtr.h"
#include "util/String.h"

#include <vector>

namespace input
{
class KeyEvent;

// Held by value by what it steers. A copy is bound to the same keys, and is off.
class ButtonInput
{
public:
    ButtonInput();
    ~ButtonInput();
    ButtonInput(const ButtonInput& o);
    ButtonInput& operator=(const ButtonInput& o);

    // What a text says.
    struct Binding
    {
        std::vector<int> keys;
        bool toggle = false;
    };
    /// @throws BadDataException  for the name of a key that is none
    static Binding ParseText(const util::String& text);
    /// Starts from nothing, and is off.
    void Bind(const Binding& binding);

    /// One that is there already is not added again. The button is off then, as after Assign: the keys
    /// that switched it on are not the ones that would switch it off.
    void AddKey(int key);
    /// Replaces all keys with one.
    void Assign(int key);
    bool HasKey(int key) const;
    bool IsBound() const { return !m_keys.empty(); }
    /// In order of addition.
    const std::vector<int>& GetKeySet() const { return m_keys; }

    bool IsOn() const { return m_isOn; }
    void SetOn(bool on) { m_isOn = on; }
    /// With it each press turns the button on or off; without, it is on while the keys are down.
    bool GetToggle() const { return m_toggle; }
    void SetToggle(bool toggle) { m_toggle = toggle; }
    bool AreAllMykeysDown() const;

    /// "" without keys, else the names of the keys, and "toggle " before them.
    util::String AsString() const;
    util::String Serialize() const { return AsString(); }
    /// Starts from nothing: "" unbinds.
    /// @throws BadDataException  for the name of a key that is none; nothing has changed then
    void Deserialize(const util::String& text) { Bind(ParseText(text)); }

private:
    class InputRelay;

    void OnKeyEvent(const KeyEvent& event);
    void OnKeysChanged();

    std::vector<int> m_keys;
    bool m_toggle = false;
    bool m_isOn = false;
    util::SharedPtr<InputRelay> m_relay; // made with the first key: most buttons are never bound
};
}
