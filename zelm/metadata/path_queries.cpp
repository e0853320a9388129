#include "zelm/metadata/path_queries.h"

#include <utility>
#include <vector>

namespace Zelm::MetaData {

namespace {

/// The member of that name, or null if there is none or the element is no Object.
Element const* memberOf(Element const& element, std::string_view name)
{
    if (element.GetElementType() != ElementType::Object)
        return nullptr;
    auto const& object = element.CastTo<Object>();
    auto const member = object.find(name);
    return member == object.end() ? nullptr : &member->element();
}

bool pathExists(Element const& element, Path const& path)
{
    Element const* current = &element;
    for (std::string const& name : path) {
        current = memberOf(*current, name);
        if (!current)
            return false;
    }
    return true;
}

/// One walk over a tree, of any depth. It keeps the way to where it is and makes each result once, in its final place.
class Search {
public:
    /// The promised order is that of a search in which each call puts its own place into an empty list, and then, child
    /// by child, one result after the other to the front of that. So a call's results are those of its children from
    /// the last to the first, each turned round, and its own place behind them: SelfLast. Turned round as a whole that
    /// is SelfFirst: its own place, and then its children from the first to the last, each in SelfLast order.
    enum Order { SelfFirst, SelfLast };

    Search(Path path, bool findFirstOnly, bool enterArrays)
        : path_(std::move(path)), findFirstOnly_(findFirstOnly), enterArrays_(enterArrays)
    {
    }

    void run(Element const& root, bool skipSelf)
    {
        enter({nullptr, 0}, root, findFirstOnly_ ? SelfFirst : SelfLast, skipSelf);
        while (!levels_.empty() && !isOver()) {
            if (!enterNextPart())
                leave();
        }
    }

    std::list<Path> results() && { return std::move(results_); }

private:
    struct Step {
        std::string const* name;  // null for an element of an Array
        unsigned long index;
    };

    /// An element that the search has come to and not left yet. The next of its parts is the one at `member` or `index`
    /// in SelfFirst order, and the one in front of that in SelfLast order.
    struct Level {
        Step step;  // from the level before
        Element const& element;
        Order order;
        bool skipSelf;
        Object const* object = nullptr;
        Object::const_iterator member{};
        Array const* array = nullptr;
        unsigned long index = 0;
    };

    bool isOver() const { return findFirstOnly_ && !results_.empty(); }

    void enter(Step step, Element const& element, Order order, bool skipSelf)
    {
        Level level{step, element, order, skipSelf};
        if (element.GetElementType() == ElementType::Object) {
            level.object = &element.CastTo<Object>();
            level.member = order == SelfFirst ? level.object->begin() : level.object->end();
        } else if (enterArrays_ && element.GetElementType() == ElementType::Array) {
            level.array = &element.CastTo<Array>();
            level.index = order == SelfFirst ? 0 : level.array->size();
        }
        // Where no part is entered, nothing but an empty path can end: an Array has no member either.
        if (!level.object && !level.array && !path_.empty())
            return;
        levels_.push_back(level);
        if (order == SelfFirst && !skipSelf)
            testSelf(element);
    }

    void leave()
    {
        Level const& level = levels_.back();
        if (level.order == SelfLast && !level.skipSelf)
            testSelf(level.element);
        levels_.pop_back();
    }

    /// False if the innermost level has no part left.
    bool enterNextPart()
    {
        Level& level = levels_.back();
        bool const isSelfFirst = level.order == SelfFirst;
        // The orders take turns, but the first place of all is the first one that a plain walk meets.
        Order const order = (findFirstOnly_ || !isSelfFirst) ? SelfFirst : SelfLast;
        if (level.object && level.member != (isSelfFirst ? level.object->end() : level.object->begin())) {
            Object::Member const& member = isSelfFirst ? *level.member++ : *--level.member;
            enter({&member.name(), 0}, member.element(), order, false);
            return true;
        }
        if (level.array && level.index != (isSelfFirst ? level.array->size() : 0)) {
            unsigned long const index = isSelfFirst ? level.index++ : --level.index;
            enter({nullptr, index}, (*level.array)[index], order, false);
            return true;
        }
        return false;
    }

    void testSelf(Element const& element)
    {
        if (!pathExists(element, path_))
            return;
        Path result;
        for (auto level = levels_.begin() + 1; level != levels_.end(); ++level)
            result.push_back(level->step.name ? *level->step.name : '[' + std::to_string(level->step.index) + ']');
        result.insert(result.end(), path_.begin(), path_.end());
        results_.push_back(std::move(result));
    }

    Path const path_;
    bool const findFirstOnly_;
    bool const enterArrays_;
    std::vector<Level> levels_;  // from the root to where the search is
    std::list<Path> results_;
};

}  // namespace

bool HasElement(Element const& element, std::string const& name)
{
    return memberOf(element, name) != nullptr;
}

bool HasElement(Element const& element, std::string_view name)
{
    return memberOf(element, name) != nullptr;
}

Element& GetElement(Element& element, Path path)
{
    Element* current = &element;
    for (std::string const& name : path)
        current = &(*current)[name];
    return *current;
}

Element const& GetConstElement(Element const& element, Path path)
{
    Element const* current = &element;
    for (std::string const& name : path)
        current = &(*current)[name];
    return *current;
}

Path pathFromString(std::string const& text)
{
    return text.empty() ? Path() : Path{text};
}

std::list<Path> findSubElements(Element const& element, Path path, bool findFirstOnly)
{
    bool const skipSelf = path.empty();
    return findSubElementsHelper(element, std::move(path), findFirstOnly, skipSelf, false);
}

std::list<Path> findSubElementsEx(Element const& element, Path path, bool findFirstOnly)
{
    bool const skipSelf = path.empty();
    return findSubElementsHelper(element, std::move(path), findFirstOnly, skipSelf, true);
}

std::list<Path> findSubElementsHelper(Element const& element, Path path, bool findFirstOnly, bool skipSelf,
                                      bool enterArrays)
{
    Search search(std::move(path), findFirstOnly, enterArrays);
    search.run(element, skipSelf);
    return std::move(search).results();
}

}  // namespace Zelm::MetaData
