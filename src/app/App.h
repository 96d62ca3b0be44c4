// The application: fills the window, holds the program-wide settings, and drives simulation and scene
// once a frame. Made by the start of the program and never destroyed. The script object "App".
#pragma once

#include "gui/Component.h"
#include "math/Vector.h"
#include "script/Attributes.h"
#include "util/Random.h"
#include "util/Singleton.h"

#include <memory>
#include <vector>

namespace physics
{
class Contact;
}

namespace app
{
class AppGUI;
class Background;
class Entity;
class FrameTrail;
class WaterDrawing;

class App : public gui::Component, public util::Singleton<App>
{
public:
    App();
    ~App() override;

    /// Once a frame, from the GUI: interface and autosave, keyboard panning, simulation, scene, camera.
    void Update(float dt) override;
    void DrawComp() const override;

    /// Puts the interface together. Any number of times; the AppGUI stays the same object.
    void CreateGUI();
    /// Saves the exit scene; a next start has nothing to recover then.
    void OnShutdown();
    /// No configuration was there: somebody sees Quib for the first time, and gets the panels that
    /// show what it can do.
    void SetFirstTimeRunning();

    const util::SharedPtr<AppGUI>& GetAppGUI() const { return m_appGUI; }
    const util::SharedPtr<Background>& GetBackground() const { return m_background; }

    /// In the world.
    math::Vec2 GetMousePos() const;

    // What a user perceives on the screen is given in centimetres there, and so in world units
    // depends on the zoom.

    /// World units in a pixel.
    float GetPixelSize() const;
    /// World units in a centimetre of the screen.
    float GetScreenCM() const;
    // World units, of what is so many centimetres on the screen.
    float GetDefaultJointSize() const;
    /// Of an entity's border: App.borderWidth.
    float GetObjectBorderWidth() const;
    /// From one point of a stroke to the next: App.minPointDist, App.maxPointDist.
    float GetMinimumPointDist() const;
    float GetMaximumPointDist() const;

    /// Seconds.
    float GetAutosaveTime() const { return m_autosaveTime; }
    math::Vec3 GetFadeColor() const { return m_fadeColor; }
    /// Deliberate: the spelling. How much finer than the field of the water its green is.
    float GetWaterFanceyFactor() const { return m_waterFanceyFactor; }
    int GetMaxSPHSpawn() const { return m_maxSPHSpawn; }
    /// How many times as dense as other bodies chains are.
    float GetChainDensityFactor() const;
    /// How much can be undone, and redone.
    unsigned long GetMaxUndo() const;
    void AddOnMaxUndoChange(const util::CallbackPtr& callback);
    /// Of its grip: 1 would be that of a hinge.
    float GetDragToolStrength() const { return m_dragToolStrength; }
    bool GetBorders() const { return m_borders; }
    bool GetDrawOBBs() const { return m_drawOBBs; }
    bool GetDrawMapOBBs() const { return m_drawMapOBBs; }
    bool GetDrawBCs() const { return m_drawBCs; }
    bool GetDrawVertices() const { return m_drawVertices; }

    /// Half the entity's colour; white for one in the selection, and a grey for one under the mouse.
    math::Vec4 GetBorderColor(const Entity* entity) const;
    /// Most are rather dark or rather light.
    math::Vec3 RandomColor3();
    /// Opaque, and not to be lost against the sky.
    math::Vec4 RandomEntityColor4();

private:
    script::ObjectPtr ChangeLanguage(const script::ObjectPtr& name);
    void CullEntities(const math::BoundingBox& view) const;
    void DrawEntities() const;
    void MarkMouseOver() const;
    void DrawOverlays() const;

    script::AttribWrapper<util::String> m_language;
    script::AttribWrapper<float> m_lineWidth;
    script::AttribWrapper<float> m_pointSize;
    script::AttribWrapper<bool> m_drawOBBs;
    script::AttribWrapper<bool> m_drawMapOBBs;
    script::AttribWrapper<bool> m_drawBCs;
    script::AttribWrapper<bool> m_drawVertices;
    script::AttribWrapper<bool> m_drawCollisions;
    script::AttribWrapper<bool> m_drawParticleCenters;
    script::AttribWrapper<bool> m_drawBodyCenters;
    script::AttribWrapper<math::Vec2> m_polyTCFactor;
    script::AttribWrapper<math::Vec3> m_selectColor;
    script::AttribWrapper<math::Vec3> m_fadeColor;
    script::AttribWrapper<math::Vec2> m_fadeScale;
    script::AttribWrapper<math::Vec2> m_fadeTranslate;
    script::AttribWrapper<float> m_fadeRotate;   // degrees
    script::AttribWrapper<float> m_minPointDist; // screen centimetres
    script::AttribWrapper<float> m_maxPointDist; // screen centimetres
    script::AttribWrapper<float> m_DPI;
    script::AttribWrapper<int> m_maxSPHSpawn;
    script::AttribWrapper<float> m_waterElongation;
    script::AttribWrapper<float> m_waterMaxElongation;
    script::AttribWrapper<float> m_metaCutoff;
    script::AttribWrapper<float> m_borderWidth; // screen centimetres
    script::AttribWrapper<unsigned long> m_maxUndo;
    script::AttribWrapper<float> m_autosaveTime; // seconds
    script::AttribWrapper<float> m_chainDensityFactor;
    script::AttribWrapper<float> m_dragToolStrength;
    script::AttribWrapper<math::Vec4> m_waterColor;
    script::AttribWrapper<bool> m_simpleWater;
    script::AttribWrapper<float> m_waterFanceyFactor;
    script::AttribWrapper<bool> m_borders;
    mutable std::vector<util::SharedPtr<Entity>> m_visibleEntities; // during DrawComp only
    mutable std::vector<Entity*> m_pickedEntities;                  // during MarkMouseOver only
    std::vector<util::SharedPtr<physics::Contact>> m_contacts;      // of the last step, to be drawn
    std::unique_ptr<FrameTrail> m_trail;
    std::unique_ptr<WaterDrawing> m_water;
    util::SharedPtr<Background> m_background;
    util::SharedPtr<AppGUI> m_appGUI;
    util::Random m_random;
    bool m_firstTimeRunning = false;
};
}
