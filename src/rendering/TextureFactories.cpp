#include "rendering/TextureFactories.h"

#include "logging/Log.h"
#include "util/FileSystem.h"

#include <GL/gl.h>

#include <utility>

namespace rendering
{
ImageRGBA32Ptr ImageFromPath(util::String name)
{
    util::FileSystem* files = util::FileSystem::GetInstancePtr();
    if (!util::istarts_with(name, files->DataDir()))
        name = files->TextureDir() + name;
    const bool hasExtension = name.size() >= 4 && name[name.size() - 4] == '.';
    if (!hasExtension && !files->IsFile(name))
        for (const char* extension : {"png", "tga", "bmp", "jpg"})
            if (files->IsFile(name + "." + extension))
                return ImageRGBA32::LoadFile(name + "." + extension);
    return ImageRGBA32::LoadFile(name);
}

Texture* TextureFromPath(const util::String& path, Texture::ImageType type)
{
    ImageRGBA32Ptr image;
    try
    {
        image = ImageFromPath(path);
    }
    catch (std::exception& e)
    {
        util::LogContained(e.what(), QUIB_LOCATION);
    }
    catch (...)
    {
        util::LogContained(nullptr, QUIB_LOCATION);
    }
    if (!image)
    {
        Log(logging::LogError, "Failed to load image " + path);
        return nullptr;
    }
    return TextureFromImage(image, type);
}

Texture* TextureFromImage(ImageRGBA32Ptr image, Texture::ImageType type)
{
    return new Texture(image, type);
}

Texture* TextureFromImageFloat(ImageFloatPtr image, Texture::ImageType type)
{
    return new Texture(image, type);
}

Texture* CreateDefaultTexture()
{
    const unsigned size = 64, half = size / 2;
    const ImageRGBA32Ptr image = QUIB_NEW ImageRGBA32(size, size);
    for (unsigned y = 0; y < size; ++y)
        for (unsigned x = 0; x < size; ++x)
            (*image)(x, y) =
                y / half == x / half ? PixelRGBA32(0, 255, 0, 127) : PixelRGBA32(255, 0, 255, 255);
    const Texture::ImageType type = {GL_RGBA, true};
    try
    {
        return TextureFromImage(image, type);
    }
    catch (std::exception& e)
    {
        // Nobody stands in for it.
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogError, util::String("There is no default texture: ") + e.what());
        return Texture::CreateEmpty(image, type);
    }
}
}
