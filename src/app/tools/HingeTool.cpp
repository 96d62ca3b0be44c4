#include "app/tools/HingeTool.h"

namespace app
{
HingeTool::HingeTool() = default;

HingeTool::~HingeTool() = default;
}
