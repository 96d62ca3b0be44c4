// Hands out the textures. It keeps those with a name, one for each.
//
// What a program computes itself needs no manager: its owner keeps a mentor on the function that makes
// it, which runs again for each new window:
//
//     rendering::TextureProxy circle =
//         rendering::ComputedTexture(MakeCircleImage, {GL_ALPHA, true});
//
// One that lives as long as the program goes into a static pointer to a proxy that is never deleted, so
// that nothing is destroyed behind GL's back at the end.
#pragma once

#include "rendering/Texture.h"
#include "util/Singleton.h"

#include <functional>
#include <map>

namespace rendering
{
class TextureManager : public util::Pointee, public util::Singleton<TextureManager>
{
public:
    TextureManager();
    ~TextureManager() override;

    /// Loaded at its first use, or with the window. A name that is known gives the same texture
    /// again, whatever the type.
    /// @param name  as for ImageFromPath
    TextureProxy Load(util::String name, Texture::ImageType type);
    /// A new texture each time.
    TextureProxy Load(ImageRGBA32Ptr image, Texture::ImageType type);
    TextureProxy Load(ImageFloatPtr image, Texture::ImageType type);

private:
    std::map<util::String, util::SharedPtr<util::Mentor<Texture>>> m_mentors;
};

/// The image is computed at the first use, and again for each new window.
TextureProxy ComputedTexture(std::function<AbstractImagePtr()> makeImage, Texture::ImageType type);
}
