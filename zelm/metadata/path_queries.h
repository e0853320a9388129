/// @file
/// Addressing an element tree by a path: the names of the members to go through, from the root down.
///
///     long const port = GetConstElement(settings, {"server", "port"}).asInt64();   // throws if it isn't there
///     GetElement(settings, {"server", "port"}) = Trivial_T<long>(8080);            // makes what is missing
///     for (Path const& place : findSubElementsEx(settings, {"port"}, false)) ...   // every "port" there is
///
/// A path has no text form, and a name in it stands for itself: no separators, no wildcards. Only in the results of
/// findSubElementsEx a step may also be "[n]", the n-th element of an Array, counted from 0. Such a step can't be told
/// from a member of that name, and GetElement and GetConstElement take it for one.
///
/// Thread-safety: plain functions without state. GetElement is a write to the tree, all others are reads.
#pragma once

#include "zelm/core/export.h"
#include "zelm/metadata/element.h"

#include <list>
#include <string>
#include <string_view>

namespace Zelm::MetaData {

using Path = std::list<std::string>;

/// Whether the element is an Object with a member of that name. Answers for every kind, throws nothing and allocates
/// nothing.
ZELM_EXPORT bool HasElement(Element const& element, std::string const& name);
ZELM_EXPORT bool HasElement(Element const& element, std::string_view name);
inline bool HasElement(Element const& element, char const* name)
{
    return HasElement(element, std::string_view(name));
}

/// The element at the end of the path, or `element` itself for an empty path. Never fails, since it goes by non-const
/// indexing: a member that is missing is made as Null, and anything else than an Object on the way becomes one and
/// loses what it held. A failing allocation leaves the part of the path that was made by then.
ZELM_EXPORT Element& GetElement(Element& element, Path path);

/// The element at the end of the path, or `element` itself for an empty path. Changes nothing.
/// Throws Zelm::Exception::InvalidParameter "Object member not found: <name>" for a step that isn't there, and
/// Zelm::Exception::InvalidOperation "Looking for <name> in Element which isn't an Object" for one from another kind.
ZELM_EXPORT Element const& GetConstElement(Element const& element, Path path);

/// The path of one step that is the whole text, whatever stands in it; the empty path for an empty text.
ZELM_EXPORT Path pathFromString(std::string const& text);

/// Every place in the tree at which `path` can be followed through Objects to its end: the paths from `element` to
/// those ends. Places below or inside another one count, too. An empty path ends everywhere, so that it lists all
/// elements below `element`, but not `element` itself.
///
/// `findFirstOnly` ends the search at the first place: at `element` itself, else depth first by names. The result holds
/// one path at most then.
///
/// The order of the results is fixed but serves nobody, so sort them where order matters: what is found at an element
/// stands behind all that is found below it, the results of its later members before those of the earlier ones, and
/// within one member's results this is the other way round, and so on with each level.
///
/// findSubElements does not look into Arrays.
ZELM_EXPORT std::list<Path> findSubElements(Element const& element, Path path, bool findFirstOnly);
/// The same, but goes through Arrays, with steps "[n]" in the results. They stand in front of the match only: `path`
/// itself never crosses an Array.
ZELM_EXPORT std::list<Path> findSubElementsEx(Element const& element, Path path, bool findFirstOnly);

/// The search behind both. `skipSelf` leaves `element` itself out, `enterArrays` goes through Arrays.
ZELM_EXPORT std::list<Path> findSubElementsHelper(Element const& element, Path path, bool findFirstOnly, bool skipSelf,
                                                  bool enterArrays);

}  // namespace Zelm::MetaData
