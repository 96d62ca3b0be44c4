#include "physics/Collider.h"

#include "physics/Body.h"
#include "physics/BoundsList.h"
#include "physics/Box.h"
#include "physics/Circle.h"
#include "physics/CollisionDetection.h"
#include "physics/ForEachAhead.h"
#include "physics/Particle.h"
#include "physics/Plane.h"
#include "physics/PointList.h"
#include "physics/Polygon.h"
#include "physics/SPH.h"
#include "util/Failures.h"
#include "util/ScopeProfiler.h"

#include <algorithm>
#include <cmath>

namespace physics
{
using math::Vec2;

namespace
{
// All geometries of one type. The lists have the same index.
template<typename Hull>
struct TypeList
{
    util::VectorPOD<Hull> hulls;
    util::VectorPOD<CollideFilter> filters;
    BoundsList bounds;

    void Clear()
    {
        hulls.clear();
        filters.clear();
        bounds.Clear();
    }
    void Append(const Hull& hull, const Geom& geom, const Bounds& b)
    {
        hulls.append(hull);
        filters.append(CollideFilter(geom, geom.GetBodyPtr()));
        bounds.Append(b);
    }
    size_t size() const { return hulls.size(); }
};

/// Whether bounds lie wholly outside of a plane's solid half, beyond what rounding can do. Only for
/// planes whose normal is of unit length.
bool IsOutside(const math::Plane2D& plane, const Bounds& b)
{
    const Vec2& n = plane.normal;
    const float nearest =
        n.x * (n.x > 0 ? b.min.x : b.max.x) + n.y * (n.y > 0 ? b.min.y : b.max.y) + plane.d;
    return nearest > 1e-6f * std::fabs(plane.d);
}

template<typename Hull, typename Test>
void CollidePlaneWithAll(Plane& plane, const CollideFilter& filter, const TypeList<Hull>& list,
                         Test test)
{
    const math::Plane2D& p = plane.GetPlane();
    const bool isSane =
        math::IsFinite(p.d) && std::fabs(p.normal.LengthSq() - 1) < 4e-6f; // false for a NaN
    for (size_t i = 0, n = list.size(); i < n; ++i)
        if (!(isSane && IsOutside(p, list.bounds[i])) &&
            ShouldCollide(filter, list.filters.data()[i]))
            test(list.hulls.data()[i]);
}

template<typename Hull, typename Test>
void CollideAllPairs(const TypeList<Hull>& list, Test test)
{
    for (size_t i = 0, n = list.size(); i < n; ++i)
        list.bounds.ForEachTouching(
            list.bounds[i], i + 1,
            [&](size_t j)
            {
                if (ShouldCollide(list.filters.data()[i], list.filters.data()[j]))
                    test(list.hulls.data()[i], list.hulls.data()[j]);
            });
}

template<typename HullA, typename HullB, typename Test>
void CollideTwoTypes(const TypeList<HullA>& outer, const TypeList<HullB>& inner,
                     const BoundsList& innerBounds, Test test)
{
    for (size_t i = 0, n = outer.size(); i < n; ++i)
        innerBounds.ForEachTouching(
            outer.bounds[i], 0,
            [&](size_t j)
            {
                if (ShouldCollide(outer.filters.data()[i], inner.filters.data()[j]))
                    test(outer.hulls.data()[i], inner.hulls.data()[j]);
            });
}
}

struct Collider::Lists
{
    util::VectorPOD<Plane*> planes;
    util::VectorPOD<CollideFilter> planeFilters;
    TypeList<PolyHull> polygons; // bounds are those of the oriented box
    BoundsList polygonMaps; // around the regions that the polygons' maps cover; only for circles
    TypeList<CircleHull> circles;
    TypeList<BoxHull> boxes;
    util::VectorPOD<Particle*> particles;
    PointList particlePoints; // at the same indices
    float waterRadius;        // of a particle as a circle

    void Clear()
    {
        planes.clear();
        planeFilters.clear();
        polygons.Clear();
        polygonMaps.Clear();
        circles.Clear();
        boxes.Clear();
        particles.clear();
        particlePoints.Clear();
    }

    void CollideWater(ContactOutput& out);
    float CalcMeanSize() const;
    template<typename T>
    void CollideParticles(T& geom, const Bounds& bounds, ContactOutput& out) const;

    // The lists that the next collider borrows, so that they keep their capacity from step to step.
    // Null while they are borrowed.
    static inline Lists* s_spare = nullptr;
};

Collider::Collider()
    : m_lists(Lists::s_spare ? Lists::s_spare : new Lists)
{
    Lists::s_spare = nullptr;
}

Collider::~Collider()
{
    m_lists->Clear();
    delete Lists::s_spare;
    Lists::s_spare = m_lists;
}

void Collider::AssignBodies(const BodyList& bodies, const ParticleList& particles)
{
    QUIB_PROFILE("Collider::AssignBodies");
    Lists& l = *m_lists;
    l.Clear();
    l.waterRadius = 0.1f * SPH::GetInstancePtr()->m_radius;
    ForEachAhead(particles,
                 [&](Particle& particle)
                 {
                     l.particles.append(&particle);
                     l.particlePoints.Append(particle.GetPos());
                 });
    l.particlePoints.Finish();
    for (const util::SharedPtr<Body>& body : bodies)
        // Parts and not the set: its order goes by address.
        for (const Body::BodyPart& part : body->GetParts())
        {
            const GeomPtr* g = &part.geom;
            Geom& geom = **g;
            if (!geom.GetBodyPtr()) // cheaper than the handle
                CODE_ASSERT((*g)->GetBody());
            switch (geom.GetKind())
            {
            case GeomKind::Polygon:
            {
                Polygon& polygon = static_cast<Polygon&>(geom);
                l.polygons.Append(PolyHull{geom.GetBodyPtr(), &polygon}, geom,
                                  Bounds::Around(polygon.GetOBBWorld()));
                break;
            }
            case GeomKind::Circle:
            {
                Circle& circle = static_cast<Circle&>(geom);
                const math::BoundingCircle bc = circle.GetBCWorld();
                l.circles.Append(CircleHull{geom.GetBodyPtr(), &circle, bc}, geom,
                                 Bounds::Around(bc));
                break;
            }
            case GeomKind::Plane:
                l.planes.append(static_cast<Plane*>(&geom));
                l.planeFilters.append(CollideFilter(geom, geom.GetBodyPtr()));
                break;
            case GeomKind::Box:
            {
                Box& box = static_cast<Box&>(geom);
                l.boxes.Append(BoxHull(box), geom, Bounds::Around(box.GetWorldBox()));
                break;
            }
            case GeomKind::Other:
                break;
            }
        }
    l.polygons.bounds.Finish();
    if (!l.circles.hulls.empty())
    {
        for (const PolyHull& hull : l.polygons.hulls)
            l.polygonMaps.Append(Bounds::Around(hull.polygon->GetMapOBBWorld()));
        l.polygonMaps.Finish();
    }
    l.circles.bounds.Finish();
    l.boxes.bounds.Finish();
}

void Collider::Collide(ContactPool& pool, util::VectorPOD<Contact*>& contacts) const
{
    QUIB_PROFILE("Collider::Collide");
    Lists& l = *m_lists;
    ContactOutput out{pool, contacts};
    {
        QUIB_PROFILE("Plane");
        for (size_t i = 0; i < l.planes.size(); ++i)
        {
            Plane& plane = *l.planes[i];
            const CollideFilter& filter = l.planeFilters[i];
            CollidePlaneWithAll(plane, filter, l.circles,
                                [&](const CircleHull& c) { CollidePlaneCircle(plane, c, out); });
            CollidePlaneWithAll(plane, filter, l.polygons,
                                [&](const PolyHull& p)
                                { CollidePlanePoly(plane, *p.polygon, out); });
            CollidePlaneWithAll(plane, filter, l.boxes,
                                [&](const BoxHull& b) { CollidePlaneBox(plane, *b.box, out); });
        }
    }
    {
        QUIB_PROFILE("Polygon-Polygon");
        CollideAllPairs(l.polygons, [&](const PolyHull& a, const PolyHull& b)
                        { CollidePolyPoly(*a.polygon, *b.polygon, out); });
    }
    {
        QUIB_PROFILE("Circle-Circle");
        CollideAllPairs(l.circles, [&](const CircleHull& a, const CircleHull& b)
                        { CollideCircleCircle(a, b, out); });
    }
    {
        // The map alone tells whether a circle's center is inside, so the bounds here are those of the
        // region that it covers.
        QUIB_PROFILE("Circle-Polygon");
        CollideTwoTypes(l.circles, l.polygons, l.polygonMaps,
                        [&](const CircleHull& c, const PolyHull& p)
                        { CollideCirclePolygon(c, *p.polygon, out); });
    }
    {
        QUIB_PROFILE("Box-Box");
        CollideAllPairs(l.boxes,
                        [&](const BoxHull& a, const BoxHull& b) { CollideBoxBox(a, b, out); });
    }
    {
        QUIB_PROFILE("Box-Polygon");
        CollideTwoTypes(l.boxes, l.polygons, l.polygons.bounds,
                        [&](const BoxHull& b, const PolyHull& p)
                        { CollideBoxPolygon(*b.box, *p.polygon, out); });
    }
    {
        QUIB_PROFILE("Box-Circle");
        CollideTwoTypes(l.boxes, l.circles, l.circles.bounds,
                        [&](const BoxHull& b, const CircleHull& c)
                        { CollideBoxCircle(*b.box, c, out); });
    }
    if (!l.particles.empty())
    {
        QUIB_PROFILE("Water");
        l.CollideWater(out);
    }
}

/// Deliberate: ShouldCollide has no say here. Collide sets do not hold water back, nor does a body that
/// cannot move.
void Collider::Lists::CollideWater(ContactOutput& out)
{
    math::BoundingBox box;
    math::OBB2D obb;
    {
        QUIB_PROFILE("Creating BB");
        box = particlePoints.CalcBounds();
        box.Grow(waterRadius);
        const Vec2 half = box.GetSize() * 0.5f;
        obb = math::OBB2D(box.GetCenter(), Vec2(1, 0), Vec2(0, 1), half.x, half.y);
    }
    {
        QUIB_PROFILE("Plane-Water");
        for (Plane* plane : planes)
        {
            const math::Plane2D& p = plane->GetPlane();
            if (plane->GetWaterCollide() &&
                !(p.Distance(obb.GetCenter()) > obb.ProjectedRadius(p.normal)))
                particlePoints.ForEachNearerThan(
                    waterRadius, p,
                    [&](size_t i) {
                        CollideParticle(waterRadius, *particles.data()[i]->GetGeom(),
                                        particlePoints[i], *plane, out);
                    });
        }
    }
    // Fewer are asked for one by one in less time than the grid takes.
    if (circles.size() + polygons.size() + boxes.size() > 16)
        particlePoints.BuildGrid(CalcMeanSize());

    {
        QUIB_PROFILE("Circle-Water");
        for (size_t i = 0; i < circles.size(); ++i)
        {
            const CircleHull& hull = circles.hulls.data()[i];
            if (AABBvcBC(box, hull.bc) && hull.circle->GetWaterCollide())
                CollideParticles(*hull.circle, circles.bounds[i], out);
        }
    }
    {
        QUIB_PROFILE("Poly-Water");
        for (const PolyHull& hull : polygons.hulls)
        {
            Polygon& polygon = *hull.polygon;
            if (AABBvcBC(box, polygon.GetBCWorld()) && Intersects(obb, polygon.GetOBBWorld()) &&
                polygon.GetWaterCollide())
                // Up to the border of its map a polygon may tell any distance.
                CollideParticles(polygon, Bounds::Around(polygon.GetMapOBBWorld()), out);
        }
    }
    {
        QUIB_PROFILE("Box-Water");
        for (size_t i = 0; i < boxes.size(); ++i)
        {
            const BoxHull& hull = boxes.hulls.data()[i];
            if (AABBvcBC(box, hull.box->GetBCWorld()) && Intersects(obb, hull.obb) &&
                hull.box->GetWaterCollide())
                CollideParticles(*hull.box, boxes.bounds[i], out);
        }
    }
}

/// Of the circles, polygons and boxes; on a scale of octaves, so that a huge one counts for little.
float Collider::Lists::CalcMeanSize() const
{
    float sum = 0;
    for (const BoundsList* list : {&circles.bounds, &polygons.bounds, &boxes.bounds})
        for (size_t i = 0; i < list->size(); ++i)
            sum += std::log2(std::min((*list)[i].max.x - (*list)[i].min.x, 1e9f));
    return std::exp2(sum / (circles.size() + polygons.size() + boxes.size())) + 2 * waterRadius;
}

/// @param bounds  of the geometry itself
template<typename T>
void Collider::Lists::CollideParticles(T& geom, const Bounds& bounds, ContactOutput& out) const
{
    particlePoints.ForEachIn(bounds.Grown(waterRadius),
                             [&](size_t i) {
                                 CollideParticle(waterRadius, *particles.data()[i]->GetGeom(),
                                                 particlePoints[i], geom, out);
                             });
}
}
