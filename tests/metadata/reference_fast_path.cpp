#include "tests/metadata/reference_fast_path.h"

#include <rapidjson/document.h>

#include <cstddef>
#include <iostream>

namespace Zelm::MetaData::Testing {

namespace {

Element referenceConvertValue(rapidjson::Value const& value)
{
    if (value.IsBool())
        return Element(Trivial_T<bool>(value.GetBool()));
    if (value.IsInt())
        return Element(Trivial_T<long>(value.GetInt()));
    if (value.IsUint())
        return Element(Trivial_T<long>(value.GetUint()));
    if (value.IsUint64())
        return Element(Trivial_T<long>(static_cast<long>(value.GetUint64())));
    if (value.IsInt64())
        return Element(Trivial_T<long>(value.GetInt64()));
    if (value.IsDouble())
        return Element(Trivial_T<double>(value.GetDouble()));
    if (value.IsString())
        return Element(Trivial_T<std::string>(std::string(value.GetString())));
    if (value.IsNull())
        return Element();
    if (value.IsArray()) {
        Array array;
        for (auto const& part : value.GetArray())
            array.insert(referenceConvertValue(part));
        return Element(array);
    }
    Object object;
    for (auto const& member : value.GetObject())
        object[std::string(member.name.GetString())] = referenceConvertValue(member.value);
    return Element(object);
}

/// The digits from there on.
std::string digitsAt(std::string const& text, std::size_t place)
{
    auto const end = text.find_first_not_of("0123456789", place);
    return text.substr(place, end == std::string::npos ? end : end - place);
}

/// See the head of reference_fast_path.h.
std::string withExponentsOfNineDigits(std::string const& text)
{
    constexpr std::size_t mostDigits = 9;
    std::string result;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        result += text[i];
        if (inString && text[i] == '\\' && i + 1 < text.size()) {
            result += text[++i];
        } else if (text[i] == '"') {
            inString = !inString;
        } else if (!inString && text[i] == '-' && i > 0 && (text[i - 1] == 'e' || text[i - 1] == 'E')) {
            auto const digits = digitsAt(text, i + 1);
            auto const first = digits.find_first_not_of('0');
            result += first == std::string::npos ? digits : digits.substr(first, mostDigits);
            i += digits.size();
        }
    }
    return result;
}

}  // namespace

void ReferenceFastPath::Read(Object& object, std::string const& text)
{
    rapidjson::Document document;
    document.Parse<0>(withExponentsOfNineDigits(text).c_str());
    if (document.HasParseError())
        std::cout << "Read"
                  << ": Parser Error!" << std::endl;
    rapidjson::Value const& root = document;
    if (!root.IsObject())
        return;
    for (auto const& member : root.GetObject())
        object[std::string(member.name.GetString())] = referenceConvertValue(member.value);
}

}  // namespace Zelm::MetaData::Testing
