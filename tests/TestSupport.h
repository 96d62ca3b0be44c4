// What the tests of several folders need: a look at the log, and a folder of their own.
#pragma once

#include "logging/Logger.h"

#include <boost/filesystem.hpp>

#include <stdlib.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace test
{
// Everything that is logged during its life and passes the mask, without line ends. Starts with the
// logger's memory of earlier warnings emptied.
class LogCapture
{
public:
    explicit LogCapture(int mask = 31)
        : m_previous(Current(mask))
        , m_mask(mask)
    {
        Current(mask) = this;
        logging::Logger::GetInstancePtr()->Update();
        logging::Logger::GetInstancePtr()->Update();
    }
    ~LogCapture() { Current(m_mask) = m_previous; }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    const std::vector<std::string>& Lines() const { return m_lines; }
    /// How many lines hold the text.
    size_t Count(const std::string& part) const
    {
        size_t n = 0;
        for (const std::string& line : m_lines)
            n += line.find(part) != std::string::npos;
        return n;
    }
    bool Has(const std::string& part) const { return Count(part) != 0; }
    /// All lines, for messages of failed expectations.
    std::string Text() const
    {
        std::string text;
        for (const std::string& line : m_lines)
            text += line + "\n";
        return text;
    }
    void Clear() { m_lines.clear(); }

private:
    // A sink cannot leave the logger again: one for each mask, which hands on to who captures now.
    static LogCapture*& Current(int mask)
    {
        static auto* s_current = new std::map<int, LogCapture*>;
        const bool isNew = s_current->count(mask) == 0;
        LogCapture*& current = (*s_current)[mask];
        if (isNew)
        {
            LogCapture** slot = &current;
            auto note = [slot](const util::String& text)
            {
                if (*slot)
                    (*slot)->m_lines.push_back(text);
            };
            logging::Logger::GetInstancePtr()->AddLogger(
                QUIB_NEW logging::FunctionLogger(static_cast<logging::LogLevel>(mask), note));
        }
        return current;
    }

    LogCapture* m_previous;
    int m_mask;
    std::vector<std::string> m_lines;
};

// A fresh folder that goes with everything in it.
class TempDir
{
public:
    TempDir()
    {
        char name[] = "/tmp/quib-test-XXXXXX";
        m_path = std::string(mkdtemp(name)) + "/";
    }
    ~TempDir()
    {
        boost::system::error_code ignored;
        boost::filesystem::remove_all(m_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    /// Ends in a slash.
    const std::string& Path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + name; }

private:
    std::string m_path;
};

/// The bytes of a file; "" when it can't be read.
inline std::string Slurp(const std::string& path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

inline void Spit(const std::string& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}

// The current directory, and back.
class InDirectory
{
public:
    explicit InDirectory(const std::string& dir)
        : m_before(boost::filesystem::current_path())
    {
        boost::filesystem::current_path(dir);
    }
    ~InDirectory() { boost::filesystem::current_path(m_before); }
    InDirectory(const InDirectory&) = delete;
    InDirectory& operator=(const InDirectory&) = delete;

private:
    boost::filesystem::path m_before;
};
}
