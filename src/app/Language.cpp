#include "app/Language.h"

#include "logging/Log.h"

namespace app
{
util::String Language::Get(const util::String& key) const
{
    Log(logging::LogWarning, "English and English translation missing for " + key);
    return "[" + key + "]";
}
}
