// Moves or clones the selection.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class MoveTool final : public Tool
{
public:
    MoveTool();
    ~MoveTool() override;
};
}
