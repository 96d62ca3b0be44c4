#include "rendering/Pushers.h"

#include "rendering/Renderer.h"

#include <GL/glew.h>

namespace rendering
{
ColorPusher::ColorPusher()
    : m_saved(Renderer::GetInstancePtr()->GetColor4())
{
}

ColorPusher::~ColorPusher()
{
    Renderer::GetInstancePtr()->SetColor4(m_saved);
}

AttribPusher::AttribPusher(unsigned long mask)
    : m_saved(Renderer::GetInstancePtr()->GetColor4())
{
    glPushAttrib(static_cast<GLbitfield>(mask));
}

AttribPusher::~AttribPusher()
{
    glPopAttrib();
    // glPopAttrib has put GL's colour back without the cache's knowledge: where the scope changed the
    // colour, this sends the old one once more and stores it.
    Renderer::GetInstancePtr()->SetColor4(m_saved);
}
}
