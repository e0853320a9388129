/// @file
/// A value and the mutex that guards it in one object. The only way to the value is a handle, an Access, which holds
/// the lock from its construction to the end of its scope, on every path out of it:
///
///     ScopedAccessor<DispatchTable, std::mutex> table;
///     ...
///     ScopedAccessor<DispatchTable, std::mutex>::Access access(table);   // locks, and may wait for that
///     access->emplace(key, handler);
///
/// The idiom for a class that guards its state this way:
///  - a public operation opens with an Access;
///  - a private one takes `Access&` as its first parameter, which proves that the caller holds the lock: without one it
///    can't be called. It passes the handle on and takes no second lock;
///  - work that must run outside the lock runs on a copy, taken while the handle lived.
///
/// Thread-safety: any thread may construct an Access at any time. The mutex type settles what its holder may do: with
/// std::mutex a second Access in the same thread deadlocks, with std::recursive_mutex it doesn't.
#pragma once

namespace Zelm {

/// Mutex is anything with lock() and unlock(). What lock() throws comes out of the Access's constructor; nothing is
/// unlocked then. Neither copied nor moved, whatever the mutex type allows.
template <class T, class Mutex> class ScopedAccessor {
public:
    /// The handle: holds the lock for its whole life. A local object that is neither copied nor moved, and that the
    /// accessor has to outlive.
    class Access {
    public:
        explicit Access(ScopedAccessor& accessor) : mutex_(&accessor.mutex_), value_(&accessor.value_)
        {
            mutex_->lock();
        }
        ~Access() { mutex_->unlock(); }
        Access(Access const&) = delete;
        Access& operator=(Access const&) = delete;

        T& operator*() const noexcept { return *value_; }
        T* operator->() const noexcept { return value_; }

    private:
        Mutex* mutex_;
        T* value_;
    };

    /// The value starts value-initialised: numbers are 0, flags false, containers empty.
    ScopedAccessor() : value_() {}
    // Where the mutex type can be copied, a copy would reach the value without the lock.
    ScopedAccessor(ScopedAccessor const&) = delete;
    ScopedAccessor& operator=(ScopedAccessor const&) = delete;

private:
    Mutex mutex_;
    T value_;
};

}  // namespace Zelm
