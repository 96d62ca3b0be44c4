// How long does the text of a scene take from characters to values, beside Lua with the same data?
// What does a setting cost in each frame?
#include "script/Attributes.h"
#include "script/Parser.h"

#include <benchmark/benchmark.h>

#include <lua.hpp>

#include <cstdio>
#include <memory>

namespace
{
using namespace script;

const int BoxCount = 5000;

// What a value looks like in the two languages.
struct Dialect
{
    const char* begin;
    const char* assign;
    const char* separator;
    const char* listBegin;
    const char* listEnd;
    const char* end;
};
const Dialect Quib = {"Scene.addBox {\n", " = ", ";\n", "[", "]", "}"};
const Dialect Lua = {"addBox {\n", " = ", ",\n", "{", "}", "}"};

util::String Number(double value)
{
    char text[32];
    std::snprintf(text, sizeof(text), "%.7g", value);
    util::String number = text;
    return number.find('.') == util::String::npos ? number + ".0" : number;
}

util::String ListText(const Dialect& d, std::initializer_list<double> values)
{
    util::String text = d.listBegin;
    for (double value : values)
        text += (text.size() > 1 ? ", " : "") + Number(value);
    return text + d.listEnd;
}

util::String BoxText(const Dialect& d, int i)
{
    const double x = (i % 71) * 1.0371 - 35.25, y = (i / 71) * 1.0213 + 0.51;
    const std::pair<const char*, util::String> values[] = {
        {"color", ListText(d, {(i % 7) / 7.0, (i % 11) / 11.0, (i % 13) / 13.0, 1.0})},
        {"entityID", util::ToString(2 * i + 1)},
        {"zDepth", Number(i)},
        {"geomID", util::ToString(2 * i + 2)},
        {"pos", ListText(d, {x, y})},
        {"angle", Number(i * 0.001)},
        {"friction", Number(0.3)},
        {"restitution", Number(0.25)},
        {"density", Number(1.5)},
        {"size", ListText(d, {1.0, 0.75})},
    };
    util::String text = d.begin;
    for (const auto& value : values)
        text += util::String("    ") + value.first + d.assign + value.second + d.separator;
    text.resize(text.size() - 2);
    return text + "\n" + d.end;
}

util::String SceneText(const Dialect& d)
{
    util::String text;
    for (int i = 0; i < BoxCount; ++i)
        text += BoxText(d, i) + ";\n";
    return text;
}

// "Scene" with the one command that the text calls. It reads the block as a loader would, so that no
// language gets away with making nothing of the data.
class Loader : public Reflected
{
public:
    Loader()
        : Reflected("Scene")
    {
        AddCmd1("addBox", [this](ObjectPtr block) { return AddBox(block); });
    }

    double checksum = 0;

private:
    ObjectPtr AddBox(const ObjectPtr& block)
    {
        const FunctionPtr function = ObjectToValue<FunctionPtr>(block);
        function->Call(ObjectList());
        const ClosurePtr& values = function->GetCallClosure();
        checksum += ObjectToValue<int>(values->GetObject("entityID"));
        checksum += ObjectToValue<math::Vec2>(values->GetObject("pos")).x > 0 ? 1 : 0;
        return QUIB_NEW Void;
    }
};

Loader& GetLoader()
{
    static util::SharedPtr<Loader>* s_loader = []
    {
        auto* loader = new util::SharedPtr<Loader>(QUIB_NEW Loader);
        (*loader)->AddToRoot();
        return loader;
    }();
    return **s_loader;
}

double ExpectedChecksum()
{
    double sum = 0;
    for (int i = 0; i < BoxCount; ++i)
        sum += 2 * i + 1 + ((i % 71) * 1.0371 - 35.25 > 0 ? 1 : 0);
    return sum;
}

void Tokenize(benchmark::State& state)
{
    const util::String text = SceneText(Quib);
    size_t tokens = 0;
    for (auto _ : state)
        tokens += Tokenizer::Tokenize(text).size();
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
    state.counters["tokens/s"] =
        benchmark::Counter(static_cast<double>(tokens), benchmark::Counter::kIsRate);
}
BENCHMARK(Tokenize)->Unit(benchmark::kMillisecond);

void Parse(benchmark::State& state)
{
    const util::String text = SceneText(Quib);
    const TokenList tokens = Tokenizer::Tokenize(text);
    Parser* parser = Parser::GetInstancePtr();
    for (auto _ : state)
    {
        if (!parser->Parse(tokens))
            state.SkipWithError("the scene does not parse");
        util::PointeeHandle::Flush();
    }
    state.counters["tokens/s"] = benchmark::Counter(
        static_cast<double>(state.iterations() * tokens.size()), benchmark::Counter::kIsRate);
}
BENCHMARK(Parse)->Unit(benchmark::kMillisecond);

// Tokenized, parsed, evaluated, and everything freed again.
void RunScene(benchmark::State& state)
{
    const util::String text = SceneText(Quib);
    Parser* parser = Parser::GetInstancePtr();
    Loader& loader = GetLoader();
    for (auto _ : state)
    {
        loader.checksum = 0;
        parser->Execute(text);
        util::PointeeHandle::Flush();
        if (loader.checksum != ExpectedChecksum())
            state.SkipWithError("the scene was read wrongly");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
    // Eleven statements a box: the call, and the ten in its block.
    state.counters["statements/s"] = benchmark::Counter(
        static_cast<double>(state.iterations() * BoxCount * 11), benchmark::Counter::kIsRate);
}
BENCHMARK(RunScene)->Unit(benchmark::kMillisecond);

double s_luaChecksum = 0;

int LuaAddBox(lua_State* lua)
{
    lua_getfield(lua, 1, "entityID");
    s_luaChecksum += lua_tonumber(lua, -1);
    lua_getfield(lua, 1, "pos");
    lua_geti(lua, -1, 1);
    s_luaChecksum += lua_tonumber(lua, -1) > 0 ? 1 : 0;
    return 0;
}

void RunSceneInLua(benchmark::State& state)
{
    const util::String text = SceneText(Lua);
    for (auto _ : state)
    {
        s_luaChecksum = 0;
        lua_State* lua = luaL_newstate();
        lua_register(lua, "addBox", LuaAddBox);
        if (luaL_loadbuffer(lua, text.data(), text.size(), "scene") != LUA_OK ||
            lua_pcall(lua, 0, 0, 0) != LUA_OK)
            state.SkipWithError(lua_tostring(lua, -1));
        lua_close(lua);
        if (s_luaChecksum != ExpectedChecksum())
            state.SkipWithError("the scene was read wrongly");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(RunSceneInLua)->Unit(benchmark::kMillisecond);

const int AttribCount = 10000;

// Ten settings in each of a thousand objects.
template<typename T>
class Settings
{
public:
    explicit Settings(const T& value)
    {
        for (int i = 0; i < AttribCount / 10; ++i)
        {
            m_owners.push_back(QUIB_NEW Reflected("settings"));
            for (int j = 0; j < 10; ++j)
                m_attribs.push_back(std::make_unique<AttribWrapper<T>>(
                    m_owners.back().get(), "setting" + util::ToString(j), value));
        }
    }

    bool AllAre(const T& value) const
    {
        for (const auto& attrib : m_attribs)
            if (!(attrib->Get() == value))
                return false;
        return true;
    }

private:
    std::vector<ReflectedPtr> m_owners;
    std::vector<std::unique_ptr<AttribWrapper<T>>> m_attribs;
};

template<typename T>
void CalcAll(benchmark::State& state, const T& value)
{
    const Settings<T> settings(value);
    for (auto _ : state)
        AbstractAttrib::CalcAll();
    if (!settings.AllAre(value))
        state.SkipWithError("a setting changed");
    // The time of one pass over the number of settings.
    state.counters["time/attribute"] =
        benchmark::Counter(static_cast<double>(state.iterations() * AttribCount),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK_CAPTURE(CalcAll, floats, 1.5f)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(CalcAll, bools, true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(CalcAll, strings, util::String("a title"))->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(CalcAll, vectors, math::Vec2(1, 2))->Unit(benchmark::kMicrosecond);

// What the settings of an entity cost when it is made and when it goes.
void MakeAttributes(benchmark::State& state)
{
    for (auto _ : state)
    {
        const Settings<float> settings(1.5f);
        util::PointeeHandle::Flush();
    }
    state.counters["time/attribute"] =
        benchmark::Counter(static_cast<double>(state.iterations() * AttribCount),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(MakeAttributes)->Unit(benchmark::kMicrosecond);
}

BENCHMARK_MAIN();
