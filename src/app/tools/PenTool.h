// Fastens pens.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class PenTool final : public Tool
{
public:
    PenTool();
    ~PenTool() override;
};
}
