#include "metadata/documents.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace Zelm::Benchmarks {

namespace {

std::string contentOf(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("can't read " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

std::vector<Document> const& documents()
{
    static std::vector<Document> const all = {{"twitter", contentOf(ZELM_BENCHMARK_DATA "/twitter.json")},
                                              {"canada", contentOf(ZELM_BENCHMARK_DATA "/canada.json")},
                                              {"citm", contentOf(ZELM_BENCHMARK_DATA "/citm_catalog.json")}};
    return all;
}

bool forEachDocument(std::string const& row, std::string const& who, OnDocument run)
{
    for (Document const& document : documents())
        benchmark::RegisterBenchmark((row + "/" + who + "/" + document.name).c_str(),
                                     [run, &document](benchmark::State& state) { run(state, document); });
    return true;
}

}  // namespace Zelm::Benchmarks
