/// @file
/// A file, or standard output, that text is written to at once and whole, and whose failures are told.
///
///     OutputFile output("-");
///     output.write("one line\n");
///
/// Thread-safety: none; distinct objects may be used at the same time.
#pragma once

#include <string>
#include <string_view>

namespace HostMonitor {

class OutputFile {
public:
    /// Opens the file for appending and makes it if it isn't there; "-" is standard output, which is left open at the
    /// end. Throws std::runtime_error "can't open <name>: <reason>".
    explicit OutputFile(std::string const& path);
    /// Takes a descriptor that somebody else owns; `name` is for messages.
    OutputFile(int descriptor, std::string name);
    ~OutputFile();
    OutputFile(OutputFile const&) = delete;
    OutputFile& operator=(OutputFile const&) = delete;

    int descriptor() const { return descriptor_; }

    /// Hands the whole text to the operating system, with one call if that takes it. Throws std::runtime_error
    /// "can't write <name>: <reason>" if it doesn't: the disk is full, or nobody reads the pipe any more. For the
    /// latter the process must ignore SIGPIPE, which ends it otherwise.
    void write(std::string_view text);

private:
    int const descriptor_;
    bool const owned_;
    std::string const name_;
};

}  // namespace HostMonitor
