#include "util/SharedPtr.h"

namespace util
{
namespace internal
{
void ThrowNullDereference(const char* handleKind, const char* location)
{
    throw ExceptionDescriber(location) %
        std::runtime_error(std::string("Tried to dereference a NULL ") + handleKind);
}

void LogContained(const char* what, const char* location)
{
    if (what)
        Log(logging::LogInfo, std::string("Error: ") + what + "\n" + location + "\n");
    else
        Log(logging::LogInfo, std::string("Fail\n") + location + "\n");
}
}
}
