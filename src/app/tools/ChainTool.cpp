#include "app/tools/ChainTool.h"

namespace app
{
ChainTool::ChainTool() = default;

ChainTool::~ChainTool() = default;
}
