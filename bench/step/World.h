// The worlds of bench/step.cpp, in terms that every engine understands.
#pragma once

#include "math/Plane.h"
#include "math/Vector.h"

#include <string>
#include <vector>

namespace bench
{
using math::Vec2;
using math::Vec2List;

// All worlds: steps of 0.01 s, density 2, friction 0.5, restitution 0, no air, no sleeping, no
// continuous collision, 30 iterations (Box2D: 30 of velocity and 3 of position).
const float TimeStep = 0.01f;
const float Density = 2;
const float Friction = 0.5f;
const int Iterations = 30;

struct Shape
{
    enum Kind
    {
        Box,
        Circle,
        Polygon
    } kind;
    Vec2 pos;
    Vec2 size;                         // of a box; a circle has its radius in x
    Vec2List points = {};              // of a polygon, counter-clockwise, around pos
    std::vector<Vec2List> convex = {}; // the same in convex pieces
};

// Two shapes that turn about a common point and do not collide with each other.
struct HingePoint
{
    static const int Ground = -1;

    int a, b; // indices of shapes, or Ground
    Vec2 point;
};

struct World
{
    float gravity = 9.8f;              // downward
    std::vector<math::Plane2D> planes; // solid where n * p + d < 0
    std::vector<Shape> shapes;
    std::vector<HingePoint> hinges;
    std::vector<Vec2> particles; // of water, at rest; the peers have none
    // What must hold at the end, or the time does not count.
    float minTop;    // the highest shape is no lower
    float minBottom; // the lowest shape is no lower
};

// What a world is measured for. Ratios are to Box2D.
struct WorldEntry
{
    const char* name;
    World (*make)();
    float must, aim; // settled; 0 for none
    // Water has no peer: it is compared with what Box2D takes for that world. Null: for the same.
    const char* against = nullptr;
};

/// In the order of the table.
const std::vector<WorldEntry>& GetWorlds();
/// Falling: at most this in every world that has a goal.
const float MustFalling = 0.7f;
}
