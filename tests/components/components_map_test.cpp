#include "zelm/components/components_map.h"

#include "tests/components/map_text.h"
#include "tests/support/throws_text.h"

#include "zelm/core/exceptions.h"
#include "zelm/metadata/reader_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <type_traits>
#include <utility>

namespace Zelm {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::MapText;
using Testing::throwsText;

using Map = ComponentsRepository::Map;
using Component = Map::Component;
using LibInfo = Map::LibInfo;

Component withError(Component row, std::string const& error)
{
    row.error.assign(error);
    return row;
}

LibInfo withError(LibInfo row, std::string const& error)
{
    row.error.assign(error);
    return row;
}

std::string writtenForm(MetaData::MirroredObject const& object)
{
    MetaData::Element element;
    object.copyToMetaData(element);
    return Json::metaDatatoJsonString(element.CastTo<MetaData::Object>());
}

/// Takes in a JSON object as the map file is taken in, and returns what is printed meanwhile.
std::string readInto(MetaData::MirroredObject& object, std::string const& json)
{
    MetaData::Object document;
    std::istringstream stream(json);
    MetaData::ReaderJson::Read(document, stream);
    ::testing::internal::CaptureStdout();
    object.copyFromMetaData(MetaData::Element(document));
    return ::testing::internal::GetCapturedStdout();
}

TEST(CodeVersion, isOneOneZero)
{
    EXPECT_THAT(codeVersion, ElementsAre(1, 1, 0));
}

// ------------------------------------------------------------------------------------------------------------ the rows

TEST(MapComponent, isEmptyAndWithoutErrorByDefault)
{
    Component const row;

    EXPECT_EQ(row.componentTypeName(), "");
    EXPECT_EQ(row.factoryName(), "");
    EXPECT_FALSE(row.error.initialized());
}

TEST(MapComponent, hasTwoRequiredMembersAndAnOptionalError)
{
    Component const row("Engine", "libE.so.1");

    EXPECT_EQ(row.componentTypeName(), "Engine");
    EXPECT_EQ(row.factoryName(), "libE.so.1");
    EXPECT_TRUE(row.componentTypeName.isRequired());
    EXPECT_TRUE(row.factoryName.isRequired());
    EXPECT_FALSE(row.error.initialized());
}

TEST(MapComponent, isCopiedWithItsErrorOrWithoutOne)
{
    Component const clean("Engine", "libE.so.1");
    Component const copyOfClean(clean);
    Component const copyOfFaulty(withError(clean, ""));

    EXPECT_EQ(copyOfClean.componentTypeName(), "Engine");
    EXPECT_EQ(copyOfClean.factoryName(), "libE.so.1");
    EXPECT_FALSE(copyOfClean.error.initialized());
    EXPECT_TRUE(copyOfFaulty.error.initialized());
    EXPECT_EQ(copyOfFaulty.error(), "");
}

TEST(MapComponent, writesItselfAfterAnAssignmentAndNotItsSource)
{
    auto const source = withError(Component("Engine", "libE.so.1"), "broken");
    Component target("Wheel", "libW.so.1");

    target = source;
    target.factoryName = "libX.so.1";

    EXPECT_EQ(
        writtenForm(target),
        "{\n\t\"ComponentTypeName\" : \"Engine\",\n\t\"Error\" : \"broken\",\n\t\"FactoryName\" : \"libX.so.1\"\n}");
    EXPECT_EQ(source.factoryName(), "libE.so.1");
}

TEST(MapLibInfo, isEmptyAndWithoutErrorByDefault)
{
    LibInfo const row;

    EXPECT_EQ(row.sharedObjectName(), "");
    EXPECT_EQ(row.sharedObjectTimeStamp(), 0);
    EXPECT_FALSE(row.error.initialized());
}

TEST(MapLibInfo, hasTwoRequiredMembersAndAnOptionalError)
{
    LibInfo const row("libE.so.1", 17);

    EXPECT_EQ(row.sharedObjectName(), "libE.so.1");
    EXPECT_EQ(row.sharedObjectTimeStamp(), 17);
    EXPECT_TRUE(row.sharedObjectName.isRequired());
    EXPECT_TRUE(row.sharedObjectTimeStamp.isRequired());
    EXPECT_FALSE(row.error.initialized());
}

TEST(MapLibInfo, isCopiedWithItsErrorOrWithoutOne)
{
    LibInfo const clean("libE.so.1", 17);
    LibInfo const copyOfClean(clean);
    LibInfo const copyOfFaulty(withError(clean, "gone"));

    EXPECT_EQ(copyOfClean.sharedObjectName(), "libE.so.1");
    EXPECT_EQ(copyOfClean.sharedObjectTimeStamp(), 17);
    EXPECT_FALSE(copyOfClean.error.initialized());
    EXPECT_EQ(copyOfFaulty.error(), "gone");
}

TEST(MapLibInfo, writesItselfAfterAnAssignmentAndNotItsSource)
{
    LibInfo const source("libE.so.1", 17);
    auto target = withError(LibInfo("libW.so.1", 18), "gone");

    target = source;
    target.sharedObjectTimeStamp = -1;

    EXPECT_EQ(writtenForm(target), "{\n\t\"SharedObjectName\" : \"libE.so.1\",\n\t\"SharedObjectTimeStamp\" : -1\n}");
    EXPECT_EQ(source.sharedObjectTimeStamp(), 17);
}

// ------------------------------------------------------------------------------------------------------------- the map

TEST(ComponentsMap, isOfTheCodesVersionAndWithoutRowsAtFirst)
{
    Map const map;

    EXPECT_EQ(map.version(), codeVersion);
    EXPECT_THAT(map.components(), IsEmpty());
    EXPECT_THAT(map.sharedLibraries(), IsEmpty());
    EXPECT_TRUE(map.version.isRequired());
    EXPECT_TRUE(map.components.isRequired());
    EXPECT_TRUE(map.sharedLibraries.isRequired());
    EXPECT_FALSE(map.errors.initialized());
}

TEST(ComponentsMap, isNeitherCopiedNorAssigned)
{
    EXPECT_FALSE(std::is_copy_constructible_v<Map>);
    EXPECT_FALSE(std::is_copy_assignable_v<Map>);
}

TEST(ComponentsMap, writesEmptyListsAndThePlainVersionWhenFresh)
{
    EXPECT_EQ(writtenForm(Map()), "{\n"
                                  "\t\"Components\" : [],\n"
                                  "\t\"SharedLibraries\" : [],\n"
                                  "\t\"Version\" : [\n"
                                  "\t\t1,\n"
                                  "\t\t1,\n"
                                  "\t\t0\n"
                                  "\t]\n"
                                  "}");
}

TEST(ComponentsMap, writesErrorsOnlyWhereTheyAreSet)
{
    Map map;
    map.components.assign({Component("Engine", "libE.so.1"), withError(Component("Wheel", "libW.so.1"), "two makers")});
    map.sharedLibraries.assign({withError(LibInfo("libW.so.1", 1), "not ELF"), LibInfo("libE.so.1", 2147483647)});
    map.errors.assign({"first", "second"});

    EXPECT_EQ(writtenForm(map), "{\n"
                                "\t\"Components\" : [\n"
                                "\t\t{\n"
                                "\t\t\t\"ComponentTypeName\" : \"Engine\",\n"
                                "\t\t\t\"FactoryName\" : \"libE.so.1\"\n"
                                "\t\t},\n"
                                "\t\t{\n"
                                "\t\t\t\"ComponentTypeName\" : \"Wheel\",\n"
                                "\t\t\t\"Error\" : \"two makers\",\n"
                                "\t\t\t\"FactoryName\" : \"libW.so.1\"\n"
                                "\t\t}\n"
                                "\t],\n"
                                "\t\"Errors\" : [\n"
                                "\t\t\"first\",\n"
                                "\t\t\"second\"\n"
                                "\t],\n"
                                "\t\"SharedLibraries\" : [\n"
                                "\t\t{\n"
                                "\t\t\t\"Error\" : \"not ELF\",\n"
                                "\t\t\t\"SharedObjectName\" : \"libW.so.1\",\n"
                                "\t\t\t\"SharedObjectTimeStamp\" : 1\n"
                                "\t\t},\n"
                                "\t\t{\n"
                                "\t\t\t\"SharedObjectName\" : \"libE.so.1\",\n"
                                "\t\t\t\"SharedObjectTimeStamp\" : 2147483647\n"
                                "\t\t}\n"
                                "\t],\n"
                                "\t\"Version\" : [\n"
                                "\t\t1,\n"
                                "\t\t1,\n"
                                "\t\t0\n"
                                "\t]\n"
                                "}");
}

TEST(ComponentsMap, comesHomeUnchangedFromItsWrittenForm)
{
    MapText const original{{{"Engine", "libE.so.1"}, {"Wheel", "libW.so.1", "two makers"}, {"Sail", "libS.so.1", ""}},
                           {{"libE.so.1", -2147483647 - 1}, {"libW.so.1", 2147483647, "not ELF"}},
                           {"first", "line\nfeed"},
                           {1, 1, -3}};
    Map map;

    EXPECT_EQ(readInto(map, original.text()), "");
    EXPECT_EQ(writtenForm(map), original.text());
}

// ------------------------------------------------------------------------------------------------ what a file may hold

struct ReadCase {
    char const* why;
    std::string json;
    std::string printed;
    std::string result;  // the form that is written again
};

MapText const oldMap{{{"Old", "libOld.so.1"}}, {{"libOld.so.1", 5}}, {"old"}, {1, 1, 0}};
std::string const notAnArray = "Exception MetaDat::ReflectorArray Should have gotten an Array, but didn't\n";
std::string const corrupt = "Exception MetaDat::ReflectorArray MetaData Array corrupt for ";

/// `oldMap` with one member's text replaced.
MapText with(std::vector<MapText::Component> components)
{
    auto text = oldMap;
    text.components = std::move(components);
    return text;
}

std::string replaced(std::string text, std::string const& from, std::string const& to)
{
    auto const position = text.find(from);
    if (position == std::string::npos)
        throw std::logic_error("not in the text: " + from);
    return text.replace(position, from.size(), to);
}

TEST(ComponentsMapRead, isForgivingMemberByMember)
{
    std::string const versionText = "\"Version\" : [\n\t\t1,\n\t\t1,\n\t\t0\n\t]";
    std::string const errorsText = "\t\"Errors\" : [\n\t\t\"old\"\n\t],\n";
    MapText const emptyLibraries{oldMap.components, {}, oldMap.errors};
    MapText const noErrors{oldMap.components, oldMap.libraries};
    MapText const noVersion{oldMap.components, oldMap.libraries, oldMap.errors, {}};
    MapText const versionEight{oldMap.components, oldMap.libraries, oldMap.errors, {1, 1, 8}};

    ReadCase const cases[] = {
        {"any order and white space", R"({"Version":[1,1,0],"SharedLibraries" : [ ], "Components":[]})", "",
         MapText().text()},
        {"an unknown key is ignored", replaced(oldMap.text(), "{", R"({"Extra" : [1, {"a" : null}],)"), "",
         oldMap.text()},
        {"a missing version becomes empty", replaced(oldMap.text(), ",\n\t" + versionText, ""), "", noVersion.text()},
        {"the object form of a version is taken",
         replaced(oldMap.text(), versionText, R"("Version" : {"type" : 9, "len" : 3, "base64" : "AQAAAAEAAAAIAAAA"})"),
         "", versionEight.text()},
        {"a version of another kind leaves the old one", replaced(oldMap.text(), versionText, R"("Version" : "1.1.0")"),
         "Exception MetaData::ReflectorArray wrong encoded type\n", oldMap.text()},
        {"a version with a word in it leaves the old one",
         replaced(oldMap.text(), versionText, R"("Version" : [2, "one", 0])"), corrupt + "Version\n", oldMap.text()},
        {"missing components become none", R"({"SharedLibraries":[],"Version":[1,1,0]})", "", MapText().text()},
        {"missing libraries become none", replaced(emptyLibraries.text(), "\"SharedLibraries\" : [],", ""), "",
         emptyLibraries.text()},
        {"missing errors become unset", noErrors.text(), "", noErrors.text()},
        {"components of another kind leave the old ones",
         replaced(oldMap.text(), "\"Components\" : [", R"("Components" : 1, "x" : [)"), notAnArray, oldMap.text()},
        {"libraries of another kind leave the old ones",
         replaced(oldMap.text(), "\"SharedLibraries\" : [", R"("SharedLibraries" : null, "x" : [)"), notAnArray,
         oldMap.text()},
        {"errors of another kind leave the old ones", replaced(oldMap.text(), errorsText, R"("Errors" : {},)"),
         notAnArray, oldMap.text()},
        {"errors with a number leave the old ones", replaced(oldMap.text(), errorsText, R"("Errors" : ["new", 1],)"),
         corrupt + "Errors\n", oldMap.text()},
        {"a row lacking its keys is kept with empty strings",
         replaced(oldMap.text(), "\"ComponentTypeName\" : \"Old\"", "\"Type\" : \"Old\""), "",
         with({{"", "libOld.so.1"}}).text()},
        {"a row without a factory's name is kept with an empty one",
         replaced(oldMap.text(), "\"FactoryName\"", "\"Factory\""), "", with({{"Old", ""}}).text()},
        {"a row without a library's name is kept with an empty one",
         replaced(oldMap.text(), "\"SharedObjectName\"", "\"Name\""), "",
         MapText{oldMap.components, {{"", 5}}, oldMap.errors}.text()},
        {"a row without a time stamp is kept with 0",
         replaced(oldMap.text(), "\"SharedObjectTimeStamp\"", "\"TimeStamp\""), "",
         MapText{oldMap.components, {{"libOld.so.1", 0}}, oldMap.errors}.text()},
        {"a row that is no object is kept with empty strings",
         replaced(oldMap.text(), "\"Components\" : [", "\"Components\" : [7,"), "",
         with({{"", ""}, {"Old", "libOld.so.1"}}).text()},
        {"an error that is no string stays unset",
         replaced(oldMap.text(), "\"FactoryName\"", R"("Error" : 1, "FactoryName")"), "", oldMap.text()},
        {"an empty error is set", replaced(oldMap.text(), "\"FactoryName\"", R"("Error" : "", "FactoryName")"), "",
         with({{"Old", "libOld.so.1", ""}}).text()},
        {"a time stamp that is no number is 0", replaced(oldMap.text(), "TimeStamp\" : 5", "TimeStamp\" : \"5\""), "",
         MapText{oldMap.components, {{"libOld.so.1", 0}}, oldMap.errors}.text()},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        Map map;
        readInto(map, oldMap.text());

        EXPECT_EQ(readInto(map, row.json), row.printed);
        EXPECT_EQ(writtenForm(map), row.result);
    }
}

TEST(ComponentsMapRead, takesAVersionThatIsNoArrayForTheCodesOwnInAFreshMapOnPurpose)
{
    Map map;

    EXPECT_EQ(readInto(map, R"({"Version" : 7})"), "Exception MetaData::ReflectorArray wrong encoded type\n");
    EXPECT_EQ(map.version(), codeVersion);
}

TEST(ComponentsMapRead, throwsNothingForASourceThatIsNoObject)
{
    Map map;
    readInto(map, oldMap.text());

    ::testing::internal::CaptureStdout();
    map.copyFromMetaData(MetaData::Element());

    std::string const line = "Provide better error handling please.\n";
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), line + line + line + line);
    EXPECT_EQ(writtenForm(map), oldMap.text());
}

// ---------------------------------------------------------------------------------------------------------- looking up

TEST(FindLib, givesTheFirstRowOfExactlyThatName)
{
    Map map;
    map.sharedLibraries.assign({LibInfo("libA.so.10", 1), LibInfo("libA.so.1", 2), LibInfo("libA.so.1", 3)});

    EXPECT_EQ(&map.findLib("libA.so.1"), &map.sharedLibraries()[1]);
}

TEST(FindLib, throwsForANameThatStandsInNoRow)
{
    Map map;
    map.sharedLibraries.assign({LibInfo("libA.so.1", 1)});

    for (std::string const name : {"liba.so.1", "libA.so", "libA.so.1.0", "A", ""}) {
        SCOPED_TRACE(name);
        EXPECT_THAT([&] { map.findLib(name); },
                    throwsText<Exception::MissingLibrary>("Library \"" + name + "\" was not found: No entry found"));
    }
}

TEST(FindLib, findsARowWithoutANameByTheEmptyName)
{
    Map map;
    map.sharedLibraries.assign({LibInfo("libA.so.1", 1), LibInfo("", 2)});

    EXPECT_EQ(map.findLib("").sharedObjectTimeStamp(), 2);
}

TEST(FindLib, givesALibraryThatHasAnError)
{
    Map map;
    map.sharedLibraries.assign({withError(LibInfo("libA.so.1", 1), "not ELF")});

    EXPECT_EQ(map.findLib("libA.so.1").error(), "not ELF");
}

TEST(ComponentsMapLookUp, givesTheRowItselfForReadingAndForWriting)
{
    Map map;
    map.components.assign({Component("Wheel", "libA.so.1"), Component("Engine", "libA.so.1")});
    map.sharedLibraries.assign({LibInfo("libA.so.1", 1)});

    EXPECT_EQ(&std::as_const(map)["Engine"], &map.components()[1]);
    map["Engine"].error.assign("changed");
    EXPECT_EQ(map.components()[1].error(), "changed");
}

struct LookUpCase {
    char const* why;
    std::vector<Component> components;
    std::vector<LibInfo> libraries;
    std::string detail;  // behind "Failed to Create Component Type "Engine": "; empty if the first row is given
};

TEST(ComponentsMapLookUp, givesTheFirstRowOrThrowsFailedToCreateComponent)
{
    Component const engine("Engine", "libA.so.1");
    Component const second("Engine", "libB.so.1");
    LibInfo const a("libA.so.1", 1);
    LibInfo const b("libB.so.1", 1);

    LookUpCase const cases[] = {
        {"a clean row of a clean library", {engine}, {a}, ""},
        {"a later row of the type doesn't count", {engine, withError(second, "later")}, {a, b}, ""},
        {"nor does a second row of the library", {engine}, {a, withError(a, "later")}, ""},
        {"nor an error of another library", {engine}, {withError(b, "other"), a}, ""},
        {"the row's error", {withError(engine, "two makers")}, {a}, "two makers"},
        {"the first row's error, whatever follows", {withError(engine, "two makers"), second}, {a, b}, "two makers"},
        {"the library's error", {engine}, {withError(a, "not ELF")}, "not ELF"},
        {"the row's error before the library's",
         {withError(engine, "two makers")},
         {withError(a, "not ELF")},
         "two makers"},
        {"the row's error even if the library is unknown", {withError(engine, "gone")}, {}, "gone"},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        Map map;
        map.components.assign(row.components);
        map.sharedLibraries.assign(row.libraries);

        if (row.detail.empty()) {
            EXPECT_EQ(&map["Engine"], &map.components()[0]);
        } else {
            auto const expected = throwsText<Exception::FailedToCreateComponent>(
                "Failed to Create Component Type \"Engine\": " + row.detail);
            EXPECT_THAT([&] { map["Engine"]; }, expected);
            EXPECT_THAT([&] { std::as_const(map)["Engine"]; }, expected);
        }
    }
}

TEST(ComponentsMapLookUp, takesAnEmptyErrorForAnErrorOnPurpose)
{
    Map map;
    map.components.assign({withError(Component("Engine", "libA.so.1"), ""), Component("Wheel", "libB.so.1")});
    map.sharedLibraries.assign({LibInfo("libA.so.1", 1), withError(LibInfo("libB.so.1", 1), "")});

    EXPECT_THAT([&] { map["Engine"]; },
                throwsText<Exception::FailedToCreateComponent>("Failed to Create Component Type \"Engine\": "));
    EXPECT_THAT([&] { map["Wheel"]; },
                throwsText<Exception::FailedToCreateComponent>("Failed to Create Component Type \"Wheel\": "));
}

struct MissingCase {
    char const* why;
    std::optional<std::vector<std::string>> errors;
    std::string detail;
};

MissingCase const missingCases[] = {
    {"nothing failed", std::nullopt, "No entry found"},
    {"one failure", {{"a"}}, "a"},
    {"the newest failure stands first", {{"a", "b"}}, "b\na"},
    {"empty texts keep their lines", {{"", "b", ""}}, "\nb\n"},
    {"an empty list is set all the same", {{}}, ""},
};

TEST(ComponentsMapLookUp, throwsMissingComponentForAnUnknownTypeWithWhatTheLastBuildFailedOn)
{
    for (auto const& row : missingCases) {
        SCOPED_TRACE(row.why);
        Map map;
        map.components.assign({Component("engine", "libA.so.1"), Component("Engine2", "libA.so.1")});
        map.sharedLibraries.assign({LibInfo("libA.so.1", 1)});
        if (row.errors)
            map.errors.assign(*row.errors);

        EXPECT_THAT([&] { map["Engine"]; },
                    throwsText<Exception::MissingComponent>(
                        "Failed to Create Component Type \"Engine\": Component not found: " + row.detail));
    }
}

TEST(ComponentsMapLookUp, takesATypeWhoseLibraryHasNoRowForAnUnknownOne)
{
    for (auto const& row : missingCases) {
        SCOPED_TRACE(row.why);
        Map map;
        map.components.assign({Component("Engine", "libA.so.1"), Component("Engine", "libB.so.1")});
        map.sharedLibraries.assign({LibInfo("libB.so.1", 1)});
        if (row.errors)
            map.errors.assign(*row.errors);

        EXPECT_THAT([&] { map["Engine"]; },
                    throwsText<Exception::MissingComponent>(
                        "Failed to Create Component Type \"Engine\": Component not found: " + row.detail));
    }
}

}  // namespace
}  // namespace Zelm
