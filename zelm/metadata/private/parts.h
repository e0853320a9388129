/// @file
/// Private to whatever walks a tree of elements. Shows the parts of one container in turn: an Object's members in name
/// order, or an Array's elements.
///
///     for (Parts parts(array); parts.left() != 0;)
///         count(parts.next().element);
///
/// Valid as long as the container isn't changed.
///
/// Thread-safety: a plain value without locks.
#pragma once

#include "zelm/metadata/element.h"

#include <cstddef>
#include <string>

namespace Zelm::MetaData::Private {

struct Part {
    std::string const* name;  // null in an Array
    Element const& element;
};

class Parts {
public:
    explicit Parts(Object const& object) : left_(object.size()), isObject_(true), member_(object.begin()) {}
    explicit Parts(Array const& array) : left_(array.size()), isObject_(false), element_(array.begin()) {}

    bool isObject() const { return isObject_; }
    std::size_t left() const { return left_; }

    Part next()
    {
        --left_;
        if (!isObject_)
            return {nullptr, *element_++};
        auto const& member = *member_++;
        return {&member.name(), member.element()};
    }

private:
    std::size_t left_;
    bool isObject_;
    Object::const_iterator member_;
    Array::const_iterator element_;
};

}  // namespace Zelm::MetaData::Private
