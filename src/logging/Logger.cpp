#include "logging/Logger.h"

#include "util/FileSystem.h"

#include <unistd.h>

#include <ctime>
#include <iostream>

void Log(logging::LogLevel level, const std::string& text)
{
    try
    {
        std::string prefixed = text;
        if (level == logging::LogWarning)
            prefixed = "-- Warning: " + text;
        else if (level == logging::LogError)
            prefixed = "!! ERROR: " + text;

        if (logging::Logger::Exists())
        {
            logging::Logger::GetInstancePtr()->Log(level, prefixed);
            return;
        }
        std::cout << prefixed << std::endl;
        const std::string dir =
            util::FileSystem::Exists() ? util::FileSystem::GetInstancePtr()->WorkDir() : "";
        std::ofstream(dir + "Unlogged.txt", std::ios::app) << prefixed << std::endl;
    }
    catch (...)
    {
        // The logging path never throws: there is nobody left to tell.
        std::fputs("ERROR - Failed to log text\n", stderr);
    }
}

namespace logging
{
namespace
{
void ReportFailedSink(const util::String& text)
{
    std::cerr << "ERROR - Failed to log text: " << text << std::endl;
}

util::String LocalTime(const char* format)
{
    const std::time_t now = std::time(nullptr);
    std::tm local;
    localtime_r(&now, &local);
    char text[128];
    const size_t n = std::strftime(text, sizeof(text), format, &local);
    return util::String(text, n);
}

// A sink that fails logs through CatchException, which comes back here: once is enough.
bool s_isReporting = false;
}

StreamLogger::StreamLogger(LogLevel mask, std::ostream* stream)
    : ILogger(mask)
    , m_stream(stream)
{
}

void StreamLogger::Log(const util::String& text)
{
    *m_stream << text << std::endl;
}

FileLogger::FileLogger(LogLevel mask, util::String path, bool append)
    : ILogger(mask)
{
    if (append && access(path.c_str(), F_OK) == 0)
    {
        m_file.open(path, std::ios::app);
        m_file << "\n\n";
    }
    else
        m_file.open(path);
    const char* line = "-----------------------------";
    m_file << line << "\n"
           << "  " << util::FileSystem::GetInstancePtr()->NameAndVersion() << "\n"
           << "  " << LocalTime("%B %d %Y, %X") << "\n"
           << line << std::endl;
}

void FileLogger::Log(const util::String& text)
{
    m_file << LocalTime("%H:%M:%S: ") << text << std::endl;
}

FunctionLogger::FunctionLogger(LogLevel mask, boost::function<void(const util::String&)> function)
    : ILogger(mask)
    , m_function(std::move(function))
{
}

void FunctionLogger::Log(const util::String& text)
{
    try
    {
        m_function(text);
    }
    catch (...)
    {
        if (!s_isReporting)
        {
            s_isReporting = true;
            CatchException(QUIB_LOCATION);
            s_isReporting = false;
        }
        ReportFailedSink(text);
    }
}

void Logger::AddLogger(util::SharedPtr<ILogger> logger)
{
    m_loggers.insert(logger);
}

void Logger::Log(LogLevel level, const util::String& text)
{
    // Deliberate: only warnings and errors are held back, all other levels repeat.
    const bool isSevere = level == LogWarning || level == LogError;
    if (isSevere && m_thisFrame.count(text))
        return;
    m_thisFrame.insert(text);
    if (isSevere && m_lastFrame.count(text))
        return;

    for (const util::SharedPtr<ILogger>& logger : m_loggers)
    {
        if (!(level & logger->GetLevel()))
            continue;
        try
        {
            logger->Log(text);
        }
        catch (...)
        {
            if (!s_isReporting)
            {
                s_isReporting = true;
                CatchException(QUIB_LOCATION);
                s_isReporting = false;
            }
            ReportFailedSink(text);
        }
    }
}

void Logger::Update()
{
    m_lastFrame = m_thisFrame;
    m_thisFrame.clear();
}

namespace
{
boost::function<void(const util::String&)>& ConsolePrinter()
{
    static auto* s_printer = new boost::function<void(const util::String&)>;
    return *s_printer;
}
}

void PrintConsole(const util::String& text)
{
    if (ConsolePrinter())
        ConsolePrinter()(text);
}

void SetConsolePrinter(boost::function<void(const util::String&)> printer)
{
    ConsolePrinter() = std::move(printer);
}
}
