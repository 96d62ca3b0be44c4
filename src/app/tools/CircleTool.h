// Draws circles.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class CircleTool final : public Tool
{
public:
    CircleTool();
    ~CircleTool() override;
};
}
