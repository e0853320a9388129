/// @file
/// The patterns of identifiers, brought into a form that can be looked up.
///
/// Identifier::covers knows patterns that don't go wild from the right, such as {1, any, 7, any} or {any, 1, 2, 3}. But
/// a wildcard hides what stands behind it, so each of them takes in exactly what a pattern that does go wild from the
/// right takes in: {1, any, any, any} and {any, any, any, any}. This is its canonical form, and a subscription is
/// looked up by that. An identifier is taken in by one canonical form of each level at most: five look-ups find all.
#pragma once

#include "zelm/msgs/identifier.h"

#include <array>

namespace Zelm::Messaging {

/// How many fields of a canonical pattern are wild, from the right: 0 to 4.
constexpr unsigned patternLevels = 5;

struct Pattern {
    unsigned long value;
    unsigned level;
};

/// The canonical form of a pattern.
Pattern canonical(Msgs::Identifier const& pattern);

/// The canonical patterns that take an identifier in, by their level. A field of 65535 in the identifier is a number
/// like any other, but a canonical pattern that shows it there is one of a higher level, so such levels are missing.
class PatternsOf {
public:
    explicit PatternsOf(Msgs::Identifier const& id);

    bool has(unsigned level) const { return has_[level]; }
    Pattern at(unsigned level) const;

private:
    unsigned long id_;
    std::array<bool, patternLevels> has_;
};

}  // namespace Zelm::Messaging
