#include "app/SceneLoader.h"

#include "app/Camera.h"
#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "util/FileSystem.h"

using math::Vec2;

namespace app
{
namespace
{
// A pan that no file will hold: when it is still there after loading, the file had no view of its own.
const Vec2 NoPan(1337.42f, -42.1337f);
}

bool SceneLoader::Do()
{
    try
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

        Scene* scene = Scene::GetInstancePtr();
        FileInfo* info = FileInfo::GetInstancePtr();
        // Read before anything is thrown away.
        const util::String text = files->ReadWholeFile(m_path);
        scene->ClearScene();
        info->ClearTexts();
        scene->GetCamera()->SetPan(NoPan);
        Serializer::GetInstancePtr()->Deserialize(text);
        if (scene->GetCamera()->GetPan() == NoPan)
            scene->ZoomToScene();
        scene->SetTexts(info->GetTitle(), info->GetAuthor(), info->GetDescription());
        Log(logging::LogVerbose, "Loaded scene " + m_path);
        return true;
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
    return false;
}
}
