#include "line_reader.h"

#include <cerrno>
#include <cstddef>
#include <utility>
#include <vector>

#include <unistd.h>

namespace Soak {

LineReader::LineReader(int descriptor, TakeLine takeLine)
    : descriptor_(descriptor), takeLine_(std::move(takeLine)), thread_([this] { run(); })
{
}

LineReader::~LineReader()
{
    thread_.join();
    close(descriptor_);
}

void LineReader::run()
{
    std::vector<char> buffer(64 * 1024UL);
    std::string text;
    for (;;) {
        ssize_t const count = read(descriptor_, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return;
        text.append(buffer.data(), static_cast<std::size_t>(count));
        std::size_t begin = 0;
        for (auto end = text.find('\n'); end != std::string::npos; end = text.find('\n', begin)) {
            takeLine_(text.substr(begin, end - begin));
            begin = end + 1;
        }
        text.erase(0, begin);
    }
}

}  // namespace Soak
