// Deleting an object cannot fail its caller.
#pragma once

#include "logging/Log.h"
#include "util/Failures.h"

#include <exception>
#include <string>
#include <typeinfo>

namespace util
{
/// Deletes p if it is not null. An exception from the destructor is logged and goes no further.
template<typename T>
void SafeDelete(const T* p)
{
    if (!p)
        return;
    const char* typeName = typeid(*p).name();
    try
    {
        delete p;
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogWarning,
            std::string("Exception caught when deleting a ") + typeName + ": " + e.what());
    }
    catch (...)
    {
        CatchException(QUIB_LOCATION);
        Log(logging::LogWarning,
            std::string("Unknown exception caught when deleting a ") + typeName);
    }
}
}
