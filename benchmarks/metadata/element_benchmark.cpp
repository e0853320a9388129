// Deep copy, destruction and equality of the documents' trees.
#include "zelm/metadata/element.h"

#include "metadata/trees.h"
#include "metadata/work.h"
#include "support/agreement.h"

namespace Zelm::Benchmarks {

namespace {

void copy(benchmark::State& state, Document const& document)
{
    copyTree(state, treeOf(document.text));
}
bool const isCopy = forEachDocument("copy_tree", "ours", copy);

void destroy(benchmark::State& state, Document const& document)
{
    destroyTree(state, treeOf(document.text));
}
bool const isDestruction = forEachDocument("destroy_tree", "ours", destroy);

void compare(benchmark::State& state, Document const& document)
{
    compareTrees(state, treeOf(document.text));
}
bool const isComparison = forEachDocument("compare_trees", "ours", compare);

Agreement const copiesAreEqual("a copy of each tree equals it", [] {
    for (Document const& document : documents()) {
        MetaData::Object const tree = treeOf(document.text);
        MetaData::Object const copied = tree;
        if (copied != tree)
            return false;
    }
    return true;
});

}  // namespace

}  // namespace Zelm::Benchmarks
