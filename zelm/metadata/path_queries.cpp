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

/// One walk over a tree. It keeps the steps to where it is and makes each result once, in its final place.
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

    void visit(Element const& element, Order order, bool skipSelf)
    {
        if (order == SelfFirst && !skipSelf)
            testSelf(element);
        if (isOver())
            return;
        visitParts(element, order);
        if (order == SelfLast && !skipSelf)
            testSelf(element);
    }

    std::list<Path> results() && { return std::move(results_); }

private:
    struct Step {
        std::string const* name;  // null for an element of an Array
        unsigned long index;
    };

    bool isOver() const { return findFirstOnly_ && !results_.empty(); }

    void visitParts(Element const& element, Order order)
    {
        if (element.GetElementType() == ElementType::Object) {
            walk(element.CastTo<Object>(), order, [&](auto const& member) {
                visitPart({&member->name(), 0}, member->element(), order);
            });
        } else if (enterArrays_ && element.GetElementType() == ElementType::Array) {
            auto const& array = element.CastTo<Array>();
            walk(array, order, [&](auto const& part) {
                visitPart({nullptr, static_cast<unsigned long>(part - array.begin())}, *part, order);
            });
        }
    }

    template <class Container, class VisitAt>
    void walk(Container const& parts, Order order, VisitAt const& visitAt) const
    {
        if (order == SelfFirst) {
            for (auto part = parts.begin(); part != parts.end() && !isOver(); ++part)
                visitAt(part);
        } else {
            for (auto part = parts.end(); part != parts.begin();)
                visitAt(--part);
        }
    }

    void visitPart(Step step, Element const& part, Order orderOfParent)
    {
        steps_.push_back(step);
        // The orders take turns, but the first place of all is the first one that a plain walk meets.
        visit(part, (findFirstOnly_ || orderOfParent == SelfLast) ? SelfFirst : SelfLast, false);
        steps_.pop_back();
    }

    void testSelf(Element const& element)
    {
        if (!pathExists(element, path_))
            return;
        Path result;
        for (Step const& step : steps_)
            result.push_back(step.name ? *step.name : '[' + std::to_string(step.index) + ']');
        result.insert(result.end(), path_.begin(), path_.end());
        results_.push_back(std::move(result));
    }

    Path const path_;
    bool const findFirstOnly_;
    bool const enterArrays_;
    std::vector<Step> steps_;
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
    search.visit(element, findFirstOnly ? Search::SelfFirst : Search::SelfLast, skipSelf);
    return std::move(search).results();
}

}  // namespace Zelm::MetaData
