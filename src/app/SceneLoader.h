// Loads a scene file, replacing what is there.
#pragma once

#include "util/String.h"

namespace app
{
class SceneLoader
{
public:
    /// @param path  a name without a slash is looked for in the scene folder
    explicit SceneLoader(util::String path)
        : m_path(std::move(path))
    {
    }

    /// Throws nothing: what goes wrong reaches the log. @return whether there is a scene now
    bool Do();

private:
    util::String m_path;
};
}
