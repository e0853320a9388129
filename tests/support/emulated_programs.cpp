// Lets tests start programs of the target processor on another one. A kernel can be told to hand such programs to an
// emulator (binfmt_misc), but containers have no right to do so. So this replaces exec for the whole test program:
// child processes, programs under test and death tests start as they do elsewhere, and scripts and the host's own
// programs go straight to the kernel.
//
// Built only where CMAKE_CROSSCOMPILING_EMULATOR is set. Like the functions it stands for, it may be called between
// fork and exec: it allocates nothing and uses the stack and system calls alone.
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <elf.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#ifndef __aarch64__
#error "Which machine do this target's programs name in their headers?"
#endif

namespace {

constexpr char const* emulator[] = {ZELM_EMULATOR};
constexpr std::size_t emulatorLength = sizeof emulator / sizeof *emulator;
constexpr std::size_t maximumArguments = 256;

/// Whether a file is a program for the processor that this code was built for.
bool isOfTheTarget(char const* path) noexcept
{
    int const file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return false;
    Elf64_Ehdr header{};
    bool const whole = read(file, &header, sizeof header) == static_cast<ssize_t>(sizeof header);
    close(file);
    return whole && std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_machine == EM_AARCH64;
}

int start(char const* path, char const* const* arguments, char* const* environment) noexcept
{
    return static_cast<int>(syscall(SYS_execve, path, arguments, environment));
}

}  // namespace

extern "C" int execve(char const* path, char* const arguments[], char* const environment[]) noexcept
{
    if (!isOfTheTarget(path))
        return start(path, arguments, environment);

    std::size_t count = 0;
    while (arguments[count])
        ++count;
    // emulator -0 <name> <path> <arguments but for the name> null
    char const* all[emulatorLength + 3 + maximumArguments + 1];
    if (count == 0 || count > maximumArguments) {
        errno = E2BIG;
        return -1;
    }
    std::size_t length = 0;
    for (char const* const word : emulator)
        all[length++] = word;
    all[length++] = "-0";
    all[length++] = arguments[0];
    all[length++] = path;
    for (std::size_t i = 1; i <= count; ++i)
        all[length++] = arguments[i];
    return start(emulator[0], all, environment);
}

extern "C" int execv(char const* path, char* const arguments[]) noexcept
{
    return execve(path, arguments, environ);
}
