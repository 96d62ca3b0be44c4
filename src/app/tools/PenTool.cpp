#include "app/tools/PenTool.h"

namespace app
{
PenTool::PenTool() = default;

PenTool::~PenTool() = default;
}
