#include "app/tools/SpringTool.h"

namespace app
{
SpringTool::SpringTool() = default;

SpringTool::~SpringTool() = default;
}
