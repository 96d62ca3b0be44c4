#include "rendering/QuadBatch.h"

#include <GL/glew.h>

namespace rendering
{
QuadBatch::Corner QuadBatch::s_corners[Capacity];

QuadBatch::QuadBatch()
{
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glEnableClientState(GL_VERTEX_ARRAY);
    glTexCoordPointer(2, GL_FLOAT, sizeof(Corner), &s_corners[0].tex.x);
    glVertexPointer(2, GL_FLOAT, sizeof(Corner), &s_corners[0].pos.x);
}

QuadBatch::~QuadBatch()
{
    Flush();
    glDisableClientState(GL_VERTEX_ARRAY);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
}

void QuadBatch::Flush()
{
    if (m_size > 0)
        glDrawArrays(GL_QUADS, 0, static_cast<GLsizei>(m_size));
    m_size = 0;
}
}
