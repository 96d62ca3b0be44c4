// Owns the root of the component tree and the scale from pixels to GUI units. The script object "GUI".
#pragma once

#include "gui/Component.h"
#include "rendering/Pushers.h"
#include "script/Attributes.h"
#include "util/Singleton.h"

#include <optional>

namespace gui
{
class GUI : public input::InputListener, public util::Singleton<GUI>
{
public:
    GUI();
    ~GUI() override;

    const ComponentPtr& GetRoot() const { return m_root; }
    /// What the application fills.
    const ComponentPtr& GetMainContainer() const { return m_main; }

    void Update(float dt);
    void Draw();
    /// Pushes GL's attributes and matrices and sets up GUI coordinates: (0, 0) at the top left.
    void Begin();
    void End();

    /// GUI.scale held to 0.1 to 10, so that no script can lock its user out. The attribute keeps
    /// what was written.
    float GetScale() const;
    /// GUI units.
    float GetClickTolerance() const { return m_clickTolerance; }
    /// Seconds.
    float GetClickTimeTolerance() const { return m_clickTimeTolerance; }
    math::Vec2 PosFromPixel(int x, int y) const;
    math::Vec2 PixelFromPos(const math::Vec2& pos) const;
    /// Of the window, in GUI units.
    math::Vec2 GetSize() const;

    /// @param width, height  pixels
    void OnNewWindowSize(int width, int height);
    /// Lays everything out anew in the window, which is of another size in GUI units now.
    void OnScaleChange();

private:
    script::AttribWrapper<float> m_clickTolerance;     // GUI units
    script::AttribWrapper<float> m_clickTimeTolerance; // seconds
    script::AttribWrapper<bool> m_forceOSCursor;
    script::AttribWrapper<util::String> m_font;
    script::AttribWrapper<bool> m_crispFonts;
    script::AttribWrapper<float> m_crispFontFactor;
    script::AttribWrapper<bool> m_fontShadow;
    script::AttribWrapper<math::Vec2> m_fontShadowOffset;
    script::AttribWrapper<float> m_scale;
    script::AttribWrapper<float> m_opaqueness;
    ComponentPtr m_root;
    ComponentPtr m_main;
    math::TVector2<int> m_windowSize;                 // pixels
    std::optional<rendering::AttribPusher> m_attribs; // from Begin to End
};
}
