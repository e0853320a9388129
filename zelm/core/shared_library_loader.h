/// @file
/// Opens a shared library by name and finds symbols in it:
///
///     SharedLibraryLoader const library("libMotor.so.1.0.0", 0);
///     if (!library.isLoaded())
///         throw Exception::FailedToLoad("libMotor.so.1.0.0", library.errorString());
///     auto const makeFactory = reinterpret_cast<MakeFactory*>(library.resolveSymbolByName("getComponentFactory"));
///
/// Two habits set it apart from plain dlopen:
///  - A relative name is looked for in the directory of the running executable first, and only then where the dynamic
///    loader searches: its usual places for a bare name, the current directory for a name with a "/" in it.
///  - Nothing is ever unloaded. Objects and code of a library outlive the loader that opened it, so a library stays in
///    the process to its end, and its static initialisers run once.
///
/// Thread-safety: no locks. What copies share doesn't change after construction, so any number of threads may use one
/// loader, or copies of it, at once. Assigning to a loader, or moving from it, while another thread uses that very
/// object is a race. The reason of a failure is kept by the dynamic loader for each thread: ask errorString() in the
/// thread that made the failed call, straight after it.
#pragma once

#include "zelm/core/export.h"

#include <memory>
#include <string>

namespace Zelm {

namespace Private {
class SharedLibraryLoader_Impl;
}  // namespace Private

/// Copies share one state, which is loaded or not loaded from its construction on.
class ZELM_EXPORT SharedLibraryLoader {
public:
    /// The one bit of the constructor's flags that counts.
    enum Flags : int {
        ResolveGlobally = 2  ///< libraries that are loaded later may use this one's symbols
    };

    /// An empty loader, to be assigned to. No operation may be used on it.
    SharedLibraryLoader();

    /// Opens the library and binds all its symbols at once. A failure doesn't throw: see isLoaded. The empty name
    /// stands for the process itself, as it does for dlopen. A path to a pipe, a device or a socket fails and isn't
    /// opened.
    SharedLibraryLoader(char const* libraryName, int flags);

    SharedLibraryLoader(SharedLibraryLoader const& other);
    SharedLibraryLoader(SharedLibraryLoader&& other) noexcept;  ///< leaves `other` empty
    SharedLibraryLoader& operator=(SharedLibraryLoader const& other);
    SharedLibraryLoader& operator=(SharedLibraryLoader&& other) noexcept;  ///< leaves `other` empty

    /// Leaves the library loaded.
    ~SharedLibraryLoader();

    bool isLoaded() const;

    /// The name that the constructor got, valid as long as a copy of this loader lives.
    char const* libraryName() const;

    /// Null if there is no such symbol, or if nothing is loaded. What it gives stays valid for good.
    void* resolveSymbolByName(char const* symbol) const;

    /// Why the last call into the dynamic loader failed, or an empty text if it didn't. Asking takes the reason away: a
    /// second call gives an empty text, and any loading or resolving in between changes the answer. For a relative name
    /// that was found nowhere it is the reason of the second attempt, the one with the name as it stands.
    std::string errorString() const;

private:
    std::shared_ptr<Private::SharedLibraryLoader_Impl> impl_;
};

/// The file name of a library on this platform: "lib", the name and ".so".
ZELM_EXPORT std::string convertToNativeSharedLibraryName(std::string const& name);

}  // namespace Zelm
