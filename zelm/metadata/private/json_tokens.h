/// @file
/// Private to the token reader: what its scanner hands to its parser.
#pragma once

#include "zelm/metadata/reader_json.h"

#include <cstdint>
#include <iosfwd>
#include <string>
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

    Type type = Type::NullToken;
    std::string value;                      // the token's characters; of a string the decoded content
    ReaderJson::StreamPosition tokenStart;  // where its first character was next
    ReaderJson::StreamPosition tokenEnd;    // behind its last character
};

/// Takes the tokens of the stream up to the closing brace that balances the first opening one, and nothing behind it.
/// Throws ScanException, and std::bad_alloc if the input ends inside a string.
std::vector<Token> Scan(std::istream& source);

}  // namespace Zelm::MetaData::Private
