/// @file
/// Private to the data model: the supply of cells (zelm/metadata/cells.h), with the quick ways to take and give one.
///
///     void* const cell = CellHeap::take(sizeof(Value));
///     CellHeap::give(cell, sizeof(Value));
///
/// A thread takes cells from a heap of its own. The heap gets its memory in slabs, each of which is cut into cells of
/// one size; slabs begin at multiples of their size, so that a cell's address tells its slab, and that tells the heap.
///  - A cell that the heap's own thread gives back goes to its slab. A slab without cells in use goes back to the
///    system, but for a few that are kept.
///  - A cell that another thread gives back is put on a list of the heap's, without a lock, which the heap's thread
///    takes over whenever it would need another slab. So what one thread makes and others drop doesn't pile up.
///  - A thread that ends leaves its heap behind for the next one that needs a heap. Until then, whoever gives a cell
///    back to it tidies it up. A destructor of thread-specific data that goes on using elements through all the rounds
///    that the system allows leaves the heap of the last round owned for good.
///  - Heaps and their slabs outlive the library, as their cells may still be in use: each time that it is loaded and
///    unloaded leaves some behind.
///
/// So the slabs without cells in use are bounded: a heap keeps `mostSpareSlabs` and one slab for each size, and what
/// other threads gave back since it last looked. A slab with a single cell in use stays whole. A thread that idles
/// doesn't look, and others can't do it for the thread, which uses its heap without a lock. Nor can anybody in a child
/// after fork look after the heaps of threads that aren't there any more: these may have been in the middle of
/// something.
///
/// If the program has an operator new of its own (isOperatorNewReplaced), no heap is made: each cell comes from there.
///
/// Thread-safety: all is safe to call from any thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace Zelm::MetaData::Private {

/// Whether operator new is another one than the standard library's, or a memory checker looks on: whoever put it there
/// wants to see each allocation.
bool isOperatorNewReplaced();

class CellHeap {
public:
    static constexpr std::size_t slabSize = 8192;
    static constexpr unsigned mostSpareSlabs = 128;
    static constexpr std::size_t largestCell = 128;  ///< what is larger comes from operator new

    /// `size` isn't 0. Throws std::bad_alloc.
    static void* take(std::size_t size)
    {
        if (size <= largestCell) {
            Slab& slab = *current->open[sizeClassOf(size)];
            if (slab.free)
                return takeFrom(slab);
        }
        return takeSlowly(size);
    }

    static void give(void* memory, std::size_t size) noexcept
    {
        if (size > largestCell || !heapsAreUsed) {
            giveToOperatorDelete(memory);
            return;
        }
        auto* const cell = static_cast<Cell*>(memory);
        Slab& slab = slabOf(cell);
        if (slab.heap == current)
            slab.heap->put(*cell, slab);
        else
            slab.heap->putFromElsewhere(*cell);
    }

    /// What the end of a thread does: its heap, if it has one, is left to the next thread that needs one.
    static void leave() noexcept;

    /// The slabs that all heaps together have got from the system and not given back.
    static std::size_t slabsInAll() noexcept;

private:
    // Whatever type the cell's memory had or will have: the link is read and written in their order.
    struct [[gnu::may_alias]] Cell {
        Cell* next;
    };

    struct Slab {
        CellHeap* heap = nullptr;
        Cell* free = nullptr;
        unsigned used = 0;  // cells
        unsigned sizeClass = 0;
        char* uncut = nullptr;     // what lies behind was never made into cells
        Slab* previous = nullptr;  // in its list
        Slab* next = nullptr;
        bool isFull = false;  // is in `full`
    };

    static constexpr std::size_t sizeClasses = largestCell / 8;
    static constexpr std::size_t sizeClassOf(std::size_t size) { return (size - 1) / 8; }
    static constexpr std::size_t cellSizeOf(std::size_t sizeClass) { return (sizeClass + 1) * 8; }

    static Slab& slabOf(Cell* cell)
    {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): that is how the slab is found
        return *reinterpret_cast<Slab*>(reinterpret_cast<std::uintptr_t>(cell) & ~(slabSize - 1));
    }

    constexpr CellHeap() : CellHeap(&none) {}
    constexpr explicit CellHeap(Slab* noSlab) : open{}, full{}, spare(noSlab)
    {
        for (std::size_t i = 0; i < sizeClasses; ++i)
            open[i] = full[i] = noSlab;
    }

    /// It has a free cell.
    static void* takeFrom(Slab& slab)
    {
        Cell* const cell = slab.free;
        slab.free = cell->next;
        ++slab.used;
        return cell;
    }

    void put(Cell& cell, Slab& slab) noexcept
    {
        Cell* const next = slab.free;
        cell.next = next;
        slab.free = &cell;
        if (--slab.used == 0 || !next)
            sortIn(slab);
    }

    static void* takeSlowly(std::size_t size);
    static void giveToOperatorDelete(void* memory) noexcept;
    static bool adopt();
    static void decide();
    static bool decideOnce();
    void makeRoom(std::size_t sizeClass);
    bool hasRoom(std::size_t sizeClass) noexcept;
    void sortIn(Slab& slab) noexcept;
    void putFromElsewhere(Cell& cell) noexcept;
    void tidy() noexcept;
    void disown() noexcept;
    void collect() noexcept;
    Slab& newSlab(std::size_t sizeClass);
    void dispose(Slab& slab) noexcept;
    static void release(Slab& slab) noexcept;
    void releaseSpare() noexcept;
    static bool cut(Slab& slab) noexcept;
    static void link(Slab& slab, Slab*& list) noexcept;
    static void unlink(Slab& slab, Slab*& list) noexcept;

    static Slab none;        // ends each list; never has a cell
    static CellHeap nobody;  // the heap of a thread that has none; its lists are empty
    static bool heapsAreUsed;
    static bool const decidesEarly;
    // NOLINTNEXTLINE(cppcoreguidelines-interfaces-global-init): the address alone
    [[gnu::tls_model("initial-exec")]] static inline thread_local CellHeap* current = &nobody;

    Slab* open[sizeClasses];  // slabs with cells left; some that have just run out may be among them
    Slab* full[sizeClasses];
    Slab* spare;
    unsigned spareSlabs = 0;
    std::atomic<Cell*> returned{nullptr};  // by other threads
    std::atomic<bool> isOwned{true};
    CellHeap* nextHeap = nullptr;  // in the list of all, which only grows
};

}  // namespace Zelm::MetaData::Private
