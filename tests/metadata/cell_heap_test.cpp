// The heaps themselves, in a program that always uses them: in others, a replaced operator new turns them off.
#include "zelm/metadata/private/cell_heap.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <mutex>
#include <new>
#include <random>
#include <thread>
#include <utility>
#include <vector>

#include <malloc.h>

// How many of the next slabs, and of the next heaps, can't be had.
static thread_local int slabsToFail = 0;
static thread_local int heapsToFail = 0;

// Instead of the system's, for slabs and nothing else here.
extern "C" int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept
{
    *memory = slabsToFail > 0 ? nullptr : memalign(alignment, size);
    slabsToFail -= slabsToFail > 0 ? 1 : 0;
    return *memory ? 0 : ENOMEM;
}

// With its counterparts, for a sanitizer that tells them from its own. None of them is compiled into its callers: the
// compiler would take one that it sees through for no counterpart of those that it doesn't.
[[gnu::noinline]] void* operator new(std::size_t size)
{
    while (heapsToFail > 0 && size == sizeof(Zelm::MetaData::Private::CellHeap)) {
        --heapsToFail;
        std::get_new_handler()();
    }
    if (void* const memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace Zelm::MetaData::Private {

bool isOperatorNewReplaced()
{
    return false;
}

namespace {

struct Taken {
    unsigned char* cell;
    std::size_t size;
    unsigned char mark;
};

Taken take(std::size_t size, unsigned char mark)
{
    auto* const cell = static_cast<unsigned char*>(CellHeap::take(size));
    std::memset(cell, mark, size);
    return {cell, size, mark};
}

/// Gives the cell back; false if somebody has written to it.
bool give(Taken const& taken)
{
    bool isWhole = true;
    for (std::size_t i = 0; i < taken.size; ++i)
        isWhole = isWhole && taken.cell[i] == taken.mark;
    CellHeap::give(taken.cell, taken.size);
    return isWhole;
}

TEST(CellHeap, givesCellsOfAllSizesThatAreAlignedAndApart)
{
    std::vector<Taken> all;
    for (std::size_t size = 1; size <= CellHeap::largestCell + 8; ++size) {
        for (int i = 0; i < 200; ++i) {
            all.push_back(take(size, static_cast<unsigned char>(all.size())));
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(all.back().cell) % alignof(void*), 0u);
        }
    }
    for (Taken const& taken : all)
        ASSERT_TRUE(give(taken));
}

TEST(CellHeap, keepsCellsApartWhateverTheOrder)
{
    std::mt19937 random(1);  // NOLINT: the same each time
    std::vector<Taken> all;
    for (int i = 0; i < 100000; ++i) {
        if (all.empty() || random() % 100 < (i / 10000 % 2 == 0 ? 60u : 40u)) {
            all.push_back(take(1 + random() % 140, static_cast<unsigned char>(i)));
        } else {
            std::swap(all[random() % all.size()], all.back());
            ASSERT_TRUE(give(all.back()));
            all.pop_back();
        }
    }
    for (Taken const& taken : all)
        ASSERT_TRUE(give(taken));
}

TEST(CellHeap, givesTheSameCellAgain)
{
    void* const first = CellHeap::take(32);
    CellHeap::give(first, 32);
    auto const slabs = CellHeap::slabsInAll();

    for (int i = 0; i < 1000; ++i) {
        void* const again = CellHeap::take(32);
        EXPECT_EQ(again, first);
        CellHeap::give(again, 32);
    }

    EXPECT_EQ(CellHeap::slabsInAll(), slabs);
}

TEST(CellHeap, keepsOnlySoManySlabsThatAreNotInUse)
{
    auto const before = CellHeap::slabsInAll();
    std::vector<void*> cells(600000);
    for (void*& cell : cells)
        cell = CellHeap::take(24);
    EXPECT_GT(CellHeap::slabsInAll(), before + 1000);

    for (void* cell : cells)
        CellHeap::give(cell, 24);

    EXPECT_LE(CellHeap::slabsInAll(), before + CellHeap::mostSpareSlabs + 1);
}

TEST(CellHeap, usesASlabThatIsNotInUseForAnotherSize)
{
    std::vector<void*> cells;
    for (int i = 0; i < 10000; ++i)
        cells.push_back(CellHeap::take(40));
    for (void* cell : cells)
        CellHeap::give(cell, 40);
    auto const slabs = CellHeap::slabsInAll();

    for (void*& cell : cells)
        cell = CellHeap::take(8);

    EXPECT_LE(CellHeap::slabsInAll(), slabs + 1);
    for (void* cell : cells)
        CellHeap::give(cell, 8);
}

/// Takes cells until another slab was needed, or wasn't to be had.
std::vector<void*> takeUntilASlabIsNeeded()
{
    std::vector<void*> cells;
    try {
        for (auto const slabs = CellHeap::slabsInAll(); CellHeap::slabsInAll() == slabs;)
            cells.push_back(CellHeap::take(128));
    } catch (std::bad_alloc const&) {
        cells.push_back(nullptr);
    }
    return cells;
}

void giveAll(std::vector<void*> const& cells)
{
    for (void* cell : cells) {
        if (cell)
            CellHeap::give(cell, 128);
    }
}

TEST(CellHeapOutOfMemory, saysSoAndGoesOnWhenThereIsSomeAgain)
{
    slabsToFail = 1;
    auto const cells = takeUntilASlabIsNeeded();
    EXPECT_EQ(slabsToFail, 0);
    EXPECT_EQ(cells.back(), nullptr);

    auto const more = takeUntilASlabIsNeeded();
    EXPECT_EQ(more.size(), 1u);
    EXPECT_NE(more.back(), nullptr);
    giveAll(cells);
    giveAll(more);
}

int handlerCalls = 0;

TEST(CellHeapOutOfMemory, asksTheHandlerForMoreAsOperatorNewDoes)
{
    auto const before = std::set_new_handler([] { ++handlerCalls; });
    slabsToFail = 3;
    auto const cells = takeUntilASlabIsNeeded();
    std::set_new_handler(before);

    EXPECT_EQ(handlerCalls, 3);
    EXPECT_NE(cells.back(), nullptr);
    giveAll(cells);
}

std::atomic<int> cellsTakenByHandler{0};
thread_local void* takenByHandler = nullptr;

TEST(CellHeapOutOfMemory, leavesTheThreadTheHeapThatTheHandlerGotForIt)
{
    auto const slabs = CellHeap::slabsInAll();
    auto const before = std::set_new_handler([] {
        takenByHandler = CellHeap::take(24);
        ++cellsTakenByHandler;
    });
    constexpr int count = 30;  // more than have ended before and left heaps
    std::mutex mutex;
    std::condition_variable haveAllTaken;
    int haveTaken = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&] {
            heapsToFail = 1;
            Taken const taken = take(40, 1);
            heapsToFail = 0;
            {
                std::unique_lock lock(mutex);
                ++haveTaken;
                haveAllTaken.notify_all();
                haveAllTaken.wait(lock, [&] { return haveTaken == count; });
            }
            EXPECT_TRUE(give(taken));
            if (takenByHandler)
                CellHeap::give(takenByHandler, 24);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    std::set_new_handler(before);

    EXPECT_GT(cellsTakenByHandler, 0);
    EXPECT_EQ(CellHeap::slabsInAll(), slabs);
}

TEST(CellHeapOfAThreadThatEnds, isLeftToTheNextOneAndKeepsNothingThatIsNotInUse)
{
    auto const before = CellHeap::slabsInAll();

    for (int i = 0; i < 10; ++i) {
        std::thread([] {
            std::vector<Taken> all;
            for (int number = 0; number < 5000; ++number)
                all.push_back(take(1 + static_cast<std::size_t>(number) % 128, static_cast<unsigned char>(number)));
            for (Taken const& taken : all)
                EXPECT_TRUE(give(taken));
        }).join();
    }

    EXPECT_EQ(CellHeap::slabsInAll(), before);
}

TEST(CellHeapOfAThreadThatEnds, isTidiedUpByWhoeverGivesItsLastCellsBack)
{
    auto const before = CellHeap::slabsInAll();
    std::vector<Taken> all;
    std::thread([&all] {
        for (int number = 0; number < 60000; ++number)
            all.push_back(take(16, static_cast<unsigned char>(number)));
    }).join();
    EXPECT_GT(CellHeap::slabsInAll(), before + 100);

    for (Taken const& taken : all)
        EXPECT_TRUE(give(taken));

    EXPECT_LE(CellHeap::slabsInAll(), before + 1);
}

TEST(CellHeapOfAThread, canBeLeftAndBeTakenAgain)
{
    std::thread([] {
        Taken const first = take(48, 1);
        CellHeap::leave();
        CellHeap::leave();
        Taken const second = take(48, 2);
        EXPECT_NE(first.cell, second.cell);
        EXPECT_TRUE(give(first));
        EXPECT_TRUE(give(second));
        CellHeap::leave();
    }).join();
}

/// What one thread makes for another one.
class Line {
public:
    void put(Taken const& taken)
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return taken_.size() < 1000; });
        taken_.push_back(taken);
        changed_.notify_all();
    }
    Taken get()
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !taken_.empty(); });
        Taken const taken = taken_.front();
        taken_.pop_front();
        changed_.notify_all();
        return taken;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Taken> taken_;
};

TEST(CellHeapsOfSeveralThreads, doNotGrowBecauseCellsAreGivenBackElsewhere)
{
    auto const before = CellHeap::slabsInAll();
    Line line;
    constexpr int count = 50000;
    std::thread maker([&line] {
        for (int i = 0; i < count; ++i)
            line.put(take(64, static_cast<unsigned char>(i)));
    });
    for (int i = 0; i < count; ++i)
        ASSERT_TRUE(give(line.get()));
    // Never more in use at once than the line can hold, which is 1000 cells: eight slabs and some.
    EXPECT_LE(CellHeap::slabsInAll(), before + 40);
    maker.join();
}

TEST(CellHeapsOfSeveralThreads, takeCellsBackFromSeveralAtOnce)
{
    auto const before = CellHeap::slabsInAll();
    for (int round = 0; round < 5; ++round) {
        std::vector<Taken> all;
        std::thread([&all] {  // nobody looks after its heap from then on
            for (int number = 0; number < 60000; ++number)
                all.push_back(take(16, static_cast<unsigned char>(number)));
        })
            .join();

        std::vector<std::thread> threads;
        for (std::size_t first = 0; first < 3; ++first) {
            threads.emplace_back([&all, first] {
                for (std::size_t i = first; i < all.size(); i += 3)
                    EXPECT_TRUE(give(all[i]));
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    }
    // The last cells that came back while another thread was tidying up wait for the next thread that has the heap.
    std::thread([] { EXPECT_TRUE(give(take(16, 1))); }).join();
    EXPECT_LE(CellHeap::slabsInAll(), before + 1);
}

TEST(CellHeapsOfSeveralThreads, keepCellsApartWhoeverGivesThemBack)
{
    std::mutex mutex;
    std::vector<Taken> shared;
    std::vector<std::thread> threads;
    for (unsigned seed = 1; seed <= 4; ++seed) {
        threads.emplace_back([&, seed] {
            std::mt19937 random(seed);
            std::vector<Taken> own;
            for (int i = 0; i < 20000; ++i) {
                if (own.size() < 50 || random() % 2 == 0) {
                    own.push_back(take(1 + random() % 130, static_cast<unsigned char>(random())));
                } else {
                    EXPECT_TRUE(give(own.back()));
                    own.pop_back();
                }
                if (i % 10 == 0) {
                    std::lock_guard const lock(mutex);
                    shared.push_back(own.back());
                    std::swap(shared[random() % shared.size()], own.back());
                    own.back() = shared.back();
                    shared.pop_back();
                }
                if (i % 5000 == 4999)
                    CellHeap::leave();  // as if another thread went on
            }
            for (Taken const& taken : own)
                EXPECT_TRUE(give(taken));
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (Taken const& taken : shared)
        EXPECT_TRUE(give(taken));
}

}  // namespace
}  // namespace Zelm::MetaData::Private
