#include "app/tools/MoveTool.h"

namespace app
{
MoveTool::MoveTool() = default;

MoveTool::~MoveTool() = default;
}
