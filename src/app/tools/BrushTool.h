// Draws bodies and nothing else.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class BrushTool final : public Tool
{
public:
    BrushTool();
    ~BrushTool() override;
};
}
