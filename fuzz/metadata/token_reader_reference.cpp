// The token reader beside the reference that spells its rules out: for any text, target and stream they must end alike,
// with the same value or exception, the same places in it, and the stream in the same state at the same place.
//
// Input: six characters choose, '0' being the first choice each time, and the rest is the text.
//   1  the target: an Object, an Element, or one of the types that no text lets return
//   2  what the target holds already
//   3  the stream: a std::stringstream, or a source that hands its text out in pieces of 0 (no buffer), 1, 2, 3, 7
//   bytes
//      or as a whole
//   4  which of its state bits make the stream throw
//   5  its state beforehand, or that its source breaks at the end
//   6  the rest: skipws off, a tied stream, another locale or rounding mode; four reads in place of one from '6' on
#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "tests/metadata/elements.h"
#include "tests/metadata/token_reading.h"

#include <cfenv>
#include <locale>

using namespace Zelm;
using namespace Zelm::Fuzzing;
using namespace Zelm::MetaData;
using namespace Zelm::MetaData::Testing;

namespace {

/// With a comma for the point, and a point between groups of digits.
class CommaForPoint : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

void useCommaForPoint(bool use)
{
    static std::locale const comma(std::locale::classic(), new CommaForPoint);
    static bool isUsed = false;
    if (use != isUsed)  // changing it is slow
        std::locale::global(use ? comma : std::locale::classic());
    isUsed = use;
}

Setting settingFrom(Input& input)
{
    using Ios = std::ios_base;
    static std::optional<std::size_t> const pieceSizes[] = {{}, {}, 0, 1, 2, 3, 7, wholeText};
    static Ios::iostate const exceptions[] = {
        Ios::goodbit, Ios::goodbit, Ios::eofbit, Ios::failbit, Ios::badbit, Ios::eofbit | Ios::failbit,
    };
    static Ios::iostate const states[] = {
        Ios::goodbit, Ios::goodbit, Ios::goodbit, Ios::eofbit, Ios::failbit, Ios::badbit,
    };
    Setting setting;
    setting.pieceSize = pieceSizes[input.choice(8)];
    setting.exceptions = exceptions[input.choice(6)];
    auto const state = input.choice(6);
    setting.throwsAtTheEnd = state == 1;
    setting.state = states[state];
    return setting;
}

template <class T> void checkAlike(T const& target, std::string const& text, Setting const& setting)
{
    checkSame(outcomeOf(byLibrary, target, text, setting), outcomeOf(byReference, target, text, setting),
              "the token reader does what the reference does");
}

void checkAlikeForTarget(unsigned type, unsigned content, std::string const& text, Setting const& setting)
{
    static auto const elements = oneOfEachKind();
    static Object const member = object({{"a", integer(1)}, {"z", null()}}).CastTo<Object>();
    bool const filled = content != 0;
    switch (type) {
    case 0:
        return checkAlike(filled ? member : Object(), text, setting);
    case 1:
        return checkAlike(filled ? elements[content % elements.size()] : Element(), text, setting);
    case 2:
        return checkAlike(filled ? array({integer(1), null()}).CastTo<Array>() : Array(), text, setting);
    case 3:
        return checkAlike(Trivial_T<std::string>(filled ? "old" : ""), text, setting);
    case 4:
        return checkAlike(Trivial_T<double>(filled ? 2.5 : 0.0), text, setting);
    case 5:
        return checkAlike(Trivial_T<long>(filled ? 7 : 0), text, setting);
    case 6:
        return checkAlike(Trivial_T<bool>(filled), text, setting);
    default:
        return checkAlike(Null(), text, setting);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static int const roundingModes[] = {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};
    Input input(data, size);
    auto const type = input.choice(8);
    auto const content = input.choice(8);
    auto setting = settingFrom(input);
    auto const more = input.choice(12);
    setting.reads = more < 6 ? 1 : 4;
    setting.skipsWhiteSpace = more % 6 != 1;
    setting.tied = more % 6 == 2;
    bool const comma = more % 6 == 3;
    int const rounding = more % 6 < 4 ? FE_TONEAREST : roundingModes[1 + (more + content) % 3];
    std::string const text(input.rest());

    useCommaForPoint(comma);
    std::fesetround(rounding);
    checkAlikeForTarget(type, content, text, setting);
    std::fesetround(FE_TONEAREST);
    return 0;
}
