// Shaders on an OpenGL that only writes down what is asked of it. What a real one makes of them is the matter
// of tests/window/ShaderInContextTest.cpp.
#include "rendering/Shader.h"

#include "FreshProcess.h"
#include "TestSupport.h"
#include "WhatOf.h"
#include "rendering/RecordedGL.h"
#include "rendering/Renderer.h"
#include "rendering/ResourceSettings.h"
#include "rendering/ShaderManager.h"
#include "rendering/ShaderVariable.h"
#include "util/FileSystem.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <sstream>

using rendering::Shader;
using rendering::ShaderManager;
using rendering::ShaderProxy;
using rendering::Uniform;
using ShaderMentor = util::Mentor<Shader>;

namespace
{
using Calls = std::vector<std::string>;

// What the driver is said to do.
struct Driver
{
    unsigned next = 1; // handle
    bool hasProgram = true, hasShader = true;
    bool compiles = true, links = true;
    std::string shaderLog, programLog;
    std::map<unsigned, bool> isProgram; // all that were made
    std::map<std::string, int> locations;
    unsigned errorAfterProgram = 0; // of GL, once a program has been made
};
Driver s_driver;

template<typename... Args>
void Note(const char* name, Args... args)
{
    std::ostringstream text;
    text << name;
    (void)(text << ... << (" " + (std::ostringstream() << args).str()));
    recorded::Calls().push_back(text.str());
}

std::string LogOf(GLhandleARB object)
{
    return s_driver.isProgram.at(object) ? s_driver.programLog : s_driver.shaderLog;
}

GLhandleARB CreateProgram()
{
    Note("program");
    if (!s_driver.hasProgram)
        return 0;
    recorded::GL().error = s_driver.errorAfterProgram;
    s_driver.isProgram[s_driver.next] = true;
    return s_driver.next++;
}
GLhandleARB CreateShader(GLenum type)
{
    Note(type == GL_VERTEX_SHADER_ARB     ? "vertex shader"
         : type == GL_FRAGMENT_SHADER_ARB ? "fragment shader"
                                          : "?");
    if (!s_driver.hasShader)
        return 0;
    s_driver.isProgram[s_driver.next] = false;
    return s_driver.next++;
}
void ShaderSource(GLhandleARB shader, GLsizei count, const GLcharARB** texts, const GLint* lengths)
{
    Note("source", shader, count,
         lengths ? std::string(texts[0], size_t(lengths[0])) : std::string(texts[0]));
}
void CompileShader(GLhandleARB shader)
{
    Note("compile", shader);
}
void GetParameter(GLhandleARB object, GLenum name, GLint* value)
{
    if (name == GL_OBJECT_COMPILE_STATUS_ARB)
    {
        Note("compiled?", object);
        *value = s_driver.compiles;
    }
    else if (name == GL_OBJECT_LINK_STATUS_ARB)
    {
        Note("linked?", object);
        *value = s_driver.links;
    }
    else if (name == GL_OBJECT_INFO_LOG_LENGTH_ARB)
        *value = static_cast<GLint>(LogOf(object).size() + 1);
}
void GetInfoLog(GLhandleARB object, GLsizei size, GLsizei* length, GLcharARB* text)
{
    const std::string log = LogOf(object);
    ASSERT_EQ(log.size() + 1, size_t(size));
    std::memcpy(text, log.c_str(), log.size() + 1);
    *length = static_cast<GLsizei>(log.size());
}
void AttachObject(GLhandleARB program, GLhandleARB shader)
{
    Note("attach", program, shader);
}
void LinkProgram(GLhandleARB program)
{
    Note("link", program);
}
void DeleteObject(GLhandleARB object)
{
    Note("delete", object);
}
GLint FindUniform(GLhandleARB program, const GLcharARB* name)
{
    Note("uniform?", program, name);
    return s_driver.locations.count(name) ? s_driver.locations[name] : -1;
}
GLint FindAttribute(GLhandleARB program, const GLcharARB* name)
{
    Note("attribute?", program, name);
    return s_driver.locations.count(name) ? s_driver.locations[name] : -1;
}
void UseProgram(GLhandleARB program)
{
    Note("use", program);
}
void Uniform1i(GLint location, GLint value)
{
    Note("1i", location, value);
}
void Uniform1f(GLint location, GLfloat value)
{
    Note("1f", location, value);
}
void UniformMatrix(GLint location, GLsizei count, GLboolean transpose, const GLfloat* m)
{
    Note("matrix", location, count, int(transpose), m[0], m[1], m[2], m[3], m[4], m[15]);
}
void Uniform1fv(GLint location, GLsizei count, const GLfloat* v)
{
    Note("1fv", location, count, v[0]);
}
void Uniform2fv(GLint location, GLsizei count, const GLfloat* v)
{
    Note("2fv", location, count, v[0], v[1]);
}
void Uniform3fv(GLint location, GLsizei count, const GLfloat* v)
{
    Note("3fv", location, count, v[0], v[1], v[2]);
}
void Uniform4fv(GLint location, GLsizei count, const GLfloat* v)
{
    Note("4fv", location, count, v[0], v[1], v[2], v[3]);
}

void LoadGL()
{
    __GLEW_ARB_vertex_program = __GLEW_ARB_fragment_program = GL_TRUE;
    __glewGetObjectParameterivARB = GetParameter;
    __glewGetInfoLogARB = GetInfoLog;
    __glewCreateShaderObjectARB = CreateShader;
    __glewShaderSourceARB = ShaderSource;
    __glewCompileShaderARB = CompileShader;
    __glewCreateProgramObjectARB = CreateProgram;
    __glewAttachObjectARB = AttachObject;
    __glewLinkProgramARB = LinkProgram;
    __glewDeleteObjectARB = DeleteObject;
    __glewGetUniformLocationARB = FindUniform;
    __glewGetAttribLocationARB = FindAttribute;
    __glewUseProgramObjectARB = UseProgram;
    __glewUniform1iARB = Uniform1i;
    __glewUniform1fARB = Uniform1f;
    __glewUniformMatrix4fvARB = UniformMatrix;
    __glewUniform1fvARB = Uniform1fv;
    __glewUniform2fvARB = Uniform2fv;
    __glewUniform3fvARB = Uniform3fv;
    __glewUniform4fvARB = Uniform4fv;
    rendering::GLHasLoaded();
    recorded::Clear();
}

/// The text of the exception that making a shader ends with.
template<typename E>
std::string FailureOf(const char* vertexSource = "V", const char* fragmentSource = "F")
{
    return test::WhatOf<E>([&] { Shader("x", vertexSource, fragmentSource); });
}

template<typename F>
std::string FailureWithout(F& function)
{
    const F before = function;
    function = nullptr;
    const std::string failure = FailureOf<FatalException>();
    function = before;
    return failure;
}

Calls TakeCalls()
{
    Calls calls;
    calls.swap(recorded::Calls());
    return calls;
}

// Each in a process of its own: GL is loaded once and for all.
class ShaderTest : public testing::Test
{
protected:
    ShaderTest()
    {
        util::FileSystem::GetInstancePtr();
        m_previous = util::FileSystem::GetInstancePtr()->WorkDir();
        util::FileSystem::GetInstancePtr()->SetWorkDir(m_dir.Path());
        boost::filesystem::create_directories(m_dir / "data/shaders/default");
    }
    ~ShaderTest() override { util::FileSystem::GetInstancePtr()->SetWorkDir(m_previous); }

    void WriteShader(const std::string& name)
    {
        test::Spit(m_dir / "data/shaders/default/" + name + ".vert", "vertex of " + name);
        test::Spit(m_dir / "data/shaders/default/" + name + ".frag", "fragment of " + name);
    }

    test::TempDir m_dir;
    std::string m_previous;
};
}

#define EXPECT_IN_FRESH_PROCESS(...)                                                               \
    EXPECT_FINE_IN_FRESH_PROCESS({                                                                 \
        LoadGL();                                                                                  \
        __VA_ARGS__                                                                                \
    })

TEST_F(ShaderTest, IsRefusedBeforeGLIsThere)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        EXPECT_EQ("Tried to create shader when GL wasn't loaded", FailureOf<FatalException>());
        EXPECT_EQ("Tried to create shader when GL wasn't loaded",
                  FailureOf<FatalException>("", ""));
    });
}

TEST_F(ShaderTest, WithoutSourcesItNeedsNothingOfGL)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        rendering::GLHasLoaded();
        ASSERT_FALSE(glUseProgramObjectARB) << "no context, no functions";
        recorded::Clear();
        test::LogCapture log(6);
        const Shader shader("x", "", "");
        shader.Bind();
        EXPECT_EQ(-1, shader.GetUniformLocation("Color"));
        EXPECT_EQ(-1, shader.GetAttributeLocation("Color"));
        shader.SetUniform("Color", 1.0f);
        shader.SetUniform("Color", math::Vec4());
        shader.Unbind();
        EXPECT_EQ(0u, shader.MemoryUsage());
        EXPECT_EQ(Calls(), recorded::Calls());
        EXPECT_EQ("", log.Text()) << "a shader without a program lacks nothing";
    });
}

TEST_F(ShaderTest, AnErrorOfGLBeforeItIsThrownFirst)
{
    EXPECT_IN_FRESH_PROCESS({
        recorded::GL().error = GL_INVALID_ENUM;
        EXPECT_EQ("GL-Error: invalid enumerant", FailureOf<std::runtime_error>("", ""));
        EXPECT_EQ(Calls(), recorded::Calls());
    });
}

TEST_F(ShaderTest, NeedsBothKindsOfProgramsOfTheSystem)
{
    EXPECT_IN_FRESH_PROCESS({
        const std::string expected =
            "This system doesn't support shaders. Please update your graphics driver and try again";
        __GLEW_ARB_vertex_program = GL_FALSE;
        EXPECT_EQ(expected, FailureOf<FatalException>());
        __GLEW_ARB_vertex_program = GL_TRUE;
        __GLEW_ARB_fragment_program = GL_FALSE;
        EXPECT_EQ(expected, FailureOf<FatalException>());
        // It comes before the functions, which such a system lacks too.
        __glewUseProgramObjectARB = nullptr;
        EXPECT_EQ(expected, FailureOf<FatalException>());
        EXPECT_EQ(Calls(), recorded::Calls());
    });
}

TEST_F(ShaderTest, NeedsEachOfTheFunctions)
{
    EXPECT_IN_FRESH_PROCESS({
        const std::string expected = "NULL-function in Shader::Shader";
        EXPECT_EQ(expected, FailureWithout(__glewGetObjectParameterivARB));
        EXPECT_EQ(expected, FailureWithout(__glewGetInfoLogARB));
        EXPECT_EQ(expected, FailureWithout(__glewCreateShaderObjectARB));
        EXPECT_EQ(expected, FailureWithout(__glewShaderSourceARB));
        EXPECT_EQ(expected, FailureWithout(__glewCompileShaderARB));
        EXPECT_EQ(expected, FailureWithout(__glewCreateProgramObjectARB));
        EXPECT_EQ(expected, FailureWithout(__glewAttachObjectARB));
        EXPECT_EQ(expected, FailureWithout(__glewLinkProgramARB));
        EXPECT_EQ(expected, FailureWithout(__glewDeleteObjectARB));
        EXPECT_EQ(expected, FailureWithout(__glewGetUniformLocationARB));
        EXPECT_EQ(expected, FailureWithout(__glewGetAttribLocationARB));
        EXPECT_EQ(expected, FailureWithout(__glewUseProgramObjectARB));
        EXPECT_EQ(expected, FailureWithout(__glewUniform1iARB));
        EXPECT_EQ(expected, FailureWithout(__glewUniform1fARB));
        EXPECT_EQ(expected, FailureWithout(__glewUniformMatrix4fvARB));
        EXPECT_EQ(expected, FailureWithout(__glewUniform1fvARB));
        EXPECT_EQ(expected, FailureWithout(__glewUniform2fvARB));
        EXPECT_EQ(expected, FailureWithout(__glewUniform3fvARB));
        EXPECT_EQ(expected, FailureWithout(__glewUniform4fvARB));
        EXPECT_EQ(Calls(), recorded::Calls()) << "nothing is made";
        Shader("x", "V", "F"); // with all of them
    });
}

TEST_F(ShaderTest, IsMadeInThisOrderAndGoesWithAllItsParts)
{
    EXPECT_IN_FRESH_PROCESS({
        test::LogCapture log;
        {
            const Shader shader("x", "V", "F");
            EXPECT_EQ(
                (Calls{"program", "vertex shader", "source 2 1 V", "compile 2", "compiled? 2",
                       "attach 1 2", "delete 2", "fragment shader", "source 3 1 F", "compile 3",
                       "compiled? 3", "attach 1 3", "delete 3", "link 1", "linked? 1"}),
                TakeCalls())
                << "an attached part is deleted with the program";
        }
        EXPECT_EQ((Calls{"delete 1"}), TakeCalls());
        EXPECT_EQ("", log.Text()) << "GL had nothing to say";
    });
}

TEST_F(ShaderTest, EitherSourceMayBeAbsent)
{
    EXPECT_IN_FRESH_PROCESS({
        Shader("x", "V", "");
        EXPECT_EQ((Calls{"program", "vertex shader", "source 2 1 V", "compile 2", "compiled? 2",
                         "attach 1 2", "delete 2", "link 1", "linked? 1", "delete 1"}),
                  TakeCalls());
        Shader("x", "", "F");
        EXPECT_EQ((Calls{"program", "fragment shader", "source 4 1 F", "compile 4", "compiled? 4",
                         "attach 3 4", "delete 4", "link 3", "linked? 3", "delete 3"}),
                  TakeCalls());
    });
}

TEST_F(ShaderTest, WhatTheDriverRefusesToMakeIsNamed)
{
    EXPECT_IN_FRESH_PROCESS({
        s_driver.hasProgram = false;
        EXPECT_EQ("CreateProgram returned 0", FailureOf<FatalException>());
        EXPECT_EQ((Calls{"program"}), TakeCalls());
        s_driver.hasProgram = true;
        s_driver.hasShader = false;
        EXPECT_EQ("CreateShader returned 0", FailureOf<BadDataException>());
        EXPECT_EQ((Calls{"program", "vertex shader", "delete 1"}), TakeCalls());
    });
}

TEST_F(ShaderTest, AnErrorOfGLOnTheWayIsThrownBeforeTheFirstSource)
{
    EXPECT_IN_FRESH_PROCESS({
        s_driver.errorAfterProgram = GL_OUT_OF_MEMORY;
        EXPECT_EQ("GL-Error: out of memory", FailureOf<std::runtime_error>());
        EXPECT_EQ((Calls{"program", "delete 1"}), TakeCalls());
    });
}

TEST_F(ShaderTest, ASourceThatDoesNotCompileIsLoggedWithWhatTheCompilerSaid)
{
    EXPECT_IN_FRESH_PROCESS({
        test::LogCapture log;
        s_driver.compiles = false;
        s_driver.shaderLog = "0:3: syntax error\n";
        EXPECT_EQ("Failed to compile shader", FailureOf<BadDataException>());
        EXPECT_EQ((Calls{"program", "vertex shader", "source 2 1 V", "compile 2", "compiled? 2",
                         "delete 2", "delete 1"}),
                  TakeCalls())
            << "nothing is left behind";
        ASSERT_GE(log.Lines().size(), 3u);
        EXPECT_EQ("-- Compilation results for shader: x\n0:3: syntax error\n--", log.Lines()[0]);
        EXPECT_EQ(0u, log.Lines()[1].find("Exception thrown: Failed to compile shader"));
        EXPECT_EQ(2u, log.Count("Exception passed on at ")) << log.Text();
    });
}

TEST_F(ShaderTest, AProgramThatDoesNotLinkIsLoggedWithWhatTheLinkerSaid)
{
    EXPECT_IN_FRESH_PROCESS({
        test::LogCapture log;
        s_driver.links = false;
        s_driver.programLog = "pos is not written\n";
        EXPECT_EQ("Failed to link shader", FailureOf<BadDataException>());
        EXPECT_EQ("delete 1", TakeCalls().back());
        ASSERT_GE(log.Lines().size(), 3u);
        EXPECT_EQ("-- Linking results for program: x\npos is not written\n--", log.Lines()[0]);
        EXPECT_EQ(0u, log.Lines()[1].find("Exception thrown: Failed to link shader"));
        EXPECT_EQ(1u, log.Count("Exception passed on at ")) << log.Text();
    });
}

TEST_F(ShaderTest, WhatGLHasToSayIsLoggedAlsoWhenAllIsWell)
{
    EXPECT_IN_FRESH_PROCESS({
        test::LogCapture log(8);
        s_driver.shaderLog = "a warning\n";
        s_driver.programLog = "another";
        Shader("x", "V", "F");
        EXPECT_EQ((Calls{"-- Compilation results for shader: x\na warning\n--",
                         "-- Compilation results for shader: x\na warning\n--",
                         "-- Linking results for program: x\nanother--"}),
                  log.Lines());
    });
}

TEST_F(ShaderTest, BindsItsProgramAndUnbindsToNone)
{
    EXPECT_IN_FRESH_PROCESS({
        const Shader a("a", "V", "");
        const Shader b("b", "V", "");
        TakeCalls();
        a.Bind();
        b.Bind();
        b.Unbind();
        a.Unbind();
        EXPECT_EQ((Calls{"use 1", "use 0", "use 3", "use 0", "use 1", "use 0"}), TakeCalls());

        recorded::GL().error = GL_INVALID_OPERATION;
        EXPECT_EQ("GL-Error: invalid operation",
                  test::WhatOf<std::runtime_error>([&] { util::BindScope<Shader> scope(a); }));
        EXPECT_EQ((Calls{"use 0"}), TakeCalls()) << "the error is older than the binding";
    });
}

TEST_F(ShaderTest, AMissingVariableIsAnErrorThatStopsNothing)
{
    EXPECT_IN_FRESH_PROCESS({
        const Shader shader("x", "V", "F");
        s_driver.locations = {{"Color", 0}, {"corner", 5}};
        TakeCalls();
        test::LogCapture log(6);
        EXPECT_EQ(0, shader.GetUniformLocation("Color"));
        EXPECT_EQ(5, shader.GetAttributeLocation("corner"));
        EXPECT_EQ("", log.Text());
        EXPECT_EQ(-1, shader.GetUniformLocation("Colour"));
        EXPECT_EQ(-1, shader.GetAttributeLocation("side"));
        EXPECT_EQ((Calls{"!! ERROR: Uniform \"Colour\" not found in shader",
                         "!! ERROR: Shader x has no uniform Colour",
                         "!! ERROR: Attribute \"side\" not found.",
                         "!! ERROR: Shader x has no attribute side"}),
                  log.Lines());
        EXPECT_EQ((Calls{"uniform? 1 Color", "attribute? 1 corner", "uniform? 1 Colour",
                         "attribute? 1 side"}),
                  TakeCalls());
        // GL would be told the location -1 to no effect, or to that of an error.
        shader.SetUniform("Colour", 1.0f);
        EXPECT_EQ((Calls{"uniform? 1 Colour"}), TakeCalls());
        EXPECT_EQ(4u, log.Lines().size()) << "the log holds back what it said in this frame";
    });
}

TEST_F(ShaderTest, SendsUniformsOfEachType)
{
    EXPECT_IN_FRESH_PROCESS({
        Shader::SetUniform(3, 7);
        Shader::SetUniform(3, 0.5f);
        Shader::SetUniform(3, true);
        Shader::SetUniform(3, math::Vec2(1, 2));
        Shader::SetUniform(3, math::Vec3(1, 2, 3));
        Shader::SetUniform(3, math::Vec4(1, 2, 3, 4));
        EXPECT_EQ((Calls{"1i 3 7", "1f 3 0.5", "1i 3 1", "2fv 3 1 1 2", "3fv 3 1 1 2 3",
                         "4fv 3 1 1 2 3 4"}),
                  TakeCalls());

        const Shader shader("x", "V", "F");
        s_driver.locations["Size"] = 9;
        TakeCalls();
        shader.SetUniform("Size", math::Vec2(1, 2));
        EXPECT_EQ((Calls{"uniform? 1 Size", "2fv 9 1 1 2"}), TakeCalls());
    });
}

// Deliberate: our matrices lie row by row in memory, and go as they lie.
TEST_F(ShaderTest, AMatrixGoesUntransposed)
{
    EXPECT_IN_FRESH_PROCESS({
        math::Mat4 m;
        for (int i = 0; i < 16; ++i)
            m.m[i / 4][i % 4] = float(i);
        Shader::SetUniform(3, m);
        EXPECT_EQ((Calls{"matrix 3 1 0 0 1 2 3 4 15"}), TakeCalls());
    });
}

TEST_F(ShaderTest, AFailedShaderIsReplacedByTheDefault)
{
    WriteShader("broken");
    EXPECT_IN_FRESH_PROCESS({
        const ShaderProxy proxy = ShaderManager::GetInstancePtr()->Load("broken");
        test::LogCapture log;
        s_driver.compiles = false;
        s_driver.shaderLog = "no\n";
        EXPECT_FALSE(proxy);
        EXPECT_TRUE(log.Has("-- Compilation results for shader: broken\nno\n--")) << log.Text();
        EXPECT_TRUE(log.Has("!! ERROR: Failed to compile shader")) << log.Text();
        EXPECT_EQ("[NAME MISSING]", proxy->GetName());
        TakeCalls();
        proxy->Bind();
        proxy->SetUniform("Color", 1.0f);
        proxy->Unbind();
        EXPECT_EQ((Calls{"use 0", "use 0"}), TakeCalls()) << "the fixed functions draw";

        // Mended, it is there at the next reload.
        s_driver = Driver();
        proxy.GetMentor()->Unload();
        EXPECT_TRUE(proxy);
        EXPECT_EQ("broken", proxy->GetName());
    });
}

TEST_F(ShaderTest, AMissingFileCostsTheShaderAndNothingElse)
{
    test::Spit(m_dir / "data/shaders/default/half.vert", "V");
    EXPECT_IN_FRESH_PROCESS({
        test::LogCapture log(6);
        EXPECT_FALSE(ShaderManager::GetInstancePtr()->Load("nowhere"));
        EXPECT_TRUE(log.Has("data/shaders/default/nowhere.vert")) << log.Text();
        EXPECT_FALSE(ShaderManager::GetInstancePtr()->Load("half"));
        EXPECT_TRUE(log.Has("data/shaders/default/half.frag")) << log.Text();
    });
}

// An empty pair was taken for the default, which has no program: bodies were drawn by nobody.
TEST_F(ShaderTest, AnEmptyFileCostsTheShaderToo)
{
    const char* const sources[][2] = {{"", ""}, {"V", ""}, {"", "F"}};
    EXPECT_IN_FRESH_PROCESS({
        for (const auto& source : sources)
        {
            const std::string name = std::string("empty") + source[0] + source[1];
            test::Spit(m_dir / ("data/shaders/default/" + name + ".vert"), source[0]);
            test::Spit(m_dir / ("data/shaders/default/" + name + ".frag"), source[1]);
            test::LogCapture log(6);
            const ShaderProxy proxy = ShaderManager::GetInstancePtr()->Load(name);
            EXPECT_FALSE(proxy) << name;
            EXPECT_TRUE(log.Has("!! ERROR: Failed to load shader " + name)) << log.Text();
            EXPECT_TRUE(log.Has("data/shaders/default/" + name + (*source[0] ? ".frag" : ".vert") +
                                "\" is empty"))
                << log.Text();
        }
        EXPECT_EQ(Calls(), TakeCalls());
    });
}

TEST_F(ShaderTest, AnErrorThatOthersLeftCostsNoShader)
{
    WriteShader("good");
    EXPECT_IN_FRESH_PROCESS({
        recorded::GL().error = GL_INVALID_ENUM;
        EXPECT_TRUE(ShaderManager::GetInstancePtr()->Load("good"));

        // Nor the default.
        ShaderMentor::s_default->Unload();
        test::LogCapture log(6);
        const ShaderProxy proxy = ShaderManager::GetInstancePtr()->Load("nowhere");
        recorded::GL().error = GL_INVALID_OPERATION;
        EXPECT_FALSE(proxy);
        EXPECT_EQ("[NAME MISSING]", proxy->GetName());
        EXPECT_TRUE(log.Has("GL-Error: invalid operation")) << log.Text();
    });
}

TEST_F(ShaderTest, IsReadFromItsTwoFilesAtItsFirstUse)
{
    WriteShader("good");
    EXPECT_IN_FRESH_PROCESS({
        ShaderManager* manager = ShaderManager::GetInstancePtr();
        EXPECT_EQ(m_dir / "data/shaders/default/", ShaderManager::GetShaderPath());
        const ShaderProxy proxy = manager->Load("good");
        EXPECT_EQ(Calls(), TakeCalls());
        EXPECT_TRUE(proxy);
        EXPECT_EQ("good", proxy->GetName());
        const Calls calls = TakeCalls();
        EXPECT_EQ(1, std::count(calls.begin(), calls.end(), "source 2 1 vertex of good"));
        EXPECT_EQ(1, std::count(calls.begin(), calls.end(), "source 3 1 fragment of good"));

        EXPECT_EQ(proxy.GetMentor(), manager->Load("good").GetMentor()) << "one mentor for a name";
        EXPECT_TRUE(manager->Load("good"));
        EXPECT_EQ(Calls(), TakeCalls());
    });
}

TEST_F(ShaderTest, WithShadersOffTheProxyTestsFalse)
{
    WriteShader("good");
    EXPECT_IN_FRESH_PROCESS({
        test::LogCapture log;
        rendering::ResourceSettings::s_useShaders = false;
        const ShaderProxy proxy = ShaderManager::GetInstancePtr()->Load("good");
        EXPECT_FALSE(proxy);
        EXPECT_EQ(Calls(), TakeCalls());
        EXPECT_EQ("", log.Text()) << "it is what the user wants";

        rendering::ResourceSettings::s_useShaders = true;
        EXPECT_FALSE(proxy) << "it takes a reload";
        proxy.GetMentor()->Unload();
        EXPECT_TRUE(proxy);

        rendering::ResourceSettings::s_useShaders = false;
        EXPECT_TRUE(proxy) << "what is loaded stays";
    });
}

TEST_F(ShaderTest, AUniformAsksForItsPlaceOnceForEachBuild)
{
    WriteShader("good");
    EXPECT_IN_FRESH_PROCESS({
        const ShaderProxy proxy = ShaderManager::GetInstancePtr()->Load("good");
        const Uniform color(proxy, "Color");
        const rendering::Attribute side(proxy, "side");
        s_driver.locations = {{"Color", 4}, {"side", 6}};
        EXPECT_EQ(4, color.GetLocation()) << "which builds the shader";
        EXPECT_EQ(6, side.GetLocation());
        TakeCalls();
        color.Set(0.5f);
        color.Set(math::Vec2(1, 2));
        EXPECT_EQ(6, side.GetLocation());
        EXPECT_EQ((Calls{"1f 4 0.5", "2fv 4 1 1 2"}), TakeCalls()) << "GL isn't asked again";

        s_driver.locations = {{"Color", 0}, {"side", 1}};
        proxy.GetMentor()->Unload();
        proxy.GetMentor()->Load();
        TakeCalls();
        color.Set(0.5f);
        color.Set(0.5f);
        EXPECT_EQ((Calls{"uniform? 4 Color", "1f 0 0.5", "1f 0 0.5"}), TakeCalls());
        EXPECT_EQ(1, side.GetLocation());
        EXPECT_EQ((Calls{"attribute? 4 side"}), TakeCalls());
    });
}

TEST_F(ShaderTest, AMissingUniformIsAskedForAndReportedOnceForEachBuild)
{
    WriteShader("good");
    EXPECT_IN_FRESH_PROCESS({
        const ShaderProxy proxy = ShaderManager::GetInstancePtr()->Load("good");
        const Uniform color(proxy, "Color");
        proxy.GetMentor()->Load();
        TakeCalls();
        for (int build = 1; build <= 2; ++build)
        {
            test::LogCapture log(6);
            for (int frame = 0; frame < 3; ++frame)
            {
                color.Set(0.5f);
                EXPECT_EQ(-1, color.GetLocation());
                logging::Logger::GetInstancePtr()->Update();
                logging::Logger::GetInstancePtr()->Update();
            }
            EXPECT_EQ((Calls{"!! ERROR: Uniform \"Color\" not found in shader",
                             "!! ERROR: Shader good has no uniform Color"}),
                      log.Lines());
            EXPECT_EQ(1u, TakeCalls().size());
            proxy.GetMentor()->Unload();
            proxy.GetMentor()->Load();
            TakeCalls();
        }
    });
}

TEST_F(ShaderTest, AUniformOfTheDefaultIsAskedForWhenTheShaderIsThere)
{
    WriteShader("good");
    EXPECT_IN_FRESH_PROCESS({
        s_driver.links = false;
        const ShaderProxy proxy = ShaderManager::GetInstancePtr()->Load("good");
        const Uniform color(proxy, "Color");
        s_driver.locations["Color"] = 2;
        EXPECT_EQ(-1, color.GetLocation());
        s_driver.links = true;
        EXPECT_EQ(-1, color.GetLocation()) << "the default stands in until a reload";
        proxy.GetMentor()->Unload();
        EXPECT_EQ(2, color.GetLocation());
    });
}

TEST_F(ShaderTest, AVariableThatIsGoneIsNotTold)
{
    WriteShader("good");
    EXPECT_IN_FRESH_PROCESS({
        const ShaderProxy proxy = ShaderManager::GetInstancePtr()->Load("good");
        {
            const Uniform color(proxy, "Color");
        }
        proxy.GetMentor()->Load();
        proxy.GetMentor()->Unload();
    });
}
