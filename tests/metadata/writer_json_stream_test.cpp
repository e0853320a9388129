// What the writer does to the stream beside the text that it writes: which calls it makes, and when it is flushed.
#include "zelm/metadata/writer_json.h"

#include <gtest/gtest.h>

#include <ostream>
#include <streambuf>
#include <string>

namespace Zelm::MetaData {
namespace {

/// A destination with plenty of room, that counts how often it is flushed.
class RoomyDestination : public std::streambuf {
public:
    RoomyDestination() { setp(buffer_, buffer_ + sizeof buffer_); }
    std::string content() const { return {pbase(), pptr()}; }
    int flushes = 0;

protected:
    int sync() override
    {
        ++flushes;
        return 0;
    }

private:
    char buffer_[1000];
};

/// Notes what another destination holds when it is flushed itself.
class Witness : public std::streambuf {
public:
    explicit Witness(RoomyDestination const& destination) : destination_(destination) {}
    std::string seenFirst;
    int flushes = 0;

protected:
    int sync() override
    {
        if (flushes++ == 0)
            seenFirst = destination_.content();
        return 0;
    }

private:
    RoomyDestination const& destination_;
};

/// [1,{"a":[]},""] and the pieces that it goes out in: [ 1 , { " a " : [] } , "" ] with the empty string in two.
Element arrayExample()
{
    Element tree;
    tree[0] = Trivial_T<long>(1);
    tree[1]["a"] = Array();
    tree[2] = Trivial_T<std::string>();
    return tree;
}
constexpr int compactPieces = 14;
// In front of each element and member, and of each closing character at a deeper level, and behind each line.
constexpr int prettyPieces = compactPieces + 5 + 6;

TEST(WriterJsonStream, isFlushedOnceInBothModes)
{
    for (bool const pretty : {false, true}) {
        SCOPED_TRACE(pretty);
        RoomyDestination destination;
        std::ostream stream(&destination);

        WriterJson::Write(arrayExample(), stream, pretty);

        EXPECT_EQ(destination.flushes, 1);
    }
}

TEST(WriterJsonStream, getsNothingOnceItHasFailedThoughItsBufferHasRoom)
{
    for (auto const state : {std::ios_base::failbit, std::ios_base::badbit, std::ios_base::eofbit})
        for (bool const pretty : {false, true}) {
            SCOPED_TRACE(state);
            RoomyDestination destination;
            std::ostream stream(&destination);
            stream.setstate(state);

            WriterJson::Write(arrayExample(), stream, pretty);

            EXPECT_EQ(destination.content(), "");
        }
}

TEST(WriterJsonStream, hasItsTiedStreamFlushedBeforeAnythingIsWritten)
{
    RoomyDestination destination;
    Witness witness(destination);
    std::ostream tied(&witness);
    std::ostream stream(&destination);
    stream.tie(&tied);

    WriterJson::Write(Trivial_T<bool>(true), stream, false);

    EXPECT_GE(witness.flushes, 1);
    EXPECT_EQ(witness.seenFirst, "");
    EXPECT_EQ(destination.content(), "true");
}

/// How often one piece, and the flush at the end, flush a stream that flushes each output.
struct Cost {
    int piece = 0;
    int end = 0;
};
Cost costOnAUnitBufferedStream()
{
    RoomyDestination destination;
    std::ostream stream(&destination);
    stream << std::unitbuf;
    stream.write("x", 1);
    int const piece = destination.flushes;
    stream.flush();
    return {piece, destination.flushes - piece};
}

TEST(WriterJsonStream, thatFlushesEachOutputDoesSoOnceForEachPieceAndNotForEmptyOnes)
{
    auto const cost = costOnAUnitBufferedStream();
    for (bool const pretty : {false, true}) {
        SCOPED_TRACE(pretty);
        RoomyDestination destination;
        std::ostream stream(&destination);
        stream << std::unitbuf;

        WriterJson::Write(arrayExample(), stream, pretty);

        EXPECT_EQ(destination.flushes, (pretty ? prettyPieces : compactPieces) * cost.piece + cost.end);
    }
}

TEST(WriterJsonStream, takesAStringInOnePieceBetweenItsEscapes)
{
    auto const cost = costOnAUnitBufferedStream();
    RoomyDestination destination;
    std::ostream stream(&destination);
    stream << std::unitbuf;

    WriterJson::Write(Trivial_T<std::string>("\nlong run\t\tanother"), stream, false);

    EXPECT_EQ(destination.content(), "\"\\nlong run\\t\\tanother\"");
    EXPECT_EQ(destination.flushes, 7 * cost.piece + cost.end);  // quotes, escapes and two runs
}

}  // namespace
}  // namespace Zelm::MetaData
