// The fixed file names. Configurations lie in util::FileSystem::ConfigDir, scenes in SceneDir.
#pragma once

namespace app
{
constexpr const char* CONFIG_FILE = "config.cfg";       // written at every orderly exit
constexpr const char* CONFIG_AUTOEXEC = "autoexec.cfg"; // the user's, run first at every start
constexpr const char* CONFIG_AUTOSAVE =
    "config.autosave.cfg";                              // left by a run that did not end in order
constexpr const char* Scene_Autosave = "_AUTOSAVE.qib"; // likewise
constexpr const char* Scene_Last = "_ONEXITSAVE.qib";   // written at every orderly exit
constexpr const char* Scene_Welcome = "welcome.qib";    // when nothing else can be shown
}
