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

/// Runs autoexec.cfg, and then the settings: the autosave of a run that did not end in order, else
/// config.cfg. An autosave that is no script is put aside and counts as none.
/// @return false on the first run of all
bool LoadConfiguration();

/// Makes the folders of scenes and Quiblets where they are missing, and gives the scenes of old, which
/// end in ".cfg", their new extension.
void PrepareSceneDir();

/// Loads the first scene that exists of autosave, exit scene and welcome scene. The first two will be
/// saved over: one that can't be loaded is put aside, so that its owner may still look at it, and counts
/// as none.
void LoadScene();

/// The path that the arguments from the first on name together, or "" when the last one does not end
/// in ".qib".
util::String ScenePathFromArguments(int argc, char** argv);

/// What comes after the loop: saves settings and scene, erases what a next start would take for a run
/// that did not end in order, and takes down what is taken down at all.
void ShutDown();

using PopupFunction = bool (*)(const util::String& title, const util::String& message);

/// The last act of a handler in SDL_main; to be called inside it. Shows the message; throws what was
/// caught once more when the popup's second button was chosen, and ends the process when not. Cleans
/// nothing up, so that the next start finds the autosave.
void EndAfterFailure(const util::String& title, const util::String& message, PopupFunction popup);
}

/// The whole program. Ends the process itself and does not return.
int SDL_main(int argc, char** argv);
