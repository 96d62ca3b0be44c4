#include "app/entities/PlaneEntity.h"

#include "app/App.h"
#include "app/Camera.h"
#include "app/Scene.h"
#include "app/entities/EntityShader.h"
#include "gui/GUI.h"
#include "physics/Body.h"
#include "physics/Plane.h"
#include "physics/Simulation.h"
#include "rendering/Renderer.h"
#include "util/ScopeProfiler.h"

#include <GL/glew.h>

#include <limits>

using math::Vec2;
using math::Vec3;
using math::Vec4;

namespace app
{
namespace
{
// Earth is told from bodies by a lighter band below its edge, so many border widths deep.
const float LightBandWidths = 4;
const float Infinity = std::numeric_limits<float>::infinity();

struct PlaneShader final : GeomShader
{
    PlaneShader()
        : GeomShader("plane")
    {
    }

    EntityUniform<Vec3> m_plane{*this, "Plane"}; // unit normal and distance, in the GUI
};

struct Corner
{
    Vec2 pos;
    float dist;
};

// The part of the screen on one side of a line or between two.
struct Outline
{
    Corner corners[9]; // 6 after two cuts; rounding can make an edge along the cut cross it often
    int count = 0;
};

/// What is left of the convex outline where the distance times sign is at most limit times sign.
Outline Clip(const Outline& outline, float limit, float sign)
{
    Outline clipped;
    for (int i = 0; i < outline.count; ++i)
    {
        const Corner& a = outline.corners[i];
        const Corner& b = outline.corners[i + 1 < outline.count ? i + 1 : 0];
        const bool keepsA = (a.dist - limit) * sign <= 0, keepsB = (b.dist - limit) * sign <= 0;
        if (keepsA)
            clipped.corners[clipped.count++] = a;
        if (keepsA != keepsB)
        {
            const float t = (limit - a.dist) / (b.dist - a.dist);
            clipped.corners[clipped.count++] = {a.pos + t * (b.pos - a.pos), limit};
        }
    }
    return clipped;
}

void DrawPlaneSegment(const std::array<Vec2, 4>& vecs, const std::array<float, 4>& dists,
                      float from, float to)
{
    Outline outline;
    for (int i = 0; i < 4; ++i)
        outline.corners[outline.count++] = {vecs[i], dists[i]};
    outline = Clip(outline, to, 1);
    if (from != -Infinity)
        outline = Clip(outline, from, -1);
    if (outline.count < 3)
        return;
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    glBegin(GL_TRIANGLE_FAN);
    for (int i = 0; i < outline.count; ++i)
        renderer->Vertex(outline.corners[i].pos);
    glEnd();
}
}

PlaneEntity::PlaneEntity(const util::SharedPtr<physics::Plane>& geom)
    : GeomEntity(geom)
{
}

physics::Plane& PlaneEntity::GetPlane() const
{
    return static_cast<physics::Plane&>(*GetGeom());
}

math::Mat3 PlaneEntity::GUIToPlane() const
{
    const math::Mat3 guiToWorld = Scene::GetInstancePtr()->GetCamera()->GUIToWorld();
    const math::Mat3& transform = GetDrawTransform();
    return transform == math::Mat3() ? guiToWorld : Inverted(transform) * guiToWorld;
}

void PlaneEntity::CalcVecsAndDist(const math::Mat3& guiToPlane, std::array<Vec2, 4>& vecs,
                                  std::array<float, 4>& dists) const
{
    const Vec2 screen = gui::GUI::GetInstancePtr()->GetSize();
    const Vec2 corners[4] = {Vec2(), Vec2(screen.x, 0), screen, Vec2(0, screen.y)};
    for (int i = 0; i < 4; ++i)
    {
        vecs[i] = TransformCoordinate(guiToPlane, corners[i]);
        dists[i] = GetPlane().DistanceWorld(vecs[i]);
    }
}

Vec3 PlaneEntity::CalcGUIPlane() const
{
    // A plane is a row, so that what is on the right of a matrix comes out on its left:
    // plane * (m * p) = (plane * m) * p.
    const math::Mat3 m = GUIToPlane();
    const math::Plane2D& plane = GetPlane().GetPlane();
    const Vec2& n = plane.normal;
    const Vec2 normal(n.x * m[0][0] + n.y * m[1][0], n.x * m[0][1] + n.y * m[1][1]);
    const float dist = plane.Distance(Vec2(m[0][2], m[1][2]));
    return Vec3(normal.x, normal.y, dist) / normal.Length();
}

void PlaneEntity::Draw() const
{
    QUIB_PROFILE("Plane::Draw");
    std::array<Vec2, 4> vecs;
    std::array<float, 4> dists;
    CalcVecsAndDist(GUIToPlane(), vecs, dists);

    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    PlaneShader& shader = GetEntityShader<PlaneShader>();
    const bool hasShader = shader.IsUsable();
    const Vec4& color = GetColor4();
    const float border = GetBorderWidth();
    const float pixel = App::GetInstancePtr()->GetPixelSize();
    // With the shader there is something to be blended on both sides.
    const float above = hasShader ? pixel : 0;
    const float band = border * (1 + LightBandWidths) + above;

    glDisable(GL_TEXTURE_2D);
    renderer->SetColor4(color);
    DrawPlaneSegment(vecs, dists, -Infinity, -band);
    if (hasShader)
    {
        const util::BindScope<rendering::Shader> bound(shader.Get());
        shader.m_insideColor.Set(color);
        shader.m_borderColor.Set(GetBorderColor());
        shader.m_borderWidth.Set(border);
        shader.m_pixelSize.Set(pixel);
        shader.m_plane.Set(CalcGUIPlane());
        DrawPlaneSegment(vecs, dists, -band, above);
    }
    else if (border > 0)
    {
        renderer->SetColor4(Vec4(math::Lerp(color.XYZ(), Vec3(1, 1, 1), 0.25f), color.w));
        DrawPlaneSegment(vecs, dists, -band, -border);
        renderer->SetColor4(GetBorderColor());
        DrawPlaneSegment(vecs, dists, -border, 0);
    }
    glEnable(GL_TEXTURE_2D);
}

void PlaneEntity::DrawBlack() const
{
    std::array<Vec2, 4> vecs;
    std::array<float, 4> dists;
    // The draw transform is not applied around this.
    CalcVecsAndDist(Scene::GetInstancePtr()->GetCamera()->GUIToWorld(), vecs, dists);
    rendering::Renderer::GetInstancePtr()->SetColor4(0, 0, 0, 1);
    glDisable(GL_TEXTURE_2D);
    DrawPlaneSegment(vecs, dists, -Infinity, 0);
    glEnable(GL_TEXTURE_2D);
}

GeomEntityPtr PlaneEntity::Clone() const
{
    const util::SharedPtr<PlaneEntity> clone = QUIB_NEW PlaneEntity(GetPlane().Clone());
    clone->CopyFrom(this);
    return clone;
}

GeomEntityPtr PlaneEntity::ScaledClone(const Vec2& scale) const
{
    // Normals scale by the inverse, so that the plane goes on lying along what rests on it.
    const math::Plane2D& plane = GetPlane().GetPlane();
    const Vec2 normal = Normalized(Vec2(plane.normal.x / scale.x, plane.normal.y / scale.y));
    const Vec2 through = GetPlane().GetCenter();
    return MakeScaled(
        [&]
        {
            if (!math::IsFinite(normal))
                QUIB_THROW(BadDataException("Bad normal: it must have a direction"));
            const physics::PlanePtr geom =
                QUIB_NEW physics::Plane(math::Plane2D::FromPointNormal(through, normal));
            geom->SetPos(through);
            return GeomEntityPtr(QUIB_NEW PlaneEntity(geom));
        });
}

bool PlaneEntity::ErasedBy(const physics::LinesegmentList& stroke) const
{
    for (const physics::Linesegment& segment : stroke)
        if ((GetPlane().DistanceWorld(segment.p0) < 0) !=
            (GetPlane().DistanceWorld(segment.p1) < 0))
            return true;
    return false;
}

bool PlaneEntity::IsContainedBy(const physics::Polygon&) const
{
    return false;
}

void PlaneEntity::AddToSimulation()
{
    if (!GetBody())
        physics::Simulation::GetInstancePtr()->GetWorldBody()->AddGeom(GetGeom());
    GeomEntity::AddToSimulation();
}
}
