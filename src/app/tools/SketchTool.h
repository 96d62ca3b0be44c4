// Makes of a free stroke what its shape tells.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class SketchTool final : public Tool
{
public:
    SketchTool();
    ~SketchTool() override;
};
}
