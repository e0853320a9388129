#include "zelm/core/files.h"

#include "tests/core/system_calls.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <optional>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Zelm {
namespace {

using Testing::childArguments;
using Testing::ChildOptions;
using Testing::currentDirectory;
using Testing::runChild;
using Testing::StandIn;
using Testing::TemporaryDirectory;
using Testing::writeFile;

void setTimeOf(std::string const& path, long seconds)
{
    // Just below the next second: seconds are cut off, not rounded.
    timespec const times[] = {{1, 0}, {seconds, 999999999}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << path;
}

// ---- Taking paths apart --------------------------------------------------------------------------------------------

TEST(PathSeparator, isASlashThatStaysWhereItIs)
{
    EXPECT_EQ(pathSeparator(), "/");
    EXPECT_EQ(&pathSeparator(), &pathSeparator());
}

TEST(StripFileName, givesWhatStandsBehindTheLastDelimiter)
{
    struct {
        std::string path, name, withoutExtension;
        char const* why;
    } const cases[] = {
        {"/a/b.tar.gz", "b.tar.gz", "b.tar", "only the last extension goes"},
        {"a\\b/c", "c", "c", "the slash stands further right"},
        {"a/b\\c", "c", "c", "the backslash stands further right"},
        {"a/b\\c.d/e.f", "e.f", "e", "several of both"},
        {"/a.d/b", "b", "b", "a dot in the directory doesn't count"},
        {"/a.d/", "", "", "a dot in the directory doesn't count"},
        {"a.d\\b", "b", "b", "a dot in the directory doesn't count"},
        {"/a/.hidden", ".hidden", "", "a name whose only dot comes first is all extension"},
        {"/a/.hidden.txt", ".hidden.txt", ".hidden", "only the last extension goes"},
        {".", ".", "", "a name whose only dot comes first is all extension"},
        {"/a/..", "..", ".", "only the last extension goes"},
        {"b.", "b.", "b", "an empty extension goes too"},
        {"plain", "plain", "plain", "neither delimiter nor dot"},
        {"plain.txt", "plain.txt", "plain", "no delimiter"},
        {"/a/b/", "", "", "nothing behind the delimiter"},
        {"/", "", "", "nothing behind the delimiter"},
        {"", "", "", "nothing at all"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.path + ": " + row.why);
        EXPECT_EQ(stripFileName(row.path, false), row.name);
        EXPECT_EQ(stripFileName(row.path, true), row.withoutExtension);
    }
}

TEST(StripTrailingDelimiter, takesOneDelimiterAwayOnPurposeHoweverManyThereAre)
{
    EXPECT_EQ(stripTrailingDelimiter("/a/b/"), "/a/b");
    EXPECT_EQ(stripTrailingDelimiter("/a/b//"), "/a/b/");
    EXPECT_EQ(stripTrailingDelimiter("a\\"), "a");
    EXPECT_EQ(stripTrailingDelimiter("a\\/"), "a\\");
    EXPECT_EQ(stripTrailingDelimiter("/a/b"), "/a/b");
    EXPECT_EQ(stripTrailingDelimiter("/"), "");
    EXPECT_EQ(stripTrailingDelimiter(""), "");
}

TEST(HasRootDir, looksForASlashInFront)
{
    EXPECT_TRUE(hasRootDir("/"));
    EXPECT_TRUE(hasRootDir("/a"));
    EXPECT_FALSE(hasRootDir("a/"));
    EXPECT_FALSE(hasRootDir("\\a"));
    EXPECT_FALSE(hasRootDir(""));
}

TEST(GetDirName, givesWhatStandsBeforeTheNameWithItsDelimiter)
{
    struct {
        std::string path, directory;
    } const cases[] = {
        {"/a/b.txt", "/a/"}, {"/a/b/", "/a/b/"}, {"/a/a", "/a/"},   {"/b/b/ab", "/b/b/"},
        {"/", "/"},          {"/x", "/"},        {"/a\\b", "/a\\"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(getDirName(row.path, false), row.directory);
        EXPECT_EQ(getDirName(row.path, true), row.directory);
    }
}

TEST(GetDirName, keepsARelativeDirectoryOrPutsTheCurrentOneInFront)
{
    struct {
        std::string path, directory;
    } const cases[] = {
        {"b.txt", ""}, {"a/b.txt", "a/"}, {"./b", "./"}, {"a/", "a/"}, {"\\b", "\\"}, {"", ""},
    };
    StandIn const here(currentDirectory(), "/some/where");
    for (auto const& row : cases) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(getDirName(row.path, true), row.directory);
        EXPECT_EQ(getDirName(row.path, false), "/some/where/" + row.directory);
    }
}

TEST(GetDirName, putsASlashInFrontOfARelativeDirectoryIfThereIsNoCurrentOne)
{
    StandIn const nowhere(currentDirectory(), std::nullopt);

    EXPECT_EQ(getDirName("a/b.txt", false), "/a/");
    EXPECT_EQ(getDirName("b.txt", false), "/");
}

// ---- The current directory -----------------------------------------------------------------------------------------

ZELM_CHILD(printsCurrentDirectory)
{
    std::cout << '[' << getCWD() << "] [" << getDirName("b.txt", false) << ']';
    return 0;
}

ZELM_CHILD(printsCurrentDirectoryThatIsGone)
{
    if (rmdir(childArguments().at(0).c_str()) != 0)
        return 1;
    std::cout << '[' << getCWD() << ']';
    return 0;
}

TEST(GetCWD, isWhereTheProcessStands)
{
    TemporaryDirectory const directory;

    auto const child = runChild("printsCurrentDirectory", ChildOptions().in(directory.path()));

    EXPECT_EQ(child.out, "[" + directory.path() + "] [" + directory.path() + "/]");
}

TEST(GetCWD, isEmptyIfTheDirectoryIsGone)
{
    TemporaryDirectory const directory;
    std::string const gone = directory / "gone";
    std::filesystem::create_directory(gone);

    auto const child = runChild("printsCurrentDirectoryThatIsGone", ChildOptions().in(gone).with({gone}));

    EXPECT_EQ(child.out, "[]");
}

TEST(GetCWD, isEmptyOnPurposeForAPathOfMoreThan4094Bytes)
{
    std::string const longest = '/' + std::string(4093, 'x');
    {
        StandIn const here(currentDirectory(), longest);
        EXPECT_EQ(getCWD(), longest);
    }
    StandIn const here(currentDirectory(), longest + 'x');
    EXPECT_EQ(getCWD(), "");
}

// ---- What is known of a file ---------------------------------------------------------------------------------------

TEST(FileInfo, isEmptyAndZeroAndFalseByDefault)
{
    FileInfo const info;

    EXPECT_EQ(info.path, "");
    EXPECT_EQ(info.lastWriteTime, 0);
    EXPECT_EQ(info.size, 0);
    for (bool flag : {info.isDirectory, info.isReadable, info.isWritable, info.isExecutable, info.isSymLink})
        EXPECT_FALSE(flag);
}

TEST(FileInfo, takesPathTimeAndSizeFromWhatItIsGiven)
{
    struct stat attributes = {};
    attributes.st_mtim = {1234567890, 999999999};
    attributes.st_size = 0x123456789A;

    FileInfo const info("some/path", attributes);

    EXPECT_EQ(info.path, "some/path");
    EXPECT_EQ(info.lastWriteTime, 1234567890);
    EXPECT_EQ(info.size, 0x123456789A);
}

TEST(FileInfo, takesItsFlagsFromTheModeAndTheOwnersBitsAlone)
{
    struct {
        mode_t mode;
        bool isDirectory, isReadable, isWritable, isExecutable, isSymLink;
        char const* why;
    } const cases[] = {
        {S_IFREG, false, false, false, false, false, "a file without permissions"},
        {S_IFREG | 0400, false, true, false, false, false, "the owner may read"},
        {S_IFREG | 0200, false, false, true, false, false, "the owner may write"},
        {S_IFREG | 0100, false, false, false, true, false, "the owner may execute"},
        {S_IFREG | 0077, false, false, false, false, false, "all but the owner may all, on purpose"},
        {S_IFREG | 07000, false, false, false, false, false, "other bits say nothing"},
        {S_IFDIR | 0700, true, true, true, true, false, "a directory"},
        {S_IFLNK | 0700, false, true, true, true, true, "a symbolic link"},
        {S_IFSOCK | 0600, false, true, true, false, false, "a socket, whose type has bits of others"},
        {S_IFBLK, false, false, false, false, false, "a block device, whose type has bits of others"},
        {S_IFCHR, false, false, false, false, false, "a character device"},
        {S_IFIFO, false, false, false, false, false, "a pipe"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        struct stat attributes = {};
        attributes.st_mode = row.mode;
        FileInfo const info("x", attributes);
        EXPECT_EQ(info.isDirectory, row.isDirectory);
        EXPECT_EQ(info.isReadable, row.isReadable);
        EXPECT_EQ(info.isWritable, row.isWritable);
        EXPECT_EQ(info.isExecutable, row.isExecutable);
        EXPECT_EQ(info.isSymLink, row.isSymLink);
    }
}

struct Entry {
    std::string path = "/d/name";
    bool isDirectory = false;
    bool isReadable = false;
    bool isWritable = false;
    bool isExecutable = false;
    bool isSymLink = false;

    FileInfo info() const
    {
        FileInfo result;
        result.path = path;
        result.isDirectory = isDirectory;
        result.isReadable = isReadable;
        result.isWritable = isWritable;
        result.isExecutable = isExecutable;
        result.isSymLink = isSymLink;
        return result;
    }
};

TEST(FileInfo, isIncludedIfEveryBitOfTheFilterLetsItPass)
{
    Entry const file;
    Entry const directory{"/d/name", true};
    Entry const readable{"/d/name", false, true};
    Entry const writable{"/d/name", false, false, true};
    Entry const executable{"/d/name", false, false, false, true};
    Entry const allowed{"/d/name", false, true, true, true};
    Entry const link{"/d/name", false, false, false, false, true};
    int const f = IncludeFiles;
    int const d = IncludeDirectories;
    struct {
        Entry entry;
        int filter;
        bool expected;
        char const* why;
    } const cases[] = {
        {file, 0, false, "neither kind is included"},
        {directory, 0, false, "neither kind is included"},
        {allowed, ~(d | f), false, "neither kind is included, whatever else is set"},
        {file, f, true, "files are included"},
        {directory, f, false, "only files are included"},
        {directory, d, true, "directories are included"},
        {file, d, false, "only directories are included"},
        {link, f, true, "a link is no directory"},
        {link, d, false, "a link is no directory"},
        {file, f | RequireReadable, false, "not readable"},
        {readable, f | RequireReadable, true, "readable"},
        {file, f | RequireWritable, false, "not writable"},
        {writable, f | RequireWritable, true, "writable"},
        {file, f | RequireExecutable, false, "not executable"},
        {executable, f | RequireExecutable, true, "executable"},
        {readable, f | RequireReadable | RequireWritable, false, "only one of two"},
        {allowed, f | RequireReadable | RequireWritable | RequireExecutable, true, "all three"},
        {directory, d | RequireReadable, false, "directories need the permission as well"},
        {file, f | ExcludeSymLinks, true, "no link"},
        {link, f | ExcludeSymLinks, false, "a link"},
        {file, f | ExcludeDotNames, true, "no dot at its end"},
        {Entry{"/d/."}, f | ExcludeDotNames, false, "the directory itself"},
        {Entry{"/d/.."}, f | ExcludeDotNames, false, "its parent"},
        {Entry{"/d/name."}, f | ExcludeDotNames, false, "a dot at its end, on purpose"},
        {Entry{"/d/.name"}, f | ExcludeDotNames, true, "only the end counts"},
        {Entry{"/d./name"}, f | ExcludeDotNames, true, "only the end counts"},
        {Entry{""}, f | ExcludeDotNames, true, "no path at all"},
        {Entry{"/d/."}, f, true, "dots aren't excluded"},
        {file, f | 0x4 | 0x8 | 0x100 | 0x200 | 0x400 | 0x800 | 0x7FFFE000, true, "other bits mean nothing"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.entry.path + " with filter " + std::to_string(row.filter) + ": " + row.why);
        EXPECT_EQ(row.entry.info().isIncludedInFilter(row.filter), row.expected);
    }
}

TEST(FileFilter, hasTheValuesOfTheInterface)
{
    EXPECT_EQ(IncludeDirectories, 0x1);
    EXPECT_EQ(IncludeFiles, 0x2);
    EXPECT_EQ(RequireReadable, 0x10);
    EXPECT_EQ(RequireWritable, 0x20);
    EXPECT_EQ(RequireExecutable, 0x40);
    EXPECT_EQ(ExcludeSymLinks, 0x80);
    EXPECT_EQ(ExcludeDotNames, 0x1000);
}

TEST(GetLastFileWriteTime, givesWholeSeconds)
{
    TemporaryDirectory const directory;
    writeFile(directory / "file", "");
    setTimeOf(directory / "file", 1234567890);
    long time = 7;

    EXPECT_TRUE(getLastFileWriteTime((directory / "file").c_str(), time));

    EXPECT_EQ(time, 1234567890);
}

TEST(GetLastFileWriteTime, followsALink)
{
    TemporaryDirectory const directory;
    writeFile(directory / "file", "");
    std::filesystem::create_symlink("file", directory / "link");
    setTimeOf(directory / "file", 1000);
    setTimeOf(directory / "link", 2000);
    long time = 7;

    EXPECT_TRUE(getLastFileWriteTime((directory / "link").c_str(), time));

    EXPECT_EQ(time, 1000);
}

TEST(GetLastFileWriteTime, isFalseAndLeavesTheTimeAloneWithoutAFile)
{
    TemporaryDirectory const directory;
    std::filesystem::create_symlink("nothing", directory / "dangling");
    long time = 7;

    EXPECT_FALSE(getLastFileWriteTime((directory / "nothing").c_str(), time));
    EXPECT_FALSE(getLastFileWriteTime((directory / "dangling").c_str(), time));
    EXPECT_FALSE(getLastFileWriteTime("", time));
    writeFile(directory / "file", "");
    EXPECT_FALSE(getLastFileWriteTime((directory / "file/below").c_str(), time));
    std::filesystem::create_symlink("loop", directory / "loop");
    EXPECT_FALSE(getLastFileWriteTime((directory / "loop").c_str(), time));
    EXPECT_FALSE(getLastFileWriteTime((directory / std::string(5000, 'x')).c_str(), time));

    EXPECT_EQ(time, 7);
}

}  // namespace
}  // namespace Zelm
