// The working parts of a polygon's distance map.
#pragma once

#include <cstdlib>
#include <utility>

namespace physics
{
/// Calls visit(x, y) for every cell of the line, both ends included, each cell once. The integer error
/// form of Bresenham 1965, "Algorithm for computer control of a digital plotter"; always drawn from
/// the end with the smaller coordinate on the longer axis.
template<typename Visit>
void Bresenham(int x0, int y0, int x1, int y1, Visit visit)
{
    const bool isSteep = std::abs(y1 - y0) > std::abs(x1 - x0);
    if (isSteep)
    {
        std::swap(x0, y0);
        std::swap(x1, y1);
    }
    if (x0 > x1)
    {
        std::swap(x0, x1);
        std::swap(y0, y1);
    }
    const int dx = x1 - x0, dy = std::abs(y1 - y0), stepY = y0 < y1 ? 1 : -1;
    int error = 0;
    for (int x = x0, y = y0; x <= x1; ++x)
    {
        if (isSteep)
            visit(y, x);
        else
            visit(x, y);
        error += dy;
        if (2 * error >= dx)
        {
            y += stepY;
            error -= dx;
        }
    }
}
}
