// What a scene file says about itself. The script object "FileInfo".
#pragma once

#include "script/Attributes.h"
#include "script/Reflected.h"
#include "util/Singleton.h"

namespace app
{
class FileInfo : public script::Reflected, public util::Singleton<FileInfo>
{
public:
    static constexpr int LATEST_VERSION = 2;

    FileInfo();

    util::String GetTitle() const { return m_title; }
    util::String GetAuthor() const { return m_author; }
    util::String GetDescription() const { return m_description; }
    /// Of the file being read or written. Before version 2 colours had no alpha.
    int GetVersion() const { return m_version; }
    void SetVersion(int version) { m_version = version; }
    void SetTitle(const util::String& title);
    void SetAuthor(const util::String& author);
    void SetDescription(const util::String& description);
    void ClearTexts();

    struct Texts
    {
        util::String title, author, description;
    };
    Texts GetTexts() const { return {m_title, m_author, m_description}; }
    void SetTexts(const Texts& texts);

    /// The name of the current scene's file, as it was given.
    const util::String& GetFileName() const { return m_fileName; }
    void SetFileName(const util::String& name) { m_fileName = name; }

private:
    void OnVersionChange();

    script::AttribWrapper<util::String> m_title;
    script::AttribWrapper<util::String> m_author;
    script::AttribWrapper<util::String> m_description;
    script::AttribWrapper<int> m_version;
    util::String m_fileName;
};

// While this lives: what is pasted or imported tells who made it. It does not rename the scene that it comes
// into.
class FileTextsKept
{
public:
    FileTextsKept()
        : m_texts(FileInfo::GetInstancePtr()->GetTexts())
    {
    }
    ~FileTextsKept() { FileInfo::GetInstancePtr()->SetTexts(m_texts); }
    FileTextsKept(const FileTextsKept&) = delete;
    FileTextsKept& operator=(const FileTextsKept&) = delete;

private:
    FileInfo::Texts m_texts;
};
}
