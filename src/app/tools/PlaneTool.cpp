#include "app/tools/PlaneTool.h"

namespace app
{
PlaneTool::PlaneTool() = default;

PlaneTool::~PlaneTool() = default;
}
