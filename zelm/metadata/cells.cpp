#include "zelm/metadata/cells.h"

#include "zelm/metadata/private/cell_heap.h"

namespace Zelm::MetaData::Private {

void* takeCell(std::size_t size)
{
    return CellHeap::take(size);
}

void giveCell(void* cell, std::size_t size) noexcept
{
    CellHeap::give(cell, size);
}

}  // namespace Zelm::MetaData::Private
