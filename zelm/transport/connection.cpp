#include "zelm/transport/connection.h"

namespace Zelm::Transport {

std::string const ConnectionInterface::WebsocketType = "Connection_Websocket";
std::string const ConnectionInterface::HostMemBridgeType = "Connection_HostMemBridge";

ConnectionInterface::ConnectionInterface() = default;
ConnectionInterface::~ConnectionInterface() = default;

}  // namespace Zelm::Transport
