// Draws boxes.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class BoxTool final : public Tool
{
public:
    BoxTool();
    ~BoxTool() override;
};
}
