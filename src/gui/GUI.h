// Owns the root of the component tree and the scale from pixels to GUI units. The script object "GUI".
#pragma once

#include "gui/Component.h"
#include "rendering/Pushers.h"
#include "rendering/TextureProxy.h"
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
    /// In front of the main container. The mouse goes through it.
    const ComponentPtr& GetTooltipLayer() const { return m_tooltips; }

    void Update(float dt);
    void Draw();
    /// Pushes GL's attributes and matrices and sets up GUI coordinates: (0, 0) at the top left.
    void Begin();
    void End();

    void OnMouseMove(const input::MouseEvent& event) override;

    /// Key events (not those of mouse and joysticks) go to it before all others but the console, and
    /// then on as always, so that it gets them once more in its place, handled if it has done so. One
    /// component at most has the keyboard: the latest that claimed it. It gets nothing while it hangs
    /// outside of the tree.
    void ClaimKeyboard(const ComponentPtr& component);
    /// Does nothing when another has it.
    void ReleaseKeyboard(const ComponentPtr& component);
    bool HasKeyboard(const Component* component) const;

    /// For SetCursor.
    /// @param name  below the folder of textures
    static rendering::TextureProxy LoadCursor(const util::String& name);
    /// Drawn at the mouse, 32 x 32, with its hot spot in the middle, in place of the desktop's.
    /// @param texture  none, or one that failed to load, for the desktop's
    void SetCursor(const rendering::TextureProxy& texture);
    const rendering::TextureProxy& GetCursor() const { return m_cursor; }
    /// The picture "mouse".
    void SetDefaultCursor() { SetCursor(m_defaultCursor); }

    /// GUI.scale held to 0.1 to 10, so that no script can lock its user out. The attribute keeps
    /// what was written.
    float GetScale() const;
    // Likewise held to what leaves drags possible.
    /// GUI units, up to 100.
    float GetClickTolerance() const;
    /// Seconds, up to 5.
    float GetClickTimeTolerance() const;
    math::Vec2 PosFromPixel(int x, int y) const;
    math::Vec2 PixelFromPos(const math::Vec2& pos) const;
    /// Of the window, in GUI units.
    math::Vec2 GetSize() const;

    /// @param width, height  pixels
    void OnNewWindowSize(int width, int height);
    /// Lays everything out anew in the window, which is of another size in GUI units now.
    void OnScaleChange();

private:
    class KeyboardListener;

    void UpdateMouseOver(const math::Vec2& pos);
    void DrawCursor();
    void ShowProfiles();
    void ShowOSCursor(bool show);

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
    ComponentPtr m_tooltips;
    util::SharedPtr<InputListener> m_keyboardListener; // in the root
    util::WeakPtr<Component> m_keyboardOwner;
    rendering::TextureProxy m_defaultCursor;
    rendering::TextureProxy m_cursor;      // null: the desktop's
    std::optional<bool> m_isOSCursorShown; // as told SDL last, in this window
    util::String m_shownProfile;           // the latest text of each profiler
    util::String m_shownProfile2;
    math::TVector2<int> m_windowSize;                 // pixels
    std::optional<rendering::AttribPusher> m_attribs; // from Begin to End
};
}
