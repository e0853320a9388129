/// @file
/// The centre of the message layer: queues subscribe at a dispatcher, messages are handed to it, and it puts each one
/// into the queues that want it. A forwarder carries messages between two dispatchers. Both are component types in
/// libraries of their own; this library declares the interfaces and the names under which the types go.
///
///     dispatcher->subscribe(queue, {"plant", "line 3"});            // all that is sent from there or below
///     dispatcher->subscribe(queue, Reading::MsgID());               // all readings, whoever sends them
///     dispatcher->registerService(queue, {"archive"});              // all that is addressed to there or below
///     dispatcher->dispatchMessage(std::make_shared<Reading>(21.5));
///     dispatcher->disconnectQueue(queue);
///
/// A subscription takes a message in by its sender's address, a service by its destination's. In both the identifier
/// is a pattern in the sense of Identifier::covers and the address a root in the sense of inTree. A MessagePump does
/// the subscribing for the keys of its dispatch table.
///
/// For implementers: declare the class final, or give it a virtual destructor of its own, since the dispatcher's
/// interface has none; a dispatcher is owned through a std::shared_ptr made for its concrete class.
/// `using MessageDispatcherInterface::subscribe;` and the like keep the short forms visible beside your own functions.
///
/// Thread-safety: an implementation has to bear concurrent calls from any thread. A pump calls it with its own lock
/// held, so a dispatcher must not wait inside such a call for an operation of that pump.
#pragma once

#include "zelm/core/export.h"
#include "zelm/msgs/identifier.h"

#include <memory>
#include <string>
#include <vector>

namespace Zelm::Msgs {

class ForwarderInterface;
class Message;
class MessageQueueInterface;

class ZELM_EXPORT MessageDispatcherInterface {
public:
    // Constant from the moment this library is loaded, so before the static initialisers of every library and program
    // that is linked with it.
    static Identifier const everyMsg;              ///< the pattern that takes in every message: 65535 four times
    static std::string const DispatcherType;       ///< "MessageDispatcher"
    static std::string const QueueType;            ///< "MessageQueue"
    static std::string const FixedDepthQueueType;  ///< "FixedDepthMessageQueue"
    static std::string const CallbackQueueType;    ///< "CallbackMessageQueue"

    MessageDispatcherInterface();
    MessageDispatcherInterface(MessageDispatcherInterface const&) = delete;
    MessageDispatcherInterface& operator=(MessageDispatcherInterface const&) = delete;

    /// Brings the queue all messages from `address` or below whose identifier `id` covers. False if it was refused.
    virtual bool subscribe(std::shared_ptr<MessageQueueInterface> queue, std::vector<std::string> const& address,
                           Identifier const& id) = 0;
    /// Ends the subscription that was made with the same three arguments. False if there is none.
    virtual bool unsubscribe(std::shared_ptr<MessageQueueInterface> queue, std::vector<std::string> const& address,
                             Identifier const& id) = 0;
    /// Ends all subscriptions of the queue.
    virtual bool unsubscribeAll(std::shared_ptr<MessageQueueInterface> queue) = 0;

    /// Brings the queue all messages for `address` or below whose identifier `id` covers. False if it was refused.
    /// `extra` is reserved: pass 0.
    virtual bool registerService(std::shared_ptr<MessageQueueInterface> queue, std::vector<std::string> const& address,
                                 Identifier const& id, long extra) = 0;
    /// Ends the service that was registered with the same queue, address and identifier. False if there is none.
    virtual bool unregisterService(std::shared_ptr<MessageQueueInterface> queue,
                                   std::vector<std::string> const& address, Identifier const& id) = 0;
    /// Ends all services of the queue.
    virtual bool unregisterAllServices(std::shared_ptr<MessageQueueInterface> queue) = 0;

    /// Ends all subscriptions and then all services of the queue: no further message goes to it. The services are ended
    /// also if unsubscribeAll was false. True if both were true.
    virtual bool disconnectQueue(std::shared_ptr<MessageQueueInterface> queue);

    /// The way in: hands the message to every queue and forwarder whose subscription or service takes it in, to each
    /// once. False if there was none, or if the message is empty.
    virtual bool dispatchMessage(std::shared_ptr<Message const> message) = 0;

    /// Offers every dispatched message to the forwarder from now on. False if it is empty or already there.
    virtual bool addForwarder(std::shared_ptr<ForwarderInterface> forwarder) = 0;
    /// No further message reaches the forwarder. False if it was not there.
    virtual bool removeForwarder(std::shared_ptr<ForwarderInterface> forwarder) = 0;

    // The short forms: each calls the virtual function of its name and hands its result through. A missing identifier
    // is everyMsg, a missing address the empty one. A service has no form without an address.
    bool subscribe(std::shared_ptr<MessageQueueInterface> queue, std::vector<std::string> const& address);
    bool subscribe(std::shared_ptr<MessageQueueInterface> queue, Identifier const& id);
    bool unsubscribe(std::shared_ptr<MessageQueueInterface> queue, std::vector<std::string> const& address);
    bool unsubscribe(std::shared_ptr<MessageQueueInterface> queue, Identifier const& id);
    bool registerService(std::shared_ptr<MessageQueueInterface> queue, std::vector<std::string> const& address);
    bool unregisterService(std::shared_ptr<MessageQueueInterface> queue, std::vector<std::string> const& address);

    std::string const dispatcherUuid;  ///< the text of a Uuid of its own: this dispatcher's identity

protected:
    ~MessageDispatcherInterface();  // not virtual: nobody deletes a dispatcher through its interface
};

/// Carries messages between a local dispatcher and a far side: another process, another machine.
class ZELM_EXPORT ForwarderInterface {
public:
    static std::string const ForwarderType_Standard;  ///< "ForwarderType_Standard"

    ForwarderInterface();
    virtual ~ForwarderInterface();

    /// Names where messages from the far side are dispatched. False if one is attached already, or if it has expired.
    virtual bool attach(std::weak_ptr<MessageDispatcherInterface> local) = 0;
    /// Carries one message to the far side. False if it was not taken.
    virtual bool forwardMessage(std::shared_ptr<Message const> message) = 0;
    /// When it returns, nothing more is dispatched to the local dispatcher or taken from it.
    virtual void detach() = 0;

protected:
    ForwarderInterface(ForwarderInterface const&) = default;
    ForwarderInterface& operator=(ForwarderInterface const&) = default;
};

}  // namespace Zelm::Msgs
