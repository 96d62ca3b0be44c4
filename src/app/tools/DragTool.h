// Pulls at a body while the world runs.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class DragTool final : public Tool
{
public:
    DragTool();
    ~DragTool() override;
};
}
