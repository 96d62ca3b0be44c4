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
};
}
