// Draws ropes.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class ChainTool final : public Tool
{
public:
    ChainTool();
    ~ChainTool() override;
};
}
