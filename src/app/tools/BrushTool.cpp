#include "app/tools/BrushTool.h"

namespace app
{
BrushTool::BrushTool() = default;

BrushTool::~BrushTool() = default;
}
