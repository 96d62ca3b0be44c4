// All text that the program shows, by key.
#pragma once

#include "util/Singleton.h"
#include "util/String.h"

namespace app
{
class Language : public util::Pointee, public util::Singleton<Language>
{
public:
    /// @return the text, or the key in brackets where no language has one, with a line in the log
    util::String Get(const util::String& key) const;
};
}
