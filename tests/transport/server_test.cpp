#include "zelm/transport/server.h"

#include "tests/support/vtable_slot.h"
#include "zelm/transport/connection.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

namespace Zelm::Transport {
namespace {

static_assert(std::is_abstract_v<ServerInterface>);
static_assert(std::has_virtual_destructor_v<ServerInterface>);
static_assert(sizeof(ServerInterface) == sizeof(void*), "no data");

using Zelm::Testing::slotOf;

// Taken while this program's own static objects are being made.
std::string const serverWebsocketAtLoad = ServerInterface::WebsocketType;
std::string const serverHostMemBridgeAtLoad = ServerInterface::HostMemBridgeType;

TEST(Server, hasItsTypeNamesFromTheMomentTheLibraryIsLoaded)
{
    EXPECT_EQ(serverWebsocketAtLoad, "Server_Websocket");
    EXPECT_EQ(serverHostMemBridgeAtLoad, "Server_HostMemBridge");
}

TEST(Server, hasTypeNamesOfItsOwnThatDifferFromThoseOfConnections)
{
    EXPECT_NE(ServerInterface::WebsocketType, ConnectionInterface::WebsocketType);
    EXPECT_NE(ServerInterface::HostMemBridgeType, ConnectionInterface::HostMemBridgeType);
}

struct BehindServer : ServerInterface {
    virtual void next() = 0;
};

TEST(Server, keepsItsVirtualFunctionsInTheirPlacesBehindTheDestructor)
{
    EXPECT_EQ(slotOf(&ServerInterface::listen), 2);
    EXPECT_EQ(slotOf(&ServerInterface::stop), 3);
    EXPECT_EQ(slotOf(&ServerInterface::onConnection), 4);
    EXPECT_EQ(slotOf(&BehindServer::next), 5);
}

// One operation each, to be stacked: whatever is left out keeps the class abstract.
template <class Base> struct Listens : Base {
    bool listen(std::string const&) override { return true; }
};
template <class Base> struct Stops : Base {
    void stop() override {}
};
template <class Base> struct HandsOutConnections : Base {
    void onConnection(std::function<void(std::shared_ptr<ConnectionInterface>)>) override {}
};
static_assert(!std::is_abstract_v<Listens<Stops<HandsOutConnections<ServerInterface>>>>);
static_assert(std::is_abstract_v<Stops<HandsOutConnections<ServerInterface>>>);
static_assert(std::is_abstract_v<Listens<HandsOutConnections<ServerInterface>>>);
static_assert(std::is_abstract_v<Listens<Stops<ServerInterface>>>);

/// Writes down how each operation is reached.
class RecordingServer : public ServerInterface {
public:
    explicit RecordingServer(std::vector<std::string>& log) : log_(log) {}
    ~RecordingServer() override { log_.push_back("destroyed"); }

    bool listen(std::string const& endpoint) override
    {
        log_.push_back("listen " + endpoint);
        return true;
    }
    void stop() override { log_.push_back("stop"); }
    void onConnection(std::function<void(std::shared_ptr<ConnectionInterface>)> handler) override { handler({}); }

private:
    std::vector<std::string>& log_;
};

TEST(Server, reachesTheTransportThroughItsInterface)
{
    std::vector<std::string> log;
    std::unique_ptr<ServerInterface> server = std::make_unique<RecordingServer>(log);

    EXPECT_TRUE(server->listen("here"));
    server->onConnection([&](std::shared_ptr<ConnectionInterface> const& peer) {
        log.push_back(peer ? "handler of a peer" : "handler of none");
    });
    server->stop();
    server.reset();

    EXPECT_EQ(log, (std::vector<std::string>{"listen here", "handler of none", "stop", "destroyed"}));
}

}  // namespace
}  // namespace Zelm::Transport
