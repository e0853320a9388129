#include "zelm/metadata/private/cell_heap.h"

#include "zelm/metadata/private/asked_memory.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

#include <pthread.h>

namespace Zelm::MetaData::Private {

namespace {

std::atomic<CellHeap*> heaps{nullptr};
std::atomic<std::size_t> slabs{0};

/// Tells when a thread ends, after its thread_local objects are gone, which may hold elements.
struct ThreadEnds {
    pthread_key_t key = 0;
    std::atomic<bool> exists{false};

    // If this library is unloaded, the threads that go on must not come back to it.
    ~ThreadEnds()
    {
        if (exists.exchange(false))
            pthread_key_delete(key);
    }

    /// Threads that go on while the process ends aren't watched any more: the key may be somebody else's by then.
    bool watch(CellHeap* heap) const { return !exists || pthread_setspecific(key, heap) == 0; }
} threadEnds;

/// Not by operator new, which rounds the size up to a multiple of the alignment: slabs that leave room for the
/// allocator's own word in front of each lie side by side.
void* newSlabMemory(std::size_t size)
{
    return askedMemory([size]() -> void* {
        void* memory = nullptr;
        return posix_memalign(&memory, size, size - sizeof(void*)) == 0 ? memory : nullptr;
    });
}

}  // namespace

CellHeap::Slab CellHeap::none;
CellHeap CellHeap::nobody;
bool CellHeap::heapsAreUsed = false;

std::size_t CellHeap::slabsInAll() noexcept
{
    return slabs.load(std::memory_order_relaxed);
}

// ------------------------------------------------------------------------------------------------------------- take

void* CellHeap::takeSlowly(std::size_t size)
{
    bool const hasHeap = size <= largestCell && (current != &nobody || adopt());
    if (!hasHeap)
        return ::operator new(size);
    std::size_t const sizeClass = sizeClassOf(size);
    current->makeRoom(sizeClass);
    return takeFrom(*current->open[sizeClass]);
}

void CellHeap::giveToOperatorDelete(void* memory) noexcept
{
    ::operator delete(memory);
}

void CellHeap::makeRoom(std::size_t sizeClass)
{
    if (hasRoom(sizeClass))
        return;
    collect();
    if (!hasRoom(sizeClass))
        link(newSlab(sizeClass), open[sizeClass]);
}

/// Brings a slab with a free cell to the front, if there is one, and puts aside those that turn out to be full.
bool CellHeap::hasRoom(std::size_t sizeClass) noexcept
{
    for (Slab* slab = open[sizeClass]; slab != &none; slab = open[sizeClass]) {
        if (slab->free || cut(*slab))
            return true;
        unlink(*slab, open[sizeClass]);
        link(*slab, full[sizeClass]);
        slab->isFull = true;
    }
    return false;
}

/// Makes some more of the slab into cells. Not all at once: what isn't needed is never touched.
bool CellHeap::cut(Slab& slab) noexcept
{
    constexpr std::size_t pieceSize = 1024;
    char* const end = reinterpret_cast<char*>(&slab) + slabSize - sizeof(void*);
    std::size_t const cellSize = cellSizeOf(slab.sizeClass);
    std::size_t const left = static_cast<std::size_t>(end - slab.uncut);
    std::size_t const cells = std::min(left, pieceSize) / cellSize;

    char* const first = slab.uncut;
    Cell* next = nullptr;
    for (std::size_t i = cells; i-- > 0;)
        next = new (first + i * cellSize) Cell{next};
    slab.free = next;
    slab.uncut = first + cells * cellSize;
    return next;
}

CellHeap::Slab& CellHeap::newSlab(std::size_t sizeClass)
{
    void* memory = nullptr;
    if (spareSlabs > 0) {
        memory = spare;
        unlink(*spare, spare);
        --spareSlabs;
    } else {
        memory = newSlabMemory(slabSize);
        slabs.fetch_add(1, std::memory_order_relaxed);
    }
    auto* const slab = new (memory) Slab;
    slab->heap = this;
    slab->sizeClass = static_cast<unsigned>(sizeClass);
    slab->uncut = static_cast<char*>(memory) + sizeof(Slab);
    cut(*slab);
    return *slab;
}

// ------------------------------------------------------------------------------------------------------------- give

/// Does what a cell that came back may ask for: its slab was full, or has no cell in use any more. The last slab of its
/// size stays, so that a value which comes and goes costs no slab each time.
void CellHeap::sortIn(Slab& slab) noexcept
{
    Slab*& list = open[slab.sizeClass];
    if (slab.isFull) {
        unlink(slab, full[slab.sizeClass]);
        link(slab, list);
        slab.isFull = false;
    }
    bool const isLastOne = list == &slab && slab.next == &none;
    if (slab.used == 0 && !isLastOne) {
        unlink(slab, list);
        dispose(slab);
    }
}

void CellHeap::dispose(Slab& slab) noexcept
{
    if (spareSlabs < mostSpareSlabs) {
        link(slab, spare);
        ++spareSlabs;
    } else {
        release(slab);
    }
}

void CellHeap::putFromElsewhere(Cell& cell) noexcept
{
    cell.next = returned.load(std::memory_order_relaxed);
    while (!returned.compare_exchange_weak(cell.next, &cell)) {
    }
    if (!isOwned.load())
        tidy();
}

/// If nobody looks after the heap, its slabs would stay until somebody does.
void CellHeap::tidy() noexcept
{
    while (returned.load() && !isOwned.exchange(true)) {
        collect();
        releaseSpare();
        isOwned.store(false);
    }
}

/// Either this sees a cell that is given back meanwhile, or who gives it back sees that the heap isn't owned: all four
/// operations are in the one order that sequential consistency has.
void CellHeap::disown() noexcept
{
    isOwned.store(false);
    tidy();
}

/// Takes over what other threads gave back.
void CellHeap::collect() noexcept
{
    Cell* cell = returned.exchange(nullptr, std::memory_order_acquire);
    while (cell) {
        Cell* const next = cell->next;
        put(*cell, slabOf(cell));
        cell = next;
    }
}

void CellHeap::release(Slab& slab) noexcept
{
    std::free(&slab);  // NOLINT(cppcoreguidelines-no-malloc): see newSlabMemory
    slabs.fetch_sub(1, std::memory_order_relaxed);
}

void CellHeap::releaseSpare() noexcept
{
    spareSlabs = 0;
    for (Slab* slab = std::exchange(spare, &none); slab != &none;) {
        Slab* const next = slab->next;
        release(*slab);
        slab = next;
    }
}

void CellHeap::link(Slab& slab, Slab*& list) noexcept
{
    slab.previous = &none;
    slab.next = list;
    if (list != &none)
        list->previous = &slab;
    list = &slab;
}

void CellHeap::unlink(Slab& slab, Slab*& list) noexcept
{
    if (slab.next != &none)
        slab.next->previous = slab.previous;
    (slab.previous != &none ? slab.previous->next : list) = slab.next;
}

// ---------------------------------------------------------------------------------------------------------- threads

void CellHeap::decide()
{
    if (isOperatorNewReplaced())
        return;
    heapsAreUsed = pthread_key_create(&threadEnds.key, [](void*) { leave(); }) == 0;
    threadEnds.exists = heapsAreUsed;
}

bool CellHeap::decideOnce()
{
    [[maybe_unused]] static bool const isDecided = (decide(), true);
    return heapsAreUsed;
}

// When the library is loaded, since the question takes the loader's lock: a thread that asked later could wait for one
// that loads a library whose initialisation waits for the answer. Elements in initialisations before this one ask
// first.
[[maybe_unused]] bool const CellHeap::decidesEarly = decideOnce();

/// Gives the thread a heap: one that was left, or a new one. False if heaps aren't used.
bool CellHeap::adopt()
{
    if (!decideOnce())
        return false;

    CellHeap* heap = heaps.load(std::memory_order_acquire);
    while (heap &&
           (heap->isOwned.load(std::memory_order_relaxed) || heap->isOwned.exchange(true, std::memory_order_acquire)))
        heap = heap->nextHeap;
    if (!heap) {
        heap = new CellHeap;
        if (current != &nobody) {  // the new handler was called and has used elements
            delete heap;
            return true;
        }
        heap->nextHeap = heaps.load(std::memory_order_relaxed);
        while (
            !heaps.compare_exchange_weak(heap->nextHeap, heap, std::memory_order_release, std::memory_order_relaxed)) {
        }
    }
    if (!threadEnds.watch(heap)) {
        heap->disown();
        throw std::bad_alloc();
    }
    current = heap;
    return true;
}

void CellHeap::leave() noexcept
{
    CellHeap* const heap = std::exchange(current, &nobody);
    if (heap == &nobody)
        return;
    threadEnds.watch(nullptr);
    heap->collect();
    for (Slab*& list : heap->open) {
        for (Slab* slab = list; slab != &none;) {
            Slab* const next = slab->next;
            if (slab->used == 0) {
                unlink(*slab, list);
                release(*slab);
            }
            slab = next;
        }
    }
    heap->releaseSpare();
    heap->disown();
}

}  // namespace Zelm::MetaData::Private
