#include "markdown.h"

#include <cctype>
#include <regex>
#include <sstream>

namespace Zelm::Testing {

namespace {

std::string const fence = "```";

bool beginsWith(std::string const& text, std::string const& beginning)
{
    return text.rfind(beginning, 0) == 0;
}

/// The document without its fenced blocks, line by line.
std::vector<std::string> proseOf(std::string const& document)
{
    std::vector<std::string> prose;
    bool isWithin = false;
    std::istringstream lines(document);
    for (std::string line; std::getline(lines, line);) {
        if (beginsWith(line, fence))
            isWithin = !isWithin;
        else if (!isWithin)
            prose.push_back(line);
    }
    return prose;
}

}  // namespace

std::vector<FencedBlock> fencedBlocks(std::string const& document)
{
    std::regex const comment("<!-- (.*) -->");
    std::vector<FencedBlock> blocks;
    bool isWithin = false;
    std::string before;
    std::istringstream lines(document);
    for (std::string line; std::getline(lines, line); before = line) {
        if (beginsWith(line, fence)) {
            isWithin = !isWithin;
            std::smatch name;
            if (isWithin)
                blocks.push_back(
                    {std::regex_match(before, name, comment) ? name[1].str() : "", line.substr(fence.size()), ""});
        } else if (isWithin) {
            blocks.back().text += line + '\n';
        }
    }
    return blocks;
}

std::string blockOf(std::string const& document, std::string const& name)
{
    for (auto const& block : fencedBlocks(document))
        if (block.name == name)
            return block.text;
    return "no block is called " + name;
}

std::vector<Link> localLinks(std::string const& document)
{
    std::regex const link(R"(\]\(([^)#]*)#?([^)]*)\))");
    std::vector<Link> links;
    for (std::string const& line : proseOf(document))
        for (std::sregex_iterator found(line.begin(), line.end(), link), end; found != end; ++found)
            if ((*found)[1].str().find("://") == std::string::npos)
                links.push_back({(*found)[1], (*found)[2]});
    return links;
}

std::set<std::string> anchors(std::string const& document)
{
    std::set<std::string> result;
    for (std::string const& line : proseOf(document)) {
        auto const level = line.find_first_not_of('#');
        if (level == 0 || level == std::string::npos || line[level] != ' ')
            continue;
        std::string anchor;
        for (char const c : line.substr(level + 1)) {
            if (std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_')
                anchor += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            else if (c == ' ')
                anchor += '-';
        }
        result.insert(anchor);
    }
    return result;
}

}  // namespace Zelm::Testing
