// Owns what the user has built: the entities from back to front, the named groups, the selection and
// the camera. The one place through which entities enter and leave the world. The script object
// "Scene".
#pragma once

#include "app/Group.h"
#include "math/Matrix.h"
#include "math/Vector.h"
#include "physics/Body.h"
#include "script/Attributes.h"
#include "script/Reflected.h"
#include "util/Singleton.h"

#include <unordered_map>
#include <vector>

namespace physics
{
class Polygon;
}

namespace app
{
class Camera;

class Scene : public script::Reflected, public util::Singleton<Scene>
{
public:
    /// Wants the simulation and the App to be there.
    Scene();
    ~Scene() override;

    const std::vector<EntityPtr>& GetEntities() const { return m_entities; }
    const GroupPtr& GetSelection() const { return m_selection; }
    const util::SharedPtr<Camera>& GetCamera() const { return m_camera; }
    /// All named groups by name, of equal names by their lowest entity id, and then the older first.
    /// The order is the same in every run, which that of the set is not.
    std::vector<GroupPtr> GetGroups() const;
    /// The first of them in the order of GetGroups; null when there is none.
    GroupPtr GetGroupByName(const util::String& name) const;
    GroupPtr GetOrCreateGroupByName(const util::String& name);
    /// Whether the scene has another group of the same name.
    bool IsNameShared(const GroupPtr& group) const;
    /// @param entity  null is never there
    bool HasEntity(const EntityPtr& entity) const;
    bool IsSelected(const EntityPtr& entity) const { return m_selection->Contains(entity); }

    /// From top to bottom.
    /// @param pos  world position
    std::vector<EntityPtr> GetEntitiesAt(const math::Vec2& pos) const;
    /// The topmost, or null.
    EntityPtr GetEntityAt(const math::Vec2& pos) const;
    /// What a click would pick: the topmost entity, with all groups that it is in.
    GroupPtr GetSelectionAt(const math::Vec2& pos) const;
    /// The same for every frame, added to a list that the caller keeps. Some may come more than once.
    void GetSelectionAt(const math::Vec2& pos, std::vector<Entity*>& picked) const;
    /// The geometries of GetEntitiesAt, and behind them always the world's.
    std::vector<physics::GeomPtr> GetGeomsAt(const math::Vec2& pos) const;
    /// The topmost; on empty space the world's.
    physics::GeomPtr GetGeomAt(const math::Vec2& pos) const;
    physics::GeomPtr GetGeomAtMousePos() const;
    /// Of all entities that are alive, and the world's.
    physics::GeomSet GetAllGeoms() const;
    /// Whether a particle is closer than 2.2 radii.
    bool IsWaterAt(const math::Vec2& pos) const;

    /// Puts it on top. Null is ignored; one that is here already must not come again.
    void AddEntity(const EntityPtr& entity);
    void RemoveEntity(const EntityPtr& entity);
    /// The same for many, in linear time; joints and pens leave before geometries do.
    void RemoveEntities(const std::vector<EntityPtr>& entities);
    /// A group named like the selection is dissolved into it, one named like what the camera follows
    /// becomes that.
    void AddGroup(const GroupPtr& group);
    /// The selection stays.
    void RemoveGroup(const GroupPtr& group);
    /// The selection takes the group's entities; it stays the same object.
    void SetSelection(const GroupPtr& group);
    /// A click at the place, with Ctrl and Shift as in OnNewSelection.
    /// @return whether anything is selected now
    bool SelectAt(const math::Vec2& pos);
    /// What was picked becomes the selection, is added to it with Ctrl, taken from it with Shift, and
    /// turned over in it with both. An empty selection takes it in any case.
    void OnNewSelection(const GroupPtr& picked);
    /// A lasso.
    /// @return whether it caught anything
    bool IsSelection(const physics::Polygon& lasso);
    /// Selects those of the entities that are in a chain and in the scene.
    void SelectChain(const EntitySet& entities);
    /// Holds the bodies of the selected entities still, for instance while they are dragged.
    /// Deliberate: false releases every body of the scene, whether selected or not.
    void SuspendSelected(bool suspend);

    // In the list of entities. Those in the group and those outside keep their order among themselves.
    void MoveToFront(const GroupPtr& group);
    void MoveToBack(const GroupPtr& group);

    /// Moves what GetTransformEntities of the group tells.
    void Transform(const GroupPtr& group, const math::Mat2D& matrix);
    /// Between StartTransform and EndTransform of each, which are the caller's.
    /// @param entities  geometries first, as GetTransformEntities gives them
    static void TransformEach(const std::vector<EntityPtr>& entities, const math::Mat2D& matrix);
    /// Scales or mirrors, which replaces the geometry entities. The group and all groups of the scene
    /// hold the new ones afterwards. One that can't be scaled so far stays, and the log says why.
    void Transform(const GroupPtr& group, const math::Mat3& matrix);
    /// Puts other geometries in the place of these: in the list, the group, all groups and chains. Joints
    /// and pens keep their points, wherever these lie on what they are fastened to now.
    /// @param map  from entities of the scene to those that replace them
    void ReplaceGeoms(const GroupPtr& group, const EntityMap& map);
    /// Copies of the group's entities, each directly above its original and in the same groups.
    /// @return a new group of them, with the name of this one
    GroupPtr CreateClone(const GroupPtr& group);

    /// Takes the entity out of all groups, and out of what the camera follows.
    void RemoveFromGroups(const EntityPtr& entity);
    void RemoveFromGroups(const EntitySet& entities);

    /// Writes each entity's place in the list to its zDepth.
    void DepthTagEntities();
    /// Puts the list in the order of the entities' zDepth, the lowest at the back. Stable: equal depths
    /// keep their order.
    void SortByDepth();

    /// Once a frame: updates the living, removes the dead, and the bodies that nobody shows.
    void Update(float dt);
    /// Removes bodies from the simulation that no entity holds.
    void FlushBodies();
    /// Brings everything finite into view.
    void ZoomToScene();
    /// Back to an empty world with the default view: no entities, no groups but the selection, no
    /// texts, no ids of a file. Settings of the simulation stay.
    void ClearScene();
    /// The same as an edit of the user's.
    void ClearSceneUndoable();
    void EraseWater();

    /// @param fileName  without folder and ending it becomes the title
    void SetTitle(const util::String& fileName);
    util::String GetTitle() const { return m_title; }
    util::String GetAuthor() const { return m_author; }
    util::String GetDescription() const { return m_description; }
    /// Each that is not empty replaces what was there.
    void SetTexts(const util::String& title, const util::String& author,
                  const util::String& description);

private:
    void OnTitleChange();
    void RemoveEmptyGroups();
    /// All that removing an entity is, but for the list of entities, the groups and the simulation.
    void Forget(const EntityPtr& entity);
    /// In the list, the groups, the chains and the simulation.
    void ReplaceEntities(const EntityMap& map);

    script::AttribWrapper<util::String> m_title;
    script::AttribWrapper<util::String> m_author;
    script::AttribWrapper<util::String> m_description;
    std::vector<EntityPtr> m_entities; // back to front: draw order, and the last is picked first
    util::HashSet<GroupPtr> m_groups;  // holds the selection at all times
    // The same. A text can make thousands, and ask for one by name for each of thousands of entities.
    std::unordered_map<util::String, util::HashSet<GroupPtr>> m_groupsByName;
    GroupPtr m_selection;
    util::SharedPtr<Camera> m_camera;
    std::vector<unsigned> m_heldBodies; // during FlushBodies
};
}
