// The central logger: fans each message out to several sinks by bit masks and keeps repeated warnings
// out.
#pragma once

#include "logging/Log.h"
#include "util/Singleton.h"
#include "util/String.h"

#include <boost/function.hpp>

#include <fstream>
#include <iosfwd>
#include <set>

namespace logging
{
class ILogger : public util::Pointee
{
public:
    explicit ILogger(LogLevel mask)
        : m_level(mask)
    {
    }

    virtual void Log(const util::String& text) = 0;
    LogLevel GetLevel() const { return m_level; }

private:
    LogLevel m_level;
};

class StreamLogger : public ILogger
{
public:
    StreamLogger(LogLevel mask, std::ostream* stream);
    void Log(const util::String& text) override;

private:
    std::ostream* m_stream;
};

// A file with a header for each run and the local time before each line.
class FileLogger : public ILogger
{
public:
    /// A file that can't be opened fails silently.
    FileLogger(LogLevel mask, util::String path, bool append);
    void Log(const util::String& text) override;

private:
    std::ofstream m_file;
};

class FunctionLogger : public ILogger
{
public:
    FunctionLogger(LogLevel mask, boost::function<void(const util::String&)> function);
    void Log(const util::String& text) override;

private:
    boost::function<void(const util::String&)> m_function;
};

class Logger : public util::Pointee, public util::Singleton<Logger>
{
public:
    void AddLogger(util::SharedPtr<ILogger> logger);
    /// A severe text, of level 1 or 6, that came before in this frame or in the last one is left out.
    void Log(LogLevel level, const util::String& text);
    /// Once a frame.
    void Update();

private:
    std::set<util::SharedPtr<ILogger>> m_loggers;
    std::set<util::String> m_lastFrame;
    std::set<util::String> m_thisFrame;
};

/// Prints on the console through the function that the GUI has set; does nothing before that.
void PrintConsole(const util::String& text);
void SetConsolePrinter(boost::function<void(const util::String&)> printer);
}
