// The one function that all the program logs through. This header knows nothing of the sinks, so
// that everything may include it.
#pragma once

#include <string>

namespace logging
{
/// Bits of a mask: a message has a level, a sink has a mask.
enum LogLevel
{
    LogWarning = 1,
    LogCodeCheck = 2,
    LogDataCheck = 4,
    LogError = 6, // deliberate: both check bits
    LogInfo = 8,
    LogVerbose = 16
};
}

/// Hands the text to all sinks whose mask fits. Level 1 gets the prefix "-- Warning: ", level 6
/// "!! ERROR: ". Never throws and never creates a service: without a logger the text goes to
/// standard output and "Unlogged.txt".
void Log(logging::LogLevel level, const std::string& text);

/// The same with a level written as a number, as the log levels are bits.
inline void Log(int level, const std::string& text)
{
    Log(static_cast<logging::LogLevel>(level), text);
}
