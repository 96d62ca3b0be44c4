#include "app/entities/CircleEntity.h"

#include "app/App.h"
#include "app/EntitySerializer.h"
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
const int TextureSize = 1024;
const float SquareScale = 1.2f; // the textured square is larger than the circle
const float CakeSize = 0.0625f; // half angle of the wedge that shows the rotation, in parts of pi
const int OutlineSteps = 128;
const int EllipsePoints = 64;       // of the polygon that a circle becomes
const float RoundTolerance = 1e-5f; // by which the radii of a circle may differ, in parts

/// 0 to 1 around x = 0, over the width w.
float Smooth(float w, float x)
{
    return std::clamp(x / w + 0.5f, 0.0f, 1.0f);
}

rendering::ImageFloatPtr MakeCircleImage(bool cake)
{
    rendering::ImageFloatPtr image = QUIB_NEW rendering::ImageFloat(TextureSize, TextureSize);
    const float pixel = 2 * SquareScale / TextureSize;
    for (int y = 0; y < TextureSize; ++y)
        for (int x = 0; x < TextureSize; ++x)
        {
            const float u = (float(x) + 0.5f) * pixel - SquareScale;
            const float v = (float(y) + 0.5f) * pixel - SquareScale;
            const float d = std::sqrt(u * u + v * v);
            float coverage = Smooth(pixel, 1 - d);
            if (cake)
                coverage *= Smooth(pixel / d, std::fabs(std::atan2(v, u)) - CakeSize * math::PIf);
            (*image)(x, y) = coverage;
        }
    return image;
}

// Made at the first use and never destroyed: all circles share them.
const rendering::TextureProxy& GetCircleTex(bool cake)
{
    static const auto make = [](bool isCake)
    {
        return rendering::TextureProxy(
            [isCake] {
                return new rendering::Texture(MakeCircleImage(isCake), {GL_ALPHA, true});
            });
    };
    static auto* textures = new rendering::TextureProxy[2]{make(false), make(true)};
    return textures[cake];
}

void DrawRect(float r)
{
    if (r > 0)
        rendering::Renderer::GetInstancePtr()->DrawRect(Vec2(), 2 * SquareScale * r);
}

/// n + 1 unit vectors, from (1, 0) all around to it.
std::vector<Vec2> CalcVecs(int n)
{
    std::vector<Vec2> vecs;
    for (int i = 0; i < n; ++i)
    {
        const float angle = -math::TwoPIf * float(i) / float(n);
        vecs.push_back(Vec2(std::cos(angle), std::sin(angle)));
    }
    vecs.push_back(vecs.front());
    return vecs;
}

void DrawCircle(float r, bool cake)
{
    if (r <= 0)
        return;
    static const std::vector<Vec2>* vecs = new std::vector<Vec2>(CalcVecs(OutlineSteps));
    const int open = cake ? int(std::floor(CakeSize * OutlineSteps * 0.5f + 0.5f)) : 0;
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    glBegin(GL_TRIANGLE_FAN);
    renderer->Vertex(Vec2());
    for (int i = open; i <= OutlineSteps - open; ++i)
        renderer->Vertex((*vecs)[i] * r);
    glEnd();
}
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
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    const float r = GetCircle().GetRadius();
    const float inside = r - GetBorderWidth();
    // The texture's pixels would show.
    const bool isBig = 2 * r / App::GetInstancePtr()->GetPixelSize() > TextureSize;

    glPushMatrix();
    GetGeom()->GetPose().MultToGL();
    if (isBig || GetColor4().w != 1)
    {
        // The inside comes first and keeps the border behind it from the same pixels, so that neither
        // shines through the other.
        glDisable(GL_TEXTURE_2D);
        renderer->SetColor4(GetColor4());
        DrawCircle(inside, true);
        renderer->SetColor4(GetBorderColor());
        DrawCircle(r, false);
        glEnable(GL_TEXTURE_2D);
    }
    else
    {
        glDisable(GL_BLEND);
        glEnable(GL_ALPHA_TEST);
        glAlphaFunc(GL_GREATER, 0.5f);
        renderer->SetColor4(GetBorderColor());
        GetCircleTex(false)->Bind();
        DrawRect(r);
        glDepthFunc(GL_LEQUAL);
        renderer->SetColor4(GetColor4());
        GetCircleTex(true)->Bind();
        DrawRect(inside);
        GetCircleTex(true)->Unbind();
        glDepthFunc(GL_LESS);
        glDisable(GL_ALPHA_TEST);
        glEnable(GL_BLEND);
    }
    glPopMatrix();
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
