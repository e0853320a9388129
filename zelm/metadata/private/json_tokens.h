/// @file
/// Private to the token reader: what its scanner hands to its parser. Tokens are slices of the text that was taken from
/// the stream; what a slice stands for, and where it lies in lines, is found out when it is asked for.
#pragma once

#include "zelm/metadata/reader_json.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace Zelm::MetaData::Private {

struct Token {
    enum class Type : std::uint16_t {
        ObjectOpen = 0,
        ObjectClose = 1,
        ArrayOpen = 2,
        ArrayClose = 3,
        Comma = 4,
        Colon = 5,
        StringToken = 6,
        NumberToken = 7,
        IntegerToken = 8,  // never made: every number is a NumberToken. The parser knows it all the same.
        BooleanToken = 9,
        NullToken = 10,
    };

    std::size_t start;  // offset in the text that was taken
    std::size_t end;    // behind the last character
    Type type;
};

/// The text that was taken from a stream, one character for each step, the end of input included where it was taken.
/// Long runs of white space are counted but not kept, as there may be any amount of it. Offsets count what is kept.
class TakenText {
public:
    using Position = ReaderJson::StreamPosition;

    void append(std::string_view bytes) { bytes_.append(bytes); }
    void append(char byte) { bytes_.push_back(byte); }
    /// Adds white space to the run of it that began at the offset `runStart`.
    void appendWhiteSpace(std::string_view bytes, std::size_t runStart);
    std::size_t size() const { return bytes_.size(); }

    std::string_view rawTextOf(Token const& token) const
    {
        return std::string_view(bytes_).substr(token.start, token.end - token.start);
    }
    /// The token's characters; of a string the decoded content.
    std::string valueOf(Token const& token) const;
    Position positionAt(std::size_t offset) const;

private:
    /// The place of a kept byte in front of which others were dropped, or of the end.
    struct Landmark {
        std::size_t offset = 0;
        Position position;
    };

    std::string bytes_;
    std::vector<Landmark> landmarks_;
};

/// Takes the stream's text up to the closing brace that balances the first opening one, or up to a closing brace that
/// comes before any opening one, and nothing behind it. Throws ScanException, and std::bad_alloc if the input ends
/// inside a string.
std::vector<Token> Scan(std::istream& source, TakenText& text);

}  // namespace Zelm::MetaData::Private
