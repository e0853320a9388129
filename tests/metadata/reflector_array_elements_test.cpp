#include "zelm/metadata/reflector.h"

#include "tests/metadata/reflector_arrays.h"
#include "tests/support/printed_by.h"
#include "tests/support/throws_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Zelm::MetaData {
namespace {

using Testing::array;
using Testing::corrupt;
using Testing::identical;
using Testing::integer;
using Testing::Ints;
using Testing::noArray;
using Testing::number;
using Testing::object;
using Testing::objectForm;
using Testing::Row;
using Testing::rowElement;
using Testing::string;
using Testing::Strings;
using Testing::unset;
using Testing::written;
using Testing::wrongType;
using Zelm::Testing::printedBy;
using Zelm::Testing::throwsText;

// --------------------------------------------------------------------------------------------- int and its object form

TEST(ReflectorArrayOfInt, isWrittenInTheObjectFormIfItWasGivenInitialElements)
{
    Ints const reflector(nullptr, "Version", std::vector<int>{1, 1, 0});

    EXPECT_TRUE(reflector.encoded());
    EXPECT_PRED2(identical, written(reflector), object({{"Version", objectForm(3, "AQAAAAEAAAAAAAAA")}}));
}

TEST(ReflectorArrayOfInt, isWrittenAsAPlainArrayOnceItIsntEncoded)
{
    Ints reflector(nullptr, "Version", {1, 1, 0});

    reflector.setEncoded(false);

    EXPECT_PRED2(identical, written(reflector), object({{"Version", array({integer(1), integer(1), integer(0)})}}));
}

TEST(ReflectorArrayOfInt, isWrittenInTheObjectFormOnceItIsEncoded)
{
    Ints reflector(nullptr, "key", true);

    reflector.setEncoded(true);

    EXPECT_PRED2(identical, written(reflector), object({{"key", object({{"type", integer(9)}, {"len", integer(0)}})}}));
}

TEST(ReflectorArrayOfInt, writesTheObjectFormIntoWhatStandsThere)
{
    Ints const reflector(nullptr, "key", {7});

    EXPECT_PRED2(identical, written(reflector, object({{"key", array({integer(1)})}})),
                 object({{"key", objectForm(1, "BwAAAA==")}}));
    Element expected = object({{"key", objectForm(1, "BwAAAA==")}});
    expected["key"]["other"] = string("kept");
    EXPECT_PRED2(identical, written(reflector, object({{"key", object({{"other", string("kept")}})}})), expected);
}

TEST(ReflectorArrayOfInt, goesOutAsAPlainArrayAfterItWasReadFromOne)
{
    Ints reflector(nullptr, "key", {1});

    reflector.copyFromMetaData(object({{"key", array({integer(4), integer(5)})}}));

    EXPECT_EQ(reflector(), (std::vector<int>{4, 5}));
    EXPECT_FALSE(reflector.encoded());
    EXPECT_PRED2(identical, written(reflector), object({{"key", array({integer(4), integer(5)})}}));
}

TEST(ReflectorArrayOfInt, isPlainOnPurposeAlsoAfterAnArrayThatCouldntBeRead)
{
    Ints reflector(nullptr, "key", {1});

    std::string const printed = printedBy([&] {
        reflector.copyFromMetaData(object({{"key", array({integer(1), string("x")})}}));
    });

    EXPECT_EQ(printed, corrupt("key"));
    EXPECT_EQ(reflector(), std::vector<int>{1});
    EXPECT_FALSE(reflector.encoded());
}

TEST(ReflectorArrayOfInt, keepsItsFormIfItsKeyIsMissing)
{
    Ints reflector(nullptr, "key", {1});

    reflector.copyFromMetaData(object({}));

    EXPECT_TRUE(reflector.encoded());
    EXPECT_PRED2(identical, written(reflector), object({{"key", object({{"type", integer(9)}, {"len", integer(0)}})}}));
}

TEST(ReflectorArrayOfInt, readsNumbersAndTheLow32BitsOfIntegers)
{
    Ints reflector(nullptr, "key", false);

    reflector.copyFromMetaData(object({{"key", array({number(2.9), integer(4294967297), integer(2147483648)})}}));

    EXPECT_EQ(reflector(), (std::vector<int>{2, 1, -2147483647 - 1}));
}

TEST(ReflectorArrayOfInt, keepsStateAndFormOnPurposeWhenItReadsTheObjectForm)
{
    Element const source = object({{"key", objectForm(2, "BwAAAAgAAAA=")}});
    Ints uninitialized(nullptr, "key", false);
    Ints initialized(nullptr, "key", false);
    initialized = {1, 2, 3};
    Ints required(nullptr, "key", {1, 2, 3});

    for (Ints* reflector : {&uninitialized, &initialized, &required})
        EXPECT_EQ(printedBy([&] { reflector->copyFromMetaData(source); }), "");

    EXPECT_FALSE(uninitialized.initialized());
    EXPECT_THAT([&] { uninitialized(); }, throwsText<Zelm::Exception::InvalidOperation>(unset("key")));
    uninitialized.init();
    EXPECT_EQ(uninitialized(), (std::vector<int>{7, 8}));
    EXPECT_FALSE(uninitialized.encoded());
    EXPECT_TRUE(initialized.initialized() && !initialized.isRequired());
    EXPECT_EQ(initialized(), (std::vector<int>{7, 8}));
    EXPECT_FALSE(initialized.encoded());
    EXPECT_TRUE(required.isRequired());
    EXPECT_EQ(required(), (std::vector<int>{7, 8}));
    EXPECT_TRUE(required.encoded());
}

TEST(ReflectorArrayOfInt, readsAnObjectFormOfLengthZeroAsNoElements)
{
    Ints reflector(nullptr, "key", {1, 2});

    reflector.copyFromMetaData(object({{"key", objectForm(0, "not looked at")}}));

    EXPECT_TRUE(reflector().empty());
    EXPECT_TRUE(reflector.isRequired());
}

TEST(ReflectorArrayOfInt, countsTheElementsByTheText)
{
    Ints reflector(nullptr, "key", true);

    reflector.copyFromMetaData(object({{"key", objectForm(1, "BwAAAAgAAAA=")}}));
    EXPECT_EQ(reflector(), (std::vector<int>{7, 8}));

    EXPECT_EQ(printedBy([&] { reflector.copyFromMetaData(object({{"key", objectForm(2, "CQAAAAgA")}})); }), "");
    EXPECT_EQ(reflector(), std::vector<int>{7});
}

TEST(ReflectorArrayOfInt, passesOnWhatTheObjectFormThrows)
{
    Ints reflector(nullptr, "key", {1});

    EXPECT_THAT(
        [&] {
            reflector.copyFromMetaData(object({{"key", object({{"type", integer(9)}, {"len", integer(1)}})}}));
        },
        throwsText<Zelm::Exception::InvalidOperation>(
            "> base64 < not initialized in Zelm::MetaData::Reflector::operator()()"));
    EXPECT_THAT(
        [&] {
            reflector.copyFromMetaData(object({{"key", objectForm(1, "AAAAA")}}));
        },
        throwsText<Zelm::Exception::InvalidParameter>("Invalid Parameter: base64 data length is not a multiple of 4"));
    EXPECT_EQ(reflector(), std::vector<int>{1});

    EXPECT_THAT(
        [&] {
            reflector.copyFromMetaData(object({{"key", objectForm(1, "BwAAAAgAAA*=")}}));
        },
        throwsText<Zelm::Exception::InvalidParameter>("Invalid Parameter: invalid char in base64 string: '*'"));
    ASSERT_EQ(reflector().size(), 2u);
    EXPECT_EQ(reflector()[0], 7);
}

// ------------------------------------------------------------------------------------------------------------ strings

TEST(ReflectorArrayOfString, isPlainInEitherSetting)
{
    Strings reflector(nullptr, "key", {"a"});
    EXPECT_FALSE(reflector.encoded());

    reflector.setEncoded(true);

    EXPECT_TRUE(reflector.encoded());
    EXPECT_PRED2(identical, written(reflector), object({{"key", array({string("a")})}}));
    reflector.copyFromMetaData(object({{"key", array({string("b")})}}));
    EXPECT_TRUE(reflector.encoded());
    EXPECT_EQ(reflector(), std::vector<std::string>{"b"});
}

TEST(ReflectorArrayOfString, doesntKnowTheObjectForm)
{
    Strings reflector(nullptr, "key", {"a"});

    EXPECT_EQ(printedBy([&] { reflector.copyFromMetaData(object({{"key", objectForm(1, "AAAAAA==")}})); }), noArray);

    EXPECT_EQ(reflector(), std::vector<std::string>{"a"});
}

// --------------------------------------------------------------------------------------------------- mirrored objects

TEST(ReflectorArrayOfObjects, readsAnElementThatIsNoObjectOnPurposeAsOneWhoseFieldsFailed)
{
    ReflectorArray<Row> rows(nullptr, "rows", false);

    std::string const printed = printedBy([&] {
        rows.copyFromMetaData(object({{"rows", array({integer(7), rowElement("a", 1), Element(), object({})})}}));
    });

    EXPECT_EQ(printed, "");
    EXPECT_TRUE(rows() == (std::vector<Row>{Row(), Row("a", 1), Row(), Row()}));
}

TEST(ReflectorArrayOfObjects, keepsKeysOfItsPlacesThatTheObjectsDontKnow)
{
    ReflectorArray<Row> const rows(nullptr, "rows", {Row("a", 1)});
    Element target = object({{"rows", array({object({{"other", string("kept")}}), object({{"other", Element()}})})}});

    rows.copyToMetaData(target);

    Element expected = object({{"rows", array({rowElement("a", 1)})}});
    expected["rows"][0]["other"] = string("kept");
    EXPECT_PRED2(identical, target, expected);
}

TEST(ReflectorArrayOfObjects, holdsRowsThatCanBeEdited)
{
    ReflectorArray<Row> rows(nullptr, "rows", true);

    rows.edit().emplace_back("a", 1);
    rows.edit().emplace_back("b", 2);
    rows.edit()[0].error = "broken";

    Element expected = object({{"rows", array({rowElement("a", 1), rowElement("b", 2)})}});
    expected["rows"][0]["error"] = string("broken");
    EXPECT_PRED2(identical, written(rows), expected);
}

TEST(ReflectorArrayOfObjects, isCorruptIfAnElementThrowsWhileItReads)
{
    struct Strict : PartiallySerializableInterface {
        void copyToMetaData(Element&) const override {}
        void copyFromMetaData(Element const& source) override { source.CastTo<Object>(); }
    };
    ReflectorArray<Strict> reflector(nullptr, "strict", {Strict()});

    EXPECT_EQ(printedBy([&] {
                  reflector.copyFromMetaData(object({{"strict", array({object({}), integer(1)})}}));
              }),
              corrupt("strict"));

    EXPECT_EQ(reflector().size(), 1u);
}

TEST(ReflectorArrayOfObjects, canHoldTheClassThatItIsAFieldOf)
{
    struct Node : MirroredObject {
        Node() = default;
        Node(Node const& other) : MirroredObject()
        {
            name = other.name;
            children = other.children;
        }
        Node& operator=(Node const&) = delete;

        Reflector<std::string, false, true> name{this, "name", ""};
        ReflectorArray<Node> children{this, "children", false};
    } root;
    Element const leaf = object({{"name", string("leaf")}});
    Element const tree =
        object({{"name", string("root")},
                {"children", array({leaf, object({{"name", string("branch")}, {"children", array({leaf, leaf})}})})}});

    root.copyFromMetaData(tree);
    Node const copy(root);

    EXPECT_EQ(root.children()[1].children().size(), 2u);
    EXPECT_PRED2(identical, written(copy), tree);
}

// --------------------------------------------------------------------------------------------------------- in objects

struct Catalogue : MirroredObject {
    Ints version{this, "Version", {1, 1, 0}};
    ReflectorArray<Row> rows{this, "Rows", true};
    Strings errors{this, "Errors", false};
    Reflector<int, false, true> last{this, "Last"};
};

TEST(ReflectorArray, isReadAndWrittenAsAMemberOfItsObject)
{
    Catalogue catalogue, other;
    catalogue.rows = {Row("a", 1)};
    catalogue.last = 2;

    Element const element = written(catalogue);
    other.copyFromMetaData(element);

    EXPECT_PRED2(identical, element,
                 object({{"Version", objectForm(3, "AQAAAAEAAAAAAAAA")},
                         {"Rows", array({rowElement("a", 1)})},
                         {"Last", integer(2)}}));
    EXPECT_PRED2(identical, written(other), element);
}

TEST(ReflectorArray, givesTheLineOfItsObjectForASourceThatIsNoObjectAndForABadObjectForm)
{
    struct {
        char const* why;
        Element source;
        int lines;
    } const cases[] = {
        {"each of the three arrays refuses it", string("x"), 3},
        {"one array refuses it, and two are missing", object({{"Version", objectForm(1, "AAAAA")}}), 1},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        Catalogue catalogue;
        catalogue.last = 2;

        std::string const printed = printedBy([&] { catalogue.copyFromMetaData(row.source); });

        std::string expected;
        for (int i = 0; i < row.lines; ++i)
            expected += "Provide better error handling please.\n";
        EXPECT_EQ(printed, expected);
        EXPECT_EQ(catalogue.version(), (std::vector<int>{1, 1, 0}));
        EXPECT_FALSE(catalogue.last.initialized());
    }
}

TEST(ReflectorArray, letsTheObjectsOtherMembersBeReadWhenItCantBe)
{
    Catalogue catalogue;

    std::string const printed = printedBy([&] {
        catalogue.copyFromMetaData(object({{"Version", string("1.1.0")},
                                           {"Rows", object({})},
                                           {"Errors", array({string("a"), integer(1)})},
                                           {"Last", integer(2)}}));
    });

    EXPECT_EQ(printed, wrongType + std::string(noArray) + corrupt("Errors"));
    EXPECT_EQ(catalogue.version(), (std::vector<int>{1, 1, 0}));
    EXPECT_TRUE(catalogue.rows().empty());
    EXPECT_FALSE(catalogue.errors.initialized());
    EXPECT_EQ(catalogue.last(), 2);
}

}  // namespace
}  // namespace Zelm::MetaData
