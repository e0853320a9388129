/// @file
/// What is in a tree, whoever made it: each kind counted, the bytes of names and strings, the sum of numbers. Two trees
/// with equal ones hold the same, as far as a benchmark's word for it goes.
#pragma once

#include "zelm/metadata/element.h"

#include <cmath>
#include <cstddef>

namespace Zelm::Benchmarks {

struct Census {
    std::size_t objects = 0, arrays = 0, strings = 0, numbers = 0, booleans = 0, nulls = 0;
    std::size_t members = 0, elements = 0, nameBytes = 0, stringBytes = 0, trues = 0;
    double sum = 0;
};

/// The sum may differ by what the last places of numbers do: not everybody rounds these correctly.
inline bool operator==(Census const& a, Census const& b)
{
    return a.objects == b.objects && a.arrays == b.arrays && a.strings == b.strings && a.numbers == b.numbers &&
           a.booleans == b.booleans && a.nulls == b.nulls && a.members == b.members && a.elements == b.elements &&
           a.nameBytes == b.nameBytes && a.stringBytes == b.stringBytes && a.trues == b.trues &&
           std::fabs(a.sum - b.sum) <= 1e-12 * std::fabs(a.sum);
}

Census censusOf(MetaData::Object const& object);

}  // namespace Zelm::Benchmarks
