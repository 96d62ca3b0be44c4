#include "physics/Polygon.h"

#include "physics/CollisionDetection.h"
#include "util/Failures.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace physics
{
using math::OBB2D;
using math::Vec2;
using math::Vec2List;

namespace
{
LinesegmentList LinesOf(const Vec2List& ring)
{
    LinesegmentList lines;
    lines.reserve(ring.size());
    for (size_t i = 0; i < ring.size(); ++i)
        lines.emplace_back(ring[i], ring[i + 1 < ring.size() ? i + 1 : 0]);
    return lines;
}

/// Of the ring, by Green's theorem, as in Steger 1996, "On the calculation of moments of polygons".
/// @param area  becomes its area, negative for a clockwise ring
Vec2 CentroidOf(const Vec2List& ring, double& area)
{
    // The sums run in double: the terms grow with the square of the distance from the origin and
    // cancel, and in single precision the centroid of a shape of 1 unit, 300 units out, would lie
    // outside of it.
    const size_t n = ring.size();
    double sum = 0, sumX = 0, sumY = 0;
    for (size_t i = 0; i < n; ++i)
    {
        const Vec2 &v0 = ring[i], &v1 = ring[i + 1 < n ? i + 1 : 0];
        const double x0 = v0.x, y0 = v0.y, x1 = v1.x, y1 = v1.y;
        const double a = x0 * y1 - y0 * x1;
        sum += a;
        sumX += a * (x0 + x1);
        sumY += a * (y0 + y1);
    }
    area = sum / 2;
    return Vec2(static_cast<float>(sumX / (6 * area)), static_cast<float>(sumY / (6 * area)));
}

// How far from its origin a ring's coordinates are no better than this.
float RoundingOf(const Vec2List& ring)
{
    float size = 0;
    for (const Vec2& v : ring)
        size = std::max({size, std::fabs(v.x), std::fabs(v.y)});
    return size * std::numeric_limits<float>::epsilon();
}
}

Polygon::Polygon(const Vec2List& points)
    : Geom(GeomKind::Polygon)
{
    m_vertices.reserve(points.size());
    for (const Vec2& p : points)
    {
        if (!math::IsFinite(p))
            QUIB_THROW(BadDataException("Bad polygon"));
        if (m_vertices.empty() || p != m_vertices.back())
            m_vertices.push_back(p);
    }
    while (m_vertices.size() > 1 && m_vertices.back() == m_vertices.front())
        m_vertices.pop_back();
    if (m_vertices.size() < 3)
        QUIB_THROW(BadDataException("Bad polygon"));
    if (m_vertices.size() > MaxPoints)
        QUIB_THROW(
            BadDataException("Polygon with more than " + std::to_string(MaxPoints) + " points"));

    const Vec2 center = CalcAttribs();

    const size_t n = m_vertices.size();
    m_lines = LinesOf(m_vertices);
    if (AnyIntersect(m_lines))
        QUIB_THROW(BadDataException("Self-intersecting polygon"));

    m_obb = OBB2D::Build(m_vertices.data(), n);
    m_bc = math::BoundingCircle::BuildBest(n, m_vertices.data());
    // Squares of lengths overflow from about 1e19 on and the axis gets lost.
    if (!math::IsFinite(m_obb.GetHalfSize()) || m_obb.GetAxis(0) == Vec2() ||
        !math::IsFinite(m_bc.radius))
        QUIB_THROW(BadDataException("Bad polygon"));

    const Vec2 half = m_obb.GetHalfSize();
    const math::Vec2u mapSize = CalcMapSize(half * 2.0f);
    m_mapWidth = mapSize.x;
    m_mapHeight = mapSize.y;
    const Vec2 size(static_cast<float>(m_mapWidth), static_cast<float>(m_mapHeight));
    const Vec2 slack(std::max(2 * half.x / size.x, MapSlack),
                     std::max(2 * half.y / size.y, MapSlack));
    const Vec2 mapHalf = half + 2.0f * slack;
    m_mapOBB = m_obb;
    m_mapOBB.SetHalfSize(mapHalf);
    // The minus half puts whole map coordinates at the centers of the cells.
    m_polyToMap = math::Mat3::Translation2D(Vec2(-0.5f, -0.5f)) *
                  math::Mat3::Scale2D(Vec2(size.x / (2 * mapHalf.x), size.y / (2 * mapHalf.y))) *
                  math::Mat3::Translation2D(mapHalf) * m_mapOBB.WorldToOBBmatrix();
    m_mapToPoly = Inverted(m_polyToMap);

    m_maps = QUIB_NEW Maps;
    CalcDistMap();
    CalcNormalMap();
    CalcInsideBounds();

    m_worldVertices.resize(n);
    m_worldLines.resize(n);
    SetWorldPose(math::Mat2D::Translation(center));
}

/// Area, centroid and moment of inertia of the ring, by the sums of Steger 1996 again. Orients the ring
/// counter-clockwise, and moves the origin to the centroid, which it returns.
Vec2 Polygon::CalcAttribs()
{
    const size_t n = m_vertices.size();
    const LinesegmentList givenLines = LinesOf(m_vertices);
    double area = 0;
    Vec2 rest = CentroidOf(m_vertices, area), center;
    if (area < 0)
        std::reverse(m_vertices.begin(), m_vertices.end());
    // A ring around its centroid, but for the rounding of its coordinates, stays as it is. Otherwise a
    // polygon that is saved and loaded again and again would creep from bit to bit. One that was drawn far
    // out has a coarser centroid than its own coordinates deserve: a second look finds what is left of it.
    for (int look = 0; look < 5; ++look)
    {
        if (std::max(std::fabs(rest.x), std::fabs(rest.y)) <= RoundingOf(m_vertices))
            break;
        for (Vec2& v : m_vertices)
            v -= rest;
        center += rest;
        rest = CentroidOf(m_vertices, area);
    }
    // Of the ring as it is now: one that is loaded weighs the same to the bit.
    m_area = static_cast<float>(std::fabs(area));

    double inertia = 0;
    for (size_t i = 0; i < n; ++i)
    {
        const Vec2 &v0 = m_vertices[i], &v1 = m_vertices[i + 1 < n ? i + 1 : 0];
        const double x0 = v0.x, y0 = v0.y, x1 = v1.x, y1 = v1.y;
        inertia +=
            (x0 * y1 - y0 * x1) * (x0 * x0 + y0 * y0 + x0 * x1 + y0 * y1 + x1 * x1 + y1 * y1);
    }
    m_inertiaSansMass = static_cast<float>(inertia / (12 * std::fabs(area)));
    // Fails for an outline without area, whose centroid is not a number. One whose loops cancel is
    // told what is wrong with it.
    if (!(m_inertiaSansMass > 0) && AnyIntersect(givenLines))
        QUIB_THROW(BadDataException("Self-intersecting polygon"));
    DATA_ASSERT(m_inertiaSansMass > 0);
    if (!math::IsFinite(m_area) || !math::IsFinite(m_inertiaSansMass) || !math::IsFinite(center))
        QUIB_THROW(BadDataException("Bad polygon"));
    return center;
}

PolygonPtr Polygon::CreateBox(Vec2 a, Vec2 b, math::real)
{
    const Vec2 corners[4] = {a, Vec2(b.x, a.y), b, Vec2(a.x, b.y)};
    Vec2List points;
    for (int i = 0; i < 4; ++i)
        AddPolygonSide(points, corners[i], corners[(i + 1) % 4]);
    return QUIB_NEW Polygon(points);
}

PolygonPtr Polygon::Clone() const
{
    return QUIB_NEW Polygon(*this);
}

PolygonPtr Polygon::Scale(Vec2 s) const
{
    if (s == Vec2(1, 1))
        return Clone();
    Vec2List points;
    points.reserve(m_worldVertices.size());
    for (const Vec2& v : m_worldVertices)
        points.push_back(TransformCoordinate(GetPoseInv(), Vec2::Mul(s, v)));
    if (s.x * s.y < 0)
        std::reverse(points.begin(), points.end());
    PolygonPtr scaled = QUIB_NEW Polygon(points);
    scaled->SetWorldPose(GetPose());
    scaled->CopyMaterial(*this);
    return scaled;
}

float Polygon::DistanceWorld(const Vec2& p) const
{
    return DistancePolygon(TransformCoordinate(GetPoseInv(), p));
}

Vec2 Polygon::NormalWorld(const Vec2& p) const
{
    return TransformNormal(GetPose(), NormalPolygon(TransformCoordinate(GetPoseInv(), p)));
}

float Polygon::DistancePolygon(const Vec2& p) const
{
    // The other way round than "above 0", so that a NaN does not reach the map; it comes out as a
    // NaN.
    if (!(m_mapOBB.Distance(p) <= 0))
        return m_obb.Distance(p);
    const Vec2 q = PolygonToMap(p);
    return m_maps->dist.Sample(q.x, q.y);
}

float Polygon::DistanceInsideWorld(const Vec2& worldPoint) const
{
    const Vec2 p = TransformCoordinate(GetPoseInv(), worldPoint);
    const Vec2 q = PolygonToMap(p);
    // Beyond the map's region the distance is that to the smaller box, and so positive.
    if (q.x >= m_insideMin.x && q.x <= m_insideMax.x && q.y >= m_insideMin.y &&
        q.y <= m_insideMax.y && m_mapOBB.Distance(p) <= 0)
        return m_maps->dist.Sample(q.x, q.y);
    return std::numeric_limits<float>::infinity();
}

Vec2 Polygon::NormalPolygon(const Vec2& p) const
{
    if (!m_mapOBB.Contains(p))
        return Vec2();
    const Vec2 q = PolygonToMap(p);
    return Normalized(m_maps->normal.Sample(q.x, q.y));
}

Vec2 Polygon::GetClosestEdge(Vec2 p) const
{
    Vec2 closest = p;
    float best = std::numeric_limits<float>::infinity();
    for (const Linesegment& line : GetWorldLines())
    {
        float t;
        const Vec2 c = line.ClosestPoint(p, t);
        const float d = DistanceSq(c, p);
        if (d < best)
        {
            best = d;
            closest = c;
        }
    }
    return closest;
}

void Polygon::SetWorldPose(const math::Mat2D& pose)
{
    Geom::SetWorldPose(pose);
    m_obbWorld = OBB2D::Transform(pose, m_obb);
    m_bcWorld = m_bc.Transform(pose);
    m_aabbWorld = math::BoundingBox();
    const size_t n = m_vertices.size();
    for (size_t i = 0; i < n; ++i)
    {
        m_worldVertices[i] = TransformCoordinate(pose, m_vertices[i]);
        m_aabbWorld.Include(m_worldVertices[i]);
    }
    m_areWorldLinesOld = true;
}

void Polygon::UpdateWorldLines() const
{
    const size_t n = m_worldVertices.size();
    for (size_t i = 0; i < n; ++i)
        m_worldLines[i] = Linesegment(m_worldVertices[i], m_worldVertices[i + 1 < n ? i + 1 : 0]);
    m_areWorldLinesOld = false;
}

bool Polygon::Contains(const Polygon& other) const
{
    if (!RoughIntersectTest(*this, other))
        return false;
    for (const Vec2& v : other.m_worldVertices)
        if (DistanceWorld(v) >= 0)
            return false;
    for (const Vec2& v : m_worldVertices)
        if (other.DistanceWorld(v) < 0)
            return false;
    return true;
}

int Polygon::IntersectCount(const LinesegmentList& list) const
{
    return physics::IntersectCount(list, GetWorldLines());
}

math::Vec2u CalcMapSize(Vec2)
{
    return math::Vec2u(64, 64);
}

void AddPolygonSide(Vec2List& list, const Vec2& p, const Vec2& q)
{
    list.push_back(p);
    for (float t : {1.0f / 32, 1.0f / 2, 31.0f / 32})
        list.push_back(math::Lerp(p, q, t));
}

Vec2List AssertMaxDist(const Vec2List& list, float maxDist)
{
    Vec2List ret;
    if (list.empty())
        return ret;
    ret.push_back(list[0]);
    for (size_t i = 1; i < list.size(); ++i)
    {
        const Vec2 p = list[i - 1], q = list[i];
        const float d = Distance(p, q);
        if (d == 0)
            continue;
        if (d > maxDist)
        {
            const float pieces = std::ceil(d / maxDist);
            // Sides of strange lengths must not end in the machine's memory.
            DATA_ASSERT(pieces <= static_cast<float>(Polygon::MaxPoints) &&
                        ret.size() + static_cast<size_t>(pieces) <= Polygon::MaxPoints + 1);
            const int n = static_cast<int>(pieces);
            for (int k = 1; k < n; ++k)
                ret.push_back(math::Lerp(p, q, static_cast<float>(k) / n));
        }
        ret.push_back(q);
    }
    DATA_ASSERT(ret.front() == ret.back());
    ret.pop_back();
    return ret;
}

Vec2List AssertMinDist(const Vec2List& list, float minDist)
{
    Vec2List ret;
    for (const Vec2& p : list)
        if (ret.empty() || Distance(p, ret.back()) > minDist)
            ret.push_back(p);
    if (ret.size() > 1 && Distance(ret.back(), ret.front()) < minDist)
    {
        ret.front() = (ret.front() + ret.back()) * 0.5f;
        ret.pop_back();
    }
    return ret;
}
}
