#include "app/tools/SketchTool.h"

namespace app
{
SketchTool::SketchTool() = default;

SketchTool::~SketchTool() = default;
}
