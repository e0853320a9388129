// Element's ways to copy, compare and destroy trees of any depth.
#include "zelm/metadata/private/element_imp.h"
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
    static void begin(Imp const& source, Element& element, LevelStack<Copying>& levels)
    {
        if (source.GetElementType() == ElementType::Object) {
            auto* const copy = new Imp_t<Object>();
            element.imp_ = copy;
            levels.push(Parts(static_cast<Imp_t<Object> const&>(source).value), &copy->value, nullptr);
        } else {
            auto* const copy = new Imp_t<Array>();
            element.imp_ = copy;
            levels.push(Parts(static_cast<Imp_t<Array> const&>(source).value), nullptr, &copy->value);
        }
    }
};

Element::Imp* Element::Tree::copy(ContainerImp const& source)
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
        Imp const* const imp = part.element.imp_;
        if (imp && imp->isContainer())
            Copying::begin(*imp, copy, levels);
        else
            copy = part.element;
    }
    return std::exchange(root.imp_, nullptr);
}

// ---------------------------------------------------------------------------------------------------------- compare

/// Two containers of one kind and size, whose parts up to here are equal.
struct Element::Tree::Comparing {
    Parts a;
    Parts b;

    /// False if they differ in kind or size.
    static bool begin(Imp const& a, Imp const& b, LevelStack<Comparing>& levels)
    {
        if (a.GetElementType() != b.GetElementType())
            return false;
        return a.GetElementType() == ElementType::Object ? beginAs<Object>(a, b, levels) : beginAs<Array>(a, b, levels);
    }

private:
    template <class T> static bool beginAs(Imp const& a, Imp const& b, LevelStack<Comparing>& levels)
    {
        levels.push(Parts(static_cast<Imp_t<T> const&>(a).value), Parts(static_cast<Imp_t<T> const&>(b).value));
        return levels.top().a.left() == levels.top().b.left();
    }
};

bool Element::Tree::equal(ContainerImp const& a, Element const& b)
{
    LevelStack<Comparing> levels;
    if (!b.imp_ || !Comparing::begin(a, *b.imp_, levels))
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
        Imp const* const impOfA = partOfA.element.imp_;
        Imp const* const impOfB = partOfB.element.imp_;
        bool const goesDeeper = impOfA && impOfB && impOfA->isContainer();
        if (goesDeeper ? !Comparing::begin(*impOfA, *impOfB, levels) : partOfA.element != partOfB.element)
            return false;
    }
    return true;
}

// ---------------------------------------------------------------------------------------------------------- destroy

/// Needs no memory: the containers that are still to be destroyed hang together by their `next`.
void Element::Tree::destroy(ContainerImp* root) noexcept
{
    ContainerImp* pending = root;
    auto const detach = [&pending](Element& part) {
        if (!part.imp_ || !part.imp_->isContainer())
            return;
        auto* const container = static_cast<ContainerImp*>(std::exchange(part.imp_, nullptr));
        container->next = pending;
        pending = container;
    };

    while (pending) {
        ContainerImp* const container = std::exchange(pending, pending->next);
        if (container->GetElementType() == ElementType::Object) {
            for (auto const& member : static_cast<Imp_t<Object>*>(container)->value)
                detach(member.editableElement());
        } else {
            for (Element& element : static_cast<Imp_t<Array>*>(container)->value)
                detach(element);
        }
        delete container;
    }
}

}  // namespace Zelm::MetaData
