// Welds.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class FixJointTool final : public Tool
{
public:
    FixJointTool();
    ~FixJointTool() override;
};
}
