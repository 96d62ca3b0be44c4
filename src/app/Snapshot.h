// A copy of the complete state of the scene and the physics, to come back to. It keeps the entities
// themselves, so that a restored scene holds the same objects. Actions and tools hold snapshots.
#pragma once

#include "app/Group.h"
#include "math/Matrix.h"
#include "math/Vector.h"
#include "script/Expressions.h"

#include <memory>
#include <utility>
#include <vector>

namespace physics
{
class Particle;
}

namespace app
{
class EntitySerializer;
class Snapshot;
using SnapshotPtr = util::SharedPtr<Snapshot>;

class Snapshot : public util::Pointee
{
public:
    ~Snapshot() override;

    /// Of everything as it is now. Costs the time of saving the scene, so that it belongs to an edit
    /// of the user and not to a frame.
    static SnapshotPtr TakeSnapshot();

    /// Any number of times. Whether the simulation runs is not part of it.
    void Restore();

private:
    // Something that no entity tells of itself.
    class RestoreHelper
    {
    public:
        virtual ~RestoreHelper() = default;
        virtual void Restore() const = 0;
    };

    Snapshot();
};
}
