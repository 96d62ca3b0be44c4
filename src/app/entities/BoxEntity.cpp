#include "app/entities/BoxEntity.h"

#include "app/App.h"
#include "app/EntitySerializer.h"
#include "app/entities/Crossings.h"
#include "app/entities/EntityShader.h"
#include "app/entities/PolyEntity.h"
#include "math/Mat2D.h"
#include "physics/Box.h"
#include "physics/Polygon.h"
#include "rendering/Renderer.h"
#include "util/ScopeProfiler.h"

#include <GL/glew.h>

#include <algorithm>

using math::Vec2;

namespace app
{
namespace
{
struct BoxShader final : GeomShader
{
    BoxShader()
        : GeomShader("box")
    {
    }

    EntityUniform<Vec2> m_halfSize{*this, "HalfSize"}; // world units
};

void DrawCorner(float x, float y)
{
    glTexCoord2f(x, y);
    glVertex2f(x, y);
}

/// Around the origin, with the texture coordinates of each corner the same as its place.
void DrawBox(const Vec2& halfSize)
{
    if (halfSize.x <= 0 || halfSize.y <= 0)
        return;
    glBegin(GL_QUADS);
    DrawCorner(-halfSize.x, -halfSize.y);
    DrawCorner(halfSize.x, -halfSize.y);
    DrawCorner(halfSize.x, halfSize.y);
    DrawCorner(-halfSize.x, halfSize.y);
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
    QUIB_PROFILE("Box::Draw");
    glPushMatrix();
    GetGeom()->GetPose().MultToGL();
    if (GetEntityShader<BoxShader>().IsUsable())
        DrawWithShader();
    else
        DrawFixedFunction();
    glPopMatrix();
}

void BoxEntity::DrawWithShader() const
{
    BoxShader& shader = GetEntityShader<BoxShader>();
    const Vec2 halfSize = GetBox().GetSize() * 0.5f;
    const util::BindScope<rendering::Shader> bound(shader.Get());
    shader.m_insideColor.Set(GetColor4());
    shader.m_borderColor.Set(GetBorderColor());
    shader.m_borderWidth.Set(GetBorderWidth());
    shader.m_pixelSize.Set(App::GetInstancePtr()->GetPixelSize());
    shader.m_halfSize.Set(halfSize);
    DrawBox(halfSize);
}

void BoxEntity::DrawFixedFunction() const
{
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    const float border = GetBorderWidth(), least = GetMinHalfSize();
    const Vec2 halfSize = GetBox().GetSize() * 0.5f;
    const Vec2 seen(std::max(halfSize.x, least), std::max(halfSize.y, least));

    glDisable(GL_TEXTURE_2D);
    if (border > 0)
    {
        renderer->SetColor4(GetBorderColor());
        DrawBox(seen);
        glDepthFunc(GL_LEQUAL);
        renderer->SetColor4(GetColor4());
        DrawBox(halfSize - Vec2(border, border));
        glDepthFunc(GL_LESS);
    }
    else
    {
        renderer->SetColor4(GetColor4());
        DrawBox(seen);
    }
    glEnable(GL_TEXTURE_2D);
}

void BoxEntity::DrawBlack() const
{
    rendering::Renderer::GetInstancePtr()->SetColor4(0, 0, 0, 1);
    glDisable(GL_TEXTURE_2D);
    glPushMatrix();
    GetGeom()->GetPose().MultToGL();
    DrawBox(GetBox().GetSize() * 0.5f);
    glPopMatrix();
    glEnable(GL_TEXTURE_2D);
}

GeomEntityPtr BoxEntity::Clone() const
{
    const util::SharedPtr<BoxEntity> clone = QUIB_NEW BoxEntity(GetBox().Clone());
    clone->CopyFrom(this);
    return clone;
}

GeomEntityPtr BoxEntity::ScaledClone(const Vec2& scale) const
{
    const math::OBB2D& box = GetBox().GetWorldBox();
    // From the center to the middles of two sides, as the scale leaves them.
    const Vec2 x = Vec2::Mul(scale, box.GetAxis(0) * box.GetHalf(0));
    const Vec2 y = Vec2::Mul(scale, box.GetAxis(1) * box.GetHalf(1));
    if (std::fabs(Dot(Normalized(x), Normalized(y))) < SkewTolerance)
        return MakeScaled(
            [&]
            {
                const physics::BoxPtr geom =
                    QUIB_NEW physics::Box(Vec2(x.Length(), y.Length()) * 2.0f, Vec2());
                geom->SetWorldPose(ScaledPose(GetBox().GetPose(), scale));
                return GeomEntityPtr(QUIB_NEW BoxEntity(geom));
            });
    return MakeScaled(
        [&]
        {
            const Vec2 corners[4] = {x + y, y - x, -x - y, x - y};
            math::Vec2List points;
            for (int i = 0; i < 4; ++i)
                physics::AddPolygonSide(points, corners[i], corners[(i + 1) % 4]);
            const physics::PolygonPtr geom = QUIB_NEW physics::Polygon(points);
            geom->SetPos(GetBox().GetCenter());
            return GeomEntityPtr(QUIB_NEW PolyEntity(geom));
        });
}

physics::LinesegmentList BoxEntity::GetSides() const
{
    Vec2 corners[4];
    GetBox().GetOBBWorld().CalcCorners(corners);
    physics::LinesegmentList sides;
    for (int i = 0; i < 4; ++i)
        sides.push_back(physics::Linesegment(corners[i], corners[(i + 1) % 4]));
    return sides;
}

bool BoxEntity::ErasedBy(const physics::LinesegmentList& stroke) const
{
    // Deliberate: exactly. A stroke that enters and leaves twice has second thoughts.
    return CountCrossings(stroke, GetSides()) == 2;
}

bool BoxEntity::IsContainedBy(const physics::Polygon& lasso) const
{
    const physics::LinesegmentList sides = GetSides();
    for (const physics::Linesegment& side : sides)
        if (!(lasso.DistanceWorld(side.p0) <= 0))
            return false;
    return lasso.IntersectCount(sides) == 0;
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
