// What can be undone. Actions live on the stacks of the Undoer, and die when they drop off their end.
#pragma once

#include "app/Group.h"
#include "util/SharedPtr.h"
#include "util/String.h"

#include <utility>

namespace app
{
class Snapshot;
using SnapshotPtr = util::SharedPtr<Snapshot>;

class Action : public util::Pointee
{
public:
    /// @param name  a key of the language files; the pointer is kept
    explicit Action(const char* name)
        : m_name(name)
    {
    }

    /// In the language of the program, for what tells the user what an undo would take back.
    util::String Name() const;
    const char* GetNameKey() const { return m_name; }

    /// To be called once, by the Undoer.
    virtual void Do() = 0;
    virtual void Undo() = 0;
    /// Unless overridden the same as Do.
    virtual void Redo() { Do(); }

private:
    const char* m_name;
};
using ActionPtr = util::SharedPtr<Action>;

// A mere point to come back to.
class SnapshotAction final : public Action
{
public:
    /// Takes the snapshot.
    SnapshotAction();
    ~SnapshotAction() override;

    void Do() override {}
    void Undo() override;
    void Redo() override;

private:
    SnapshotPtr m_snapshot;
};

// A change that somebody else has made already, between the two snapshots.
class SnapshotRestorer final : public Action
{
public:
    SnapshotRestorer(SnapshotPtr before, const char* name, SnapshotPtr after);
    ~SnapshotRestorer() override;

    void Do() override;
    void Undo() override;

private:
    SnapshotPtr m_before;
    SnapshotPtr m_after;
};

// Play. There is no other reset: who wants the state from before the run undoes this.
class SimStart final : public Action
{
public:
    /// Takes the snapshot.
    SimStart();
    ~SimStart() override;

    void Do() override;
    /// Leaves the simulation paused.
    void Undo() override;
    void Redo() override;

private:
    SnapshotPtr m_snapshot;
};

class EraseEntities final : public Action
{
public:
    /// @param entities  those that have left the scene by the time of Do are left out
    explicit EraseEntities(EntitySet entities);
    explicit EraseEntities(const GroupPtr& group);
    ~EraseEntities() override;

    void Do() override;
    void Undo() override;

private:
    EntitySet m_entities;
    SnapshotPtr m_snapshot;
};
}
