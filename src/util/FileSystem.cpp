#include "util/FileSystem.h"

#include "logging/Log.h"
#include "os/Platform.h"

#include <boost/filesystem.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace fs = boost::filesystem;

namespace util
{
FILEWrapper::FILEWrapper(const String& path, const String& mode)
    : m_file(std::fopen(path.c_str(), mode.c_str()))
{
    if (!m_file)
        QUIB_THROW(FileReadException("Failed to open file \"" + path + "\""));
}

void FILEWrapper::Seek(int offset, int whence)
{
    if (std::fseek(m_file, offset, whence) != 0)
        QUIB_THROW(FileReadException("Failed to seek in FILE"));
}

void FILEWrapper::Read(void* data, unsigned long size)
{
    if (size && std::fread(data, size, 1, m_file) != 1)
        QUIB_THROW(FileReadException("Failed to read " + ToString(size) + " bytes"));
}

void FILEWrapper::Write(const void* data, unsigned long size)
{
    if (size && std::fwrite(data, size, 1, m_file) != 1)
        QUIB_THROW(FileReadException("Failed to write " + ToString(size) + " bytes"));
}

void FileSystem::CalcWorkDir(String argv0)
{
    m_workDir = os::CalcDataDir(argv0);
    std::replace(m_workDir.begin(), m_workDir.end(), '\\', '/');
    // Deliberate: two blanks. Flushed, as the process ends without flushing.
    std::cout << "workdir =  " << m_workDir << std::endl;
}

String FileSystem::NameAndVersion() const
{
    return "Quib beta 4.0";
}

bool FileSystem::FileExists(const String& path)
{
    return fs::exists(path);
}

bool FileSystem::IsFile(const String& path)
{
    boost::system::error_code error;
    return fs::is_regular_file(path, error);
}

void FileSystem::EraseFile(const String& path)
{
    fs::remove(path);
}

void FileSystem::EraseFileIfPossible(const String& path)
{
    boost::system::error_code error;
    fs::remove(path, error);
    if (error)
        Log(logging::LogWarning, "Failed to erase \"" + path + "\": " + error.message());
}

void FileSystem::RenameFile(const String& from, const String& to)
{
    try
    {
        if (fs::exists(to))
            QUIB_THROW(Exception("file exists"));
        fs::rename(from, to);
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogWarning,
            "Failed to rename \"" + from + "\" to \"" + to + "\": " + e.what());
    }
}

long FileSystem::GetFileSize(const String& path)
{
    FILEWrapper file(path, "rb");
    const bool isAtEnd = std::fseek(file.GetFile(), 0, SEEK_END) == 0;
    const long size = isAtEnd ? std::ftell(file.GetFile()) : -1;
    std::fclose(file.GetFile());
    if (size < 0)
        QUIB_THROW(FileReadException("Failed to seek in FILE"));
    return size;
}

String FileSystem::ReadWholeFile(const String& path)
{
    FILEWrapper file(path, "r");
    String text;
    char piece[1024];
    while (!std::feof(file.GetFile()) && !std::ferror(file.GetFile()))
        if (std::fgets(piece, sizeof(piece), file.GetFile()))
            text += piece;
    const bool failed = std::ferror(file.GetFile()) != 0;
    const long size = std::ftell(file.GetFile()); // -1 of a pipe
    std::fclose(file.GetFile());
    if (failed)
        QUIB_THROW(FileReadException("Failed to read file \"" + path + "\""));
    if (size > 0 && static_cast<size_t>(size) != text.size())
        Log(logging::LogWarning, "\"" + path +
                                     "\" holds NUL bytes: it is no text, and what stands "
                                     "behind them is left out");
    return text;
}

namespace
{
/// Where the path leads, so that a linked file stays a link. The end of the chain need not exist.
String FollowLinks(const String& path)
{
    fs::path target = path;
    boost::system::error_code error;
    // As many as the kernel follows.
    for (int i = 0; i < 40 && fs::is_symlink(fs::symlink_status(target, error)); ++i)
    {
        const fs::path next = fs::read_symlink(target, error);
        if (error)
            break;
        target = next.is_absolute() ? next : target.parent_path() / next;
    }
    return target.string();
}

/// Where the path's new text stands until it is whole.
String BesideOf(const String& target)
{
    return target + ".tmp";
}

/// For a device or a pipe, in which nobody writes beside. A pipe that nobody reads is a failure and not
/// an endless wait.
FILE* OpenForWriting(const String& path)
{
    const int file = ::open(path.c_str(), O_WRONLY | O_TRUNC | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return nullptr;
    ::fcntl(file, F_SETFL, 0); // from here on a slow reader is waited for
    return ::fdopen(file, "wb");
}
}

void FileSystem::EraseLeftover(const String& path)
{
    EraseFileIfPossible(BesideOf(FollowLinks(path)));
}

ReplacingFile::ReplacingFile(const String& path)
    : m_path(path)
{
    struct stat old;
    const bool exists = ::stat(path.c_str(), &old) == 0;
    if (exists && (!S_ISREG(old.st_mode) || starts_with(path, "/dev/")))
    {
        m_file = OpenForWriting(path);
        if (!m_file)
            Fail();
        return;
    }
    // A rename would not ask.
    if (exists && ::euidaccess(path.c_str(), W_OK) != 0)
        Fail();
    m_target = FollowLinks(path);
    m_beside = BesideOf(m_target);
    m_file = std::fopen(m_beside.c_str(), "wb");
    if (!m_file)
        Fail();
    if (exists && ::fchmod(::fileno(m_file), old.st_mode & 07777) != 0)
    {
        Close();
        ::unlink(m_beside.c_str());
        Fail();
    }
}

ReplacingFile::~ReplacingFile()
{
    if (!m_file)
        return;
    Close();
    if (!m_beside.empty())
        ::unlink(m_beside.c_str());
}

bool ReplacingFile::Close()
{
    const bool isClosed = std::fclose(m_file) == 0;
    m_file = nullptr;
    return isClosed;
}

void ReplacingFile::Commit()
{
    bool good = !std::ferror(m_file) && std::fflush(m_file) == 0;
    // The rename must not reach the disk before the text does.
    if (!m_beside.empty())
        good = good && ::fsync(::fileno(m_file)) == 0;
    good = Close() && good;
    if (!m_beside.empty())
    {
        good = good && std::rename(m_beside.c_str(), m_target.c_str()) == 0;
        if (!good)
            ::unlink(m_beside.c_str());
    }
    if (!good)
        Fail();
}

void ReplacingFile::Fail() const
{
    QUIB_THROW(Exception("Failed to write file \"" + m_path + "\""));
}

void FileSystem::WriteFile(const String& path, const String& text)
{
    ReplacingFile file(path);
    std::fwrite(text.data(), 1, text.size(), file.GetFile());
    file.Commit();
}

namespace
{
bool LessIgnoringCase(const String& a, const String& b)
{
    const String la = ToLower(a), lb = ToLower(b);
    return la != lb ? la < lb : a < b;
}

/// An entry that can't be looked at, such as a link to itself, is none.
bool IsDirectory(const fs::directory_entry& e)
{
    boost::system::error_code error;
    return fs::is_directory(e.path(), error);
}

template<typename Filter>
std::vector<String> NamesInDir(const String& dir, Filter filter)
{
    std::vector<String> names;
    const fs::path path(dir.empty() ? "." : dir);
    if (!fs::is_directory(path))
        return names;
    for (fs::directory_iterator it(path), end; it != end; ++it)
        if (filter(*it))
            names.push_back(it->path().filename().string());
    std::sort(names.begin(), names.end(), LessIgnoringCase);
    return names;
}
}

std::vector<String> FileSystem::DirsInDir(const String& dir)
{
    return NamesInDir(dir, IsDirectory);
}

std::vector<String> FileSystem::FilesInDir(const String& dir, const String& pattern)
{
    return NamesInDir(dir,
                      [&](const fs::directory_entry& e)
                      {
                          return !IsDirectory(e) &&
                                 (pattern == "*" ||
                                  WildcardMatcher(e.path().filename().string(), pattern));
                      });
}

bool WildcardMatcher(const String& text, const String& pattern)
{
    // Greedy with one step back: after a star, the shortest match that lets the rest fit.
    size_t t = 0, p = 0, star = String::npos, mark = 0;
    while (t < text.size())
    {
        if (p < pattern.size() && pattern[p] == '*')
        {
            star = p++;
            mark = t;
        }
        else if (p < pattern.size() && pattern[p] == text[t])
        {
            ++p;
            ++t;
        }
        else if (star != String::npos)
        {
            p = star + 1;
            t = ++mark;
        }
        else
            return false;
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}
}
