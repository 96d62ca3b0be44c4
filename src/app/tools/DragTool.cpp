#include "app/tools/DragTool.h"

namespace app
{
DragTool::DragTool() = default;

DragTool::~DragTool() = default;
}
