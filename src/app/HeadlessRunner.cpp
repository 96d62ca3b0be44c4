#include "app/HeadlessRunner.h"

#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/Startup.h"
#include "app/entities/GeomEntity.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "logging/Logger.h"
#include "physics/Body.h"
#include "physics/Contact.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/Callback.h"
#include "util/FileSystem.h"

#include <boost/filesystem.hpp>
#include <boost/program_options.hpp>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <iostream>
#include <map>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace fs = boost::filesystem;
namespace po = boost::program_options;

namespace app
{
namespace
{
enum ExitCode
{
    Success = 0,
    FileFailure = 1,
    BadCommandLine = 2
};

// Something the user has to put right; the text says what.
class RunFailure : public std::runtime_error
{
public:
    RunFailure(ExitCode code, const std::string& text)
        : std::runtime_error(text)
        , m_code(code)
    {
    }
    ExitCode GetCode() const { return m_code; }

private:
    ExitCode m_code;
};

// One -e or -f, in the order of the command line.
struct ScriptSource
{
    bool isFile;
    std::string text; // the code, or the name of the file
};

struct Options
{
    std::string scene;
    std::string workDir;
    std::vector<ScriptSource> scripts;
    bool hasSteps = false;
    long steps = 0;
    bool hasSeconds = false;
    double seconds = 0;
    std::string save, saveConfig, csv, contactsCsv, waterCsv, times;
    long every = 1;
    bool stats = false;
    bool isQuiet = false;
};

const char* const Usage = "Usage: quib-run [options] [SCENE.qib]\n"
                          "Runs a Quib scene without a window. The scene is loaded first, then -e "
                          "and -f run in the order\n"
                          "given, then the steps are made, then files are written.\n\n";

const char* const UsageEnd =
    "\nNumbers are written with 9 significant digits. An entity or geometry to which the scene "
    "file\n"
    "gave no id shows that of this run.\n"
    "Exit code: 0; 1 when a named file can't be read or written; 2 for a bad command line.\n";

po::options_description MakeDescription()
{
    po::options_description description("Options");
    // clang-format off
    description.add_options()
        ("workdir", po::value<std::string>()->value_name("DIR"),
         "the work directory; without it a fresh temporary one that is removed at the end")
        ("eval,e", po::value<std::vector<std::string>>()->value_name("CODE"),
         "run CODE as a console line would and print its value; may be repeated")
        ("file,f", po::value<std::vector<std::string>>()->value_name("FILE"),
         "the same with a file's text; may be repeated")
        ("steps", po::value<long>()->value_name("N"), "make N fixed steps")
        ("seconds", po::value<double>()->value_name("S"), "make the steps of S simulated seconds")
        ("save", po::value<std::string>()->value_name("FILE"), "write the scene")
        ("save-config", po::value<std::string>()->value_name("FILE"), "write the configuration")
        ("csv", po::value<std::string>()->value_name("FILE"),
         "write one row per entity at step 0 and every K steps: "
         "step,time,entityID,x,y,angle,vx,vy,omega")
        ("contacts-csv", po::value<std::string>()->value_name("FILE"),
         "write the contacts at these steps: "
         "step,geomA,geomB,index,px,py,nx,ny,depth,impulseN,impulseT")
        ("water-csv", po::value<std::string>()->value_name("FILE"),
         "write the water at these steps: step,index,x,y,vx,vy,density")
        ("every", po::value<long>()->value_name("K")->default_value(1), "the K of these three")
        ("times", po::value<std::string>()->value_name("FILE"),
         "write the milliseconds of CPU time of each step, one per line")
        ("stats", "print bodies, contacts and milliseconds per step at the end")
        ("quiet,q", "no progress lines on standard output")
        ("help", "print this")
        ("version", "print the version");
    // clang-format on
    return description;
}

[[noreturn]] void BadUsage(const std::string& text)
{
    throw RunFailure(BadCommandLine, text + " (try --help)");
}

std::string GetText(const po::variables_map& values, const char* name)
{
    return values.count(name) ? values[name].as<std::string>() : std::string();
}

/// @return  false when there is nothing to run: help or version was asked for, and printed
bool ReadCommandLine(int argc, char** argv, Options& options)
{
    const po::options_description visible = MakeDescription();
    po::options_description all;
    all.add(visible);
    all.add_options()("scene", po::value<std::vector<std::string>>());
    po::positional_options_description positional;
    positional.add("scene", -1);

    po::variables_map values;
    try
    {
        namespace style = po::command_line_style;
        // No guessing: an option is written out.
        const po::parsed_options parsed = po::command_line_parser(argc, argv)
                                              .options(all)
                                              .positional(positional)
                                              .style(style::unix_style & ~style::allow_guessing)
                                              .run();
        po::store(parsed, values);
        po::notify(values);
        // The map sorts by name; only here the order of the command line is left.
        for (const po::option& option : parsed.options)
            if (option.string_key == "eval" || option.string_key == "file")
                options.scripts.push_back({option.string_key == "file", option.value.at(0)});
    }
    catch (po::error& e)
    {
        BadUsage(e.what());
    }

    if (values.count("help"))
    {
        std::cout << Usage << visible << UsageEnd << std::flush;
        return false;
    }
    if (values.count("version"))
    {
        std::cout << util::FileSystem::GetInstancePtr()->NameAndVersion() << std::endl;
        return false;
    }

    if (values.count("scene"))
    {
        const auto& scenes = values["scene"].as<std::vector<std::string>>();
        if (scenes.size() > 1)
            BadUsage("more than one scene: " + scenes[0] + ", " + scenes[1]);
        options.scene = scenes[0];
        if (!util::iends_with(options.scene, ".qib"))
            BadUsage("not a scene file (.qib): " + options.scene);
    }
    options.workDir = GetText(values, "workdir");
    if (values.count("workdir") && options.workDir.empty())
        BadUsage("--workdir needs a directory");
    options.hasSteps = values.count("steps");
    options.hasSeconds = values.count("seconds");
    if (options.hasSteps && options.hasSeconds)
        BadUsage("--steps and --seconds exclude each other");
    if (options.hasSteps)
        options.steps = values["steps"].as<long>();
    if (options.steps < 0)
        BadUsage("--steps must not be negative");
    if (options.hasSeconds)
        options.seconds = values["seconds"].as<double>();
    if (!(options.seconds >= 0) || !math::IsFinite(options.seconds))
        BadUsage("--seconds must be a number and not negative");
    options.every = values["every"].as<long>();
    if (options.every < 1)
        BadUsage("--every must be at least 1");
    options.save = GetText(values, "save");
    options.saveConfig = GetText(values, "save-config");
    options.csv = GetText(values, "csv");
    options.contactsCsv = GetText(values, "contacts-csv");
    options.waterCsv = GetText(values, "water-csv");
    options.times = GetText(values, "times");
    options.stats = values.count("stats");
    options.isQuiet = values.count("quiet");
    return true;
}

// The temporary work directory. A killed run removes it too, as far as a signal handler may.
class TempDir
{
public:
    TempDir()
    {
        const char* base = std::getenv("TMPDIR");
        std::string name = std::string(base && *base ? base : "/tmp") + "/quib-run-XXXXXX";
        if (!mkdtemp(name.data()))
            throw RunFailure(FileFailure, "can't make a temporary directory " + name);
        m_path = name + "/";
        // What a run leaves there, in the order in which it can be removed. Strings now, as the
        // handler may not make any.
        for (const char* left :
             {"Logfile.txt", "quib.lock", "config.autosave.cfg", "config.autosave.cfg.tmp",
              "scenes/_AUTOSAVE.qib", "scenes/_AUTOSAVE.qib.tmp", "scenes/quiblets", "scenes",
              "screenshots", ""})
            Leavings().push_back(m_path + left);
        for (int signal : {SIGHUP, SIGINT, SIGTERM})
            std::signal(signal, &OnSignal);
    }
    ~TempDir()
    {
        Leavings().clear();
        boost::system::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& GetPath() const { return m_path; }

private:
    static std::vector<std::string>& Leavings()
    {
        static std::vector<std::string>* leavings = new std::vector<std::string>;
        return *leavings;
    }

    static void OnSignal(int signal)
    {
        for (const std::string& path : Leavings())
            if (unlink(path.c_str()) != 0)
                rmdir(path.c_str());
        std::signal(signal, SIG_DFL);
        raise(signal);
    }

    std::string m_path;
};

// A file that is written line by line while the run goes on.
class Table
{
public:
    /// "" makes one that takes rows and drops them.
    Table(const std::string& path, const char* header)
        : m_path(path)
    {
        if (path.empty())
            return;
        m_file = std::fopen(path.c_str(), "w");
        if (!m_file)
            Fail();
        if (*header)
            std::fprintf(m_file, "%s\n", header);
    }
    ~Table()
    {
        if (m_file)
            std::fclose(m_file);
    }
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    bool IsWanted() const { return m_file; }
    FILE* GetFile() const { return m_file; }

    /// A full disk shows here at the latest.
    void Close()
    {
        if (!m_file)
            return;
        const bool isGood = !std::ferror(m_file);
        const bool isClosed = std::fclose(m_file) == 0;
        m_file = nullptr;
        if (!isGood || !isClosed)
            Fail();
    }

private:
    [[noreturn]] void Fail() { throw RunFailure(FileFailure, "can't write " + m_path); }

    std::string m_path;
    FILE* m_file = nullptr;
};

std::string ReadFile(const std::string& path)
{
    try
    {
        return util::FileSystem::GetInstancePtr()->ReadWholeFile(path);
    }
    catch (FileReadException&)
    {
        throw RunFailure(FileFailure, "can't read " + path);
    }
}

void WriteFile(const std::string& path, const std::string& text)
{
    try
    {
        util::FileSystem::GetInstancePtr()->WriteFile(path, text);
    }
    catch (Exception&)
    {
        throw RunFailure(FileFailure, "can't write " + path);
    }
}

/// The path under which the scene is there: as given, or for a bare name in the scene folder.
std::string FindScene(const std::string& name)
{
    const bool isBare = name.find('/') == std::string::npos;
    const std::string inFolder = util::FileSystem::GetInstancePtr()->SceneDir() + name;
    const std::string asGiven = isBare ? "./" + name : name;
    const std::string path =
        isBare && !fs::exists(asGiven) && fs::exists(inFolder) ? inFolder : asGiven;
    if (access(path.c_str(), R_OK) != 0 || !fs::is_regular_file(path))
        throw RunFailure(FileFailure, "can't read " + name);
    return path;
}

/// CPU time of this thread.
double GetThreadMilliseconds()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) * 1e-6;
}

// One line on the terminal that says how far a long run is.
class ProgressLine
{
public:
    explicit ProgressLine(long total)
        : m_total(total)
        , m_isShown(isatty(STDERR_FILENO))
        , m_next(Clock::now() + std::chrono::seconds(1))
    {
    }
    ~ProgressLine()
    {
        if (m_hasPrinted)
            std::fprintf(stderr, "\r\033[K");
    }

    void Update(long step)
    {
        if (!m_isShown || Clock::now() < m_next)
            return;
        m_next = Clock::now() + std::chrono::milliseconds(200);
        m_hasPrinted = true;
        std::fprintf(stderr, "\rstep %ld of %ld", step, m_total);
        std::fflush(stderr);
    }

private:
    using Clock = std::chrono::steady_clock;

    long m_total;
    bool m_isShown;
    bool m_hasPrinted = false;
    Clock::time_point m_next;
};

class Runner
{
public:
    explicit Runner(const Options& options)
        : m_options(options)
        , m_csv(options.csv, "step,time,entityID,x,y,angle,vx,vy,omega")
        , m_contactsCsv(options.contactsCsv,
                        "step,geomA,geomB,index,px,py,nx,ny,depth,impulseN,impulseT")
        , m_waterCsv(options.waterCsv, "step,index,x,y,vx,vy,density")
        , m_times(options.times, "")
        , m_simulation(physics::Simulation::GetInstancePtr())
    {
    }

    void Run(const std::string& scene, const std::vector<std::string>& scripts)
    {
        if (!scene.empty())
            App::GetInstancePtr()->GetAppGUI()->LoadScene(scene, false);
        for (const std::string& script : scripts)
            std::cout << script::Parser::GetInstancePtr()->ExecuteToString(script) << std::endl;
        MakeSteps();
        WriteFiles();
        if (m_options.stats)
            PrintStats();
    }

private:
    long CalcStepCount() const
    {
        if (!m_options.hasSeconds)
            return m_options.steps;
        const double count = m_options.seconds / double(m_simulation->m_timeDelta.Get());
        if (!(count >= 0 && count < 1e15))
            throw RunFailure(BadCommandLine, "no steps make these --seconds: Sim.timeDelta is " +
                                                 util::ToString(m_simulation->m_timeDelta.Get()));
        return std::lround(count);
    }

    void MakeSteps()
    {
        const long count = CalcStepCount();
        if (m_options.hasSteps || m_options.hasSeconds)
            m_simulation->m_running = true;
        const double startTime = m_simulation->GetSimTime();
        m_simulation->SetStepLimit(1);
        WriteRows(0, 0);
        ProgressLine progress(count);
        for (long step = 1; step <= count; ++step)
        {
            MakeStep(step);
            WriteRows(step, m_simulation->GetSimTime() - startTime);
            progress.Update(step);
        }
    }

    /// One frame as in the program's loop, and in it exactly one step.
    void MakeStep(long step)
    {
        if (step % 11 == 0)
            util::AbstractCallbackSet::FlushCallbackSets();
        util::PointeeHandle::Flush();
        script::Parser::GetInstancePtr()->Update();
        util::InterpolatorBase::UpdateAll();
        App::GetInstancePtr()->GetAppGUI()->PostponeAutosave();

        // A little more than the time of one step, so that rounding cannot make it none; the step
        // limit keeps it at one. A world whose time stands still gets its steps all the same.
        const float factor = m_simulation->m_timeFactor;
        const bool isFrozen = !(factor > 0) || math::IsZero(factor);
        const script::ObjectPtr bound = m_simulation->m_timeFactor->GetObject();
        if (isFrozen)
            m_simulation->m_timeFactor = 1;
        const double delta = std::max(double(m_simulation->m_timeDelta.Get()), 1e-9);
        const float dt = float(delta / double(m_simulation->m_timeFactor.Get()) * 1.001);
        m_simulation->ClearTimeDebt();

        const double start = GetThreadMilliseconds();
        gui::GUI::GetInstancePtr()->Update(dt);
        const double taken = GetThreadMilliseconds() - start;

        if (isFrozen)
            m_simulation->m_timeFactor->SetObject(bound);
        logging::Logger::GetInstancePtr()->Update();
        if (m_times.IsWanted())
            std::fprintf(m_times.GetFile(), "%.9g\n", taken);
        if (m_options.stats)
            m_milliseconds.push_back(taken);
    }

    void WriteRows(long step, double time)
    {
        if (step % m_options.every != 0)
            return;
        if (m_csv.IsWanted())
            WriteEntities(step, time);
        if (m_contactsCsv.IsWanted())
            WriteContacts(step);
    }

    void WriteEntities(long step, double time)
    {
        const auto ids = Serializer::GetInstancePtr()->GetFileEntityIDs();
        for (const EntityPtr& entity : Scene::GetInstancePtr()->GetEntities())
        {
            const GeomEntity* geomEntity = entity->AsGeomEntity();
            if (!geomEntity)
                continue;
            const auto id = ids.find(entity.get());
            const physics::Geom& geom = *geomEntity->GetGeom();
            const math::Vec2 pos = geom.GetCenter();
            math::Vec2 vel;
            float angVel = 0;
            if (const physics::BodyPtr body = geomEntity->GetBody())
            {
                vel = body->GetVelAtWorld(pos);
                angVel = body->GetAngVel();
            }
            std::fprintf(m_csv.GetFile(), "%ld,%.9g,%lu,%.9g,%.9g,%.9g,%.9g,%.9g,%.9g\n", step,
                         time, id != ids.end() ? id->second : entity->GetID(), pos.x, pos.y,
                         geom.GetPose().GetAngle(), vel.x, vel.y, angVel);
        }
    }

    void WriteContacts(long step)
    {
        // A contact knows its geometries by the ids of this run, and its first body.
        const auto fileIDs = Serializer::GetInstancePtr()->GetFileGeomIDs();
        std::map<unsigned, const physics::Geom*> geoms;
        for (const physics::BodyPtr& body : m_simulation->GetBodies())
            for (const physics::Body::BodyPart& part : body->GetParts())
                geoms[part.geom->GetID()] = part.geom.get();
        const auto getFileID = [&](unsigned id) -> unsigned long
        {
            const auto geom = geoms.find(id);
            const auto fileID = geom == geoms.end() ? fileIDs.end() : fileIDs.find(geom->second);
            return fileID == fileIDs.end() ? id : fileID->second;
        };
        for (const physics::ContactPtr& contact : m_simulation->GetContacts())
        {
            unsigned a = contact->GetContactID().GetLowGeom();
            unsigned b = contact->GetContactID().GetHighGeom();
            // The normal runs from the first body's geometry to the second's.
            const auto geomA = geoms.find(a);
            if (geomA != geoms.end() && geomA->second->GetBodyPtr() != contact->GetBodyPtr(0))
                std::swap(a, b);
            std::fprintf(m_contactsCsv.GetFile(),
                         "%ld,%lu,%lu,%u,%.9g,%.9g,%.9g,%.9g,%.9g,%.9g,%.9g\n", step, getFileID(a),
                         getFileID(b), contact->GetIndex(), contact->GetPos().x,
                         contact->GetPos().y, contact->GetNormal().x, contact->GetNormal().y,
                         contact->GetDepth(), contact->GetTotalN(), contact->GetTotalT());
        }
    }

    void WriteFiles()
    {
        for (Table* table : {&m_csv, &m_contactsCsv, &m_waterCsv, &m_times})
            table->Close();
        if (!m_options.save.empty())
            WriteFile(m_options.save, Serializer::GetInstancePtr()->SerializeScene());
        if (!m_options.saveConfig.empty())
            WriteFile(m_options.saveConfig, script::Parser::GetInstancePtr()->ToCode());
    }

    void PrintStats()
    {
        const physics::BodyList& bodies = m_simulation->GetBodies();
        // The world's own body counts once something is fixed to it.
        const size_t worldBodies = bodies.front()->GetGeoms().size() == 1 ? 1 : 0;
        std::cout << "bodies " << bodies.size() - worldBodies << "\ncontacts "
                  << m_simulation->GetContacts().size() << "\n";
        if (!m_milliseconds.empty())
        {
            std::sort(m_milliseconds.begin(), m_milliseconds.end());
            std::cout << "ms per step: min " << m_milliseconds.front() << ", median "
                      << m_milliseconds[m_milliseconds.size() / 2] << ", max "
                      << m_milliseconds.back() << "\n";
        }
        std::cout << std::flush;
    }

    const Options& m_options;
    Table m_csv, m_contactsCsv, m_waterCsv, m_times;
    physics::Simulation* m_simulation;
    std::vector<double> m_milliseconds; // of each step
};

void RunOptions(const Options& options)
{
    std::unique_ptr<TempDir> tempDir;
    std::string workDir = options.workDir;
    if (workDir.empty())
    {
        tempDir.reset(new TempDir);
        workDir = tempDir->GetPath();
    }
    else if (!fs::is_directory(workDir))
        throw RunFailure(FileFailure, "can't read " + workDir);
    if (workDir.back() != '/')
        workDir += '/';
    util::FileSystem::GetInstancePtr()->SetWorkDir(workDir);

    // What can't be read or written is said before anything runs.
    const std::string scene = options.scene.empty() ? "" : FindScene(options.scene);
    std::vector<std::string> scripts;
    for (const ScriptSource& source : options.scripts)
        scripts.push_back(source.isFile ? ReadFile(source.text) : source.text);

    setenv("SDL_VIDEODRIVER", "dummy", 1);
    core::Subsystem::SetLogToStandardOutput(!options.isQuiet);
    CreateServices();
    Runner(options).Run(scene, scripts);
}
}

int RunHeadless(int argc, char** argv)
{
    try
    {
        Options options;
        if (ReadCommandLine(argc, argv, options))
            RunOptions(options);
        return Success;
    }
    catch (RunFailure& e)
    {
        std::cerr << "quib-run: " << e.what() << std::endl;
        return e.GetCode();
    }
    catch (std::exception& e)
    {
        std::cerr << "quib-run: " << e.what() << std::endl;
        return FileFailure;
    }
}
}
