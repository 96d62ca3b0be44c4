#include "app/HeadlessRunner.h"

#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/Startup.h"
#include "app/entities/GeomEntity.h"
#include "app/runner/ProgressLine.h"
#include "app/runner/RunFailure.h"
#include "app/runner/RunnerOptions.h"
#include "app/runner/RunnerTable.h"
#include "app/runner/RunnerTempDir.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "logging/Logger.h"
#include "physics/Body.h"
#include "physics/Contact.h"
#include "physics/Geom.h"
#include "physics/Particle.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/Callback.h"
#include "util/FileSystem.h"

#include <boost/filesystem.hpp>

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <memory>
#include <unordered_map>

namespace fs = boost::filesystem;

namespace app
{
namespace
{
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

class Runner
{
public:
    explicit Runner(const RunnerOptions& options)
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
        const std::string failed = WriteFiles();
        if (m_options.stats)
            PrintStats();
        if (!failed.empty())
            throw RunFailure(FileFailure, "can't write " + failed);
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

        // A world whose time stands still, or runs at no finite pace, gets its steps all the same.
        const float factor = m_simulation->m_timeFactor;
        const bool isOdd = !(factor > 0) || math::IsZero(factor) || !math::IsFinite(factor);
        const script::ObjectPtr bound = m_simulation->m_timeFactor->GetObject();
        if (isOdd)
            m_simulation->m_timeFactor = 1;
        // A formula elsewhere may have stopped it.
        if (!m_simulation->m_running)
            m_simulation->m_running = true;
        // A little more than the time of one step, so that rounding cannot make it none; the step
        // limit keeps it at one. Any time above 0 does where a step takes none, or none that is a number.
        float dt = m_simulation->m_timeDelta / m_simulation->m_timeFactor * 1.001f;
        if (!(dt > 0) || !math::IsFinite(dt))
            dt = 1e-9f;
        m_simulation->ClearTimeDebt();

        const double start = GetThreadMilliseconds();
        gui::GUI::GetInstancePtr()->Update(dt);
        const double taken = GetThreadMilliseconds() - start;

        if (isOdd)
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
        if (m_waterCsv.IsWanted())
            WriteWater(step);
    }

    void WriteEntities(long step, double time)
    {
        const Serializer* serializer = Serializer::GetInstancePtr();
        for (const EntityPtr& entity : Scene::GetInstancePtr()->GetEntities())
        {
            const GeomEntity* geomEntity = entity->AsGeomEntity();
            if (!geomEntity)
                continue;
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
                         time, serializer->GetFileID(*entity), pos.x, pos.y,
                         geom.GetPose().GetAngle(), vel.x, vel.y, angVel);
        }
    }

    void WriteContacts(long step)
    {
        // A contact knows its geometries by their ids.
        const Serializer* serializer = Serializer::GetInstancePtr();
        std::unordered_map<unsigned, const physics::Geom*> geoms;
        for (const physics::BodyPtr& body : m_simulation->GetBodies())
            for (const physics::Body::BodyPart& part : body->GetParts())
                geoms[part.geom->GetID()] = part.geom.get();
        for (const physics::ContactPtr& contact : m_simulation->GetContacts())
        {
            unsigned a = contact->GetContactID().GetLowGeom();
            unsigned b = contact->GetContactID().GetHighGeom();
            // The normal runs from the first body's geometry to the second's.
            const auto geomA = geoms.find(a);
            if (geomA != geoms.end() && geomA->second->GetBodyPtr() != contact->GetBodyPtr(0))
                std::swap(a, b);
            std::fprintf(m_contactsCsv.GetFile(),
                         "%ld,%lu,%lu,%u,%.9g,%.9g,%.9g,%.9g,%.9g,%.9g,%.9g\n", step,
                         serializer->GetFileGeomID(a), serializer->GetFileGeomID(b),
                         contact->GetIndex(), contact->GetPos().x, contact->GetPos().y,
                         contact->GetNormal().x, contact->GetNormal().y, contact->GetDepth(),
                         contact->GetTotalN(), contact->GetTotalT());
        }
    }

    void WriteWater(long step)
    {
        size_t index = 0;
        for (const physics::ParticlePtr& particle : m_simulation->GetParticles())
            std::fprintf(m_waterCsv.GetFile(), "%ld,%zu,%.9g,%.9g,%.9g,%.9g,%.9g\n", step, index++,
                         particle->GetPos().x, particle->GetPos().y, particle->GetVel().x,
                         particle->GetVel().y, particle->GetDensity());
    }

    /// Those that fail keep none of the others from being written.
    /// @return  their names
    std::string WriteFiles()
    {
        std::vector<std::string> failed;
        const auto attempt = [&failed](const std::string& path, const auto& write)
        {
            try
            {
                if (!path.empty())
                    write();
            }
            catch (std::exception& e)
            {
                CatchException(e, QUIB_LOCATION);
                failed.push_back(path);
            }
        };
        for (RunnerTable* table : {&m_csv, &m_contactsCsv, &m_waterCsv, &m_times})
            attempt(table->GetPath(), [table] { table->Close(); });
        util::FileSystem* files = util::FileSystem::GetInstancePtr();
        attempt(
            m_options.save, [&]
            { files->WriteFile(m_options.save, Serializer::GetInstancePtr()->SerializeScene()); });
        attempt(m_options.saveConfig,
                [&] {
                    files->WriteFile(m_options.saveConfig,
                                     script::Parser::GetInstancePtr()->ToCode());
                });
        return util::Join(failed, ", ");
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
            // Of an even number, half way between the two in the middle.
            const size_t n = m_milliseconds.size();
            const double median = (m_milliseconds[(n - 1) / 2] + m_milliseconds[n / 2]) / 2;
            std::cout << std::setprecision(9) << "ms per step: min " << m_milliseconds.front()
                      << ", median " << median << ", max " << m_milliseconds.back() << "\n";
        }
        std::cout << std::flush;
    }

    const RunnerOptions& m_options;
    RunnerTable m_csv, m_contactsCsv, m_waterCsv, m_times;
    physics::Simulation* m_simulation;
    std::vector<double> m_milliseconds; // of each step
};

void RunOptions(const RunnerOptions& options)
{
    std::unique_ptr<RunnerTempDir> tempDir;
    std::string workDir = options.workDir;
    if (workDir.empty())
    {
        tempDir = std::make_unique<RunnerTempDir>();
        workDir = tempDir->GetPath();
    }
    else if (!fs::is_directory(workDir))
        throw RunFailure(FileFailure, "can't read " + workDir);
    if (workDir.back() != '/')
        workDir += '/';
    util::FileSystem::GetInstancePtr()->SetWorkDir(workDir);

    // What can't be read is said before anything runs; so is a table that can't be opened.
    const std::string scene = options.scene.empty() ? "" : FindScene(options.scene);
    std::vector<std::string> scripts;
    for (const ScriptSource& source : options.scripts)
        scripts.push_back(source.isFile ? ReadFile(source.text) : source.text);

    setenv("SDL_VIDEODRIVER", "dummy", 1);
    core::Subsystem::SetLogToStandardOutput(!options.isQuiet);
    core::Subsystem::SetUseJoysticks(false); // what is plugged in here must not change a result
    CreateServices();
    Runner(options).Run(scene, scripts);
}
}

int RunHeadless(int argc, char** argv)
{
    // Whoever reads the first lines only still gets all files.
    std::signal(SIGPIPE, SIG_IGN);
    try
    {
        RunnerOptions options;
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
