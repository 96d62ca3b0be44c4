// What mentors call to make a texture, and how a picture is found by its name.
#pragma once

#include "rendering/Texture.h"

namespace rendering
{
/// @param name  below the folder of textures, or from the data folder on; with its extension, or
///              without for the first of ".png", ".tga", ".bmp" and ".jpg" that is there
/// @throws FileReadException
ImageRGBA32Ptr ImageFromPath(util::String name);

/// The new texture is the caller's.
/// @return null, which has been logged, when there is no such picture
Texture* TextureFromPath(const util::String& path, Texture::ImageType type);
/// @throws std::runtime_error  when GL refuses it
Texture* TextureFromImage(ImageRGBA32Ptr image, Texture::ImageType type);
Texture* TextureFromImageFloat(ImageFloatPtr image, Texture::ImageType type);
/// Stands in for one that failed: it can't be missed.
Texture* CreateDefaultTexture();
}
