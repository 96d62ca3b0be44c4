#include "app/entities/PolyEntity.h"

#include "app/App.h"
#include "app/EntitySerializer.h"
#include "math/OBB2D.h"
#include "physics/Polygon.h"
#include "rendering/Pushers.h"
#include "rendering/Renderer.h"
#include "rendering/Texture.h"
#include "util/ScopeProfiler.h"

#include <GL/glew.h>

#include <algorithm>

using math::Vec2;
using math::Vec4;

namespace app
{
namespace
{
float CalcDistScale(const physics::Polygon& polygon)
{
    const math::OBB2D& map = polygon.GetMapOBB();
    return 0.04f * 2 * std::max(map.GetHalf(0), map.GetHalf(1));
}

rendering::ImageFloatPtr MakeDistImage(const physics::Polygon& polygon, float distScale)
{
    const util::Array2D<float>& distances = polygon.GetDistMap();
    rendering::ImageFloatPtr image =
        QUIB_NEW rendering::ImageFloat(distances.GetWidth(), distances.GetHeight());
    for (unsigned y = 0; y < distances.GetHeight(); ++y)
        for (unsigned x = 0; x < distances.GetWidth(); ++x)
            (*image)(x, y) = distances(x, y) / distScale + 0.5f;
    return image;
}

void DrawOBB(const math::OBB2D& obb)
{
    Vec2 corners[4];
    obb.CalcCorners(corners);
    glBegin(GL_LINE_LOOP);
    for (const Vec2& corner : corners)
        glVertex2f(corner.x, corner.y);
    glEnd();
}

void DrawBC(const math::BoundingCircle& circle)
{
    const int steps = 64;
    glBegin(GL_LINE_LOOP);
    for (int i = 0; i < steps; ++i)
    {
        const float angle = math::TwoPIf * float(i) / steps;
        glVertex2f(circle.center.x + circle.radius * std::cos(angle),
                   circle.center.y + circle.radius * std::sin(angle));
    }
    glEnd();
}
}

PolyEntity::PolyEntity(const util::SharedPtr<physics::Polygon>& geom)
    : FiniteGeomEntity(geom)
    , m_distScale(CalcDistScale(*geom))
{
}

PolyEntity::~PolyEntity() = default;

physics::Polygon& PolyEntity::GetPolygon() const
{
    return static_cast<physics::Polygon&>(*GetGeom());
}

void PolyEntity::LoadRenderingResources() const
{
    if (m_distTexture.GetMentor())
        return;
    // The geometry outlives the texture, which this entity alone holds.
    const physics::Polygon* polygon = &GetPolygon();
    const float distScale = m_distScale;
    m_distTexture = rendering::TextureProxy(
        [polygon, distScale] {
            return new rendering::Texture(MakeDistImage(*polygon, distScale), {GL_ALPHA16, false});
        });
}

void PolyEntity::Draw() const
{
    QUIB_PROFILE("Poly::Draw");
    LoadRenderingResources();

    glPushMatrix();
    GetGeom()->GetPose().MultToGL();
    DrawOutlines();
    // The texture knows distances up to half its scale, 128 of 256 parts. A wider border would take a
    // threshold at which nothing of the inside is left, so it ends one part before that.
    const float border = std::min(GetBorderWidth(), m_distScale * 127 / 256);
    if (border > 0)
    {
        DrawFixedFunction(GetBorderColor(), 0.5f);
        glDepthFunc(GL_LEQUAL);
    }
    DrawFixedFunction(GetColor4(), 0.5f - border / m_distScale);
    glDepthFunc(GL_LESS);
    if (App::GetInstancePtr()->GetDrawVertices())
        DrawVertices();
    glPopMatrix();
}

void PolyEntity::DrawFixedFunction(const Vec4& color, float threshold) const
{
    if (color.w == 0)
        return;
    // The texture's alpha is a distance and picks the pixels, so transparency comes from the blend
    // colour instead.
    rendering::AttribPusher attribs(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT | GL_CURRENT_BIT);
    if (color.w == 1)
        glDisable(GL_BLEND);
    else if (GLEW_EXT_blend_color || GLEW_VERSION_1_4)
    {
        glBlendColor(0, 0, 0, color.w);
        glBlendFunc(GL_CONSTANT_ALPHA, GL_ONE_MINUS_CONSTANT_ALPHA);
    }
    else
    {
        static bool isLogged = false;
        if (!isLogged)
            Log(logging::LogWarning, "Polygon transparency not supported by your computer");
        isLogged = true;
    }
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_LEQUAL, threshold);
    rendering::Renderer::GetInstancePtr()->SetColor4(Vec4(color.XYZ(), 1));
    m_distTexture->Bind();
    DrawMap();
    m_distTexture->Unbind();
}

void PolyEntity::DrawMap() const
{
    Vec2 corners[4];
    GetPolygon().GetMapOBB().CalcCorners(corners);
    const Vec2 coordinates[4] = {Vec2(1, 1), Vec2(1, 0), Vec2(0, 0), Vec2(0, 1)};
    glBegin(GL_QUADS);
    for (int i = 0; i < 4; ++i)
    {
        glTexCoord2f(coordinates[i].x, coordinates[i].y);
        glVertex2f(corners[i].x, corners[i].y);
    }
    glEnd();
}

void PolyEntity::DrawOutlines() const
{
    const App* app = App::GetInstancePtr();
    if (!app->GetDrawOBBs() && !app->GetDrawMapOBBs() && !app->GetDrawBCs())
        return;
    rendering::AttribPusher attribs;
    glDisable(GL_TEXTURE_2D);
    glDepthMask(GL_FALSE);
    glBlendFunc(GL_ONE, GL_ONE);
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    renderer->SetColor4(0.5f, 0.5f, 0.5f, 1);
    if (app->GetDrawOBBs())
        DrawOBB(GetPolygon().GetOBB());
    if (app->GetDrawMapOBBs())
        DrawOBB(GetPolygon().GetMapOBB());
    if (app->GetDrawBCs())
        DrawBC(GetPolygon().GetBC());
}

void PolyEntity::DrawVertices() const
{
    rendering::AttribPusher attribs;
    glDisable(GL_TEXTURE_2D);
    glDepthFunc(GL_LEQUAL);
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    renderer->SetColor4(1, 1, 1, 1);
    glBegin(GL_POINTS);
    for (const Vec2& vertex : GetPolygon().GetVertices())
        renderer->Vertex(vertex);
    glEnd();
}

GeomEntityPtr PolyEntity::Clone() const
{
    const util::SharedPtr<PolyEntity> clone = QUIB_NEW PolyEntity(GetPolygon().Clone());
    clone->CopyFrom(this);
    return clone;
}

GeomEntityPtr PolyEntity::ScaledClone(const Vec2& scale) const
{
    if (scale == Vec2(1, 1))
        return Clone();
    return MakeScaled([&]
                      { return GeomEntityPtr(QUIB_NEW PolyEntity(GetPolygon().Scale(scale))); });
}

bool PolyEntity::ErasedBy(const physics::LinesegmentList& stroke) const
{
    return GetPolygon().IntersectCount(stroke) > 1;
}

bool PolyEntity::IsContainedBy(const physics::Polygon& lasso) const
{
    return lasso.Contains(GetPolygon());
}

void PolyEntity::SerializeTo(EntitySerializer& serializer) const
{
    FiniteGeomEntity::SerializeTo(serializer);
    serializer.Set("vecs", GetPolygon().GetVertices());
}
}
