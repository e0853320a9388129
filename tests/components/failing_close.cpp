#include "tests/components/failing_close.h"

#include <cerrno>
#include <cstdio>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace Zelm::Testing {

namespace {
bool closesFail = false;
int failedCloses = 0;

bool isForWriting(std::FILE* file)
{
    return (fcntl(fileno(file), F_GETFL) & O_ACCMODE) != O_RDONLY;
}
}  // namespace

FailingClose::FailingClose()
{
    failedCloses = 0;
    closesFail = true;
}

FailingClose::~FailingClose()
{
    closesFail = false;
}

int FailingClose::failures() const
{
    return failedCloses;
}

}  // namespace Zelm::Testing

extern "C" __attribute__((visibility("default"))) int fclose(std::FILE* file)
{
    using Close = int(std::FILE*);
    static auto* const realClose = reinterpret_cast<Close*>(dlsym(RTLD_NEXT, "fclose"));

    if (!Zelm::Testing::closesFail || !Zelm::Testing::isForWriting(file))
        return realClose(file);
    bool const isEmptied = ftruncate(fileno(file), 0) == 0;
    realClose(file);
    Zelm::Testing::failedCloses += isEmptied ? 1 : 0;
    errno = EIO;
    return EOF;
}
