// Pictures for other programs.
#pragma once

#include "util/String.h"

namespace rendering
{
/// The file is whole, or as it was before.
/// @param width, height  pixels, 1 or more
/// @param rgb            3 bytes a pixel, rows from the bottom up and without gaps
/// @throws Exception     when it can't be written
void WritePngFile(const util::String& path, int width, int height, const unsigned char* rgb);
}
