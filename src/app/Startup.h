// The steps of the program's life by name, and SDL_main, which goes through them.
#pragma once

#include "util/String.h"

namespace app
{
/// Makes the long-lived services and shows them to scripts, in the order in which they need each
/// other: core::Subsystem (log, SDL, input), resources, simulation, GUI, App, Scene, Serializer,
/// FileInfo. util::FileSystem knows its work directory by then. Needs no window: the headless runner
/// calls it with SDL_VIDEODRIVER=dummy.
/// @throws std::runtime_error  when SDL can't be had
void CreateServices();

/// Makes the folders of scenes and Quiblets where they are missing, and gives the scenes of old, which
/// end in ".cfg", their new extension.
void PrepareSceneDir();

/// Loads the first scene that exists of autosave, exit scene and welcome scene.
void LoadScene();

/// The path that the arguments from the first on name together, or "" when the last one does not end
/// in ".qib".
util::String ScenePathFromArguments(int argc, char** argv);

using PopupFunction = bool (*)(const util::String& title, const util::String& message);

/// The last act of a handler in SDL_main; to be called inside it. Shows the message; throws what was
/// caught once more when the popup's second button was chosen, and ends the process when not. Cleans
/// nothing up, so that the next start finds the autosave.
void EndAfterFailure(const util::String& title, const util::String& message, PopupFunction popup);
}

/// The whole program. Ends the process itself and does not return.
int SDL_main(int argc, char** argv);
