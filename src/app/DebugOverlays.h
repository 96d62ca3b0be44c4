// What App's debug settings show on top of the entities, in world coordinates.
#pragma once

#include "util/SharedPtr.h"

#include <vector>

namespace physics
{
class Contact;
}

namespace app
{
/// A point where each body and each drop is, and a line of its velocity. Those that can't move have none.
void DrawBodyCenters();
/// The same for each drop, whether it can move or not.
void DrawParticleCenters();
/// A point, white for half a second and then red, with its impulse and its depth.
void DrawCollisions(const std::vector<util::SharedPtr<physics::Contact>>& contacts);
}
