/// @file
/// nlohmann::json's trees of the documents: its default type, whose objects are ordered maps like ours.
#pragma once

#include "metadata/census.h"
#include "metadata/documents.h"

#include <nlohmann/json.hpp>

namespace Zelm::Benchmarks {

inline void count(nlohmann::json const& value, Census& census)
{
    if (value.is_object()) {
        ++census.objects;
        census.members += value.size();
        for (auto const& [name, element] : value.items()) {
            census.nameBytes += name.size();
            count(element, census);
        }
    } else if (value.is_array()) {
        ++census.arrays;
        census.elements += value.size();
        for (auto const& element : value)
            count(element, census);
    } else if (value.is_string()) {
        ++census.strings;
        census.stringBytes += value.get_ref<std::string const&>().size();
    } else if (value.is_number()) {
        ++census.numbers;
        census.sum += value.get<double>();
    } else if (value.is_boolean()) {
        ++census.booleans;
        census.trues += value.get<bool>() ? 1 : 0;
    } else if (value.is_null()) {
        ++census.nulls;
    }
}

inline Census censusOf(nlohmann::json const& value)
{
    Census census;
    count(value, census);
    return census;
}

}  // namespace Zelm::Benchmarks
