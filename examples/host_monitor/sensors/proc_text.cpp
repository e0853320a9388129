#include "proc_text.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <limits>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace HostMonitor {

namespace {

struct File {
    int const descriptor;

    explicit File(std::string const& path) : descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~File()
    {
        if (descriptor >= 0)
            close(descriptor);
    }
    File(File const&) = delete;
    File& operator=(File const&) = delete;
};

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

}  // namespace

std::string readProcFile(std::string const& path)
{
    File const file(path);
    if (file.descriptor < 0)
        throw std::runtime_error(std::strerror(errno));

    // The size that the file system gives for these files is 0, so they are read until they end.
    std::string content;
    char buffer[8192];
    for (;;) {
        ssize_t const count = read(file.descriptor, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw std::runtime_error(std::strerror(errno));
        if (count == 0)
            return content;
        content.append(buffer, static_cast<std::size_t>(count));
        if (content.size() > procFileLimit)
            throw std::runtime_error("larger than " + std::to_string(procFileLimit) + " bytes");
    }
}

std::optional<std::string_view> nextLine(std::string_view& text)
{
    if (text.empty())
        return std::nullopt;
    std::size_t const end = text.find('\n');
    auto const line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line;
}

std::string_view nextWord(std::string_view& line)
{
    while (!line.empty() && isBlank(line.front()))
        line.remove_prefix(1);
    std::size_t length = 0;
    while (length < line.size() && !isBlank(line[length]))
        ++length;
    auto const word = line.substr(0, length);
    line.remove_prefix(length);
    return word;
}

std::optional<std::uint64_t> toUnsigned(std::string_view word)
{
    std::uint64_t value = 0;
    auto const* const end = word.data() + word.size();
    auto const result = std::from_chars(word.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end)
        return std::nullopt;
    return value;
}

long toLong(std::uint64_t count, std::uint64_t unit)
{
    constexpr std::uint64_t limit = std::numeric_limits<long>::max();
    if (unit != 0 && count > limit / unit)
        return std::numeric_limits<long>::max();
    return static_cast<long>(count * unit);
}

}  // namespace HostMonitor
