/// @file
/// The components map once more, in the plainest way: what the library makes of a map file and of the disk, and what
/// the map answers then, is compared with it. Made for a disk with one candidate at most, which is no library.
///
///     PlainMap model;
///     model.initialise(text, disk);  // prints what initializeSourceMap prints
///     model.lookUp("Engine");        // throws what the map throws
#pragma once

#include "fuzz/support/plain_fields.h"

#include <optional>
#include <string>

namespace Zelm::Fuzzing {

/// What a start finds.
struct Disk {
    std::string libraries;  ///< the directory of libraries, with its delimiter
    std::string mapFile;    ///< its path
    std::string candidate;  ///< the name of the one file that looks like a component library; empty if there is none
    long writeTime;         ///< of the candidate
    std::string loadError;  ///< what the loader says to the candidate
};

class PlainMap {
public:
    PlainMap();

    /// With the text of the map file, or none if there is no such file.
    bool initialise(std::optional<std::string> const& text, Disk const& disk);
    void read(MetaData::Element const& element) { object_.read(element); }
    /// Whether it was put together by a scan, which has then written the file.
    bool isBuilt() const { return isBuilt_; }

    MetaData::Element form() const { return object_.form(); }
    void lookUp(std::string const& type) const;
    void lookUpLibrary(std::string const& name) const;

private:
    std::string load(std::string const& text);
    bool fits(Disk const& disk) const;
    void build(Disk const& disk);
    PlainObject const* libraryRow(std::string const& name) const;

    PlainObject object_;
    PlainIntArray& version_;
    PlainRows& components_;
    PlainRows& libraries_;
    PlainArray& errors_;
    bool isBuilt_ = false;
};

/// The text under a name in a row.
std::string textIn(PlainObject const& row, std::string const& name);

}  // namespace Zelm::Fuzzing
