#include "tests/core/system_calls.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Zelm::Testing {

namespace {
std::atomic<int> linkReads{0};
std::atomic<int> waits{0};
std::atomic<clockid_t> waitClock{-1};  // no clock
constexpr int noLimit = -1;
int entriesLeft = noLimit;
}  // namespace

Answer& currentDirectory()
{
    static Answer answer;
    return answer;
}

Answer& executableLink()
{
    static Answer answer;
    return answer;
}

EndOfReading::EndOfReading(int entries)
{
    entriesLeft = entries;
}

EndOfReading::~EndOfReading()
{
    entriesLeft = noLimit;
}

int executableLinkReads()
{
    return linkReads;
}

int timedWaits()
{
    return waits;
}

clockid_t clockOfLatestTimedWait()
{
    return waitClock;
}

}  // namespace Zelm::Testing

extern "C" {

__attribute__((visibility("default"))) char* getcwd(char* buffer, std::size_t size) noexcept
{
    // Without a buffer the caller gets one of the heap, by an extension that the C++ library uses.
    if (!buffer) {
        std::size_t const room = size != 0 ? size : 8192;
        char* const made = static_cast<char*>(std::malloc(room));
        if (made && !getcwd(made, room)) {
            std::free(made);
            return nullptr;
        }
        return made;
    }

    auto const& answer = Zelm::Testing::currentDirectory();
    if (!answer.isReplaced)
        return syscall(SYS_getcwd, buffer, size) > 0 ? buffer : nullptr;
    if (!answer.text || answer.text->size() >= size) {
        errno = answer.text ? ERANGE : ENOENT;
        return nullptr;
    }
    std::memcpy(buffer, answer.text->c_str(), answer.text->size() + 1);
    return buffer;
}

__attribute__((visibility("default"))) ssize_t readlink(char const* path, char* buffer, std::size_t size) noexcept
{
    if (std::strcmp(path, "/proc/self/exe") != 0)
        return syscall(SYS_readlinkat, AT_FDCWD, path, buffer, size);

    ++Zelm::Testing::linkReads;
    auto const& answer = Zelm::Testing::executableLink();
    if (!answer.isReplaced)
        return syscall(SYS_readlinkat, AT_FDCWD, path, buffer, size);
    if (!answer.text) {
        errno = EACCES;
        return -1;
    }
    std::size_t const length = std::min(size, answer.text->size());
    std::memcpy(buffer, answer.text->data(), length);
    return static_cast<ssize_t>(length);
}

__attribute__((visibility("default"))) dirent* readdir(DIR* directory)
{
    using Read = dirent*(DIR*);
    static auto* const realRead = reinterpret_cast<Read*>(dlsym(RTLD_NEXT, "readdir"));

    int& left = Zelm::Testing::entriesLeft;
    if (left == 0) {
        errno = EIO;
        return nullptr;
    }
    if (left > 0)
        --left;
    return realRead(directory);
}

__attribute__((visibility("default"))) int pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                                                  clockid_t clock, timespec const* deadline)
{
    using Wait = int(pthread_cond_t*, pthread_mutex_t*, clockid_t, timespec const*);
    static auto* const realWait = reinterpret_cast<Wait*>(dlsym(RTLD_NEXT, "pthread_cond_clockwait"));

    Zelm::Testing::waitClock = clock;
    ++Zelm::Testing::waits;
    return realWait(condition, mutex, clock, deadline);
}
}
