// The object "Keys": where scripts bind code to keys, as in Keys.bind("f5", { App.undo }). The bindings
// are part of the saved configuration.
#pragma once

#include "script/Reflected.h"

#include <map>

namespace input
{
class KeyEvent;
}

namespace script
{
class KeyBinder final : public Reflected
{
public:
    class BindInputListener;

    // What is known of keys in the layer above, which is there before the first script runs.
    struct Keyboard
    {
        /// @throws BadDataException  for a number that is no key
        const util::String& (*getKeyName)(int key);
        /// @throws BadDataException  for a name that is none
        int (*getKeyFromName)(const util::String& name);
        /// Hands all key events to the binder, until the listener goes.
        util::SharedPtr<util::Pointee> (*listen)(KeyBinder* binder);
    };
    static void SetKeyboard(const Keyboard& keyboard);

    KeyBinder();
    ~KeyBinder() override;

    /// Whatever was bound to the key is forgotten.
    /// @throws ScriptException  for a name that is no key's, and what is no function of no arguments
    void Bind(ObjectPtr name, ObjectPtr function);
    /// Calls what is bound to a key that is pressed, or repeated, and that nobody has taken.
    void OnKeyEvent(const input::KeyEvent& event);

    /// The calls of "bind" that would bind all again, in the order of the keys' numbers.
    ExpressionPtr ToExpression() const override;

private:
    static const Keyboard* s_keyboard; // null before there is one
    static KeyBinder* s_latest;        // waits for a keyboard

    std::map<int, util::SharedPtr<AbstractFunction>> m_bindings;
    util::SharedPtr<util::Pointee> m_listener;
};

using KeyBinderPtr = util::SharedPtr<KeyBinder>;
}
