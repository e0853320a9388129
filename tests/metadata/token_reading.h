/// @file
/// All that a caller can see of reads from a stream, as one text: two token readers are alike if theirs are equal for
/// every text and every setting.
///
///     Setting setting;
///     setting.pieceSize = 3;
///     EXPECT_EQ(outcomeOf(byLibrary, object, text, setting), outcomeOf(byReference, object, text, setting));
#pragma once

#include "tests/metadata/flush_counter.h"
#include "tests/metadata/piecewise_source.h"
#include "tests/metadata/reference_token_reader.h"
#include "tests/metadata/spelled_out.h"
#include "tests/metadata/stream_position.h"
#include "zelm/metadata/reader_json.h"

#include <istream>
#include <iterator>
#include <memory>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <typeinfo>

namespace Zelm::MetaData::Testing {

constexpr auto byLibrary = [](auto& value, std::istream& stream) { ReaderJson::Read(value, stream); };
constexpr auto byReference = [](auto& value, std::istream& stream) { ReferenceTokenReader::Read(value, stream); };

/// The stream that a text is read from, and how often.
struct Setting {
    std::optional<std::size_t> pieceSize;  ///< a PiecewiseSource's, or none for a std::stringstream
    std::ios_base::iostate exceptions = std::ios_base::goodbit;
    std::ios_base::iostate state = std::ios_base::goodbit;  ///< before the first read
    bool throwsAtTheEnd = false;                            ///< of a PiecewiseSource
    bool tied = false;
    bool skipsWhiteSpace = true;
    int reads = 1;  ///< one behind the other, into the same target
};

/// How one read ends: "value", or the exception with all that is in it.
template <class Read, class T> std::string endOf(Read read, T& target, std::istream& stream)
{
    try {
        read(target, stream);
        return "value";
    } catch (ReaderJson::ScanException const& error) {
        return std::string("ScanException ") + error.what() + ' ' + print(error.errorPosition());
    } catch (ReaderJson::ParseException const& error) {
        return std::string("ParseException ") + error.what() + ' ' + print(error.tokenStart()) + ' ' +
               print(error.tokenEnd());
    } catch (std::exception const& error) {
        return std::string(typeid(error).name()) + ' ' + error.what();
    }
}

inline Element asElement(Element const& element)
{
    return element;
}
template <class T> Element asElement(T const& value)
{
    return Element(value);
}

/// Asked of the buffer, as the stream itself doesn't tell once it has failed, and is changed by the question.
inline long placeOf(std::stringstream const& stream)
{
    return static_cast<long>(stream.rdbuf()->pubseekoff(0, std::ios_base::cur, std::ios_base::in));
}

template <class Read, class T>
std::string outcomeOf(Read read, T target, std::string const& text, Setting const& setting)
{
    FlushCounter flushed;
    std::ostream prompt(&flushed);
    std::unique_ptr<PiecewiseSource> source;
    std::stringstream stringStream;
    std::istream pieces(nullptr);
    if (setting.pieceSize) {
        source = std::make_unique<PiecewiseSource>(text, *setting.pieceSize, setting.throwsAtTheEnd);
        pieces.rdbuf(source.get());
    } else {
        stringStream.str(text);
    }
    std::istream& stream = source ? pieces : stringStream;
    if (!setting.skipsWhiteSpace)
        stream.unsetf(std::ios_base::skipws);
    if (setting.tied)
        stream.tie(&prompt);
    stream.setstate(setting.state);
    try {
        stream.exceptions(setting.exceptions);
    } catch (std::ios_base::failure const&) {
        // It has taken the mask by now, and throws for the state that the stream is in.
    }

    std::string outcome;
    for (int i = 0; i < setting.reads; ++i) {
        outcome += endOf(read, target, stream) + "\nstate " + std::to_string(stream.rdstate()) + " gcount " +
                   std::to_string(stream.gcount());
        if (source)
            outcome += " taken " + std::to_string(source->taken()) + " handed out " +
                       std::to_string(source->handedOut()) + " asks at the end " +
                       std::to_string(source->asksAtTheEnd());
        else
            outcome += " at " + std::to_string(placeOf(stringStream));
        if (setting.tied)
            outcome += " flushes " + std::to_string(flushed.flushes);
        outcome += '\n';
        spellOut(asElement(target), outcome);
        outcome += '\n';
    }

    stream.exceptions(std::ios_base::goodbit);
    stream.clear();
    if (source && setting.throwsAtTheEnd)
        return outcome;
    return outcome + "rest " + std::string(std::istreambuf_iterator<char>(stream), {});
}

}  // namespace Zelm::MetaData::Testing
