/// @file
/// A directory of its own for one test, removed with all that it holds at the end.
#pragma once

#include <string>

namespace Zelm::Testing {

class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(TemporaryDirectory const&) = delete;
    TemporaryDirectory& operator=(TemporaryDirectory const&) = delete;

    /// Absolute, without links in it and without a trailing delimiter.
    std::string const& path() const { return path_; }
    /// The absolute path of something inside.
    std::string operator/(std::string const& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

/// Writes a file, making its directories; throws std::runtime_error if that fails.
void writeFile(std::string const& path, std::string const& content);
/// The whole content; throws std::runtime_error if it can't be read.
std::string readFile(std::string const& path);

}  // namespace Zelm::Testing
