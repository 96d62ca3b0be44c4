// How long do load and save of a whole scene take, entities and bodies included, beside Lua reading
// the same data into tables? And load, save, clone, snapshot and restore of a scene that holds
// everything, each of which has half a second for 5,000 entities? What does a snapshot weigh?
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/Snapshot.h"
#include "app/Startup.h"
#include "app/entities/Entity.h"
#include "core/Subsystem.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/FileSystem.h"

#include <benchmark/benchmark.h>

#include <lua.hpp>

#include <malloc.h>

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

// Half of it geometry, half of it what holds geometry together.
const size_t MixedCount = 5000;
const double LimitMs = 500;

/// Per ten entities: a row of five boxes in a chain, four hinges, springs or welds between them, and a
/// pen. Groups of a hundred.
util::String MakeMixedProgram()
{
    util::String program = "FileInfo.version = 2;\n";
    const auto n = [](size_t i) { return util::ToString(i); };
    size_t id = 1;
    util::String members;
    for (size_t row = 0; row < MixedCount / 10; ++row)
    {
        const size_t first = 5 * row + 1;
        for (size_t i = 0; i < 5; ++i)
        {
            program += "Scene.addBox { entityID = " + n(id++) + "; geomID = " + n(first + i) +
                       "; pos = [" + n(i) + ", " + n(2 * row) + "]; chain = " + n(row + 1) +
                       "; chainNr = " + n(i) + "; friction = 0.3 };\n";
            members += (members.empty() ? "" : ", ") + n(id - 1);
        }
        const char* const joints[] = {"Hinge", "Spring", "Fixjoint"};
        for (size_t i = 0; i < 4; ++i)
            program += util::String("Scene.add") + joints[(row + i) % 3] +
                       " { entityID = " + n(id++) + "; size = 0.2; geom0 = " + n(first + i) +
                       "; geom0pos = [0.5, 0.0]; geom1 = " + n(first + i + 1) +
                       "; geom1pos = [-0.5, 0.0] };\n";
        program += "Scene.addPen { entityID = " + n(id++) + "; size = 0.1; geom = " + n(first) +
                   "; relPoint = [0.0, 0.0] };\n";
        if (row % 20 == 19)
        {
            program += "Scene.addGroup { name = \"row " + n(row) + "\"; entityIDs = [" + members +
                       "] };\n";
            members.clear();
        }
    }
    return program;
}

void LoadMixed()
{
    StartServices();
    static const util::String* program = new util::String(MakeMixedProgram());
    app::Scene::GetInstancePtr()->ClearScene();
    app::Serializer::GetInstancePtr()->Deserialize(*program);
}

void CheckMixed(benchmark::State& state, size_t count = MixedCount)
{
    const app::Scene* scene = app::Scene::GetInstancePtr();
    size_t alive = 0;
    for (const app::EntityPtr& entity : scene->GetEntities())
        alive += entity->IsAlive();
    if (scene->GetEntities().size() != count || alive != count)
        state.SkipWithError("not everything is there");
    state.counters["limit_ms"] = LimitMs;
}

void MixedLoad(benchmark::State& state)
{
    for (auto _ : state)
        LoadMixed();
    CheckMixed(state);
}
BENCHMARK(MixedLoad)->Unit(benchmark::kMillisecond)->MinTime(1);

void MixedSave(benchmark::State& state)
{
    LoadMixed();
    size_t size = 0;
    for (auto _ : state)
        size = app::Serializer::GetInstancePtr()->SerializeScene().size();
    CheckMixed(state);
    state.counters["MB"] = double(size) * 1e-6;
}
BENCHMARK(MixedSave)->Unit(benchmark::kMillisecond)->MinTime(1);

void MixedClone(benchmark::State& state)
{
    app::Scene* scene = app::Scene::GetInstancePtr();
    for (auto _ : state)
    {
        state.PauseTiming();
        LoadMixed();
        const app::GroupPtr all = QUIB_NEW app::Group;
        for (const app::EntityPtr& entity : scene->GetEntities())
            all->Add(entity);
        state.ResumeTiming();
        scene->CreateClone(all);
    }
    CheckMixed(state, 2 * MixedCount);
}
BENCHMARK(MixedClone)->Unit(benchmark::kMillisecond)->MinTime(1);

size_t UsedBytes()
{
    // Control blocks of what is gone would count.
    util::PointeeHandle::Flush();
    return mallinfo2().uordblks;
}

/// @param state  range 0: nothing, or everything, has moved since the snapshot before
void MixedSnapshot(benchmark::State& state)
{
    LoadMixed();
    app::Scene* scene = app::Scene::GetInstancePtr();
    const app::GroupPtr all = QUIB_NEW app::Group;
    for (const app::EntityPtr& entity : scene->GetEntities())
        all->Add(entity);
    app::SnapshotPtr last = app::Snapshot::TakeSnapshot();
    std::vector<app::SnapshotPtr> kept;
    size_t bytes = 0;
    for (auto _ : state)
    {
        state.PauseTiming();
        if (state.range(0))
            scene->Transform(all, math::Mat2D::Translation(math::Vec2(0.01f, 0)));
        if (kept.size() == 20)
            kept.clear();
        const size_t before = UsedBytes();
        state.ResumeTiming();
        last = app::Snapshot::TakeSnapshot();
        state.PauseTiming();
        kept.push_back(last);
        bytes = UsedBytes() - before;
        state.ResumeTiming();
    }
    CheckMixed(state);
    state.counters["bytes_per_entity"] = double(bytes) / MixedCount;
}
BENCHMARK(MixedSnapshot)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(1);

/// What the scene holds comes back to an empty one.
void RestoreScene(benchmark::State& state)
{
    const app::SnapshotPtr snapshot = app::Snapshot::TakeSnapshot();
    app::Scene* scene = app::Scene::GetInstancePtr();
    for (auto _ : state)
    {
        state.PauseTiming();
        scene->ClearScene();
        state.ResumeTiming();
        snapshot->Restore();
    }
    CheckMixed(state);
    scene->ClearScene();
}

void MixedRestore(benchmark::State& state)
{
    LoadMixed();
    RestoreScene(state);
}
BENCHMARK(MixedRestore)->Unit(benchmark::kMillisecond)->MinTime(1);

/// All in one heap: whatever is done for each entity must not be done for all of the heap.
void WeldedRestore(benchmark::State& state)
{
    StartServices();
    util::String program = "FileInfo.version = 2;\n";
    for (size_t i = 1; i <= MixedCount / 2; ++i)
        program += "Scene.addBox { geomID = " + util::ToString(i) + "; pos = [" +
                   util::ToString(i) + ", 0.0] };\n";
    for (size_t i = 1; i < MixedCount / 2; ++i)
        program += "Scene.addFixjoint { size = 0.2; geom0 = " + util::ToString(i) +
                   "; geom0pos = [0.5, 0.0]; geom1 = " + util::ToString(i + 1) +
                   "; geom1pos = [-0.5, 0.0] };\n";
    app::Scene* scene = app::Scene::GetInstancePtr();
    scene->ClearScene();
    app::Serializer::GetInstancePtr()->Deserialize(program);
    const app::SnapshotPtr snapshot = app::Snapshot::TakeSnapshot();
    for (auto _ : state)
        snapshot->Restore();
    CheckMixed(state, MixedCount - 1);
    if (physics::Simulation::GetInstancePtr()->GetBodies().size() != 2)
        state.SkipWithError("the heap has come apart");
    scene->ClearScene();
}
BENCHMARK(WeldedRestore)->Unit(benchmark::kMillisecond)->MinTime(1);

/// A scene of pinned boxes, each with keys of its own to drive it: all of them listen to the input.
void LoadBound()
{
    StartServices();
    static util::String* program = nullptr;
    if (!program)
    {
        program = new util::String("FileInfo.version = 2;\n");
        for (size_t i = 1; i <= MixedCount / 2; ++i)
            *program += "Scene.addBox { geomID = " + util::ToString(i) + "; pos = [" +
                        util::ToString(2 * i) + ", 0.0] };\n" +
                        "Scene.addHinge { size = 0.2; geom0 = " + util::ToString(i) +
                        "; geom0pos = [0.0, 0.0]; geom1 = 0; geom1pos = [" + util::ToString(2 * i) +
                        ", 0.0]; buttonForward = \"right\"; buttonBack = \"left\" };\n";
    }
    app::Scene::GetInstancePtr()->ClearScene();
    app::Serializer::GetInstancePtr()->Deserialize(*program);
}

void BoundLoad(benchmark::State& state)
{
    for (auto _ : state)
        LoadBound();
    CheckMixed(state);
}
BENCHMARK(BoundLoad)->Unit(benchmark::kMillisecond)->MinTime(1);

void BoundRestore(benchmark::State& state)
{
    LoadBound();
    RestoreScene(state);
}
BENCHMARK(BoundRestore)->Unit(benchmark::kMillisecond)->MinTime(1);

/// A group of pinned boxes is moved: each pin looks for what lies under it.
void BoundMove(benchmark::State& state)
{
    LoadBound();
    app::Scene* scene = app::Scene::GetInstancePtr();
    const app::GroupPtr all = QUIB_NEW app::Group;
    for (const app::EntityPtr& entity : scene->GetEntities())
        all->Add(entity);
    for (auto _ : state)
        scene->Transform(all, math::Mat2D::Translation(math::Vec2(0.01f, 0)));
    CheckMixed(state);
    scene->ClearScene();
}
BENCHMARK(BoundMove)->Unit(benchmark::kMillisecond)->MinTime(1);

/// One frame's work on the scene's entities: who lives, which bodies nobody holds.
void UpdateScene(benchmark::State& state)
{
    StartServices();
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
