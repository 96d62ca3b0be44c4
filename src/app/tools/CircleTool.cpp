#include "app/tools/CircleTool.h"

namespace app
{
CircleTool::CircleTool() = default;

CircleTool::~CircleTool() = default;
}
