#include "app/FileInfo.h"

#include "util/Callback.h"

namespace app
{
FileInfo::FileInfo()
    : Reflected("FileInfo")
    , m_title(this, "title", "")
    , m_author(this, "author", "")
    , m_description(this, "description", "")
    , m_version(this, "version", 0)
{
    m_version->AddChangeCallback(util::MakeCallback(&FileInfo::OnVersionChange, this));
}

void FileInfo::SetTitle(const util::String& title)
{
    m_title = title;
}

void FileInfo::SetAuthor(const util::String& author)
{
    m_author = author;
}

void FileInfo::SetDescription(const util::String& description)
{
    m_description = description;
}

void FileInfo::ClearTexts()
{
    SetTexts(Texts());
}

void FileInfo::SetTexts(const Texts& texts)
{
    m_title = texts.title;
    m_author = texts.author;
    m_description = texts.description;
}

void FileInfo::OnVersionChange()
{
    if (GetVersion() > LATEST_VERSION)
        Log(logging::LogError, "Loading scene from a newer version of Quib. Some things may be "
                               "missing; please get the "
                               "latest version from the download page.");
}
}
