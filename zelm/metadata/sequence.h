/// @file
/// The container in an Array: a sequence that grows at both ends without moving what it holds, as a std::deque does,
/// and takes up little where there is little in it. Not for applications: they use Array (element.h).
///
///     Sequence<Element> elements;
///     elements.reserve(2);                                    // one block of just that size
///     elements.insert(elements.end(), std::move(element));
///
/// The values lie in blocks, each at least as large as all before it together, so that there are few of them. Most
/// sequences are short and have one block. One with several has a table besides, which lists them in order and tells
/// the position of each. Positions count on from block to block; they begin anywhere, since there may come to be values
/// in front of the first one.
///
/// Only the first block may have room in front of its values, only the last one behind them, and no block is empty but
/// the only one of an empty sequence.
///
/// What happens to iterators and references is as with std::deque: inserting at either end leaves references valid,
/// erasing there leaves all valid but those to what was erased; anywhere else, both leave none. A sequence that is
/// moved or swapped takes its values along.
///
/// If memory runs out, or a value can't be copied, the sequence is as it was.
///
/// Thread-safety: as standard containers have it.
#pragma once

#include "zelm/metadata/cells.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace Zelm::MetaData::Private {

/// How many values a block can hold: as many as its numbers can tell. An even number, and for each type its own, so
/// that what happens to sequences that long can be tested with short ones.
template <class T> constexpr std::size_t longestBlock = std::numeric_limits<std::uint32_t>::max() - 1;

template <class T> class Sequence {
    static_assert(std::is_nothrow_default_constructible_v<T> && std::is_nothrow_move_constructible_v<T> &&
                  std::is_nothrow_move_assignable_v<T> && std::is_nothrow_destructible_v<T>);
    static_assert(alignof(T) <= alignof(void*));

    struct Block;
    struct Table;

    template <class Value> class Iterator {
        template <class Other>
        using IfLessConst = std::enable_if_t<std::is_same_v<Other const, Value> && !std::is_same_v<Other, Value>>;

    public:
        using iterator_category = std::random_access_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = Value*;
        using reference = Value&;

        Iterator() = default;
        template <class Other, class = IfLessConst<Other>>
        Iterator(Iterator<Other> const& other) : value_(other.value_), block_(other.block_)
        {
        }

        reference operator*() const { return *value_; }
        pointer operator->() const { return value_; }
        reference operator[](difference_type offset) const { return *(*this + offset); }

        Iterator& operator++()
        {
            if (++value_ == block_->end())
                *this = Iterator(block_->behind());
            return *this;
        }
        Iterator& operator--()
        {
            if (value_ == block_->begin()) {
                block_ = block_->previous();
                value_ = block_->end();
            }
            --value_;
            return *this;
        }
        Iterator operator++(int)
        {
            Iterator const before = *this;
            ++*this;
            return before;
        }
        Iterator operator--(int)
        {
            Iterator const before = *this;
            --*this;
            return before;
        }
        Iterator& operator+=(difference_type offset)
        {
            if (!block_ || !block_->table)
                value_ += offset;
            else
                *this = Iterator(block_->table->at(position() + offset));
            return *this;
        }
        Iterator& operator-=(difference_type offset) { return *this += -offset; }
        friend Iterator operator+(Iterator iterator, difference_type offset) { return iterator += offset; }
        friend Iterator operator+(difference_type offset, Iterator iterator) { return iterator += offset; }
        friend Iterator operator-(Iterator iterator, difference_type offset) { return iterator -= offset; }
        friend difference_type operator-(Iterator const& a, Iterator const& b) { return a.position() - b.position(); }

        friend bool operator==(Iterator const& a, Iterator const& b) { return a.value_ == b.value_; }
        friend bool operator!=(Iterator const& a, Iterator const& b) { return a.value_ != b.value_; }
        friend bool operator<(Iterator const& a, Iterator const& b) { return a.position() < b.position(); }
        friend bool operator>(Iterator const& a, Iterator const& b) { return b < a; }
        friend bool operator<=(Iterator const& a, Iterator const& b) { return !(b < a); }
        friend bool operator>=(Iterator const& a, Iterator const& b) { return !(a < b); }

    private:
        friend class Sequence;
        template <class> friend class Iterator;

        Iterator(T* value, Block* block) : value_(value), block_(block) {}

        difference_type position() const { return block_ ? block_->base() + (value_ - block_->place(0)) : 0; }

        T* value_ = nullptr;      // of the end: the last block's end
        Block* block_ = nullptr;  // null if there is none
    };

public:
    using value_type = T;
    using iterator = Iterator<T>;
    using const_iterator = Iterator<T const>;

    Sequence() noexcept = default;
    // NOLINTNEXTLINE(misc-no-recursion): see private/nesting.h
    Sequence(Sequence const& other) : Sequence()  // complete from here on: should a copy fail, the others are destroyed
    {
        if (other.empty())
            return;
        auto left = other.size();
        expectMemoryFor(left);
        Block* block = addBack(left);
        for (T const& value : other) {
            if (block->to == block->capacity)
                block = addBack(left);
            new (block->end()) T(value);
            ++block->to;
            --left;
        }
    }
    Sequence(Sequence&& other) noexcept : first_(std::exchange(other.first_, nullptr)) {}
    Sequence& operator=(Sequence const& other)
    {
        if (this != &other)
            *this = Sequence(other);
        return *this;
    }
    /// `other` may lie in one of the values.
    Sequence& operator=(Sequence&& other) noexcept
    {
        if (this != &other) {
            Sequence const old(std::move(*this));
            first_ = std::exchange(other.first_, nullptr);
        }
        return *this;
    }
    ~Sequence() { clear(); }

    iterator begin() { return first_ ? iterator(first_->begin(), first_) : iterator(); }
    const_iterator begin() const { return const_cast<Sequence*>(this)->begin(); }
    iterator end() { return first_ ? iterator(first_->last()->end(), first_->last()) : iterator(); }
    const_iterator end() const { return const_cast<Sequence*>(this)->end(); }

    bool empty() const noexcept { return !first_ || first_->from == first_->to; }
    std::size_t size() const noexcept
    {
        return first_ ? first_->table ? first_->table->size() : first_->to - first_->from : 0;
    }

    /// `index` is below the size.
    T& operator[](std::size_t index)
    {
        auto const offset = static_cast<std::ptrdiff_t>(index);
        return first_->table ? begin()[offset] : first_->begin()[offset];
    }
    T const& operator[](std::size_t index) const { return const_cast<Sequence&>(*this)[index]; }

    /// Takes one block for that many values, or for `longestBlock` if they are more, if nothing was taken yet; a
    /// sequence that holds values already, or has held any since it was cleared, stays as it is.
    void reserve(std::size_t size)
    {
        expectPossible(size);
        if (!first_ && size != 0)
            addBack(size);
    }

    /// Moves that many values, from `values` on, into this sequence, which is empty and has no memory: it takes no more
    /// than they need.
    void take(T* values, std::size_t count)
    {
        for (std::size_t left = count; left != 0;) {
            Block* const block = addBack(left);  // there is one, unless the values are too many for any
            auto const inBlock = std::min<std::size_t>(left, block->capacity);
            std::uninitialized_move_n(values, inBlock, block->end());
            block->to += static_cast<std::uint32_t>(inBlock);
            values += inBlock;
            left -= inBlock;
        }
    }

    iterator insert(const_iterator position, T&& value)
    {
        auto const index = position - begin();
        if (position == end())
            return pushBack(std::move(value));
        if (index == 0)
            return pushFront(std::move(value));

        // The values on the nearer side give way, as soon as there is room for them. Then the value is taken, which may
        // be one of them.
        if (static_cast<std::size_t>(index) < size() / 2) {
            T& first = *begin();
            blockWithRoomInFront();
            T taken(std::move(value));
            pushFront(std::move(first));
            std::move(begin() + 2, begin() + index + 1, begin() + 1);
            return put(std::move(taken), index);
        }
        T& last = *(end() - 1);
        blockWithRoomBehind(1);
        T taken(std::move(value));
        pushBack(std::move(last));
        std::move_backward(begin() + index, end() - 2, end() - 1);
        return put(std::move(taken), index);
    }

    iterator erase(const_iterator position)
    {
        auto const index = position - begin();
        auto const place = begin() + index;
        if (static_cast<std::size_t>(index) < size() / 2) {
            std::move_backward(begin(), place, place + 1);
            popFront();
        } else {
            std::move(place + 1, end(), place);
            popBack();
        }
        return begin() + index;
    }

    /// New values are default ones.
    void resize(std::size_t size)
    {
        expectPossible(size);
        auto const sizeBefore = this->size();
        auto left = size > sizeBefore ? size - sizeBefore : 0;
        expectMemoryFor(left);
        try {
            while (left > 0) {
                auto* const block = blockWithRoomBehind(left);
                auto const count = std::min<std::size_t>(left, block->capacity - block->to);
                std::uninitialized_value_construct_n(block->end(), count);
                block->to += static_cast<std::uint32_t>(count);
                left -= count;
            }
        } catch (...) {
            shrink(sizeBefore);
            throw;
        }
        shrink(size);
    }

    /// Gives all memory back.
    void clear() noexcept
    {
        Block* const first = std::exchange(first_, nullptr);
        if (!first)
            return;
        if (Table* const table = first->table) {
            for (std::uint32_t i = 0; i < table->count; ++i)
                Block::destroy(table->entries()[i].block);
            Table::destroy(table);
        } else {
            Block::destroy(first);
        }
    }

    // NOLINTNEXTLINE(misc-no-recursion): see private/nesting.h
    friend bool operator==(Sequence const& a, Sequence const& b)
    {
        return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin());
    }
    friend bool operator!=(Sequence const& a, Sequence const& b) { return !(a == b); }

private:
    // The first block is small, as most arrays are, and the next one takes at least what a cell can hold.
    static constexpr std::size_t smallest = 4;

    struct Block {
        Table* table;         // null if this is the only block
        std::uint32_t index;  // in the table
        std::uint32_t capacity;
        std::uint32_t from;  // the places from here...
        std::uint32_t to;    // ...to here hold values

        static std::size_t bytes(std::size_t capacity) { return sizeof(Block) + capacity * sizeof(T); }
        static Block* make(std::size_t capacity)
        {
            return new (takeCell(bytes(capacity))) Block{nullptr, 0, static_cast<std::uint32_t>(capacity), 0, 0};
        }
        static void destroy(Block* block) noexcept
        {
            std::destroy(block->begin(), block->end());
            giveCell(block, bytes(block->capacity));
        }

        T* place(std::uint32_t at) { return reinterpret_cast<T*>(this + 1) + at; }
        T* begin() { return place(from); }
        T* end() { return place(to); }

        std::ptrdiff_t base() const { return table ? table->entries()[index].base : 0; }
        Block* last() { return table ? table->entries()[table->count - 1].block : this; }
        Block* previous() const { return table->entries()[index - 1].block; }
        /// Where the values behind this block's begin, or the end.
        iterator behind()
        {
            if (this == last())
                return {end(), this};
            Block* const next = table->entries()[index + 1].block;
            return {next->begin(), next};
        }
    };

    struct Entry {
        Block* block;
        std::ptrdiff_t base;  // the position of its place 0
    };

    struct Table {
        std::uint32_t count;
        std::uint32_t capacity;

        static std::size_t bytes(std::size_t capacity) { return sizeof(Table) + capacity * sizeof(Entry); }
        static Table* make(std::uint32_t capacity) { return new (takeCell(bytes(capacity))) Table{0, capacity}; }
        static void destroy(Table* table) noexcept { giveCell(table, bytes(table->capacity)); }

        Entry* entries() { return reinterpret_cast<Entry*>(this + 1); }

        std::size_t size() noexcept
        {
            Entry const& first = entries()[0];
            Entry const& last = entries()[count - 1];
            return static_cast<std::size_t>(last.base + last.block->to - first.base - first.block->from);
        }

        /// From the last block on, as the largest one is there, unless values came in front. The end is in the last
        /// one.
        iterator at(std::ptrdiff_t position)
        {
            Entry* entry = entries() + count - 1;
            while (entry != entries() && position < entry->base)  // values begin at place 0 in all but the first block
                --entry;
            return {entry->block->place(0) + (position - entry->base), entry->block};
        }

        void put(std::uint32_t index, Entry const& entry) noexcept
        {
            std::copy_backward(entries() + index, entries() + count, entries() + count + 1);
            entries()[index] = entry;
            ++count;
            number();
        }
        void remove(std::uint32_t index) noexcept
        {
            std::copy(entries() + index + 1, entries() + count, entries() + index);
            --count;
            number();
        }
        void number() noexcept
        {
            for (std::uint32_t i = 0; i < count; ++i) {
                entries()[i].block->index = i;
                entries()[i].block->table = this;
            }
        }
    };

    // --------------------------------------------------------------------------------------------------- blocks

    /// Throws std::length_error if no memory could ever hold so many values.
    static void expectPossible(std::size_t count)
    {
        if (count > static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) / sizeof(T))
            throw std::length_error("A sequence can't be that long");
    }

    /// Throws std::bad_alloc if so many values take several blocks and the system wouldn't grant their memory at once:
    /// block by block it would, until there is none left for anybody.
    static void expectMemoryFor(std::size_t count)
    {
        if (count > longestBlock<T>)
            giveCell(takeCell(count * sizeof(T)), count * sizeof(T));
    }

    Block* makeBlock(std::size_t wanted) const
    {
        constexpr std::size_t cellful = (128 - sizeof(Block)) / sizeof(T) / 2 * 2;
        std::size_t const alreadyThere = size();
        std::size_t const enough = std::max(wanted, alreadyThere == 0 ? 0 : std::max(cellful, alreadyThere));
        std::size_t const capacity = std::min(enough, longestBlock<T>);
        // An even one: the allocator hands out multiples of two words, less one.
        return Block::make(capacity + capacity % 2);
    }

    /// Room for another entry.
    Table& tableWithRoom()
    {
        Table* const old = first_->table;
        if (old && old->count < old->capacity)
            return *old;
        Table* const table = Table::make(old ? 2 * old->capacity : 4);
        if (old) {
            std::copy(old->entries(), old->entries() + old->count, table->entries());
            table->count = old->count;
            Table::destroy(old);
        } else {
            table->entries()[0] = {first_, 0};
            table->count = 1;
        }
        table->number();
        return *table;
    }

    Block* addBack(std::size_t wanted)
    {
        if (!first_)
            return first_ = makeBlock(wanted);
        Table& table = tableWithRoom();
        Block* const block = makeBlock(wanted);
        Entry const& last = table.entries()[table.count - 1];
        table.put(table.count, {block, last.base + last.block->to});
        return block;
    }

    Block* addFront()
    {
        Table& table = tableWithRoom();
        Block* const block = makeBlock(smallest);
        table.put(0, {block, table.entries()[0].base - block->capacity});
        return first_ = block;
    }

    Block* blockWithRoomBehind(std::size_t wanted)
    {
        if (!first_)
            addBack(smallest);
        Block* const block = first_->last();
        if (block->from == block->to)
            block->from = block->to = 0;
        return block->to < block->capacity ? block : addBack(wanted);
    }

    /// Not for an empty sequence: what comes into one is put behind.
    Block* blockWithRoomInFront()
    {
        if (first_->from > 0)
            return first_;
        Block* const block = addFront();
        block->from = block->to = block->capacity;
        return block;
    }

    // --------------------------------------------------------------------------------------------------- values

    iterator pushBack(T&& value)
    {
        Block* const block = blockWithRoomBehind(1);
        T* const place = new (block->end()) T(std::move(value));
        ++block->to;
        return {place, block};
    }

    iterator pushFront(T&& value)
    {
        Block* const block = blockWithRoomInFront();
        T* const place = new (block->begin() - 1) T(std::move(value));
        --block->from;
        return {place, block};
    }

    iterator put(T&& value, std::ptrdiff_t index)
    {
        auto const place = begin() + index;
        *place = std::move(value);
        return place;
    }

    void popBack() noexcept
    {
        Block* const block = first_->last();
        --block->to;
        std::destroy_at(block->end());
        if (block->from == block->to && block != first_) {
            first_->table->remove(block->index);
            Block::destroy(block);
        }
    }

    /// There is another value: the only one is taken from behind.
    void popFront() noexcept
    {
        Block* const block = first_;
        ++block->from;
        std::destroy_at(block->begin() - 1);
        if (block->from == block->to) {
            Table& table = *block->table;
            table.remove(0);
            first_ = table.entries()[0].block;
            Block::destroy(block);
        }
    }

    void shrink(std::size_t size) noexcept
    {
        for (auto left = this->size(); left > size; --left)
            popBack();
    }

    Block* first_ = nullptr;
};

}  // namespace Zelm::MetaData::Private
