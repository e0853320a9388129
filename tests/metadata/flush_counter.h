/// @file
/// A stream's buffer that takes nothing and counts how often it is flushed: for a stream that others are tied to.
#pragma once

#include <streambuf>

namespace Zelm::MetaData::Testing {

class FlushCounter : public std::streambuf {
public:
    int flushes = 0;

protected:
    int sync() override
    {
        ++flushes;
        return 0;
    }
};

}  // namespace Zelm::MetaData::Testing
