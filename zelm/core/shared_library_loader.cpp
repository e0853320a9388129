#include "zelm/core/shared_library_loader.h"

#include "zelm/core/private/file_kind.h"

#include <utility>

#include <dlfcn.h>
#include <unistd.h>

namespace Zelm {

namespace {

/// The directory of the running executable with "/" at its end; empty if it can't be told.
std::string executableDirectory()
{
    char path[4097];
    ssize_t const length = readlink("/proc/self/exe", path, sizeof path - 1);
    if (length < 0)
        return {};
    std::string directory(path, static_cast<std::size_t>(length));
    directory.resize(directory.rfind('/') + 1);  // nothing is left if there is none
    return directory;
}

/// Whether the loader would open what is no library for certain: it waits for good for whoever writes into a pipe.
bool isPipeOrDevice(std::string const& path)
{
    using Private::FileKind;
    if (path.find('/') == std::string::npos)
        return false;  // the name of a library, which the loader looks for at its own places
    auto const kind = Private::fileKindOf(path.c_str());
    return kind == FileKind::Pipe || kind == FileKind::Other;
}

/// What dlopen gives, without opening pipes and devices.
void* openLibrary(std::string const& path, int mode)
{
    if (isPipeOrDevice(path))
        return dlopen((path + "/not a regular file").c_str(), mode);  // there is no such thing, as dlerror then tells
    return dlopen(path.c_str(), mode);
}

}  // namespace

namespace Private {

class SharedLibraryLoader_Impl {
public:
    explicit SharedLibraryLoader_Impl(char const* libraryName) : name(libraryName) {}

    void loadLibrary(int flags)
    {
        int const mode = (flags & SharedLibraryLoader::ResolveGlobally) != 0 ? RTLD_NOW | RTLD_GLOBAL : RTLD_NOW;
        if (!name.empty() && name.front() != '/') {
            std::string const directory = executableDirectory();
            if (!directory.empty())
                handle = openLibrary(directory + name, mode);
            if (handle)
                return;
        }
        handle = openLibrary(name, mode);
    }

    std::string const name;
    void* handle = nullptr;  // forgotten in the end, never closed: code and objects of the library live on
};

}  // namespace Private

SharedLibraryLoader::SharedLibraryLoader() = default;

SharedLibraryLoader::SharedLibraryLoader(char const* libraryName, int flags)
    : impl_(std::make_shared<Private::SharedLibraryLoader_Impl>(libraryName))
{
    impl_->loadLibrary(flags);
}

SharedLibraryLoader::SharedLibraryLoader(SharedLibraryLoader const& other) = default;
SharedLibraryLoader::SharedLibraryLoader(SharedLibraryLoader&& other) noexcept = default;
SharedLibraryLoader& SharedLibraryLoader::operator=(SharedLibraryLoader const& other) = default;
SharedLibraryLoader& SharedLibraryLoader::operator=(SharedLibraryLoader&& other) noexcept = default;
SharedLibraryLoader::~SharedLibraryLoader() = default;

bool SharedLibraryLoader::isLoaded() const
{
    return impl_->handle != nullptr;
}

char const* SharedLibraryLoader::libraryName() const
{
    return impl_->name.c_str();
}

void* SharedLibraryLoader::resolveSymbolByName(char const* symbol) const
{
    // The dynamic loader takes a null handle for the whole process and would find foreign symbols there.
    return isLoaded() ? dlsym(impl_->handle, symbol) : nullptr;
}

std::string SharedLibraryLoader::errorString() const
{
    char const* const text = dlerror();
    return text ? text : "";
}

std::string convertToNativeSharedLibraryName(std::string const& name)
{
    return "lib" + name + ".so";
}

}  // namespace Zelm
