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
}
}
