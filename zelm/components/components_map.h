/// @file
/// The life of the components map (ComponentsRepository::Map): the system's memory of which shared library provides
/// which component type, so that an ordinary start reads one file and loads no library.
///
/// The file is "CMP_ComponentsMap.json" in zelmComponentsMapDir(), a mirrored object in pretty JSON:
///
///     {
///         "Components" : [
///             {
///                 "ComponentTypeName" : "Engine",
///                 "FactoryName" : "libEngines.so.1.0.0"
///             }
///         ],
///         "SharedLibraries" : [
///             {
///                 "SharedObjectName" : "libEngines.so.1.0.0",
///                 "SharedObjectTimeStamp" : 1700000000
///             }
///         ],
///         "Version" : [
///             1,
///             1,
///             0
///         ]
///     }
///
/// A row that has an "Error" stays in the file and tells every later caller why, without a library being touched.
/// "Errors", at the top level, holds what stopped the last build.
///
/// Component libraries are what matches "*.so.*" in the installation's library directory, zelmRoot() and
/// componentsBinaryDir(), unless the path contains one of the words "ZelmCore", "QuobCore" and "omniORB". Everything
/// but directories, symbolic links and names that end in "." counts, also a hidden file or one that can't be read. As
/// links don't, of a library's usual chain of names only the file with its full version suffix does.
///
/// Nothing protects the file: it is written in place, and of two processes that build at once the later one wins.
///
/// It is written and read under the global C++ locale of the moment. One that groups digits makes a file that no later
/// start takes in ("couldn't load Components Map"), so that each builds again: an application with such a locale makes
/// it the global one after its first getComponentsRepository().
///
/// Thread-safety: one thread at a time for a map. The repository calls these functions with its lock held.
#pragma once

#include "zelm/components/components_repository.h"
#include "zelm/core/export.h"

#include <vector>

namespace Zelm {

/// Major, minor and patch of the map format that this code reads and writes: 1, 1, 0.
ZELM_EXPORT extern std::vector<int> const codeVersion;

/// Leaves `map` loaded from the file or rebuilt, and says whether it has a row in "SharedLibraries". A map that has
/// such rows already is not read but compared with the disk like one that was.
///
/// What brings on a rebuild, and the line on standard error:
///
///     the file can't be opened                            Failed to open: <path>
///     it can't be taken in                                Rebuilding Component Map since couldn't load Components Map
///     major or minor of "Version" differ from the code's  Rebuilding Component Map since version was invalid
///     its patch is higher than the code's                 Rebuilding Component Map since patch was later than code
///                                                         reverting
///     "Components" is empty                               Rebuilding Component Map since Component Map was missing
///                                                         component list
///     "SharedLibraries" is empty                          Rebuilding Component Map since Component Map was missing
///                                                         library list
///     a library's row has an "Error", its file is gone    none
///     or has another write time, or a library has no row
///
/// An accepted file may have "Errors": see buildComponentsMap.
///
/// So a library that can't be loaded brings on a rebuild at every start until it is mended or removed. So does one
/// whose write time doesn't fit 32 signed bits, as the row keeps no more than those.
///
/// Throws what a library throws that is no std::exception.
ZELM_EXPORT bool initializeSourceMap(ComponentsRepository::Map& map);

/// Builds `map` anew by loading every component library and asking its factory what it supports, and writes the file.
/// Says whether there is a row in "SharedLibraries". The libraries stay loaded.
///
///  - A library that can't be loaded has a row with the loader's text. One without getComponentFactory, without a
///    factory, or whose factory is no LifeCycle::PassiveInterface has a clean row and adds no component.
///  - A type that two libraries support can't be made: its row's "Error" names both.
///  - A type that was in the map and isn't provided any more keeps a row, with "Library with factory is missing" if its
///    library is gone. No type disappears from the map in a build that goes through.
///  - A std::exception from a library stops the build. Its text goes into "Errors", without one an empty text, and what
///    was found so far is kept. Types of the old map that weren't found by then are dropped. If there are libraries
///    behind that one, they have no rows, and so the next start builds again. If there are none, the next start accepts
///    the file with its "Errors", as long as it has a type.
///  - Anything else that a library throws comes out of here, and nothing is written.
///
/// That the file can't be written is no failure and isn't reported: the map in memory stands.
ZELM_EXPORT bool buildComponentsMap(ComponentsRepository::Map& map);

}  // namespace Zelm
