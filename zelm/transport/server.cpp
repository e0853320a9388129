#include "zelm/transport/server.h"

namespace Zelm::Transport {

std::string const ServerInterface::WebsocketType = "Server_Websocket";
std::string const ServerInterface::HostMemBridgeType = "Server_HostMemBridge";

ServerInterface::ServerInterface() = default;
ServerInterface::~ServerInterface() = default;

}  // namespace Zelm::Transport
