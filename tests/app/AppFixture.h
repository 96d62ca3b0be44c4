// The whole program without a window, in a work directory of its own. Its services live as long as
// the process; each test finds an empty scene and leaves one.
#pragma once

#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Camera.h"
#include "app/FileInfo.h"
#include "app/Group.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/Startup.h"
#include "app/Undoer.h"
#include "app/entities/GeomEntity.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/FileSystem.h"

#include "../TestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <vector>

namespace app
{
using Entities = std::vector<EntityPtr>;

class AppFixture : public testing::Test
{
public:
    /// The work directory of all tests.
    static const test::TempDir& Dir()
    {
        static test::TempDir dir;
        return dir;
    }

    static script::Parser* Parser() { return script::Parser::GetInstancePtr(); }
    static Scene* TheScene() { return Scene::GetInstancePtr(); }
    static physics::Simulation* Sim() { return physics::Simulation::GetInstancePtr(); }
    static Camera* TheCamera() { return TheScene()->GetCamera().get(); }

    static util::String Run(const util::String& code) { return Parser()->ExecuteToString(code); }

    /// Runs the statement, and gives what it added: null when it added nothing.
    static util::SharedPtr<GeomEntity> Add(const util::String& code)
    {
        const size_t before = TheScene()->GetEntities().size();
        Run(code);
        if (TheScene()->GetEntities().size() != before + 1)
            return nullptr;
        return util::DynamicCast<GeomEntity>(TheScene()->GetEntities().back());
    }

    static GroupPtr GroupOf(const Entities& entities)
    {
        const GroupPtr group = QUIB_NEW Group;
        for (const EntityPtr& entity : entities)
            group->Add(entity);
        return group;
    }

    static util::String Save() { return Serializer::GetInstancePtr()->SerializeScene(); }

    /// Without the world's.
    static size_t BodyCount() { return Sim()->GetBodies().size() - 1; }

    /// Processor time.
    static double Seconds() { return double(clock()) / CLOCKS_PER_SEC; }

    static const physics::Geom& GeomOf(const util::SharedPtr<GeomEntity>& entity)
    {
        return *entity->GetGeom();
    }

    /// The value of an entity's attribute, printed.
    static util::String Attribute(const EntityPtr& entity, const char* name)
    {
        return entity->GetObject(name)->ToText();
    }

    /// Empties both stacks. The limit is then the usual one.
    static void ForgetUndo() { Run("App.maxUndo = 0; App.maxUndo = 25"); }

    static void StartServices()
    {
        static bool isStarted = false;
        if (isStarted)
            return;
        isStarted = true;
        setenv("SDL_VIDEODRIVER", "dummy", 1);
        boost::filesystem::create_directories(Dir() / "scenes");
        util::FileSystem::GetInstancePtr()->SetWorkDir(Dir().Path());
        core::Subsystem::SetLogToStandardOutput(false);
        CreateServices();
    }

protected:
    AppFixture() { StartServices(); }

    void SetUp() override
    {
        Reset();
        // A repeated warning is left out for two frames.
        logging::Logger::GetInstancePtr()->Update();
        logging::Logger::GetInstancePtr()->Update();
    }
    void TearDown() override { Reset(); }

    static void Reset()
    {
        TheScene()->ClearScene();
        FileInfo::GetInstancePtr()->ClearTexts();
        FileInfo::GetInstancePtr()->SetVersion(FileInfo::LATEST_VERSION);
        // Forgets the ids of an earlier text.
        Serializer::GetInstancePtr()->Deserialize("");
        Sim()->m_gravity = math::Vec2(0, -9.8f);
        Sim()->m_gravitySwitch = true;
        Sim()->m_running = true;
        ForgetUndo();
        App::GetInstancePtr()->GetAppGUI()->PostponeAutosave();
    }
};
}
