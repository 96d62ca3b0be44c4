#include "script/KeyBinder.h"

#include "script/Exceptions.h"
#include "script/Expressions.h"
#include "script/Parser.h"
#include "script/ValueConversions.h"
#include "util/Failures.h"

#include <boost/bind.hpp>

namespace script
{
const KeyBinder::Keyboard* KeyBinder::s_keyboard = nullptr;
KeyBinder* KeyBinder::s_latest = nullptr;

void KeyBinder::SetKeyboard(const Keyboard& keyboard)
{
    static Keyboard s_copy;
    s_copy = keyboard;
    s_keyboard = &s_copy;
    if (s_latest && !s_latest->m_listener)
        s_latest->m_listener = keyboard.listen(s_latest);
}

KeyBinder::KeyBinder()
    : Reflected("Keys")
{
    AddVoidCmd2("bind", boost::bind(&KeyBinder::Bind, this, _1, _2)); // (key, function)
    s_latest = this;
    if (s_keyboard)
        m_listener = s_keyboard->listen(this);
}

KeyBinder::~KeyBinder()
{
    if (s_latest == this)
        s_latest = nullptr;
}

void KeyBinder::Bind(ObjectPtr name, ObjectPtr function)
{
    const auto keyName = ObjectToValue<util::String>(name);
    int key = 0;
    try
    {
        CODE_ASSERT(s_keyboard);
        key = s_keyboard->getKeyFromName(keyName);
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        QUIB_THROW(ScriptException("\"" + util::Shorten(keyName) + "\" is not a valid key name"));
    }
    const auto code = util::DynamicCast<AbstractFunction>(function);
    if (!code || code->GetArgCount() != 0)
        QUIB_THROW(ScriptException("The second argument should be a function taking no arguments"));
    m_bindings[key] = code;
}

ExpressionPtr KeyBinder::ToExpression() const
{
    const util::SharedPtr<CodeBlock> block = QUIB_NEW CodeBlock;
    for (const auto& [key, function] : m_bindings)
    {
        const util::SharedPtr<Block> args = QUIB_NEW Block;
        args->Add(QUIB_NEW Literal<util::String>(s_keyboard->getKeyName(key)));
        args->Add(function->ToExpression()); // an intrinsic has none
        // The name is as good as any other text: the binder must stay reachable by it.
        const CodeBlockPtr callee = Parser::GetInstancePtr()->Parse("Keys.bind");
        block->Add(QUIB_NEW FunctionCall(callee->GetElements()[0], args));
    }
    return block;
}
}
