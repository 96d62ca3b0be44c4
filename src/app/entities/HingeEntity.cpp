#include "app/entities/HingeEntity.h"

#include "app/App.h"
#include "app/AppGUI.h"
#include "app/EntitySerializer.h"
#include "app/entities/Pictures.h"
#include "physics/Geom.h"
#include "physics/Hinge.h"
#include "physics/Simulation.h"
#include "util/ScopeProfiler.h"

#include <GL/gl.h>
#include <SDL_keysym.h>

#include <limits>
#include <optional>

using math::Vec2;
using physics::GeomPtr;

namespace app
{
extern const float DefaultMotorSpeed = math::PIf / 2;

namespace
{
const float Infinity = std::numeric_limits<float>::infinity();

// The word in files from before each button had its own keys.
const char* const ArrowKeys = "arrowkeys";

void SerializeButton(EntitySerializer& serializer, const char* key,
                     const input::ButtonInput& button)
{
    if (button.IsBound() || serializer.KeepsDefaults())
        serializer.Set(key, button.Serialize());
}

// Not a button, which would listen to the input: a scene may have thousands, and an undo reads them all.
using OptionalBinding = std::optional<input::ButtonInput::Binding>;

OptionalBinding ReadButton(const EntitySerializer& serializer, const char* key)
{
    if (!serializer.Has(key))
        return std::nullopt;
    return input::ButtonInput::ParseText(serializer.Get<util::String>(key));
}
}

HingeEntity::HingeEntity(float size)
    : JointEntity(size)
    , m_motor(this, "motor", false)
    , m_ccw(this, "ccw", false)
    , m_motorSpeed(this, "motorSpeed", DefaultMotorSpeed)
    , m_motorTorque(this, "motorTorque", 100)
    , m_impulseLimit(this, "impulseLimit", Infinity)
    , m_distanceLimit(this, "distanceLimit", Infinity)
{
}

HingeEntity::HingeEntity(const GeomPtr& geom0, const GeomPtr& geom1, const Vec2& point, float size)
    : HingeEntity(size)
{
    AttachToWorld(geom0, point, geom1, point);
}

HingeEntity::~HingeEntity() = default;

JointEntityPtr HingeEntity::Clone() const
{
    const util::SharedPtr<HingeEntity> clone = QUIB_NEW HingeEntity(GetSize());
    clone->CopyEnds(*this);
    return clone;
}

void HingeEntity::CreateJoint()
{
    physics::Simulation* simulation = physics::Simulation::GetInstancePtr();
    const physics::HingePtr old = m_hinge;
    m_hinge = QUIB_NEW physics::Hinge(GetGeom(0), GetGeom(1), GetLocalPoint(0), GetLocalPoint(1));
    if (!old)
        return;
    m_hinge->SetMotor(old->IsMotor());
    m_hinge->SetMotorSpeed(old->GetMotorSpeed());
    m_hinge->SetMotorTorque(old->GetMotorTorque());
    m_hinge->SetImpulseLimit(old->GetImpulseLimit());
    m_hinge->SetDistanceLimit(old->GetDistanceLimit());
    if (!simulation->HasConstraint(old))
        return;
    simulation->RemoveConstraint(old);
    simulation->AddConstraint(m_hinge);
}

void HingeEntity::AddToSimulation()
{
    if (!m_hinge && GetGeom(0))
        CreateJoint();
    if (m_hinge)
        physics::Simulation::GetInstancePtr()->AddConstraint(m_hinge);
}

void HingeEntity::RemoveFromSimulation()
{
    if (m_hinge)
        physics::Simulation::GetInstancePtr()->RemoveConstraint(m_hinge);
}

bool HingeEntity::IsAlive() const
{
    return JointEntity::IsAlive() && m_hinge &&
           physics::Simulation::GetInstancePtr()->HasConstraint(m_hinge);
}

void HingeEntity::Update(float dt)
{
    JointEntity::Update(dt);
    if (!m_hinge)
        return;
    m_hinge->SetImpulseLimit(m_impulseLimit);
    m_hinge->SetDistanceLimit(m_distanceLimit);

    // Deliberate: a negative speed does not stay one, the direction turns instead.
    if (m_motorSpeed < 0)
    {
        m_motorSpeed = -m_motorSpeed;
        m_ccw = !m_ccw;
    }
    const float speed = m_ccw ? -m_motorSpeed : +m_motorSpeed;

    m_hinge->SetMotor(m_motor || m_buttonForward.IsOn() || m_buttonBack.IsOn() ||
                      m_buttonBreak.IsOn());
    m_hinge->SetMotorTorque(m_motorTorque);
    if (m_buttonBreak.IsOn())
        m_hinge->SetMotorSpeed(0);
    else if (m_buttonForward.IsOn())
        m_hinge->SetMotorSpeed(speed);
    else if (m_buttonBack.IsOn())
        m_hinge->SetMotorSpeed(-speed);
    else
        m_hinge->SetMotorSpeed(speed);
}

void HingeEntity::Draw() const
{
    QUIB_PROFILE("Hinge::Draw");
    const bool isHidden = physics::Simulation::GetInstancePtr()->m_running &&
                          !App::GetInstancePtr()->GetAppGUI()->GetDrawHingesWhenRunning();
    // A thing that is selected must be seen.
    if (isHidden && !IsMouseOver() && !IsSelected())
        return;
    static const rendering::TextureProxy& s_hinge = GetPicture("hinge");
    glDisable(GL_DEPTH_TEST);
    DrawPicture(s_hinge, GetMiddle(), GetSize(), GetColor4());
    DrawRing(*this, GetMiddle(), GetSize());
    glEnable(GL_DEPTH_TEST);
}

void HingeEntity::SerializeTo(EntitySerializer& serializer) const
{
    JointEntity::SerializeTo(serializer);
    SerializeButton(serializer, "buttonForward", m_buttonForward);
    SerializeButton(serializer, "buttonBack", m_buttonBack);
    SerializeButton(serializer, "buttonBreak", m_buttonBreak);
}

void HingeEntity::Deserialize(const EntitySerializer& serializer)
{
    // All is read before anything changes.
    OptionalBinding forward = ReadButton(serializer, "buttonForward");
    OptionalBinding back = ReadButton(serializer, "buttonBack");
    OptionalBinding brake = ReadButton(serializer, "buttonBreak");
    const util::String controller =
        serializer.Has("controller") ? serializer.Get<util::String>("controller") : "";
    const bool hasArrowKeys = controller == ArrowKeys;
    if (!hasArrowKeys && !controller.empty())
        Log(logging::LogWarning, "Unknown controller of a hinge: " + util::Shorten(controller));
    if (hasArrowKeys)
    {
        forward.emplace().keys.push_back(SDLK_RIGHT);
        back.emplace().keys.push_back(SDLK_LEFT);
        brake.emplace().keys.push_back(SDLK_DOWN);
    }
    JointEntity::Deserialize(serializer);
    if (forward)
        m_buttonForward.Bind(*forward);
    if (back)
        m_buttonBack.Bind(*back);
    if (brake)
        m_buttonBreak.Bind(*brake);
    if (hasArrowKeys)
        m_motor = true;
}

void HingeEntity::Check() const
{
    if (!math::IsFinite(m_motorSpeed))
        QUIB_THROW(BadDataException("Bad motorSpeed"));
    if (math::IsNaN(m_motorTorque))
        QUIB_THROW(BadDataException("Bad motorTorque"));
    if (math::IsNaN(m_impulseLimit))
        QUIB_THROW(BadDataException("Bad impulseLimit"));
    if (math::IsNaN(m_distanceLimit))
        QUIB_THROW(BadDataException("Bad distanceLimit"));
}
}
