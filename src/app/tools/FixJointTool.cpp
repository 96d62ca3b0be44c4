#include "app/tools/FixJointTool.h"

namespace app
{
FixJointTool::FixJointTool() = default;

FixJointTool::~FixJointTool() = default;
}
