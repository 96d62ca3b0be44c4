// Scales by handles.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class ScaleTool final : public Tool
{
public:
    ScaleTool();
    ~ScaleTool() override;
};
}
