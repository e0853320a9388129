#include "output_file.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace HostMonitor {

namespace {

constexpr char const* standardOutput = "-";

[[noreturn]] void fail(std::string const& what, std::string const& name, int reason)
{
    throw std::runtime_error("can't " + what + " " + name + ": " + std::strerror(reason));
}

int openForAppending(std::string const& path)
{
    int const descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (descriptor < 0)
        fail("open", path, errno);
    return descriptor;
}

}  // namespace

OutputFile::OutputFile(std::string const& path)
    : descriptor_(path == standardOutput ? STDOUT_FILENO : openForAppending(path)), owned_(path != standardOutput),
      name_(path == standardOutput ? "standard output" : path)
{
}

OutputFile::OutputFile(int descriptor, std::string name)
    : descriptor_(descriptor), owned_(false), name_(std::move(name))
{
}

OutputFile::~OutputFile()
{
    if (owned_)
        close(descriptor_);
}

void OutputFile::write(std::string_view text)
{
    while (!text.empty()) {
        ssize_t const count = ::write(descriptor_, text.data(), text.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            fail("write", name_, errno);
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

}  // namespace HostMonitor
