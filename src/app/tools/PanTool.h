// Moves the view.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class PanTool final : public Tool
{
public:
    PanTool();
    ~PanTool() override;
};
}
