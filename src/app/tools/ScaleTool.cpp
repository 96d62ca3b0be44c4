#include "app/tools/ScaleTool.h"

namespace app
{
ScaleTool::ScaleTool() = default;

ScaleTool::~ScaleTool() = default;
}
