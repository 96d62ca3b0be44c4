#include "rendering/PngFile.h"

#include "util/FileSystem.h"

#include <png.h>

#include <vector>

namespace rendering
{
namespace
{
// As long as the library's two objects live. libpng leaves a failed call by longjmp, so that nothing in
// Write may need a destructor.
class PngWriter
{
public:
    PngWriter()
        : m_png(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, IgnoreWarning))
        , m_info(m_png ? png_create_info_struct(m_png) : nullptr)
    {
    }
    ~PngWriter() { png_destroy_write_struct(&m_png, &m_info); }
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;

    bool Write(FILE* file, int width, int height, png_bytepp rows)
    {
        if (!m_info || setjmp(png_jmpbuf(m_png)))
            return false;
        png_init_io(m_png, file);
        png_set_IHDR(m_png, m_info, static_cast<png_uint_32>(width),
                     static_cast<png_uint_32>(height), 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_rows(m_png, m_info, rows);
        png_write_png(m_png, m_info, PNG_TRANSFORM_IDENTITY, nullptr);
        return true;
    }

private:
    static void IgnoreWarning(png_structp, png_const_charp) {}

    png_structp m_png;
    png_infop m_info;
};
}

void WritePngFile(const util::String& path, int width, int height, const unsigned char* rgb)
{
    std::vector<png_bytep> rows(static_cast<size_t>(height));
    for (size_t y = 0; y < rows.size(); ++y)
        rows[y] = const_cast<png_bytep>(rgb + (rows.size() - 1 - y) * width * 3);

    util::ReplacingFile file(path);
    if (!PngWriter().Write(file.GetFile(), width, height, rows.data()))
        QUIB_THROW(Exception("Can't write the picture \"" + path + "\""));
    file.Commit();
}
}
