// The object "Keys": where scripts bind code to keys.
#pragma once

#include "script/Reflected.h"

namespace script
{
class KeyBinder final : public Reflected
{
public:
    KeyBinder();
};

using KeyBinderPtr = util::SharedPtr<KeyBinder>;
}
