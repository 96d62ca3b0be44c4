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
class EntityState;
class Snapshot;
using EntityStatePtr = util::SharedPtr<const EntityState>;
using SnapshotPtr = util::SharedPtr<Snapshot>;

class Snapshot : public util::Pointee
{
public:
    ~Snapshot() override;

    /// Of everything as it is now. Costs the time of saving the scene, so that it belongs to an edit
    /// of the user and not to a frame.
    static SnapshotPtr TakeSnapshot();

    /// Any number of times. Brings back the entity objects themselves, in their order; bodies and
    /// particles to the bit, with their velocities; the view; and groups and widgets, as new objects.
    /// Whether the simulation runs is not part of it, nor are its settings.
    ///
    /// Entities that were dead by then, and which the next update of the scene would have removed, are no
    /// part of it. One that can't be brought back is logged and left out.
    void Restore();

private:
    // Something that no entity tells of itself.
    class RestoreHelper
    {
    public:
        /// @param subject  what it is about: no two helpers of a snapshot have the same
        explicit RestoreHelper(const void* subject)
            : m_subject(subject)
        {
        }
        virtual ~RestoreHelper() = default;
        virtual void Restore() const = 0;
        /// @param older  of the same subject
        virtual bool IsSame(const RestoreHelper& older) const = 0;

        const void* GetSubject() const { return m_subject; }

    private:
        const void* m_subject;
    };
    using HelperPtr = std::shared_ptr<const RestoreHelper>;
    class HelperFinder;
    class BodyInfo;
    class JointInfo;
    class PenInfo;
    class EntChainInfo;

    Snapshot();

    void StoreWater();
    void StoreEntities();
    void StoreHelpers();
    void StoreBodies(HelperFinder& older);
    void StoreJointsAndPens(HelperFinder& older);
    void StoreChains(HelperFinder& older);
    template<typename Info, typename Subject>
    const Info* AddHelper(HelperFinder& older, Subject&& subject);
    void StoreGroups();
    void ClearWorld() const;
    void DetachChains() const;
    void DeserializeEntities(std::vector<bool>& failed) const;
    void AddEntities(const std::vector<bool>& failed) const;
    void RestoreWater() const;
    void RestoreView() const;

    // What an entity says of itself, and each helper, is kept once for as long as it is the same: most
    // edits change few of many entities.
    static inline Snapshot* s_latest = nullptr;

    GroupPtr m_selection;
    GroupPtr m_trackedGroup; // may be null
    math::Mat3 m_guiToWorld;
    // The same view as it stands in the camera's attributes, for a window of that size: the way through
    // the matrix rounds, and loses formulas.
    math::Vec2 m_guiSize;
    script::ObjectPtr m_pan, m_zoom;
    util::String m_title, m_author, m_description;
    std::vector<EntityPtr> m_entities;    // back to front
    std::vector<EntityStatePtr> m_states; // of each of them
    std::vector<HelperPtr> m_helpers;
    std::vector<const BodyInfo*> m_bodies;      // those of the helpers, in the simulation's order
    std::vector<const EntChainInfo*> m_chained; // those of the helpers
    std::vector<util::SharedPtr<physics::Particle>> m_particles;
    std::vector<math::Vec2> m_particlePositions;
    std::vector<math::Vec2> m_particleVelocities;
    std::vector<float> m_particleAges; // seconds
    double m_simTime;                  // seconds
    script::CodeBlockPtr m_code;       // a call for each group and each widget of one
};
}
