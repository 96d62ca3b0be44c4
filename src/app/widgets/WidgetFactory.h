// Makes widgets by the id of their kind, which is how a scene's file names them. Made at first use,
// never destroyed.
#pragma once

#include "app/widgets/Widget.h"
#include "util/Singleton.h"

namespace app
{
class WidgetFactory : public util::Pointee, public util::Singleton<WidgetFactory>
{
public:
    /// An id that nobody knows makes a widget too: a scene from elsewhere keeps what it has.
    /// @param group  may be null
    WidgetPtr CreateWidget(const util::String& id, const GroupPtr& group);
};
}
