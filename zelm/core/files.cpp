#include "zelm/core/files.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include <dirent.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Zelm {

namespace {

bool isDelimiter(char c)
{
    return c == '/' || c == '\\';
}

/// Where the name begins: behind the last delimiter.
std::string::size_type nameStart(std::string const& path)
{
    auto const delimiter = std::find_if(path.rbegin(), path.rend(), [](char c) { return isDelimiter(c); });
    return static_cast<std::string::size_type>(path.rend() - delimiter);
}

/// Whether each character stands for itself in a pattern and for one character in every locale. A pattern that begins
/// with such a text matches what begins with it too if their remainders match.
bool isLiteral(std::string const& text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return c >= ' ' && c <= '~' && !std::strchr("*?[\\", c); });
}

struct CloseDirectory {
    void operator()(DIR* directory) const { closedir(directory); }
};

}  // namespace

FileInfo::FileInfo()
    : lastWriteTime(0), size(0), isDirectory(false), isReadable(false), isWritable(false), isExecutable(false),
      isSymLink(false)
{
}

FileInfo::FileInfo(std::string const& examinedPath, struct ::stat const& attributes)
    : path(examinedPath), lastWriteTime(attributes.st_mtim.tv_sec), size(attributes.st_size),
      isDirectory(S_ISDIR(attributes.st_mode)), isReadable((attributes.st_mode & S_IRUSR) != 0),
      isWritable((attributes.st_mode & S_IWUSR) != 0), isExecutable((attributes.st_mode & S_IXUSR) != 0),
      isSymLink(S_ISLNK(attributes.st_mode))
{
}

bool FileInfo::isIncludedInFilter(int filter)
{
    int const kind = isDirectory ? IncludeDirectories : IncludeFiles;
    if ((filter & kind) == 0)
        return false;
    if ((filter & RequireReadable) != 0 && !isReadable)
        return false;
    if ((filter & RequireWritable) != 0 && !isWritable)
        return false;
    if ((filter & RequireExecutable) != 0 && !isExecutable)
        return false;
    if ((filter & ExcludeSymLinks) != 0 && isSymLink)
        return false;
    // The last character tells for "." and ".." alike, and leaves out "notes." with them, on purpose.
    return (filter & ExcludeDotNames) == 0 || path.empty() || path.back() != '.';
}

std::string const& pathSeparator()
{
    // Never destroyed: components that end at the exit of the process may still ask.
    static std::string const& separator = *new std::string("/");
    return separator;
}

std::string stripFileName(std::string const& path, bool removeExtension)
{
    auto const start = nameStart(path);
    if (!removeExtension)
        return path.substr(start);

    auto const dot = path.rfind('.');
    if (dot == std::string::npos || dot < start)
        return path.substr(start);
    return path.substr(start, dot - start);
}

std::string stripTrailingDelimiter(std::string const& path)
{
    bool const hasOne = !path.empty() && isDelimiter(path.back());
    return path.substr(0, path.size() - (hasOne ? 1 : 0));
}

std::string getCWD()
{
    char buffer[4095];
    return getcwd(buffer, sizeof buffer) ? buffer : "";
}

bool getLastFileWriteTime(char const* path, long& time)
{
    struct ::stat attributes {};
    if (::stat(path, &attributes) != 0)
        return false;
    time = attributes.st_mtim.tv_sec;
    return true;
}

bool hasRootDir(std::string const& path)
{
    return !path.empty() && path.front() == '/';
}

std::string getDirName(std::string const& path, bool keepRelative)
{
    std::string directory = path.substr(0, nameStart(path));
    if (keepRelative || hasRootDir(directory))
        return directory;
    return getCWD() + pathSeparator() + directory;
}

std::list<FileInfo> getFileList(std::string const& pattern, int filter)
{
    std::list<FileInfo> result;
    std::string const directory = getDirName(pattern, true);
    std::unique_ptr<DIR, CloseDirectory> const entries(opendir(directory.c_str()));
    if (!entries)
        return result;

    std::string const front = stripTrailingDelimiter(directory) + '/';
    // A literal directory is the front of every candidate as it stands, so its names alone are matched.
    bool const matchesNames = isLiteral(directory);
    char const* const namePattern = pattern.c_str() + directory.size();
    while (dirent const* const entry = readdir(entries.get())) {
        if (matchesNames && fnmatch(namePattern, entry->d_name, 0) != 0)
            continue;
        std::string const candidate = front + entry->d_name;
        if (!matchesNames && fnmatch(pattern.c_str(), candidate.c_str(), 0) != 0)
            continue;
        struct ::stat attributes {};
        if (lstat(candidate.c_str(), &attributes) != 0)
            continue;
        FileInfo info(candidate, attributes);
        if (info.isIncludedInFilter(filter))
            result.push_back(std::move(info));
    }
    return result;
}

}  // namespace Zelm
