#include "app/entities/SpringEntity.h"

#include "app/EntitySerializer.h"
#include "app/entities/Pictures.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Polygon.h"
#include "physics/Simulation.h"
#include "physics/SpringJoint.h"
#include "rendering/Renderer.h"
#include "rendering/Texture.h"
#include "util/Callback.h"
#include "util/ScopeProfiler.h"

#include <GL/gl.h>

#include <algorithm>

using math::Vec2;

namespace app
{
namespace
{
const float TexLength = 4; // of the picture, in parts of its width

// The caps keep their form while what is between them stretches.
void DrawCoil(const physics::Linesegment& line, float size, const math::Vec4& color)
{
    static const rendering::TextureProxy& s_spring = GetPicture("spring");
    const float length = line.Length();
    const Vec2 along = math::Normalized(line.p1 - line.p0);
    const Vec2 side = math::Rot90CCW(along) * (size * 0.5f);
    const float cap = std::min(size * 0.5f, length * 0.5f), capPart = 0.5f / TexLength;
    const float ends[4][2] = {{0, 0}, {cap, capPart}, {length - cap, 1 - capPart}, {length, 1}};

    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    renderer->SetColor4(color);
    s_spring->Bind();
    glBegin(GL_TRIANGLE_STRIP);
    for (const auto& [distance, v] : ends)
    {
        const Vec2 p = line.p0 + along * distance;
        glTexCoord2f(0, v);
        renderer->Vertex(p + side);
        glTexCoord2f(1, v);
        renderer->Vertex(p - side);
    }
    glEnd();
    s_spring->Unbind();
}
}

SpringEntity::SpringEntity(float size)
    : JointEntity(size)
    , m_strengthFactor(this, "strengthFactor", 0.05f)
    , m_dampingFactor(this, "dampingFactor", 0.1f)
{
    m_strengthFactor->AddChangeCallback(util::MakeCallback(&SpringEntity::PushFactors, this));
    m_dampingFactor->AddChangeCallback(util::MakeCallback(&SpringEntity::PushFactors, this));
}

SpringEntity::~SpringEntity() = default;

JointEntityPtr SpringEntity::Clone() const
{
    const util::SharedPtr<SpringEntity> clone = QUIB_NEW SpringEntity(GetSize());
    clone->CopyEnds(*this);
    clone->SetTargetLength(GetTargetLength());
    return clone;
}

void SpringEntity::PushFactors()
{
    if (!m_joint)
        return;
    m_joint->SetStrengthFactor(m_strengthFactor);
    m_joint->SetDampingFactor(m_dampingFactor);
}

void SpringEntity::CreateJoint()
{
    physics::Simulation* simulation = physics::Simulation::GetInstancePtr();
    const physics::SpringJointPtr old = m_joint;
    m_joint =
        QUIB_NEW physics::SpringJoint(GetGeom(0), GetWorldPoint(0), GetGeom(1), GetWorldPoint(1));
    PushFactors();
    if (old)
        m_joint->SetRestLength(old->GetRestLength());
    else if (m_targetLength)
        m_joint->SetRestLength(*m_targetLength);
    m_targetLength.reset();
    if (!old || !simulation->HasJoint(old))
        return;
    simulation->RemoveJoint(old);
    simulation->AddJoint(m_joint);
}

float SpringEntity::GetTargetLength() const
{
    return m_joint ? m_joint->GetRestLength() : m_targetLength.value_or(0);
}

void SpringEntity::SetTargetLength(float length)
{
    if (m_joint)
        m_joint->SetRestLength(length);
    else
        m_targetLength = length;
}

physics::Linesegment SpringEntity::GetLine() const
{
    return physics::Linesegment(GetWorldPoint(0), GetWorldPoint(1));
}

void SpringEntity::AddToSimulation()
{
    if (!m_joint && GetGeom(0))
        CreateJoint();
    if (m_joint)
        physics::Simulation::GetInstancePtr()->AddJoint(m_joint);
}

void SpringEntity::RemoveFromSimulation()
{
    if (m_joint)
        physics::Simulation::GetInstancePtr()->RemoveJoint(m_joint);
}

bool SpringEntity::IsAlive() const
{
    return JointEntity::IsAlive() && GetGeom(0)->GetBodyPtr() != GetGeom(1)->GetBodyPtr();
}

bool SpringEntity::IsOnEntity(const Vec2& pos) const
{
    return GetLine().Distance(pos) < GetSize() * 0.5f;
}

bool SpringEntity::ErasedBy(const physics::LinesegmentList& stroke) const
{
    return physics::IntersectCount(GetLine(), stroke) >= 1;
}

bool SpringEntity::IsContainedBy(const physics::Polygon& polygon) const
{
    return polygon.DistanceWorld(GetWorldPoint(0)) < 0 &&
           polygon.DistanceWorld(GetWorldPoint(1)) < 0;
}

math::BoundingBox SpringEntity::GetAABB() const
{
    math::BoundingBox box(GetWorldPoint(0), GetWorldPoint(1));
    box.Grow(GetSize() * 0.5f);
    return box;
}

float SpringEntity::CalcEnergy() const
{
    if (!m_joint)
        return 0;
    // Infinitely stiff between ends neither of which moves: that says nothing, and would spoil every sum.
    bool isMovable = false;
    for (int i = 0; i < 2; ++i)
    {
        const physics::AbstractBody* body = m_joint->GetGeom(i)->GetBodyPtr();
        isMovable |= body && !body->IsImmovable();
    }
    return isMovable ? m_joint->CalcEnergy() : 0;
}

void SpringEntity::Draw() const
{
    QUIB_PROFILE("Spring::Draw");
    glDisable(GL_DEPTH_TEST);
    DrawCoil(GetLine(), GetSize(), GetColor4());
    for (int i = 0; i < 2; ++i)
        DrawRing(*this, GetWorldPoint(i), GetSize());
    glEnable(GL_DEPTH_TEST);
}

bool SpringEntity::IsInView(const math::BoundingBox& view) const
{
    math::BoundingBox drawn(GetWorldPoint(0), GetWorldPoint(1));
    drawn.Grow(GetPictureReach(GetSize()));
    return Intersects(drawn, view);
}

void SpringEntity::SerializeTo(EntitySerializer& serializer) const
{
    JointEntity::SerializeTo(serializer);
    serializer.Set("length", GetTargetLength());
}

void SpringEntity::Deserialize(const EntitySerializer& serializer)
{
    const bool hasLength = serializer.Has("length");
    const float length = hasLength ? serializer.Get<float>("length") : 0;
    if (!math::IsFinite(length))
        QUIB_THROW(BadDataException("Bad length"));
    JointEntity::Deserialize(serializer);
    if (hasLength)
        SetTargetLength(length);
}

void SpringEntity::Check() const
{
    if (!math::IsFinite(m_strengthFactor))
        QUIB_THROW(BadDataException("Bad strengthFactor"));
    if (!math::IsFinite(m_dampingFactor))
        QUIB_THROW(BadDataException("Bad dampingFactor"));
}
}
