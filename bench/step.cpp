// How long is a step? Quib beside Box2D 2.4 and Chipmunk 7, the same worlds in the same process.
//
// Gravity 9.8, steps of 0.01 s, density 2, friction 0.5, restitution 0, 30 solver iterations (Box2D: 30
// velocity and 3 position iterations). No air, no sleeping, no continuous collision. What counts is the
// settled world: the median of steps 200 to 399, in CPU time of the thread.
//
// In the rubble a third of the polygons is concave: L shapes, which the peers get as two rectangles on
// one body. All three get the same vertices otherwise.

#include "logging/Logger.h"
#include "math/Vector.h"
#include "physics/Box.h"
#include "physics/Circle.h"
#include "physics/Contact.h"
#include "physics/Plane.h"
#include "physics/Polygon.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"

#include <benchmark/benchmark.h>
#include <box2d/box2d.h>
#include <chipmunk/chipmunk.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace
{
using math::Vec2;
using math::Vec2List;

const float Gravity = 9.8f;
const float TimeStep = 0.01f;
const float Density = 2;
const float Friction = 0.5f;
const int Iterations = 30;
const int FirstSettled = 200;
const int LastSettled = 399;

// --- the worlds, in terms that every engine understands ---

struct Shape
{
    enum Kind
    {
        Box,
        Circle,
        Polygon
    } kind;
    Vec2 pos;
    Vec2 size;                    // of a box; a circle has its radius in x
    Vec2List points;              // of a polygon, counter-clockwise, around pos
    std::vector<Vec2List> convex; // the same in convex pieces
};

struct World
{
    std::vector<math::Plane2D> planes; // solid where n * p + d < 0
    std::vector<Shape> shapes;
    // What must hold at the end, or the time does not count.
    float minTop;    // the highest shape is no lower
    float minBottom; // the lowest shape is no lower
};

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
            world.shapes.push_back({Shape::Box,
                                    Vec2(1.1f * (i - 0.5f * (base - row - 1)), row + 0.5f),
                                    Vec2(1, 1),
                                    {},
                                    {}});
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
                {Shape::Box,
                 Vec2(1.02f * (i - 19.75f + 0.5f * (row % 2)), 0.5f * row + 0.25f),
                 Vec2(1, 0.5f),
                 {},
                 {}});
    world.minTop = 12;
    world.minBottom = 0.2f;
    return world;
}

World MakeCircles()
{
    World world;
    AddBasin(world, 10);
    for (int row = 0; row < 50; ++row)
        for (int i = 0; i < 40; ++i)
            world.shapes.push_back(
                {Shape::Circle,
                 Vec2(0.5f * (i - 19.75f + 0.5f * (row % 2)), 0.45f * row + 0.3f),
                 Vec2(0.25f, 0),
                 {},
                 {}});
    world.minTop = 5;
    world.minBottom = 0.2f;
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

World MakeRubble()
{
    World world;
    AddBasin(world, 8);
    Numbers numbers;
    for (int i = 0; i < 300; ++i)
    {
        Shape shape{Shape::Polygon, Vec2(1.3f * (i % 15 - 7), 1.3f * (i / 15) + 1), Vec2(), {}, {}};
        if (i % 3 == 0)
        {
            const float w = numbers.Uniform(0.7f, 1.1f), h = numbers.Uniform(0.7f, 1.1f);
            const float t = numbers.Uniform(0.25f, 0.4f);
            shape.points = {Vec2(0, 0), Vec2(w, 0), Vec2(w, t), Vec2(t, t), Vec2(t, h), Vec2(0, h)};
            shape.convex = {{Vec2(0, 0), Vec2(w, 0), Vec2(w, t), Vec2(0, t)},
                            {Vec2(0, t), Vec2(t, t), Vec2(t, h), Vec2(0, h)}};
        }
        else
        {
            const int corners = 3 + i % 5;
            const float rx = numbers.Uniform(0.35f, 0.6f), ry = numbers.Uniform(0.35f, 0.6f);
            for (int k = 0; k < corners; ++k)
            {
                const float a = math::TwoPIf * (k + numbers.Uniform(-0.3f, 0.3f)) / corners;
                shape.points.push_back(Vec2(rx * std::cos(a), ry * std::sin(a)));
            }
            shape.convex = {shape.points};
        }
        const Vec2 centroid = CalcCentroid(shape.points);
        for (Vec2& p : shape.points)
            p -= centroid;
        for (Vec2List& piece : shape.convex)
            for (Vec2& p : piece)
                p -= centroid;
        world.shapes.push_back(shape);
    }
    world.minTop = 3;
    world.minBottom = 0;
    return world;
}

// --- the engines ---

class Engine
{
public:
    virtual ~Engine() = default;
    virtual void Step() = 0;
    virtual std::vector<Vec2> GetPositions() const = 0;
};

class QuibEngine : public Engine
{
public:
    explicit QuibEngine(const World& world)
        : m_sim(physics::Simulation::GetInstancePtr())
    {
        m_sim->Clear();
        m_sim->m_gravity = Vec2(0, -Gravity);
        m_sim->m_timeDelta = TimeStep;
        m_sim->m_airSwitch = false;
        m_sim->m_solveIter = Iterations;
        m_sim->m_defaultBodyDensity = Density;
        m_sim->m_defaultBodyFriction = Friction;
        m_sim->m_defaultBodyRestitution = 0.0f;
        for (const math::Plane2D& plane : world.planes)
            Add(QUIB_NEW physics::Plane(plane));
        for (const Shape& shape : world.shapes)
        {
            physics::GeomPtr geom;
            if (shape.kind == Shape::Box)
                geom = QUIB_NEW physics::Box(shape.size, shape.pos);
            else if (shape.kind == Shape::Circle)
                geom = QUIB_NEW physics::Circle(shape.pos, shape.size.x);
            else
            {
                Vec2List points = shape.points;
                for (Vec2& p : points)
                    p += shape.pos;
                geom = QUIB_NEW physics::Polygon(points);
            }
            m_bodies.push_back(Add(geom));
        }
    }
    ~QuibEngine() override { m_sim->Clear(); }

    void Step() override { m_sim->Step(true); }
    std::vector<Vec2> GetPositions() const override
    {
        std::vector<Vec2> all;
        for (const physics::BodyPtr& body : m_bodies)
            if (m_sim->HasBody(body))
                all.push_back(body->GetPos());
        return all;
    }

private:
    physics::BodyPtr Add(physics::GeomPtr geom)
    {
        physics::BodyPtr body = QUIB_NEW physics::Body;
        body->SetGeom(geom);
        m_sim->AddBody(body);
        return body;
    }

    physics::Simulation* m_sim;
    std::vector<physics::BodyPtr> m_bodies;
};

class Box2DEngine : public Engine
{
public:
    explicit Box2DEngine(const World& world)
        : m_world(b2Vec2(0, -Gravity))
    {
        m_world.SetAllowSleeping(false);
        m_world.SetContinuousPhysics(false);
        for (const math::Plane2D& plane : world.planes)
        {
            // A half plane is the top of a large box.
            b2BodyDef def;
            b2Body* body = m_world.CreateBody(&def);
            const Vec2 center = plane.normal * (-plane.d - 10);
            b2PolygonShape shape;
            shape.SetAsBox(10, 1000, b2Vec2(center.x, center.y),
                           std::atan2(plane.normal.y, plane.normal.x));
            AddFixture(body, shape, 0);
        }
        for (const Shape& shape : world.shapes)
        {
            b2BodyDef def;
            def.type = b2_dynamicBody;
            def.position.Set(shape.pos.x, shape.pos.y);
            b2Body* body = m_world.CreateBody(&def);
            if (shape.kind == Shape::Box)
            {
                b2PolygonShape box;
                box.SetAsBox(shape.size.x / 2, shape.size.y / 2);
                AddFixture(body, box, Density);
            }
            else if (shape.kind == Shape::Circle)
            {
                b2CircleShape circle;
                circle.m_radius = shape.size.x;
                AddFixture(body, circle, Density);
            }
            else
                for (const Vec2List& piece : shape.convex)
                {
                    std::vector<b2Vec2> points;
                    for (const Vec2& p : piece)
                        points.push_back(b2Vec2(p.x, p.y));
                    b2PolygonShape polygon;
                    polygon.Set(points.data(), static_cast<int>(points.size()));
                    AddFixture(body, polygon, Density);
                }
            m_bodies.push_back(body);
        }
    }

    void Step() override { m_world.Step(TimeStep, Iterations, 3); }
    std::vector<Vec2> GetPositions() const override
    {
        std::vector<Vec2> all;
        for (const b2Body* body : m_bodies)
            all.push_back(Vec2(body->GetWorldCenter().x, body->GetWorldCenter().y));
        return all;
    }

private:
    static void AddFixture(b2Body* body, const b2Shape& shape, float density)
    {
        b2FixtureDef def;
        def.shape = &shape;
        def.density = density;
        def.friction = Friction; // mixed as the geometric mean, like ours
        def.restitution = 0;
        body->CreateFixture(&def);
    }

    b2World m_world;
    std::vector<b2Body*> m_bodies;
};

class ChipmunkEngine : public Engine
{
public:
    explicit ChipmunkEngine(const World& world)
        : m_space(cpSpaceNew())
    {
        cpSpaceSetIterations(m_space, Iterations);
        cpSpaceSetGravity(m_space, cpv(0, -Gravity));
        cpSpaceSetCollisionSlop(m_space, 0.005); // as Box2D has it; the default is for pixels
        for (const math::Plane2D& plane : world.planes)
        {
            const Vec2 point = plane.normal * (-plane.d - 10);
            const Vec2 along = math::Rot90CCW(plane.normal) * 1000.0f;
            AddShape(cpSegmentShapeNew(cpSpaceGetStaticBody(m_space),
                                       cpv(point.x - along.x, point.y - along.y),
                                       cpv(point.x + along.x, point.y + along.y), 10));
        }
        for (const Shape& shape : world.shapes)
        {
            cpBody* body = cpBodyNew(0, 0); // the shapes bring the mass
            cpSpaceAddBody(m_space, body);
            cpBodySetPosition(body, cpv(shape.pos.x, shape.pos.y));
            m_bodies.push_back(body);
            if (shape.kind == Shape::Box)
                AddShape(cpBoxShapeNew(body, shape.size.x, shape.size.y, 0));
            else if (shape.kind == Shape::Circle)
                AddShape(cpCircleShapeNew(body, shape.size.x, cpvzero));
            else
                for (const Vec2List& piece : shape.convex)
                {
                    std::vector<cpVect> points;
                    for (const Vec2& p : piece)
                        points.push_back(cpv(p.x, p.y));
                    AddShape(
                        cpPolyShapeNewRaw(body, static_cast<int>(points.size()), points.data(), 0));
                }
        }
    }
    ~ChipmunkEngine() override
    {
        for (cpShape* shape : m_shapes)
        {
            cpSpaceRemoveShape(m_space, shape);
            cpShapeFree(shape);
        }
        for (cpBody* body : m_bodies)
        {
            cpSpaceRemoveBody(m_space, body);
            cpBodyFree(body);
        }
        cpSpaceFree(m_space);
    }

    void Step() override { cpSpaceStep(m_space, TimeStep); }
    std::vector<Vec2> GetPositions() const override
    {
        std::vector<Vec2> all;
        for (cpBody* body : m_bodies)
        {
            const cpVect p = cpBodyLocalToWorld(body, cpBodyGetCenterOfGravity(body));
            all.push_back(Vec2(static_cast<float>(p.x), static_cast<float>(p.y)));
        }
        return all;
    }

private:
    void AddShape(cpShape* shape)
    {
        cpSpaceAddShape(m_space, shape);
        if (cpShapeGetBody(shape) != cpSpaceGetStaticBody(m_space))
            cpShapeSetDensity(shape, Density);
        cpShapeSetFriction(shape, std::sqrt(Friction)); // mixed as the product
        cpShapeSetElasticity(shape, 0);
        m_shapes.push_back(shape);
    }

    cpSpace* m_space;
    std::vector<cpBody*> m_bodies;
    std::vector<cpShape*> m_shapes;
};

// --- measuring ---

double GetThreadSeconds()
{
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return t.tv_sec + 1e-9 * t.tv_nsec;
}

std::string CheckResult(const World& world, const Engine& engine)
{
    const std::vector<Vec2> positions = engine.GetPositions();
    if (positions.size() != world.shapes.size())
        return "a shape is gone";
    float top = -INFINITY, bottom = INFINITY;
    for (const Vec2& p : positions)
    {
        if (!math::IsFinite(p))
            return "a shape is nowhere";
        top = std::max(top, p.y);
        bottom = std::min(bottom, p.y);
    }
    if (top < world.minTop)
        return "the highest shape is at " + std::to_string(top);
    if (bottom < world.minBottom)
        return "the lowest shape is at " + std::to_string(bottom);
    return "";
}

// Best median by world and engine, in milliseconds.
std::map<std::string, std::map<std::string, double>> g_settled;

template<typename E>
void BM_Step(benchmark::State& state, World (*makeWorld)(), const char* worldName,
             const char* engineName)
{
    const World world = makeWorld();
    for (auto _ : state)
    {
        std::unique_ptr<Engine> engine(new E(world));
        std::vector<double> times;
        for (int step = 0; step <= LastSettled; ++step)
        {
            const double start = GetThreadSeconds();
            engine->Step();
            times.push_back(GetThreadSeconds() - start);
        }
        const std::string fault = CheckResult(world, *engine);
        if (!fault.empty())
        {
            state.SkipWithError(fault.c_str());
            return;
        }
        std::sort(times.begin() + FirstSettled, times.end());
        const double median = times[(FirstSettled + LastSettled + 1) / 2];
        state.SetIterationTime(median);
        double& best = g_settled[worldName][engineName];
        if (best == 0 || median * 1e3 < best)
            best = median * 1e3;
    }
}

void RegisterWorld(const char* name, World (*makeWorld)())
{
    const auto add = [name](const char* engine, auto function)
    {
        benchmark::RegisterBenchmark((std::string(name) + "/" + engine).c_str(), function)
            ->UseManualTime()
            ->Iterations(1)
            ->Repetitions(3)
            ->ReportAggregatesOnly()
            ->Unit(benchmark::kMillisecond);
    };
    add("quib", [=](benchmark::State& s) { BM_Step<QuibEngine>(s, makeWorld, name, "quib"); });
    add("box2d", [=](benchmark::State& s) { BM_Step<Box2DEngine>(s, makeWorld, name, "box2d"); });
    add("chipmunk",
        [=](benchmark::State& s) { BM_Step<ChipmunkEngine>(s, makeWorld, name, "chipmunk"); });
}

void PrintRatios()
{
    std::printf("\nSettled: median ms of steps %d to %d, best of 3 runs\n", FirstSettled,
                LastSettled);
    std::printf("%-10s %10s %10s %10s %14s\n", "world", "quib", "box2d", "chipmunk",
                "quib / box2d");
    for (auto& [world, engines] : g_settled)
        if (engines.count("quib") && engines.count("box2d"))
            std::printf("%-10s %10.3f %10.3f %10.3f %14.3f\n", world.c_str(), engines["quib"],
                        engines["box2d"], engines["chipmunk"], engines["quib"] / engines["box2d"]);
}
}

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RegisterWorld("pyramid", MakePyramid);
    RegisterWorld("wall", MakeWall);
    RegisterWorld("circles", MakeCircles);
    RegisterWorld("rubble", MakeRubble);
    benchmark::RunSpecifiedBenchmarks();
    PrintRatios();
    return 0;
}
