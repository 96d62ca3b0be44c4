#include "app/SceneSettings.h"

#include "app/Serializer.h"
#include "script/Parser.h"

namespace app
{
SceneSettings::SceneSettings()
    : m_settings(QUIB_NEW script::CodeBlock)
    , m_texts(FileInfo::GetInstancePtr()->GetTexts())
{
    Serializer::GetInstancePtr()->SerializeSettings(*m_settings, Serializer::FadeSettings::Always);
}

void SceneSettings::Restore() const
{
    script::Parser::GetInstancePtr()->Execute(m_settings);
    FileInfo::GetInstancePtr()->SetTexts(m_texts);
}
}
