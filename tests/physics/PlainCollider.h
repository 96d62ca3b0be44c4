// Collision detection written down as plainly as can be: every pair goes to its exact test, nothing is
// kept flat or rejected early. Slow, and what the Collider must agree with to the bit.
#pragma once

#include "physics/AbstractBody.h"
#include "physics/Body.h"
#include "physics/Box.h"
#include "physics/Circle.h"
#include "physics/CollisionDetection.h"
#include "physics/Particle.h"
#include "physics/Plane.h"
#include "physics/Polygon.h"
#include "physics/SPH.h"

#include <vector>

namespace physics
{
class PlainCollider
{
public:
    using Vec2 = math::Vec2;
    using OBB2D = math::OBB2D;

    struct Found
    {
        Geom *g1, *g2;
        unsigned long id;
        Vec2 pos, normal;
        float depth;
    };
    std::vector<Found> found;

    void Collide(const BodyList& bodies, const ParticleList& particles)
    {
        for (const BodyPtr& body : bodies)
            for (const Body::BodyPart& part : body->GetParts())
            {
                Geom* g = part.geom.get();
                if (Polygon* polygon = dynamic_cast<Polygon*>(g))
                    m_polygons.push_back(polygon);
                else if (Circle* circle = dynamic_cast<Circle*>(g))
                    m_circles.push_back(circle);
                else if (Plane* plane = dynamic_cast<Plane*>(g))
                    m_planes.push_back(plane);
                else if (Box* box = dynamic_cast<Box*>(g))
                    m_boxes.push_back(box);
            }
        for (Plane* plane : m_planes)
        {
            for (Circle* circle : m_circles)
                PlaneCircle(*plane, *circle);
            for (Polygon* polygon : m_polygons)
                PlanePoly(*plane, *polygon);
            for (Box* box : m_boxes)
                PlaneBox(*plane, *box);
        }
        for (size_t i = 0; i < m_polygons.size(); ++i)
            for (size_t j = i + 1; j < m_polygons.size(); ++j)
                PolyPoly(*m_polygons[i], *m_polygons[j]);
        for (size_t i = 0; i < m_circles.size(); ++i)
            for (size_t j = i + 1; j < m_circles.size(); ++j)
                CircleCircle(*m_circles[i], *m_circles[j]);
        for (Circle* circle : m_circles)
            for (Polygon* polygon : m_polygons)
                CirclePolygon(*circle, *polygon);
        for (size_t i = 0; i < m_boxes.size(); ++i)
            for (size_t j = i + 1; j < m_boxes.size(); ++j)
                BoxBox(*m_boxes[i], *m_boxes[j]);
        for (Box* box : m_boxes)
            for (Polygon* polygon : m_polygons)
                BoxPolygon(*box, *polygon);
        for (Box* box : m_boxes)
            for (Circle* circle : m_circles)
                BoxCircle(*box, *circle);
        if (!particles.empty())
            Water(particles);
    }

private:
    static bool Wanted(Geom& a, Geom& b)
    {
        if ((a.GetCollideSet() & b.GetCollideSet() & 0x1F) == 0)
            return false;
        AbstractBody *bodyA = a.GetBodyPtr(), *bodyB = b.GetBodyPtr();
        if (!bodyA || !bodyB || bodyA == bodyB)
            return false;
        if (bodyA->IsImmovable() && bodyB->IsImmovable())
            return false;
        return a.GetNoCollide().count(&b) == 0;
    }

    void Add(Geom& g1, Geom& g2, unsigned long id, Vec2 pos, Vec2 normal, float depth)
    {
        if (math::IsFinite(pos) && math::IsFinite(normal) && math::IsFinite(depth))
            found.push_back(Found{&g1, &g2, id, pos, normal, depth});
    }

    void PlaneCircle(Plane& plane, Circle& circle)
    {
        if (!Wanted(plane, circle))
            return;
        const Vec2 c = circle.GetCenter(), n = plane.GetPlane().normal;
        const float r = circle.GetRadius(), d = plane.DistanceWorld(c);
        if (d < r)
            Add(plane, circle, 0, c - r * n, n, r - d);
    }

    void PlaneBox(Plane& plane, Box& box)
    {
        if (!Wanted(plane, box))
            return;
        const Vec2 n = plane.GetPlane().normal;
        const OBB2D obb = box.GetOBBWorld();
        if (plane.DistanceWorld(obb.GetCenter()) > obb.ProjectedRadius(n))
            return;
        Vec2 corners[4];
        obb.CalcCorners(corners);
        for (int i = 0; i < 4; ++i)
            if (plane.DistanceWorld(corners[i]) < 0)
                Add(plane, box, i, corners[i], n, -plane.DistanceWorld(corners[i]));
    }

    void PlanePoly(Plane& plane, Polygon& polygon)
    {
        if (!Wanted(plane, polygon))
            return;
        const Vec2 n = plane.GetPlane().normal;
        const math::BoundingCircle bc = polygon.GetBCWorld();
        const OBB2D obb = polygon.GetOBBWorld();
        if (plane.DistanceWorld(bc.center) > bc.radius)
            return;
        if (plane.DistanceWorld(obb.GetCenter()) > obb.ProjectedRadius(n))
            return;
        const math::Vec2List& v = polygon.GetWorldVertices();
        for (size_t i = 0; i < v.size(); ++i)
            if (plane.DistanceWorld(v[i]) < 0)
                Add(plane, polygon, i, v[i], n, -plane.DistanceWorld(v[i]));
    }

    void CircleCircle(Circle& a, Circle& b)
    {
        if (!Wanted(a, b))
            return;
        const Vec2 c1 = a.GetCenter(), c2 = b.GetCenter();
        const float r1 = a.GetRadius(), r2 = b.GetRadius();
        if (!(DistanceSq(c1, c2) < (r1 + r2) * (r1 + r2)))
            return;
        const float depth = r1 + r2 - Distance(c1, c2);
        const Vec2 n = Normalized(c2 - c1);
        Add(a, b, 0, c1 + n * (r1 - depth / 2), n, depth);
    }

    void CirclePolygon(Circle& circle, Polygon& polygon)
    {
        if (!Wanted(circle, polygon))
            return;
        const Vec2 c = circle.GetCenter();
        const float r = circle.GetRadius(), d = polygon.DistanceWorld(c);
        if (d > r)
            return;
        if (d < 0)
            Add(circle, polygon, 0xFFFFFFFF, c, -polygon.NormalWorld(c), r - d);
        if (!(d >= 0))
            return;
        unsigned long k = 0;
        for (const Linesegment& line : polygon.GetWorldLines())
        {
            ++k;
            float t;
            const Vec2 q = line.ClosestPoint(c, t);
            if (q != line.p0 && q != line.p1 && Distance(q, c) < r)
                Add(circle, polygon, k, q, Normalized(q - c), r - Distance(q, c));
        }
        for (const Vec2& v : polygon.GetWorldVertices())
        {
            ++k;
            if (Distance(v, c) < r)
                Add(circle, polygon, k, v, Normalized(v - c), r - Distance(v, c));
        }
    }

    void PolyPoly(Polygon& a, Polygon& b)
    {
        if (!Wanted(a, b))
            return;
        const math::BoundingCircle bcA = a.GetBCWorld(), bcB = b.GetBCWorld();
        if (!Intersects(bcA, bcB) || !Intersects(a.GetOBBWorld(), b.GetOBBWorld()))
            return;
        if (a.DistanceWorld(bcB.center) > bcB.radius || b.DistanceWorld(bcA.center) > bcA.radius)
            return;
        unsigned long k = 0;
        Polygon* polygons[2] = {&a, &b};
        for (int i = 0; i < 2; ++i)
            for (const Vec2& v : polygons[i]->GetWorldVertices())
            {
                ++k;
                Polygon& owner = *polygons[1 - i];
                if (owner.DistanceWorld(v) < 0)
                    Add(owner, *polygons[i], k, v, owner.NormalWorld(v), -owner.DistanceWorld(v));
            }
    }

    void BoxPolygon(Box& box, Polygon& polygon)
    {
        if (!Wanted(box, polygon))
            return;
        const OBB2D obb = box.GetOBBWorld();
        if (!Intersects(obb, polygon.GetOBBWorld()))
            return;
        unsigned long k = 0;
        for (const Vec2& v : polygon.GetWorldVertices())
        {
            ++k;
            if (box.DistanceWorld(v) < 0)
                Add(box, polygon, k, v, box.NormalWorld(v), -box.DistanceWorld(v));
        }
        Vec2 corners[4];
        obb.CalcCorners(corners);
        for (const Vec2& c : corners)
        {
            ++k;
            if (polygon.DistanceWorld(c) < 0)
                Add(polygon, box, k, c, polygon.NormalWorld(c), -polygon.DistanceWorld(c));
        }
    }

    void BoxCircle(Box& box, Circle& circle)
    {
        if (!Wanted(box, circle))
            return;
        const OBB2D obb = box.GetOBBWorld();
        const Vec2 toCircle = circle.GetCenter() - obb.GetCenter();
        const float r = circle.GetRadius();
        Vec2 d, q, h = obb.GetHalfSize();
        int free = 0;
        for (int i = 0; i < 2; ++i)
        {
            d[i] = q[i] = Dot(toCircle, obb.GetAxis(i));
            if (std::fabs(d[i]) > r + h[i])
                return;
            if (d[i] < -h[i])
                q[i] = -h[i];
            else if (d[i] > h[i])
                q[i] = h[i];
            else
                ++free;
        }
        Vec2 n;
        float depth;
        if (free < 2)
        {
            const Vec2 e = d - q;
            if (e.LengthSq() >= r * r)
                return;
            n = Normalized(e);
            depth = r - e.Length();
        }
        else
        {
            const int k = h[1] - std::fabs(d[1]) < h[0] - std::fabs(d[0]) ? 1 : 0;
            depth = h[k] - std::fabs(d[k]) + r;
            n[k] = d[k] > 0 ? 1.0f : -1.0f;
            q[k] = d[k] > 0 ? d[k] - r : d[k] + r;
        }
        Add(box, circle, 0, obb.GetCenter() + q.x * obb.GetAxis(0) + q.y * obb.GetAxis(1),
            n.x * obb.GetAxis(0) + n.y * obb.GetAxis(1), depth);
    }

    void BoxBox(Box& a, Box& b)
    {
        if (!Wanted(a, b))
            return;
        Box* boxes[2] = {&a, &b};
        float sep[2][2], sign[2][2];
        for (int i = 0; i < 2; ++i)
            for (int j = 0; j < 2; ++j)
            {
                const OBB2D own = boxes[i]->GetOBBWorld(), other = boxes[1 - i]->GetOBBWorld();
                const Vec2 axis = own.GetAxis(j);
                const float s = Dot(other.GetCenter() - own.GetCenter(), axis);
                sign[i][j] = s >= 0 ? 1.0f : -1.0f;
                sep[i][j] =
                    std::fabs(s) - (own.ProjectedRadius(axis) + other.ProjectedRadius(axis));
                if (sep[i][j] > 0)
                    return;
            }
        const int axes[2] = {sep[0][1] >= sep[0][0] ? 1 : 0, sep[1][1] >= sep[1][0] ? 1 : 0};
        const int r = sep[1][axes[1]] >= sep[0][axes[0]] ? 1 : 0, x = axes[r];
        const OBB2D R = boxes[r]->GetOBBWorld(), I = boxes[1 - r]->GetOBBWorld();
        const Vec2 n = sign[r][x] * R.GetAxis(x);

        float v[2], u[2];
        for (int k = 0; k < 2; ++k)
        {
            v[k] = Dot(n, I.GetAxis(k)) * I.GetHalf(k);
            u[k] = -v[k] >= 0 ? 1.0f : -1.0f;
        }
        const int k = std::fabs(v[1]) > std::fabs(v[0]) ? 1 : 0, l = 1 - k;
        Vec2 p0 =
            I.GetCenter() + u[k] * I.GetHalf(k) * I.GetAxis(k) + u[l] * I.GetHalf(l) * I.GetAxis(l);
        Vec2 p1 =
            I.GetCenter() + u[k] * I.GetHalf(k) * I.GetAxis(k) - u[l] * I.GetHalf(l) * I.GetAxis(l);
        float e0 = Dot(p0 - R.GetCenter(), n) - R.GetHalf(x);
        float e1 = Dot(p1 - R.GetCenter(), n) - R.GetHalf(x);
        if (e1 > 0)
        {
            Add(*boxes[r], *boxes[1 - r], 0, p0, n, -e0);
            return;
        }
        const Vec2 D = p1 - p0;
        Vec2 t = R.GetAxis(1 - x);
        if (Dot(t, D) < 0)
            t = -t;
        const float h = R.GetHalf(1 - x), m = Dot(R.GetCenter() - p0, t), difference = e1 - e0;
        const Vec2 oldP0 = p0;
        if (Dot(p1 - R.GetCenter(), t) > h)
        {
            const float s = (h + m) / Dot(D, t);
            e1 = e0 + difference * s;
            p1 = oldP0 + s * D;
        }
        if (Dot(oldP0 - R.GetCenter(), t) < -h)
        {
            const float s = (m - h) / Dot(D, t);
            e0 = e0 + difference * s;
            p0 = oldP0 + s * D;
        }
        Add(*boxes[r], *boxes[1 - r], p1.x <= p0.x ? 1 : 0, p0, n, -e0);
        Add(*boxes[r], *boxes[1 - r], p1.x <= p0.x ? 0 : 1, p1, n, -e1);
    }

    void Water(const ParticleList& particles)
    {
        const float r = 0.1f * SPH::GetInstancePtr()->m_radius;
        math::BoundingBox box;
        for (const ParticlePtr& particle : particles)
            box.Include(particle->GetPos());
        box.Grow(r);
        const Vec2 half = box.GetSize() * 0.5f;
        const OBB2D obb(box.GetCenter(), Vec2(1, 0), Vec2(0, 1), half.x, half.y);

        for (Plane* plane : m_planes)
        {
            const math::Plane2D& p = plane->GetPlane();
            const bool isAway = p.Distance(box.GetCenter()) > obb.ProjectedRadius(p.normal);
            if (plane->GetWaterCollide() && !isAway)
                Particles(*plane, r, particles);
        }
        for (Circle* circle : m_circles)
            if (AABBvcBC(box, circle->GetBCWorld()) && circle->GetWaterCollide())
                Particles(*circle, r, particles);
        for (Polygon* polygon : m_polygons)
            if (AABBvcBC(box, polygon->GetBCWorld()) && Intersects(obb, polygon->GetOBBWorld()) &&
                polygon->GetWaterCollide())
                Particles(*polygon, r, particles);
        for (Box* b : m_boxes)
            if (AABBvcBC(box, b->GetBCWorld()) && Intersects(obb, b->GetOBBWorld()) &&
                b->GetWaterCollide())
                Particles(*b, r, particles);
    }

    void Particles(Geom& geom, float r, const ParticleList& particles)
    {
        for (const ParticlePtr& particle : particles)
        {
            const Vec2 p = particle->GetPos();
            const float d = geom.DistanceWorld(p);
            if (d < r)
                Add(geom, *particle->GetGeom(), 0, p, geom.NormalWorld(p), r - d);
        }
    }

    std::vector<Plane*> m_planes;
    std::vector<Polygon*> m_polygons;
    std::vector<Circle*> m_circles;
    std::vector<Box*> m_boxes;
};
}
