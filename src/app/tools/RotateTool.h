// Turns the selection.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class RotateTool final : public Tool
{
public:
    RotateTool();
    ~RotateTool() override;
};
}
