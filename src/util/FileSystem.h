// Where things are, and the file operations. The first service to exist.
#pragma once

#include "util/Singleton.h"
#include "util/String.h"

#include <cstdio>
#include <vector>

namespace util
{
// A checked wrapper over a C file. Deliberate: the destructor does not close it, the owner calls
// fclose on GetFile().
class FILEWrapper
{
public:
    /// @throws FileReadException  when it can't be opened
    FILEWrapper(const String& path, const String& mode);

    /// @throws FileReadException
    void Seek(int offset, int whence);
    /// Exactly size bytes. @throws FileReadException
    void Read(void* data, unsigned long size);
    /// Exactly size bytes. @throws FileReadException
    void Write(const void* data, unsigned long size);

    FILE* GetFile() const { return m_file; }

private:
    FILE* m_file;
};

// A file that is written beside the one whose place it takes at the end, so that this one is whole at
// any moment: a killed process leaves it as it was, and its own beginnings in path + ".tmp". What is no
// regular file, such as a pipe or anything below /dev, is written in place.
class ReplacingFile
{
public:
    /// Keeps the access rights of a file that is there, and the link of one that is linked.
    /// @throws Exception  when it can't be written, or the one there is write-protected
    explicit ReplacingFile(const String& path);
    /// Without Commit the old file stays, and the new one goes.
    ~ReplacingFile();
    ReplacingFile(const ReplacingFile&) = delete;
    ReplacingFile& operator=(const ReplacingFile&) = delete;

    FILE* GetFile() const { return m_file; }
    /// Puts it in its place. To be called once.
    /// @throws Exception  when this, or any writing before, has failed
    void Commit();

private:
    bool Close();
    [[noreturn]] void Fail() const;

    String m_path;
    String m_target; // at the end of links
    String m_beside; // "" when it is written in place
    FILE* m_file = nullptr;
};

class FileSystem : public Pointee, public Singleton<FileSystem>
{
public:
    /// Fixes the work directory: all other paths are relative to it, with forward slashes. Prints it
    /// on standard output.
    void CalcWorkDir(String argv0);
    /// Sets it without a word. For the headless runner and tests; must end in "/" or be "".
    void SetWorkDir(const String& dir) { m_workDir = dir; }

    String NameAndVersion() const;

    // All end in a slash, or are "".
    String WorkDir() const { return m_workDir; }
    String ConfigDir() const { return m_workDir; }
    String DataDir() const { return m_workDir + "data/"; }
    String FontsDir() const { return DataDir() + "fonts/"; }
    String LanguageDir() const { return DataDir() + "language/"; }
    String ShaderDir() const { return DataDir() + "shaders/"; }
    String TextureDir() const { return DataDir() + "textures/"; }
    String CursorDir() const { return TextureDir() + "cursors/"; }
    String SceneDir() const { return m_workDir + "scenes/"; }
    String QuibletDir() const { return SceneDir() + "quiblets/"; }

    /// @throws boost::filesystem::filesystem_error  when nobody can tell: a folder on the way that may
    ///                                              not be searched, a link to itself
    bool FileExists(const String& path);
    /// Whether it leads to a file, and not to a folder, a pipe or a device. Throws nothing.
    bool IsFile(const String& path);
    /// A file that is not there is no failure.
    /// @throws boost::filesystem::filesystem_error  when it is there and stays
    void EraseFile(const String& path);
    /// A failure is logged and goes no further.
    void EraseFileIfPossible(const String& path);
    /// What a save that was killed half way has left beside the path.
    void EraseLeftover(const String& path);
    /// Refuses when the target exists. A failure is logged and goes no further.
    void RenameFile(const String& from, const String& to);
    /// Bytes. @throws FileReadException
    long GetFileSize(const String& path);
    /// Text only: a piece of up to 1024 bytes ends at a NUL byte, of which a warning tells.
    /// @throws FileReadException
    String ReadWholeFile(const String& path);
    /// Writes beside the target and renames over it, so that the target is whole at any moment.
    /// @throws Exception
    void WriteFile(const String& path, const String& text);
    /// The names of the subdirectories, sorted ignoring case; empty when dir does not exist.
    std::vector<String> DirsInDir(const String& dir);
    /// The names of the files that match the pattern, sorted ignoring case. "*" in the pattern stands
    /// for any run of characters, everything else for itself.
    std::vector<String> FilesInDir(const String& dir, const String& pattern);

private:
    String m_workDir;
};

/// "*" matches any run of characters; everything else is literal and case-sensitive.
bool WildcardMatcher(const String& text, const String& pattern);
}
