#include "zelm/core/exceptions.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace Zelm::Exception {
namespace {

struct PrefixCase {
    char const* name;
    std::function<std::string(std::string const&)> textOf;
    std::string prefix;
};

template <class E> std::string textOf(std::string const& message)
{
    return E(message).what();
}

PrefixCase const prefixCases[] = {
    {"Base", textOf<Base>, ""},
    {"UnknownException", textOf<UnknownException>, ""},
    {"InvalidParameter", textOf<InvalidParameter>, "Invalid Parameter: "},
    {"InconsistentParameters", textOf<InconsistentParameters>, "Inconsistent Parameters: "},
    {"InsufficientResources", textOf<InsufficientResources>, "Insufficient Resources: "},
    {"InvalidHandle", textOf<InvalidHandle>, "Invalid Handle: "},
    {"InvalidOperation", textOf<InvalidOperation>, ""},
    {"InvalidEnumValue", textOf<InvalidEnumValue>, "Invalid Enum Value: "},
    {"InvalidEnumLiteral", textOf<InvalidEnumLiteral>, "Invalid Enum Literal: "},
    {"TransportDisconnected", textOf<TransportDisconnected>, "Internal Error: "},
};

TEST(Exceptions, putTheirWordInFrontUnlessItStandsInTheTextAlready)
{
    for (auto const& row : prefixCases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.textOf("x"), row.prefix + "x");
        EXPECT_EQ(row.textOf(""), row.prefix);
        EXPECT_EQ(row.textOf(row.prefix + "x"), row.prefix + "x");
        EXPECT_EQ(row.textOf("in " + row.prefix + "x"), "in " + row.prefix + "x");
    }
}

TEST(Exceptions, keepTheirTextWhenCopiedAsBase)
{
    EXPECT_STREQ(Base(InvalidHandle("x")).what(), "Invalid Handle: x");
}

TEST(Exceptions, lookForTheirWordWithItsExactCase)
{
    EXPECT_STREQ(InvalidParameter("invalid parameter: x").what(), "Invalid Parameter: invalid parameter: x");
}

template <class E> void expectCopyKeepsTheText(E const& original, E assigned)
{
    E const copy(original);
    assigned = original;

    EXPECT_STREQ(copy.what(), original.what());
    EXPECT_STREQ(assigned.what(), original.what());
    EXPECT_TRUE(std::is_nothrow_copy_constructible_v<E>);  // a throw in flight has no room for another
}

template <class E> void expectCopyKeepsTheText()
{
    expectCopyKeepsTheText(E("some text"), E("another"));
}

template <class E> void expectCopyKeepsNameAndDetail()
{
    expectCopyKeepsTheText(E("some name", "some detail"), E("another", "one"));
}

TEST(Exceptions, keepTheirTextWhenCopied)
{
    expectCopyKeepsTheText<Base>();
    expectCopyKeepsTheText<UnknownException>();
    expectCopyKeepsTheText<InvalidParameter>();
    expectCopyKeepsTheText<InconsistentParameters>();
    expectCopyKeepsTheText<InsufficientResources>();
    expectCopyKeepsTheText<InvalidHandle>();
    expectCopyKeepsTheText<InvalidOperation>();
    expectCopyKeepsTheText<InvalidEnumValue>();
    expectCopyKeepsTheText<InvalidEnumLiteral>();
    expectCopyKeepsTheText<TransportDisconnected>();
    expectCopyKeepsNameAndDetail<FailedToCreateComponent>();
    expectCopyKeepsNameAndDetail<MissingComponent>();
    expectCopyKeepsNameAndDetail<MissingLibrary>();
    expectCopyKeepsNameAndDetail<FailedToLoad>();
}

TEST(EnumExceptions, takeTheTextOfAnInvalidOperationWithoutTheirWordOnPurpose)
{
    InvalidOperation const operation("x");

    EXPECT_STREQ(InvalidEnumValue(operation).what(), "x");
    EXPECT_STREQ(InvalidEnumLiteral(operation).what(), "x");
}

TEST(EnumExceptions, areCopiedWithoutTheirWord)
{
    InvalidEnumValue const value(InvalidOperation("x"));
    InvalidEnumLiteral const literal(InvalidOperation("x"));

    EXPECT_STREQ(InvalidEnumValue(value).what(), "x");
    EXPECT_STREQ(InvalidEnumLiteral(literal).what(), "x");
}

TEST(EnumExceptions, areMadeFromNoOtherException)
{
    EXPECT_TRUE((std::is_convertible_v<InvalidOperation const&, InvalidEnumValue>));
    EXPECT_TRUE((std::is_convertible_v<InvalidOperation const&, InvalidEnumLiteral>));
    EXPECT_FALSE((std::is_constructible_v<InvalidEnumValue, Base const&>));
    EXPECT_FALSE((std::is_constructible_v<InvalidEnumLiteral, Base const&>));
}

TEST(EnumExceptions, areNoInvalidOperation)
{
    EXPECT_FALSE((std::is_base_of_v<InvalidOperation, InvalidEnumValue>));
    EXPECT_FALSE((std::is_base_of_v<InvalidOperation, InvalidEnumLiteral>));
    EXPECT_THROW(
        {
            try {
                throw InvalidEnumValue("x");
            } catch (InvalidOperation const&) {
                FAIL() << "caught as an InvalidOperation";
            }
        },
        InvalidEnumValue);
}

template <class E> void expectCaughtAsTheRoots(E const& error)
{
    EXPECT_THROW(throw error, Base);
    EXPECT_THROW(throw error, std::runtime_error);
}

TEST(Exceptions, areCaughtAsBaseAndAsRuntimeError)
{
    expectCaughtAsTheRoots(UnknownException("x"));
    expectCaughtAsTheRoots(InvalidParameter("x"));
    expectCaughtAsTheRoots(InconsistentParameters("x"));
    expectCaughtAsTheRoots(InsufficientResources("x"));
    expectCaughtAsTheRoots(InvalidHandle("x"));
    expectCaughtAsTheRoots(InvalidOperation("x"));
    expectCaughtAsTheRoots(InvalidEnumValue("x"));
    expectCaughtAsTheRoots(InvalidEnumLiteral("x"));
    expectCaughtAsTheRoots(TransportDisconnected("x"));
    expectCaughtAsTheRoots(FailedToCreateComponent("x", "y"));
    expectCaughtAsTheRoots(MissingComponent("x", "y"));
    expectCaughtAsTheRoots(MissingLibrary("x", "y"));
    expectCaughtAsTheRoots(FailedToLoad("x", "y"));
}

TEST(ComponentExceptions, composeTheirTextFromNameAndDetail)
{
    EXPECT_STREQ(FailedToCreateComponent("Motor", "no power").what(),
                 "Failed to Create Component Type \"Motor\": no power");
    EXPECT_STREQ(MissingComponent("Motor", "No entry found").what(),
                 "Failed to Create Component Type \"Motor\": Component not found: No entry found");
    EXPECT_STREQ(MissingLibrary("libM.so.1", "No entry found").what(),
                 "Library \"libM.so.1\" was not found: No entry found");
    EXPECT_STREQ(FailedToLoad("libM.so.1", "no such file").what(),
                 "Component \"libM.so.1\" failed to load: no such file");
}

TEST(ComponentExceptions, addTheirWordsEvenIfTheDetailHoldsThemAlready)
{
    FailedToCreateComponent const inner("Motor", "x");

    EXPECT_STREQ(FailedToCreateComponent("Motor", inner.what()).what(),
                 "Failed to Create Component Type \"Motor\": Failed to Create Component Type \"Motor\": x");
}

// ---- Who derives from whom -----------------------------------------------------------------------------------------

/// For each class of the family, whether E is it or derives from it.
template <class E> std::vector<bool> ancestors()
{
    return {
        std::is_base_of_v<std::runtime_error, E>,     std::is_base_of_v<Base, E>,
        std::is_base_of_v<UnknownException, E>,       std::is_base_of_v<InvalidParameter, E>,
        std::is_base_of_v<InconsistentParameters, E>, std::is_base_of_v<InsufficientResources, E>,
        std::is_base_of_v<InvalidHandle, E>,          std::is_base_of_v<InvalidOperation, E>,
        std::is_base_of_v<InvalidEnumValue, E>,       std::is_base_of_v<InvalidEnumLiteral, E>,
        std::is_base_of_v<TransportDisconnected, E>,  std::is_base_of_v<FailedToCreateComponent, E>,
        std::is_base_of_v<MissingComponent, E>,       std::is_base_of_v<MissingLibrary, E>,
        std::is_base_of_v<FailedToLoad, E>,
    };
}

/// E derives from Parent, in public and once, and from nothing of the family that Parent doesn't derive from.
template <class E, class Parent> void expectDerivedFromNothingBut()
{
    EXPECT_TRUE((std::is_convertible_v<E*, Parent*>));
    EXPECT_FALSE((std::is_same_v<E, Parent>));

    std::vector<bool> const ofParent = ancestors<Parent>();
    std::vector<bool> const ofE = ancestors<E>();
    int added = 0;
    for (std::size_t i = 0; i < ofE.size(); ++i) {
        EXPECT_TRUE(ofE[i] || !ofParent[i]);
        added += ofE[i] && !ofParent[i];
    }
    EXPECT_EQ(added, 1);  // E itself
}

TEST(Exceptions, haveEachTheOneParentThatTheirHandlersCountOn)
{
    expectDerivedFromNothingBut<Base, std::runtime_error>();
    expectDerivedFromNothingBut<UnknownException, Base>();
    expectDerivedFromNothingBut<InvalidParameter, Base>();
    expectDerivedFromNothingBut<InconsistentParameters, Base>();
    expectDerivedFromNothingBut<InsufficientResources, Base>();
    expectDerivedFromNothingBut<InvalidHandle, Base>();
    expectDerivedFromNothingBut<InvalidOperation, Base>();
    expectDerivedFromNothingBut<InvalidEnumValue, Base>();
    expectDerivedFromNothingBut<InvalidEnumLiteral, Base>();
    expectDerivedFromNothingBut<TransportDisconnected, Base>();
    expectDerivedFromNothingBut<FailedToCreateComponent, Base>();
    expectDerivedFromNothingBut<MissingComponent, FailedToCreateComponent>();
    expectDerivedFromNothingBut<MissingLibrary, Base>();
    expectDerivedFromNothingBut<FailedToLoad, Base>();
}

}  // namespace
}  // namespace Zelm::Exception
