// The JSON readers and the writer when memory runs out, at each allocation in turn. What they leave behind is for the
// leak check of the sanitizers' build.
#include "zelm/metadata/reader_json.h"
#include "zelm/metadata/writer_json.h"

#include "tests/support/child_process.h"
#include "tests/support/failing_allocator.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <new>
#include <sstream>
#include <streambuf>
#include <string>
#include <string_view>

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

namespace Zelm::MetaData {
namespace {

using Zelm::Testing::AllocationCount;
using Zelm::Testing::failEachAllocationInTurn;

std::string const mixedText =
    R"({"a":[1,2.5,"a string too long for its object",{"b":null}],"a name too long":{"c":[[]]}})";

TEST(JsonAllocation, failingInTheTokenReaderIsReportedAndLeavesATargetThatIsFitForUse)
{
    Object object;
    auto const failures = failEachAllocationInTurn(
        [&] {
            object.clear();
            std::istringstream stream(mixedText);
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
            ReaderJson::Read(object, mixedText);
        },
        [&] { EXPECT_LE(object.size(), 1u); });

    EXPECT_GT(failures, 10u);
    EXPECT_EQ(object.size(), 2u);
}

TEST(JsonAllocation, failingInTheStreamThatIsWrittenToIsAFailureOfTheStream)
{
    Object object;
    ReaderJson::Read(object, mixedText);
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

/// A megabyte of white space in pieces of the given size in front of each character of an empty Object.
class LongSilence : public std::streambuf {
public:
    explicit LongSilence(std::size_t pieceSize) : silence_(pieceSize, ' ') {}

protected:
    int_type underflow() override
    {
        bool const silent = pieces_ < (1 << 20) / silence_.size();
        pieces_ = silent ? pieces_ + 1 : 0;
        if (!silent && objectAt_ == sizeof object_)
            return traits_type::eof();
        char* const piece = silent ? silence_.data() : object_ + objectAt_++;
        setg(piece, piece, piece + (silent ? silence_.size() : 1));
        return traits_type::to_int_type(*piece);
    }

private:
    std::size_t pieces_ = 0;
    std::size_t objectAt_ = 0;
    std::string silence_;
    char object_[2] = {'{', '}'};
};

TEST(JsonAllocation, isNotNeededForWhiteSpaceInFrontOfAnObjectOrInside)
{
    for (std::size_t const pieceSize : {1u, 64u, 1u << 20}) {
        SCOPED_TRACE(pieceSize);
        LongSilence source(pieceSize);
        std::istream stream(&source);
        Object object;

        AllocationCount const allocations;
        ReaderJson::Read(object, stream);
        auto const made = allocations.made();

        EXPECT_LT(made, 10u);  // a text that grows to a megabyte takes more
    }
}

TEST(JsonAllocation, failingInTheFastReaderLeavesNoMemberWithoutItsValue)
{
    Object object;
    failEachAllocationInTurn(
        [&] {
            object.clear();
            ReaderJson::Read(object,
                             R"({"a":["a string too long for its object"],"b":{"c":[1]},"d":"another long one, "})");
        },
        [&] {
            for (auto const& member : object)
                EXPECT_NE(member.element().GetElementType(), ElementType::Null) << member.name();
        });

    EXPECT_EQ(object.size(), 3u);
}

/// Holds 4000 characters without asking for memory.
class FixedBuffer : public std::streambuf {
public:
    FixedBuffer() { setp(buffer_, buffer_ + sizeof buffer_); }
    std::string_view content() const { return {pbase(), static_cast<std::size_t>(pptr() - pbase())}; }

private:
    char buffer_[4000];
};

TEST(JsonAllocation, failingForADeepIndentationIsReportedAndEndsTheTextThere)
{
    Element tree;
    Element* innermost = &tree;
    for (int level = 0; level < 20; ++level)
        innermost = &(*innermost)[0];
    *innermost = Element(Trivial_T<bool>(true));
    FixedBuffer whole;
    std::ostream wholeStream(&whole);
    WriterJson::Write(tree, wholeStream, true);

    std::size_t written = 0;
    auto const failures = failEachAllocationInTurn(
        [&] {
            FixedBuffer buffer;
            std::ostream stream(&buffer);
            try {
                WriterJson::Write(tree, stream, true);
            } catch (std::bad_alloc const&) {
                written = buffer.content().size();
                EXPECT_EQ(buffer.content(), whole.content().substr(0, written));
                throw;
            }
            EXPECT_EQ(buffer.content(), whole.content());
        },
        [&] { EXPECT_EQ(whole.content().substr(written - 2, 3), "[\n\t"); });

    EXPECT_GT(failures, 0u);
}

// ----------------------------------------------------------------------------------------- memory of the parser's own

/// Lets the process have this much more memory than it has now.
void limitMemoryTo(std::size_t more)
{
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + more;
    setrlimit(RLIMIT_AS, &limit);
}

void liftTheLimit()
{
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_AS, &limit);
}

/// Prints how often memory ran out before there was enough of it, in steps of half a megabyte.
int readWithMoreAndMoreMemory(std::string const& document)
{
    mallopt(M_MMAP_THRESHOLD, 1 << 16);  // large blocks go back to the system, so that each attempt needs them anew
    for (std::size_t steps = 0;; ++steps) {
        Object object;
        bool failed = false;
        limitMemoryTo(steps << 19);
        try {
            ReaderJson::Read(object, document);
        } catch (std::bad_alloc const&) {
            failed = true;
        }
        liftTheLimit();
        if (failed != object.empty())
            return 1;
        if (!failed) {
            std::cout << (steps > 4 ? "often" : "seldom");
            return 0;
        }
    }
}

ZELM_CHILD(readsALongArrayWithMoreAndMoreMemory)
{
    std::string document = "{\"a\":[";
    for (int i = 0; i < 200000; ++i)
        document += "1,";
    return readWithMoreAndMoreMemory(document + "1]}");
}

ZELM_CHILD(readsALongStringWithMoreAndMoreMemory)
{
    return readWithMoreAndMoreMemory("{\"a\":\"" + std::string(4 << 20, 'x') + "\"}");
}

TEST(JsonAllocation, failingInTheFastReadersParserIsReported)
{
    if (Zelm::Testing::underSanitizer)
        GTEST_SKIP() << "a sanitizer's runtime needs the address space for itself";
    if (Zelm::Testing::underEmulation)
        GTEST_SKIP() << "an emulated program's memory can't be limited";

    for (char const* piece : {"readsALongArrayWithMoreAndMoreMemory", "readsALongStringWithMoreAndMoreMemory"}) {
        SCOPED_TRACE(piece);
        auto const child = Zelm::Testing::runChild(piece);

        EXPECT_EQ(child.status, 0) << child.err;
        EXPECT_EQ(child.out, "often");
    }
}

}  // namespace
}  // namespace Zelm::MetaData
