#include "zelm/core/errors.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <typeinfo>

namespace Zelm {
namespace {

TEST(Error, isFalseByDefaultAndNamesCategoryAndCode)
{
    Error error;

    EXPECT_FALSE(bool(error));
    EXPECT_EQ(error.info(), "ERROR category: 0 code: 0");
}

TEST(Error, namesCategoryAndCodeWhenItHasNoText)
{
    Error error(7, Error::Category::ComponentRepository, "");

    EXPECT_TRUE(bool(error));
    EXPECT_EQ(error.code(), 7u);
    EXPECT_EQ(error.category(), Error::Category::ComponentRepository);
    EXPECT_EQ(error.info(), "ERROR category: 1 code: 7");
}

TEST(Error, givesItsTextAloneWhenItHasOne)
{
    EXPECT_EQ(Error(7, Error::Category::ComponentRepository, "disk full").info(), "disk full");
}

TEST(Error, isFalseWithCodeZeroEvenIfItHasAText)
{
    Error error(0, Error::Category::Generic, "text");

    EXPECT_FALSE(bool(error));
}

TEST(Error, printsCodeAndCategoryAsSignedNumbers)
{
    Error const error(4294967295u, static_cast<Error::Category>(4294967294u), "");

    EXPECT_EQ(error.info(), "ERROR category: -2 code: -1");
}

TEST(Error, copiesItsThreeFieldsAndReturnsItselfFromAssignment)
{
    Error const source(3, Error::Category::ComponentRepository, "why");
    Error copy(source);
    NoError target;

    Error& result = static_cast<Error&>(target) = source;

    for (Error const* each : {&copy, static_cast<Error*>(&target)}) {
        EXPECT_EQ(each->code(), 3u);
        EXPECT_EQ(each->category(), Error::Category::ComponentRepository);
        EXPECT_EQ(each->info(), "why");
    }
    EXPECT_EQ(&result, &target);
}

TEST(Error, keepsItsOwnTypeWhenAnotherIsAssignedAndLosesItWhenCopiedAsAnError)
{
    NoError target;
    Error& base = target;

    base = InvalidParameter();
    Error const copy = InvalidParameter();

    EXPECT_EQ(typeid(base), typeid(NoError));
    EXPECT_EQ(typeid(copy), typeid(Error));
    EXPECT_EQ(copy.code(), 1u);
    EXPECT_EQ(copy.info(), "Invalid or out-of-range parameter passed to function.");
}

TEST(Error, isDestroyedThroughItsBase)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<Error>);
    EXPECT_TRUE(std::is_polymorphic_v<Error>);
}

TEST(Error, isNotTestedWhileConstOnPurpose)
{
    EXPECT_TRUE((std::is_convertible_v<Error&, bool>));
    EXPECT_FALSE((std::is_convertible_v<Error const&, bool>));
}

TEST(NoError, isFalseAndHasNoText)
{
    NoError error;

    EXPECT_FALSE(bool(error));
    EXPECT_EQ(error.category(), Error::Category::Generic);
    EXPECT_EQ(error.info(), "ERROR category: 0 code: 0");
}

TEST(GenericError, hasTheGenericCategory)
{
    GenericError error(12, "twelve");

    EXPECT_EQ(error.code(), 12u);
    EXPECT_EQ(error.category(), Error::Category::Generic);
    EXPECT_EQ(error.info(), "twelve");
}

TEST(InvalidParameter, isTrueAndHasItsText)
{
    InvalidParameter error;

    EXPECT_TRUE(bool(error));
    EXPECT_EQ(error.code(), 1u);
    EXPECT_EQ(error.category(), Error::Category::Generic);
    EXPECT_EQ(error.info(), "Invalid or out-of-range parameter passed to function.");
}

}  // namespace
}  // namespace Zelm
