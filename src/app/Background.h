// The sky behind the scene, with its clouds. Owned by the App; the script object "App.Background".
//
// Each cloud hangs at a depth, and moves by so much less than what the camera shows when that pans or
// zooms. It stays in a field around the middle of the view that is larger than anything ever seen of it:
// one that drifts out on one side comes in on the other, and nobody sees it jump.
#pragma once

#include "gui/Component.h"
#include "rendering/TextureProxy.h"
#include "script/Attributes.h"
#include "util/Random.h"

#include <memory>
#include <optional>
#include <vector>

namespace app
{
class CloudPicture;

class Background : public gui::Component
{
public:
    // A cloud.
    struct Particle
    {
        math::Vec2
            pos;     // of its middle, in its field, whose sides go from -0.5 to 0.5; y points down
        float size;  // screen widths
        float depth; // 1 to 10
        size_t texture; // modulo the number of pictures
    };

    Background();
    ~Background() override;

    math::Vec4 GetSkyColor() const { return m_skyColor; }

    /// Once a frame. The clouds drift, also while the simulation is paused, and follow the camera.
    void Update(float dt) override;
    /// The App draws it when its turn has come, before all entities.
    void DrawBG() const;

    /// From back to front, which is a heap by depth.
    const std::vector<Particle>& GetClouds() const { return m_clouds; }
    /// Where it is drawn, and may be out of view, if its picture is as high as it is wide.
    /// @param zoom  of the camera
    math::BoundingBox CalcCloudBox(const Particle& cloud, float zoom) const;
    /// @return  the place in the field, from -0.5 up to 0.5 and without that
    static float WrapField(float x);

private:
    void Init();
    void LoadPictures();
    void MakeClouds();
    void DrawSky() const;
    void DrawClouds() const;
    const CloudPicture& GetPicture(const Particle& cloud) const;
    void MoveClouds(const math::Vec2& pan, float drift, float zoom);
    math::Vec2 CalcFieldSize(const Particle& cloud) const;

    script::AttribWrapper<math::Vec4> m_skyColor; // at the top
    script::AttribWrapper<float> m_cloudOpacity;
    script::AttribWrapper<bool> m_drawClouds;
    util::Random m_random;
    std::vector<std::unique_ptr<CloudPicture>> m_pictures; // by name
    std::unique_ptr<CloudPicture> m_blank;                 // for those that can't be had
    std::vector<Particle> m_clouds;
    std::optional<math::Vec2> m_lastPan; // of the camera
};
}
