#include "app/entities/FiniteGeomEntity.h"

#include "app/App.h"
#include "app/EntitySerializer.h"
#include "input/DirInput.h"
#include "logging/Log.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"

#include <algorithm>
#include <cmath>
#include <utility>

using math::Vec2;

namespace app
{
namespace
{
float DefaultControllerAcc()
{
    return physics::Simulation::GetInstancePtr()->GetGravity().Length() + 1.0f;
}

// How many points of a grid are looked at for one that is wanted.
const double MaxGridPerPoint = 100;

// The points of a square grid over a box, from half a spacing inside. Counted, not added up: a step may
// be less than a rounding of the place.
class PointGrid
{
public:
    /// @param most  what is too thin for the grid has a single row of at most that many points
    PointGrid(const math::OBB2D& box, double spacing, size_t most)
        : m_box(box)
    {
        for (int i = 0; i < 2; ++i)
        {
            m_axes[i].length = 2 * double(box.GetHalf(i));
            m_axes[i].step = spacing;
            m_axes[i].count = std::max(0.0, std::ceil(m_axes[i].length / spacing - 0.5));
        }
        for (int i = 0; i < 2; ++i)
            if (m_axes[i].count == 0)
            {
                m_axes[i].Spread(1);
                m_axes[1 - i].Spread(std::min(m_axes[1 - i].count, double(most)));
            }
    }

    double Size() const { return m_axes[0].count * m_axes[1].count; }

    std::vector<Vec2> FindInside(const physics::Geom& geom) const
    {
        std::vector<Vec2> points;
        for (size_t row = 0; row < m_axes[1].count; ++row)
            for (size_t column = 0; column < m_axes[0].count; ++column)
            {
                const Vec2 p = m_box.GetCenter() + m_axes[0].At(column) * m_box.GetAxis(0) +
                               m_axes[1].At(row) * m_box.GetAxis(1);
                if (geom.DistanceWorld(p) < 0)
                    points.push_back(p);
            }
        return points;
    }

private:
    struct Axis
    {
        double length, step, count; // the count is whole, and may be beyond all integers

        float At(size_t i) const { return float((double(i) + 0.5) * step - length / 2); }
        void Spread(double n)
        {
            count = n;
            step = length / n;
        }
    };

    math::OBB2D m_box;
    Axis m_axes[2];
};
}

FiniteGeomEntity::FiniteGeomEntity(const util::SharedPtr<physics::Geom>& geom)
    : GeomEntity(geom)
    , m_density(this, "density", physics::Simulation::GetInstancePtr()->m_defaultBodyDensity)
    , m_airFrictionMult(this, "airFrictionMult", 1.0f)
    , m_controllerAcc(this, "controllerAcc", DefaultControllerAcc())
    , m_controllerReverseXY(this, "controllerReverseXY", false)
    , m_controllerInvertX(this, "controllerInvertX", false)
    , m_controllerInvertY(this, "controllerInvertY", false)
{
    m_density = geom->GetDensity();
    m_airFrictionMult = geom->GetAirFrictionMult();
    PushToGeom(m_density, &physics::Geom::SetDensity);
    PushToGeom(m_airFrictionMult, &physics::Geom::SetAirFrictionMult);
}

FiniteGeomEntity::~FiniteGeomEntity() = default;

std::vector<Vec2> FiniteGeomEntity::GetEquidistantPoints() const
{
    std::vector<Vec2> points;
    const float r = physics::SPH::GetInstancePtr()->m_radius;
    const float area = GetGeom()->Area();
    const float n = std::min(std::floor(area / (r * r / 2)),
                             static_cast<float>(App::GetInstancePtr()->GetMaxSPHSpawn()));
    // Written so that a NaN makes no water either.
    if (!(n >= 1))
        return points;
    const size_t count = static_cast<size_t>(n);
    const math::OBB2D box = GetGeom()->GetOBBWorld();
    const double most = double(n) * MaxGridPerPoint;
    double spacing = std::sqrt(double(area) / n);
    PointGrid grid(box, spacing, count);
    // A shape that fills little of its box has a wider grid instead of one that takes forever.
    if (grid.Size() > most)
    {
        spacing *= std::sqrt(grid.Size() / most);
        grid = PointGrid(box, spacing, count);
    }
    points = grid.FindInside(*GetGeom());
    // And one with thin arms a narrower one, when they lie between the points.
    while (points.empty())
    {
        spacing /= 2;
        grid = PointGrid(box, spacing, count);
        if (!(grid.Size() <= most) || !(spacing > 0))
        {
            Log(logging::LogWarning, "Found no place for water in the shape");
            return points;
        }
        points = grid.FindInside(*GetGeom());
    }
    // Rows and columns are whole numbers, so that there may be more than there ought to be.
    if (const size_t limit = App::GetInstancePtr()->GetMaxSPHSpawn(); points.size() > limit)
    {
        for (size_t i = 0; i < limit; ++i)
            points[i] = points[i * points.size() / limit];
        points.resize(limit);
    }
    return points;
}

float FiniteGeomEntity::CalcEnergy() const
{
    const physics::Geom& geom = *GetGeom();
    const physics::AbstractBody* body = geom.GetBodyPtr();
    if (!body)
        return 0;
    const Vec2 pos = geom.GetCenter();
    const float mass = geom.Mass();
    return 0.5f * mass * body->GetVelAtWorld(pos).LengthSq() +
           0.5f * geom.Inertia() * body->GetAngVel() * body->GetAngVel() -
           mass * Dot(physics::Simulation::GetInstancePtr()->GetGravity(), pos);
}

void FiniteGeomEntity::CopyFrom(const Entity* other)
{
    GeomEntity::CopyFrom(other);
    const FiniteGeomEntity* o = other->AsFiniteGeomEntity();
    if (!o)
        return;
    CopyBinding(m_density, o->m_density);
    CopyBinding(m_airFrictionMult, o->m_airFrictionMult);
    CopyBinding(m_controllerAcc, o->m_controllerAcc);
    CopyBinding(m_controllerReverseXY, o->m_controllerReverseXY);
    CopyBinding(m_controllerInvertX, o->m_controllerInvertX);
    CopyBinding(m_controllerInvertY, o->m_controllerInvertY);
    m_forceController = o->m_forceController;
    m_unboundController = o->m_unboundController;
}

void FiniteGeomEntity::SetForceController(const input::DirInputPtr& controller)
{
    m_forceController = controller;
    m_unboundController.clear();
}

util::String FiniteGeomEntity::GetControllerText() const
{
    return m_forceController ? m_forceController->Serialize() : m_unboundController;
}

void FiniteGeomEntity::Update(float dt)
{
    GeomEntity::Update(dt);
    if (!m_forceController)
        return;
    const util::SharedPtr<physics::Body> body = GetBody();
    if (!body)
        return;
    Vec2 dir = m_forceController->GetDir();
    if (m_controllerReverseXY)
        std::swap(dir.x, dir.y);
    if (m_controllerInvertX)
        dir.x = -dir.x;
    if (m_controllerInvertY)
        dir.y = -dir.y;
    // With the geometry's own mass at its own place, so that a bigger body spins.
    body->ApplyForce(m_controllerAcc * GetGeom()->Mass() * dir, GetGeom()->GetCenter());
}

void FiniteGeomEntity::SerializeTo(EntitySerializer& serializer) const
{
    // The default goes with the gravity: a file is read under the gravity that it is written with.
    m_controllerAcc->SetDefault(DefaultControllerAcc());
    GeomEntity::SerializeTo(serializer);
    const util::String controller = GetControllerText();
    if (!controller.empty() || serializer.KeepsDefaults())
        serializer.Set("forceController", controller);
}

void FiniteGeomEntity::Deserialize(const EntitySerializer& serializer)
{
    // First, as the base reaches out into the scene at its end.
    if (serializer.Has("forceController"))
    {
        const util::String text = serializer.Get<util::String>("forceController");
        // The same again is not read: each undo would warn anew of what can't be bound here.
        if (text != GetControllerText())
        {
            m_forceController = text.empty() ? nullptr : input::DirInput::Deserialize(text);
            // What can't be bound here is written again: a scene must not lose it by being saved.
            m_unboundController = m_forceController ? "" : text;
        }
    }
    GeomEntity::Deserialize(serializer);
}

void FiniteGeomEntity::Check() const
{
    GeomEntity::Check();
    if (!math::IsFinite(m_airFrictionMult))
        QUIB_THROW(BadDataException("Bad airFrictionMult"));
    if (!math::IsFinite(m_controllerAcc))
        QUIB_THROW(BadDataException("Bad controllerAcc"));
    // What has no end can't move, and the numbers of its body would be no numbers.
    if (!math::IsFinite(GetGeom()->Mass()) || !math::IsFinite(GetGeom()->Inertia()) ||
        !math::IsFinite(1 / GetGeom()->Mass()) || !math::IsFinite(1 / GetGeom()->Inertia()))
        QUIB_THROW(BadDataException("Bad geometry: mass and inertia are out of range"));
}

math::Mat2D FiniteGeomEntity::ScaledPose(const math::Mat2D& pose, const Vec2& scale)
{
    // As it is, to the bit, unless the scale turns it.
    if (scale.x == scale.y && scale.x > 0)
        return pose;
    const Vec2 axis = Normalized(Vec2(scale.x * pose.cos, scale.y * pose.sin));
    return math::Mat2D(axis.x, axis.y, pose.x, pose.y);
}
}
