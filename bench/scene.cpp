// How long do load and save of a whole scene take, entities and bodies included, beside Lua reading
// the same data into tables?
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/Startup.h"
#include "app/entities/Entity.h"
#include "core/Subsystem.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/FileSystem.h"

#include <benchmark/benchmark.h>

#include <lua.hpp>

#include <cstdlib>

namespace
{
const size_t BoxCount = 5000;

void StartServices()
{
    static bool isStarted = false;
    if (isStarted)
        return;
    isStarted = true;
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    util::FileSystem::GetInstancePtr()->SetWorkDir("/tmp/");
    core::Subsystem::SetLogToStandardOutput(false);
    app::CreateServices();
}

/// What the writer makes of 5,000 boxes that differ from the default in three attributes.
const util::String& GetSceneText()
{
    static util::String* text = nullptr;
    if (text)
        return *text;
    StartServices();
    util::String program = "FileInfo.version = 2;\n";
    for (size_t i = 0; i < BoxCount; ++i)
    {
        const util::String x = util::ToString(float(i % 71) * 1.0371f - 35.25f);
        const util::String y = util::ToString(float(i / 71) * 1.0213f + 0.51f);
        program += "Scene.addBox { pos = [" + x + ", " + y +
                   "]; angle = " + util::ToString(float(i) * 0.001f) +
                   "; size = [0.9, 0.6]; friction = 0.3; restitution = 0.25; density = 1.5; "
                   "color = [0.7, 0.3, 0.1, 1.0] };\n";
    }
    app::Serializer::GetInstancePtr()->Deserialize(program);
    text = new util::String(app::Serializer::GetInstancePtr()->SerializeScene());
    app::Scene::GetInstancePtr()->ClearScene();
    return *text;
}

void CheckScene(benchmark::State& state)
{
    const auto bodies = physics::Simulation::GetInstancePtr()->GetBodies().size();
    if (app::Scene::GetInstancePtr()->GetEntities().size() != BoxCount || bodies != BoxCount + 1)
        state.SkipWithError("not all boxes are there");
}

void Load(benchmark::State& state)
{
    const util::String& text = GetSceneText();
    app::Scene* scene = app::Scene::GetInstancePtr();
    for (auto _ : state)
    {
        state.PauseTiming();
        scene->ClearScene();
        app::Serializer::GetInstancePtr()->Deserialize("");
        util::PointeeHandle::Flush();
        state.ResumeTiming();
        app::Serializer::GetInstancePtr()->Deserialize(text);
    }
    CheckScene(state);
    state.SetBytesProcessed(int64_t(state.iterations() * text.size()));
    state.counters["MB"] = double(text.size()) * 1e-6;
}
BENCHMARK(Load)->Unit(benchmark::kMillisecond)->MinTime(2);

void Save(benchmark::State& state)
{
    app::Serializer* serializer = app::Serializer::GetInstancePtr();
    app::Scene::GetInstancePtr()->ClearScene();
    serializer->Deserialize(GetSceneText());
    CheckScene(state);
    size_t size = 0;
    for (auto _ : state)
        size = serializer->SerializeScene().size();
    if (size < GetSceneText().size() * 9 / 10)
        state.SkipWithError("not all was written");
    app::Scene::GetInstancePtr()->ClearScene();
}
BENCHMARK(Save)->Unit(benchmark::kMillisecond)->MinTime(2);

/// One frame's work on the scene's entities: who lives, which bodies nobody holds.
void UpdateScene(benchmark::State& state)
{
    app::Scene* scene = app::Scene::GetInstancePtr();
    scene->ClearScene();
    app::Serializer::GetInstancePtr()->Deserialize(GetSceneText());
    for (auto _ : state)
        scene->Update(0.01f);
    CheckScene(state);
    scene->ClearScene();
}
BENCHMARK(UpdateScene)->Unit(benchmark::kMicrosecond);

/// The entities of the scene as calls with table constructors.
util::String MakeLuaText()
{
    const util::String& scene = GetSceneText();
    util::String text = "count = 0; all = {}\n"
                        "Scene = { addBox = function(t) count = count + 1; all[count] = t end, "
                        "addGroup = function() end }\n";
    for (size_t i = scene.find("Scene.addBox"); i < scene.size(); ++i)
        switch (scene[i])
        {
        case '[':
            text += '{';
            break;
        case ']':
            text += '}';
            break;
        // Within a block the next line is indented.
        case ';':
            text += scene.compare(i + 1, 2, "\n ") == 0 ? ',' : ';';
            break;
        default:
            text += scene[i];
        }
    return text;
}

void LuaTables(benchmark::State& state)
{
    const util::String text = MakeLuaText();
    for (auto _ : state)
    {
        lua_State* lua = luaL_newstate();
        if (luaL_loadbuffer(lua, text.data(), text.size(), "scene") != LUA_OK ||
            lua_pcall(lua, 0, 0, 0) != LUA_OK)
            state.SkipWithError(lua_tostring(lua, -1));
        state.PauseTiming();
        lua_getglobal(lua, "count");
        if (size_t(lua_tointeger(lua, -1)) != BoxCount)
            state.SkipWithError("not all boxes are there");
        lua_close(lua);
        state.ResumeTiming();
    }
}
BENCHMARK(LuaTables)->Unit(benchmark::kMillisecond)->MinTime(2);
}

BENCHMARK_MAIN();
