// Element's ways to copy, compare and destroy trees of any depth.
#include "zelm/metadata/private/element_held.h"
#include "zelm/metadata/private/level_stack.h"
#include "zelm/metadata/private/parts.h"

#include <utility>

namespace Zelm::MetaData {

using Private::LevelStack;
using Private::Part;
using Private::Parts;

// ------------------------------------------------------------------------------------------------------------- copy

/// A container and its copy, which is complete but for the parts that are left.
struct Element::Tree::Copying {
    Parts parts;
    Object* object;  // the copy is one of the two
    Array* array;

    Element& add(std::string const* name) const
    {
        if (!name)
            return *array->insert(Element());
        return object->insert(Object::Member(*name, Element()))->editableElement();
    }

    /// Makes the element, which is Null, an empty container of the source's kind.
    static void begin(std::uintptr_t source, Element& element, LevelStack<Copying>& levels)
    {
        if (Held::is<Object>(source)) {
            element.held_ = Held::make<Object>();
            levels.push(Parts(Held::value<Object>(source)), &Held::value<Object>(element.held_), nullptr);
        } else {
            element.held_ = Held::make<Array>();
            levels.push(Parts(Held::value<Array>(source)), nullptr, &Held::value<Array>(element.held_));
        }
    }
};

// NOLINTNEXTLINE(misc-no-recursion): see private/nesting.h
std::uintptr_t Element::Tree::copy(std::uintptr_t source)
{
    Element root;  // if memory runs out, all that is there goes with it
    LevelStack<Copying> levels;
    Copying::begin(source, root, levels);
    while (!levels.empty()) {
        Copying& level = levels.top();
        if (level.parts.left() == 0) {
            levels.pop();
            continue;
        }
        Part const part = level.parts.next();
        Element& copy = level.add(part.name);
        if (Held::isContainer(part.element.held_))
            Copying::begin(part.element.held_, copy, levels);
        else
            copy = Element(part.element);
    }
    return std::exchange(root.held_, 0);
}

// ---------------------------------------------------------------------------------------------------------- compare

/// Two containers of one kind and size, whose parts up to here are equal.
struct Element::Tree::Comparing {
    Parts a;
    Parts b;

    /// False if they differ in kind or size.
    static bool begin(std::uintptr_t a, std::uintptr_t b, LevelStack<Comparing>& levels)
    {
        if (Held::kind(a) != Held::kind(b))
            return false;
        return Held::is<Object>(a) ? beginAs<Object>(a, b, levels) : beginAs<Array>(a, b, levels);
    }

private:
    template <class T> static bool beginAs(std::uintptr_t a, std::uintptr_t b, LevelStack<Comparing>& levels)
    {
        levels.push(Parts(Held::value<T>(a)), Parts(Held::value<T>(b)));
        return levels.top().a.left() == levels.top().b.left();
    }
};

// NOLINTNEXTLINE(misc-no-recursion): see private/nesting.h
bool Element::Tree::equal(std::uintptr_t a, std::uintptr_t b)
{
    LevelStack<Comparing> levels;
    if (!Comparing::begin(a, b, levels))
        return false;
    while (!levels.empty()) {
        Comparing& level = levels.top();
        if (level.a.left() == 0) {
            levels.pop();
            continue;
        }
        Part const partOfA = level.a.next();
        Part const partOfB = level.b.next();
        // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker): both are parts of objects, or neither is
        if (partOfA.name && *partOfA.name != *partOfB.name)
            return false;
        auto const heldByA = partOfA.element.held_;
        auto const heldByB = partOfB.element.held_;
        if (Held::isContainer(heldByA) ? !Comparing::begin(heldByA, heldByB, levels)
                                       : !(partOfA.element == partOfB.element))
            return false;
    }
    return true;
}

// ---------------------------------------------------------------------------------------------------------- destroy

/// Needs no memory: the containers that are still to be destroyed hang together by their links.
void Element::Tree::destroy(std::uintptr_t root) noexcept
{
    std::uintptr_t pending = root;
    Held::next(root) = 0;
    auto const detach = [&pending](Element& part) {
        if (!Held::isContainer(part.held_))
            return;
        auto const container = std::exchange(part.held_, 0);
        Held::next(container) = pending;
        pending = container;
    };

    while (pending != 0) {
        auto const container = std::exchange(pending, Held::next(pending));
        if (Held::is<Object>(container)) {
            for (auto const& member : Held::value<Object>(container))
                detach(member.editableElement());
            Held::destroy<Object>(container);
        } else {
            for (Element& element : Held::value<Array>(container))
                detach(element);
            Held::destroy<Array>(container);
        }
    }
}

}  // namespace Zelm::MetaData
