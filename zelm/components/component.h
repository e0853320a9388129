/// @file
/// What a component is: an object with an instance id, under which the components repository keeps it, and, if it
/// likes, a life cycle.
///
///     class Engine : public Zelm::Component_Base, public Zelm::LifeCycle::PassiveInterface {
///     public:
///         void startLifeCycle() override { pump.start(); }
///         void endLifeCycle() override { pump.stop(); }
///         ...
///     };
///
/// The repository looks for PassiveInterface by a cast on the object's dynamic type, so a component that needs no start
/// and no end leaves it out. Which factory makes a component is the matter of component_factory.h.
///
/// Thread-safety: instanceId and setInstanceId have no lock. The repository alone writes the id: with its own lock
/// held, or once the object has left its table.
#pragma once

#include "zelm/core/export.h"

#include <string>

namespace Zelm {

/// An object that the repository can keep. Slot order: instanceId, setInstanceId, destructor.
class ZELM_EXPORT ComponentInterface {
public:
    /// The id under which this object stands in the repository; empty while it stands nowhere. The reference is valid
    /// until the id is set again.
    virtual std::string const& instanceId() const = 0;
    /// For the repository only.
    virtual void setInstanceId(std::string const& instanceId) = 0;
    virtual ~ComponentInterface();
};

/// Keeps the id in a string. The base of almost every component and factory.
class ZELM_EXPORT Component_Base : public virtual ComponentInterface {
public:
    std::string const& instanceId() const override;
    void setInstanceId(std::string const& instanceId) override;
    ~Component_Base() override;

private:
    std::string instanceId_;
};

namespace LifeCycle {

/// Is started and ended by others: "passive", as it doesn't choose the moments itself. The repository calls
/// startLifeCycle while it adds an object, with its lock held and before the object can be found, and endLifeCycle
/// behind its removal, without the lock. An exception from either passes through to whoever asked for it.
///
/// A factory that its library hands out again and again is started and ended as often, and must work after each start
/// as after the first. No other object has to, unless it is added again after its removal.
class ZELM_EXPORT PassiveInterface {
public:
    virtual void startLifeCycle() = 0;
    virtual void endLifeCycle() = 0;

protected:
    ~PassiveInterface() = default;  // nothing is deleted through this class
};

}  // namespace LifeCycle

}  // namespace Zelm
