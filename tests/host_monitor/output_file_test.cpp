#include "reporters/output_file.h"

#include "../support/temporary_directory.h"
#include "../support/throws_text.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace HostMonitor {

using Zelm::Testing::readFile;
using Zelm::Testing::TemporaryDirectory;
using Zelm::Testing::throwsText;
using Zelm::Testing::writeFile;

TEST(OutputFile, isMadeIfItIsntThere)
{
    TemporaryDirectory const directory;
    OutputFile(directory / "log").write("line\n");

    EXPECT_EQ(readFile(directory / "log"), "line\n");
}

TEST(OutputFile, isAppendedTo)
{
    TemporaryDirectory const directory;
    writeFile(directory / "log", "old\n");
    OutputFile output(directory / "log");
    output.write("new\n");
    output.write("newer\n");

    EXPECT_EQ(readFile(directory / "log"), "old\nnew\nnewer\n");
}

TEST(OutputFile, thatCantBeOpenedSaysWhy)
{
    TemporaryDirectory const directory;
    std::string const path = directory / "absent/log";

    EXPECT_THAT([&] { OutputFile output(path); },
                throwsText<std::runtime_error>("can't open " + path + ": No such file or directory"));
    EXPECT_THAT([&] { OutputFile output(directory.path()); },
                throwsText<std::runtime_error>("can't open " + directory.path() + ": Is a directory"));
}

TEST(OutputFile, saysThatTheDiskIsFull)
{
    OutputFile output("/dev/full");

    EXPECT_THAT([&] { output.write("line\n"); },
                throwsText<std::runtime_error>("can't write /dev/full: No space left on device"));
}

TEST(OutputFile, saysThatNobodyReadsThePipeAnyMore)
{
    std::signal(SIGPIPE, SIG_IGN);
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    OutputFile output(ends[1], "a pipe");
    close(ends[0]);

    EXPECT_THAT([&] { output.write("line\n"); }, throwsText<std::runtime_error>("can't write a pipe: Broken pipe"));
    close(ends[1]);
}

TEST(OutputFile, writesMoreThanAPipeTakesAtOnce)
{
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    std::string const text(1'000'000, 'x');
    std::string received;
    std::thread reader([&] {
        char buffer[4096];
        for (ssize_t count = 0; (count = read(ends[0], buffer, sizeof buffer)) > 0;)
            received.append(buffer, static_cast<std::size_t>(count));
    });

    OutputFile(ends[1], "a pipe").write(text);
    close(ends[1]);
    reader.join();
    close(ends[0]);

    EXPECT_EQ(received, text);
}

TEST(OutputFile, isClosedAtItsEndUnlessItBelongsToSomebodyElse)
{
    TemporaryDirectory const directory;
    int descriptor = -1;
    {
        OutputFile const output(directory / "log");
        descriptor = output.descriptor();
    }
    EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);

    int const borrowed = open((directory / "log").c_str(), O_WRONLY | O_CLOEXEC);
    {
        OutputFile const output(borrowed, "log");
    }
    EXPECT_NE(fcntl(borrowed, F_GETFD), -1);
    close(borrowed);

    {
        OutputFile const output("-");
    }
    EXPECT_NE(fcntl(STDOUT_FILENO, F_GETFD), -1);
}

}  // namespace HostMonitor
