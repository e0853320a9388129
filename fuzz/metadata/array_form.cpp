// Arrays in object form: any trees are read into an array of int, whatever state it is in, and into the encoders of
// bits, and written over any trees, beside a model that spells out the rules. What is written reads back as it was.
//
// In front of the trees stand choices. 0 is an array of int: behind that 0 for a required one, 1 for an optional one
// with a value, 2 for one without; 0 if it is read by itself, 1 as a member of its object; 0 for the plain form, 1 for
// the object form, 2 for the one that it has. 2 are bits and 3 pairs of bits: behind that the number of elements.
#include "zelm/metadata/reflector.h"

#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/outcome.h"
#include "fuzz/support/plain_fields.h"
#include "fuzz/support/trees.h"
#include "zelm/core/base64.h"
#include "zelm/core/exceptions.h"

#include <complex>

using namespace Zelm;
using namespace Zelm::Fuzzing;
using namespace Zelm::MetaData;

namespace {

// ------------------------------------------------------------------------------------------------------- arrays of int

using IntArray = ReflectorArray<int>;

/// State, form and elements. The elements of an array without a value are hidden, so they are looked at in a copy.
std::string stateOf(IntArray const& array)
{
    IntArray copy(nullptr, "copy", false);
    copy = array;
    std::string text = std::string(array.initialized() ? "set " : "unset ") +
                       (array.isRequired() ? "required " : "optional ") + (array.encoded() ? "encoded" : "plain");
    for (int const value : copy.edit())
        text += ' ' + std::to_string(value);
    return text;
}

std::string stateOf(PlainIntArray const& array)
{
    std::string text = std::string(array.set ? "set " : "unset ") + (array.required ? "required " : "optional ") +
                       (array.encoded ? "encoded" : "plain");
    for (auto const& value : array.values)
        text += ' ' + std::to_string(wholeNumberOf(value));
    return text;
}

/// An array in a mirrored object, and the model of both.
struct IntArrays {
    struct Required : MirroredObject {
        IntArray array{this, "a", std::vector<int>{1, 1, 0}};
    };
    struct Optional : MirroredObject {
        IntArray array{this, "a", false};
    };

    explicit IntArrays(unsigned state) : array(state == 0 ? required.array : optional.array)
    {
        if (state == 0) {
            plainArray.require();
            plainArray.encoded = true;
            plainArray.values = {integer(1), integer(1), integer(0)};
        } else if (state == 1) {
            array = {7};
            plainArray.values = {integer(7)};
            plainArray.init();
        }
    }

    MirroredObject& object() { return &array == &required.array ? static_cast<MirroredObject&>(required) : optional; }

    Required required;
    Optional optional;
    IntArray& array;
    PlainObject plainObject;
    PlainIntArray& plainArray = plainObject.add<PlainIntArray>("a");
};

/// Written over the target, and read from there again.
void checkWriting(IntArrays const& arrays, Element const& target)
{
    Element written = target;
    arrays.array.copyToMetaData(written);
    Element plainlyWritten = target;
    arrays.plainArray.write(plainlyWritten);
    checkSame(detailsOf(written), detailsOf(plainlyWritten), "an array is written as the model says");
    if (!arrays.array.initialized())
        return;

    IntArray again(nullptr, "a", true);
    again.setEncoded(arrays.array.encoded());
    checkSame(outcomeOf([&] { again.copyFromMetaData(written); }), "returned", "what was written can be read");
    check(again() == arrays.array() && again.encoded() == arrays.array.encoded(), "what was written reads as it was",
          detailsOf(written));
}

void checkIntArray(Input& input)
{
    IntArrays arrays(input.choice(3));
    bool const byObject = input.choice(2) == 1;
    if (unsigned const encoded = input.choice(3); encoded < 2) {
        arrays.array.setEncoded(encoded == 1);
        arrays.plainArray.encoded = encoded == 1;
    }

    TreeReader trees(input.rest());
    do {
        Element const source = trees.next();
        auto const outcome = outcomeOf([&] {
            if (byObject)
                arrays.object().copyFromMetaData(source);
            else
                arrays.array.copyFromMetaData(source);
        });
        auto const plainOutcome = outcomeOf([&] {
            if (byObject)
                arrays.plainObject.read(source);
            else
                arrays.plainArray.read(source);
        });
        checkSame(outcome, plainOutcome, "reading an array ends as the model says");
        checkSame(stateOf(arrays.array), stateOf(arrays.plainArray), "an array is read as the model says");
        checkSame(outcomeOf([&] { arrays.array(); }), arrays.plainArray.set ? "returned" : outcomeOf([] {
                      throw Zelm::Exception::InvalidOperation(
                          "> a < not initialized in Zelm::MetaData::ReflectorArray::operator()()");
                  }),
                  "an array without a value throws and no other does");
        checkWriting(arrays, source);
        checkWriting(arrays, Element());
    } while (trees.hasNext());
}

// ------------------------------------------------------------------------------------------------------ arrays of bits

/// Above this, "len" alone would make the target slow, or exhaust the memory: it is trusted.
constexpr unsigned long longest = 1 << 12;

template <class T> constexpr unsigned int codeOf = 1;
template <> constexpr unsigned int codeOf<std::complex<bool>> = 2;

// The bits of an array, the real part of each element first.
std::vector<bool> bitsOf(std::vector<bool> const& values)
{
    return values;
}
std::vector<bool> bitsOf(std::vector<std::complex<bool>> const& values)
{
    std::vector<bool> bits;
    for (auto const& value : values) {
        bits.push_back(value.real());
        bits.push_back(value.imag());
    }
    return bits;
}

void setElement(std::vector<bool>& values, std::size_t i, std::vector<bool> const& bits)
{
    values[i] = bits[i];
}
void setElement(std::vector<std::complex<bool>>& values, std::size_t i, std::vector<bool> const& bits)
{
    values[i] = {bits[2 * i], bits[2 * i + 1]};
}

/// What the object form says, as far as it can be read.
struct ObjectForm {
    explicit ObjectForm(Element const& source)
    {
        plain.read(source);
        type = static_cast<unsigned int>(wholeNumberOf(typeField.value));
        len = static_cast<unsigned long>(wholeNumberOf(lenField.value));
    }

    PlainObject plain;
    PlainValue& typeField = plain.add<PlainValue>("type", integerOf<unsigned int>, integer(0));
    PlainValue& lenField = plain.add<PlainValue>("len", integerOf<unsigned long>, integer(0));
    PlainValue& base64 = plain.add<PlainValue>("base64", stringOf, string(""));
    unsigned int type = 0;
    unsigned long len = 0;
};

template <class T> void plainlyDecode(ObjectForm const& form, std::vector<T>& values)
{
    if (form.type != codeOf<T>) {
        std::cout << "Exception MetaData::ReflectorArray wrong encoded type\n";
        return;
    }
    if (form.len == 0)
        return values.clear();
    if (!form.base64.set)
        throw Zelm::Exception::InvalidOperation(
            "> base64 < not initialized in Zelm::MetaData::Reflector::operator()()");

    std::string const& text = form.base64.value.CastTo<Trivial_T<std::string>>();
    std::vector<unsigned char> bytes(decodeSize(text));
    decodeBase64(text, bytes.data(), bytes.size());
    std::vector<bool> bits;
    for (unsigned const byte : bytes) {
        for (unsigned mask = 128; mask != 0; mask /= 2)
            bits.push_back((byte & mask) != 0);
    }
    bits.resize(2 * form.len);  // beyond the text all are false
    values.resize(form.len);
    for (std::size_t i = 0; i < form.len; ++i)
        setElement(values, i, bits);
}

template <class T> void checkEncoding(std::vector<T> const& values)
{
    Base64Encoder<T> encoder;
    encoder.encode(values);
    Element written;
    encoder.copyToMetaData(written);

    Element expected;
    expected["type"] = integer(codeOf<T>);
    expected["len"] = integer(static_cast<long>(values.size()));
    if (!values.empty()) {
        std::vector<unsigned char> bytes;
        auto const bits = bitsOf(values);
        for (std::size_t i = 0; i < bits.size(); ++i) {
            if (i % 8 == 0)
                bytes.push_back(0);
            if (bits[i])
                bytes.back() = static_cast<unsigned char>(bytes.back() + (128 >> i % 8));
        }
        std::string text;
        encodeBase64(bytes.data(), bytes.size(), text);
        expected["base64"] = string(text);
    }
    checkSame(detailsOf(written), detailsOf(expected), "bits are written as the rules say");

    Base64Encoder<T> reader;
    reader.copyFromMetaData(written);
    std::vector<T> again(3);
    reader.decode(again);
    check(again == values, "bits that were written read as they were");
}

template <class T> void checkBits(Input& input)
{
    std::vector<T> values(input.choice(20));
    Base64Encoder<T> encoder;
    TreeReader trees(input.rest());
    do {
        Element const source = trees.next();
        ObjectForm const form(source);
        if (form.len > longest)
            return;

        encoder.copyFromMetaData(source);
        auto plainValues = values;
        checkSame(outcomeOf([&] { encoder.decode(values); }), outcomeOf([&] { plainlyDecode(form, plainValues); }),
                  "decoding bits ends as the rules say");
        check(values == plainValues, "bits are decoded as the rules say", detailsOf(source));
        checkEncoding(values);
    } while (trees.hasNext());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Input input(data, size);
    switch (input.choice(4)) {
    case 2:
        checkBits<bool>(input);
        break;
    case 3:
        checkBits<std::complex<bool>>(input);
        break;
    default:
        checkIntArray(input);
    }
    return 0;
}
