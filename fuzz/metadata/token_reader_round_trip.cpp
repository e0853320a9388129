// What the writer writes, held against its rules, and read back by the token reader: the same tree but for these
// limits.
//   An Integer comes back as the Number nearest to it.
//   Of a Number that is NaN or infinite the word is written, at which the reader throws.
//
// Input: a tree as fuzz/support/trees.h reads it; one that is no Object becomes a member of one.
#include "fuzz/metadata/plain_writer.h"
#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/json_losses.h"
#include "fuzz/support/trees.h"
#include "zelm/metadata/reader_json.h"
#include "zelm/metadata/writer_json.h"

#include <cmath>
#include <istream>
#include <iterator>
#include <limits>
#include <sstream>
#include <string>

using namespace Zelm;
using namespace Zelm::Fuzzing;
using namespace Zelm::MetaData;

namespace {

Object objectOf(Element const& element)
{
    if (element.GetElementType() == ElementType::Object)
        return element.CastTo<Object>();
    Object object;
    object["value"] = element;
    return object;
}

std::string written(Object const& object, bool pretty)
{
    std::ostringstream stream;
    WriterJson::Write(object, stream, pretty);
    check(stream.good(), "writing leaves the stream good");
    return stream.str();
}

/// What the reader must make of a written tree.
class Expectation {
public:
    explicit Expectation(Object const& tree) : tree_(withoutIntegers(tree)) { visit(tree); }

    Element const& tree() const { return tree_; }
    /// The exception's text for the first Number, in the order of the text, that is written as a word. Empty if none
    /// is.
    std::string const& refusal() const { return refusal_; }
    /// Whether each Integer is equal to the Number that it comes back as, by the equality of elements.
    bool isEqual() const { return isEqual_; }

private:
    void visit(Element const& element)
    {
        if (element.GetElementType() == ElementType::Integer) {
            visitInteger(element.asInt64());
        } else if (element.GetElementType() == ElementType::Number) {
            visitNumber(element.asDouble());
        } else if (element.GetElementType() == ElementType::Array) {
            for (Element const& part : element.CastTo<Array>())
                visit(part);
        } else if (element.GetElementType() == ElementType::Object) {
            for (auto const& member : element.CastTo<Object>())
                visit(member.element());
        }
    }

    void visitInteger(long integer)
    {
        auto const nearest = static_cast<double>(integer);
        // The greatest Integers are nearest to 2^63, whose floor counts as the nearest Integer there is.
        long const again = nearest < 0x1p63 ? static_cast<long>(nearest) : std::numeric_limits<long>::max();
        isEqual_ = isEqual_ && again == integer;
    }

    void visitNumber(double number)
    {
        if (std::isfinite(number) || !refusal_.empty())
            return;
        // "nan" begins as "null" does; a sign is a number of its own to the scanner.
        refusal_ = std::isnan(number) ? "Expected string: null" : "Unexpected character in stream: i";
    }

    Element tree_;
    std::string refusal_;
    bool isEqual_ = true;
};

void checkRoundTrip(Object const& tree, Expectation const& expected, bool pretty)
{
    std::string const text = written(tree, pretty);
    checkSame(text, plainlyWritten(Element(tree), pretty), "the writer writes what its rules say");

    std::istringstream stream(text + " rest");
    Object again;
    try {
        ReaderJson::Read(again, stream);
    } catch (ReaderJson::ScanException const& error) {
        checkSame(error.what(), expected.refusal(), "only a word for a Number is refused");
        check(again.empty(), "a text that is refused by the scanner leaves the target as it was");
        return;
    } catch (std::exception const& error) {
        fail("nothing else is thrown", error.what());
    }
    check(expected.refusal().empty(), "a word for a Number is refused", text);
    checkSame(detailsOf(again), detailsOf(expected.tree()), "what was written is read back");
    check((again == tree) == expected.isEqual(), "it is equal if no Integer lost digits", text);
    check(stream.good(), "the stream is good behind the closing brace");
    checkSame(std::string(std::istreambuf_iterator<char>(stream), {}), " rest", "the rest stays in the stream");
    checkSame(written(again, pretty), plainlyWritten(expected.tree(), pretty), "and can be written again");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    auto const tree = objectOf(TreeReader(Input(data, size).rest()).next());
    Expectation const expected(tree);
    checkRoundTrip(tree, expected, true);
    checkRoundTrip(tree, expected, false);
    return 0;
}
