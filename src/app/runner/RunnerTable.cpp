#include "app/runner/RunnerTable.h"

#include "app/runner/RunFailure.h"
#include "util/FileSystem.h"

namespace app
{
RunnerTable::RunnerTable(const std::string& path, const char* header)
    : m_path(path)
{
    if (path.empty())
        return;
    try
    {
        m_file = std::make_unique<util::ReplacingFile>(path);
    }
    catch (Exception&)
    {
        throw RunFailure(FileFailure, "can't write " + path);
    }
    if (*header)
        std::fprintf(GetFile(), "%s\n", header);
}

RunnerTable::~RunnerTable() = default;

FILE* RunnerTable::GetFile() const
{
    return m_file->GetFile();
}

void RunnerTable::Close()
{
    if (m_file)
        m_file->Commit();
    m_file.reset();
}
}
