#include "util/Failures.h"

#include "logging/Log.h"

#include <boost/format.hpp>

#include <cstring>

namespace util
{
namespace internal
{
const char* MakeLocationText(const char* file, int line, const char* function)
{
    // Never freed: allocation contexts point at it for as long as any object lives. Plain characters,
    // so that the place's own pointer leads to all of it and no leak is reported.
    const std::string text = std::string(file) + ":" + std::to_string(line) + ": " + function;
    char* kept = new char[text.size() + 1];
    std::memcpy(kept, text.c_str(), text.size() + 1);
    return kept;
}

void LogThrown(const char* what, const std::string& location)
{
    Log(logging::LogInfo, "Exception thrown: " + std::string(what) + " from " + location);
}

void LogPassedOn(const char* location)
{
    Log(logging::LogInfo, "Exception passed on at " + std::string(location));
}
}

void LogContained(const char* what, const char* location)
{
    if (what)
        Log(logging::LogInfo, std::string("Error: ") + what + "\n" + location + "\n");
    else
        Log(logging::LogInfo, std::string("Fail\n") + location + "\n");
}
}

void AssertionFailed(const char* condition, bool isAssertion, bool isCode, const char* function,
                     const char* file, long line)
{
    // Deliberate: "inf".
    const std::string message =
        (boost::format("%s %s failed: \"%s\" in function %s inf %s:%i") %
         (isCode ? "Code" : "Data") % (isAssertion ? "assertion" : "check") % condition % function %
         file % line)
            .str();

    if (!isAssertion)
    {
        Log(isCode ? logging::LogCodeCheck : logging::LogDataCheck, message);
        return;
    }
    Log(logging::LogInfo, message);
    if (isCode)
        QUIB_THROW(BadCoderException(message));
    QUIB_THROW(BadDataException(message));
}

void CatchException(const std::string& location)
{
    Log(logging::LogInfo, "Caught an unknown exception: " + location);
}

void CatchException(std::exception& e, const std::string& location)
{
    Log(logging::LogInfo, std::string("Caught exception: ") + e.what() + ", " + location);
}

void CatchException(Exception& e, const std::string& location)
{
    Log(logging::LogInfo, std::string("Caught Exception: ") + e.what() + ", " + location);
}
