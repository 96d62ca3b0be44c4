#include "rendering/TextureManager.h"

#include "rendering/TextureFactories.h"

namespace rendering
{
using TextureMentor = util::Mentor<Texture>;

TextureManager::TextureManager()
{
    TextureMentor::s_default = QUIB_NEW TextureMentor(CreateDefaultTexture);
}

TextureManager::~TextureManager() = default;

TextureProxy TextureManager::Load(util::String name, Texture::ImageType type)
{
    // Deliberate: the first to ask decides on the type.
    util::SharedPtr<TextureMentor>& mentor = m_mentors[name];
    if (!mentor)
        mentor = QUIB_NEW TextureMentor([name, type] { return TextureFromPath(name, type); });
    return mentor;
}

TextureProxy TextureManager::Load(ImageRGBA32Ptr image, Texture::ImageType type)
{
    return TextureProxy([image, type] { return TextureFromImage(image, type); });
}

TextureProxy TextureManager::Load(ImageFloatPtr image, Texture::ImageType type)
{
    return TextureProxy([image, type] { return TextureFromImageFloat(image, type); });
}

TextureProxy ComputedTexture(std::function<AbstractImagePtr()> makeImage, Texture::ImageType type)
{
    return TextureProxy([makeImage, type] { return new Texture(makeImage(), type); });
}
}
