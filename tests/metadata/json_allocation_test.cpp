// The JSON readers and the writer when memory runs out, at each allocation in turn. What they leave behind is for the
// leak check of the sanitizers' build.
#include "zelm/metadata/reader_json.h"
#include "zelm/metadata/writer_json.h"

#include "tests/support/failing_allocator.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <sstream>
#include <streambuf>
#include <string>

namespace Zelm::MetaData {
namespace {

using Testing::AllocationCount;
using Testing::failEachAllocationInTurn;

std::string const text = R"({"a":[1,2.5,"a string too long for its object",{"b":null}],"a name too long":{"c":[[]]}})";

TEST(JsonAllocation, failingInTheTokenReaderIsReportedAndLeavesATargetThatIsFitForUse)
{
    Object object;
    auto const failures = failEachAllocationInTurn(
        [&] {
            object.clear();
            std::istringstream stream(text);
            ReaderJson::Read(object, stream);
        },
        [&] { EXPECT_LE(object.size(), 1u); });

    EXPECT_GT(failures, 10u);
    EXPECT_EQ(object.size(), 2u);
}

TEST(JsonAllocation, failingInTheFastReaderIsReportedAndLeavesATargetThatIsFitForUse)
{
    Object object;
    auto const failures = failEachAllocationInTurn(
        [&] {
            object.clear();
            ReaderJson::Read(object, text);
        },
        [&] { EXPECT_LE(object.size(), 2u); });

    EXPECT_GT(failures, 10u);
    EXPECT_EQ(object.size(), 2u);
}

TEST(JsonAllocation, failingInTheStreamThatIsWrittenToIsAFailureOfTheStream)
{
    Object object;
    ReaderJson::Read(object, text);
    std::string whole;
    std::string written;
    {
        std::ostringstream stream;
        WriterJson::Write(object, stream, true);
        whole = stream.str();
    }

    failEachAllocationInTurn(
        [&] {
            std::ostringstream stream;
            WriterJson::Write(object, stream, true);
            bool const failed = stream.bad();
            written = stream.str();
            EXPECT_EQ(written == whole, !failed);
            EXPECT_EQ(whole.compare(0, written.size(), written), 0);
        },
        [] {});

    EXPECT_EQ(written, whole);
}

TEST(JsonAllocation, isNotTriedAgainAndAgainForAStringThatIsNotClosed)
{
    std::istringstream stream("{\"a");
    Object object;

    AllocationCount const allocations;
    EXPECT_THROW(ReaderJson::Read(object, stream), std::bad_alloc);
    auto const made = allocations.made();

    EXPECT_LT(made, 10u);  // a string that doubles in size until memory is full takes more
}

/// A megabyte of white space in small pieces, and an Object behind it.
class LongSilence : public std::streambuf {
protected:
    int_type underflow() override
    {
        bool const silent = pieces_ < (1 << 20) / sizeof silence_;
        char* const piece = silent ? silence_ : object_;
        auto const size = silent ? sizeof silence_ : sizeof object_;
        ++pieces_;
        std::memset(silence_, ' ', sizeof silence_);
        setg(piece, piece, piece + size);
        return traits_type::to_int_type(*piece);
    }

private:
    std::size_t pieces_ = 0;
    char silence_[64] = {};
    char object_[2] = {'{', '}'};
};

TEST(JsonAllocation, isNotNeededForWhiteSpaceInFrontOfAnObject)
{
    LongSilence source;
    std::istream stream(&source);
    Object object;

    AllocationCount const allocations;
    ReaderJson::Read(object, stream);
    auto const made = allocations.made();

    EXPECT_LT(made, 10u);  // a text that grows to a megabyte takes more
}

}  // namespace
}  // namespace Zelm::MetaData
