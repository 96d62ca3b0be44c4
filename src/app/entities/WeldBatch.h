// Many welds made or undone at once.
//
// Each weld computes the body that it makes, or splits, from all geometries of that body: one by one,
// thousands of them in one body would take the square of their number. While a WeldBatch lives the bodies
// stay as they are, and the outermost one merges and splits all that was asked for when it ends. The
// bodies are then those that one weld after the other would have left, with the same ids of bodies that
// survive; between, a welded geometry is still on the body it had.
//
//     {
//         WeldBatch welds;
//         for (...) scene->AddEntity(...);
//     }
#pragma once

#include "util/SharedPtr.h"

namespace physics
{
class Geom;
}

namespace app
{
class WeldBatch
{
public:
    WeldBatch();
    /// What fails is logged, and the welds that need it die at the next update of the scene.
    ~WeldBatch();
    WeldBatch(const WeldBatch&) = delete;
    WeldBatch& operator=(const WeldBatch&) = delete;

    /// For who must see the bodies as they will be, while a batch is open.
    static void SettleNow();

    // For the welds themselves: at once, or when the batch that is open ends.

    /// Puts both geometries on one body: the one with the smaller id, so that the world's always stays.
    static void Weld(const util::SharedPtr<physics::Geom>& geom0,
                     const util::SharedPtr<physics::Geom>& geom1);
    /// Parts the two geometries, and what hangs on each, if no weld of the scene holds them together. The
    /// part that reaches the world stays on the body, else that of the first geometry.
    static void Unweld(const util::SharedPtr<physics::Geom>& geom0,
                       const util::SharedPtr<physics::Geom>& geom1);
};
}
