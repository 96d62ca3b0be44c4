#include "app/ProgramArguments.h"

#include "app/PictureTaker.h"

#include <locale>
#include <sstream>
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
    "  --screenshot FILE     run the scene without you, write a picture of it to FILE, a PNG, and "
    "end; "
    "nothing\n"
    "                        else is saved\n"
    "  --after SECONDS       of running before the picture; 1 when it is not given\n"
    "  --version             print the version\n"
    "  --help                print this\n";

namespace
{
[[noreturn]] void Refuse(const util::String& why)
{
    throw std::invalid_argument(why);
}

struct Word
{
    util::String text;
    char* argument; // that it is, or is a part of
};

/// One a word, but for "--option=value", which is two.
std::vector<Word> SplitArguments(int argc, char** argv)
{
    std::vector<Word> words;
    for (int i = 0; i < argc; ++i)
    {
        const util::String text = argv[i];
        const size_t equals = text.find('=');
        const util::String option = text.substr(0, equals);
        const bool isSplit = i > 0 && equals != util::String::npos &&
                             (option == "--record" || option == "--replay" ||
                              option == "--screenshot" || option == "--after");
        words.push_back({isSplit ? option : text, argv[i]});
        if (isSplit)
            words.push_back({text.substr(equals + 1), argv[i]});
    }
    return words;
}

/// The file that follows an option.
void TakeFile(util::String& file, const std::vector<Word>& words, size_t& i)
{
    const util::String option = words[i].text;
    if (!file.empty())
        Refuse(option + " is given twice");
    if (i + 1 == words.size() || util::starts_with(words[i + 1].text, "--") ||
        words[i + 1].text.empty())
        Refuse(option + " needs a file");
    file = words[++i].text;
    // A recording written over a scene would be the end of that.
    if (util::iends_with(file, ".qib"))
        Refuse(option + " needs a file, and \"" + file + "\" is a scene");
}

double TakeSeconds(const std::vector<Word>& words, size_t& i)
{
    const util::String option = words[i].text;
    const util::String text = i + 1 < words.size() ? words[++i].text : "";
    // As a script reads a number: with a point, whatever the language.
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    double seconds = -1;
    if (!(stream >> seconds) || !stream.eof() || !(seconds >= 0) ||
        !(seconds <= PictureTaker::MaxSeconds))
        Refuse(option + " needs a number of seconds from 0 to " +
               util::ToString(static_cast<int>(PictureTaker::MaxSeconds)));
    return seconds;
}
}

ProgramArguments ReadProgramArguments(int argc, char** argv)
{
    ProgramArguments arguments;
    bool isAfterGiven = false;
    const std::vector<Word> words = SplitArguments(argc, argv);
    for (size_t i = 0; i < words.size(); ++i)
    {
        const util::String word = words[i].text;
        if (i > 0 && word == "--record")
            TakeFile(arguments.record, words, i);
        else if (i > 0 && word == "--replay")
            TakeFile(arguments.replay, words, i);
        else if (i > 0 && word == "--quit-after-replay")
            arguments.quitAfterReplay = true;
        else if (i > 0 && word == "--screenshot")
            TakeFile(arguments.screenshot, words, i);
        else if (i > 0 && word == "--after")
        {
            if (isAfterGiven)
                Refuse("--after is given twice");
            arguments.after = TakeSeconds(words, i);
            isAfterGiven = true;
        }
        else if (i > 0 && word == "--help")
            arguments.help = true;
        else
            arguments.others.push_back(words[i].argument);
    }
    if (!arguments.record.empty() && !arguments.replay.empty())
        Refuse("--record and --replay exclude each other");
    if (arguments.quitAfterReplay && arguments.replay.empty())
        Refuse("--quit-after-replay needs --replay");
    if (isAfterGiven && arguments.screenshot.empty())
        Refuse("--after needs --screenshot");
    if (!arguments.screenshot.empty() && !(arguments.record + arguments.replay).empty())
        Refuse("--screenshot excludes --record and --replay");
    return arguments;
}
}
