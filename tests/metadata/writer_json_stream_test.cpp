// What the writer does to the stream beside the text that it writes: which calls it makes, and when it is flushed.
#include "zelm/metadata/writer_json.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <functional>
#include <iomanip>
#include <ostream>
#include <random>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

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

TEST(WriterJsonStream, takesAStringInOnePieceBetweenItsEscapesOnPurpose)
{
    auto const cost = costOnAUnitBufferedStream();
    RoomyDestination destination;
    std::ostream stream(&destination);
    stream << std::unitbuf;

    WriterJson::Write(Trivial_T<std::string>("\nlong run\t\tanother"), stream, false);

    EXPECT_EQ(destination.content(), "\"\\nlong run\\t\\tanother\"");
    EXPECT_EQ(destination.flushes, 7 * cost.piece + cost.end);  // quotes, escapes and two runs
}

/// The library's own file buffer takes such a byte, which it has no room for, and keeps it behind its end.
TEST(WriterJsonStream, getsNothingBehindTheEndOfAFileThatRefusedAByte)
{
    constexpr std::size_t size = 64;
    std::string memory(10 * size, '#');
    std::ofstream file;
    file.rdbuf()->pubsetbuf(memory.data(), size);
    file.open("/dev/full");
    for (std::size_t i = 0; i < size && file.rdbuf()->sputc('x') != std::char_traits<char>::eof();)
        ++i;
    ASSERT_TRUE(file.good()) << "the stream hasn't heard of it";

    WriterJson::Write(Trivial_T<std::string>(std::string(4 * size, 'a')), file, false);

    EXPECT_TRUE(file.bad());
    EXPECT_EQ(memory.substr(size), std::string(9 * size, '#'));
}

TEST(WriterJsonStream, keepsWhatItHeldBehindTheTextThatIsWritten)
{
    std::string const before(1000, '#');
    auto const expectTheRestKept = [&](Element const& element) {
        std::ostringstream fresh;
        WriterJson::Write(element, fresh, true);
        std::string const text = fresh.str();
        std::ostringstream stream(before);

        WriterJson::Write(element, stream, true);

        EXPECT_EQ(stream.str(), text + before.substr(text.size()));
    };
    for (double const number : {0.0, 3.0, 0.5, 0.1, 2.5, -12345.0625, 0x1p-13, 0x1p-20, 1e19, 1e22, 1e23, 1e300})
        expectTheRestKept(Element(Trivial_T<double>(number)));
    for (long const number : {0L, -7L, 1234567890123456789L})
        expectTheRestKept(Element(Trivial_T<long>(number)));
    for (std::size_t size = 0; size < 50; ++size)
        expectTheRestKept(Element(Trivial_T<std::string>(std::string(size, 'x') + '\n')));
    expectTheRestKept(arrayExample());
}

// ------------------------------------------------------------------------------------- the buffer's size and its calls

/// Has no buffer, and so is called for each piece.
class Pieces : public std::streambuf {
public:
    std::vector<std::string> pieces;

protected:
    std::streamsize xsputn(char const* text, std::streamsize size) override
    {
        pieces.emplace_back(text, static_cast<std::size_t>(size));
        return size;
    }
};

/// Has a buffer of any size, takes up to so many bytes from it and notes what it is called for.
class ChunkedDestination : public std::streambuf {
public:
    ChunkedDestination(std::size_t bufferSize, std::size_t capacity) : buffer_(bufferSize), capacity_(capacity)
    {
        setp(buffer_.data(), buffer_.data() + buffer_.size());
    }

    /// The chunks that were taken, with the byte that each didn't hold any more, and what lies in the buffer.
    std::string history() const { return history_ + std::string(pbase(), pptr()); }

protected:
    int_type overflow(int_type byte) override
    {
        taken_ += static_cast<std::size_t>(pptr() - pbase()) + 1;
        if (taken_ > capacity_)
            return traits_type::eof();
        history_ += std::string(pbase(), pptr()) + '<' + traits_type::to_char_type(byte) + '>';
        setp(buffer_.data(), buffer_.data() + buffer_.size());
        return byte;
    }
    int sync() override
    {
        history_ += "(flushed)";
        return 0;
    }

private:
    std::vector<char> buffer_;
    std::size_t const capacity_;
    std::size_t taken_ = 0;
    std::string history_;
};

Element mixedTree(std::mt19937& random, int depth)
{
    Element tree;
    switch (random() % (depth == 0 ? 5 : 7)) {
    case 0:
        tree = Trivial_T<bool>(random() % 2 == 0);
        break;
    case 1:
        tree = Trivial_T<long>(static_cast<long>(random()) - 2000000000L);
        break;
    case 2:
        tree = Trivial_T<double>(static_cast<double>(random()) / static_cast<double>(1U << random() % 30));
        break;
    case 3: {
        std::string text(random() % 40, 'x');
        for (char& c : text)
            c = static_cast<char>(random() % 8 == 0 ? random() % 128 : 'a' + random() % 26);
        tree = Trivial_T<std::string>(text);
        break;
    }
    case 4:
        break;
    case 5:
        tree = Array();
        for (unsigned long i = random() % 5; i-- > 0;)
            tree[i] = mixedTree(random, depth - 1);
        break;
    default:
        tree = Object();
        for (unsigned long i = random() % 5; i-- > 0;)
            tree[std::string(random() % 20, static_cast<char>('a' + random() % 26))] = mixedTree(random, depth - 1);
    }
    return tree;
}

TEST(WriterJsonStream, getsEachPieceAsIfItWereWrittenByItself)
{
    std::mt19937 random(20230505);
    for (int i = 0; i < 2000; ++i) {
        bool const pretty = i % 2 == 0;
        Element const tree = mixedTree(random, 5);
        Pieces pieces;
        std::ostream unbuffered(&pieces);
        WriterJson::Write(tree, unbuffered, pretty);
        std::size_t const bufferSize = random() % 100;
        std::size_t const capacity = random() % 4 == 0 ? random() % 500 : 1000000;

        ChunkedDestination byPieces(bufferSize, capacity);
        std::ostream expected(&byPieces);
        for (auto const& piece : pieces.pieces)
            expected.write(piece.data(), static_cast<std::streamsize>(piece.size()));
        expected.flush();

        ChunkedDestination ours(bufferSize, capacity);
        std::ostream stream(&ours);
        WriterJson::Write(tree, stream, pretty);

        ASSERT_EQ(ours.history(), byPieces.history());
        ASSERT_EQ(stream.rdstate(), expected.rdstate());
    }
}

/// Does something to the stream that writes to it, once, when its small buffer is full for the first time.
class Meddler : public std::streambuf {
public:
    explicit Meddler(std::function<void()> meddle) : meddle_(std::move(meddle))
    {
        setp(buffer_, buffer_ + sizeof buffer_);
    }
    std::string content() const { return content_ + std::string(pbase(), pptr()); }

protected:
    int_type overflow(int_type byte) override
    {
        content_ += std::string(pbase(), pptr()) + traits_type::to_char_type(byte);
        setp(buffer_, buffer_ + sizeof buffer_);
        if (meddle_)
            std::exchange(meddle_, nullptr)();
        return byte;
    }

private:
    char buffer_[50];
    std::string content_;
    std::function<void()> meddle_;
};

TEST(WriterJsonStream, isLookedAtAnewAfterEachCallOfItsBuffer)
{
    RoomyDestination log;
    std::ostream tied(&log);
    struct {
        char const* why;
        std::function<void(std::ostream&)> meddle;
        std::string secondTime;
    } const cases[] = {
        {"nothing is changed", [](std::ostream&) {}, ",255,0.5]"},
        {"integers become hexadecimal", [](std::ostream& stream) { stream << std::hex; }, ",ff,0.5]"},
        {"numbers get a sign", [](std::ostream& stream) { stream << std::showpos; }, ",+255,+0.5]"},
        {"a width is set", [](std::ostream& stream) { stream << std::setw(5); }, ",  255,0.5]"},
        {"the stream fails", [](std::ostream& stream) { stream.setstate(std::ios_base::failbit); }, ""},
        {"another stream is tied", [&](std::ostream& stream) { stream.tie(&tied); }, ",255,0.5]"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        Array array;
        array.insert(Element(Trivial_T<long>(255)));
        array.insert(Element(Trivial_T<std::string>(std::string(60, 'x'))));
        array.insert(Element(Trivial_T<long>(255)));
        array.insert(Element(Trivial_T<double>(0.5)));
        std::ostream* itself = nullptr;
        Meddler meddler([&] { row.meddle(*itself); });
        std::ostream stream(&meddler);
        itself = &stream;

        WriterJson::Write(array, stream, false);

        std::string const closing = row.secondTime.empty() ? "" : "\"";
        EXPECT_EQ(meddler.content(), "[255,\"" + std::string(60, 'x') + closing + row.secondTime);
    }
    EXPECT_GE(log.flushes, 1);
}

}  // namespace
}  // namespace Zelm::MetaData
