// A frame in which nothing new happens asks for no memory, whatever it shows.
#include "AllocationCounter.h"
#include "FreshProcess.h"
#include "TestSupport.h"
#include "app/App.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/Startup.h"
#include "app/entities/Entity.h"
#include "core/RecordedSDL.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "input/Input.h"
#include "physics/Particle.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/FileSystem.h"
#include "util/Profiler.h"
#include "util/Profiler2.h"

#include <GL/glew.h>
#include <SDL.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace
{
int s_mouseX = 0, s_mouseY = 0; // pixels
}

// No driver, but one who answers. These stand before the library's own, which do nothing here either.
extern "C"
{
    void glGenTextures(GLsizei count, GLuint* names)
    {
        static GLuint s_last = 0;
        for (GLsizei i = 0; i < count; ++i)
            names[i] = ++s_last;
    }
    void glGetIntegerv(GLenum name, GLint* value)
    {
        const GLint viewport[4] = {0, 0, 1024, 768};
        if (name == GL_VIEWPORT)
            std::copy_n(viewport, 4, value);
        else
            *value = 4;
    }
    Uint8 SDL_GetMouseState(int* x, int* y)
    {
        *x = s_mouseX;
        *y = s_mouseY;
        return 0;
    }
}

namespace
{
class FrameCounter : public gui::Component
{
public:
    void Update(float dt) override
    {
        Component::Update(dt);
        if (m_frame > 0)
            m_perFrame[m_frame - 1] = test::g_allocations - m_before;
        if (++m_frame == Frames)
            core::Subsystem::GetInstancePtr()->Exit();
        m_before = test::g_allocations;
    }

    static constexpr int Frames = 40;
    size_t m_perFrame[Frames] = {};

private:
    int m_frame = 0;
    size_t m_before = 0;
};
}

namespace
{
// To be called in a fresh process.
void ExpectNoAllocations(const std::string& dir, int from, const std::function<void()>& prepare)
{
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    util::FileSystem::GetInstancePtr()->SetWorkDir(dir);
    core::Subsystem::SetLogToStandardOutput(false);
    core::Subsystem::Create();
    core::Subsystem::GetInstancePtr()->AddToRoot();
    gui::GUI::GetInstancePtr()->AddToRoot();
    recorded::State().delays.reserve(1000);
    const util::SharedPtr<FrameCounter> counter = QUIB_NEW FrameCounter;
    gui::GUI::GetInstancePtr()->GetMainContainer()->AddComponent(counter);
    prepare();
    core::Subsystem::GetInstancePtr()->Run();
    for (int i = from; i < FrameCounter::Frames - 1; ++i)
        EXPECT_EQ(0u, counter->m_perFrame[i]) << "frame " << i;
}
}

TEST(Frame, AsksForNoMemoryWhenNothingHappens)
{
    test::TempDir dir;
    EXPECT_FINE_IN_FRESH_PROCESS({ ExpectNoAllocations(dir.Path(), 10, [] {}); });
}

TEST(Frame, AsksForNoMemoryWhileItIsProfiledButForTheOutput)
{
    test::TempDir dir;
    EXPECT_FINE_IN_FRESH_PROCESS({
        // From frame 12 on all stages have been seen. The first second is not over by the end.
        ExpectNoAllocations(dir.Path(), 12,
                            []
                            {
                                util::Profiler::GetInstancePtr()->SetActive(true);
                                util::Profiler2::GetInstancePtr()->SetActive(true);
                            });
        EXPECT_TRUE(util::Profiler::GetInstancePtr()->IsActive());
        EXPECT_EQ(9u, util::Profiler::GetInstancePtr()->GetRoot().GetChildCount());
        EXPECT_EQ("No output generated yet.", util::Profiler::GetInstancePtr()->GetOutput());
        EXPECT_EQ("No output generated yet.", util::Profiler2::GetInstancePtr()->GetOutput());
    });
}

namespace
{
// Shaders that compile and do nothing.
void PretendShaders()
{
    __GLEW_ARB_vertex_program = __GLEW_ARB_fragment_program = __GLEW_ARB_multitexture = GL_TRUE;
    __glewGetObjectParameterivARB = [](GLhandleARB, GLenum which, GLint* value)
    { *value = which != GL_OBJECT_INFO_LOG_LENGTH_ARB; };
    __glewGetInfoLogARB = [](GLhandleARB, GLsizei, GLsizei*, GLcharARB*) {};
    __glewCreateShaderObjectARB = [](GLenum) -> GLhandleARB { return 1; };
    __glewCreateProgramObjectARB = []() -> GLhandleARB { return 1; };
    __glewShaderSourceARB = [](GLhandleARB, GLsizei, const GLcharARB**, const GLint*) {};
    __glewCompileShaderARB = __glewLinkProgramARB = __glewDeleteObjectARB = [](GLhandleARB) {};
    __glewAttachObjectARB = [](GLhandleARB, GLhandleARB) {};
    __glewGetUniformLocationARB =
        __glewGetAttribLocationARB = [](GLhandleARB, const GLcharARB*) { return 0; };
    __glewUseProgramObjectARB = [](GLhandleARB) {};
    __glewUniform1iARB = [](GLint, GLint) {};
    __glewUniform1fARB = [](GLint, GLfloat) {};
    __glewUniform1fvARB = __glewUniform2fvARB = __glewUniform3fvARB =
        __glewUniform4fvARB = [](GLint, GLsizei, const GLfloat*) {};
    __glewUniformMatrix4fvARB = [](GLint, GLsizei, GLboolean, const GLfloat*) {};
    __glewActiveTextureARB = [](GLenum) {};
}

// Some of each kind, water, and a translucent box in it.
const char* const Everything =
    "Sim.gravitySwitch = false;"
    "Scene.addPlane { pos = [0.0, -3.0]; angle = 1.5 };"
    "Scene.addBox { geomID = 1; pos = [0.0, 0.0]; size = [2.0, 1.0]; color = [1.0, 0.0, 0.0, 1.0] "
    "};"
    "Scene.addBox { geomID = 2; pos = [3.0, 0.0]; size = [1.0, 1.0]; color = [0.0, 1.0, 0.0, 0.5] "
    "};"
    "Scene.addCircle { geomID = 3; pos = [-3.0, 0.0]; radius = 0.5; color = [0.0, 0.0, 1.0, 1.0] };"
    "Scene.addCircle { pos = [-3.0, 2.0]; radius = 0.5; color = [0.0, 0.0, 1.0, 0.5] };"
    "Scene.addPolygon { pos = [0.0, 2.0]; vecs = [[-0.5, -0.5], [0.5, -0.5], [0.0, 0.5]] };"
    "Scene.addPolygon { pos = [2.0, 2.0]; vecs = [[-0.5, -0.5], [0.5, -0.5], [0.0, 0.5]]; "
    "color = [1.0, 1.0, 0.0, 0.5] };"
    "Scene.addHinge { size = 0.3; geom0 = 0; geom0pos = [0.0, 0.0]; geom1 = 1; "
    "geom1pos = [0.0, 0.0] };"
    "Scene.addSpring { size = 0.3; geom0 = 1; geom0pos = [0.5, 0.0]; geom1 = 2; "
    "geom1pos = [0.0, 0.0] };"
    "Scene.addFixjoint { size = 0.3; geom0 = 0; geom0pos = [-3.0, 0.0]; geom1 = 3; "
    "geom1pos = [0.0, 0.0] };"
    "Scene.addPen { size = 0.2; fadeTime = 100.0; geom = 1; relPoint = [0.8, 0.0] };";

struct ShownScene
{
    const char* name;
    const char* settings;
    bool hasShaders;
    bool isMouseOver;
};

void PrintTo(const ShownScene& scene, std::ostream* out)
{
    *out << scene.name;
}

class FrameOf : public testing::TestWithParam<ShownScene>
{
};

// To be called in a fresh process.
void ExpectSceneWithoutAllocations(const std::string& dir, const ShownScene& shown)
{
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    boost::filesystem::create_directory_symlink(QUIB_SOURCE_DIR "/data", dir + "data");
    util::FileSystem::GetInstancePtr()->SetWorkDir(dir);
    core::Subsystem::SetLogToStandardOutput(false);
    app::CreateServices();
    if (shown.hasShaders)
        PretendShaders();
    core::Subsystem::GetInstancePtr()->ApplyParserConfig();
    app::App::GetInstancePtr()->CreateGUI();
    app::Serializer::GetInstancePtr()->Deserialize(
        util::String(
            "FileInfo.version = 2;\n"
            "FileInfo.description = \"a text that is too long to lie in the string itself\";") +
        Everything);
    physics::Simulation* simulation = physics::Simulation::GetInstancePtr();
    for (int i = 0; i < 200; ++i)
        simulation->AddParticle(QUIB_NEW physics::Particle(
            math::Vec2(float(i % 20) * 0.1f + 2, float(i / 20) * 0.1f - 0.5f), math::Vec2(1, 0)));
    // The pen has drawn something. Its line grows while the world runs, and now and then takes memory.
    for (int i = 0; i < 20; ++i)
        simulation->Update(1 / 60.0);
    simulation->m_running = false;
    script::Parser::GetInstancePtr()->ExecuteToString(shown.settings);
    SDL_Event motion = {};
    motion.type = SDL_MOUSEMOTION;
    motion.motion.x = static_cast<Uint16>(s_mouseX = 512);
    motion.motion.y = static_cast<Uint16>(s_mouseY = 384);
    input::Input::GetInstancePtr()->HandleEvent(motion);

    recorded::State().delays.reserve(1000);
    const util::SharedPtr<FrameCounter> counter = QUIB_NEW FrameCounter;
    gui::GUI::GetInstancePtr()->GetMainContainer()->AddComponent(counter);
    core::Subsystem::GetInstancePtr()->Run();
#ifdef __SANITIZE_ADDRESS__
    // It is shown the small blocks too, which come from a pool otherwise: the two of the time factor, which
    // the simulation writes back in each frame.
    const size_t smallBlocks = 2;
#else
    const size_t smallBlocks = 0;
#endif
    for (int i = 20; i < FrameCounter::Frames - 1; ++i)
        EXPECT_EQ(smallBlocks, counter->m_perFrame[i]) << "frame " << i;
    EXPECT_EQ(200u, simulation->GetParticles().size());
    size_t entities = 0, mouseOver = 0;
    for (const auto& entity : app::Scene::GetInstancePtr()->GetEntities())
    {
        ++entities;
        mouseOver += entity->IsMouseOver();
    }
    EXPECT_EQ(11u, entities);
    EXPECT_EQ(shown.isMouseOver ? 1u : 0u, mouseOver);
}
}

TEST_P(FrameOf, AsksForNoMemory)
{
    test::TempDir dir;
    EXPECT_FINE_IN_FRESH_PROCESS({ ExpectSceneWithoutAllocations(dir.Path(), GetParam()); });
}

INSTANTIATE_TEST_SUITE_P(
    AScene, FrameOf,
    testing::Values(
        ShownScene{"StandingStillWithShaders", "Scene.Camera.pan = [0.0, 5.0]", true, false},
        ShownScene{"StandingStillWithoutShaders",
                   "Resources.shaders = false; Scene.Camera.pan = [0.0, 5.0]", false, false},
        ShownScene{"WithSimpleWaterAndTheTrail",
                   "App.simpleWater = true; App.fadeColor = [0.9, 0.9, 0.9]; Scene.Camera.pan = "
                   "[0.0, 5.0]",
                   true, false},
        // The red box lies in the middle.
        ShownScene{"WithTheMouseOverAnEntity",
                   "Scene.Camera.zoom = 100.0; Scene.Camera.pan = [0.4, 0.0]", true, true}),
    [](const auto& info) { return std::string(info.param.name); });
