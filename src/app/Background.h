// The sky behind the scene. Owned by the App; the script object "App.Background".
#pragma once

#include "gui/Component.h"
#include "script/Attributes.h"

namespace app
{
class Background : public gui::Component
{
public:
    Background();

    math::Vec4 GetSkyColor() const { return m_skyColor; }

    /// The App draws it when its turn has come, before all entities.
    void DrawBG() const;

private:
    script::AttribWrapper<math::Vec4> m_skyColor; // at the top
    script::AttribWrapper<float> m_cloudOpacity;
    script::AttribWrapper<bool> m_drawClouds;
};
}
