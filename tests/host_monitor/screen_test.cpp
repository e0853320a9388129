#include "reporters/screen.h"

#include "pseudo_terminal.h"

#include "../support/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <optional>

#include <fcntl.h>
#include <unistd.h>

namespace HostMonitor {

using Testing::PseudoTerminal;
using Zelm::Testing::readFile;
using Zelm::Testing::TemporaryDirectory;

namespace {

/// Sets TERM for one test.
class Term {
public:
    explicit Term(char const* value)
    {
        if (char const* const old = std::getenv("TERM"))
            old_ = old;
        value ? setenv("TERM", value, 1) : unsetenv("TERM");
    }
    ~Term() { old_ ? setenv("TERM", old_->c_str(), 1) : unsetenv("TERM"); }
    Term(Term const&) = delete;
    Term& operator=(Term const&) = delete;

private:
    std::optional<std::string> old_;
};

}  // namespace

TEST(Screen, putsPagesBelowEachOtherWhereThereIsNoTerminal)
{
    TemporaryDirectory const directory;
    OutputFile output(directory / "out");
    Screen screen(output);
    screen.show({"a", "b"});
    screen.show({"c"});

    EXPECT_FALSE(screen.isRefreshed());
    EXPECT_EQ(screen.width(), std::numeric_limits<std::size_t>::max());
    EXPECT_EQ(readFile(directory / "out"), "a\nb\n\nc\n\n");
}

TEST(Screen, putsPagesBelowEachOtherOnATerminalThatCantDoMore)
{
    for (char const* const type : {static_cast<char const*>(nullptr), "", "dumb"}) {
        SCOPED_TRACE(type ? type : "not set");
        Term const term(type);
        PseudoTerminal terminal(24, 80);
        OutputFile output(terminal.descriptor(), "terminal");
        Screen screen(output);
        screen.show({"a"});
        screen.show({"b"});

        EXPECT_FALSE(screen.isRefreshed());
        EXPECT_EQ(terminal.written(), "a\n\nb\n\n");
    }
}

TEST(Screen, refreshesAPageInPlaceOnATerminal)
{
    Term const term("xterm");
    PseudoTerminal terminal(24, 80);
    OutputFile output(terminal.descriptor(), "terminal");
    Screen screen(output);

    screen.show({"a", "b"});
    EXPECT_EQ(terminal.written(), "a\x1b[K\nb\x1b[K\n\x1b[J");
    screen.show({"c"});
    EXPECT_EQ(terminal.written(), "\x1b[2A\rc\x1b[K\n\x1b[J");
    screen.show({"d"});
    EXPECT_EQ(terminal.written(), "\x1b[1A\rd\x1b[K\n\x1b[J");
}

TEST(Screen, leavesOutWhatTheTerminalHasNoRoomFor)
{
    Term const term("xterm");
    PseudoTerminal terminal(4, 6);
    OutputFile output(terminal.descriptor(), "terminal");
    Screen screen(output);

    screen.show({"1", "2", "3"});
    EXPECT_EQ(terminal.written(), "1\x1b[K\n2\x1b[K\n3\x1b[K\n\x1b[J");
    screen.show({"1", "2", "3", "4"});
    EXPECT_EQ(terminal.written(), "\x1b[3A\r1\x1b[K\n2\x1b[K\n... 2\x1b[K\n\x1b[J");
    screen.show({"1234567"});
    EXPECT_EQ(terminal.written(), "\x1b[3A\r12345\x1b[K\n\x1b[J");
}

TEST(Screen, followsTheSizeOfTheTerminal)
{
    Term const term("xterm");
    PseudoTerminal terminal(24, 80);
    OutputFile output(terminal.descriptor(), "terminal");
    Screen screen(output);
    EXPECT_EQ(screen.width(), 79U);

    terminal.resize(24, 40);
    EXPECT_EQ(screen.width(), 39U);
}

TEST(Screen, takesTheUsualSizeIfTheTerminalDoesntKnowIts)
{
    Term const term("xterm");
    PseudoTerminal terminal(0, 0);
    OutputFile output(terminal.descriptor(), "terminal");

    EXPECT_EQ(Screen(output).width(), 79U);
}

}  // namespace HostMonitor
