#include "zelm/msgs/address.h"

#include "tests/metadata/elements.h"
#include "tests/support/printed_by.h"
#include "tests/support/vtable_slot.h"
#include "zelm/metadata/writer_json.h"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <type_traits>
#include <utility>

namespace Zelm::Msgs {
namespace {

using Exts::SenderId;
using MetaData::Element;
using MetaData::Object;
using MetaData::Testing::array;
using MetaData::Testing::integer;
using MetaData::Testing::object;
using MetaData::Testing::string;
using Zelm::Testing::printedBy;
using Zelm::Testing::slotOf;

using Parts = std::vector<std::string>;

static_assert(std::is_base_of_v<MetaData::ReflectorArray<std::string>, ReflectedAddress>);
static_assert(sizeof(ReflectedAddress) == sizeof(MetaData::ReflectorArray<std::string>), "no data of its own");
static_assert(std::has_virtual_destructor_v<SenderId>);
static_assert(sizeof(SenderId) == sizeof(void*) + sizeof(Parts), "its parts and nothing else");
static_assert(!std::is_default_constructible_v<ReflectedAddress>);

std::string printed(Parts const& address)
{
    std::ostringstream stream;
    stream << address;
    return stream.str();
}

std::string jsonOf(MetaData::MirroredObject const& mirrored)
{
    Element element = object({});
    mirrored.copyToMetaData(element);
    std::ostringstream stream;
    MetaData::WriterJson::Write(element, stream, false);
    return stream.str();
}

struct Letter : MetaData::MirroredObject {
    ReflectedAddress optional{this, "optional", false};
    ReflectedAddress required{this, "required", true};
    ReflectedAddress given{this, "given", Parts{"a", "b"}};
};

// ------------------------------------------------------------------------------------------------- ReflectedAddress

TEST(ReflectedAddress, isUnsetOrEmptyOrAsGivenAtFirst)
{
    Letter const letter;

    EXPECT_FALSE(letter.optional.initialized());
    EXPECT_TRUE(letter.required.isRequired());
    EXPECT_EQ(letter.required(), Parts());
    EXPECT_TRUE(letter.given.isRequired());
    EXPECT_EQ(letter.given(), (Parts{"a", "b"}));
}

TEST(ReflectedAddress, isNotEncodedAtFirst)
{
    Letter const letter;

    EXPECT_FALSE(letter.optional.encoded());
    EXPECT_FALSE(letter.required.encoded());
    EXPECT_FALSE(letter.given.encoded());
}

struct BehindAddress : ReflectedAddress {
    virtual void next() = 0;
};

TEST(ReflectedAddress, keepsItsVirtualFunctionsInTheirPlacesBehindTheDestructor)
{
    using Array = MetaData::ReflectorArray<std::string>;

    EXPECT_EQ(slotOf(&ReflectedAddress::copyToMetaData), 2);
    EXPECT_EQ(slotOf(&ReflectedAddress::copyFromMetaData), 3);
    EXPECT_EQ(slotOf(static_cast<void (Array::*)(Parts const&)>(&Array::assign)), 4);
    EXPECT_EQ(slotOf(static_cast<void (Array::*)(Element const&)>(&Array::assign)), 5);
    EXPECT_EQ(slotOf(&BehindAddress::next), 6);
}

TEST(ReflectedAddress, isAPlainArrayOfStringsUnderItsName)
{
    EXPECT_EQ(jsonOf(Letter()), R"({"given":["a","b"],"required":[]})");
}

TEST(ReflectedAddress, registersUnderItsName)
{
    Letter const letter;

    EXPECT_TRUE(letter.hasMember("optional"));
    EXPECT_EQ(letter.optional.name(), "optional");
}

TEST(ReflectedAddress, readsAsTheEmptyListWhileUnsetOnPurpose)
{
    Letter const letter;

    EXPECT_EQ(letter.optional(), Parts());
    EXPECT_FALSE(letter.optional.initialized());
    EXPECT_EQ(printed(letter.optional()), "{  }");
}

TEST(ReflectedAddress, sharesTheEmptyListWithEveryOtherUnsetOne)
{
    ReflectedAddress const first(nullptr, "first", false);
    ReflectedAddress const second(nullptr, "second", false);

    EXPECT_EQ(&first(), &second());
}

TEST(ReflectedAddress, readsAsTheEmptyListAfterResetToo)
{
    Letter letter;
    letter.optional = Parts{"a"};

    letter.optional.reset();

    EXPECT_EQ(std::as_const(letter).optional(), Parts());
}

TEST(ReflectedAddress, isSetByMereWriteAccessOnPurpose)
{
    Letter letter;

    letter.optional();

    EXPECT_TRUE(letter.optional.initialized());
    EXPECT_EQ(std::as_const(letter).optional(), Parts());
    EXPECT_EQ(jsonOf(letter), R"({"given":["a","b"],"optional":[],"required":[]})");
}

TEST(ReflectedAddress, takesPartsThroughItsWriteAccess)
{
    Letter letter;

    letter.optional().push_back("x");
    letter.optional().push_back("y");

    EXPECT_EQ(std::as_const(letter).optional(), (Parts{"x", "y"}));
}

TEST(ReflectedAddress, keepsARequiredStateThroughWriteAccess)
{
    Letter letter;

    letter.required().push_back("x");

    EXPECT_TRUE(letter.required.isRequired());
}

TEST(ReflectedAddress, isSetByAssigningParts)
{
    Letter letter;

    ReflectedAddress& result = letter.optional = Parts{"x", "y"};

    EXPECT_EQ(&result, &letter.optional);
    EXPECT_TRUE(letter.optional.initialized());
    EXPECT_EQ(std::as_const(letter).optional(), (Parts{"x", "y"}));
}

TEST(ReflectedAddress, isSetByAssigningNoParts)
{
    Letter letter;

    letter.optional = Parts();

    EXPECT_TRUE(letter.optional.initialized());
}

TEST(ReflectedAddress, isSetByAssigningAListInBraces)
{
    Letter letter;

    letter.optional = {"x", "y"};
    letter.given = {};

    EXPECT_EQ(std::as_const(letter).optional(), (Parts{"x", "y"}));
    EXPECT_EQ(std::as_const(letter).given(), Parts());
}

TEST(ReflectedAddress, takesPartsAndStateOfAnotherAddress)
{
    Letter source;
    Letter target;
    source.optional = Parts{"x"};
    target.given = source.optional;
    target.required = source.given;

    EXPECT_EQ(std::as_const(target).given(), (Parts{"x"}));
    EXPECT_FALSE(target.given.isRequired());
    EXPECT_EQ(target.given.name(), "given");
    EXPECT_EQ(std::as_const(target).required(), (Parts{"a", "b"}));
}

/// Counts the calls of both assign operations.
class WatchedAddress : public ReflectedAddress {
public:
    using ReflectedAddress::operator=;
    WatchedAddress() : ReflectedAddress(nullptr, "address", false) {}

    void assign(Parts const& parts) override
    {
        ++assignedParts;
        ReflectedAddress::assign(parts);
    }
    void assign(Element const& source) override
    {
        ++assignedElements;
        ReflectedAddress::assign(source);
    }

    int assignedParts = 0;
    int assignedElements = 0;
};

TEST(ReflectedAddress, isAssignedThroughTheVirtualOperations)
{
    WatchedAddress address;

    address = Parts{"x"};
    EXPECT_EQ(address.assignedParts, 1);
    EXPECT_EQ(address.assignedElements, 0);

    address = object({{"address", array({string("y")})}}).CastTo<Object>();
    EXPECT_EQ(address.assignedParts, 2);
    EXPECT_EQ(address.assignedElements, 1);
}

// ------------------------------------------------------------------------------------------------ from an Object

TEST(ReflectedAddressFromAnObject, takesAnArrayOfStrings)
{
    Letter letter;
    letter.optional = Parts{"old", "old"};

    ReflectedAddress& result = letter.optional =
        object({{"optional", array({string("x"), string("")})}}).CastTo<Object>();

    EXPECT_EQ(&result, &letter.optional);
    EXPECT_EQ(std::as_const(letter).optional(), (Parts{"x", ""}));
    EXPECT_TRUE(letter.optional.initialized());
}

TEST(ReflectedAddressFromAnObject, isUnsetIfThereIsNoSuchMember)
{
    Letter letter;
    letter.optional = Parts{"old"};

    letter.optional = object({{"another", array({string("x")})}}).CastTo<Object>();

    EXPECT_FALSE(letter.optional.initialized());
    EXPECT_EQ(std::as_const(letter).optional(), Parts());
}

TEST(ReflectedAddressFromAnObject, releasesTheOldPartsIfThereIsNoSuchMember)
{
    Letter letter;
    letter.optional = Parts{"old"};

    letter.optional = Object();

    EXPECT_EQ(letter.optional(), Parts());  // set now, by the write access
    EXPECT_EQ(letter.optional().capacity(), 0u);
}

TEST(ReflectedAddressFromAnObject, isEmptiedAndStaysSetIfItIsRequiredAndThereIsNoSuchMember)
{
    Letter letter;

    letter.given = Object();

    EXPECT_TRUE(letter.given.isRequired());
    EXPECT_EQ(std::as_const(letter).given(), Parts());
}

TEST(ReflectedAddressFromAnObject, keepsTheOldPartsAndPrintsALineForWhatIsNoArray)
{
    Letter letter;
    letter.optional = Parts{"old"};

    std::string const out = printedBy([&] {
        letter.optional = object({{"optional", string("x")}}).CastTo<Object>();
        letter.required = object({{"required", Element()}}).CastTo<Object>();
    });

    EXPECT_EQ(out, "Exception MetaDat::ReflectorArray Should have gotten an Array, but didn't\n"
                   "Exception MetaDat::ReflectorArray Should have gotten an Array, but didn't\n");
    EXPECT_EQ(std::as_const(letter).optional(), (Parts{"old"}));
}

TEST(ReflectedAddressFromAnObject, keepsTheOldPartsAndPrintsALineForAPartThatIsNoString)
{
    Letter letter;
    letter.optional = Parts{"old"};

    std::string const out = printedBy([&] {
        letter.optional = object({{"optional", array({string("x"), integer(2)})}}).CastTo<Object>();
    });

    EXPECT_EQ(out, "Exception MetaDat::ReflectorArray MetaData Array corrupt for optional\n");
    EXPECT_EQ(std::as_const(letter).optional(), (Parts{"old"}));
}

TEST(ReflectedAddressFromAnObject, staysUnsetIfItCantBeRead)
{
    Letter letter;

    printedBy([&] { letter.optional = object({{"optional", array({integer(2)})}}).CastTo<Object>(); });

    EXPECT_FALSE(letter.optional.initialized());
}

// ------------------------------------------------------------------------------------------------------- equality

TEST(ReflectedAddressEquality, holdsBetweenUnsetOnesAndBetweenSetOnesOfTheSameParts)
{
    struct Case {
        char const* why;
        std::optional<Parts> left;
        std::optional<Parts> right;
        bool equal;
    };
    Case const cases[] = {
        {"both unset", {}, {}, true},
        {"unset and empty differ", {}, Parts{}, false},
        {"unset and set differ", {}, Parts{"a"}, false},
        {"both empty", Parts{}, Parts{}, true},
        {"the same parts", Parts{"a", "b"}, Parts{"a", "b"}, true},
        {"another order", Parts{"a", "b"}, Parts{"b", "a"}, false},
        {"one part more", Parts{"a"}, Parts{"a", "b"}, false},
        {"another part", Parts{"a", "b"}, Parts{"a", "c"}, false},
    };
    for (Case const& row : cases) {
        SCOPED_TRACE(row.why);
        ReflectedAddress left(nullptr, "left", false);
        ReflectedAddress right(nullptr, "right", false);
        if (row.left)
            left = *row.left;
        if (row.right)
            right = *row.right;

        EXPECT_EQ(left == right, row.equal);
        EXPECT_EQ(right == left, row.equal);
        EXPECT_EQ(left != right, !row.equal);
    }
}

TEST(ReflectedAddressEquality, doesNotLookAtTheNameNorAtRequired)
{
    Letter letter;
    letter.optional = Parts{"a", "b"};

    EXPECT_TRUE(letter.optional == letter.given);
}

// --------------------------------------------------------------------------------------------------------- SenderId

TEST(SenderId, holdsItsPartsInOrder)
{
    EXPECT_EQ(SenderId({"a", "b"}).parts(), (Parts{"a", "b"}));
    EXPECT_EQ(SenderId({}).parts(), Parts());
}

TEST(SenderId, givesWriteAccessToItsParts)
{
    SenderId id({"a"});

    id.parts().push_back("b");

    EXPECT_EQ(std::as_const(id).parts(), (Parts{"a", "b"}));
}

TEST(SenderId, comparesLengthAndPartsPositionByPosition)
{
    EXPECT_TRUE(SenderId({"a", "b"}) == SenderId({"a", "b"}));
    EXPECT_FALSE(SenderId({"a", "b"}) != SenderId({"a", "b"}));
    EXPECT_TRUE(SenderId({"a", "b"}) != SenderId({"b", "a"}));
    EXPECT_TRUE(SenderId({"a", "b"}) != SenderId({"a"}));
    EXPECT_FALSE(SenderId({"a"}) == SenderId({"a", "b"}));
    EXPECT_TRUE(SenderId({}) == SenderId({}));
}

struct BehindSenderId : SenderId {
    virtual void next() = 0;
};

TEST(SenderId, hasNoVirtualFunctionButItsDestructor)
{
    EXPECT_EQ(slotOf(&BehindSenderId::next), 2);
}

// ----------------------------------------------------------------------------------------------------------- inTree

TEST(InTree, isTrueAtTheRootAndBelowIt)
{
    struct Case {
        char const* why;
        Parts root;
        Parts address;
        bool inTree;
    };
    Case const cases[] = {
        {"the empty root takes in the empty address", {}, {}, true},
        {"the empty root takes in everything", {}, {"a"}, true},
        {"the root itself", {"a", "b"}, {"a", "b"}, true},
        {"below the root", {"a", "b"}, {"a", "b", "c"}, true},
        {"above the root", {"a", "b"}, {"a"}, false},
        {"the empty address lies under no part", {"a"}, {}, false},
        {"beside the root", {"a", "b"}, {"a", "c", "d"}, false},
        {"another first part", {"a", "b"}, {"c", "b"}, false},
        {"a part matches as a whole string only", {"ab"}, {"abc"}, false},
        {"nor does a longer part match a shorter one", {"abc"}, {"ab"}, false},
        {"case counts", {"a"}, {"A"}, false},
        {"an empty part is a part", {""}, {"", "a"}, true},
        {"and matches nothing else", {""}, {"a"}, false},
    };
    for (Case const& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(inTree(row.root, row.address), row.inTree);
    }
}

// -------------------------------------------------------------------------------------------------- the printed form

TEST(PrintedAddress, standsBetweenBracesWithCommas)
{
    EXPECT_EQ(printed({}), "{  }");
    EXPECT_EQ(printed({"a"}), "{ a }");
    EXPECT_EQ(printed({"a", "b"}), "{ a, b }");
    EXPECT_EQ(printed({"a", "b", "c"}), "{ a, b, c }");
}

TEST(PrintedAddress, neitherQuotesNorEscapes)
{
    EXPECT_EQ(printed({"", "a, b", "\"}\n"}), "{ , a, b, \"}\n }");
}

}  // namespace
}  // namespace Zelm::Msgs

namespace Elsewhere {

TEST(PrintedAddress, isFoundOutsideTheNamespaceByAUsingDeclaration)
{
    using Zelm::Msgs::operator<<;
    std::ostringstream stream;

    stream << std::vector<std::string>{"a", "b"};

    EXPECT_EQ(stream.str(), "{ a, b }");
}

}  // namespace Elsewhere
