#include "app/SceneSettings.h"

#include "app/Serializer.h"
#include "script/Parser.h"
#include "script/Recursion.h"

namespace app
{
SceneSettings::SceneSettings()
    : m_settings(QUIB_NEW script::CodeBlock)
    , m_texts(FileInfo::GetInstancePtr()->GetTexts())
{
    Serializer::GetInstancePtr()->SerializeSettings(*m_settings, Serializer::FadeSettings::Always);
}

bool SceneSettings::operator==(const SceneSettings& o) const
{
    return m_settings->ToCode() == o.m_settings->ToCode() && m_texts.title == o.m_texts.title &&
           m_texts.author == o.m_texts.author && m_texts.description == o.m_texts.description;
}

void SceneSettings::Restore() const
{
    // In whole, as a script may ask for this with its last breath.
    const script::Allowance allowance(script::MaxRunCost, true);
    script::Parser::GetInstancePtr()->Execute(m_settings);
    FileInfo::GetInstancePtr()->SetTexts(m_texts);
}
}
