// A file of rows that is written while the run goes on, and takes its place when that is over.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace util
{
class ReplacingFile;
}

namespace app
{
class RunnerTable
{
public:
    /// @param path    "" makes one that nobody wants
    /// @param header  the first line; "" for none
    /// @throws RunFailure
    RunnerTable(const std::string& path, const char* header);
    /// Without Close the file that was there before stays.
    ~RunnerTable();

    bool IsWanted() const { return m_file != nullptr; }
    FILE* GetFile() const;

    /// @throws Exception  when it could not be written; a full disk shows here at the latest
    void Close();
    const std::string& GetPath() const { return m_path; }

private:
    std::string m_path;
    std::unique_ptr<util::ReplacingFile> m_file;
};
}
