#include "app/entities/PolyEntity.h"

#include "app/App.h"
#include "app/EntitySerializer.h"
#include "app/entities/Crossings.h"
#include "app/entities/EntityShader.h"
#include "math/OBB2D.h"
#include "physics/Polygon.h"
#include "rendering/Pushers.h"
#include "rendering/Renderer.h"
#include "rendering/TextureManager.h"
#include "util/ScopeProfiler.h"

#include <GL/glew.h>

#include <algorithm>

using math::Vec2;
using math::Vec4;

namespace app
{
namespace
{
struct PolyShader final : GeomShader
{
    PolyShader()
        : GeomShader("polygon")
    {
    }

    EntityUniform<int> m_distSampler{*this, "DistSampler"};
    EntityUniform<float> m_distScale{*this, "DistScale"}; // world units
};

// Of the range of a map, the largest border that leaves something of the inside.
const float MaxBorder = 127.0f / 256;
// How much farther the deep map reaches: a sixth of the polygon's length, which is as much as a border ever
// needs. Any farther and 256 steps would show at the outline.
const float DeepReach = 8;

float CalcDistScale(const physics::Polygon& polygon)
{
    const math::OBB2D& map = polygon.GetMapOBB();
    return 0.04f * 2 * std::max(map.GetHalf(0), map.GetHalf(1));
}

rendering::ImageFloatPtr MakeDistImage(const physics::Polygon& polygon, float distScale)
{
    const util::Array2D<float>& distances = polygon.GetDistMap();
    rendering::ImageFloatPtr image =
        QUIB_NEW rendering::ImageFloat(distances.GetWidth(), distances.GetHeight(), "polygon");
    for (unsigned y = 0; y < distances.GetHeight(); ++y)
        for (unsigned x = 0; x < distances.GetWidth(); ++x)
            (*image)(x, y) = std::clamp(distances(x, y) / distScale + 0.5f, 0.0f, 1.0f);
    return image;
}

float FindDeepest(const physics::Polygon& polygon)
{
    const util::Array2D<float>& distances = polygon.GetDistMap();
    float least = 0;
    for (unsigned y = 0; y < distances.GetHeight(); ++y)
        for (unsigned x = 0; x < distances.GetWidth(); ++x)
            least = std::min(least, distances(x, y));
    return -least;
}

void LogNoTransparency()
{
    static bool s_isLogged = false;
    if (!s_isLogged)
        Log(logging::LogWarning, "Polygon transparency not supported by your computer");
    s_isLogged = true;
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

PolyEntity::PolyEntity(const PolyEntity& o)
    : FiniteGeomEntity(o.GetPolygon().Clone())
    , m_distScale(o.m_distScale)
    , m_deepest(o.m_deepest)
    , m_distTexture(o.m_distTexture)
    , m_deepTexture(o.m_deepTexture)
{
    CopyFrom(&o);
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
    m_distTexture = rendering::TextureManager::GetInstancePtr()->Load(
        MakeDistImage(GetPolygon(), m_distScale), {GL_ALPHA, false});
    m_deepest = FindDeepest(GetPolygon());
}

PolyEntity::Map PolyEntity::GetDistMap() const
{
    return {&m_distTexture, m_distScale};
}

PolyEntity::Map PolyEntity::GetDeepMap() const
{
    const float scale = std::min(DeepReach * m_distScale, 2 * m_deepest);
    if (!(scale > 0))
        return GetDistMap();
    if (!m_deepTexture.GetMentor())
        m_deepTexture = rendering::TextureManager::GetInstancePtr()->Load(
            MakeDistImage(GetPolygon(), scale), {GL_ALPHA, false});
    return {&m_deepTexture, scale};
}

void PolyEntity::Draw() const
{
    QUIB_PROFILE("Poly::Draw");
    LoadRenderingResources();

    glPushMatrix();
    GetGeom()->GetPose().MultToGL();
    DrawOutlines();
    if (IsTiny())
        // The middle of a pixel may lie beside it wherever its map is looked at: all of the map is drawn.
        DrawFixedFunction(HasBorder() ? GetBorderColor() : GetColor4(), GetDistMap(), 1);
    else if (GetEntityShader<PolyShader>().IsUsable() && rendering::HasMultiTexturing())
        DrawWithShader();
    else
        DrawWithAlphaTest();
    if (App::GetInstancePtr()->GetDrawVertices())
        DrawVertices();
    glPopMatrix();
}

/// Whether it is so narrow that it could fall between the pixels.
bool PolyEntity::IsTiny() const
{
    const math::OBB2D& map = GetPolygon().GetMapOBB();
    return std::min(map.GetHalf(0), map.GetHalf(1)) < App::GetInstancePtr()->GetPixelSize();
}

void PolyEntity::DrawWithShader() const
{
    PolyShader& shader = GetEntityShader<PolyShader>();
    // Deliberate: a line of ink. It is at least about as wide as the map reaches, and as it takes all of
    // its width for a pixel, it runs out from the outline to the inside.
    const float reach = m_distScale * MaxBorder;
    const float border = HasBorder() ? std::max(GetBorderWidth(), reach) : 0;
    const Map map = border > std::min(reach, m_deepest) ? GetDeepMap() : GetDistMap();
    (*map.texture)->Bind(0);
    {
        const util::BindScope<rendering::Shader> bound(shader.Get());
        shader.m_insideColor.Set(GetColor4());
        shader.m_borderColor.Set(GetBorderColor());
        shader.m_borderWidth.Set(border);
        shader.m_pixelSize.Set(std::max(App::GetInstancePtr()->GetPixelSize(), border));
        shader.m_distSampler.Set(0);
        shader.m_distScale.Set(map.scale);
        DrawMap();
    }
    (*map.texture)->Unbind(0);
}

void PolyEntity::DrawWithAlphaTest() const
{
    // Some of the inside is left of what is thin, too.
    const float border = std::min(GetBorderWidth(), m_deepest * 0.5f);
    const Map map = border > m_distScale * MaxBorder ? GetDeepMap() : GetDistMap();
    if (border > 0)
    {
        DrawFixedFunction(GetBorderColor(), map, 0.5f);
        glDepthFunc(GL_LEQUAL);
    }
    DrawFixedFunction(GetColor4(), map, 0.5f - std::min(border / map.scale, MaxBorder));
    glDepthFunc(GL_LESS);
}

void PolyEntity::DrawFixedFunction(const Vec4& color, const Map& map, float threshold) const
{
    if (color.w == 0)
        return;
    // The texture's alpha is a distance and picks the pixels, so transparency comes from the blend
    // colour instead.
    const bool hasBlendColor = GLEW_EXT_blend_color || GLEW_VERSION_1_4;
    const bool isOpaque = color.w >= 1 || !hasBlendColor;
    if (color.w < 1 && !hasBlendColor)
        LogNoTransparency();
    if (isOpaque)
        glDisable(GL_BLEND);
    else
    {
        glBlendColor(0, 0, 0, color.w);
        glBlendFunc(GL_CONSTANT_ALPHA, GL_ONE_MINUS_CONSTANT_ALPHA);
    }
    rendering::Renderer::GetInstancePtr()->SetColor4(Vec4(color.XYZ(), 1));
    DrawInside(map, threshold);
    if (isOpaque)
        glEnable(GL_BLEND);
    else
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

/// What lies so deep, in parts of the map's range, with 0.5 for the outline.
void PolyEntity::DrawInside(const Map& map, float threshold) const
{
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_LEQUAL, threshold);
    (*map.texture)->Bind();
    DrawMap();
    (*map.texture)->Unbind();
    glDisable(GL_ALPHA_TEST);
}

void PolyEntity::DrawBlack() const
{
    LoadRenderingResources();
    rendering::Renderer::GetInstancePtr()->SetColor4(0, 0, 0, 1);
    glPushMatrix();
    GetGeom()->GetPose().MultToGL();
    DrawInside(GetDistMap(), 0.5f);
    glPopMatrix();
}

void PolyEntity::DrawMap() const
{
    math::OBB2D map = GetPolygon().GetMapOBB();
    const float least = GetMinHalfSize();
    map.SetHalfSize(Vec2(std::max(map.GetHalf(0), least), std::max(map.GetHalf(1), least)));
    Vec2 corners[4];
    map.CalcCorners(corners);
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
    return QUIB_NEW PolyEntity(*this);
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
    return CountCrossings(stroke, GetPolygon().GetWorldLines()) > 1;
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
