#include "physics/CollisionDetection.h"

#include "logging/Log.h"
#include "physics/Box.h"
#include "physics/Circle.h"
#include "physics/ContactPool.h"
#include "physics/Plane.h"
#include "physics/Polygon.h"

#include <cmath>

namespace physics
{
using math::OBB2D;
using math::Vec2;

BoxHull::BoxHull(Box& b)
    : box(&b)
    , obb(b.GetWorldBox())
    , axisRadius{obb.ProjectedRadius(obb.GetAxis(0)), obb.ProjectedRadius(obb.GetAxis(1))}
{
}

namespace
{
bool RoughIntersectBounds(const Polygon& a, const Polygon& b)
{
    return Intersects(a.GetBCWorld(), b.GetBCWorld()) &&
           Intersects(a.GetOBBWorld(), b.GetOBBWorld());
}

bool RoughIntersectMaps(const Polygon& a, const Polygon& b)
{
    const math::BoundingCircle bcA = a.GetBCWorld(), bcB = b.GetBCWorld();
    return !(a.DistanceWorld(bcB.center) > bcB.radius) &&
           !(b.DistanceWorld(bcA.center) > bcA.radius);
}
}

bool RoughIntersectTest(const Polygon& a, const Polygon& b)
{
    return RoughIntersectBounds(a, b) && RoughIntersectMaps(a, b);
}

bool AABBvcBC(const math::BoundingBox& box, const math::BoundingCircle& circle)
{
    const Vec2 half = box.GetSize() * 0.5f, d = circle.center - box.GetCenter();
    const Vec2 e(std::fabs(d.x) - half.x, std::fabs(d.y) - half.y);
    const float r = circle.radius;
    if (e.x > r || e.y > r)
        return false;
    if (e.x <= 0 || e.y <= 0)
        return true;
    return e.LengthSq() < r * r;
}

void AddContact(ContactOutput& out, Geom& g1, Geom& g2, unsigned long id, Vec2 pos, Vec2 normal,
                float depth)
{
    if (math::IsFinite(pos) && math::IsFinite(normal) && math::IsFinite(depth))
        out.contacts.append(out.pool.New(&g1, &g2, id, pos, normal, depth));
    else
        Log(logging::LogError, "Collision detection reported bad contact");
}

void CollidePlaneCircle(Plane& plane, const CircleHull& hull, ContactOutput& out)
{
    const Vec2 &c = hull.bc.center, &n = plane.GetPlane().normal;
    const float r = hull.bc.radius, d = plane.GetPlane().Distance(c);
    if (d < r)
        AddContact(out, plane, *hull.circle, 0, c - r * n, n, r - d);
}

void CollidePlanePoly(Plane& plane, Polygon& polygon, ContactOutput& out)
{
    const math::Plane2D& p = plane.GetPlane();
    const math::BoundingCircle bc = polygon.GetBCWorld();
    const OBB2D obb = polygon.GetOBBWorld();
    if (p.Distance(bc.center) > bc.radius ||
        p.Distance(obb.GetCenter()) > obb.ProjectedRadius(p.normal))
        return;
    unsigned long i = 0;
    for (const Vec2& v : polygon.GetWorldVertices())
    {
        const float s = p.Distance(v);
        if (s < 0)
            AddContact(out, plane, polygon, i, v, p.normal, -s);
        ++i;
    }
}

void CollidePlaneBox(Plane& plane, Box& box, ContactOutput& out)
{
    const math::Plane2D& p = plane.GetPlane();
    const OBB2D& obb = box.GetWorldBox();
    if (p.Distance(obb.GetCenter()) > obb.ProjectedRadius(p.normal))
        return;
    Vec2 corners[4];
    obb.CalcCorners(corners);
    for (unsigned long i = 0; i < 4; ++i)
    {
        const float s = p.Distance(corners[i]);
        if (s < 0)
            AddContact(out, plane, box, i, corners[i], p.normal, -s);
    }
}

/// Only vertices touch. The map's owner comes first, so that its normal points from geometry 1 to
/// geometry 2.
void CollidePolyPoly(Polygon& a, Polygon& b, ContactOutput& out)
{
    if (!RoughIntersectBounds(a, b))
        return;
    // What else RoughIntersectTest asks costs two looks into maps: only once a vertex is inside.
    bool isAsked = false;
    const auto mayTouch = [&]
    {
        isAsked = isAsked || RoughIntersectMaps(a, b);
        return isAsked;
    };
    unsigned long k = 0;
    for (const Vec2& v : a.GetWorldVertices())
    {
        ++k;
        const float s = b.DistanceInsideWorld(v);
        if (s < 0)
        {
            if (!mayTouch())
                return;
            AddContact(out, b, a, k, v, b.NormalWorld(v), -s);
        }
    }
    for (const Vec2& v : b.GetWorldVertices())
    {
        ++k;
        const float s = a.DistanceInsideWorld(v);
        if (s < 0)
        {
            if (!mayTouch())
                return;
            AddContact(out, a, b, k, v, a.NormalWorld(v), -s);
        }
    }
}

void CollideCircleCircle(const CircleHull& a, const CircleHull& b, ContactOutput& out)
{
    const Vec2 &c1 = a.bc.center, &c2 = b.bc.center;
    const float reach = a.bc.radius + b.bc.radius;
    if (!(DistanceSq(c1, c2) < reach * reach))
        return;
    const float depth = reach - Distance(c1, c2);
    const Vec2 n = Normalized(c2 - c1);
    AddContact(out, *a.circle, *b.circle, 0, c1 + n * (a.bc.radius - depth / 2), n, depth);
}

void CollideCirclePolygon(const CircleHull& hull, Polygon& polygon, ContactOutput& out)
{
    const Vec2& c = hull.bc.center;
    const float r = hull.bc.radius, d = polygon.DistanceWorld(c);
    if (d > r)
        return;
    if (d >= 0)
    {
        // Outside: along the outline itself and not through the map. Edges and vertices each
        // contribute, so that a circle in a notch gets all its contacts.
        unsigned long k = 0;
        const auto addPoint = [&](const Vec2& q)
        {
            const float distance = Distance(q, c);
            if (distance < r)
                AddContact(out, *hull.circle, polygon, k, q, Normalized(q - c), r - distance);
        };
        for (const Linesegment& line : polygon.GetWorldLines())
        {
            ++k;
            float t;
            const Vec2 q = line.ClosestPoint(c, t);
            if (q != line.p0 && q != line.p1)
                addPoint(q);
        }
        for (const Vec2& v : polygon.GetWorldVertices())
        {
            ++k;
            addPoint(v);
        }
    }
    else if (d < 0)
        AddContact(out, *hull.circle, polygon, 0xFFFFFFFF, c, -polygon.NormalWorld(c), r - d);
}

/// A separating axis test (Gottschalk, Lin, Manocha 1996, "OBBTree"; of its fifteen axes four are left
/// in the plane) that ends in clipping one edge of the incident box against the sides of the reference
/// box (Sutherland, Hodgman 1974, "Reentrant polygon clipping", for a single edge).
///
///         n
///         ^         e0, e1: signed depths of the ends of the incident edge
///  -------|-------  reference face
///     P0 x--x P1    incident edge: both ends below the face, so two contacts
void CollideBoxBox(const BoxHull& a, const BoxHull& b, ContactOutput& out)
{
    const BoxHull* hulls[2] = {&a, &b};
    float bestSep = 0, bestSign = 1;
    int bestBox = 0, bestAxis = 0;
    for (int i = 0; i < 2; ++i)
    {
        const OBB2D &own = hulls[i]->obb, &other = hulls[1 - i]->obb;
        const Vec2 toOther = other.GetCenter() - own.GetCenter();
        float boxSep = 0, boxSign = 1;
        int boxAxis = 0;
        for (int j = 0; j < 2; ++j)
        {
            const Vec2& axis = own.GetAxis(j);
            const float s = Dot(toOther, axis);
            const float sep =
                std::fabs(s) - (hulls[i]->axisRadius[j] + other.ProjectedRadius(axis));
            if (sep > 0)
                return;
            if (j == 0 || sep >= boxSep)
            {
                boxSep = sep;
                boxSign = s >= 0 ? 1.0f : -1.0f;
                boxAxis = j;
            }
        }
        if (i == 0 || boxSep >= bestSep)
        {
            bestSep = boxSep;
            bestSign = boxSign;
            bestBox = i;
            bestAxis = boxAxis;
        }
    }

    const BoxHull &refHull = *hulls[bestBox], &incHull = *hulls[1 - bestBox];
    const OBB2D &ref = refHull.obb, &inc = incHull.obb;
    const Vec2 n = bestSign * ref.GetAxis(bestAxis);

    // The incident edge: on the side of I that looks against n the most, its nearer end first.
    const float v[2] = {Dot(n, inc.GetAxis(0)) * inc.GetHalf(0),
                        Dot(n, inc.GetAxis(1)) * inc.GetHalf(1)};
    const Vec2 toSide[2] = {(-v[0] >= 0 ? inc.GetHalf(0) : -inc.GetHalf(0)) * inc.GetAxis(0),
                            (-v[1] >= 0 ? inc.GetHalf(1) : -inc.GetHalf(1)) * inc.GetAxis(1)};
    const int k = std::fabs(v[1]) > std::fabs(v[0]) ? 1 : 0;
    const Vec2 middle = inc.GetCenter() + toSide[k];
    Vec2 p0 = middle + toSide[1 - k], p1 = middle - toSide[1 - k];
    float e0 = Dot(p0 - ref.GetCenter(), n) - ref.GetHalf(bestAxis);
    float e1 = Dot(p1 - ref.GetCenter(), n) - ref.GetHalf(bestAxis);
    if (e1 > 0)
    {
        AddContact(out, *refHull.box, *incHull.box, 0, p0, n, -e0);
        return;
    }

    const Vec2 d = p1 - p0;
    Vec2 t = ref.GetAxis(1 - bestAxis);
    if (Dot(t, d) < 0)
        t = -t;
    const float h = ref.GetHalf(1 - bestAxis), slope = e1 - e0;
    const float m = Dot(ref.GetCenter() - p0, t);
    const bool cutP1 = Dot(p1 - ref.GetCenter(), t) > h, cutP0 = Dot(p0 - ref.GetCenter(), t) < -h;
    const Vec2 start = p0;
    const float startE = e0;
    if (cutP1)
    {
        const float s = (h + m) / Dot(d, t);
        e1 = startE + slope * s;
        p1 = start + s * d;
    }
    if (cutP0)
    {
        const float s = (m - h) / Dot(d, t);
        e0 = startE + slope * s;
        p0 = start + s * d;
    }
    // Ids go by place, so that they survive from step to step while the boxes rest.
    const unsigned long id0 = p1.x <= p0.x ? 1 : 0;
    AddContact(out, *refHull.box, *incHull.box, id0, p0, n, -e0);
    AddContact(out, *refHull.box, *incHull.box, 1 - id0, p1, n, -e1);
}

void CollideBoxPolygon(Box& box, Polygon& polygon, ContactOutput& out)
{
    const OBB2D& obb = box.GetWorldBox();
    if (!Intersects(obb, polygon.GetOBBWorld()))
        return;
    unsigned long k = 0;
    for (const Vec2& v : polygon.GetWorldVertices())
    {
        ++k;
        const float s = obb.Distance(v);
        if (s < 0)
            AddContact(out, box, polygon, k, v, box.NormalWorld(v), -s);
    }
    Vec2 corners[4];
    obb.CalcCorners(corners);
    for (const Vec2& c : corners)
    {
        ++k;
        const float s = polygon.DistanceInsideWorld(c);
        if (s < 0)
            AddContact(out, polygon, box, k, c, polygon.NormalWorld(c), -s);
    }
}

void CollideBoxCircle(Box& box, const CircleHull& hull, ContactOutput& out)
{
    const OBB2D& obb = box.GetWorldBox();
    const Vec2 toCircle = hull.bc.center - obb.GetCenter();
    const float r = hull.bc.radius;
    float d[2], q[2];
    int inside = 0;
    for (int i = 0; i < 2; ++i)
    {
        d[i] = Dot(toCircle, obb.GetAxis(i));
        const float h = obb.GetHalf(i);
        if (std::fabs(d[i]) > r + h)
            return;
        if (d[i] < -h)
            q[i] = -h;
        else if (d[i] > h)
            q[i] = h;
        else
        {
            q[i] = d[i];
            ++inside;
        }
    }

    Vec2 n;
    float depth;
    if (inside < 2)
    {
        const Vec2 e(d[0] - q[0], d[1] - q[1]);
        if (e.LengthSq() >= r * r)
            return;
        n = Normalized(e);
        depth = r - e.Length();
    }
    else
    {
        const float toSide[2] = {obb.GetHalf(0) - std::fabs(d[0]),
                                 obb.GetHalf(1) - std::fabs(d[1])};
        const int k = toSide[1] < toSide[0] ? 1 : 0;
        const float sign = d[k] > 0 ? 1.0f : -1.0f;
        depth = toSide[k] + r;
        n[k] = sign;
        q[k] = d[k] - sign * r;
    }
    const Vec2 pos = obb.GetCenter() + q[0] * obb.GetAxis(0) + q[1] * obb.GetAxis(1);
    AddContact(out, box, *hull.circle, 0, pos, n.x * obb.GetAxis(0) + n.y * obb.GetAxis(1), depth);
}
}
