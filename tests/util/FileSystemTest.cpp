#include "util/FileSystem.h"

#include "TestSupport.h"
#include "WhatOf.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

using test::WhatOf;
using util::FileSystem;
using util::FILEWrapper;
using util::String;
using util::WildcardMatcher;
using Names = std::vector<String>;
namespace fs = boost::filesystem;

namespace
{
FileSystem& Files()
{
    return *FileSystem::GetInstancePtr();
}

std::string WriteError(const std::string& path, const std::string& text)
{
    return WhatOf<Exception>([&] { Files().WriteFile(path, text); });
}

// Files can't grow past the limit: what a full disk does to a writer.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
        : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before;
    void (*m_handler)(int);
};

// The rights of an ordinary user, for a test that may run as root.
class AsNobody
{
public:
    AsNobody()
    {
        if (geteuid() == 0)
            m_isRoot = seteuid(65534) == 0;
    }
    ~AsNobody()
    {
        if (m_isRoot && seteuid(0) != 0)
            std::abort();
    }

private:
    bool m_isRoot = false;
};
}

TEST(FileSystem, KnowsItsName)
{
    EXPECT_EQ("Quib beta 4.0", Files().NameAndVersion());
}

TEST(FileSystem, HasAllFoldersInTheWorkDirectory)
{
    Files().SetWorkDir("w/");
    EXPECT_EQ("w/", Files().WorkDir());
    EXPECT_EQ("w/", Files().ConfigDir());
    EXPECT_EQ("w/data/", Files().DataDir());
    EXPECT_EQ("w/data/fonts/", Files().FontsDir());
    EXPECT_EQ("w/data/language/", Files().LanguageDir());
    EXPECT_EQ("w/data/shaders/", Files().ShaderDir());
    EXPECT_EQ("w/data/textures/", Files().TextureDir());
    EXPECT_EQ("w/data/textures/cursors/", Files().CursorDir());
    EXPECT_EQ("w/scenes/", Files().SceneDir());
    EXPECT_EQ("w/scenes/quiblets/", Files().QuibletDir());
    Files().SetWorkDir("");
    EXPECT_EQ("data/", Files().DataDir());
}

TEST(FileSystem, PrintsTheWorkDirectoryWithTwoBlanks)
{
    test::TempDir dir;
    fs::create_directory(dir / "data");
    test::InDirectory in(dir.Path());
    Files().SetWorkDir("elsewhere/");
    testing::internal::CaptureStdout();
    Files().CalcWorkDir("quib");
    // Deliberate: two blanks, and here nothing after them.
    EXPECT_EQ("workdir =  \n", testing::internal::GetCapturedStdout());
    EXPECT_EQ("", Files().WorkDir()) << "the second one overwrites the first";
}

TEST(FileSystem, ReadsAFileWithoutALineEndAtItsEnd)
{
    test::TempDir dir;
    test::Spit(dir / "a", "one\ntwo");
    EXPECT_EQ("one\ntwo", Files().ReadWholeFile(dir / "a"));
    test::Spit(dir / "a", "one\r\ntwo\n\n");
    EXPECT_EQ("one\r\ntwo\n\n", Files().ReadWholeFile(dir / "a"));
}

TEST(FileSystem, ReadsAnEmptyFileAsNothing)
{
    test::TempDir dir;
    test::Spit(dir / "a", "");
    EXPECT_EQ("", Files().ReadWholeFile(dir / "a"));
}

TEST(FileSystem, ReadsLinesOfAnyLength)
{
    test::TempDir dir;
    for (size_t n : {1022, 1023, 1024, 1025, 2046, 2047, 100000})
    {
        const std::string text = std::string(n, 'x') + "\n" + std::string(n, 'y');
        test::Spit(dir / "a", text);
        EXPECT_EQ(text, Files().ReadWholeFile(dir / "a")) << n;
    }
}

TEST(FileSystem, ReadsAPieceUpToItsNulByte)
{
    test::TempDir dir;
    test::Spit(dir / "a", std::string("ab\0cd\nef\n\0\n", 11));
    EXPECT_EQ("abef\n", Files().ReadWholeFile(dir / "a"));
}

TEST(FileSystem, SaysWhichFileItCannotRead)
{
    test::TempDir dir;
    EXPECT_EQ("Failed to open file \"" + dir.Path() + "none\"",
              WhatOf<FileReadException>([&] { Files().ReadWholeFile(dir / "none"); }));
    // A folder opens and then cannot be read.
    EXPECT_EQ("Failed to read file \"" + dir.Path() + "\"",
              WhatOf<FileReadException>([&] { Files().ReadWholeFile(dir.Path()); }));
}

TEST(FileSystem, WritesWhatItReads)
{
    test::TempDir dir;
    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes += static_cast<char>(i);
    Files().WriteFile(dir / "a", bytes);
    EXPECT_EQ(bytes, test::Slurp(dir / "a"));
    Files().WriteFile(dir / "a", "short");
    EXPECT_EQ("short", test::Slurp(dir / "a"));
    Files().WriteFile(dir / "a", "");
    EXPECT_EQ("", test::Slurp(dir / "a"));
    EXPECT_EQ(Names{"a"}, Files().FilesInDir(dir.Path(), "*")) << "nothing stays beside it";
}

TEST(FileSystem, WritesAFileOfTheCurrentFolder)
{
    test::TempDir dir;
    test::InDirectory in(dir.Path());
    Files().WriteFile("a", "text");
    EXPECT_EQ("text", test::Slurp(dir / "a"));
}

TEST(FileSystem, WritesThroughALinkToItsTarget)
{
    test::TempDir dir;
    fs::create_directory(dir / "there");
    test::Spit(dir / "there/real", "old");
    fs::create_symlink("there/real", dir / "link");
    fs::create_symlink(dir / "link", dir / "linkToLink");
    Files().WriteFile(dir / "linkToLink", "new");
    EXPECT_TRUE(fs::is_symlink(fs::symlink_status(dir / "link")));
    EXPECT_TRUE(fs::is_symlink(fs::symlink_status(dir / "linkToLink")));
    EXPECT_EQ("new", test::Slurp(dir / "there/real"));

    fs::create_symlink("there/missing", dir / "dangling");
    Files().WriteFile(dir / "dangling", "made");
    EXPECT_TRUE(fs::is_symlink(fs::symlink_status(dir / "dangling")));
    EXPECT_EQ("made", test::Slurp(dir / "there/missing"));
}

TEST(FileSystem, KeepsTheModeOfTheFileThatItReplaces)
{
    test::TempDir dir;
    test::Spit(dir / "a", "old");
    chmod((dir / "a").c_str(), 0600);
    Files().WriteFile(dir / "a", "new");
    struct stat s;
    ASSERT_EQ(0, stat((dir / "a").c_str(), &s));
    EXPECT_EQ(0600u, s.st_mode & 07777);
}

TEST(FileSystem, WritesToWhatIsNoFileInPlace)
{
    test::TempDir dir;
    ASSERT_EQ(0, mkfifo((dir / "pipe").c_str(), 0600));
    FILE* reader = fdopen(open((dir / "pipe").c_str(), O_RDONLY | O_NONBLOCK), "r");
    ASSERT_TRUE(reader);
    Files().WriteFile(dir / "pipe", "through");
    char text[20] = "";
    EXPECT_TRUE(fgets(text, sizeof(text), reader));
    EXPECT_STREQ("through", text);
    fclose(reader);
    struct stat s;
    ASSERT_EQ(0, stat((dir / "pipe").c_str(), &s));
    EXPECT_TRUE(S_ISFIFO(s.st_mode));
    EXPECT_NO_THROW(Files().WriteFile("/dev/null", "away"));
    EXPECT_EQ("Failed to write file \"/dev/full\"", WriteError("/dev/full", "no room"));
}

TEST(FileSystem, DoesNotWaitForAPipesReader)
{
    test::TempDir dir;
    ASSERT_EQ(0, mkfifo((dir / "pipe").c_str(), 0600));
    EXPECT_EQ("Failed to write file \"" + (dir / "pipe") + "\"",
              WhatOf<Exception>([&] { Files().WriteFile(dir / "pipe", "text"); }));
}

TEST(FileSystem, WaitsForAReaderThatIsSlow)
{
    test::TempDir dir;
    ASSERT_EQ(0, mkfifo((dir / "pipe").c_str(), 0600));
    const size_t size = 1000000; // more than a pipe holds
    const pid_t reader = fork();
    if (reader == 0)
    {
        const int pipe = open((dir / "pipe").c_str(), O_RDONLY);
        usleep(200000);
        static char buffer[4096];
        size_t read = 0;
        for (ssize_t n; (n = ::read(pipe, buffer, sizeof(buffer))) > 0;)
            read += n;
        _exit(read == size ? 0 : 1);
    }
    for (int i = 0; i < 1000; ++i)
    {
        const int probe = open((dir / "pipe").c_str(), O_WRONLY | O_NONBLOCK);
        if (probe >= 0)
        {
            Files().WriteFile(dir / "pipe", std::string(size, 'x'));
            close(probe);
            break;
        }
        usleep(10000);
    }
    int status = -1;
    waitpid(reader, &status, 0);
    EXPECT_EQ(0, status) << "all of it has arrived";
}

TEST(FileSystem, ErasesWhatAKilledSaveHasLeftBesideTheTarget)
{
    test::TempDir dir;
    fs::create_directory(dir / "elsewhere");
    test::Spit(dir / "elsewhere/a", "whole");
    test::Spit(dir / "elsewhere/a.tmp", "half");
    fs::create_symlink("elsewhere/a", dir / "link");
    Files().EraseLeftover(dir / "link");
    EXPECT_FALSE(fs::exists(dir / "elsewhere/a.tmp"));
    EXPECT_EQ("whole", test::Slurp(dir / "elsewhere/a"));
    test::LogCapture log(7);
    Files().EraseLeftover(dir / "link");
    EXPECT_EQ("", log.Text()) << "mostly there is none";
}

TEST(FileSystem, KnowsFilesFromWhatOnlyHasAName)
{
    test::TempDir dir;
    test::Spit(dir / "file", "");
    fs::create_symlink("file", dir / "link");
    fs::create_symlink("loop", dir / "loop");
    ASSERT_EQ(0, mkfifo((dir / "pipe").c_str(), 0600));
    EXPECT_TRUE(Files().IsFile(dir / "file"));
    EXPECT_TRUE(Files().IsFile(dir / "link"));
    for (const char* name : {"", "loop", "pipe", "nothing"})
        EXPECT_FALSE(Files().IsFile(dir / name)) << name;
    EXPECT_FALSE(Files().IsFile("/dev/zero"));
}

TEST(FileSystem, APipeHasNoSize)
{
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    EXPECT_EQ("Failed to seek in FILE",
              WhatOf<FileReadException>(
                  [&] { Files().GetFileSize("/proc/self/fd/" + std::to_string(ends[0])); }));
    close(ends[0]);
    close(ends[1]);
}

TEST(FileSystem, LeavesTheOldFileWholeWhenTheDiskIsFull)
{
    test::TempDir dir;
    test::Spit(dir / "a", "the old one");
    {
        FullDisk full(8192);
        EXPECT_EQ("Failed to write file \"" + (dir / "a") + "\"",
                  WriteError(dir / "a", std::string(100000, 'x')));
        // One that fits in the stream's buffer fails only when it is flushed.
        FullDisk fuller(16);
        EXPECT_EQ("Failed to write file \"" + (dir / "a") + "\"",
                  WriteError(dir / "a", std::string(1000, 'x')));
    }
    EXPECT_EQ("the old one", test::Slurp(dir / "a"));
    EXPECT_EQ(Names{"a"}, Files().FilesInDir(dir.Path(), "*")) << "the half-written one stays";
}

TEST(FileSystem, LeavesTheOldFileWholeInAReadOnlyFolder)
{
    test::TempDir dir;
    test::Spit(dir / "a", "the old one");
    chmod((dir / "a").c_str(), 0666);
    chmod(dir.Path().c_str(), 0555);
    {
        AsNobody nobody;
        EXPECT_EQ("Failed to write file \"" + (dir / "a") + "\"", WriteError(dir / "a", "new"));
        EXPECT_EQ("Failed to write file \"" + (dir / "b") + "\"", WriteError(dir / "b", "new"));
        EXPECT_EQ("the old one", test::Slurp(dir / "a"));
    }
    chmod(dir.Path().c_str(), 0755);
}

TEST(FileSystem, RespectsAWriteProtectedFile)
{
    test::TempDir dir;
    chmod(dir.Path().c_str(), 0777);
    test::Spit(dir / "a", "protected");
    chmod((dir / "a").c_str(), 0444);
    AsNobody nobody;
    EXPECT_EQ("Failed to write file \"" + (dir / "a") + "\"", WriteError(dir / "a", "new"));
    EXPECT_EQ("protected", test::Slurp(dir / "a"));
}

TEST(FileSystem, CannotWriteOverAFolderOrIntoAMissingOne)
{
    test::TempDir dir;
    fs::create_directory(dir / "folder");
    EXPECT_EQ("Failed to write file \"" + (dir / "folder") + "\"", WriteError(dir / "folder", "x"));
    EXPECT_EQ("Failed to write file \"" + (dir / "none/a") + "\"", WriteError(dir / "none/a", "x"));
    EXPECT_TRUE(fs::is_empty(dir / "folder"));
}

TEST(FileSystem, RenamesAFile)
{
    test::TempDir dir;
    test::Spit(dir / "a.cfg", "text");
    test::LogCapture log;
    Files().RenameFile(dir / "a.cfg", dir / "a.qib");
    EXPECT_FALSE(Files().FileExists(dir / "a.cfg"));
    EXPECT_EQ("text", test::Slurp(dir / "a.qib"));
    EXPECT_TRUE(log.Lines().empty());
}

TEST(FileSystem, RefusesToRenameOntoAFileAndOnlyLogsIt)
{
    test::TempDir dir;
    test::Spit(dir / "a", "from");
    test::Spit(dir / "b", "to");
    test::LogCapture log(logging::LogWarning);
    Files().RenameFile(dir / "a", dir / "b");
    EXPECT_EQ("from", test::Slurp(dir / "a"));
    EXPECT_EQ("to", test::Slurp(dir / "b"));
    ASSERT_EQ(1u, log.Lines().size());
    EXPECT_EQ("-- Warning: Failed to rename \"" + (dir / "a") + "\" to \"" + (dir / "b") +
                  "\": file exists",
              log.Lines()[0]);
}

TEST(FileSystem, OnlyLogsARenameOfAMissingFile)
{
    test::TempDir dir;
    test::LogCapture log(logging::LogWarning);
    EXPECT_NO_THROW(Files().RenameFile(dir / "none", dir / "b"));
    ASSERT_EQ(1u, log.Lines().size());
    EXPECT_EQ(0u, log.Lines()[0].find("-- Warning: Failed to rename \"" + (dir / "none") +
                                      "\" to \"" + (dir / "b") + "\": "));
    EXPECT_TRUE(log.Has("No such file"));
}

TEST(FileSystem, FindsMeasuresAndErasesFiles)
{
    test::TempDir dir;
    EXPECT_FALSE(Files().FileExists(dir / "a"));
    test::Spit(dir / "a", std::string("12\0\n5", 5));
    EXPECT_TRUE(Files().FileExists(dir / "a"));
    EXPECT_EQ(5, Files().GetFileSize(dir / "a"));
    Files().EraseFile(dir / "a");
    EXPECT_FALSE(Files().FileExists(dir / "a"));
    EXPECT_NO_THROW(Files().EraseFile(dir / "a"));
    EXPECT_EQ("Failed to open file \"" + (dir / "a") + "\"",
              WhatOf<FileReadException>([&] { Files().GetFileSize(dir / "a"); }));
}

TEST(FileSystem, ErasesIfPossibleAndLogsWhenNot)
{
    test::TempDir dir;
    test::Spit(dir / "a", "");
    test::LogCapture log(logging::LogWarning);
    Files().EraseFileIfPossible(dir / "a");
    Files().EraseFileIfPossible(dir / "a");
    EXPECT_FALSE(Files().FileExists(dir / "a"));
    EXPECT_EQ("", log.Text()) << "a file that is not there is no failure";

    fs::create_directory(dir / "full");
    test::Spit(dir / "full/x", "");
    EXPECT_NO_THROW(Files().EraseFileIfPossible(dir / "full"));
    EXPECT_TRUE(log.Has("Failed to erase \"" + (dir / "full") + "\": ")) << log.Text();
}

TEST(FileSystem, ListsFilesByPatternSortedIgnoringCase)
{
    test::TempDir dir;
    for (const char* name : {"b.cfg", "A.cfg", "c.cfg.old", "C.cfg", "cfg", ".cfg", "x.CFG"})
        test::Spit(dir / name, "");
    fs::create_directory(dir / "folder.cfg");
    EXPECT_EQ((Names{".cfg", "A.cfg", "b.cfg", "C.cfg"}), Files().FilesInDir(dir.Path(), "*.cfg"));
    EXPECT_EQ((Names{".cfg", "A.cfg", "b.cfg", "C.cfg", "c.cfg.old", "cfg", "x.CFG"}),
              Files().FilesInDir(dir.Path(), "*"));
    EXPECT_EQ(Names{"folder.cfg"}, Files().DirsInDir(dir.Path()));
}

TEST(FileSystem, ListsTheCurrentFolderUnderAnEmptyName)
{
    test::TempDir dir;
    test::Spit(dir / "a", "");
    test::InDirectory in(dir.Path());
    EXPECT_EQ(Names{"a"}, Files().FilesInDir("", "*"));
}

TEST(FileSystem, ListsNothingOfAFolderThatIsNotThere)
{
    test::TempDir dir;
    EXPECT_TRUE(Files().FilesInDir(dir / "none", "*").empty());
    EXPECT_TRUE(Files().DirsInDir(dir / "none").empty());
}

TEST(FileSystem, ListsPastALinkThatLeadsToItself)
{
    test::TempDir dir;
    test::Spit(dir / "a", "");
    fs::create_symlink("loop", dir / "loop");
    EXPECT_EQ((Names{"a", "loop"}), Files().FilesInDir(dir.Path(), "*"));
    EXPECT_TRUE(Files().DirsInDir(dir.Path()).empty());
}

TEST(WildcardMatcher, TakesStarsAnywhereAndAllElseLiterally)
{
    const struct
    {
        const char *text, *pattern;
        bool matches;
    } cases[] = {
        {"", "*", true},
        {"anything", "*", true},
        {"a.cfg", "*.cfg", true},
        {".cfg", "*.cfg", true},
        {"a.cfg.old", "*.cfg", false},
        {"a.CFG", "*.cfg", false},
        {"axcfg", "*.cfg", false},
        {"aXbXc", "a*X*c", true},
        {"aXbX", "a*X*c", false},
        {"abcabd", "*abd", true},
        {"abc", "a**c", true},
        {"ac", "a*c", true},
        {"a?c", "a?c", true},
        {"abc", "a?c", false},
        {"[a]", "[a]", true},
        {"", "", true},
        {"a", "", false},
        {"", "a", false},
        {"menu_help.txt", "*_help.txt", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.matches, WildcardMatcher(c.text, c.pattern))
            << c.text << " against " << c.pattern;
}

TEST(WildcardMatcher, IsNotSlowWithManyStars)
{
    std::string pattern;
    for (int i = 0; i < 50; ++i)
        pattern += "*a";
    EXPECT_FALSE(WildcardMatcher(std::string(2000, 'a') + "b", pattern));
}

TEST(FILEWrapper, ReadsSeeksAndWritesExactly)
{
    test::TempDir dir;
    {
        FILEWrapper out(dir / "a", "wb");
        out.Write("12345678", 8);
        std::fclose(out.GetFile());
    }
    FILEWrapper in(dir / "a", "rb");
    char bytes[9] = "";
    in.Seek(2, SEEK_SET);
    in.Read(bytes, 3);
    EXPECT_STREQ("345", bytes);
    EXPECT_EQ("Failed to read 4 bytes", WhatOf<FileReadException>([&] { in.Read(bytes, 4); }));
    EXPECT_EQ("Failed to seek in FILE", WhatOf<FileReadException>([&] { in.Seek(-1, SEEK_SET); }));
    EXPECT_EQ("Failed to write 4 bytes", WhatOf<FileReadException>([&] { in.Write("abcd", 4); }));
    EXPECT_NO_THROW(in.Read(bytes, 0));
    std::fclose(in.GetFile());
}

TEST(FILEWrapper, SaysWhatItCannotOpen)
{
    EXPECT_EQ("Failed to open file \"/nowhere/a\"",
              WhatOf<FileReadException>([] { FILEWrapper("/nowhere/a", "rb"); }));
}

TEST(FILEWrapper, LeavesTheFileOpen)
{
    test::TempDir dir;
    test::Spit(dir / "a", "x");
    FILE* file;
    {
        FILEWrapper wrapper(dir / "a", "rb");
        file = wrapper.GetFile();
    }
    EXPECT_EQ('x', std::fgetc(file));
    std::fclose(file);
}
