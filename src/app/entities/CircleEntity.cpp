#include "app/entities/CircleEntity.h"

#include "app/App.h"
#include "app/EntitySerializer.h"
#include "app/entities/CircleDrawing.h"
#include "app/entities/EntityShader.h"
#include "app/entities/PolyEntity.h"
#include "math/Mat2D.h"
#include "physics/Circle.h"
#include "physics/Polygon.h"
#include "rendering/Renderer.h"
#include "rendering/Texture.h"
#include "util/ScopeProfiler.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <vector>

using math::Vec2;

namespace app
{
namespace
{
const int EllipsePoints = 64;       // of the polygon that a circle becomes
const float RoundTolerance = 1e-5f; // by which the radii of a circle may differ, in parts
const float CakeBrightness = 0.75f; // of the wedge, in parts of the colour

math::Vec4 GetCakeColor(const math::Vec4& color)
{
    return math::Vec4(color.XYZ() * CakeBrightness, color.w);
}

struct CircleShader final : GeomShader
{
    CircleShader()
        : GeomShader("circle")
    {
    }

    EntityUniform<float> m_radius{*this, "Radius"}; // world units
    EntityUniform<float> m_squareScale{*this, "SquareScale"};
    EntityUniform<math::Vec4> m_cakeSlizeColor{*this,
                                               "CakeSlizeColor"}; // deliberate: the name is fixed
    EntityUniform<float> m_cakeSize{*this, "CakeSize"};
};
}

float CircConverter(float x, float y)
{
    const float c = 2 * x / y;
    CODE_ASSERT(0 <= c && c <= 2);
    return c < 1 ? c : 2 - c;
}

CircleEntity::CircleEntity(const util::SharedPtr<physics::Circle>& geom)
    : FiniteGeomEntity(geom)
{
}

physics::Circle& CircleEntity::GetCircle() const
{
    return static_cast<physics::Circle&>(*GetGeom());
}

void CircleEntity::Draw() const
{
    QUIB_PROFILE("Circle::Draw");
    // Where the pixels of the texture would show.
    const bool isBig =
        2 * GetCircle().GetRadius() > CircleTexSize * App::GetInstancePtr()->GetPixelSize();
    const bool isOpaque = GetColor4().w >= 1;

    glPushMatrix();
    GetGeom()->GetPose().MultToGL();
    if (!isBig && isOpaque)
        DrawTexture();
    else if (GetEntityShader<CircleShader>().IsUsable())
        DrawWithShader();
    else
        DrawPolygon();
    glPopMatrix();
}

void CircleEntity::DrawWithShader() const
{
    CircleShader& shader = GetEntityShader<CircleShader>();
    const math::Vec4& color = GetColor4();
    const float r = GetCircle().GetRadius();
    const util::BindScope<rendering::Shader> bound(shader.Get());
    shader.m_insideColor.Set(color);
    shader.m_borderColor.Set(GetBorderColor());
    shader.m_borderWidth.Set(GetBorderWidth());
    shader.m_pixelSize.Set(App::GetInstancePtr()->GetPixelSize());
    shader.m_radius.Set(r);
    shader.m_squareScale.Set(CircleSquareScale);
    shader.m_cakeSlizeColor.Set(GetCakeColor(color));
    shader.m_cakeSize.Set(CircleCakeSize);
    DrawCircleRect(r);
}

void CircleEntity::DrawPolygon() const
{
    // The inside comes first and keeps the border behind it from the same pixels, so that neither
    // shines through the other.
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    const float r = GetCircle().GetRadius();
    glDisable(GL_TEXTURE_2D);
    renderer->SetColor4(GetColor4());
    DrawCircle(r - GetBorderWidth(), true);
    renderer->SetColor4(GetCakeColor(GetColor4()));
    DrawCake(r - GetBorderWidth());
    renderer->SetColor4(GetBorderColor());
    DrawCircle(std::max(r, GetMinHalfSize()), false);
    glEnable(GL_TEXTURE_2D);
}

void CircleEntity::DrawTexture() const
{
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    const float r = GetCircle().GetRadius();
    const float inner = r - GetBorderWidth();
    glDisable(GL_BLEND);
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, 0.5f);
    GetCircleTex(false)->Bind();
    renderer->SetColor4(GetBorderColor());
    DrawCircleRect(std::max(r, GetMinHalfSize()));
    glDepthFunc(GL_LEQUAL);
    // The wedge is what the inside leaves open.
    renderer->SetColor4(GetCakeColor(GetColor4()));
    DrawCakeTriangle(inner);
    GetCircleTex(true)->Bind();
    renderer->SetColor4(GetColor4());
    DrawCircleRect(inner);
    GetCircleTex(true)->Unbind();
    glDepthFunc(GL_LESS);
    glDisable(GL_ALPHA_TEST);
    glEnable(GL_BLEND);
}

void CircleEntity::DrawBlack() const
{
    rendering::Renderer::GetInstancePtr()->SetColor4(0, 0, 0, 1);
    glDisable(GL_TEXTURE_2D);
    glPushMatrix();
    GetGeom()->GetPose().MultToGL();
    DrawCircle(GetCircle().GetRadius(), false);
    glPopMatrix();
    glEnable(GL_TEXTURE_2D);
}

GeomEntityPtr CircleEntity::Clone() const
{
    const util::SharedPtr<CircleEntity> clone = QUIB_NEW CircleEntity(GetCircle().Clone());
    clone->CopyFrom(this);
    return clone;
}

GeomEntityPtr CircleEntity::ScaledClone(const Vec2& scale) const
{
    const physics::Circle& circle = GetCircle();
    const Vec2 radii = Vec2(std::fabs(scale.x), std::fabs(scale.y)) * circle.GetRadius();
    if (std::fabs(radii.x / radii.y - 1) < RoundTolerance)
        return MakeScaled(
            [&]
            {
                const physics::CirclePtr geom = QUIB_NEW physics::Circle(Vec2(), radii.x);
                geom->SetWorldPose(ScaledPose(circle.GetPose(), scale));
                return GeomEntityPtr(QUIB_NEW CircleEntity(geom));
            });
    return MakeScaled(
        [&]
        {
            math::Vec2List points;
            for (int i = 0; i < EllipsePoints; ++i)
            {
                const float angle = math::TwoPIf * float(i) / EllipsePoints;
                points.push_back(Vec2::Mul(radii, Vec2(std::cos(angle), std::sin(angle))));
            }
            const physics::PolygonPtr geom = QUIB_NEW physics::Polygon(points);
            geom->SetPos(circle.GetCenter());
            return GeomEntityPtr(QUIB_NEW PolyEntity(geom));
        });
}

bool CircleEntity::ErasedBy(const physics::LinesegmentList& stroke) const
{
    return GetCircle().IntersectCountWorld(stroke) > 1;
}

bool CircleEntity::IsContainedBy(const physics::Polygon& lasso) const
{
    return lasso.DistanceWorld(GetCircle().GetCenter()) < -GetCircle().GetRadius();
}

void CircleEntity::SerializeTo(EntitySerializer& serializer) const
{
    FiniteGeomEntity::SerializeTo(serializer);
    serializer.Set("radius", GetCircle().GetRadius());
}

void CircleEntity::Deserialize(const EntitySerializer& serializer)
{
    if (serializer.Has("radius"))
    {
        const float radius = serializer.Get<float>("radius");
        if (!math::IsFinite(radius) || !(radius > 0))
            QUIB_THROW(BadDataException("Bad radius: it must be above 0"));
        GetCircle().SetRadius(radius);
    }
    FiniteGeomEntity::Deserialize(serializer);
}
}
