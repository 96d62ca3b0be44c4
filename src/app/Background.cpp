#include "app/Background.h"

#include "app/Camera.h"
#include "app/CloudPicture.h"
#include "app/Scene.h"
#include "logging/Log.h"
#include "rendering/Pushers.h"
#include "rendering/Renderer.h"
#include "rendering/TextureManager.h"
#include "util/Failures.h"
#include "util/FileSystem.h"
#include "util/ScopeProfiler.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>

using math::BoundingBox;
using math::IsFinite;
using math::Vec2;
using math::Vec4;

namespace app
{
namespace
{
const size_t CloudCount = 30;
const float MinDepth = 1, MaxDepth = 10;
// Screen widths, at a depth of 1.
const float MinSize = 2, MaxSize = 6;
// GUI units per second, at a depth of 1.
const float Drift = 5;

// How much larger than at the default zoom a cloud is. A quarter of what its depth asks for: the zoom
// spans a factor of two thousand, and clouds should neither fill the view nor vanish.
float CalcCloudScale(float zoom, float depth)
{
    return std::pow(zoom / Camera::GetDefaultZoom(), 0.25f / depth);
}

bool IsPicture(const util::String& name)
{
    for (const char* ending :
         {".png", ".tga", ".bmp", ".jpg", ".jpeg", ".gif", ".tif", ".tiff", ".raw"})
        if (util::iends_with(name, ending))
            return true;
    return false;
}

std::vector<util::String> FindPictures()
{
    util::FileSystem* files = util::FileSystem::GetInstancePtr();
    std::vector<util::String> names;
    try
    {
        for (const util::String& name : files->FilesInDir(files->TextureDir() + "background/", "*"))
            if (IsPicture(name))
                names.push_back("background/" + name);
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogError, util::String("Failed to look for clouds: ") + e.what());
    }
    return names;
}
}

Background::Background()
    : m_skyColor(this, "skyColor", Vec4(0.3f, 0.4f, 1, 1))
    , m_cloudOpacity(this, "cloudOpacity", 0.9f)
    , m_drawClouds(this, "drawClouds", true)
{
    SetReflectedName("Background");
    SetFillOwner(true);
    Init();
}

Background::~Background() = default;

void Background::Init()
{
    LoadPictures();
    MakeClouds();
}

void Background::LoadPictures()
{
    const auto load = [](const util::String& name)
    {
        // Soft as they are, they need no mipmaps, which cost half as much again to draw.
        const rendering::Texture::Quality quality(true, true, true, true, true);
        return std::make_unique<CloudPicture>(
            rendering::TextureManager::GetInstancePtr()->Load(name, {GL_RGBA, false, quality}));
    };
    for (const util::String& name : FindPictures())
        m_pictures.push_back(load(name));
    m_blank = load("blank");
}

void Background::MakeClouds()
{
    const auto isNearer = [](const Particle& a, const Particle& b) { return a.depth < b.depth; };
    for (size_t i = 0; i < CloudCount; ++i)
    {
        Particle cloud;
        cloud.pos = m_random.GetUniformVec2() * 0.5f;
        // Most are far and small, as there is more room for those. Large ones cost: with depths and
        // sizes spread evenly, the clouds would take longer to draw than everything else.
        cloud.depth = MinDepth + (MaxDepth - MinDepth) * std::pow(m_random.GetUniform(), 0.2f);
        const float u = m_random.GetUniform();
        cloud.size = (MinSize + (MaxSize - MinSize) * u * u) / cloud.depth;
        cloud.texture = i;
        m_clouds.push_back(cloud);
        std::push_heap(m_clouds.begin(), m_clouds.end(), isNearer);
    }
    // In full order it still is a heap, and can be drawn as it lies.
    std::sort(m_clouds.begin(), m_clouds.end(),
              [&](const Particle& a, const Particle& b) { return isNearer(b, a); });
}

// GUI units at the default zoom. At the lowest zoom, when most is seen of it, it still reaches beyond the
// view by half a cloud on each side.
Vec2 Background::CalcFieldSize(const Particle& cloud) const
{
    const Vec2 size = GetInnerSize();
    const float width = cloud.size * size.x;
    return size / CalcCloudScale(Camera::GetMinZoom(), cloud.depth) + Vec2(width, width);
}

BoundingBox Background::CalcCloudBox(const Particle& cloud, float zoom) const
{
    const Vec2 size = GetInnerSize();
    const float scale = CalcCloudScale(zoom, cloud.depth);
    const Vec2 middle = size * 0.5f + Vec2::Mul(cloud.pos, CalcFieldSize(cloud)) * scale;
    const float half = cloud.size * size.x * scale * 0.5f;
    return BoundingBox(middle - Vec2(half, half), middle + Vec2(half, half));
}

float Background::WrapField(float x)
{
    return x - std::floor(x + 0.5f);
}

void Background::Update(float dt)
{
    Component::Update(dt);
    const Camera* camera = Scene::GetInstancePtr()->GetCamera().get();
    const Vec2 pan = camera->GetPan();
    // Nothing moves from where it has been put to where the first scene looks.
    const Vec2 moved = camera->WorldToGUI(m_lastPan.value_or(pan)) - camera->WorldToGUI(pan);
    m_lastPan = pan;
    MoveClouds(moved, Drift * dt, camera->GetZoom());
}

void Background::MoveClouds(const Vec2& pan, float drift, float zoom)
{
    const Vec2 size = GetInnerSize();
    const Vec2 moved = pan + Vec2(drift, 0);
    if (!IsFinite(moved) || size.x <= 0 || size.y <= 0)
        return;
    for (Particle& cloud : m_clouds)
    {
        const Vec2 field = CalcFieldSize(cloud) * CalcCloudScale(zoom, cloud.depth);
        cloud.pos.x = WrapField(cloud.pos.x + moved.x / cloud.depth / field.x);
        cloud.pos.y = WrapField(cloud.pos.y + moved.y / cloud.depth / field.y);
    }
}

void Background::DrawBG() const
{
    QUIB_PROFILE("Background::DrawBG");
    rendering::ColorPusher color;
    DrawSky();
    // Written so that a NaN is no opacity.
    if (m_drawClouds && m_cloudOpacity > 0)
        DrawClouds();
}

void Background::DrawSky() const
{
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    const Vec2 size = GetInnerSize();
    const Vec4 top = GetSkyColor();
    if (!(top.w > 0))
        return;
    const Vec4 bottom((top.x + 1) / 2, (top.y + 1) / 2, (top.z + 1) / 2, top.w);

    glDisable(GL_TEXTURE_2D);
    // The same picture for less: nothing below has to be read.
    if (top.w >= 1)
        glDisable(GL_BLEND);
    glBegin(GL_QUADS);
    renderer->SetColor4(top);
    renderer->Vertex(Vec2(0, 0));
    renderer->Vertex(Vec2(size.x, 0));
    renderer->SetColor4(bottom);
    renderer->Vertex(Vec2(size.x, size.y));
    renderer->Vertex(Vec2(0, size.y));
    glEnd();
    glEnable(GL_BLEND);
    glEnable(GL_TEXTURE_2D);
}

const CloudPicture& Background::GetPicture(const Particle& cloud) const
{
    if (m_pictures.empty())
        return *m_blank;
    const CloudPicture& picture = *m_pictures[cloud.texture % m_pictures.size()];
    return picture ? picture : *m_blank;
}

void Background::DrawClouds() const
{
    rendering::Renderer::GetInstancePtr()->SetColor4(1, 1, 1, m_cloudOpacity);
    const BoundingBox view = GetInnerBBLocal();
    const float zoom = Scene::GetInstancePtr()->GetCamera()->GetZoom();
    const CloudPicture* last = nullptr;
    for (const Particle& cloud : m_clouds)
    {
        BoundingBox box = CalcCloudBox(cloud, zoom);
        if (!Intersects(box, view))
            continue;
        const CloudPicture& picture = GetPicture(cloud);
        if (!picture)
            continue;
        const float halfHeight = box.GetSize().y * picture.GetAspect() * 0.5f;
        const Vec2 middle = box.GetCenter();
        box = BoundingBox(Vec2(box.GetMin().x, middle.y - halfHeight),
                          Vec2(box.GetMax().x, middle.y + halfHeight));
        picture.Draw(box, view);
        last = &picture;
    }
    if (last)
        last->Unbind();
}
}
