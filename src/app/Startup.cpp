#include "app/Startup.h"

#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Constants.h"
#include "app/FileInfo.h"
#include "app/PictureTaker.h"
#include "app/ProgramArguments.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "core/ResourceManager.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "input/Recorder.h"
#include "input/Replay.h"
#include "logging/Logger.h"
#include "os/Platform.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/FileSystem.h"

#include <GL/gl.h>
#include <SDL.h>
#include <boost/filesystem.hpp>

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>

namespace app
{
namespace
{
util::FileSystem* Files()
{
    return util::FileSystem::GetInstancePtr();
}

bool AsksForVersion(int argc, char** argv)
{
    if (argc < 1)
        return false;
    // Deliberate: anywhere in any argument, so that "x/version" asks too.
    return std::any_of(argv + 1, argv + argc,
                       [](const util::String& argument)
                       {
                           return argument.find("-version") != util::String::npos ||
                                  argument.find("/version") != util::String::npos;
                       });
}

void WarnOfSecondCopy()
{
    if (!os::TryLock(Files()->WorkDir() + "quib.lock"))
        Log(logging::LogWarning,
            "Another Quib runs in this directory: the two will overwrite each other's settings and "
            "scenes");
}

/// What can't be looked at counts as missing, with a line in the log.
bool Exists(const util::String& path)
{
    try
    {
        return Files()->FileExists(path);
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogWarning, "Failed to look at \"" + path + "\": " + e.what());
        return false;
    }
}

/// What is to be written over without having been read keeps its text under another name.
void PutAside(const util::String& path)
{
    const util::String first = path + ".broken";
    util::String aside = first;
    for (int i = 2; Exists(aside); ++i)
        aside = first + util::ToString(i);
    Log(logging::LogWarning, "\"" + path + "\" can't be used and becomes \"" + aside + "\"");
    Files()->RenameFile(path, aside);
}

/// A pipe or a device in place of the file may have no end.
void LoadConfigFile(const util::String& path)
{
    if (Exists(path) && !Files()->IsFile(path))
        Log(logging::LogWarning, "Not a file: \"" + path + "\"");
    else
        script::Parser::GetInstancePtr()->LoadConfig(path);
}

bool IsScript(const util::String& path)
{
    try
    {
        return Files()->IsFile(path) &&
               script::Parser::GetInstancePtr()->Parse(Files()->ReadWholeFile(path));
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        return false; // whoever asked tells
    }
}

core::WindowParams FirstWindowParams()
{
    core::WindowParams params;
    math::TVector2<int> display;
    if (os::GetDisplaySize(display))
    {
        // Room for the window's frame and the desktop's bars.
        params.size.x = std::min(params.size.x, display.x - 64);
        params.size.y = std::min(params.size.y, display.y - 64);
    }
    return params;
}

void TakeSizeOfReplay(const input::Replay& replay)
{
    const input::Recording& recording = replay.GetRecording();
    if (recording.windowWidth <= 0)
        return;
    core::WindowParams params = core::Subsystem::GetInstancePtr()->GetConfigParams();
    params.size = math::TVector2<int>(recording.windowWidth, recording.windowHeight);
    core::Subsystem::GetInstancePtr()->SetParams(params);
}

void OpenWindow(bool isFirstRun)
{
    core::Subsystem* subsystem = core::Subsystem::GetInstancePtr();
    if (isFirstRun)
    {
        App::GetInstancePtr()->SetFirstTimeRunning();
        subsystem->SetParams(FirstWindowParams());
    }
    if (const input::Replay* replay = input::Replay::Get())
        TakeSizeOfReplay(*replay);
    subsystem->ApplyParserConfig();
    if (input::Recorder* recorder = input::Recorder::Get())
        recorder->NoteWindow(subsystem->GetWidth(), subsystem->GetHeight());
    if (const GLubyte* extensions = glGetString(GL_EXTENSIONS))
        Log(logging::LogInfo, util::String("Available OpenGL extensions: ") +
                                  reinterpret_cast<const char*>(extensions));
}

util::String ScenePathFrom(ProgramArguments& arguments)
{
    return ScenePathFromArguments(static_cast<int>(arguments.others.size()),
                                  arguments.others.data());
}

/// @return whether the scene that was asked for is there
bool LoadFirstScene(const util::String& path)
{
    if (path.empty())
    {
        LoadScene();
        return true;
    }
    Log(logging::LogVerbose, "Loading argument " + path);
    return App::GetInstancePtr()->GetAppGUI()->LoadScene(path, true);
}

void TearDown()
{
    Log(logging::LogInfo, "Destroying subsystem");
    script::Parser::Destroy();
    core::Subsystem::Destroy();
    // A script that still holds the subsystem must not make a full-screen mode outlive us.
    if (SDL_WasInit(SDL_INIT_VIDEO))
        SDL_Quit();
}

/// Reads the settings, and changes no file: settings and scenes are the user's, who is not here.
/// @return the exit code
int TakePicture(ProgramArguments& arguments)
{
    for (const char* name : {CONFIG_AUTOEXEC, CONFIG_FILE})
        if (Exists(Files()->ConfigDir() + name))
            LoadConfigFile(Files()->ConfigDir() + name);
    core::WindowParams params = core::Subsystem::GetInstancePtr()->GetConfigParams();
    params.fullscreen = false; // no desktop is to be turned over for a picture
    core::Subsystem::GetInstancePtr()->SetParams(params);
    OpenWindow(false);
    App::GetInstancePtr()->CreateGUI();

    const util::SharedPtr<PictureTaker> taker =
        QUIB_NEW PictureTaker(arguments.screenshot, arguments.after);
    if (LoadFirstScene(ScenePathFrom(arguments)))
    {
        App::GetInstancePtr()->GetAppGUI()->StopAutosaves();
        gui::GUI::GetInstancePtr()->GetMainContainer()->AddComponent(taker);
        core::Subsystem::GetInstancePtr()->Run();
    }
    if (!taker->IsDone())
        Log(logging::LogError, "No picture was taken");
    TearDown();
    return taker->IsDone() ? 0 : 1;
}

/// @return the exit code
int RunProgram(ProgramArguments& arguments)
{
    CreateServices();
    if (!arguments.screenshot.empty())
        return TakePicture(arguments);
    WarnOfSecondCopy();
    PrepareSceneDir();
    Log(logging::LogInfo, "Application created");

    OpenWindow(!LoadConfiguration());
    App::GetInstancePtr()->CreateGUI();
    LoadFirstScene(ScenePathFrom(arguments));

    Log(logging::LogVerbose, "Running program...");
    core::Subsystem::GetInstancePtr()->Run();
    ShutDown();
    return 0;
}
}

void CreateServices()
{
    core::Subsystem::Create();
    core::Subsystem::GetInstancePtr()->SetTitle(Files()->NameAndVersion() + " by Aldo Vesk");

    // Each of these is made by being named here.
    core::Subsystem::GetInstancePtr()->AddToRoot();
    core::ResourceManager::GetInstancePtr()->AddToRoot();
    physics::Simulation::GetInstancePtr()->AddToRoot();
    physics::SPH::GetInstancePtr()->AddToRoot();
    gui::GUI::GetInstancePtr()->AddToRoot();

    // The one singleton made by new: it is a component, and the GUI's tree is what updates and draws
    // it.
    const util::SharedPtr<App> application = QUIB_NEW App;
    gui::GUI::GetInstancePtr()->GetMainContainer()->AddComponent(application);
    application->AddToRoot();
    Scene::GetInstancePtr()->AddToRoot();

    Serializer::Create();
    FileInfo::Create();
}

void PrepareSceneDir()
{
    boost::system::error_code error;
    boost::filesystem::create_directories(Files()->QuibletDir(), error);
    if (error)
        Log(logging::LogWarning,
            "Failed to make the folder " + Files()->QuibletDir() + ": " + error.message());

    try
    {
        const std::vector<util::String> old = Files()->FilesInDir(Files()->SceneDir(), "*.cfg");
        if (old.empty())
            return;
        Log(logging::LogVerbose, "Renaming old .cfg files to .qib...");
        for (const util::String& name : old)
            Files()->RenameFile(Files()->SceneDir() + name,
                                Files()->SceneDir() + name.substr(0, name.size() - 3) + "qib");
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogWarning,
            "Failed to read the folder " + Files()->SceneDir() + ": " + e.what());
    }
}

bool LoadConfiguration()
{
    LoadConfigFile(Files()->ConfigDir() + CONFIG_AUTOEXEC);

    // Its presence means that the last run did not end in order.
    const util::String autosave = Files()->ConfigDir() + CONFIG_AUTOSAVE;
    const bool isRecovery = Exists(autosave);
    if (isRecovery)
    {
        Log(logging::LogVerbose,
            util::String("Recovering ") + CONFIG_AUTOSAVE + " from previous crash");
        if (IsScript(autosave))
        {
            script::Parser::GetInstancePtr()->LoadConfig(autosave);
            return true;
        }
        PutAside(autosave);
    }
    const util::String config = Files()->ConfigDir() + CONFIG_FILE;
    if (!Exists(config))
        return isRecovery;
    LoadConfigFile(config);
    // The end of the run writes another one, where the file's rights let it.
    if (Files()->IsFile(config) && ::access(config.c_str(), R_OK) == 0 && !IsScript(config))
        PutAside(config);
    return true;
}

void LoadScene()
{
    for (const char* name : {Scene_Autosave, Scene_Last, Scene_Welcome})
    {
        const util::String path = Files()->SceneDir() + name;
        if (!Exists(path))
            continue;
        if (App::GetInstancePtr()->GetAppGUI()->LoadScene(name, true) || name == Scene_Welcome)
            return;
        PutAside(path);
    }
}

util::String ScenePathFromArguments(int argc, char** argv)
{
    if (argc < 2 || !util::iends_with(argv[argc - 1], ".qib"))
        return "";
    // Deliberate: all of them. A shell has split a path with blanks.
    const util::String path = util::Join(std::vector<util::String>(argv + 1, argv + argc), " ");
    // A bare name means the scene folder to everything below, but the current one to whoever typed it.
    if (path.find('/') == util::String::npos && Exists("./" + path))
        return "./" + path;
    return path;
}

void ShutDown()
{
    Log(logging::LogInfo, "Subsystem::Run returned, saving config...");
    // From here on the next start sees an orderly end, unless the autosave is the last copy that there is.
    if (script::Parser::GetInstancePtr()->SaveConfig(Files()->ConfigDir() + CONFIG_FILE))
        Files()->EraseFileIfPossible(Files()->ConfigDir() + CONFIG_AUTOSAVE);
    App::GetInstancePtr()->OnShutdown();
    Files()->EraseLeftover(Files()->ConfigDir() + CONFIG_AUTOSAVE);
    Files()->EraseLeftover(Files()->SceneDir() + Scene_Autosave);

    TearDown();
    Log(logging::LogInfo, "Returning 0 from main");
    logging::Logger::Destroy();
}

void EndAfterFailure(const util::String& title, const util::String& message, PopupFunction popup)
{
    // Deliberate: "Cancel" throws on and leaves a debugger at the place, "Debug" ends in silence.
    if (popup(title, message))
        throw;
    SDL_Quit(); // a full-screen mode must not outlive us
    _exit(1);
}
}

namespace app
{
namespace
{
input::Recording ReadRecording(const util::String& path)
{
    // To open a pipe could last.
    std::ifstream file(Files()->IsFile(path) ? path : "", std::ios::binary);
    const util::String text((std::istreambuf_iterator<char>(file)), {});
    if (!file.is_open() || file.bad())
        throw input::BadRecording("it can't be read");
    return input::ParseRecording(text);
}

/// Both last as long as the program.
void StartRecordingOrReplay(const ProgramArguments& arguments)
{
    if (!arguments.record.empty())
        new input::Recorder(arguments.record);
    if (!arguments.screenshot.empty())
        new input::Replay(PictureTaker::MakeRecording(arguments.after), true, false);
    if (arguments.replay.empty())
        return;
    try
    {
        new input::Replay(ReadRecording(arguments.replay), arguments.quitAfterReplay);
    }
    catch (input::BadRecording& e)
    {
        throw input::BadRecording(arguments.replay + ": " + e.what());
    }
}

/// Ends the program when they can't be followed. There is no log yet that could be told.
ProgramArguments FollowArguments(int argc, char** argv)
{
    try
    {
        ProgramArguments arguments = ReadProgramArguments(argc, argv);
        if (arguments.help)
        {
            std::cout << ProgramHelp << std::flush;
            std::exit(0);
        }
        if (!arguments.screenshot.empty() && ScenePathFrom(arguments).empty())
            throw std::invalid_argument("--screenshot needs a scene");
        StartRecordingOrReplay(arguments);
        return arguments;
    }
    catch (std::invalid_argument& e)
    {
        std::cerr << "quib: " << e.what() << std::endl;
        std::exit(2);
    }
    catch (input::BadRecording& e)
    {
        std::cerr << "quib: " << e.what() << std::endl;
        std::exit(1);
    }
}
}
}

int SDL_main(int argc, char** argv)
{
    util::FileSystem::GetInstancePtr()->CalcWorkDir(argc > 0 ? argv[0] : "");
    if (app::AsksForVersion(argc, argv))
    {
        std::cout << util::FileSystem::GetInstancePtr()->NameAndVersion() << std::endl;
        std::exit(0);
    }

    app::ProgramArguments arguments = app::FollowArguments(argc, argv);

    core::Subsystem::HandleSignals();
    int status = 1;
    try
    {
        status = app::RunProgram(arguments);
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogError, util::String("Exception caught in main: ") + e.what());
        app::EndAfterFailure("Exception caught", e.what(), os::ShowErrorPopup);
    }
    catch (...)
    {
        CatchException(QUIB_LOCATION);
        Log(logging::LogError, "Unknown exception caught in main.");
        app::EndAfterFailure("Unknown exception caught", "Badness", os::ShowErrorPopup);
    }
    // Deliberate: most services are never torn down, and no static destructor may meet them.
    _exit(status);
}
