// Draws springs.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class SpringTool final : public Tool
{
public:
    SpringTool();
    ~SpringTool() override;
};
}
