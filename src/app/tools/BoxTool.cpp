#include "app/tools/BoxTool.h"

namespace app
{
BoxTool::BoxTool() = default;

BoxTool::~BoxTool() = default;
}
