// The part of the application that draws: the stages of a frame, in their order.
#include "app/App.h"
#include "app/Background.h"
#include "app/Camera.h"
#include "app/DebugOverlays.h"
#include "app/FrameTrail.h"
#include "app/Scene.h"
#include "app/WaterDrawing.h"
#include "app/entities/Entity.h"
#include "app/tools/Tools.h"
#include "math/Matrix.h"
#include "physics/Particle.h"
#include "physics/Simulation.h"
#include "rendering/Pushers.h"
#include "rendering/Renderer.h"
#include "util/ScopeProfiler.h"
#include "util/StaticProfilerData.h"

#include <GL/glew.h>

#include <algorithm>

using math::Vec2;

namespace app
{
/// GL takes anything else for an error, and no setting may end the program. The attribute keeps what
/// was written.
static float HoldAboveZero(float pixels)
{
    const float smallest = 0.01f;
    // Written so that a NaN is held too.
    return pixels > smallest ? pixels : smallest;
}

void App::DrawComp() const
{
    Component::DrawComp();
    QUIB_PROFILE("App::DrawComp");
    const Camera* camera = Scene::GetInstancePtr()->GetCamera().get();
    const Vec2 size = GetInnerSize();
    const math::BoundingBox view(camera->GUIToWorld(Vec2()), camera->GUIToWorld(size));
    CullEntities(view);

    // No copy: nothing moves them while they are drawn.
    const physics::ParticleList& particles = physics::Simulation::GetInstancePtr()->GetParticles();
    const WaterDrawing::Style water{m_simpleWater, m_metaCutoff, m_waterColor, m_waterElongation,
                                    m_waterMaxElongation};
    const FrameTrail::Style trail{m_fadeColor, m_fadeScale, m_fadeTranslate, m_fadeRotate};
    m_water->DrawMetaTex(particles, view, water, m_visibleEntities);

    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    rendering::AttribPusher attribs;
    glPushMatrix();
    renderer->SetColor4(1, 1, 1, 1);
    {
        QUIB_PROFILE("Setup");
        glDisable(GL_DEPTH_TEST);
        glEnable(GL_TEXTURE_2D);
        glEnable(GL_BLEND);
        glBlendFunc(GL_ONE, GL_ONE);
        m_trail->Draw(trail, size);
    }
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    m_background->DrawBG();
    m_water->Draw(particles, view, water, size);

    math::Mat4FromMat2D(camera->WorldToGUI()).MultToGL();
    glLineWidth(HoldAboveZero(m_lineWidth));
    glPointSize(HoldAboveZero(m_pointSize));
    DrawEntities();
    DrawOverlays();
    renderer->SetColor4(1, 1, 1, 1);
    {
        // All that tools draw is one child of this scope, which has nearly as many as a profile allows.
        QUIB_PROFILE("Tool");
        Tools::GetInstancePtr()->GetTool()->Draw();
    }

    // The interface comes later, and is not in the trail.
    m_trail->Keep(trail);
    m_visibleEntities.clear();
    glPopMatrix();
}

void App::CullEntities(const math::BoundingBox& view) const
{
    QUIB_PROFILE("Culling");
    m_visibleEntities.clear();
    for (const auto& entity : Scene::GetInstancePtr()->GetEntities())
        // One that is shown elsewhere than it lies can be anywhere.
        if (entity->IsInView(view) || entity->GetDrawTransform() != math::Mat3())
            m_visibleEntities.push_back(entity);
}

void App::MarkMouseOver() const
{
    // Deliberate: when the mouse is elsewhere the flags stay as they were.
    if (!IsMouseOverInner())
        return;
    QUIB_PROFILE("Mouse-over");
    m_pickedEntities.clear();
    Scene::GetInstancePtr()->GetSelectionAt(GetMousePos(), m_pickedEntities);
    std::sort(m_pickedEntities.begin(), m_pickedEntities.end());
    for (const auto& entity : m_visibleEntities)
        entity->SetMouseOver(
            std::binary_search(m_pickedEntities.begin(), m_pickedEntities.end(), entity.get()));
}

static void DrawTransformed(const Entity& entity)
{
    const math::Mat3& transform = entity.GetDrawTransform();
    if (transform == math::Mat3())
    {
        entity.Draw();
        return;
    }
    glPushMatrix();
    math::Mat4FromMat2D(transform).MultToGL();
    entity.Draw();
    glPopMatrix();
}

// Each entity stands in a depth layer of its own, so that a later one covers an earlier one whatever
// order each draws its own parts in.
void App::DrawEntities() const
{
    QUIB_PROFILE("Entities");
    MarkMouseOver();
    if (m_visibleEntities.empty())
        return;

    rendering::ColorPusher color;
    glPushMatrix();
    const float step = 0.9f / static_cast<float>(m_visibleEntities.size());
    glTranslatef(0, 0, step);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    for (const auto& entity : m_visibleEntities)
    {
        entity->SetSelected(Scene::GetInstancePtr()->IsSelected(entity));
        QUIB_PROFILE_OFTEN("Entity::Draw");
        DrawTransformed(*entity);
        glTranslatef(0, 0, step);
    }
    glDisable(GL_DEPTH_TEST);
    glPopMatrix();
}

void App::DrawOverlays() const
{
    if (m_drawBodyCenters)
        DrawBodyCenters();
    if (m_drawParticleCenters)
        DrawParticleCenters();
    if (m_drawCollisions)
        DrawCollisions(m_contacts);
}
}
