// What ends a run of quib-run early.
#pragma once

#include <stdexcept>
#include <string>

namespace app
{
enum ExitCode
{
    Success = 0,
    FileFailure = 1,
    BadCommandLine = 2
};

// Something the user has to put right; the text says what.
class RunFailure : public std::runtime_error
{
public:
    RunFailure(ExitCode code, const std::string& text)
        : std::runtime_error(text)
        , m_code(code)
    {
    }
    ExitCode GetCode() const { return m_code; }

private:
    ExitCode m_code;
};
}
