#include "script/KeyBinder.h"

namespace script
{
KeyBinder::KeyBinder()
    : Reflected("Keys")
{
}
}
