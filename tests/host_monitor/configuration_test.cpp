#include "app/configuration.h"

#include "../support/temporary_directory.h"
#include "../support/throws_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace HostMonitor {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Zelm::Testing::TemporaryDirectory;
using Zelm::Testing::throwsText;
using Zelm::Testing::writeFile;

TEST(Configuration, saysWhichComponentsThereAre)
{
    auto const configuration = parseConfiguration(R"({
        "components" : [
            { "type" : "DiskSensor", "id" : "disk", "arguments" : [ "/", "/home" ] },
            { "type" : "CpuSensor", "id" : "cpu" },
            { "type" : "MemorySensor", "id" : "memory", "arguments" : [] }
        ]
    })");

    ASSERT_EQ(configuration.components.size(), 3U);
    EXPECT_EQ(configuration.components[0].id, "disk");
    EXPECT_EQ(configuration.components[0].type, "DiskSensor");
    EXPECT_THAT(configuration.components[0].arguments, ElementsAre("/", "/home"));
    EXPECT_EQ(configuration.components[1].id, "cpu");
    EXPECT_THAT(configuration.components[1].arguments, IsEmpty());
    EXPECT_THAT(configuration.components[2].arguments, IsEmpty());
}

TEST(Configuration, handsArgumentsThatAreObjectsOnAsJsonText)
{
    auto const configuration = parseConfiguration(R"({
        "components" : [
            { "id" : "a", "type" : "A", "arguments" : [ { "sensor" : "cpu", "above" : 90.5, "x" : [ true ] }, "b" ] }
        ]
    })");

    EXPECT_THAT(configuration.components[0].arguments, ElementsAre(R"({"above":90.5,"sensor":"cpu","x":[true]})", "b"));
}

TEST(Configuration, mayEndWithWhiteSpace)
{
    EXPECT_EQ(parseConfiguration("{\"components\":[{\"id\":\"a\",\"type\":\"A\"}]} \n\t\n").components.size(), 1U);
}

TEST(Configuration, isRefusedWithTheReason)
{
    struct Row {
        char const* text;
        char const* reason;
    };
    Row const rows[] = {
        // No JSON object.
        {"", "the file is empty"},
        {" \n ", "line 2: the text ends before the closing brace"},
        {"{\"components\":\n\n[", "line 3: the text ends before the closing brace"},
        {"\xEF\xBB\xBF{}", "line 1: Unexpected character in stream: 0xEF (UTF-8 byte order mark)"},
        {"{\n\xC3\xA4}", "line 2: Unexpected character in stream: 0xC3"},
        {"{\n\x01}", "line 2: Unexpected character in stream: 0x01"},
        {"{\"id\" \"a\x1b[m\x7F\"}", "line 1: Unexpected token: a0x1B[m0x7F"},
        {"{\"\xC3\":1,\"\xC3\":1}", "Invalid Parameter: Object member already exists: 0xC3"},
        {"{\"components\":[{\"id\":\"a", "a string has no closing quotation mark"},
        {"{\n\n  components\n}", "line 3: Unexpected character in stream: c"},
        {"{\"components\":\n[{\"id\" \"a\"}]}", "line 2: Unexpected token: a"},
        {"{\"components\":[{\"id\":\"\\u0041\"}]}", "line 1: Unrecognized escape sequence found in string: \\u"},
        {"[]", "the configuration must be an object"},
        {" null", "the configuration must be an object"},
        {"\"components\" : []", "the configuration must be an object"},
        {"{} {}", "there is text behind the closing brace"},
        {"{\"components\":[],\"components\":[]}", "Invalid Parameter: Object member already exists: components"},
        // No configuration.
        {"{}", "\"components\" is missing"},
        {"{\"components\":{}}", "\"components\" must be an array"},
        {"{\"components\":[]}", "there are no components"},
        {"{\"component\":[]}", "unknown member \"component\" in the configuration"},
        {"{\"components\":[\"a\"]}", "component 1 must be an object"},
        {"{\"components\":[{\"id\":\"a\",\"type\":\"A\"},{\"id\":\"b\"}]}", "\"type\" is missing in component 2"},
        {"{\"components\":[{\"type\":\"A\"}]}", "\"id\" is missing in component 1"},
        {"{\"components\":[{\"id\":1,\"type\":\"A\"}]}", "\"id\" must be a string that isn't empty in component 1"},
        {"{\"components\":[{\"id\":\"\",\"type\":\"A\"}]}", "\"id\" must be a string that isn't empty in component 1"},
        {"{\"components\":[{\"id\":\"a\",\"type\":\"\"}]}",
         "\"type\" must be a string that isn't empty in component 1"},
        {"{\"components\":[{\"id\":\"a\",\"type\":\"A\",\"arguments\":\"x\"}]}",
         "\"arguments\" must be an array of strings and objects in component 1"},
        {"{\"components\":[{\"id\":\"a\",\"type\":\"A\",\"arguments\":[1]}]}",
         "\"arguments\" must be an array of strings and objects in component 1"},
        {"{\"components\":[{\"id\":\"a\",\"type\":\"A\",\"argument\":[]}]}",
         "unknown member \"argument\" in component 1"},
        {"{\"components\":[{\"id\":\"a\",\"type\":\"A\"},{\"id\":\"a\",\"type\":\"B\"}]}",
         "the id \"a\" stands there twice"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_THAT([&] { parseConfiguration(row.text); }, throwsText<std::runtime_error>(row.reason));
    }
}

TEST(Configuration, isReadFromAFile)
{
    TemporaryDirectory const directory;
    writeFile(directory / "good", "{\"components\":[{\"id\":\"a\",\"type\":\"A\"}]}");
    writeFile(directory / "bad", "{}");

    EXPECT_EQ(readConfiguration(directory / "good").components.size(), 1U);
    EXPECT_THAT([&] { readConfiguration(directory / "bad"); },
                throwsText<std::runtime_error>(directory / "bad: \"components\" is missing"));
    EXPECT_THAT([&] { readConfiguration(directory / "absent"); },
                throwsText<std::runtime_error>(directory / "absent: No such file or directory"));
    EXPECT_THAT([&] { readConfiguration(""); }, throwsText<std::runtime_error>("\"\": No such file or directory"));
    EXPECT_THAT([&] { readConfiguration(directory.path()); },
                throwsText<std::runtime_error>(directory.path() + ": Is a directory"));
}

}  // namespace HostMonitor
