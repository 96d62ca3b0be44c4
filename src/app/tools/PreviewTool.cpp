#include "app/tools/PreviewTool.h"

#include "app/App.h"
#include "app/entities/Entity.h"
#include "rendering/Pushers.h"
#include "util/Failures.h"

#include <GL/gl.h>

namespace app
{
PreviewTool::PreviewTool(const char* undoName)
    : m_undoName(undoName)
{
}

PreviewTool::~PreviewTool() = default;

void PreviewTool::Begin()
{
    m_color = App::GetInstancePtr()->RandomEntityColor4();
}

void PreviewTool::SetPreview(const EntityPtr& preview)
{
    if (preview)
        preview->SetColor4(m_color);
    m_preview = preview;
}

void PreviewTool::Stretch(const math::Vec2& end)
{
    try
    {
        UpdatePreview(end);
    }
    catch (...)
    {
        LogCaught(QUIB_LOCATION);
    }
}

void PreviewTool::Finish(const math::Vec2&)
{
    if (m_preview)
        AddEntityUndoable(m_preview, m_undoName);
}

void PreviewTool::Forget()
{
    m_preview = nullptr;
}

void PreviewTool::Draw() const
{
    if (!m_preview)
        return;
    // Entities draw their own parts in any order, and tell by the depth which of them is in front.
    const rendering::AttribPusher attribs;
    glPushMatrix();
    glTranslatef(0, 0, 0.95f);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    m_preview->Draw();
    glPopMatrix();
}
}
