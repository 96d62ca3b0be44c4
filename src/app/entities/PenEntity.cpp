#include "app/entities/PenEntity.h"

#include "app/App.h"
#include "app/Scene.h"
#include "app/entities/EntityShader.h"
#include "app/entities/Pictures.h"
#include "core/ResourceManager.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"
#include "rendering/Renderer.h"
#include "util/Failures.h"
#include "util/ScopeProfiler.h"

#include <GL/glew.h>

#include <algorithm>

using math::Vec2;
using physics::GeomPtr;
using physics::Simulation;

namespace app
{
namespace
{
const size_t MaxTrailElements = 1000000;
const double MaxTrailAge = 3600; // simulated seconds

struct LineShader final : EntityShader
{
    LineShader()
        : EntityShader("line")
    {
    }

    EntityUniform<math::Vec4> m_color{*this, "Color"};
    EntityUniform<float> m_width{*this, "Width"};         // world units
    EntityUniform<float> m_pixelSize{*this, "PixelSize"}; // world units
};

/// The unit vector to the left of the way from a to b.
Vec2 SideOf(const Vec2& a, const Vec2& b)
{
    return math::Normalized(math::Rot90CCW(b - a));
}
}

PenEntity::PenEntity(float size)
    : m_lastSampleTime(Simulation::GetInstancePtr()->GetSimTime())
    , m_size(this, "size", size)
    , m_fadeTime(this, "fadeTime", 10)
{
}

PenEntity::~PenEntity() = default;

PenEntityPtr PenEntity::Clone() const
{
    const PenEntityPtr clone = QUIB_NEW PenEntity(m_size);
    clone->AttachTo(m_geom, m_localPoint);
    return clone;
}

void PenEntity::AttachAt(const Vec2& pos)
{
    const GeomPtr geom = Scene::GetInstancePtr()->GetGeomAt(pos);
    AttachTo(geom, TransformCoordinate(geom->GetPoseInv(), pos));
}

void PenEntity::AttachTo(const GeomPtr& geom, const Vec2& local)
{
    m_geom = geom;
    m_localPoint = local;
}

Vec2 PenEntity::GetPos() const
{
    return m_geom ? TransformCoordinate(m_geom->GetPose(), m_localPoint) : m_localPoint;
}

void PenEntity::AddToSimulation()
{
    if (m_onStep)
        return;
    m_onStep = util::MakeCallback(&PenEntity::OnSimUpdate, this);
    Simulation::GetInstancePtr()->OnStep().Add(m_onStep);
}

void PenEntity::RemoveFromSimulation()
{
    if (!m_onStep)
        return;
    Simulation::GetInstancePtr()->OnStep().Remove(m_onStep);
    m_onStep = nullptr;
}

bool PenEntity::IsAlive() const
{
    return m_geom && Simulation::GetInstancePtr()->HasBody(m_geom->GetBody());
}

void PenEntity::OnSimUpdate(float)
{
    QUIB_PROFILE("Pen::OnSimUpdate");
    if (!m_geom)
        return;
    const double now = Simulation::GetInstancePtr()->GetSimTime();
    const double elapsed = now - m_lastSampleTime;
    m_lastSampleTime = now;

    while (m_trail.size() > MaxTrailElements)
        m_trail.pop_front();
    while (!m_trail.empty() && now - m_trail.front().time > MaxTrailAge)
        m_trail.pop_front();

    const Vec2 pos = GetPos();
    if (elapsed > 0 && (m_trail.empty() || pos != m_trail.back().pos))
        m_trail.push_back({now, pos, Vec2()});

    const size_t n = m_trail.size();
    if (n < 2)
        return;
    m_trail[n - 1].side = SideOf(m_trail[n - 2].pos, m_trail[n - 1].pos);
    if (n == 2)
        m_trail[0].side = m_trail[1].side;
    else
        m_trail[n - 2].side = SideOf(m_trail[n - 3].pos, m_trail[n - 1].pos);
}

math::BoundingCircle PenEntity::AsCircle() const
{
    return math::BoundingCircle(GetPos(), m_size * 0.5f);
}

void PenEntity::Transform(const math::Mat2D&) {}

bool PenEntity::IsInView(const math::BoundingBox&) const
{
    return true;
}

void PenEntity::Draw() const
{
    QUIB_PROFILE("Pen::Draw");
    static const rendering::TextureProxy& s_pen = GetPicture("pen");
    glDisable(GL_DEPTH_TEST);
    if (m_trail.size() >= 2)
        DrawTrail();
    DrawPicture(s_pen, GetPos(), m_size, GetColor4());
    DrawRing(*this, GetPos(), m_size);
    glEnable(GL_DEPTH_TEST);
}

void PenEntity::DrawTrail() const
{
    float width = 0.7f * m_size;
    // Deliberate: also when the shader that fades in over it is not there.
    if (core::ResourceManager::GetInstancePtr()->GetShaders())
        width += App::GetInstancePtr()->GetPixelSize();

    LineShader& shader = GetEntityShader<LineShader>();
    if (shader.IsUsable())
    {
        const util::BindScope<rendering::Shader> bound(shader.Get());
        shader.m_color.Set(GetColor4());
        shader.m_width.Set(width);
        shader.m_pixelSize.Set(App::GetInstancePtr()->GetPixelSize());
        DrawRibbon(width, [width](float a, bool isRight) { glTexCoord2f(isRight ? width : 0, a); });
    }
    else
    {
        rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
        const math::Vec4& color = GetColor4();
        glDisable(GL_TEXTURE_2D);
        DrawRibbon(width, [&](float a, bool)
                   { renderer->SetColor4(math::Vec4(color.XYZ(), color.w * a)); });
        glEnable(GL_TEXTURE_2D);
    }
}

template<typename F>
void PenEntity::DrawRibbon(float width, F setVertexData) const
{
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    const double now = Simulation::GetInstancePtr()->GetSimTime();
    const float fadeTime = m_fadeTime;
    // In order of time. Most of a long trail has faded.
    auto it = m_trail.begin();
    if (fadeTime >= 0)
        it = std::upper_bound(it, m_trail.end(), now - fadeTime,
                              [](double time, const TrailElement& e) { return time < e.time; });
    glBegin(GL_TRIANGLE_STRIP);
    for (; it != m_trail.end(); ++it)
    {
        const float a = 1 - static_cast<float>(now - it->time) / fadeTime;
        if (!(a > 0))
            continue;
        const Vec2 half = it->side * (width * 0.5f);
        setVertexData(a, false);
        renderer->Vertex(it->pos - half);
        setVertexData(a, true);
        renderer->Vertex(it->pos + half);
    }
    glEnd();
}

void PenEntity::Check() const
{
    if (!math::IsFinite(m_size) || m_size < 0)
        QUIB_THROW(BadDataException("Bad size: it must not be below 0"));
    if (math::IsNaN(m_fadeTime))
        QUIB_THROW(BadDataException("Bad fadeTime"));
}
}
