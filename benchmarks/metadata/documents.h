/// @file
/// The three texts that the trees of these benchmarks are read from (data/README.md), and the registration of one
/// benchmark for each of them:
///
///     void readString(benchmark::State& state, Document const& document);
///     bool const isRegistered = forEachDocument("read_string", "ours", readString);
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace Zelm::Benchmarks {

struct Document {
    std::string name;
    std::string text;
};

/// twitter, canada and citm, read from their files by the first call.
std::vector<Document> const& documents();

using OnDocument = void (*)(benchmark::State&, Document const&);

/// Registers <row>/<who>/<name of the document> for each of them. Returns true, for the sake of a static variable.
bool forEachDocument(std::string const& row, std::string const& who, OnDocument run);

}  // namespace Zelm::Benchmarks
