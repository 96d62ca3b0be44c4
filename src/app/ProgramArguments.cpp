#include "app/ProgramArguments.h"

#include <stdexcept>

namespace app
{
const char* const ProgramHelp =
    "usage: quib [OPTION...] [SCENE.qib]\n"
    "\n"
    "  --record FILE         write all input and its times to FILE, from which --replay repeats "
    "the session\n"
    "  --replay FILE         play a recording: start with the same scene and settings as it did\n"
    "  --quit-after-replay   end when it is over, and where it ended; else you go on with it "
    "yourself\n"
    "  --version             print the version\n"
    "  --help                print this\n";

namespace
{
[[noreturn]] void Refuse(const util::String& why)
{
    throw std::invalid_argument(why);
}

/// The file that follows an option.
void TakeFile(util::String& file, int argc, char** argv, int& i)
{
    const util::String option = argv[i];
    if (!file.empty())
        Refuse(option + " is given twice");
    if (i + 1 == argc || util::starts_with(argv[i + 1], "--") || !*argv[i + 1])
        Refuse(option + " needs a file");
    file = argv[++i];
    // A recording written over a scene would be the end of that.
    if (util::iends_with(file, ".qib"))
        Refuse(option + " needs a file, and \"" + file + "\" is a scene");
}
}

ProgramArguments ReadProgramArguments(int argc, char** argv)
{
    ProgramArguments arguments;
    for (int i = 0; i < argc; ++i)
    {
        const util::String word = argv[i];
        if (i > 0 && word == "--record")
            TakeFile(arguments.record, argc, argv, i);
        else if (i > 0 && word == "--replay")
            TakeFile(arguments.replay, argc, argv, i);
        else if (i > 0 && word == "--quit-after-replay")
            arguments.quitAfterReplay = true;
        else if (i > 0 && word == "--help")
            arguments.help = true;
        else
            arguments.others.push_back(argv[i]);
    }
    if (!arguments.record.empty() && !arguments.replay.empty())
        Refuse("--record and --replay exclude each other");
    if (arguments.quitAfterReplay && arguments.replay.empty())
        Refuse("--quit-after-replay needs --replay");
    return arguments;
}
}
