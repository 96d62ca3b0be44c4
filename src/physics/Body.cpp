#include "physics/Body.h"

#include "logging/Log.h"
#include "physics/Geom.h"
#include "physics/WorldGeom.h"
#include "util/Failures.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace physics
{
using math::IsFinite;
using math::TMat2D;
using math::Vec2;
using util::LockPtr;
using util::WeakPtr;

namespace
{
template<typename T>
bool IsOlder(const util::SharedPtr<T>& a, const util::SharedPtr<T>& b)
{
    return a->GetID() < b->GetID();
}
}

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

// What a set of geometries makes of a body, as far as it can be told, and refused, beforehand.
struct Body::NewParts
{
    bool m_isEmptySet = true;
    std::vector<GeomPtr> m_geoms; // those that are good, in order of id
    float m_area = 0;
    Vec2 m_pos;
    // Deliberate: a body without geometries weighs 1 until the next flush removes it.
    float m_mass = 1, m_massInv = 1, m_inertia = 1, m_inertiaInv = 1;

    void SetMass(float mass, float inertia)
    {
        m_mass = mass;
        m_massInv = 1 / mass;
        m_inertia = inertia;
        m_inertiaInv = 1 / inertia;
        // clang-format off
        CODE_ASSERT(IsFinite(m_massInv) && m_massInv>=0);
        CODE_ASSERT(IsFinite(m_inertiaInv) && m_inertiaInv>=0);
        // clang-format on
    }
};

void Body::SetGeoms(const GeomSet& newSet)
{
    const NewParts parts = PrepareParts(newSet);

    // The bodies that lose geometries to this one are asked too, before anything changes.
    std::vector<BodyPtr> others;
    for (const GeomPtr& geom : parts.m_geoms)
        if (geom->GetBodyPtr() != this)
        {
            const BodyPtr other = geom->GetBodyBody();
            if (other && other->m_geoms.count(geom))
                others.push_back(other);
        }
    std::sort(others.begin(), others.end(), IsOlder<Body>);
    others.erase(std::unique(others.begin(), others.end()), others.end());
    std::vector<std::pair<BodyPtr, NewParts>> losers;
    for (const BodyPtr& other : others)
    {
        GeomSet rest;
        for (const GeomPtr& geom : other->m_geoms)
            if (!std::binary_search(parts.m_geoms.begin(), parts.m_geoms.end(), geom,
                                    IsOlder<Geom>))
                rest.insert(geom);
        losers.emplace_back(other, other->PrepareParts(rest));
    }

    for (const auto& loser : losers)
        loser.first->TakeParts(loser.second);
    TakeParts(parts);
}

Body::NewParts Body::PrepareParts(const GeomSet& newSet) const
{
    std::vector<GeomPtr> geoms;
    geoms.reserve(newSet.size());
    for (const GeomPtr& geom : newSet)
        if (geom)
            geoms.push_back(geom);
    // The set's order hangs on addresses. The sums below must not.
    std::sort(geoms.begin(), geoms.end(), IsOlder<Geom>);

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

    NewParts parts;
    parts.m_isEmptySet = geoms.empty();
    float massSum = 0;
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
        massSum += mass;
        parts.m_area += area;
        if (IsFinite(mass))
            parts.m_pos += mass * center;
        parts.m_geoms.push_back(geom);
    }
    if (parts.m_geoms.empty())
        return parts;

    // Deliberate: with any infinite mass the body sits at the origin. So the world body keeps its place
    // when geometries are welded to it.
    if (IsFinite(massSum) && massSum != 0 && IsFinite(parts.m_pos))
        parts.m_pos /= massSum;
    else
        parts.m_pos = Vec2();

    float inertiaSum = 0;
    for (const GeomPtr& geom : parts.m_geoms)
        inertiaSum +=
            geom->Inertia() + geom->Mass() * math::DistanceSq(geom->GetCenter(), parts.m_pos);
    if (!IsFinite(massSum))
        inertiaSum = std::numeric_limits<float>::infinity();

    parts.SetMass(massSum, inertiaSum);
    return parts;
}

void Body::TakeParts(const NewParts& parts)
{
    // Our old geometries may hold the last references to us.
    const LockPtr<Body> keepAlive{WeakPtr<Body>(this)};
    DetachAll();

    m_mass = parts.m_mass;
    m_massInv = parts.m_massInv;
    m_inertia = parts.m_inertia;
    m_inertiaInv = parts.m_inertiaInv;
    if (parts.m_isEmptySet)
        return;
    m_rot = 0;
    m_pos = parts.m_pos;
    m_area = parts.m_area;
    if (parts.m_geoms.empty())
        return;

    m_pose = TMat2D<float>::Translation(m_pos);
    m_poseInv = Inverted(m_pose);
    m_parts.reserve(parts.m_geoms.size());
    for (const GeomPtr& geom : parts.m_geoms)
    {
        // This way round the pose of a geometry comes back to the bit when the body is posed, as the
        // body is not turned. By way of the inverses a scene that is loaded and saved again and again
        // would creep.
        m_parts.emplace_back(geom, m_poseInv * geom->GetPose());
        geom->SetBody(this);
        m_geoms.insert(geom);
    }
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

void Body::SetGeom(GeomPtr geom)
{
    GeomSet geoms;
    geoms.insert(geom);
    SetGeoms(geoms);
}

// What comes to the world body leaves its mass, its place and all that is there as they are. Planes would
// otherwise take the square of their number.
bool Body::TryAppendToWorld(const GeomPtr& geom)
{
    // Written so that a NaN is left to SetGeoms, which tells of it, and so is another world geometry.
    if (m_id != 0 || m_parts.empty() || !geom || geom->GetKind() == GeomKind::Other ||
        geom->GetBodyPtr() || !(geom->Mass() > 0) || !(geom->Area() > 0) ||
        !(geom->Inertia() > 0) || !IsFinite(geom->GetCenter()) ||
        geom->GetID() < m_parts.back().geom->GetID())
        return false;
    m_area += geom->Area();
    m_parts.emplace_back(geom, m_poseInv * geom->GetPose());
    geom->SetBody(this);
    m_geoms.insert(geom);
    geom->SetWorldPose(m_pose * m_parts.back().geomToBody);
    return true;
}

void Body::AddGeom(GeomPtr geom)
{
    if (TryAppendToWorld(geom))
        return;
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
    if (s_holdCount > 0)
        return;
    const GeomSet geoms = m_geoms;
    SetGeoms(geoms);
}

Body::Placement Body::GetPlacement() const
{
    Placement placement;
    placement.pos = m_pos;
    placement.rot = m_rot;
    placement.mass = m_mass;
    placement.inertia = m_inertia;
    placement.area = m_area;
    placement.geomsToBody.reserve(m_parts.size());
    for (const BodyPart& part : m_parts)
        placement.geomsToBody.push_back(part.geomToBody);
    return placement;
}

void Body::SetPlacement(const Placement& placement)
{
    CODE_ASSERT(placement.geomsToBody.size() == m_parts.size());
    ClearForces();
    m_pos = placement.pos;
    m_rot = placement.rot;
    m_mass = placement.mass;
    m_massInv = 1 / m_mass;
    m_inertia = placement.inertia;
    m_inertiaInv = 1 / m_inertia;
    m_area = placement.area;
    for (size_t i = 0; i < m_parts.size(); ++i)
        m_parts[i] = BodyPart(m_parts[i].geom, placement.geomsToBody[i]);
    ApplyPoseChange();
}
}
