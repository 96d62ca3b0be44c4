#include "physics/DistanceMap.h"

#include "Dice.h"
#include "GeomFixture.h"
#include "util/HashSet.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <set>

namespace physics
{
using math::Vec2;
using math::Vec2List;
using math::Vec2u;
using util::Array2D;

namespace
{
std::vector<std::pair<int, int>> CellsOf(int x0, int y0, int x1, int y1)
{
    std::vector<std::pair<int, int>> cells;
    Bresenham(x0, y0, x1, y1, [&](int x, int y) { cells.emplace_back(x, y); });
    return cells;
}
using Cells = std::vector<std::pair<int, int>>;
}

TEST(Bresenham, VisitsBothEndsAndOneCellForEachStepOfTheLongerAxis)
{
    EXPECT_EQ((Cells{{0, 0}, {1, 0}, {2, 1}, {3, 1}, {4, 2}}).size(), CellsOf(0, 0, 4, 2).size());
    EXPECT_EQ((Cells{{3, 3}}), CellsOf(3, 3, 3, 3));
    EXPECT_EQ((Cells{{0, 5}, {1, 5}, {2, 5}}), CellsOf(2, 5, 0, 5));
    EXPECT_EQ((Cells{{5, 0}, {5, 1}, {5, 2}}), CellsOf(5, 2, 5, 0));
    EXPECT_EQ((Cells{{0, 0}, {1, 1}, {2, 2}}), CellsOf(2, 2, 0, 0));
    EXPECT_EQ((Cells{{0, 2}, {1, 1}, {2, 0}}), CellsOf(0, 2, 2, 0));
}

TEST(Bresenham, StepsWhenTwiceTheErrorReachesTheLength)
{
    // dx 4, dy 1: the error is 1, 2 (2 * 2 >= 4: step), -1, 0.
    EXPECT_EQ((Cells{{0, 0}, {1, 0}, {2, 1}, {3, 1}, {4, 1}}), CellsOf(0, 0, 4, 1));
    EXPECT_EQ((Cells{{0, 0}, {0, 1}, {1, 2}, {1, 3}, {1, 4}}), CellsOf(0, 0, 1, 4));
    EXPECT_EQ((Cells{{0, 1}, {1, 1}, {2, 0}, {3, 0}, {4, 0}}), CellsOf(4, 0, 0, 1));
}

TEST(Bresenham, ReachesBothEndsWhereverTheyAre)
{
    for (int x = -6; x <= 6; ++x)
        for (int y = -6; y <= 6; ++y)
        {
            const Cells cells = CellsOf(0, 0, x, y);
            EXPECT_EQ(std::max(std::abs(x), std::abs(y)) + 1u, cells.size());
            EXPECT_EQ(1, std::count(cells.begin(), cells.end(), std::make_pair(x, y)));
            EXPECT_EQ(1, std::count(cells.begin(), cells.end(), std::make_pair(0, 0)));
        }
}

namespace
{
// The plain version of the map build, with an ordered set for the queue and a hash set for the cells
// of a line: slow, and what the fast one must agree with to the bit.
class PlainMaps
{
public:
    explicit PlainMaps(const Polygon& polygon)
        : dist(64, 64)
        , edgePos(64, 64)
        , normal(64, 64)
        , m_polygon(polygon)
        , m_cells(64, 64)
    {
        BuildDist();
        BuildNormals();
    }

    Array2D<float> dist, edgePos;
    Array2D<Vec2> normal;

private:
    struct BuildCell
    {
        const Linesegment* closest = nullptr;
        float distSq = std::numeric_limits<float>::infinity();
        bool done = false;
    };
    struct CellDistPair
    {
        BuildCell* cell;
        float distSq;
        bool operator<(const CellDistPair& o) const
        {
            return distSq < o.distSq || (distSq == o.distSq && cell < o.cell);
        }
    };
    using Queue = std::set<CellDistPair>;

    void UpdateQueue(Queue& queue, BuildCell& cell, const Linesegment& line, Vec2 p)
    {
        const float d = line.DistanceSq(p);
        if (d < cell.distSq)
        {
            cell.closest = &line;
            cell.distSq = d;
            queue.insert(CellDistPair{&cell, d});
        }
    }

    void BuildDist()
    {
        for (unsigned x = 0; x < 64; ++x)
            for (unsigned y = 0; y < 64; ++y)
                m_cells(x, y) = BuildCell();
        Queue queue;
        util::HashSet<Vec2u> cells;
        const LinesegmentList& lines = m_polygon.GetLines();
        for (const Linesegment& line : lines)
        {
            const Vec2 p0 = TransformCoordinate(m_polygon.GetPolyToMap(), line.p0);
            const Vec2 p1 = TransformCoordinate(m_polygon.GetPolyToMap(), line.p1);
            cells.clear();
            Bresenham(static_cast<int>(std::floor(p0.x + 0.5f)),
                      static_cast<int>(std::floor(p0.y + 0.5f)),
                      static_cast<int>(std::floor(p1.x + 0.5f)),
                      static_cast<int>(std::floor(p1.y + 0.5f)),
                      [&](int x, int y) { cells.insert(Vec2u(x, y)); });
            for (const Vec2u& c : cells)
                UpdateQueue(queue, m_cells(c.x, c.y), line, m_polygon.MapToWorld(c));
        }
        while (!queue.empty())
        {
            BuildCell& cell = *queue.begin()->cell;
            queue.erase(queue.begin());
            if (cell.done)
                continue;
            cell.done = true;
            const int index = static_cast<int>(&cell - m_cells.data()), x = index % 64,
                      y = index / 64;
            for (int nx = x - 1; nx <= x + 1; ++nx)
                for (int ny = y - 1; ny <= y + 1; ++ny)
                    if (nx >= 0 && ny >= 0 && nx < 64 && ny < 64 && !m_cells(nx, ny).done)
                        UpdateQueue(queue, m_cells(nx, ny), *cell.closest,
                                    m_polygon.MapToWorld(Vec2u(nx, ny)));
        }

        const Vec2List& v = m_polygon.GetVertices();
        const size_t n = v.size();
        Vec2List pseudoNormals;
        std::vector<float> starts(1);
        for (size_t i = 0; i < n; ++i)
        {
            const Vec2 a = Normalized(v[(i + 1) % n] - v[i]),
                       b = Normalized(v[i] - v[(i + n - 1) % n]);
            pseudoNormals.push_back(math::Rot90CW(Normalized(a + b)));
            starts.push_back(starts.back() + Distance(lines[i].p0, lines[i].p1));
        }
        for (unsigned x = 0; x < 64; ++x)
            for (unsigned y = 0; y < 64; ++y)
            {
                const Linesegment& line = *m_cells(x, y).closest;
                const size_t i = &line - &lines[0];
                const Vec2 p = m_polygon.MapToWorld(Vec2u(x, y));
                float t;
                const Vec2 c = line.ClosestPoint(p, t);
                float d = (c - p).Length();
                if (c == line.p0)
                    d = Dot(p - c, pseudoNormals[i]) < 0 ? -d : d;
                else if (c == line.p1)
                    d = Dot(p - c, pseudoNormals[(i + 1) % n]) < 0 ? -d : d;
                else if (line.IsPointOnTheLeft(p))
                    d = -d;
                dist(x, y) = d;
                edgePos(x, y) = (1 - t) * starts[i] + t * starts[i + 1];
            }
    }

    void BuildNormals()
    {
        const math::Mat3 mapToPoly = Inverted(m_polygon.GetPolyToMap());
        for (unsigned x = 0; x < 64; ++x)
            for (unsigned y = 0; y < 64; ++y)
            {
                Vec2 g;
                if (x == 0)
                    g.x = 2 * (dist(1, y) - dist(0, y));
                else if (x == 63)
                    g.x = 2 * (dist(63, y) - dist(62, y));
                else
                    g.x = dist(x + 1, y) - dist(x - 1, y);
                if (y == 0)
                    g.y = 2 * (dist(x, 1) - dist(x, 0));
                else if (y == 63)
                    g.y = 2 * (dist(x, 63) - dist(x, 62));
                else
                    g.y = dist(x, y + 1) - dist(x, y - 1);
                normal(x, y) = Normalized(TransformNormal2D(mapToPoly, g));
            }
    }

    const Polygon& m_polygon;
    Array2D<BuildCell> m_cells;
};

Vec2List RandomOutline(test::Dice& dice)
{
    const int n = dice.OneIn(10) ? dice.Int(100, 400) : dice.Int(3, 30);
    const float size = std::pow(10.0f, dice.Uniform(-2, 3)), flat = dice.Uniform(0.02f, 1);
    const float least = dice.Uniform(0.2f, 1);
    Vec2List points;
    for (int i = 0; i < n; ++i)
    {
        const float a = math::TwoPIf * i / n, r = size * dice.Uniform(least, 1);
        points.push_back(Vec2(r * std::cos(a), flat * r * std::sin(a)));
    }
    return points;
}

class DistanceMapTest : public GeomFixture
{
};
}

TEST_F(DistanceMapTest, AgreesWithThePlainBuildToTheBit)
{
    test::Dice dice;
    int built = 0;
    for (int round = 0; round < 150; ++round)
    {
        PolygonPtr p;
        try
        {
            p = QUIB_NEW Polygon(RandomOutline(dice));
        }
        catch (Exception&)
        {
            continue;
        }
        ++built;
        const PlainMaps plain(*p);
        const size_t n = 64 * 64;
        ASSERT_EQ(0, std::memcmp(plain.dist.data(), p->GetDistMap().data(), n * sizeof(float)));
        ASSERT_EQ(0,
                  std::memcmp(plain.edgePos.data(), p->GetEdgePosMap().data(), n * sizeof(float)));
        ASSERT_EQ(0, std::memcmp(plain.normal.data(), p->GetNormalMap().data(), n * sizeof(Vec2)));
    }
    EXPECT_GT(built, 120);
}

TEST_F(DistanceMapTest, IsAlwaysSixtyFourSquare)
{
    EXPECT_EQ(Vec2u(64, 64), CalcMapSize(Vec2(0.001f, 1000)));
    EXPECT_EQ(Vec2u(64, 64), CalcMapSize(Vec2(1e6f, 1e6f)));
    for (float width : {0.01f, 1.0f, 1000.0f})
    {
        PolygonPtr p = QUIB_NEW Polygon({Vec2(0, 0), Vec2(width, 0), Vec2(width, 1), Vec2(0, 1)});
        EXPECT_EQ(64u, p->GetMapWidth());
        EXPECT_EQ(64u, p->GetMapHeight());
        EXPECT_EQ(64u, p->GetDistMap().GetWidth());
        EXPECT_EQ(64u, p->GetNormalMap().GetHeight());
        EXPECT_EQ(64u, p->GetEdgePosMap().GetHeight());
    }
}

TEST_F(DistanceMapTest, ReachesTwoStepsOfSlackBeyondTheBox)
{
    EXPECT_EQ(0.1f, Polygon::MapSlack);
    // 64 wide: a step of slack is a sixty-fourth of the box along, 0.1 across.
    PolygonPtr p = QUIB_NEW Polygon({Vec2(0, 0), Vec2(64, 0), Vec2(64, 2), Vec2(0, 2)});
    const Vec2 half = p->GetOBB().GetHalfSize();
    const int x = half.x > half.y ? 0 : 1;
    EXPECT_NEAR(32, half[x], 1e-3f);
    EXPECT_NEAR(34, p->GetMapOBB().GetHalf(x), 1e-3f);
    EXPECT_NEAR(1, half[1 - x], 1e-3f);
    EXPECT_NEAR(1.2f, p->GetMapOBB().GetHalf(1 - x), 1e-3f);
}

TEST_F(DistanceMapTest, WholeMapCoordinatesAreTheCentersOfCells)
{
    PolygonPtr p = QUIB_NEW Polygon({Vec2(-1, -1), Vec2(1, -1), Vec2(1, 1), Vec2(-1, 1)});
    const math::OBB2D& map = p->GetMapOBB();
    // The region's corner along -x -y has the coordinates (-0.5, -0.5), the opposite one (63.5, 63.5).
    const Vec2 x = map.GetAxis(0) * map.GetHalf(0), y = map.GetAxis(1) * map.GetHalf(1);
    ExpectNear(map.GetCenter() - x - y, p->MapToWorld(-0.5f, -0.5f), 1e-4f);
    ExpectNear(map.GetCenter() + x + y, p->MapToWorld(63.5f, 63.5f), 1e-4f);
    ExpectNear(map.GetCenter(), p->MapToWorld(31.5f, 31.5f), 1e-4f);
    EXPECT_EQ(p->MapToWorld(3, 7), p->MapToWorld(Vec2u(3, 7)));
    // At the centers of cells the query is the cell's value.
    for (unsigned i = 0; i < 64; i += 7)
        EXPECT_NEAR(p->GetDistMap()(i, 63 - i), p->DistancePolygon(p->MapToWorld(Vec2u(i, 63 - i))),
                    1e-4f);
}

// Deliberate: despite its name it stays in polygon space.
TEST_F(DistanceMapTest, MapToWorldGoesToPolygonSpace)
{
    PolygonPtr p = QUIB_NEW Polygon({Vec2(-1, -1), Vec2(1, -1), Vec2(1, 1), Vec2(-1, 1)});
    const Vec2 before = p->MapToWorld(5, 9);
    p->SetWorldPose(math::Mat2D::TranslationRotation(Vec2(100, 200), 1));
    EXPECT_EQ(before, p->MapToWorld(5, 9));
    EXPECT_LT(before.Length(), 2);
}

TEST_F(DistanceMapTest, ItsCornerIsPositive)
{
    test::Dice dice;
    for (int round = 0; round < 50; ++round)
    {
        PolygonPtr p;
        try
        {
            p = QUIB_NEW Polygon(RandomOutline(dice));
        }
        catch (Exception&)
        {
            continue;
        }
        EXPECT_GT(p->GetDistMap()(0, 0), 0);
        EXPECT_GT(p->GetDistMap()(63, 63), 0);
    }
}

TEST_F(DistanceMapTest, EdgePositionsRunAlongThePerimeter)
{
    PolygonPtr p = QUIB_NEW Polygon({Vec2(0, 0), Vec2(4, 0), Vec2(4, 4), Vec2(0, 4)});
    // The cell nearest to the middle of edge i lies half a side further along.
    for (int i = 0; i < 4; ++i)
    {
        const Linesegment& line = p->GetLines()[i];
        const Vec2 q = TransformCoordinate(p->GetPolyToMap(), (line.p0 + line.p1) * 0.5f);
        const float pos = p->GetEdgePosMap()(static_cast<unsigned>(q.x + 0.5f),
                                             static_cast<unsigned>(q.y + 0.5f));
        EXPECT_NEAR(4 * i + 2, pos, 0.1f);
    }
}

// Deliberate: the edge positions are kept for who may want them, and have no say in any query.
TEST_F(DistanceMapTest, NothingReadsTheEdgePositions)
{
    PolygonPtr p = QUIB_NEW Polygon({Vec2(0, 0), Vec2(4, 0), Vec2(4, 4), Vec2(0, 4)});
    const float distance = p->DistanceWorld(Vec2(1, 2));
    const Vec2 normal = p->NormalWorld(Vec2(1, 2));
    Array2D<float>& edges = const_cast<Array2D<float>&>(p->GetEdgePosMap());
    for (unsigned i = 0; i < 64; ++i)
        for (unsigned j = 0; j < 64; ++j)
            edges(i, j) = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(distance, p->DistanceWorld(Vec2(1, 2)));
    EXPECT_EQ(normal, p->NormalWorld(Vec2(1, 2)));
    EXPECT_EQ(Vec2(0, 2), p->GetClosestEdge(Vec2(1, 2)));
}

TEST_F(DistanceMapTest, TheShortWayInsideAgreesWithTheDistance)
{
    test::Dice dice(7);
    int inside = 0;
    for (int shape = 0; shape < 30; ++shape)
    {
        PolygonPtr p;
        try
        {
            p = QUIB_NEW Polygon(RandomOutline(dice));
        }
        catch (const std::exception&)
        {
            continue;
        }
        for (int round = 0; round < 5; ++round)
        {
            const math::Mat2D pose = math::Mat2D::TranslationRotation(
                Vec2(dice.Uniform(-9, 9), dice.Uniform(-9, 9)), dice.Uniform(-4, 4));
            p->SetWorldPose(pose);
            const math::BoundingCircle bc = p->GetBCWorld();
            for (int i = 0; i < 400; ++i)
            {
                const float r = 1.5f * bc.radius;
                const Vec2 point = bc.center + Vec2(dice.Uniform(-r, r), dice.Uniform(-r, r));
                const float expected = p->DistanceWorld(point);
                const float actual = p->DistanceInsideWorld(point);
                if (expected < 0)
                {
                    ++inside;
                    ASSERT_EQ(expected, actual);
                }
                else
                    ASSERT_FALSE(actual < 0);
            }
        }
    }
    EXPECT_GT(inside, 1000);
}
}
