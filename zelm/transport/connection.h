/// @file
/// One end of a link that carries whole messages of bytes. Transports are component types in libraries of their own:
/// this library fixes the interface and the names under which they go.
///
///     auto const connection = ...;                    // a component of the type ConnectionInterface::WebsocketType
///     connection->onReceive([](std::string const& payload) { ... });
///     connection->onClose([] { ... });
///     if (connection->open("ws://host:8080/messages"))
///         connection->send("hello");
///
/// Thread-safety: the transport's own affair, and so is the thread on which it calls the handlers. A handler has to
/// expect any thread, and callers set both handlers before they open the connection.
#pragma once

#include "zelm/core/export.h"

#include <functional>
#include <string>

namespace Zelm::Transport {

class ZELM_EXPORT ConnectionInterface {
public:
    static std::string const WebsocketType;      ///< "Connection_Websocket": over WebSocket
    static std::string const HostMemBridgeType;  ///< "Connection_HostMemBridge": over a bridge through host memory

    ConnectionInterface();
    virtual ~ConnectionInterface() = 0;

    /// Connects to the endpoint, whose form is the transport's own. False if it could not.
    virtual bool open(std::string const& endpoint) = 0;
    /// Ends the link. Safe to call twice, and on a connection that was never opened.
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
    /// Sends one whole message. Throws Exception::TransportDisconnected if the peer is lost.
    virtual void send(std::string const& payload) = 0;
    /// Sets what is called with each whole message that arrives, in place of the handler before.
    virtual void onReceive(std::function<void(std::string const& payload)> handler) = 0;
    /// Sets what is called when the link has ended, in place of the handler before.
    virtual void onClose(std::function<void()> handler) = 0;
};

}  // namespace Zelm::Transport
