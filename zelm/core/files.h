/// @file
/// Taking paths apart, and listing a directory by a wildcard pattern:
///
///     for (FileInfo const& library : getFileList("/opt/app/lib/*.so.*", IncludeFiles | RequireReadable))
///         std::cout << stripFileName(library.path, false) << std::endl;
///
/// Paths are plain strings. They are taken apart at "/" and at the backslash alike, but put together with "/" only.
///
/// No function here throws, unless memory runs out: a failure is an empty result or false.
///
/// Thread-safety: no state. What is said of relative paths depends on the process's current directory at the call.
#pragma once

#include "zelm/core/export.h"

#include <list>
#include <string>

struct stat;

namespace Zelm {

/// The bits of a filter. An entry of a directory is listed if every one of them lets it pass; other bits mean nothing.
/// A filter with neither IncludeDirectories nor IncludeFiles lists nothing.
enum FileFilter : int {
    IncludeDirectories = 0x1,
    IncludeFiles = 0x2,  ///< whatever is no directory, symbolic links to directories among them
    RequireReadable = 0x10,
    RequireWritable = 0x20,
    RequireExecutable = 0x40,
    ExcludeSymLinks = 0x80,
    ExcludeDotNames = 0x1000  ///< no path that ends in ".": not "." and "..", and not "notes." either
};

/// What is known of one entry of a directory: of a symbolic link itself, not of what it points to.
struct ZELM_EXPORT FileInfo {
    /// An empty path, zeros, and all flags false.
    FileInfo();

    /// Takes the facts from what lstat found out.
    FileInfo(std::string const& path, struct ::stat const& attributes);

    /// Whether the filter, made of FileFilter bits, lets the entry pass. Not const: it belongs to the interface in
    /// this form.
    bool isIncludedInFilter(int filter);

    std::string path;    ///< as it was examined, with its directory
    long lastWriteTime;  ///< seconds since 1970
    long size;           ///< in bytes
    bool isDirectory;
    bool isReadable;    ///< the owner's permission, whoever runs this process
    bool isWritable;    ///< the owner's permission, whoever runs this process
    bool isExecutable;  ///< the owner's permission, whoever runs this process
    bool isSymLink;
};

/// What stands between the parts of a path on this platform: "/". The reference stays valid for good.
ZELM_EXPORT std::string const& pathSeparator();

/// What stands behind the last "/" or backslash of the path, without the last extension on request:
/// "/a/b.tar.gz" gives "b.tar.gz" or "b.tar", "/a/b/" nothing. A name whose only dot is its first character is all
/// extension.
ZELM_EXPORT std::string stripFileName(std::string const& path, bool removeExtension);

/// The path without its last character, if that is a "/" or a backslash. Of several only the last one goes.
ZELM_EXPORT std::string stripTrailingDelimiter(std::string const& path);

/// The current directory; empty if it can't be told, because it was removed or because its path has more than 4094
/// bytes.
ZELM_EXPORT std::string getCWD();

/// Stores the time of the file's last modification, in seconds since 1970, following symbolic links. Returns false, and
/// leaves `time` alone, if there is no such file.
ZELM_EXPORT bool getLastFileWriteTime(char const* path, long& time);

/// Whether the path begins with "/".
ZELM_EXPORT bool hasRootDir(std::string const& path);

/// The path up to its last delimiter and with it: "/a/b.txt" gives "/a/". Unless `keepRelative` says so, a directory
/// that doesn't begin with "/" gets the current directory put in front.
ZELM_EXPORT std::string getDirName(std::string const& path, bool keepRelative);

/// The entries of one directory, "." and ".." included, whose whole path matches the pattern and that the filter lets
/// pass, in the order in which the file system delivers them. The pattern is one of fnmatch without flags: "*" matches
/// a leading dot too.
///
/// The pattern has to name the directory, and literally: "*.txt" finds nothing, "./*.txt" searches the current
/// directory. As the whole path is matched, the directory's own name has to match itself as a pattern: "a*b" and "a?b"
/// do, as does "a[b" without a "]" behind it, but nothing is found below "a[ab]" or "x\y". A directory that can't be
/// read gives an empty list.
///
/// A backslash in the last part can't take a wildcard's meaning away, as it ends the directory like a "/". Brackets do:
/// "dir/[*].txt" finds "dir/*.txt" alone.
ZELM_EXPORT std::list<FileInfo> getFileList(std::string const& pattern, int filter);

}  // namespace Zelm
