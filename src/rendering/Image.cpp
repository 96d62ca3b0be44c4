#include "rendering/Image.h"

#include "util/FileSystem.h"

#include <GL/gl.h>
#include <SDL_endian.h>
#include <SDL_image.h>
#include <boost/filesystem.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace fs = boost::filesystem;

namespace rendering
{
static_assert(sizeof(PixelRGBA32) == 4, "the pixels go to GL as they are");

namespace
{
// Beyond what any driver takes. A small file may claim to be a huge picture.
const uint64_t MaxPixels = uint64_t(8192) * 8192;

struct SurfaceDeleter
{
    void operator()(SDL_Surface* surface) const { SDL_FreeSurface(surface); }
};
using SurfacePtr = std::unique_ptr<SDL_Surface, SurfaceDeleter>;

class SurfaceLock
{
public:
    explicit SurfaceLock(SDL_Surface* surface)
        : m_surface(surface)
    {
        SDL_LockSurface(m_surface);
    }
    ~SurfaceLock() { SDL_UnlockSurface(m_surface); }
    SurfaceLock(const SurfaceLock&) = delete;
    SurfaceLock& operator=(const SurfaceLock&) = delete;

private:
    SDL_Surface* m_surface;
};

[[noreturn]] void ThrowCouldNotLoad(const util::String& path)
{
    QUIB_THROW(FileReadException("Could not load image file \"" + path + "\". SDL_image error: \"" +
                                 SDL_GetError() + "\""));
}

[[noreturn]] void ThrowCorrupt(const util::String& path)
{
    QUIB_THROW(FileReadException("File \"" + path + "\" is corrupt."));
}

void CheckSize(const util::String& path, uint64_t width, uint64_t height)
{
    // What is negative is a great number here.
    if (width > MaxPixels || height > MaxPixels || width * height > MaxPixels)
        QUIB_THROW(FileReadException(
            "Image file \"" + path +
            "\" is too large: " + util::ToString(static_cast<unsigned long>(width)) + " x " +
            util::ToString(static_cast<unsigned long>(height)) + " pixels"));
}

/// A folder, or a pipe that would be waited for without end.
bool IsNoFile(const util::String& path)
{
    boost::system::error_code error;
    const fs::file_status status = fs::status(path, error);
    return fs::exists(status) && !fs::is_regular_file(status);
}

// What makes red the first byte of a pixel in memory, and alpha the last.
#if SDL_BYTEORDER == SDL_LIL_ENDIAN
const Uint32 RedMask = 0x000000FF, GreenMask = 0x0000FF00, BlueMask = 0x00FF0000,
             AlphaMask = 0xFF000000;
#else
const Uint32 RedMask = 0xFF000000, GreenMask = 0x00FF0000, BlueMask = 0x0000FF00,
             AlphaMask = 0x000000FF;
#endif

bool IsRGBA(const SDL_PixelFormat& format)
{
    return format.BitsPerPixel == 32 && format.Rmask == RedMask && format.Gmask == GreenMask &&
           format.Bmask == BlueMask && format.Amask == AlphaMask;
}

int (*s_readStdio)(SDL_RWops*, void*, int, int) = nullptr;
bool s_hasFallenShort = false; // since it was set so

/// What a truncated file lacks is 0. SDL_image looks at what it has not been given: it would find the
/// piece before once more, without end.
int ReadZerosAtEnd(SDL_RWops* file, void* data, int size, int count)
{
    const int got = std::max(s_readStdio(file, data, size, count), 0);
    if (got < count)
    {
        s_hasFallenShort = true;
        // An image of width 0 reads nothing into nowhere.
        if (const size_t bytes = size_t(count - got) * size)
            std::memset(static_cast<char*>(data) + size_t(got) * size, 0, bytes);
    }
    return got;
}

/// SDL believes the number of bits that a BMP claims, and dies of some.
bool IsBadBMP(const util::String& path)
{
    unsigned char head[30] = {};
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file || std::fread(head, 1, sizeof(head), file.get()) != sizeof(head) ||
        std::memcmp(head, "BM", 2) != 0)
        return false;
    const bool isOS2 = head[14] == 12;
    const unsigned char* bits = head + (isOS2 ? 24 : 28);
    switch (bits[0] | bits[1] << 8)
    {
    case 1:
    case 4:
    case 8:
    case 15:
    case 16:
    case 24:
    case 32:
        return false;
    default:
        return true;
    }
}

/// @return null when that fails
SurfacePtr ToRGBA(SDL_Surface* from)
{
    // Every pixel of it is transparent, and those of the colour key stay so.
    SurfacePtr to(SDL_CreateRGBSurface(SDL_SWSURFACE, from->w, from->h, 32, RedMask, GreenMask,
                                       BlueMask, AlphaMask));
    // Without this the pixels would be blended with those there, and lose their alpha.
    SDL_SetAlpha(from, 0, SDL_ALPHA_OPAQUE);
    if (!to || SDL_BlitSurface(from, nullptr, to.get(), nullptr) != 0)
        return nullptr;
    return to;
}

unsigned BytesAPixel(ImageRGBA32::RAWFormat format)
{
    switch (format)
    {
    case ImageRGBA32::RAWAlpha:
        return 1;
    case ImageRGBA32::RAWRGB:
        return 3;
    default:
        return 4;
    }
}
}

SDL_Surface* LoadSurface(const util::String& path)
{
    SDL_ClearError();
    if (IsNoFile(path))
        SDL_SetError("It is no file");
    else if (IsBadBMP(path))
        SDL_SetError("Unknown number of bits per pixel");
    else if (SDL_RWops* file = SDL_RWFromFile(path.c_str(), "rb"))
    {
        s_readStdio = file->read;
        file->read = ReadZerosAtEnd;
        // Their readers trust the file. Nobody has kept pictures in these for long.
        if (IMG_isXPM(file) || IMG_isLBM(file) || IMG_isXV(file))
        {
            SDL_RWclose(file);
            SDL_SetError("Unsupported image format");
            return nullptr;
        }
        const size_t dot = path.rfind('.');
        util::String extension = dot == util::String::npos ? "" : path.substr(dot + 1);
        s_hasFallenShort = false;
        SurfacePtr surface(IMG_LoadTyped_RW(file, 1, &extension[0]));
        if (surface && (surface->w == 0 || surface->h == 0))
        {
            SDL_SetError("It has no pixels");
            return nullptr;
        }
        // Others read ahead, or look themselves.
        if (!surface || !s_hasFallenShort || !util::iequals(extension, "tga"))
            return surface.release();
        SDL_SetError("Error reading TGA data");
    }
    return nullptr;
}

AbstractImage::AbstractImage(unsigned width, unsigned height, const util::String& name)
    : m_width(width)
    , m_height(height)
    , m_name(name)
{
}

AbstractImage::~AbstractImage() = default;

unsigned ImageRGBA32::GetFormat() const
{
    return GL_RGBA;
}

unsigned ImageRGBA32::GetType() const
{
    return GL_UNSIGNED_BYTE;
}

unsigned ImageFloat::GetFormat() const
{
    return GL_ALPHA;
}

unsigned ImageFloat::GetType() const
{
    return GL_FLOAT;
}

ImageRGBA32Ptr ImageRGBA32::LoadFile(const util::String& path)
{
    if (util::ends_with(path, ".raw"))
        return LoadRAW(path, RAWAlpha);

    SurfacePtr pic(LoadSurface(path));
    if (!pic)
        ThrowCouldNotLoad(path);
    CheckSize(path, pic->w, pic->h);
    const unsigned width = pic->w, height = pic->h;
    const ImageRGBA32Ptr image = QUIB_NEW ImageRGBA32(width, height, path);
    image->m_hasAlpha = pic->format->BitsPerPixel == 32 || pic->format->BitsPerPixel == 8;

    // SDL_image gives some kinds of file 32 bits in another order. Those of TGA are put right below.
    const bool isTGA = util::ends_with(path, ".tga");
    if (pic->format->BitsPerPixel != 32 || (!isTGA && !IsRGBA(*pic->format)))
    {
        pic = ToRGBA(pic.get());
        if (!pic)
            ThrowCouldNotLoad(path);
    }

    const SurfaceLock lock(pic.get());
    DATA_ASSERT(pic->pitch == 4 * pic->w);
    const size_t rowBytes = size_t(4) * width;
    const char* from = static_cast<const char*>(pic->pixels);
    for (unsigned y = 0; y < height; ++y)
        std::memcpy(static_cast<void*>(image->data() + size_t(width) * (height - 1 - y)),
                    from + rowBytes * y, rowBytes);

    // SDL_image delivers them with red and blue exchanged. Deliberate: those with a palette, which have
    // been converted and were right, come out exchanged.
    if (image->m_hasAlpha && isTGA)
        for (PixelRGBA32 *p = image->data(), *end = p + size_t(width) * height; p != end; ++p)
            std::swap(p->x, p->z);
    return image;
}

ImageRGBA32Ptr ImageRGBA32::LoadRAW(const util::String& path, RAWFormat format)
{
    if (IsNoFile(path))
        ThrowCorrupt(path);
    const unsigned long size = util::FileSystem::GetInstancePtr()->GetFileSize(path);
    const unsigned long n = size / BytesAPixel(format);
    const unsigned long side = static_cast<unsigned long>(std::sqrt(static_cast<double>(n)));
    if (side * side != n)
        QUIB_THROW(
            FileReadException("The RAW-file \"" + path + "\" contained a non quadratic picture."));
    return LoadRAW(path, format, static_cast<unsigned>(side), static_cast<unsigned>(side));
}

ImageRGBA32Ptr ImageRGBA32::LoadRAW(const util::String& path, RAWFormat format, unsigned width,
                                    unsigned height)
{
    // All that can be known before memory is asked for.
    if (IsNoFile(path))
        ThrowCorrupt(path);
    const unsigned bytes = BytesAPixel(format);
    const uint64_t size = util::FileSystem::GetInstancePtr()->GetFileSize(path);
    if (uint64_t(width) * height > size / bytes)
        ThrowCorrupt(path);
    CheckSize(path, width, height);

    std::vector<unsigned char> data(size_t(width) * height * bytes);
    {
        const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                         std::fclose);
        if (!file || std::fread(data.data(), 1, data.size(), file.get()) != data.size())
            ThrowCorrupt(path);
    }

    const ImageRGBA32Ptr image = QUIB_NEW ImageRGBA32(width, height, path);
    image->m_hasAlpha = format != RAWRGB;
    PixelRGBA32* pixel = image->data();
    for (const unsigned char *p = data.data(), *end = p + data.size(); p != end; p += bytes)
        *pixel++ = bytes == 1 ? PixelRGBA32(255, 255, 255, p[0])
                              : PixelRGBA32(p[0], p[1], p[2], bytes == 4 ? p[3] : 255);
    return image;
}
}
