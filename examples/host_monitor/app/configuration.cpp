#include "configuration.h"

#include "zelm/core/exceptions.h"
#include "zelm/metadata/element.h"
#include "zelm/metadata/reader_json.h"
#include "zelm/metadata/writer_json.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <new>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace HostMonitor {

using Zelm::MetaData::Array;
using Zelm::MetaData::Element;
using Zelm::MetaData::ElementType;
using Zelm::MetaData::Object;
using Zelm::MetaData::ReaderJson;

namespace {

[[noreturn]] void fail(std::string const& text)
{
    throw std::runtime_error(text);
}

[[noreturn]] void failAt(ReaderJson::StreamPosition const& position, std::string const& text)
{
    fail("line " + std::to_string(position.line + 1) + ": " + text);
}

void refuseTextBehind(std::istream& stream)
{
    stream >> std::ws;
    if (stream.peek() != std::istream::traits_type::eof())
        fail("there is text behind the closing brace");
}

/// The reader's words, in which every byte that could do harm on a terminal, or that it wouldn't show, is a number.
std::string withBytesAsNumbers(std::string const& text)
{
    constexpr char const* digits = "0123456789ABCDEF";
    std::string result;
    for (char const character : text) {
        auto const byte = static_cast<unsigned char>(character);
        if (byte >= 0x20 && byte < 0x7F)
            result += character;
        else
            result += {'0', 'x', digits[byte / 16], digits[byte % 16]};
    }
    return result;
}

/// What the reader would put less clearly.
void refuseWhatIsNoObject(std::string const& text)
{
    if (text.empty())
        fail("the file is empty");
    if (text.compare(0, 3, "\xEF\xBB\xBF") == 0)
        fail("line 1: Unexpected character in stream: 0xEF (UTF-8 byte order mark)");
    auto const first = text.find_first_not_of(" \t\n\v\f\r");
    if (first != std::string::npos && text[first] > ' ' && text[first] < 0x7F && text[first] != '{')
        fail("the configuration must be an object");
}

Object readObject(std::string const& text)
{
    refuseWhatIsNoObject(text);
    std::istringstream stream(text);
    Object object;
    try {
        ReaderJson::Read(object, stream);
    } catch (ReaderJson::ScanException const& failure) {
        // The reader takes the end of the text for a byte 0xFF, which no message should show.
        if (failure.errorPosition().documentOffset >= text.size())
            failAt(failure.errorPosition(), "the text ends before the closing brace");
        failAt(failure.errorPosition(), withBytesAsNumbers(failure.what()));
    } catch (ReaderJson::ParseException const& failure) {
        failAt(failure.tokenStart(), withBytesAsNumbers(failure.what()));
    } catch (Zelm::Exception::InvalidParameter const& failure) {
        fail(withBytesAsNumbers(failure.what()));  // a name that stands there twice
    } catch (std::bad_alloc const&) {
        fail("a string has no closing quotation mark");  // the reader's way of saying so
    }
    refuseTextBehind(stream);
    return object;
}

void refuseUnknownMembers(Object const& object, std::initializer_list<std::string_view> known, std::string const& place)
{
    for (auto const& member : object)
        if (std::find(known.begin(), known.end(), member.name()) == known.end())
            fail("unknown member \"" + member.name() + "\" in " + place);
}

std::string const& requireText(Object const& object, std::string_view name, std::string const& place)
{
    auto const member = object.find(name);
    if (member == object.end())
        fail("\"" + std::string(name) + "\" is missing in " + place);
    if (member->element().GetElementType() != ElementType::String || member->element().asString().empty())
        fail("\"" + std::string(name) + "\" must be a string that isn't empty in " + place);
    return member->element().asString();
}

/// What a component gets for the argument: strings are all that it can be given.
std::string readArgument(Element const& argument, std::string const& place)
{
    if (argument.GetElementType() == ElementType::String)
        return argument.asString();
    if (argument.GetElementType() != ElementType::Object)
        fail("\"arguments\" must be an array of strings and objects in " + place);
    std::ostringstream text;
    Zelm::MetaData::WriterJson::Write(argument, text, false);
    return text.str();
}

std::vector<std::string> readArguments(Object const& object, std::string const& place)
{
    std::vector<std::string> arguments;
    auto const member = object.find("arguments");
    if (member == object.end())
        return arguments;
    if (member->element().GetElementType() != ElementType::Array)
        fail("\"arguments\" must be an array of strings and objects in " + place);
    for (auto const& argument : member->element().CastTo<Array>())
        arguments.push_back(readArgument(argument, place));
    return arguments;
}

Configuration::Component readComponent(Element const& element, std::string const& place)
{
    if (element.GetElementType() != ElementType::Object)
        fail(place + " must be an object");
    auto const& object = element.CastTo<Object>();
    refuseUnknownMembers(object, {"id", "type", "arguments"}, place);
    return {requireText(object, "id", place), requireText(object, "type", place), readArguments(object, place)};
}

std::string contentOf(std::string const& path)
{
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> const file(std::fopen(path.c_str(), "re"), &std::fclose);
    std::string content;
    if (file) {
        char buffer[4096];
        while (std::size_t const count = std::fread(buffer, 1, sizeof buffer, file.get()))
            content.append(buffer, count);
    }
    if (!file || std::ferror(file.get()) != 0)
        fail(std::strerror(errno));
    return content;
}

}  // namespace

Configuration parseConfiguration(std::string const& text)
{
    auto const object = readObject(text);
    refuseUnknownMembers(object, {"components"}, "the configuration");
    auto const member = object.find("components");
    if (member == object.end())
        fail("\"components\" is missing");
    if (member->element().GetElementType() != ElementType::Array)
        fail("\"components\" must be an array");

    Configuration result;
    std::set<std::string> ids;
    for (auto const& element : member->element().CastTo<Array>()) {
        auto const place = "component " + std::to_string(result.components.size() + 1);
        auto component = readComponent(element, place);
        // The repository would return the first one again and never look at the second's type.
        if (!ids.insert(component.id).second)
            fail("the id \"" + component.id + "\" stands there twice");
        result.components.push_back(std::move(component));
    }
    if (result.components.empty())
        fail("there are no components");
    return result;
}

Configuration readConfiguration(std::string const& path)
{
    try {
        return parseConfiguration(contentOf(path));
    } catch (std::runtime_error const& failure) {
        throw std::runtime_error((path.empty() ? "\"\"" : path) + ": " + failure.what());
    }
}

}  // namespace HostMonitor
