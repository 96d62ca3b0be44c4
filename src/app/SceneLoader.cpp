#include "app/SceneLoader.h"

#include "app/Camera.h"
#include "app/EntityActions.h"
#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/Snapshot.h"
#include "util/FileSystem.h"

using math::Vec2;

namespace app
{
namespace
{
// A pan that no file will hold: when it is still there after loading, the file had no view of its own.
const Vec2 NoPan(1337.42f, -42.1337f);
}

SceneLoader::SceneLoader(bool isImport, util::String path)
    : Action(isImport ? "UndoImportQuiblet" : "UndoLoadScene")
    , m_isImport(isImport)
    , m_path(std::move(path))
    , m_fileName(FileInfo::GetInstancePtr()->GetFileName())
{
}

SceneLoader::~SceneLoader() = default;

void SceneLoader::Do()
{
    m_snapshot = Snapshot::TakeSnapshot();
    m_isLoaded = false;
    m_hasCleared = false;
    m_settings = nullptr;
    try
    {
        m_isLoaded = Load();
        return;
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogError, util::String("Exception caught while loading scene: ") + e.what());
        // That line tells what, this one tells where.
        Log(logging::LogError, "Failed to load scene " + m_path);
    }
    catch (...)
    {
        CatchException(QUIB_LOCATION);
        Log(logging::LogError, "An unknown error occurred while loading the scene " + m_path);
    }
    // Nothing that was loaded shows a view of its own.
    if (Camera* camera = Scene::GetInstancePtr()->GetCamera().get(); camera->GetPan() == NoPan)
        camera->Reset();
}

bool SceneLoader::Load()
{
    util::FileSystem* files = util::FileSystem::GetInstancePtr();
    if (m_path.find_first_of("/\\") == util::String::npos)
        m_path = files->SceneDir() + m_path;
    if (!files->FileExists(m_path))
    {
        Log(logging::LogError, "Tried to load non-existing file: " + m_path);
        return false;
    }
    // A pipe or a device may have no end.
    if (!files->IsFile(m_path))
        QUIB_THROW(FileReadException("Failed to open file \"" + m_path + "\""));

    // Read before anything is thrown away.
    const util::String text = files->ReadWholeFile(m_path);
    m_settings = std::make_unique<SceneSettings>();
    if (m_isImport)
        ImportQuiblet(text);
    else
        LoadScene(text);
    return true;
}

void SceneLoader::LoadScene(const util::String& text)
{
    Scene* scene = Scene::GetInstancePtr();
    FileInfo* info = FileInfo::GetInstancePtr();
    scene->ClearScene();
    m_hasCleared = true;
    info->ClearTexts();
    scene->GetCamera()->SetPan(NoPan);
    Serializer::GetInstancePtr()->Deserialize(text);
    if (scene->GetCamera()->GetPan() == NoPan)
        scene->ZoomToScene();
    scene->SetTexts(info->GetTitle(), info->GetAuthor(), info->GetDescription());
    Log(logging::LogVerbose, "Loaded scene " + m_path);
}

void SceneLoader::ImportQuiblet(const util::String& text)
{
    Scene* scene = Scene::GetInstancePtr();
    const FileTextsKept kept;
    const GroupPtr loaded = Serializer::GetInstancePtr()->Deserialize(text);
    scene->SetSelection(loaded);
    MoveToMouse(loaded);
    scene->MoveToFront(loaded);
    Log(logging::LogVerbose, "Imported quiblet " + m_path);
}

void SceneLoader::Undo()
{
    if (m_settings)
        m_settings->Restore();
    m_snapshot->Restore();
    SwapFileName();
}

void SceneLoader::Redo()
{
    SwapFileName();
    Do();
}

// Saving again must not write one scene over the file of another.
void SceneLoader::SwapFileName()
{
    if (m_isImport)
        return;
    FileInfo* info = FileInfo::GetInstancePtr();
    const util::String name = info->GetFileName();
    info->SetFileName(m_fileName);
    m_fileName = name;
}
}
