// The geometry of everything drawn by hand: any simple polygon, concave as it comes.
//
// Queries do not walk the outline. At construction the polygon computes a fixed grid of signed
// distances and one of normals in its own space (DistanceMap.cpp), and every later query is a bilinear
// look-up. The map's resolution goes with the polygon's size: 64 cells across.
#pragma once

#include "math/Matrix.h"
#include "physics/Geom.h"
#include "physics/Linesegment.h"
#include "util/Array2D.h"

#include <cstddef>
#include <vector>

namespace physics
{
class Polygon final : public Geom
{
public:
    /// How far the map reaches beyond the polygon's box at least, in world units and per step of slack.
    static constexpr float MapSlack = 0.1f;

    /// More would keep the program busy for minutes.
    static constexpr size_t MaxPoints = 100000;

    /// Takes some 0.4 ms with 20 points, and 60 ms with 10,000, as it grows with the square of their
    /// number (bench/polygon).
    /// @param points  3 to MaxPoints, either orientation, not a closed ring, world space
    /// @throws BadDataException  "Bad polygon", "Self-intersecting polygon", "Polygon with more than
    ///                           100000 points", or an assertion, for an outline without area
    /// @throws Exception  "Bad distance map generated"
    explicit Polygon(const math::Vec2List& points);

    /// The axis-aligned rectangle with the opposite corners a and b. Its sixteen vertices, two of them
    /// just beside each corner, are its collision sample points. Deliberate: the last argument has no
    /// effect.
    static util::SharedPtr<Polygon> CreateBox(math::Vec2 a, math::Vec2 b, math::real);

    /// A new geometry without a body, which shares the maps with this one. Deliberate: without the air friction
    /// multiplier and the no-collide set of this one.
    util::SharedPtr<Polygon> Clone() const;
    /// A new polygon, scaled in world coordinates about the world's origin, with this one's pose and
    /// material. Throws as the constructor does.
    util::SharedPtr<Polygon> Scale(math::Vec2 s) const;

    float DistanceWorld(const math::Vec2& p) const override;
    math::Vec2 NormalWorld(const math::Vec2& p) const override;
    float Area() const override { return m_area; }
    float InertiaSansMass() const override { return m_inertiaSansMass; }
    math::Vec2 GetClosestEdge(math::Vec2 p) const override;
    math::BoundingBox GetAABBWorld() const override { return m_aabbWorld; }
    math::OBB2D GetOBBWorld() const override { return m_obbWorld; }
    math::BoundingCircle GetBCWorld() const override { return m_bcWorld; }
    void SetWorldPose(const math::Mat2D& pose) override;

    /// In polygon space. Outside the map's region it is the distance to the oriented box, which may be
    /// smaller than the true one.
    float DistancePolygon(const math::Vec2& p) const;
    /// In polygon space. (0, 0) outside the map's region.
    math::Vec2 NormalPolygon(const math::Vec2& p) const;
    /// For who asks whether, and how deep, a point of the world is inside: DistanceWorld where that is
    /// negative, else anything that is not. Mostly spares the look into the map.
    float DistanceInsideWorld(const math::Vec2& p) const;

    /// Whether all of the other polygon lies inside this one, as far as vertices can tell.
    bool Contains(const Polygon& other) const;
    /// How often the segments cross the outline.
    int IntersectCount(const LinesegmentList& list) const;

    /// Counter-clockwise, with the origin at the centroid.
    const math::Vec2List& GetVertices() const { return m_vertices; }
    const math::Vec2List& GetWorldVertices() const { return m_worldVertices; }
    /// Line i runs from vertex i to the next; the last closes the ring.
    const LinesegmentList& GetLines() const { return m_lines; }
    const LinesegmentList& GetWorldLines() const
    {
        if (m_areWorldLinesOld)
            UpdateWorldLines();
        return m_worldLines;
    }
    /// In polygon space.
    const math::BoundingCircle& GetBC() const { return m_bc; }
    const math::OBB2D& GetOBB() const { return m_obb; }
    /// The region that the map covers, polygon space.
    const math::OBB2D& GetMapOBB() const { return m_mapOBB; }
    math::OBB2D GetMapOBBWorld() const { return math::OBB2D::Transform(GetPose(), m_mapOBB); }
    float GetPerimeter() const { return m_perimeter; }

    /// Cell (x, y) holds the value at its center, which has the map coordinates (x, y).
    const util::Array2D<float>& GetDistMap() const { return m_maps->dist; }
    /// Position along the perimeter of the outline point nearest to each cell. Deliberate: nothing
    /// reads it here; it is kept for whoever needs a position along the outline.
    const util::Array2D<float>& GetEdgePosMap() const { return m_maps->edgePos; }
    const util::Array2D<math::Vec2>& GetNormalMap() const { return m_maps->normal; }
    unsigned GetMapWidth() const { return m_mapWidth; }
    unsigned GetMapHeight() const { return m_mapHeight; }
    const math::Mat3& GetPolyToMap() const { return m_polyToMap; }
    /// Deliberate: despite the name, map coordinates to polygon space.
    math::Vec2 MapToWorld(float x, float y) const
    {
        return math::TransformCoordinate(m_mapToPoly, math::Vec2(x, y));
    }
    math::Vec2 MapToWorld(math::Vec2u cell) const
    {
        return MapToWorld(static_cast<float>(cell.x), static_cast<float>(cell.y));
    }

private:
    // They depend on the outline alone and never change.
    struct Maps : public util::Pointee
    {
        util::Array2D<float> dist;        // world units
        util::Array2D<float> edgePos;     // world units along the outline
        util::Array2D<math::Vec2> normal; // unit vectors, polygon space
    };

    Polygon(const Polygon&) = default;

    math::Vec2 CalcAttribs();
    void CalcDistMap();
    void CalcNormalMap();
    void CalcInsideBounds();
    void UpdateWorldLines() const;
    math::Vec2 PolygonToMap(const math::Vec2& p) const
    {
        // The third row is (0, 0, 1): no division needed.
        return math::Vec2(m_polyToMap[0][0] * p.x + m_polyToMap[0][1] * p.y + m_polyToMap[0][2],
                          m_polyToMap[1][0] * p.x + m_polyToMap[1][1] * p.y + m_polyToMap[1][2]);
    }

    math::Vec2List m_vertices; // polygon space
    math::Vec2List m_worldVertices;
    LinesegmentList m_lines; // polygon space
    // Made when they are asked for, which most that move are not between two steps.
    mutable LinesegmentList m_worldLines;
    mutable bool m_areWorldLinesOld = true;
    math::BoundingCircle m_bc; // polygon space
    math::BoundingCircle m_bcWorld;
    math::BoundingBox m_aabbWorld;
    math::OBB2D m_obb; // polygon space
    math::OBB2D m_obbWorld;
    math::OBB2D m_mapOBB; // m_obb with slack, polygon space
    math::Mat3 m_polyToMap;
    math::Mat3 m_mapToPoly;
    unsigned m_mapWidth = 0;
    unsigned m_mapHeight = 0;
    util::SharedPtr<Maps> m_maps; // of all clones
    // The samples of the distance map can be negative here only; map coordinates.
    math::Vec2 m_insideMin, m_insideMax;
    float m_area = 0;
    float m_inertiaSansMass = 0;
    float m_perimeter = 0;
};

using PolygonPtr = util::SharedPtr<Polygon>;

/// Deliberate: (64, 64) whatever the size.
math::Vec2u CalcMapSize(math::Vec2 size);

/// Appends p and the points at 1/32, 1/2 and 31/32 of the way from p to q.
void AddPolygonSide(math::Vec2List& list, const math::Vec2& p, const math::Vec2& q);

/// Splits the sides of a ring evenly, so that none is longer than maxDist; sides without length
/// vanish.
/// @param list  a closed ring: the last point equals the first
/// @return      the ring without the closing point
math::Vec2List AssertMaxDist(const math::Vec2List& list, float maxDist);

/// Keeps the first point, and of the rest each that is farther than minDist from the last one kept.
/// When the last is closer than that to the first, both become their midpoint.
math::Vec2List AssertMinDist(const math::Vec2List& list, float minDist);
}
