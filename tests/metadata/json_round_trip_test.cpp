// A real document of half a megabyte, through both readers and the writer.
#include "zelm/metadata/reader_json.h"
#include "zelm/metadata/writer_json.h"

#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace Zelm::MetaData {
namespace {

std::string const documentPath = ZELM_TEST_DATA "/json/twitter.json";

Element readByTokens(std::istream& stream)
{
    Element element;
    ReaderJson::Read(element, stream);
    return element;
}

Element readByTokens(std::string const& text)
{
    std::istringstream stream(text);
    return readByTokens(stream);
}

Element readFast(std::string const& text)
{
    Object object;
    ReaderJson::Read(object, text);
    return Element(std::move(object));
}

std::string rewritten(Element const& element, bool pretty)
{
    std::ostringstream stream;
    WriterJson::Write(element, stream, pretty);
    return stream.str();
}

TEST(JsonRoundTrip, keepsADocumentThatTheTokenReaderTook)
{
    std::ifstream file(documentPath, std::ios::binary);
    ASSERT_TRUE(file) << documentPath;
    auto const document = readByTokens(file);

    ASSERT_EQ(document["statuses"].CastTo<Array>().size(), 100u);
    for (bool const pretty : {false, true}) {
        SCOPED_TRACE(pretty);
        auto const text = rewritten(document, pretty);
        auto const again = readByTokens(text);
        EXPECT_TRUE(again == document);
        EXPECT_EQ(rewritten(again, pretty), text);
    }
}

TEST(JsonRoundTrip, keepsADocumentThatTheFastReaderTook)
{
    auto const document = readFast(Zelm::Testing::readFile(documentPath));

    ASSERT_EQ(document["statuses"].CastTo<Array>().size(), 100u);
    for (bool const pretty : {false, true}) {
        SCOPED_TRACE(pretty);
        auto const text = rewritten(document, pretty);
        auto const again = readFast(text);
        EXPECT_TRUE(again == document);
        EXPECT_EQ(rewritten(again, pretty), text);
    }
}

/// Walks two trees that should differ only in how a number was read: Integers by the fast reader, Numbers by the other.
class Comparison {
public:
    void compare(Element const& fast, Element const& byTokens)
    {
        if (fast.GetElementType() == ElementType::Integer) {
            ++integers;
            if (fast != byTokens)
                ++roundedIntegers;
            EXPECT_EQ(byTokens.GetElementType(), ElementType::Number);
            EXPECT_EQ(byTokens.asDouble(), static_cast<double>(fast.asInt64()));
            return;
        }
        ASSERT_EQ(fast.GetElementType(), byTokens.GetElementType());
        if (fast.GetElementType() == ElementType::Object)
            compareMembers(fast.CastTo<Object>(), byTokens.CastTo<Object>());
        else if (fast.GetElementType() == ElementType::Array)
            compareElements(fast.CastTo<Array>(), byTokens.CastTo<Array>());
        else
            EXPECT_EQ(fast, byTokens);
    }

    int integers = 0;
    int roundedIntegers = 0;

private:
    void compareMembers(Object const& fast, Object const& byTokens)
    {
        ASSERT_EQ(fast.size(), byTokens.size());
        auto other = byTokens.begin();
        for (auto const& member : fast) {
            ASSERT_EQ(member.name(), other->name());
            compare(member.element(), other->element());
            ++other;
        }
    }

    void compareElements(Array const& fast, Array const& byTokens)
    {
        ASSERT_EQ(fast.size(), byTokens.size());
        for (std::size_t i = 0; i < fast.size(); ++i)
            compare(fast[i], byTokens[i]);
    }
};

TEST(JsonRoundTrip, showsThatTheReadersDifferInTheirNumbersAlone)
{
    auto const text = Zelm::Testing::readFile(documentPath);
    Comparison comparison;

    comparison.compare(readFast(text), readByTokens(text));

    EXPECT_GT(comparison.integers, 1000);
    EXPECT_GT(comparison.roundedIntegers, 0);  // ids beyond 2^53, which a double can't hold
}

}  // namespace
}  // namespace Zelm::MetaData
