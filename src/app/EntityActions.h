// What menus and keys do to a group of entities. Each closes the popup, which is where it was chosen, and
// is one step of undo unless it says otherwise.
//
// The group may be the selection itself. An action that finds nothing to act on leaves no step behind.
#pragma once

#include "app/Group.h"

namespace app
{
void OnErase(const GroupPtr& group);
/// Pauses. The clones are selected and lie a centimetre of the screen beside the originals.
void OnClone(const GroupPtr& group);
/// Left and right change places.
void OnMirror(const GroupPtr& group);
/// Bodies become water that moves as they did.
void Liquify(const GroupPtr& group);
/// Removes what holds the group's geometries: the welds; when there are none, the hinges; when there are
/// none of these either, the springs.
void Loosen(const GroupPtr& group);
/// Hinges each body at its centre to what lies there beside it, which is the background at last.
void AddCenterHinge(const GroupPtr& group);
/// Polygons become circles of the same area in the same place. What is fastened to them stays so.
void TransformIntoCircles(const GroupPtr& group);
/// Of each chain that has a member here, all members are set free.
void DissolveChain(const GroupPtr& group);
/// No step of undo: a trail is no part of what the user has built.
void OnPenClearTrail(const GroupPtr& group);

/// Moves the group so that the middle of its box lies under the mouse. One that has no finite box stays.
/// No step of undo, and no popup: it is the end of a paste and of an import.
void MoveToMouse(const GroupPtr& group);
}
