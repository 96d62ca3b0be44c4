// The named steps of the program's life, and SDL_main, which runs through them.
#pragma once

#include "util/String.h"

namespace app
{
/// Makes the long-lived services and shows them to scripts, in the order in which they need each
/// other: core::Subsystem (log, SDL, input), resources, simulation, GUI, App, Scene, Serializer,
/// FileInfo. util::FileSystem must know its work directory by then. Needs no window: the headless
/// runner calls it with SDL_VIDEODRIVER=dummy.
void CreateServices();

/// Loads the first scene that exists of autosave, exit scene and welcome scene.
void LoadScene();
}

/// The whole program. Ends the process itself and does not return.
int SDL_main(int argc, char** argv);
