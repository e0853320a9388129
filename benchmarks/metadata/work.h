/// @file
/// The loops that are the same for every kind of tree. Whose tree it is, and how one is made of a text, is all that
/// ours and a peer's benchmarks say.
#pragma once

#include "metadata/documents.h"
#include "support/allocations.h"

#include <memory>
#include <optional>
#include <sstream>
#include <string>

namespace Zelm::Benchmarks {

/// A text in a string to a tree, and the tree's destruction. Tells what the tree takes up, too.
template <class Read> void readFromString(benchmark::State& state, std::string const& text, Read const& read)
{
    state.counters["bytes"] = liveBytesOf([&] { return read(text); });
    CountedAllocations const counted(state);
    for (auto _ : state) {
        auto const tree = read(text);
        benchmark::DoNotOptimize(&tree);
        benchmark::ClobberMemory();
    }
}

/// The same from a stream. One stream is rewound each time, since to make one would be to copy the text.
template <class Read> void readFromStream(benchmark::State& state, std::string const& text, Read const& read)
{
    std::istringstream stream(text);
    CountedAllocations const counted(state);
    for (auto _ : state) {
        stream.clear();
        stream.seekg(0);
        auto const tree = read(stream);
        benchmark::DoNotOptimize(&tree);
        benchmark::ClobberMemory();
    }
}

/// A tree to text. The stream is new each time, as its memory is part of the work.
template <class Write> void writeToStream(benchmark::State& state, Write const& write)
{
    CountedAllocations const counted(state);
    for (auto _ : state) {
        std::ostringstream stream;
        write(stream);
        benchmark::DoNotOptimize(stream.rdbuf());
        benchmark::ClobberMemory();
    }
}

/// A deep copy, without its destruction.
template <class Tree> void copyTree(benchmark::State& state, Tree const& tree)
{
    CountedAllocations const counted(state);
    for (auto _ : state) {
        std::optional<Untimed> untimed;  // ends after the copy
        Tree const copy(tree);
        benchmark::DoNotOptimize(&copy);
        benchmark::ClobberMemory();
        untimed.emplace(state, counted);
    }
}

/// The destruction of a deep copy, with that of the small block that holds its root.
template <class Tree> void destroyTree(benchmark::State& state, Tree const& tree)
{
    std::unique_ptr<Tree> copy;
    CountedAllocations const counted(state);
    for (auto _ : state) {
        {
            Untimed const untimed(state, counted);
            copy = std::make_unique<Tree>(tree);
        }
        copy.reset();
        benchmark::ClobberMemory();
    }
}

/// Two equal trees: all of both has to be looked at.
template <class Tree> void compareTrees(benchmark::State& state, Tree const& tree)
{
    Tree const copy = tree;
    CountedAllocations const counted(state);
    for (auto _ : state) {
        bool const isEqual = tree == copy;
        benchmark::DoNotOptimize(isEqual);
    }
}

}  // namespace Zelm::Benchmarks
