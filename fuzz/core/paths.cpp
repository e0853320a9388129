// Paths: any text is taken apart, beside rules that are spelled out a character at a time. And it is a pattern for the
// list of files in a sandbox of odd names, beside a walk over the directory that asks each name by itself. In front of
// the text stand the letters of a filter: d directories, f files, r readable, w writable, x executable, l no links, n
// no dot names, and any other sets a bit that means nothing.
//
//     dfn sub/*.txt
//
// No path leaves the sandbox, and what is read there never changes.
#include "zelm/core/files.h"

#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "tests/support/temporary_directory.h"

#include <filesystem>
#include <iterator>
#include <list>
#include <memory>

#include <dirent.h>
#include <fnmatch.h>
#include <sys/stat.h>

using namespace Zelm;
using namespace Zelm::Fuzzing;

namespace {

// --------------------------------------------------------------------------------------------------------- the sandbox

/// Made once for each process, and removed when it exits. Its parent, which is listed as "..", is its own too: of a
/// directory that others write to, the write time would change between two looks.
class Sandbox {
public:
    Sandbox()
    {
        for (auto const* const name :
             {"plain",         "plain.txt", ".hidden", "dot.",     "two..",    "sp ace",
              "star*",         "ques?ion",  "[ab]",    "a",        "b",        "back\\slash",
              "new\nline",     "\xff\xfe",  "locked",  "program",  "readonly", "sub/inner",
              "sub/inner.txt", "sub/a",     "[dir]/x", "back\\/y", "back/z",   "libone.so.1.0.0"})
            Testing::writeFile(*this / name, "text");
        namespace fs = std::filesystem;
        for (auto const& [target, name] :
             {std::pair("plain.txt", "link"), std::pair("nowhere", "dangling"), std::pair("sub", "dirlink")})
            fs::create_symlink(target, *this / name);
        fs::permissions(*this / "locked", fs::perms::none);
        fs::permissions(*this / "program", fs::perms::owner_all);
        fs::permissions(*this / "readonly", fs::perms::owner_read);
    }

    std::string operator/(std::string_view name) const { return directory_ / ("sandbox/" + std::string(name)); }

private:
    Testing::TemporaryDirectory directory_;
};

/// Whether a pattern can't reach beyond the sandbox: it begins there, and has nothing that goes up.
bool staysInside(std::string_view text)
{
    return text.find("..") == std::string_view::npos;
}

// -------------------------------------------------------------------------------------------------- the rules, plainly

bool isDelimiter(char c)
{
    return c == '/' || c == '\\';
}

std::string plainName(std::string const& path)
{
    std::string name;
    for (std::size_t i = path.size(); i > 0 && !isDelimiter(path[i - 1]); --i)
        name.insert(name.begin(), path[i - 1]);
    return name;
}

std::string plainNameWithoutExtension(std::string const& path)
{
    std::string const name = plainName(path);
    auto const nameStart = path.size() - name.size();
    auto const dot = path.rfind('.');
    return dot == std::string::npos || dot < nameStart ? name : name.substr(0, dot - nameStart);
}

std::string plainDirectory(std::string const& path, bool keepRelative)
{
    std::string directory = path.substr(0, path.rfind(plainName(path)));
    if (keepRelative || (!directory.empty() && directory[0] == '/'))
        return directory;
    return std::filesystem::current_path().string() + "/" + directory;
}

std::string plainlyWithoutDelimiter(std::string path)
{
    if (!path.empty() && isDelimiter(path.back()))
        path.pop_back();
    return path;
}

bool plainlyIncluded(std::string const& path, mode_t mode, int filter)
{
    bool const isDirectory = (mode & 0xF000) == 0x4000;
    bool const isLink = (mode & 0xF000) == 0xA000;
    return (filter & (isDirectory ? 0x1 : 0x2)) != 0 && ((filter & 0x10) == 0 || (mode & 0x100) != 0) &&
           ((filter & 0x20) == 0 || (mode & 0x80) != 0) && ((filter & 0x40) == 0 || (mode & 0x40) != 0) &&
           ((filter & 0x80) == 0 || !isLink) && ((filter & 0x1000) == 0 || path.empty() || path.back() != '.');
}

std::list<std::string> plainList(std::string const& pattern, int filter)
{
    std::list<std::string> result;
    auto const directory = plainDirectory(pattern, true);
    std::unique_ptr<DIR, int (*)(DIR*)> const entries(opendir(directory.c_str()), closedir);
    if (!entries)
        return result;
    while (dirent const* const entry = readdir(entries.get())) {
        auto const candidate = plainlyWithoutDelimiter(directory) + "/" + entry->d_name;
        struct stat attributes;
        if (fnmatch(pattern.c_str(), candidate.c_str(), 0) == 0 && lstat(candidate.c_str(), &attributes) == 0 &&
            plainlyIncluded(candidate, attributes.st_mode, filter))
            result.push_back(candidate);
    }
    return result;
}

// -------------------------------------------------------------------------------------------------------------- checks

void checkTakingApart(std::string const& path)
{
    checkSame(stripFileName(path, false), plainName(path), "the name is what stands behind the last delimiter");
    checkSame(stripFileName(path, true), plainNameWithoutExtension(path), "only the last extension goes");
    checkSame(stripTrailingDelimiter(path), plainlyWithoutDelimiter(path), "one trailing delimiter goes");
    checkSame(getDirName(path, true), plainDirectory(path, true), "the directory stands in front of the name");
    checkSame(getDirName(path, false), plainDirectory(path, false), "a relative directory is below the current one");
    checkSame(getDirName(path, true) + stripFileName(path, false), path, "directory and name make up the path");
    check(hasRootDir(path) == (path.compare(0, 1, "/") == 0), "a path with a root begins with a slash", path);
}

void checkInfo(FileInfo info, int filter)
{
    struct stat attributes;
    check(lstat(info.path.c_str(), &attributes) == 0, "what is listed is there", info.path);
    auto const mode = attributes.st_mode;
    check(info.lastWriteTime == attributes.st_mtime && info.size == attributes.st_size &&
              info.isDirectory == ((mode & 0xF000) == 0x4000) && info.isSymLink == ((mode & 0xF000) == 0xA000) &&
              info.isReadable == ((mode & 0x100) != 0) && info.isWritable == ((mode & 0x80) != 0) &&
              info.isExecutable == ((mode & 0x40) != 0),
          "an entry has the attributes of its file", info.path);
    check(info.isIncludedInFilter(filter), "what is listed passes the filter", info.path);
    for (int const other : {filter ^ 0x1, filter ^ 0x2, filter ^ 0x1000, 0x1, 0x2})
        check(info.isIncludedInFilter(other) == plainlyIncluded(info.path, mode, other),
              "an entry passes another filter as the table says", info.path);
}

void checkWriteTime(std::string const& path)
{
    constexpr long untouched = -12345;
    long time = untouched;
    struct stat attributes;
    bool const isThere = stat(path.c_str(), &attributes) == 0;
    check(getLastFileWriteTime(path.c_str(), time) == isThere, "a write time is there where the file is", path);
    check(time == (isThere ? attributes.st_mtime : untouched), "the write time is that of the file", path);
}

void checkList(std::string const& pattern, int filter)
{
    auto const expected = plainList(pattern, filter);
    auto const actual = getFileList(pattern, filter);
    auto const linesOf = [](auto const& entries, auto&& pathOf) {
        std::string text;
        for (auto const& entry : entries)
            text += pathOf(entry) + '\n';
        return text;
    };
    checkSame(linesOf(actual, [](FileInfo const& info) { return info.path; }),
              linesOf(expected, [](std::string const& path) { return path; }),
              "the list holds what matches, in the order of the directory");
    for (auto const& info : actual)
        checkInfo(info, filter);
}

int filterFrom(std::string_view letters)
{
    int filter = 0;
    for (char const c : letters) {
        switch (c) {
        case 'd':
            filter |= IncludeDirectories;
            break;
        case 'f':
            filter |= IncludeFiles;
            break;
        case 'r':
            filter |= RequireReadable;
            break;
        case 'w':
            filter |= RequireWritable;
            break;
        case 'x':
            filter |= RequireExecutable;
            break;
        case 'l':
            filter |= ExcludeSymLinks;
            break;
        case 'n':
            filter |= ExcludeDotNames;
            break;
        default:
            filter |= 0x4;
        }
    }
    return filter;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static Sandbox const sandbox;
    Input input(data, size);
    int const filter = filterFrom(input.upTo(' '));
    std::string const text(input.rest());
    checkTakingApart(text);

    auto const name = text.substr(0, text.find('\0'));  // the rest is no part of a name
    if (staysInside(name)) {
        checkList(sandbox / name, filter);
        checkWriteTime(sandbox / name);
    }
    // Without a directory a pattern matches nothing, whatever the current directory holds.
    if (name.find_first_of("/\\") == std::string::npos)
        check(getFileList(name, filter).empty(), "a pattern without a directory lists nothing", name);
    return 0;
}
