#include "input/ButtonInput.h"

#include "input/Input.h"

#include <algorithm>

namespace input
{
namespace
{
const char* const ToggleWord = "toggle";

std::vector<util::String> SplitWords(const util::String& text)
{
    std::vector<util::String> words = util::Split(text, ' ');
    words.erase(std::remove(words.begin(), words.end(), ""), words.end());
    return words;
}
}

// Stands between the input and the button, which is no listener itself: it is a part of other objects,
// and can be copied.
class ButtonInput::InputRelay final : public InputListener
{
public:
    explicit InputRelay(ButtonInput* button)
        : InputListener(50)
        , m_button(button)
    {
    }

    void OnKeyEvent(const KeyEvent& event) override
    {
        if (m_button)
            m_button->OnKeyEvent(event);
    }

    /// An event under way may hold on to the relay of a button that is gone.
    void Detach() { m_button = nullptr; }

private:
    ButtonInput* m_button;
};

ButtonInput::ButtonInput() = default;

ButtonInput::~ButtonInput()
{
    if (m_relay)
        m_relay->Detach();
}

ButtonInput::ButtonInput(const ButtonInput& o)
    : m_keys(o.m_keys)
    , m_toggle(o.m_toggle)
{
    OnKeysChanged();
}

ButtonInput& ButtonInput::operator=(const ButtonInput& o)
{
    m_keys = o.m_keys;
    m_toggle = o.m_toggle;
    OnKeysChanged();
    return *this;
}

void ButtonInput::OnKeysChanged()
{
    m_isOn = false;
    if (m_relay || m_keys.empty())
        return;
    m_relay = QUIB_NEW InputRelay(this);
    Input::GetInstancePtr()->AddListener(util::WeakPtr<InputListener>(m_relay.get()));
}

void ButtonInput::Bind(const Binding& binding)
{
    m_keys.clear();
    for (int key : binding.keys)
        if (!HasKey(key))
            m_keys.push_back(key);
    m_toggle = binding.toggle;
    OnKeysChanged();
}

void ButtonInput::AddKey(int key)
{
    if (HasKey(key))
        return;
    m_keys.push_back(key);
    OnKeysChanged();
}

void ButtonInput::Assign(int key)
{
    m_keys.assign(1, key);
    OnKeysChanged();
}

bool ButtonInput::HasKey(int key) const
{
    return std::find(m_keys.begin(), m_keys.end(), key) != m_keys.end();
}

bool ButtonInput::AreAllMykeysDown() const
{
    const Input* input = Input::GetInstancePtr();
    return std::all_of(m_keys.begin(), m_keys.end(),
                       [input](int key) { return input->IsKeyDown(key); });
}

void ButtonInput::OnKeyEvent(const KeyEvent& event)
{
    const int eventKey = event.GetKey();
    if (!HasKey(eventKey))
        return;
    // A release always counts: one that somebody else has taken must not leave the button stuck. Repeats
    // never do: that of a press which somebody has taken is not the button's either.
    if (event.IsDown() && (event.IsHandled() || event.IsRepeat()))
        return;
    const Input* input = Input::GetInstancePtr();
    for (int key : m_keys)
        if (key != eventKey && !input->IsKeyDown(key))
            return;
    if (!m_toggle)
        m_isOn = event.IsDown();
    else if (event.IsDown())
        m_isOn = !m_isOn;
}

util::String ButtonInput::AsString() const
{
    if (m_keys.empty())
        return "";
    std::vector<util::String> words;
    if (m_toggle)
        words.push_back(ToggleWord);
    for (int key : m_keys)
        words.push_back(Key::GetKeyName(key));
    return util::Join(words, " ");
}

ButtonInput::Binding ButtonInput::ParseText(const util::String& text)
{
    Binding binding;
    for (const util::String& word : SplitWords(text))
        if (word == ToggleWord)
            binding.toggle = true;
        else
            binding.keys.push_back(Key::GetKeyFromName(word));
    return binding;
}
}
