// Draws half planes.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class PlaneTool final : public Tool
{
public:
    PlaneTool();
    ~PlaneTool() override;
};
}
