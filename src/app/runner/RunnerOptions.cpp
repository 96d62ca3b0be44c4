#include "app/runner/RunnerOptions.h"

#include "app/runner/RunFailure.h"
#include "math/Scalar.h"
#include "util/FileSystem.h"

#include <boost/program_options.hpp>

#include <iostream>

namespace po = boost::program_options;

namespace app
{
namespace
{
const char* const Usage = "Usage: quib-run [options] [SCENE.qib]\n"
                          "Runs a Quib scene without a window. The scene is loaded first, then -e "
                          "and -f run in the order\n"
                          "given, then the steps are made, then files are written.\n\n";

const char* const UsageEnd =
    "\nNumbers are written with 9 significant digits. An entity or geometry to which the scene "
    "file\n"
    "gave no id shows that of this run. Every file is written beside the old one and takes its "
    "place at\n"
    "the end: a run that is killed leaves the old one whole, and what there was of the new one in "
    "FILE.tmp.\n"
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

/// Of a file or a directory; "" when the option is not there.
std::string GetName(const po::variables_map& values, const char* option)
{
    if (!values.count(option))
        return "";
    const std::string& name = values[option].as<std::string>();
    if (name.empty())
        BadUsage(std::string("--") + option + " needs a name");
    return name;
}
}

bool ReadCommandLine(int argc, char** argv, RunnerOptions& options)
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

    for (const ScriptSource& script : options.scripts)
        if (script.isFile && script.text.empty())
            BadUsage("--file needs a name");
    if (values.count("scene"))
    {
        const auto& scenes = values["scene"].as<std::vector<std::string>>();
        if (scenes.size() > 1)
            BadUsage("more than one scene: " + scenes[0] + ", " + scenes[1]);
        options.scene = scenes[0];
        if (!util::iends_with(options.scene, ".qib"))
            BadUsage("not a scene file (.qib): " + options.scene);
    }
    options.workDir = GetName(values, "workdir");
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
    options.save = GetName(values, "save");
    options.saveConfig = GetName(values, "save-config");
    options.csv = GetName(values, "csv");
    options.contactsCsv = GetName(values, "contacts-csv");
    options.waterCsv = GetName(values, "water-csv");
    options.times = GetName(values, "times");
    options.stats = values.count("stats");
    options.isQuiet = values.count("quiet");
    return true;
}
}
