#include "dispatcher/patterns.h"

namespace Zelm::Messaging {

namespace {

constexpr unsigned short any = 0xFFFF;

Pattern wildFromTheRight(unsigned long id, unsigned level)
{
    constexpr std::array<unsigned long, patternLevels> wildcards = {0x0, 0xFFFF, 0xFFFFFFFF, 0xFFFFFFFFFFFF,
                                                                    0xFFFFFFFFFFFFFFFF};
    return {id | wildcards[level], level};
}

}  // namespace

// The same steps, in the same order, as Identifier::covers.
Pattern canonical(Msgs::Identifier const& pattern)
{
    unsigned level = 1;
    if (pattern.category() == any)
        level = 4;
    else if (pattern.type() != any)
        level = 0;  // stands for itself alone, whatever wildcards it has
    else if (pattern.sub1() == any)
        level = 3;
    else if (pattern.sub2() == any)
        level = 2;
    return wildFromTheRight(pattern.value(), level);
}

PatternsOf::PatternsOf(Msgs::Identifier const& id) : id_(id.value()), has_()
{
    bool const hasCategory = id.category() != any;
    bool const hasSub1 = hasCategory && id.sub1() != any;
    has_ = {hasCategory && id.type() != any, hasSub1 && id.sub2() != any, hasSub1, hasCategory, true};
}

Pattern PatternsOf::at(unsigned level) const
{
    return wildFromTheRight(id_, level);
}

}  // namespace Zelm::Messaging
