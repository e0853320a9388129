/// @file
/// What both JSON readers must make of a text, worked out from the text alone: its tree with each number as it is
/// written, and all that one of them takes and the other one doesn't.
///
///     JsonText const json(text);
///     check(byTokens.wasTaken == json.isTakenByTokens(), "...");
///     check(!json.mustBeTakenByTheFastPath() || fast.wasTaken, "...");
///
/// It reads a language that holds those of both readers: any row of number characters is a number, strings may hold raw
/// control characters, and white space is the wider set. Calls itself for each level.
#pragma once

#include "zelm/metadata/element.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Zelm::Fuzzing {

/// As it stands in the text: all members of one name, strings with their NULs.
struct JsonValue {
    MetaData::ElementType kind = MetaData::ElementType::Null;  ///< Number for each number
    std::string text;  ///< a string's bytes, a number's characters, "true" or "false"
    std::vector<JsonValue> parts;
    std::vector<std::pair<std::string, JsonValue>> members;
};

class JsonText {
public:
    explicit JsonText(std::string_view text);

    // Of the token reader everything is certain.
    bool isTakenByTokens() const { return isValue_ && rootIsObject() && !refusalByTokens_ && !hasWrongNumber_; }
    /// Its exception's text for an object that is JSON, if it isn't taken: a "\u" escape, or else a name twice.
    std::optional<std::string> const& refusalByTokens() const { return refusalByTokens_; }

    // Of the fast path all but a few numbers about as large as a double can be, and halves of surrogate pairs.
    bool mustBeTakenByTheFastPath() const { return mayBeTakenByTheFastPath() && !isLeftToRapidJson_; }
    bool mayBeTakenByTheFastPath() const { return isValue_ && !isNoStrictJson_; }

    /// Of a text that one of them may take.
    JsonValue const& root() const { return root_; }
    bool rootIsObject() const { return root_.kind == MetaData::ElementType::Object; }
    std::size_t end() const { return place_; }  ///< behind the root

private:
    std::optional<unsigned char> peek() const;
    bool take(char expected);
    bool takeWord(std::string_view word);
    void skipWhiteSpace();
    bool value(JsonValue& result);
    bool array(JsonValue& result);
    bool object(JsonValue& result);
    bool string(std::string& result);
    bool escape(std::string& result);
    bool escapeByNumber(std::string& result);
    std::optional<unsigned> fourHexDigits();
    bool number(std::string& result);

    std::string_view text_;
    std::size_t place_ = 0;
    JsonValue root_;
    bool isValue_;
    bool isNoStrictJson_ = false;
    bool isLeftToRapidJson_ = false;
    bool hasWrongNumber_ = false;
    bool hasEscapeByNumber_ = false;
    std::optional<std::string> refusalByTokens_;
};

/// What the stream's extraction makes of a number's characters; none if it stops before their end.
std::optional<double> extractedNumber(std::string const& characters);

}  // namespace Zelm::Fuzzing
