// A texture, for those who keep one and need not know what it is made of.
#pragma once

#include "util/Mentor.h"

namespace rendering
{
class Texture;

using TextureProxy = util::MentorProxy<Texture>;
}
