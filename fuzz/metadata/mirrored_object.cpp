// A mirrored object with a field of every kind reads any trees, one after the other, and writes itself over them,
// beside a model that spells out the rules. It is the same object again after a way through its tree, and through JSON
// text, as far as text can carry what it holds.
#include "zelm/metadata/mirrored_object.h"

#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/json_losses.h"
#include "fuzz/support/outcome.h"
#include "fuzz/support/plain_fields.h"
#include "fuzz/support/trees.h"
#include "zelm/metadata/reader_json.h"
#include "zelm/metadata/reflector.h"

#include <cmath>
#include <complex>
#include <limits>
#include <sstream>

using namespace Zelm;
using namespace Zelm::Fuzzing;
using namespace Zelm::MetaData;

namespace {

// -------------------------------------------------------------------------------------------- the object and its model

template <class T> using Value = Reflector<T, false, true>;

class Part : public MirroredObject {
public:
    Part() = default;
    Part(Part const& other) : MirroredObject() { *this = other; }
    Part& operator=(Part const& other) = default;
    ~Part() override = default;

    Value<std::string> text{this, "t", "none"};
    Value<int> count{this, "c"};
    ReflectorArray<std::string> names{this, "n", false};
};

PlainObject plainPart()
{
    PlainObject part;
    part.add<PlainValue>("t", stringOf, string("")).require(string("none"));
    part.add<PlainValue>("c", integerOf<int>, integer(0));
    part.add<PlainArray>("n", stringOf);
    return part;
}

class Whole : public MirroredObject {
public:
    Whole() = default;
    Whole(Whole const& other) : MirroredObject() { *this = other; }
    Whole& operator=(Whole const& other) = default;
    ~Whole() override = default;

    Value<double> real{this, "d", 2.5};
    Value<float> single{this, "f"};
    Value<signed char> int8{this, "i8"};
    Value<short> int16{this, "i16"};
    Value<int> int32{this, "i32", 5};
    Value<long> int64{this, "i64"};
    Value<unsigned char> uint8{this, "u8"};
    Value<unsigned short> uint16{this, "u16"};
    Value<unsigned int> uint32{this, "u32"};
    Value<unsigned long> uint64{this, "u64", 7ul};
    Value<bool> flag{this, "b"};
    Value<std::string> text{this, "s"};
    Value<std::complex<double>> complex{this, "z"};
    Value<std::complex<short>> complexInt16{this, "zi", std::complex<short>(1, 2)};
    Value<std::complex<bool>> complexFlag{this, "zb"};
    Value<std::vector<int>> list{this, "l"};
    Value<std::vector<std::string>> textList{this, "ls"};
    Reflector<Part, true, true> part{this, "p"};
    Reflector<Part, true, true> requiredPart{this, "pr", Part()};
    ReflectorArray<int> numbers{this, "a", std::vector<int>{1, 1, 0}};
    ReflectorArray<int> optionalNumbers{this, "ao", false};
    ReflectorArray<std::string> names{this, "n", false};
    ReflectorArray<Part> parts{this, "ps", true};
};

PlainObject plainWhole()
{
    Element const zeroNumber = Trivial_T<double>(0.0);
    Element const no = Trivial_T<bool>(false);
    auto const two = [](Element const& real, Element const& imaginary) {
        Array array;
        array.insert(real);
        array.insert(imaginary);
        return Element(array);
    };
    auto const places = PlainValue::Writing::intoFirstTwoPlaces;

    PlainObject whole;
    whole.add<PlainValue>("d", numberOf, zeroNumber).require(Trivial_T<double>(2.5));
    whole.add<PlainValue>("f", floatOf, zeroNumber);
    whole.add<PlainValue>("i8", integerOf<signed char>, integer(0));
    whole.add<PlainValue>("i16", integerOf<short>, integer(0));
    whole.add<PlainValue>("i32", integerOf<int>, integer(0)).require(integer(5));
    whole.add<PlainValue>("i64", integerOf<long>, integer(0));
    whole.add<PlainValue>("u8", integerOf<unsigned char>, integer(0));
    whole.add<PlainValue>("u16", integerOf<unsigned short>, integer(0));
    whole.add<PlainValue>("u32", integerOf<unsigned int>, integer(0));
    whole.add<PlainValue>("u64", integerOf<unsigned long>, integer(0)).require(integer(7));
    whole.add<PlainValue>("b", booleanOf, no);
    whole.add<PlainValue>("s", stringOf, string(""));
    whole.add<PlainValue>("z", complexOf<numberOf>, two(zeroNumber, zeroNumber), places);
    whole.add<PlainValue>("zi", complexOf<integerOf<short>>, two(integer(0), integer(0)), places)
        .require(two(integer(1), integer(2)));
    whole.add<PlainValue>("zb", complexOf<booleanOf>, two(no, no), places);
    whole.add<PlainValue>("l", listOf<integerOf<int>>, Array());
    whole.add<PlainValue>("ls", listOf<stringOf>, Array());
    whole.add<PlainNested>("p", plainPart);
    whole.add<PlainNested>("pr", plainPart).PlainField::require();
    auto& numbers = whole.add<PlainIntArray>("a");
    numbers.require();
    numbers.values = {integer(1), integer(1), integer(0)};
    numbers.encoded = true;
    whole.add<PlainIntArray>("ao");
    whole.add<PlainArray>("n", stringOf);
    whole.add<PlainRows>("ps", plainPart).require();
    return whole;
}

Element formOf(Whole const& whole)
{
    Element form;
    whole.copyToMetaData(form);
    return form;
}

// ----------------------------------------------------------------------------------------------------------- JSON text

/// Whether two forms are the same but for last places of a Number, and an integral one may be an Integer.
bool almostSame(Element const& a, Element const& b)
{
    auto const isNumber = [](Element const& element) {
        return element.GetElementType() == ElementType::Number || element.GetElementType() == ElementType::Integer;
    };
    if (isNumber(a) && isNumber(b)) {
        double const x = a.asDouble();
        double const y = b.asDouble();
        bool const isUnsigned = x >= 0x1p63 && x < 0x1p64;  // comes back as the negative number of its bits
        return isUnsigned || std::abs(x - y) <= 4 * std::numeric_limits<double>::epsilon() * std::abs(x) ||
               std::abs(x) < std::numeric_limits<double>::min();
    }
    if (a.GetElementType() != b.GetElementType())
        return false;
    if (a.GetElementType() == ElementType::Array) {
        auto const& as = a.CastTo<Array>();
        auto const& bs = b.CastTo<Array>();
        return std::equal(as.begin(), as.end(), bs.begin(), bs.end(), almostSame);
    }
    if (a.GetElementType() == ElementType::Object) {
        auto const& as = a.CastTo<Object>();
        auto const& bs = b.CastTo<Object>();
        return std::equal(as.begin(), as.end(), bs.begin(), bs.end(), [](auto const& x, auto const& y) {
            return x.name() == y.name() && almostSame(x.element(), y.element());
        });
    }
    return detailsOf(a) == detailsOf(b);
}

void checkText(Element const& form)
{
    JsonLosses const losses = lossesInJson(form);
    if (losses.notANumber)
        return;
    std::string const text = Json::metaDatatoJsonString(form.CastTo<Object>());

    std::istringstream stream(text);
    Element byTokens;
    ReaderJson::Read(byTokens, stream);
    Whole whole;
    whole.copyFromMetaData(byTokens);
    PlainObject plain = plainWhole();
    plain.read(withoutIntegers(form));
    checkSame(detailsOf(formOf(whole)), detailsOf(plain.form()), "the object comes back from its JSON text");

    if (losses.controlCharacters)
        return;
    Element const byFastPath = Json::jsonStringtoMetaData(text);
    check(almostSame(form, byFastPath), "the form comes back from its JSON text by the fast path", text);
    Whole fast;
    fast.copyFromMetaData(byFastPath);
    PlainObject plainFast = plainWhole();
    plainFast.read(byFastPath);
    checkSame(detailsOf(formOf(fast)), detailsOf(plainFast.form()), "the object reads what the fast path makes");
}

// ---------------------------------------------------------------------------------------------------------- the target

void checkCopies(Whole const& whole, Element const& form)
{
    Whole copied(whole);
    Whole assigned;
    assigned.copyFromMetaData(Element());
    assigned = whole;
    checkSame(detailsOf(formOf(assigned)), detailsOf(formOf(copied)), "a copy is what an assignment makes");
    checkSame(detailsOf(formOf(copied)), detailsOf(form), "a copy has the form of what it was copied from");
    copied.copyFromMetaData(Element());
    checkSame(detailsOf(formOf(whole)), detailsOf(form), "what befalls a copy leaves its source alone");

    Whole again;
    check(outcomeOf([&] { again.copyFromMetaData(form); }) == "returned", "an object can read its own form");
    checkSame(detailsOf(formOf(again)), detailsOf(form), "an object comes back from its own form");
}

void checkObject(TreeReader trees)
{
    Whole whole;
    PlainObject plain = plainWhole();
    do {
        Element const source = trees.next();
        checkSame(outcomeOf([&] { whole.copyFromMetaData(source); }), outcomeOf([&] { plain.read(source); }),
                  "reading an object ends as the model says");
        Element const form = formOf(whole);
        checkSame(detailsOf(form), detailsOf(plain.form()), "an object is read as the model says");

        Element target = source;
        whole.copyToMetaData(target);
        Element plainTarget = source;
        plain.write(plainTarget);
        checkSame(detailsOf(target), detailsOf(plainTarget), "an object is written over a tree as the model says");
    } while (trees.hasNext());

    checkCopies(whole, formOf(whole));
    checkText(formOf(whole));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Input input(data, size);
    printedBy(std::cout, [&] { checkObject(TreeReader(input.rest())); });  // what isn't looked at goes nowhere
    return 0;
}
