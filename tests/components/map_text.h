/// @file
/// The exact text of a components map file, put together by hand: what the library writes is compared with it, and what
/// it reads is made of it.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Zelm::Testing {

struct MapText {
    struct Component {
        std::string type;
        std::string factory;
        std::optional<std::string> error = {};
    };
    struct Library {
        std::string name;
        long timeStamp;
        std::optional<std::string> error = {};
    };

    std::vector<Component> components;
    std::vector<Library> libraries;
    std::vector<std::string> errors = {};
    std::vector<int> version = {1, 1, 0};

    std::string text() const
    {
        std::string text = "{\n\t\"Components\" : " + list(components) + ",\n";
        if (!errors.empty())
            text += "\t\"Errors\" : " + list(errors) + ",\n";
        return text + "\t\"SharedLibraries\" : " + list(libraries) + ",\n\t\"Version\" : " + list(version) + "\n}";
    }

private:
    static std::string quoted(std::string const& text)
    {
        std::string result = "\"";
        for (char const c : text) {
            if (c == '"' || c == '\\')
                result += '\\';
            result += c == '\n' ? std::string("\\n") : std::string(1, c);
        }
        return result + '"';
    }
    static std::string errorLine(std::optional<std::string> const& error)
    {
        return error ? "\t\t\t\"Error\" : " + quoted(*error) + ",\n" : "";
    }

    static std::string item(int number) { return std::to_string(number); }
    static std::string item(std::string const& text) { return quoted(text); }
    static std::string item(Component const& row)
    {
        return "{\n\t\t\t\"ComponentTypeName\" : " + quoted(row.type) + ",\n" + errorLine(row.error) +
               "\t\t\t\"FactoryName\" : " + quoted(row.factory) + "\n\t\t}";
    }
    static std::string item(Library const& row)
    {
        return "{\n" + errorLine(row.error) + "\t\t\t\"SharedObjectName\" : " + quoted(row.name) +
               ",\n\t\t\t\"SharedObjectTimeStamp\" : " + std::to_string(row.timeStamp) + "\n\t\t}";
    }
    template <class T> static std::string list(std::vector<T> const& items)
    {
        if (items.empty())
            return "[]";
        std::string text = "[\n";
        for (auto const& each : items)
            text += "\t\t" + item(each) + (&each == &items.back() ? "\n" : ",\n");
        return text + "\t]";
    }
};

}  // namespace Zelm::Testing
