#include "app/entities/BoxEntity.h"

#include "app/EntitySerializer.h"
#include "math/Mat2D.h"
#include "physics/Box.h"
#include "rendering/Renderer.h"
#include "util/ScopeProfiler.h"

#include <GL/gl.h>

using math::Vec2;

namespace app
{
namespace
{
void DrawBox(const Vec2& halfSize)
{
    if (halfSize.x <= 0 || halfSize.y <= 0)
        return;
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    glBegin(GL_QUADS);
    renderer->Vertex(Vec2(-halfSize.x, -halfSize.y));
    renderer->Vertex(Vec2(halfSize.x, -halfSize.y));
    renderer->Vertex(Vec2(halfSize.x, halfSize.y));
    renderer->Vertex(Vec2(-halfSize.x, halfSize.y));
    glEnd();
}
}

BoxEntity::BoxEntity(const util::SharedPtr<physics::Box>& geom)
    : FiniteGeomEntity(geom)
{
}

physics::Box& BoxEntity::GetBox() const
{
    return static_cast<physics::Box&>(*GetGeom());
}

void BoxEntity::Draw() const
{
    util::ScopeProfiler profile("Box::Draw");
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    const Vec2 halfSize = GetBox().GetSize() * 0.5f;
    const float border = GetBorderWidth();

    glDisable(GL_TEXTURE_2D);
    glPushMatrix();
    GetGeom()->GetPose().MultToGL();
    if (border > 0)
    {
        renderer->SetColor4(GetBorderColor());
        DrawBox(halfSize);
        glDepthFunc(GL_LEQUAL);
    }
    renderer->SetColor4(GetColor4());
    DrawBox(halfSize - Vec2(border, border));
    glDepthFunc(GL_LESS);
    glPopMatrix();
    glEnable(GL_TEXTURE_2D);
}

void BoxEntity::SerializeTo(EntitySerializer& serializer) const
{
    FiniteGeomEntity::SerializeTo(serializer);
    serializer.Set("size", GetBox().GetSize());
}

void BoxEntity::Deserialize(const EntitySerializer& serializer)
{
    if (serializer.Has("size"))
    {
        const Vec2 size = serializer.Get<Vec2>("size");
        // Two negative sides would make a positive area.
        if (!math::IsFinite(size) || !(size.x > 0) || !(size.y > 0))
            QUIB_THROW(BadDataException("Bad size: both sides must be above 0"));
        GetBox().SetSize(size);
    }
    FiniteGeomEntity::Deserialize(serializer);
}
}
