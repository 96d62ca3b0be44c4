#include "app/DebugOverlays.h"

#include "physics/Body.h"
#include "physics/Contact.h"
#include "physics/Particle.h"
#include "physics/Simulation.h"
#include "rendering/Pushers.h"
#include "rendering/Renderer.h"

#include <GL/glew.h>

using math::Vec2;

namespace app
{
// The velocity lines are as long as the way of so many seconds.
static const float VelocityLineTime = 0.025f;

template<typename Bodies, typename F>
static void DrawVelocities(const Bodies& bodies, F isShown)
{
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    for (const auto& body : bodies)
        if (isShown(*body))
        {
            renderer->Vertex(body->GetPos());
            renderer->Vertex(body->GetPos() + body->GetVel() * VelocityLineTime);
        }
}

template<typename Bodies, typename F>
static void DrawPositions(const Bodies& bodies, F isShown)
{
    for (const auto& body : bodies)
        if (isShown(*body))
            rendering::Renderer::GetInstancePtr()->Vertex(body->GetPos());
}

static bool CanMove(const physics::AbstractBody& body)
{
    return !body.IsImmovable();
}

void DrawBodyCenters()
{
    rendering::AttribPusher attribs;
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    const physics::Simulation* simulation = physics::Simulation::GetInstancePtr();
    glDisable(GL_TEXTURE_2D);
    renderer->SetColor4(0, 1, 0, 0.5f);
    glBegin(GL_LINES);
    DrawVelocities(simulation->GetBodies(), CanMove);
    DrawVelocities(simulation->GetParticles(), CanMove);
    glEnd();
    renderer->SetColor4(0.4f, 1, 0.4f, 0.9f);
    glBegin(GL_POINTS);
    DrawPositions(simulation->GetBodies(), CanMove);
    DrawPositions(simulation->GetParticles(), CanMove);
    glEnd();
}

void DrawParticleCenters()
{
    rendering::AttribPusher attribs;
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    const physics::ParticleList& particles = physics::Simulation::GetInstancePtr()->GetParticles();
    const auto isShown = [](const physics::Particle&) { return true; };
    glDisable(GL_TEXTURE_2D);
    renderer->SetColor4(1, 0, 0, 0.5f);
    glBegin(GL_LINES);
    DrawVelocities(particles, isShown);
    glEnd();
    renderer->SetColor4(1, 0, 0, 1);
    glBegin(GL_POINTS);
    DrawPositions(particles, isShown);
    glEnd();
}

void DrawCollisions(const std::vector<util::SharedPtr<physics::Contact>>& contacts)
{
    rendering::AttribPusher attribs;
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    glDisable(GL_TEXTURE_2D);
    const double now = physics::Simulation::GetInstancePtr()->GetSimTime();
    for (const auto& contact : contacts)
    {
        const Vec2 pos = contact->GetPos();
        renderer->SetColor4(0.5f, 0, 0, 0.5f);
        glBegin(GL_LINES);
        renderer->Vertex(pos);
        renderer->Vertex(pos + contact->GetTotalImpulse());
        glEnd();
        renderer->SetColor4(0, 1, 0, 0.5f);
        glBegin(GL_LINES);
        renderer->Vertex(pos);
        renderer->Vertex(pos + contact->GetNormal() * contact->GetDepth());
        glEnd();
        const bool isFresh = now - contact->GetStartTime() < 0.5;
        renderer->SetColor4(1, isFresh ? 1 : 0, isFresh ? 1 : 0, 1);
        glBegin(GL_POINTS);
        renderer->Vertex(pos);
        glEnd();
    }
}
}
