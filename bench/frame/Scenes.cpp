#include "frame/Scenes.h"

#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Serializer.h"
#include "physics/Particle.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/FileSystem.h"

namespace bench
{
namespace
{
using math::Vec2;

// At this zoom the window shows 40.96 by 30.72 units: room for 40 by 25 shapes with a side of 1.
const char* const Header = "FileInfo.version = 2;\n"
                           "Scene.Camera.pan = [0.0, 0.0];\n"
                           "Scene.Camera.zoom = 25.0;\n";
const int Columns = 40, Rows = 25;
const size_t Particles = 5000;

void Run(const util::String& script)
{
    script::Parser::GetInstancePtr()->ExecuteToString(script);
}

void Load(const util::String& text)
{
    app::Serializer::GetInstancePtr()->Deserialize(Header + text);
}

util::String PlaceOf(int i)
{
    return "[" + util::ToString(float(i % Columns) - 19.5f) + ", " +
           util::ToString(float(i / Columns) - 12.0f) + "]";
}

util::String ColorOf(int i, float alpha = 1)
{
    return "[" + util::ToString(float(i % 5) * 0.2f) + ", " + util::ToString(float(i % 7) * 0.14f) +
           ", 0.5, " + util::ToString(alpha) + "]";
}

/// A thousand of a kind.
/// @param values  beside the place and the colour
void LoadGrid(const util::String& command, const util::String& values, float alpha = 1)
{
    util::String text;
    for (int i = 0; i < Columns * Rows; ++i)
        text += "Scene." + command + " { " + values + " pos = " + PlaceOf(i) +
                "; angle = " + util::ToString(float(i) * 0.1f) + "; color = " + ColorOf(i, alpha) +
                " };\n";
    Load(text);
}

/// A thousand that hang on one large box, each in a place of its own.
/// @param other  the place of the end that is not on the box, from that on it; empty: there is none
void LoadOnBox(const util::String& command, const util::String& other)
{
    util::String text = "Scene.addBox { geomID = 1; pos = [0.0, 0.0]; size = [40.0, 30.0] };\n";
    for (int i = 0; i < Columns * Rows; ++i)
    {
        const util::String place = PlaceOf(i);
        text += "Scene." + command + " { size = 0.8; color = " + ColorOf(i) + "; ";
        text += other.empty() ? "fadeTime = 10.0; geom = 1; relPoint = " + place
                              : "geom0 = 0; geom0pos = " + place + " + " + other +
                                    "; geom1 = 1; geom1pos = " + place;
        text += " };\n";
    }
    Load(text);
}

void MakeEmpty()
{
    Load("");
}

void MakeBoxes()
{
    LoadGrid("addBox", "size = [0.8, 0.6];");
}

void MakeTranslucentBoxes()
{
    LoadGrid("addBox", "size = [0.8, 0.6];", 0.5f);
}

void MakeCircles()
{
    LoadGrid("addCircle", "radius = 0.4;");
}

void MakePolygons()
{
    LoadGrid("addPolygon",
             "vecs = [[-0.4, -0.3], [0.4, -0.3], [0.1, 0.0], [0.2, 0.4], [-0.3, 0.2]];");
}

void MakePlanes()
{
    // Each covers a half of the view or less.
    util::String text;
    for (int i = 0; i < 20; ++i)
        text += "Scene.addPlane { pos = [0.0, " + util::ToString(-float(i) * 0.7f) +
                "]; angle = 1.5; color = " + ColorOf(i) + " };\n";
    Load(text);
}

void MakeHinges()
{
    LoadOnBox("addHinge", "[0.0, 0.0]");
}

void MakeSprings()
{
    LoadOnBox("addSpring", "[0.6, 0.8]");
}

void MakeFixJoints()
{
    LoadOnBox("addFixjoint", "[0.0, 0.0]");
}

void MakePens()
{
    LoadOnBox("addPen", "");
}

void AddParticles()
{
    Load("");
    physics::Simulation* simulation = physics::Simulation::GetInstancePtr();
    const int columns = 100;
    const float gap = physics::SPH::GetInstancePtr()->m_radius * 0.9f;
    for (size_t i = 0; i < Particles; ++i)
        simulation->AddParticle(QUIB_NEW physics::Particle(
            Vec2((float(i % columns) - 49.5f) * gap, (float(i / columns) - 24.5f) * gap),
            Vec2(0.1f * float(i % 7), 0.1f * float(i % 5))));
}

void MakeWater()
{
    AddParticles();
    Run("App.simpleWater = false");
}

void MakeSimpleWater()
{
    AddParticles();
    Run("App.simpleWater = true");
}

void MakeWelcome()
{
    app::App::GetInstancePtr()->GetAppGUI()->LoadScene(
        util::FileSystem::GetInstancePtr()->SceneDir() + "welcome.qib", true);
}
}

const std::vector<FrameScene>& GetFrameScenes()
{
    static const size_t n = Columns * Rows;
    static const std::vector<FrameScene> scenes = {
        {"empty", nullptr, 0, false, 0, MakeEmpty},
        {"boxes", "entity", n, false, 0, MakeBoxes},
        {"clear boxes", "entity", n, false, 0, MakeTranslucentBoxes},
        {"circles", "entity", n, false, 0, MakeCircles},
        {"polygons", "entity", n, false, 0, MakePolygons},
        {"planes", "entity", 20, false, 0, MakePlanes},
        {"hinges", "entity", n, false, 0, MakeHinges},
        {"springs", "entity", n, false, 0, MakeSprings},
        {"fix joints", "entity", n, false, 0, MakeFixJoints},
        {"pens", "entity", n, false, 30, MakePens},
        {"water", "particle", Particles, false, 0, MakeWater},
        {"simple water", "particle", Particles, false, 0, MakeSimpleWater},
        {"welcome", nullptr, 0, true, 60, MakeWelcome},
    };
    return scenes;
}
}
