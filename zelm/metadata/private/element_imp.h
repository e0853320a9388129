/// @file
/// Private to Element: what its pointer points at, one class for each kind but Null, and what is done to a whole tree
/// of them.
///
/// Thread-safety: that of Element.
#pragma once

#include "zelm/metadata/element.h"
#include "zelm/metadata/private/nesting.h"

#include <type_traits>
#include <utility>

namespace Zelm::MetaData {

class Element::Imp {
public:
    virtual ~Imp() = default;
    virtual Imp* Clone() const = 0;
    virtual void Accept(ConstVisitor& visitor) const = 0;
    virtual void Accept(Visitor& visitor) = 0;
    virtual bool Compare(Element const& other) const = 0;

    ElementType GetElementType() const { return type_; }
    bool isContainer() const { return type_ == ElementType::Object || type_ == ElementType::Array; }

    Imp(Imp const&) = delete;
    Imp& operator=(Imp const&) = delete;

protected:
    explicit Imp(ElementType type) : type_(type) {}

private:
    ElementType const type_;
};

/// The kinds that hold other elements.
class Element::ContainerImp : public Element::Imp {
public:
    ContainerImp* next = nullptr;  ///< for Tree::destroy alone

protected:
    using Imp::Imp;
};

/// The ways without recursion, for trees of any depth. They take more time than the standard containers' own.
class Element::Tree {
public:
    static Imp* copy(ContainerImp const& source);
    static bool equal(ContainerImp const& a, Element const& b);
    static void destroy(ContainerImp* root) noexcept;

private:
    struct Copying;
    struct Comparing;
};

template <class T>
class Element::Imp_t final : public std::conditional_t<std::is_same_v<T, Object> || std::is_same_v<T, Array>,
                                                       Element::ContainerImp, Element::Imp> {
    static constexpr bool isContainer = std::is_same_v<T, Object> || std::is_same_v<T, Array>;
    using Base = std::conditional_t<isContainer, ContainerImp, Imp>;

public:
    template <class... Args> explicit Imp_t(Args&&... args) : Base(TypeToEnum<T>()), value(std::forward<Args>(args)...)
    {
    }

    Imp* Clone() const override
    {
        if constexpr (isContainer) {
            Private::Nesting const nesting;
            return nesting.isDeep() ? Tree::copy(*this) : new Imp_t(value);
        } else {
            return new Imp_t(value);
        }
    }

    void Accept(ConstVisitor& visitor) const override { visitor.Visit(value); }
    void Accept(Visitor& visitor) override { visitor.Visit(value); }

    bool Compare(Element const& other) const override
    {
        if constexpr (isContainer) {
            Private::Nesting const nesting;
            return nesting.isDeep() ? Tree::equal(*this, other) : other.equals(value);
        } else {
            return other.equals(value);
        }
    }

    T value;
};

}  // namespace Zelm::MetaData
