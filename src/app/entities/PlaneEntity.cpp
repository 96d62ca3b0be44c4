#include "app/entities/PlaneEntity.h"

#include "app/Camera.h"
#include "app/Scene.h"
#include "gui/GUI.h"
#include "physics/Body.h"
#include "physics/Plane.h"
#include "physics/Simulation.h"
#include "rendering/Renderer.h"
#include "util/ScopeProfiler.h"

#include <GL/gl.h>

#include <limits>
#include <vector>

using math::Vec2;
using math::Vec4;

namespace app
{
namespace
{
// Earth is told from bodies by a lighter band below its edge, so many border widths deep.
const float LightBandWidths = 4;

struct Corner
{
    Vec2 pos;
    float dist;
};

/// The part of the convex outline whose distance times sign is at most limit times sign.
std::vector<Corner> Clip(const std::vector<Corner>& outline, float limit, float sign)
{
    std::vector<Corner> clipped;
    for (size_t i = 0; i < outline.size(); ++i)
    {
        const Corner& a = outline[i];
        const Corner& b = outline[(i + 1) % outline.size()];
        const bool keepsA = (a.dist - limit) * sign <= 0, keepsB = (b.dist - limit) * sign <= 0;
        if (keepsA)
            clipped.push_back(a);
        if (keepsA != keepsB)
        {
            const float t = (limit - a.dist) / (b.dist - a.dist);
            clipped.push_back({a.pos + t * (b.pos - a.pos), limit});
        }
    }
    return clipped;
}

void DrawPlaneSegment(const std::array<Vec2, 4>& vecs, const std::array<float, 4>& dists,
                      float from, float to)
{
    std::vector<Corner> outline;
    for (int i = 0; i < 4; ++i)
        outline.push_back({vecs[i], dists[i]});
    outline = Clip(outline, to, 1);
    if (from != -std::numeric_limits<float>::infinity())
        outline = Clip(outline, from, -1);
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    glBegin(GL_TRIANGLE_FAN);
    for (const Corner& corner : outline)
        renderer->Vertex(corner.pos);
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

void PlaneEntity::CalcVecsAndDist(std::array<Vec2, 4>& vecs, std::array<float, 4>& dists) const
{
    const Camera* camera = Scene::GetInstancePtr()->GetCamera().get();
    const Vec2 screen = gui::GUI::GetInstancePtr()->GetSize();
    vecs = {camera->GUIToWorld(Vec2()), camera->GUIToWorld(Vec2(screen.x, 0)),
            camera->GUIToWorld(screen), camera->GUIToWorld(Vec2(0, screen.y))};
    for (int i = 0; i < 4; ++i)
        dists[i] = GetPlane().DistanceWorld(vecs[i]);
}

void PlaneEntity::Draw() const
{
    QUIB_PROFILE("Plane::Draw");
    std::array<Vec2, 4> vecs;
    std::array<float, 4> dists;
    CalcVecsAndDist(vecs, dists);

    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    const Vec4 color = GetColor4();
    const float border = GetBorderWidth();
    const float band = border * (1 + LightBandWidths);
    const Vec4 light(math::Lerp(color.XYZ(), math::Vec3(1, 1, 1), 0.25f), color.w);

    glDisable(GL_TEXTURE_2D);
    renderer->SetColor4(color);
    DrawPlaneSegment(vecs, dists, -std::numeric_limits<float>::infinity(), -band);
    if (border > 0)
    {
        renderer->SetColor4(light);
        DrawPlaneSegment(vecs, dists, -band, -border);
        renderer->SetColor4(GetBorderColor());
        DrawPlaneSegment(vecs, dists, -border, 0);
    }
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
