#include "app/widgets/Widget.h"

namespace app
{
Widget::Widget(const util::String& id, const GroupPtr& group)
    : m_id(id)
    , m_group(group)
{
}

Widget::~Widget() = default;
}
