/// @file
/// A process that can open no more files, as far as it is concerned with opening ones: open, opendir, dlopen and all
/// that stands on them fail with EMFILE.
///
///     {
///         NoMoreFiles const limit;
///         EXPECT_TRUE(getFileList("/tmp/*", IncludeFiles).empty());
///     }
///
/// For a child's main thread: the limit is the process's.
#pragma once

#include <stdexcept>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace Zelm::Testing {

class NoMoreFiles {
public:
    NoMoreFiles()
    {
        int const next = open("/", O_RDONLY | O_CLOEXEC);
        if (next < 0 || close(next) != 0 || getrlimit(RLIMIT_NOFILE, &before_) != 0)
            throw std::runtime_error("can't tell how many files are open");
        set(static_cast<rlim_t>(next));
    }
    ~NoMoreFiles() { set(before_.rlim_cur); }
    NoMoreFiles(NoMoreFiles const&) = delete;
    NoMoreFiles& operator=(NoMoreFiles const&) = delete;

private:
    void set(rlim_t count)
    {
        rlimit const limit{count, before_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &limit);
    }

    rlimit before_{};
};

}  // namespace Zelm::Testing
