/// @file
/// The fenced blocks and the links of our own documents, so that tests can compare what is quoted with its source.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace Zelm::Testing {

struct FencedBlock {
    std::string name;      // what a comment on the line before the block says: <!-- name -->; empty without one
    std::string language;  // behind the opening fence
    std::string text;      // with the line feed before the closing fence
};

/// All fenced blocks of a document, in their order. Fences begin at the left margin.
std::vector<FencedBlock> fencedBlocks(std::string const& document);

/// The text of the block of that name; a text that says so if there is none.
std::string blockOf(std::string const& document, std::string const& name);

struct Link {
    std::string file;    // relative to the document; empty for the document itself
    std::string anchor;  // behind "#"; empty without one
};

/// The links and pictures outside of fenced blocks that lead to files, not to a network.
std::vector<Link> localLinks(std::string const& document);

/// What links can name in a document: its headings in small letters, with "-" for blanks and without punctuation.
std::set<std::string> anchors(std::string const& document);

}  // namespace Zelm::Testing
