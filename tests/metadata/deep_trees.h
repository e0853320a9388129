/// @file
/// Trees that are much deeper than any stack could hold a call for each level, and ways through them that make none.
#pragma once

#include "zelm/metadata/element.h"

#include "tests/metadata/elements.h"
#include "tests/support/child_process.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace Zelm::MetaData::Testing {

/// Whether each level takes much more time than usual.
constexpr bool levelsAreDear = Zelm::Testing::underSanitizer || Zelm::Testing::underEmulation;

/// On a small stack, a call for each of these would have to do with a few bytes.
constexpr unsigned long deepLevels = levelsAreDear ? 50000 : 200000;

/// For one test of each operation: what fits into no ordinary thread's stack either.
constexpr unsigned long aMillionLevels = levelsAreDear ? deepLevels : 1000000;

/// The kind of the level that holds `levelsBelow` others, when most of them are Objects.
constexpr bool isArrayLevel(unsigned long levelsBelow)
{
    return levelsBelow % 20 == 0;
}

/// That many containers, one inside the other. Most are Objects with the one member "a"; each twentieth is an Array of
/// a number, the next container and an empty Object.
inline Element deepTree(Element innermost, unsigned long levels = deepLevels)
{
    Element tree = std::move(innermost);
    for (unsigned long below = 0; below < levels; ++below) {
        if (isArrayLevel(below)) {
            Array array;
            array.insert(integer(static_cast<long>(below)));
            array.insert(std::move(tree));
            array.insert(Element(Object()));
            tree = Element(std::move(array));
        } else {
            Object object;
            object.insert(Object::Member("a", std::move(tree)));
            tree = Element(std::move(object));
        }
    }
    return tree;
}

/// Nothing but Arrays of one element.
inline Element deepArrays(Element innermost, unsigned long levels)
{
    Element tree = std::move(innermost);
    for (unsigned long below = 0; below < levels; ++below) {
        Array array;
        array.insert(std::move(tree));
        tree = Element(std::move(array));
    }
    return tree;
}

/// The text of deepArrays in WriterJson's compact form.
inline std::string deepArraysText(std::string const& innermost, unsigned long levels)
{
    return std::string(levels, '[') + innermost + std::string(levels, ']');
}

/// What lies inside that many levels of a deepTree. Throws std::runtime_error if they aren't as deepTree makes them.
inline Element const& innermostOf(Element const& tree, unsigned long levels = deepLevels)
{
    Element const* current = &tree;
    for (unsigned long below = levels; below-- > 0;) {
        Element const& level = *current;
        bool const isAsMade = isArrayLevel(below)
                                  ? level.GetElementType() == ElementType::Array && level.CastTo<Array>().size() == 3 &&
                                        level[0].asInt64() == static_cast<long>(below) && level[2] == Object()
                                  : level.GetElementType() == ElementType::Object && level.CastTo<Object>().size() == 1;
        if (!isAsMade)
            throw std::runtime_error("no deepTree above level " + std::to_string(below));
        current = isArrayLevel(below) ? &level[1] : &level["a"];
    }
    return *current;
}

/// The same for writing.
inline Element& innermostOf(Element& tree, unsigned long levels = deepLevels)
{
    return const_cast<Element&>(innermostOf(std::as_const(tree), levels));
}

/// The text of a deepTree in WriterJson's compact form, put together level by level.
inline std::string deepText(std::string const& innermost, unsigned long levels = deepLevels)
{
    std::string text;
    for (unsigned long below = levels; below-- > 0;)
        text += isArrayLevel(below) ? "[" + std::to_string(below) + "," : "{\"a\":";
    text += innermost;
    for (unsigned long below = 0; below < levels; ++below)
        text += isArrayLevel(below) ? ",{}]" : "}";
    return text;
}

}  // namespace Zelm::MetaData::Testing
