#include "zelm/metadata/reflector.h"

#include "tests/metadata/elements.h"

#include <gtest/gtest.h>

#include <functional>
#include <ios>
#include <iostream>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

namespace Zelm::MetaData {
namespace {

using Testing::array;
using Testing::boolean;
using Testing::integer;
using Testing::object;
using Testing::string;

/// Puts a buffer of the test's own under std::cout for as long as it lives.
class CoutThrough {
public:
    explicit CoutThrough(std::streambuf& buffer, std::ios_base::iostate exceptions = std::ios_base::goodbit)
        : before_(std::cout.rdbuf(&buffer)), exceptionsBefore_(std::cout.exceptions())
    {
        std::cout.exceptions(exceptions);
    }
    CoutThrough(CoutThrough const&) = delete;
    CoutThrough& operator=(CoutThrough const&) = delete;
    ~CoutThrough()
    {
        std::cout.rdbuf(before_);  // clears the state too, without which exceptions() might throw
        std::cout.exceptions(exceptionsBefore_);
    }

private:
    std::streambuf* before_;
    std::ios_base::iostate exceptionsBefore_;
};

/// Keeps what has been written at each flush.
class FlushRecorder : public std::streambuf {
public:
    std::vector<std::string> flushed;

private:
    int_type overflow(int_type byte) override
    {
        if (!traits_type::eq_int_type(byte, traits_type::eof()))
            pending_ += traits_type::to_char_type(byte);
        return traits_type::not_eof(byte);
    }
    int sync() override
    {
        flushed.push_back(pending_);
        pending_.clear();
        return 0;
    }

    std::string pending_;
};

/// A full disk or a closed pipe: takes nothing.
class Failing : public std::streambuf {
    int_type overflow(int_type) override { return traits_type::eof(); }
    int sync() override { return -1; }
};

/// A member whose reading throws.
class Unreadable : public ReflectorBase {
public:
    explicit Unreadable(MirroredObject* parent) : ReflectorBase(parent, "unreadable", false) {}
    void copyToMetaData(Element&) const override {}
    void copyFromMetaData(Element const&) override { throw Exception("unreadable"); }
};

/// What leads to one line, and the line.
struct Diagnostic {
    std::string line;
    std::function<void()> cause;
};

std::vector<Diagnostic> diagnostics()
{
    return {
        {"Provide better error handling please.\n",
         [] {
             MirroredObject parent;
             Unreadable const unreadable(&parent);
             Reflector<int, false, true> const next(&parent, "next");
             parent.copyFromMetaData(object({{"next", integer(1)}}));
             EXPECT_EQ(next(), 1);
         }},
        {"Exception MetaDat::ReflectorArray Should have gotten an Array, but didn't\n",
         [] {
             ReflectorArray<std::string> strings(nullptr, "key", {"a"});
             strings.assign(object({{"key", string("b")}}));
             EXPECT_EQ(strings(), std::vector<std::string>{"a"});
         }},
        {"Exception MetaDat::ReflectorArray MetaData Array corrupt for key\n",
         [] {
             ReflectorArray<std::string> strings(nullptr, "key", {"a"});
             strings.assign(object({{"key", array({boolean(true)})}}));
             EXPECT_EQ(strings(), std::vector<std::string>{"a"});
         }},
        {"Exception MetaData::ReflectorArray wrong encoded type\n",
         [] {
             ReflectorArray<int> ints(nullptr, "key", {1});
             ints.assign(object({{"key", object({{"type", integer(1)}})}}));
             EXPECT_EQ(ints(), std::vector<int>{1});
         }},
    };
}

TEST(DiagnosticLines, areFlushedOneByOne)
{
    for (auto const& diagnostic : diagnostics()) {
        FlushRecorder recorder;
        {
            CoutThrough const through(recorder);
            diagnostic.cause();
        }
        EXPECT_EQ(recorder.flushed, std::vector<std::string>{diagnostic.line});
    }
}

TEST(DiagnosticLines, areLostWithoutAnExceptionOnAStandardOutputThatFailsAndThrows)
{
    for (auto const& diagnostic : diagnostics()) {
        SCOPED_TRACE(diagnostic.line);
        Failing failing;
        CoutThrough const through(failing, std::ios_base::badbit | std::ios_base::failbit);

        EXPECT_NO_THROW(diagnostic.cause());

        EXPECT_TRUE(std::cout.bad());
    }
}

}  // namespace
}  // namespace Zelm::MetaData
