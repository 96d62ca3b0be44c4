#include "physics/Body.h"

#include "logging/Log.h"
#include "physics/Geom.h"
#include "physics/WorldGeom.h"
#include "util/Failures.h"

#include <algorithm>

namespace physics
{
using math::IsFinite;
using math::TMat2D;
using math::Vec2;
using util::LockPtr;
using util::WeakPtr;

Body::BodyPart::BodyPart(GeomPtr geom_, TMat2D<float> geomToBody_)
    : geom(std::move(geom_))
    , bodyToGeom(Inverted(geomToBody_))
    , geomToBody(geomToBody_)
{
}

Body::BodyPart::BodyPart(const BodyPart& o) = default;
Body::BodyPart& Body::BodyPart::operator=(const BodyPart& o) = default;
Body::BodyPart::~BodyPart() = default;

Body::Body() = default;

Body::Body(const Body& o)
    : AbstractBody(o)
    , m_pose(o.m_pose)
    , m_poseInv(o.m_poseInv)
{
}

Body::~Body() = default;

void Body::ApplyPoseChange()
{
    m_rot = math::WrapAngle(m_rot);
    m_pose = TMat2D<float>::TranslationRotation(m_pos, m_rot);
    m_poseInv = Inverted(m_pose);
    for (const BodyPart& part : m_parts)
        part.geom->SetWorldPose(m_pose * part.geomToBody);
}

bool Body::IsBad() const
{
    for (auto bp = m_parts.begin(); bp != m_parts.end(); ++bp)
        CODE_ASSERT(bp->geom->GetBodyPtr() == this);
    return AbstractBody::IsBad() || m_parts.empty();
}

void Body::SetGeoms(const GeomSet& newSet)
{
    // Our geometries may hold the last references to us, and newSet may be our own set.
    const LockPtr<Body> keepAlive{WeakPtr<Body>(this)};
    std::vector<GeomPtr> geoms;
    geoms.reserve(newSet.size());
    for (const GeomPtr& geom : newSet)
        if (geom)
            geoms.push_back(geom);
    // The set's order hangs on addresses. The sums below must not.
    std::sort(geoms.begin(), geoms.end(),
              [](const GeomPtr& a, const GeomPtr& b) { return a->GetID() < b->GetID(); });

    if (m_id == 0)
    {
        int worldGeomCount = 0;
        for (auto g = geoms.begin(); g != geoms.end(); ++g)
            if (dynamic_cast<WorldGeom*>(g->get()))
            {
                CODE_ASSERT((*g)->GetID() == 0);
                ++worldGeomCount;
            }
        CODE_ASSERT(worldGeomCount == 1);
    }

    DetachAll();

    if (geoms.empty())
    {
        // Deliberate: a body without geometries weighs 1 until the next flush removes it.
        SetUnitMass();
        return;
    }

    m_mass = 0;
    m_rot = 0;
    m_pos = Vec2();
    m_area = 0;
    m_inertia = 0;

    std::vector<GeomPtr> kept;
    kept.reserve(geoms.size());
    for (const GeomPtr& geom : geoms)
    {
        const float mass = geom->Mass();
        const float area = geom->Area();
        const float inertia = geom->Inertia();
        const Vec2 center = geom->GetCenter();
        if (!(mass > 0) || !(area > 0) || !(inertia > 0) || !IsFinite(center))
        {
            Log(logging::LogWarning, "Bad geometry in Body::AddGeoms");
            continue;
        }
        m_mass += mass;
        m_area += area;
        if (IsFinite(mass))
            m_pos += mass * center;
        kept.push_back(geom);
    }
    if (kept.empty())
    {
        SetUnitMass();
        return;
    }

    // Deliberate: with any infinite mass the body sits at the origin. So the world body keeps its place
    // when geometries are welded to it.
    if (IsFinite(m_mass) && m_mass != 0 && IsFinite(m_pos))
        m_pos /= m_mass;
    else
        m_pos = Vec2();

    m_pose = TMat2D<float>::Translation(m_pos);
    m_poseInv = Inverted(m_pose);
    m_massInv = 1 / m_mass;

    m_parts.reserve(kept.size());
    for (const GeomPtr& geom : kept)
    {
        m_inertia += geom->Inertia() + geom->Mass() * math::DistanceSq(geom->GetCenter(), m_pos);
        // This way round the pose of a geometry comes back to the bit when the body is posed, as the
        // body is not turned. By way of the inverses a scene that is loaded and saved again and again
        // would creep.
        m_parts.emplace_back(geom, m_poseInv * geom->GetPose());
        Body* other = geom->GetBodyBodyPtr();
        if (other && other != this)
            other->RemoveGeom(geom);
        geom->SetBody(this);
        m_geoms.insert(geom);
    }
    if (!IsFinite(m_mass))
        m_inertia = std::numeric_limits<float>::infinity();
    m_inertiaInv = 1 / m_inertia;

    // clang-format off
    CODE_ASSERT(IsFinite(m_massInv) && m_massInv>=0);
    CODE_ASSERT(IsFinite(m_inertiaInv) && m_inertiaInv>=0);
    // clang-format on
    for (auto bp = m_parts.begin(); bp != m_parts.end(); ++bp)
        CODE_ASSERT(bp->geom->GetBodyPtr() == this);

    ApplyPoseChange();
}

void Body::DetachAll()
{
    // The parts go last: a geometry may die with its part.
    std::vector<BodyPart> parts;
    parts.swap(m_parts);
    m_geoms.clear();
    for (const BodyPart& part : parts)
        if (part.geom->GetBodyPtr() == this)
            part.geom->SetBody(nullptr);
}

void Body::SetUnitMass()
{
    m_mass = 1;
    m_massInv = 1;
    m_inertia = 1;
    m_inertiaInv = 1;
}

void Body::SetGeom(GeomPtr geom)
{
    GeomSet geoms;
    geoms.insert(geom);
    SetGeoms(geoms);
}

void Body::AddGeom(GeomPtr geom)
{
    GeomSet geoms = m_geoms;
    geoms.insert(geom);
    SetGeoms(geoms);
}

void Body::AddGeoms(const GeomSet& added)
{
    GeomSet geoms = m_geoms;
    for (const GeomPtr& geom : added)
        geoms.insert(geom);
    SetGeoms(geoms);
}

void Body::RemoveGeom(GeomPtr geom)
{
    if (m_id != 0)
        CODE_ASSERT(geom->GetID() != 0);
    if (!m_geoms.count(geom))
        return;
    GeomSet geoms = m_geoms;
    geoms.erase(geom);
    SetGeoms(geoms);
}

void Body::OnGeomChange()
{
    const GeomSet geoms = m_geoms;
    SetGeoms(geoms);
}
}
