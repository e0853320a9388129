#include "fuzz/support/trees.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace Zelm::Fuzzing {

using namespace MetaData;

namespace {

constexpr std::size_t deepest = 100;
constexpr std::string_view beginsValue = "{[\"tfnNI-0123456789";
constexpr std::string_view inNumber = "0123456789.eE+-";

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

}  // namespace

Element TreeReader::next()
{
    return hasNext() ? value(0) : Element();
}

bool TreeReader::hasNext()
{
    rest_.remove_prefix(std::min(rest_.find_first_of(beginsValue), rest_.size()));
    return !rest_.empty();
}

/// Skips to the next value; true if the container ends before that.
bool TreeReader::atEndOf(char closing)
{
    while (!rest_.empty() && rest_.front() != closing && beginsValue.find(rest_.front()) == std::string_view::npos)
        rest_.remove_prefix(1);
    if (rest_.empty())
        return true;
    if (rest_.front() != closing)
        return false;
    rest_.remove_prefix(1);
    return true;
}

/// The front byte begins a value.
Element TreeReader::value(std::size_t depth)
{
    char const first = rest_.front();
    if (first == '-' || (first >= '0' && first <= '9'))
        return number();
    if (isLetter(first)) {
        skipWord();
        switch (first) {
        case 't':
            return Trivial_T<bool>(true);
        case 'f':
            return Trivial_T<bool>(false);
        case 'N':
            return Trivial_T<double>(std::numeric_limits<double>::quiet_NaN());
        case 'I':
            return Trivial_T<double>(std::numeric_limits<double>::infinity());
        default:
            return {};
        }
    }
    rest_.remove_prefix(1);
    if (first == '"')
        return Trivial_T<std::string>(string());
    if (depth == deepest)
        return {};
    return first == '[' ? array(depth + 1) : object(depth + 1);
}

Element TreeReader::array(std::size_t depth)
{
    Array result;
    while (!atEndOf(']'))
        result.insert(value(depth));
    return result;
}

Element TreeReader::object(std::size_t depth)
{
    Object result;
    while (!atEndOf('}')) {
        if (rest_.front() != '"') {  // no name: skip the value
            value(depth);
            continue;
        }
        rest_.remove_prefix(1);
        auto const name = string();
        if (atEndOf('}')) {
            result[name] = Element();
            break;
        }
        result[name] = value(depth);
    }
    return result;
}

Element TreeReader::number()
{
    std::string const text(rest_.substr(0, rest_.find_first_not_of(inNumber)));
    rest_.remove_prefix(text.size());
    if (text == "-" && !rest_.empty() && (rest_.front() == 'N' || rest_.front() == 'I')) {
        double const size =
            rest_.front() == 'N' ? std::numeric_limits<double>::quiet_NaN() : std::numeric_limits<double>::infinity();
        skipWord();
        return Trivial_T<double>(std::copysign(size, -1.0));
    }
    if (text.find_first_of(".eE") != std::string::npos)
        return Trivial_T<double>(std::strtod(text.c_str(), nullptr));
    return Trivial_T<long>(std::strtol(text.c_str(), nullptr, 10));
}

/// Behind the opening quote; takes the closing one.
std::string TreeReader::string()
{
    std::string result;
    while (!rest_.empty()) {
        char c = rest_.front();
        rest_.remove_prefix(1);
        if (c == '"')
            break;
        if (c == '\\' && !rest_.empty()) {
            c = rest_.front() == 'n' ? '\n' : rest_.front() == '0' ? '\0' : rest_.front();
            rest_.remove_prefix(1);
        }
        result += c;
    }
    return result;
}

void TreeReader::skipWord()
{
    while (!rest_.empty() && isLetter(rest_.front()))
        rest_.remove_prefix(1);
}

// ------------------------------------------------------------------------------------------------------------- details

namespace {

class Details : public ConstVisitor {
public:
    std::string text;

    void Visit(Array const& array) override
    {
        text += '[';
        for (Element const& element : array) {
            element.Accept(*this);
            text += ' ';
        }
        text += ']';
    }
    void Visit(Object const& object) override
    {
        text += '{';
        for (Object::Member const& member : object) {
            add(member.name());
            text += ':';
            member.element().Accept(*this);
            text += ' ';
        }
        text += '}';
    }
    void Visit(Trivial_T<double> const& value) override
    {
        double const number = value;
        std::uint64_t bits;
        static_assert(sizeof bits == sizeof number);
        std::memcpy(&bits, &number, sizeof bits);
        text += "Number " + std::to_string(number) + '/' + (std::isnan(number) ? "nan" : std::to_string(bits));
    }
    void Visit(Trivial_T<long> const& value) override { text += "Integer " + std::to_string(long{value}); }
    void Visit(Trivial_T<std::string> const& value) override { add(value); }
    void Visit(Trivial_T<bool> const& value) override { text += bool{value} ? "true" : "false"; }
    void Visit(Null const&) override { text += "null"; }

private:
    void add(std::string const& string) { text += std::to_string(string.size()) + '"' + string + '"'; }
};

}  // namespace

std::string detailsOf(Element const& element)
{
    Details details;
    element.Accept(details);
    return std::move(details.text);
}

}  // namespace Zelm::Fuzzing
