/// @file
/// The quick way into a components map: reads the text of its file if that is in the form in which the library writes
/// it, as it is at almost every start.
///
///     if (!Private::takeWrittenForm(map, text))
///         ...    // the rule: ReaderJson, and the map's copyFromMetaData
///
/// The form is the pretty one of the writer, byte by byte: keys in their order, tabs, " : ". In it every string is
/// ASCII without an escape and every number an int, and there is no "Errors". Such a text says to the reader and to the
/// reflectors what it says here, so the rows are made at once, without a tree of elements and copies of the rows. All
/// other texts go the way of the rule.
///
/// A reader of streams takes numbers by the global C++ locale, and locales may read the same digits in other ways: so
/// this is for the time that the classic locale is the global one.
#pragma once

#include "zelm/components/components_repository.h"

#include <string_view>

namespace Zelm::Private {

/// Puts into the map what the text says up to its closing brace; what stands behind that isn't looked at. False, with
/// the map as it was, if the text isn't in that form. Throws std::bad_alloc, with the map as it was.
bool takeWrittenForm(ComponentsRepository::Map& map, std::string_view text);

}  // namespace Zelm::Private
