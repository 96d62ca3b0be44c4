// What the text of a scene sets and no Snapshot holds: the settings, and what the file says about itself. Actions
// that run such a text keep one.
#pragma once

#include "app/FileInfo.h"
#include "script/Expressions.h"

namespace app
{
class SceneSettings
{
public:
    /// As they are now, formulas as formulas.
    SceneSettings();

    void Restore() const;
    bool operator==(const SceneSettings& o) const;

private:
    script::CodeBlockPtr m_settings;
    FileInfo::Texts m_texts;
};
}
