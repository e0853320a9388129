/// @file
/// Reads JSON text into the data model. The form of the input picks one of two paths:
///
///     Object settings;
///     ReaderJson::Read(settings, file);                    // std::istream: the token reader
///     ReaderJson::Read(settings, std::string("{...}"));    // std::string: the fast path
///
/// There is no switch between them, and they differ in what they take and in how they fail:
///
///  - The token reader takes exactly one brace-balanced Object from the stream and stops behind its closing brace, so
///    that several Objects may follow each other on one stream. It throws on the first fault. It is laxer and stricter
///    than JSON: every number becomes a Number, never an Integer; a number is whatever the stream extraction of a
///    double runs through (007 is 7, - and 1e are 0); raw control characters may stand in strings; white space is that
///    of std::isspace; but no "\u" escape is understood, and a name that occurs twice is an error.
///  - The fast path takes strict JSON text in one piece and reports a fault by a line on standard output only.
///
/// Thread-safety: calls share nothing but std::cout, for the fast path's line; stream and target are the caller's to
/// protect.
#pragma once

#include "zelm/core/export.h"
#include "zelm/metadata/element.h"

#include <cstdint>
#include <iosfwd>
#include <string>

namespace Zelm::MetaData {

class ReaderJson {
public:
    /// A place in the text, counted from where the read began. The end of the input counts as a character each time
    /// that one is taken there.
    struct StreamPosition {
        std::uint32_t line = 0;            ///< line feeds before it
        std::uint32_t lineOffset = 0;      ///< characters since the last line feed
        std::uint32_t documentOffset = 0;  ///< characters in all
    };

    /// The text can't be cut into tokens.
    class ZELM_EXPORT ScanException : public Exception {
    public:
        ScanException(std::string const& message, StreamPosition const& errorPosition);
        ScanException(ScanException const& other) noexcept;
        ScanException& operator=(ScanException const& other) = default;
        ~ScanException() override;

        StreamPosition const& errorPosition() const noexcept { return errorPosition_; }

    private:
        StreamPosition errorPosition_;
    };

    /// The tokens don't make up a value; the positions are those of the token at fault.
    class ZELM_EXPORT ParseException : public Exception {
    public:
        ParseException(std::string const& message, StreamPosition const& tokenStart, StreamPosition const& tokenEnd);
        ParseException(ParseException const& other) noexcept;
        ParseException& operator=(ParseException const& other) = default;
        ~ParseException() override;

        StreamPosition const& tokenStart() const noexcept { return tokenStart_; }
        StreamPosition const& tokenEnd() const noexcept { return tokenEnd_; }

    private:
        StreamPosition tokenStart_;
        StreamPosition tokenEnd_;
    };

    /// The token reader. All tokens up to the closing brace are taken before the first is looked at, and nothing is
    /// asked of the stream behind that brace.
    ///
    /// The target isn't cleared: an Object gets the members added to those that it has. An Element keeps its value if
    /// that is of the kind that begins with the first token, and becomes an empty value of that kind otherwise; where
    /// no value begins with the token it stays as it was.
    ///
    /// Throws ScanException, with the target untouched, or ParseException, or Zelm::Exception::InvalidParameter "Object
    /// member already exists: <name>" for a name that the text gives twice or that the target has already; the target
    /// keeps what was complete until then. A byte 0xFF at the end of a ScanException's text may stand for the end of
    /// the input. A string that isn't closed ends in std::bad_alloc, or in a ScanException if its last byte is the
    /// backslash of an escape. What the stream itself is set to throw, at its end too, passes through. In every case
    /// the stream stands where it was last read, with the bits set that peek and get set there.
    /// Depth takes memory alone, and no stack for each level: a text may be as deep as it is long.
    ZELM_EXPORT static void Read(Object& value, std::istream& stream);
    ZELM_EXPORT static void Read(Element& value, std::istream& stream);

    /// No text lets these return: the tokens end behind a brace that closes an Object, and none of these takes that in.
    /// They throw as above, with the target changed as far as the text went.
    ZELM_EXPORT static void Read(Array& value, std::istream& stream);
    ZELM_EXPORT static void Read(Trivial_T<std::string>& value, std::istream& stream);
    ZELM_EXPORT static void Read(Trivial_T<double>& value, std::istream& stream);
    ZELM_EXPORT static void Read(Trivial_T<long>& value, std::istream& stream);
    ZELM_EXPORT static void Read(Trivial_T<bool>& value, std::istream& stream);
    ZELM_EXPORT static void Read(Null& value, std::istream& stream);

    /// The fast path: strict JSON, one value with nothing but space, tab, CR and LF around it, up to the text's first
    /// NUL byte.
    ///
    /// The target isn't cleared: each member of the text's object replaces the one of its name, so that of equal names
    /// in the text the last one wins, and all other members stay.
    ///  - A number without fraction and exponent that fits 64 bits is an Integer, any other a Number. From 2^63 up to
    ///    2^64 - 1 the bits are taken over, which gives a negative Integer.
    ///  - A Number may differ from the correctly rounded one in the last places. One with more than two thousand
    ///  million
    ///    zeros right behind its point is taken for no number.
    ///  - "\u" escapes are decoded to UTF-8, and a name or string ends at its first NUL ("\u0000").
    ///
    /// Throws nothing but the allocator's exceptions, and what std::cout is set to throw when the line below is written
    /// there; tells the caller nothing else. A text that doesn't parse leaves the target as it was and gives the line
    /// "Read: Parser Error!" on standard output; one whose value is no object leaves it as it was without a word. Depth
    /// takes memory alone, and no stack for each level.
    ZELM_EXPORT static void Read(Object& object, std::string const& text);
};

}  // namespace Zelm::MetaData

namespace Zelm::Json {

/// The object as WriterJson writes it in pretty mode, in the global locale.
ZELM_EXPORT std::string metaDatatoJsonString(MetaData::Object const& object);

/// The object that the fast path reads from the text. Empty for a text that doesn't parse, as for the text "{}": only
/// the line on standard output tells.
///
/// Of the writer's text it makes an Object with the same names, if all Numbers are finite and the strings hold no other
/// control characters than those that the writer escapes. It is equal but for some Numbers:
///  - An integral one from -2^63 up to below 2^63 comes back as an Integer, which is equal to it.
///  - An integral one from 2^63 up to below 2^64 is written as digits too, and comes back unequal: as the negative
///    Integer that the fast path makes of those digits on purpose.
///  - Any other, an integral one beyond these included, comes back as a Number. It may differ in the last places, as
///    the fast path converts it, and is unequal then from a magnitude of about 4 on, the equality of Numbers having an
///    absolute tolerance.
ZELM_EXPORT MetaData::Object jsonStringtoMetaData(std::string const& text);

}  // namespace Zelm::Json
