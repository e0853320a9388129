#include "zelm/core/files.h"

#include "tests/core/system_calls.h"
#include "tests/support/child_process.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/no_more_files.h"
#include "tests/support/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstddef>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <list>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Zelm {
namespace {

using Testing::childArguments;
using Testing::ChildOptions;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using Testing::EndOfReading;
using Testing::failEachAllocationInTurn;
using ::testing::IsEmpty;
using Testing::NoMoreFiles;
using Testing::runChild;
using Testing::TemporaryDirectory;
using ::testing::UnorderedElementsAre;
using ::testing::UnorderedElementsAreArray;
using Testing::writeFile;

constexpr int everything = IncludeDirectories | IncludeFiles;

std::vector<std::string> pathsOf(std::list<FileInfo> const& list)
{
    std::vector<std::string> result;
    for (auto const& info : list)
        result.push_back(info.path);
    return result;
}

/// The paths that a search finds, without the directory that they share.
std::vector<std::string> namesIn(TemporaryDirectory const& directory, std::string const& pattern, int filter)
{
    std::vector<std::string> result;
    for (auto const& path : pathsOf(getFileList(directory / pattern, filter))) {
        EXPECT_EQ(path.rfind(directory.path() + "/", 0), 0u) << path;
        result.push_back(path.substr(directory.path().size() + 1));
    }
    return result;
}

std::string randomText(std::mt19937& random, std::vector<std::string> const& pieces)
{
    std::string text;
    for (auto count = 1 + random() % 4; count > 0; --count)
        text += pieces[random() % pieces.size()];
    return text;
}

// The directory isn't matched where it is literal: what is found is what fnmatch says of the whole paths all the same.
TEST(GetFileList, findsThePathsThatMatchAsAWhole)
{
    TemporaryDirectory const directory;
    std::mt19937 random(20010911);
    std::vector<std::string> const inNames = {"a", "b", ".", "-", "[", "]", "!", "*", "?", "\xc3\xa4", "\xff"};
    std::vector<std::string> inPatterns = inNames;
    inPatterns.insert(inPatterns.end(), {"*", "*", "?", "[ab]", "[!a]", "[\xc3\xa4]", "[^b-]"});
    std::vector<std::string> const directories = {"literal",  "a*b",  "a[b",  "a[ab]",
                                                  "\xc3\xa4", "\xff", "\x7f", "with space"};
    std::set<std::string> names;
    while (names.size() < 40)
        names.insert(randomText(random, inNames));
    names.erase(".");
    names.erase("..");
    for (auto const& below : directories)
        for (auto const& name : names)
            writeFile(directory / (below + "/" + name), "");

    std::size_t found = 0;
    for (char const* locale : {"C", "C.UTF-8"}) {
        ASSERT_TRUE(std::setlocale(LC_ALL, locale)) << locale;
        for (int i = 0; i < 400; ++i) {
            auto const below = directory / (directories[random() % directories.size()] + "/");
            auto const pattern = below + randomText(random, inPatterns);
            std::vector<std::string> expected;
            for (auto const& name : names)
                if (fnmatch(pattern.c_str(), (below + name).c_str(), 0) == 0)
                    expected.push_back(below + name);

            EXPECT_THAT(pathsOf(getFileList(pattern, IncludeFiles)), UnorderedElementsAreArray(expected)) << pattern;
            found += expected.size();
        }
    }
    std::setlocale(LC_ALL, "C");
    EXPECT_GT(found, 1000u);
}

TEST(GetFileList, findsWhatMatchesThePattern)
{
    TemporaryDirectory const directory;
    for (char const* name : {"a.txt", "b.txt", "c.dat", ".hidden.txt", "sub/d.txt", "atxt"})
        writeFile(directory / name, "");

    EXPECT_THAT(namesIn(directory, "*.txt", everything), UnorderedElementsAre("a.txt", "b.txt", ".hidden.txt"));
    EXPECT_THAT(namesIn(directory, "?.txt", everything), UnorderedElementsAre("a.txt", "b.txt"));
    EXPECT_THAT(namesIn(directory, "[bc].*", everything), UnorderedElementsAre("b.txt", "c.dat"));
    EXPECT_THAT(namesIn(directory, "a.txt", everything), ElementsAre("a.txt"));
    EXPECT_THAT(namesIn(directory, "A.txt", everything), IsEmpty());
    EXPECT_THAT(namesIn(directory, "s*", everything), ElementsAre("sub"));
}

TEST(GetFileList, tellsWhatLstatSaysOfEachEntry)
{
    TemporaryDirectory const directory;
    writeFile(directory / "file", "seven b");
    timespec const times[] = {{1, 0}, {1234567890, 999999999}};
    ASSERT_EQ(utimensat(AT_FDCWD, (directory / "file").c_str(), times, 0), 0);
    ASSERT_EQ(chmod((directory / "file").c_str(), 0500), 0);

    auto const list = getFileList(directory / "f*", IncludeFiles);

    ASSERT_EQ(list.size(), 1u);
    FileInfo const& info = list.front();
    EXPECT_EQ(info.path, directory / "file");
    EXPECT_EQ(info.lastWriteTime, 1234567890);
    EXPECT_EQ(info.size, 7);
    EXPECT_FALSE(info.isDirectory);
    EXPECT_TRUE(info.isReadable);
    EXPECT_FALSE(info.isWritable);
    EXPECT_TRUE(info.isExecutable);
    EXPECT_FALSE(info.isSymLink);
}

TEST(GetFileList, keepsTheOrderOfTheDirectory)
{
    TemporaryDirectory const directory;
    for (int i = 0; i < 50; ++i)
        writeFile(directory / ("file" + std::to_string(i * 7 % 50)), "");
    std::vector<std::string> expected;
    DIR* const entries = opendir(directory.path().c_str());
    ASSERT_NE(entries, nullptr);
    while (dirent const* entry = readdir(entries))
        expected.push_back(entry->d_name);
    closedir(entries);

    EXPECT_EQ(namesIn(directory, "*", everything), expected);
}

TEST(GetFileList, givesTheDirectoryAndItsParentAsDirectoriesUnlessDotNamesAreExcluded)
{
    TemporaryDirectory const directory;
    for (char const* name : {"file", "ends.", "sub/x"})
        writeFile(directory / name, "");

    EXPECT_THAT(namesIn(directory, "*", IncludeDirectories), UnorderedElementsAre(".", "..", "sub"));
    EXPECT_THAT(namesIn(directory, "*", IncludeFiles), UnorderedElementsAre("file", "ends."));
    EXPECT_THAT(namesIn(directory, "*", everything | ExcludeDotNames), UnorderedElementsAre("sub", "file"));
}

TEST(GetFileList, takesLinksForWhatTheyAreAndNotForTheirTargets)
{
    TemporaryDirectory const directory;
    writeFile(directory / "target", "content");
    std::filesystem::create_directory(directory / "folder");
    std::filesystem::create_symlink("target", directory / "to_file");
    std::filesystem::create_symlink("folder", directory / "to_folder");
    std::filesystem::create_symlink("nothing", directory / "to_nothing");

    EXPECT_THAT(namesIn(directory, "*", IncludeFiles),
                UnorderedElementsAre("target", "to_file", "to_folder", "to_nothing"));
    EXPECT_THAT(namesIn(directory, "*", IncludeDirectories | ExcludeDotNames), ElementsAre("folder"));
    EXPECT_THAT(namesIn(directory, "*", IncludeFiles | ExcludeSymLinks), ElementsAre("target"));
    EXPECT_EQ(getFileList(directory / "to_file", IncludeFiles).front().size, 6);  // the text of the link
}

TEST(GetFileList, isEmptyWithoutAKindInTheFilter)
{
    TemporaryDirectory const directory;
    writeFile(directory / "file", "");

    EXPECT_THAT(namesIn(directory, "*", 0), IsEmpty());
    EXPECT_THAT(namesIn(directory, "*", ~everything), IsEmpty());
}

TEST(GetFileList, isEmptyWhereThereIsNoDirectory)
{
    TemporaryDirectory const directory;
    writeFile(directory / "file", "");

    EXPECT_THAT(getFileList(directory / "nothing/*", everything), IsEmpty());
    EXPECT_THAT(getFileList(directory / "file/*", everything), IsEmpty());
    EXPECT_THAT(getFileList("", everything), IsEmpty());
    EXPECT_THAT(getFileList(directory / std::string(5000, 'x') + "/*", everything), IsEmpty());
    std::filesystem::create_symlink("loop", directory / "loop");
    EXPECT_THAT(getFileList(directory / "loop/*", everything), IsEmpty());
}

ZELM_CHILD(listsADirectoryWithoutFilesAndAgain)
{
    auto const list = [] { return getFileList(childArguments().at(0), IncludeFiles).size(); };
    std::size_t without = 0;
    {
        NoMoreFiles const limit;
        without = list();
    }
    std::cout << without << ' ' << list();
    return 0;
}

TEST(GetFileList, isEmptyIfNoFileCanBeOpened)
{
    TemporaryDirectory const directory;
    writeFile(directory / "file", "");

    auto const child = runChild("listsADirectoryWithoutFilesAndAgain", ChildOptions().with({directory / "*"}));

    EXPECT_EQ(child.out, "0 1");
}

TEST(GetFileList, readsOneDirectoryAndTakesItsNameLiterally)
{
    TemporaryDirectory const directory;
    for (char const* name : {"one/a.txt", "two/a.txt"})
        writeFile(directory / name, "");

    EXPECT_THAT(namesIn(directory, "one/*", IncludeFiles), ElementsAre("one/a.txt"));
    EXPECT_THAT(namesIn(directory, "*/a.txt", everything), IsEmpty());
}

TEST(GetFileList, findsWhatStandsInADirectoryWhoseNameMatchesItself)
{
    TemporaryDirectory const directory;
    for (std::string const name : {"a*b", "a?b", "a[b", "a]b", "*"}) {
        SCOPED_TRACE(name);
        writeFile(directory / (name + "/x.txt"), "");
        EXPECT_THAT(namesIn(directory, name + "/*.txt", everything), ElementsAre(name + "/x.txt"));
    }
}

TEST(GetFileList, findsNothingOnPurposeInADirectoryWhoseNameDoesNotMatchItself)
{
    TemporaryDirectory const directory;
    for (std::string const name : {"a[ab]", "x[1]", "x\\y"}) {
        SCOPED_TRACE(name);
        writeFile(directory / (name + "/x.txt"), "");
        EXPECT_THAT(namesIn(directory, name + "/*.txt", everything), IsEmpty());
    }
    // The name doesn't match itself either if a bracket of the last part closes its own.
    writeFile(directory / "a[b/x.txt", "");
    EXPECT_THAT(namesIn(directory, "a[b/[x].txt", everything), IsEmpty());
}

TEST(GetFileList, takesABackslashForADelimiterOnPurposeAndNotForAnEscape)
{
    TemporaryDirectory const directory;
    writeFile(directory / "sub/*.txt", "");
    writeFile(directory / "sub/a.txt", "");

    EXPECT_THAT(namesIn(directory, "sub/\\*.txt", everything), IsEmpty());  // no directory "sub/\"
    EXPECT_THAT(namesIn(directory, "sub\\*.txt", everything), IsEmpty());   // nor one called "sub\"
    EXPECT_THAT(namesIn(directory, "sub/[*].txt", everything), ElementsAre("sub/*.txt"));
}

TEST(GetFileList, putsASlashInPlaceOfTheBackslashThatADirectoryEndsIn)
{
    TemporaryDirectory const directory;
    writeFile(directory / "*\\/one", "in the directory that is read");
    writeFile(directory / "*\\/only", "");
    writeFile(directory / "*/one", "examined");

    auto const list = getFileList(directory / "*\\o*", everything);

    // "only" matches as well, but there is no such file where the "/" leads to.
    ASSERT_THAT(pathsOf(list), ElementsAre(directory / "*/one"));
    EXPECT_EQ(list.front().size, 8);
}

std::ptrdiff_t openFiles()
{
    std::filesystem::directory_iterator const files("/proc/self/fd");
    return std::distance(begin(files), end(files));
}

TEST(GetFileList, leavesNoDirectoryOpen)
{
    TemporaryDirectory const directory;
    writeFile(directory / "file", "");
    auto const before = openFiles();

    ASSERT_EQ(getFileList(directory / "*", everything).size(), 3u);
    ASSERT_EQ(getFileList(directory / "nothing*", everything).size(), 0u);

    EXPECT_EQ(openFiles(), before);
}

TEST(GetFileList, holdsWhatWasReadBeforeTheDirectoryFailed)
{
    TemporaryDirectory const directory;
    for (char const* name : {"a", "b", "c"})
        writeFile(directory / name, "");
    auto const whole = pathsOf(getFileList(directory / "*", everything));
    auto const before = openFiles();

    for (std::size_t entries = 0; entries <= whole.size(); ++entries) {
        SCOPED_TRACE(entries);
        EndOfReading const end(static_cast<int>(entries));
        auto const paths = pathsOf(getFileList(directory / "*", everything));

        EXPECT_THAT(paths, ElementsAreArray(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(entries)));
    }
    EXPECT_EQ(openFiles(), before);
}

TEST(GetFileList, leavesNoDirectoryOpenIfMemoryRunsOut)
{
    TemporaryDirectory const directory;
    writeFile(directory / "file", "");
    auto const pattern = directory / "*";
    auto const before = openFiles();

    std::size_t found = 0;
    auto const failures = failEachAllocationInTurn([&] { found = getFileList(pattern, everything).size(); },
                                                   [&] { EXPECT_EQ(openFiles(), before); });

    EXPECT_EQ(found, 3u);
    EXPECT_GT(failures, 3u);
}

TEST(GetFileList, keepsAllButOneOfTheDelimitersBeforeTheName)
{
    TemporaryDirectory const directory;
    writeFile(directory / "sub/file", "");

    EXPECT_THAT(namesIn(directory, "sub//f*", everything), ElementsAre("sub//file"));
}

TEST(GetFileList, searchesTheRoot)
{
    EXPECT_THAT(pathsOf(getFileList("/pro[c]", IncludeDirectories)), ElementsAre("/proc"));
}

ZELM_CHILD(listsItsCurrentDirectory)
{
    for (auto const& pattern : childArguments())
        for (auto const& path : pathsOf(getFileList(pattern, everything)))
            std::cout << path << '\n';
    return 0;
}

TEST(GetFileList, takesARelativeDirectoryAsItIs)
{
    TemporaryDirectory const directory;
    writeFile(directory / "sub/file.txt", "");

    auto const child =
        runChild("listsItsCurrentDirectory", ChildOptions().in(directory.path()).with({"./s*", "sub/*.txt"}));

    EXPECT_EQ(child.out, "./sub\nsub/file.txt\n");
}

TEST(GetFileList, isEmptyOnPurposeForAPatternWithoutADirectory)
{
    TemporaryDirectory const directory;
    writeFile(directory / "file.txt", "");

    auto const child =
        runChild("listsItsCurrentDirectory", ChildOptions().in(directory.path()).with({"*.txt", "file.txt"}));

    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.status, 0);
}

/// Lists a directory that may be read but not searched, which the superuser can't be kept from: so as somebody else,
/// from inside, since somebody else may not come by the way that leads there.
ZELM_CHILD(listsADirectoryWhoseEntriesItMayNotExamine)
{
    auto const list = [] { return getFileList(childArguments().at(0), everything).size(); };
    bool const isSuperuser = geteuid() == 0;
    if (isSuperuser && seteuid(65534) != 0)
        return 1;
    auto const found = list();
    if (isSuperuser && seteuid(0) != 0)
        return 1;
    prctl(PR_SET_DUMPABLE, 1);  // lost with the change of user, and leak checkers need it
    std::cout << found;
    return 0;
}

TEST(GetFileList, leavesOutWhatCannotBeExamined)
{
    TemporaryDirectory const directory;
    ASSERT_EQ(chmod(directory.path().c_str(), 0755), 0);
    writeFile(directory / "sub/file", "");
    auto const found = [&] {
        auto const options = ChildOptions().in(directory.path()).with({"sub/*"});
        return runChild("listsADirectoryWhoseEntriesItMayNotExamine", options).out;
    };

    ASSERT_EQ(chmod((directory / "sub").c_str(), 0755), 0);
    EXPECT_EQ(found(), "3");
    ASSERT_EQ(chmod((directory / "sub").c_str(), 0444), 0);
    EXPECT_EQ(found(), "0");

    chmod((directory / "sub").c_str(), 0755);
}

}  // namespace
}  // namespace Zelm
