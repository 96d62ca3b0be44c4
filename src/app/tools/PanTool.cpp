#include "app/tools/PanTool.h"

namespace app
{
PanTool::PanTool() = default;

PanTool::~PanTool() = default;
}
