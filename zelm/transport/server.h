/// @file
/// The listening end of a transport: hands out one connection for each peer that comes. As with connections, the
/// implementations are component types in libraries of their own.
///
///     auto const server = ...;                        // a component of the type ServerInterface::WebsocketType
///     server->onConnection([](std::shared_ptr<Transport::ConnectionInterface> peer) { ... });
///     if (!server->listen("0.0.0.0:8080"))
///         ...
///
/// Thread-safety: the transport's own affair, and so is the thread on which it calls the handler. The handler has to
/// expect any thread, and callers set it before they listen.
#pragma once

#include "zelm/core/export.h"

#include <functional>
#include <memory>
#include <string>

namespace Zelm::Transport {

class ConnectionInterface;

class ZELM_EXPORT ServerInterface {
public:
    static std::string const WebsocketType;      ///< "Server_Websocket": WebSocket connections
    static std::string const HostMemBridgeType;  ///< "Server_HostMemBridge": connections over a bridge

    ServerInterface();
    virtual ~ServerInterface() = 0;

    /// Begins to accept connections at the endpoint, whose form is the transport's own. False if it could not bind.
    virtual bool listen(std::string const& endpoint) = 0;
    /// Accepts no more and closes the accepted connections. Safe to call twice.
    virtual void stop() = 0;
    /// Sets what is called with each accepted connection, in place of the handler before.
    virtual void onConnection(std::function<void(std::shared_ptr<ConnectionInterface>)> handler) = 0;
};

}  // namespace Zelm::Transport
