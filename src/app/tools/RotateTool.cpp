#include "app/tools/RotateTool.h"

namespace app
{
RotateTool::RotateTool() = default;

RotateTool::~RotateTool() = default;
}
