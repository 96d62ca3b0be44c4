// What the command line of quib asks for.
#pragma once

#include "util/String.h"

#include <vector>

namespace app
{
struct ProgramArguments
{
    util::String record; // the file to write a recording to; "" for none
    util::String replay; // the recording to play; "" for none
    bool quitAfterReplay = false;
    util::String screenshot; // the picture to take; "" for none
    double after = 1;        // seconds until it is taken
    bool help = false;
    std::vector<char*> others; // the program's name and all that is no option, in order
};

/// An option's value is the next word, or follows "=". What is no option is passed on as it is.
/// @throws std::invalid_argument  for an option without its file, or given twice, and for options that
///                                exclude each other
ProgramArguments ReadProgramArguments(int argc, char** argv);

/// The text of --help.
extern const char* const ProgramHelp;
}
