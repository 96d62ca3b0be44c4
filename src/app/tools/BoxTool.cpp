#include "app/tools/BoxTool.h"

#include "app/App.h"
#include "app/Scene.h"
#include "app/entities/BoxEntity.h"
#include "math/Scalar.h"
#include "physics/Box.h"
#include "physics/Polygon.h"
#include "rendering/Renderer.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>

using math::Vec2;

namespace app
{
BoxTool::BoxTool() = default;

BoxTool::~BoxTool() = default;

Vec2 BoxTool::GetEndPos(const Vec2& pos) const
{
    if (!IsShiftDown())
        return pos;
    const Vec2 way = pos - GetStart();
    const float side = std::max(std::fabs(way.x), std::fabs(way.y));
    return GetStart() + Vec2(way.x < 0 ? -side : side, way.y < 0 ? -side : side);
}

void BoxTool::Draw() const
{
    if (!IsInUse())
        return;
    const Vec2 a = GetStart(), b = GetEndPos(GetMousePos());
    const Vec2 size(std::fabs(b.x - a.x), std::fabs(b.y - a.y));
    const Vec2 corner(std::min(a.x, b.x), std::min(a.y, b.y));
    // As wide as the border of the box to come.
    const float width =
        std::min({App::GetInstancePtr()->GetObjectBorderWidth(), size.x / 2, size.y / 2});
    glDisable(GL_TEXTURE_2D);
    rendering::Renderer::GetInstancePtr()->DrawFrame(corner, size, width);
    glEnable(GL_TEXTURE_2D);
}

void BoxTool::Finish(const Vec2& pos)
{
    const Vec2 a = GetStart(), b = GetEndPos(pos);
    const Vec2 size(std::fabs(b.x - a.x), std::fabs(b.y - a.y));
    if (size.x == 0 || size.y == 0)
        return;
    const float maxDist = App::GetInstancePtr()->GetMaximumPointDist();
    if (Scene::GetInstancePtr()->IsSelection(*physics::Polygon::CreateBox(a, b, maxDist)))
        return;
    const physics::BoxPtr box = QUIB_NEW physics::Box(size, math::Lerp(a, b, 0.5f));
    AddEntityUndoable(QUIB_NEW BoxEntity(box), "UndoBox");
}
}
