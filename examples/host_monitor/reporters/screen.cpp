#include "screen.h"

#include "table.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string_view>

#include <sys/ioctl.h>
#include <unistd.h>

namespace HostMonitor {

namespace {

// What terminals understand that TERM doesn't call dumb, as ECMA-48 has it.
constexpr char const* controlSequence = "\x1b[";
constexpr char const* clearToEndOfLine = "\x1b[K";
constexpr char const* clearToEndOfScreen = "\x1b[J";

bool understandsControlSequences(int descriptor)
{
    char const* const terminal = std::getenv("TERM");
    return isatty(descriptor) == 1 && terminal && *terminal && std::string_view(terminal) != "dumb";
}

struct Size {
    std::size_t rows = 24;
    std::size_t columns = 80;
};

/// Asked each time, since a window changes its size. The usual size if the terminal doesn't know.
Size sizeOf(int descriptor)
{
    winsize window{};
    Size size;
    if (ioctl(descriptor, TIOCGWINSZ, &window) == 0 && window.ws_row > 1 && window.ws_col > 1) {
        size.rows = window.ws_row;
        size.columns = window.ws_col;
    }
    return size;
}

}  // namespace

Screen::Screen(OutputFile& output) : output_(output), refreshed_(understandsControlSequences(output.descriptor())) {}

std::size_t Screen::width() const
{
    return refreshed_ ? sizeOf(output_.descriptor()).columns - 1 : std::numeric_limits<std::size_t>::max();
}

void Screen::show(std::vector<std::string> const& lines)
{
    if (refreshed_) {
        output_.write(refreshing(lines));
        return;
    }
    std::string page;
    for (auto const& line : lines)
        page += line + '\n';
    output_.write(page + '\n');
}

std::string Screen::refreshing(std::vector<std::string> const& lines)
{
    auto const size = sizeOf(output_.descriptor());
    std::size_t const room = size.rows - 1;  // the cursor ends up below the page
    bool const fits = lines.size() <= room;
    std::size_t const shown = fits ? lines.size() : room - 1;

    std::string page;
    if (shownLines_ > 0)
        page = controlSequence + std::to_string(shownLines_) + "A\r";
    auto const append = [&](std::string_view line) {
        page.append(cutToWidth(line, size.columns - 1)).append(clearToEndOfLine).append("\n");
    };
    for (std::size_t i = 0; i < shown; ++i)
        append(lines[i]);
    if (!fits)
        append("... " + std::to_string(lines.size() - shown) + " more lines");
    shownLines_ = shown + (fits ? 0 : 1);
    return page + clearToEndOfScreen;
}

}  // namespace HostMonitor
