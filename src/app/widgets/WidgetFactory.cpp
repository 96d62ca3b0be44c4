#include "app/widgets/WidgetFactory.h"

namespace app
{
WidgetPtr WidgetFactory::CreateWidget(const util::String& id, const GroupPtr& group)
{
    return QUIB_NEW Widget(id, group);
}
}
