// Makes hinges.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class HingeTool final : public Tool
{
public:
    HingeTool();
    ~HingeTool() override;
};
}
