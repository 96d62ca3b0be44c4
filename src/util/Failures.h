// How the system reports and survives failures: the exception family, the two assertions, and the
// macro forms by which every throw, and every passage of an exception through a stage, leaves a line
// in the log.
#pragma once

#include <stdexcept>
#include <string>

/// A general failure.
class Exception : public std::runtime_error
{
public:
    explicit Exception(const std::string& message)
        : std::runtime_error(message)
    {
    }
};

/// A programming error, such as a failed code assertion.
class BadCoderException : public Exception
{
public:
    using Exception::Exception;
};

/// Bad input: failed data assertions, bad key names, bad polygons, unusable files.
class BadDataException : public Exception
{
public:
    using Exception::Exception;
};

/// A file that cannot be read or is malformed.
class FileReadException : public BadDataException
{
public:
    using BadDataException::BadDataException;
};

/// A failure that the program cannot go on from.
class FatalException : public Exception
{
public:
    using Exception::Exception;
};

/// Logs the failed condition and, for an assertion, throws BadCoderException (code) or
/// BadDataException (data). A mere check logs and returns.
void AssertionFailed(const char* condition, bool isAssertion, bool isCode, const char* function,
                     const char* file, long line);

/// What a handler that stops an exception calls first, with its own location.
void CatchException(const std::string& location);
void CatchException(std::exception& e, const std::string& location);
void CatchException(Exception& e, const std::string& location);

namespace util
{
/// What goes no further than its place: "Error: " and the text, or "Fail" for null, and the location.
void LogContained(const char* what, const char* location);

namespace internal
{
/// The text "<file>:<line>: <function>", made once per place and kept for good.
const char* MakeLocationText(const char* file, int line, const char* function);

void LogThrown(const char* what, const std::string& location);
void LogPassedOn(const char* location);

/// Logs an exception on its way out: throw ExceptionDescriber(location) % E(message).
class ExceptionDescriber
{
public:
    explicit ExceptionDescriber(std::string location)
        : m_location(std::move(location))
    {
    }

    template<typename E>
    E operator%(const E& e) const
    {
        LogThrown(e.what(), m_location);
        return e;
    }

private:
    std::string m_location;
};
}
}

/// The location of this line as a const char* that lives for good.
#define QUIB_LOCATION                                                                              \
    (                                                                                              \
        [](const char* function) -> const char*                                                    \
        {                                                                                          \
            static const char* const text =                                                        \
                ::util::internal::MakeLocationText(__FILE__, __LINE__, function);                  \
            return text;                                                                           \
        }(__PRETTY_FUNCTION__))

/// The only form in which Quib throws: QUIB_THROW(BadDataException("...")).
#define QUIB_THROW(exception)                                                                      \
    throw ::util::internal::ExceptionDescriber(QUIB_LOCATION) % (exception)

/// Runs a statement; an exception that leaves it is logged with this place and goes on.
#define QUIB_PASS_ON(...)                                                                          \
    do                                                                                             \
    {                                                                                              \
        try                                                                                        \
        {                                                                                          \
            __VA_ARGS__;                                                                           \
        }                                                                                          \
        catch (...)                                                                                \
        {                                                                                          \
            ::util::internal::LogPassedOn(QUIB_LOCATION);                                          \
            throw;                                                                                 \
        }                                                                                          \
    } while (false)

/// For conditions that only a programming error can break. Stays in every build.
#define CODE_ASSERT(condition)                                                                     \
    do                                                                                             \
    {                                                                                              \
        if (__builtin_expect(!(condition), 0))                                                     \
            ::AssertionFailed(#condition, true, true, __PRETTY_FUNCTION__, __FILE__, __LINE__);    \
    } while (false)

/// For conditions that bad data can break. Stays in every build.
#define DATA_ASSERT(condition)                                                                     \
    do                                                                                             \
    {                                                                                              \
        if (__builtin_expect(!(condition), 0))                                                     \
            ::AssertionFailed(#condition, true, false, __PRETTY_FUNCTION__, __FILE__, __LINE__);   \
    } while (false)
