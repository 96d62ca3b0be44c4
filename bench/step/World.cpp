#include "step/World.h"

#include <cmath>
#include <cstdint>

namespace bench
{
namespace
{
// The same numbers in every run and on every machine.
class Numbers
{
public:
    float Uniform(float a, float b)
    {
        m_state = m_state * 6364136223846793005ull + 1442695040888963407ull;
        return a + (b - a) * float(m_state >> 40) / float(1 << 24);
    }

private:
    uint64_t m_state = 1;
};

math::Plane2D MakePlane(Vec2 point, Vec2 normal)
{
    normal.Normalize();
    return math::Plane2D::FromPointNormal(point, normal);
}

void AddBasin(World& world, float halfWidth)
{
    world.planes.push_back(MakePlane(Vec2(0, 0), Vec2(0, 1)));
    world.planes.push_back(MakePlane(Vec2(-halfWidth, 0), Vec2(2, 1)));
    world.planes.push_back(MakePlane(Vec2(halfWidth, 0), Vec2(-2, 1)));
}

World MakePyramid()
{
    World world;
    world.planes.push_back(MakePlane(Vec2(0, 0), Vec2(0, 1)));
    const int base = 40;
    for (int row = 0; row < base; ++row)
        for (int i = 0; i < base - row; ++i)
            world.shapes.push_back(
                {Shape::Box, Vec2(1.1f * (i - 0.5f * (base - row - 1)), row + 0.5f), Vec2(1, 1)});
    world.minTop = base - 1;
    world.minBottom = 0.4f;
    return world;
}

// In running bond: every other row is shifted by half a brick.
World MakeWall()
{
    World world;
    world.planes.push_back(MakePlane(Vec2(0, 0), Vec2(0, 1)));
    for (int row = 0; row < 25; ++row)
        for (int i = 0; i < 40; ++i)
            world.shapes.push_back(
                {Shape::Box, Vec2(1.02f * (i - 19.75f + 0.5f * (row % 2)), 0.5f * row + 0.25f),
                 Vec2(1, 0.5f)});
    world.minTop = 12;
    world.minBottom = 0.2f;
    return world;
}

World MakeCircles()
{
    World world;
    AddBasin(world, 3.2f);
    Numbers numbers;
    for (int row = 0; row < 62; ++row)
        for (int i = 0; i < 32 + row % 2 && world.shapes.size() < 2000; ++i)
            world.shapes.push_back({Shape::Circle,
                                    Vec2(0.2f * (i - 15.5f - 0.5f * (row % 2)), 0.2f * row + 0.2f),
                                    Vec2(numbers.Uniform(0.05f, 0.1f), 0)});
    world.minTop = 3;
    world.minBottom = 0.03f;
    return world;
}

Vec2 CalcCentroid(const Vec2List& points)
{
    float area = 0;
    Vec2 sum;
    for (size_t i = 0; i < points.size(); ++i)
    {
        const Vec2 &a = points[i], &b = points[(i + 1) % points.size()];
        const float c = math::Cross(a, b);
        area += c;
        sum += (a + b) * c;
    }
    return sum / (3 * area);
}

void AddPolygon(World& world, Shape shape)
{
    const Vec2 centroid = CalcCentroid(shape.points);
    for (Vec2& p : shape.points)
        p -= centroid;
    for (Vec2List& piece : shape.convex)
        for (Vec2& p : piece)
            p -= centroid;
    world.shapes.push_back(shape);
}

// Points of an ellipse, so it is convex.
void MakeConvex(Shape& shape, int corners, Numbers& numbers)
{
    const float rx = numbers.Uniform(0.35f, 0.6f), ry = numbers.Uniform(0.35f, 0.6f);
    for (int k = 0; k < corners; ++k)
    {
        const float a = math::TwoPIf * (k + numbers.Uniform(-0.3f, 0.3f)) / corners;
        shape.points.push_back(Vec2(rx * std::cos(a), ry * std::sin(a)));
    }
    shape.convex = {shape.points};
}

World MakePolygons()
{
    World world;
    AddBasin(world, 8);
    Numbers numbers;
    for (int i = 0; i < 300; ++i)
    {
        Shape shape{Shape::Polygon, Vec2(1.2f * (i % 15 - 7), 1.2f * (i / 15) + 1), Vec2()};
        MakeConvex(shape, 8, numbers);
        AddPolygon(world, shape);
    }
    world.minTop = 3;
    world.minBottom = 0;
    return world;
}

// A third of these polygons is concave: L shapes, which the peers get as two rectangles on one body.
World MakeRubble()
{
    World world;
    AddBasin(world, 8);
    Numbers numbers;
    for (int i = 0; i < 300; ++i)
    {
        Shape shape{Shape::Polygon, Vec2(1.3f * (i % 15 - 7), 1.3f * (i / 15) + 1), Vec2()};
        if (i % 3 == 0)
        {
            const float w = numbers.Uniform(0.7f, 1.1f), h = numbers.Uniform(0.7f, 1.1f);
            const float t = numbers.Uniform(0.25f, 0.4f);
            shape.points = {Vec2(0, 0), Vec2(w, 0), Vec2(w, t), Vec2(t, t), Vec2(t, h), Vec2(0, h)};
            shape.convex = {{Vec2(0, 0), Vec2(w, 0), Vec2(w, t), Vec2(0, t)},
                            {Vec2(0, t), Vec2(t, t), Vec2(t, h), Vec2(0, h)}};
        }
        else
            MakeConvex(shape, 3 + i % 5, numbers);
        AddPolygon(world, shape);
    }
    world.minTop = 3;
    world.minBottom = 0;
    return world;
}

World MakeMixed()
{
    World world;
    AddBasin(world, 8);
    Numbers numbers;
    for (int i = 0; i < 1000; ++i)
    {
        const Vec2 pos(0.55f * (i % 25 - 12), 0.55f * (i / 25) + 0.5f);
        if (i % 2)
            world.shapes.push_back(
                {Shape::Box, pos, Vec2(numbers.Uniform(0.2f, 0.5f), numbers.Uniform(0.2f, 0.5f))});
        else
            world.shapes.push_back({Shape::Circle, pos, Vec2(numbers.Uniform(0.1f, 0.25f), 0)});
    }
    world.minTop = 3;
    world.minBottom = 0.05f;
    return world;
}

// Chains of circles between two points of the ground, hanging through at the end.
World MakeBridge()
{
    World world;
    const int chains = 10, links = 100;
    const float radius = 0.1f, length = 2 * radius;
    for (int chain = 0; chain < chains; ++chain)
    {
        const float y = 3.0f * chain;
        for (int i = 0; i <= links; ++i)
        {
            const int index = static_cast<int>(world.shapes.size());
            if (i < links)
                world.shapes.push_back(
                    {Shape::Circle, Vec2(length * i + radius, y), Vec2(radius, 0)});
            world.hinges.push_back({i > 0 ? index - 1 : HingePoint::Ground,
                                    i < links ? index : HingePoint::Ground, Vec2(length * i, y)});
        }
    }
    world.minTop = 3.0f * (chains - 1) - 2;
    world.minBottom = -10;
    return world;
}

World MakeSparse()
{
    World world;
    world.gravity = 0;
    for (int i = 0; i < 5000; ++i)
        world.shapes.push_back(
            {Shape::Box, Vec2(3.0f * (i % 100), 3.0f * (i / 100) + 0.5f), Vec2(1, 1)});
    world.minTop = 147;
    world.minBottom = 0.4f;
    return world;
}

World MakeSparseFall()
{
    World world = MakeSparse();
    world.gravity = 9.8f;
    world.minTop = 147 - 80;
    world.minBottom = -80;
    return world;
}

// A block of water at one side of a basin.
World MakeDamOf(int columns, int rows, float halfWidth)
{
    World world;
    AddBasin(world, halfWidth);
    for (int i = 0; i < columns * rows; ++i)
        world.particles.push_back(
            Vec2(-halfWidth + 0.1f + 0.09f * (i % columns), 0.05f + 0.09f * (i / columns)));
    world.minTop = 1.5f;
    world.minBottom = -0.05f;
    return world;
}
World MakeDam()
{
    return MakeDamOf(125, 80, 8);
}
World MakeDamSmall()
{
    return MakeDamOf(50, 40, 3.5f);
}
}

const std::vector<WorldEntry>& GetWorlds()
{
    static const std::vector<WorldEntry> s_worlds = {
        {"pyramid", MakePyramid, 0.55f, 0.28f},
        {"wall", MakeWall, 0.5f, 0.25f},
        {"circles", MakeCircles, 0.3f, 0.16f},
        {"polygons", MakePolygons, 0.8f, 0.5f},
        {"rubble", MakeRubble, 0, 0},
        {"bridge", MakeBridge, 1, 0.6f},
        {"mixed", MakeMixed, 0.4f, 0.2f},
        {"sparse", MakeSparse, 0.6f, 0.4f},
        {"sparse_fall", MakeSparseFall, 0.6f, 0.4f},
        {"dam", MakeDam, 0.36f, 0.26f, "wall"},
        {"dam_small", MakeDamSmall, 0.06f, 0.045f, "wall"},
    };
    return s_worlds;
}
}
