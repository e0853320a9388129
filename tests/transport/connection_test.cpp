#include "zelm/transport/connection.h"

#include "tests/support/vtable_slot.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zelm::Transport {
namespace {

static_assert(std::is_abstract_v<ConnectionInterface>);
static_assert(std::has_virtual_destructor_v<ConnectionInterface>);
static_assert(sizeof(ConnectionInterface) == sizeof(void*), "no data");

using Zelm::Testing::slotOf;

// Taken while this program's own static objects are being made.
std::string const connectionWebsocketAtLoad = ConnectionInterface::WebsocketType;
std::string const connectionHostMemBridgeAtLoad = ConnectionInterface::HostMemBridgeType;

TEST(Connection, hasItsTypeNamesFromTheMomentTheLibraryIsLoaded)
{
    EXPECT_EQ(connectionWebsocketAtLoad, "Connection_Websocket");
    EXPECT_EQ(connectionHostMemBridgeAtLoad, "Connection_HostMemBridge");
}

struct BehindConnection : ConnectionInterface {
    virtual void next() = 0;
};

TEST(Connection, keepsItsVirtualFunctionsInTheirPlacesBehindTheDestructor)
{
    EXPECT_EQ(slotOf(&ConnectionInterface::open), 2);
    EXPECT_EQ(slotOf(&ConnectionInterface::close), 3);
    EXPECT_EQ(slotOf(&ConnectionInterface::isOpen), 4);
    EXPECT_EQ(slotOf(&ConnectionInterface::send), 5);
    EXPECT_EQ(slotOf(&ConnectionInterface::onReceive), 6);
    EXPECT_EQ(slotOf(&ConnectionInterface::onClose), 7);
    EXPECT_EQ(slotOf(&BehindConnection::next), 8);
}

// One operation each, to be stacked: whatever is left out keeps the class abstract.
template <class Base> struct Opens : Base {
    bool open(std::string const&) override { return true; }
};
template <class Base> struct Closes : Base {
    void close() override {}
};
template <class Base> struct TellsIfOpen : Base {
    bool isOpen() const override { return true; }
};
template <class Base> struct Sends : Base {
    void send(std::string const&) override {}
};
template <class Base> struct Receives : Base {
    void onReceive(std::function<void(std::string const&)>) override {}
};
template <class Base> struct TellsOfTheEnd : Base {
    void onClose(std::function<void()>) override {}
};
using Interface = ConnectionInterface;
static_assert(!std::is_abstract_v<Opens<Closes<TellsIfOpen<Sends<Receives<TellsOfTheEnd<Interface>>>>>>>);
static_assert(std::is_abstract_v<Closes<TellsIfOpen<Sends<Receives<TellsOfTheEnd<Interface>>>>>>);
static_assert(std::is_abstract_v<Opens<TellsIfOpen<Sends<Receives<TellsOfTheEnd<Interface>>>>>>);
static_assert(std::is_abstract_v<Opens<Closes<Sends<Receives<TellsOfTheEnd<Interface>>>>>>);
static_assert(std::is_abstract_v<Opens<Closes<TellsIfOpen<Receives<TellsOfTheEnd<Interface>>>>>>);
static_assert(std::is_abstract_v<Opens<Closes<TellsIfOpen<Sends<TellsOfTheEnd<Interface>>>>>>);
static_assert(std::is_abstract_v<Opens<Closes<TellsIfOpen<Sends<Receives<Interface>>>>>>);

/// Writes down how each operation is reached.
class RecordingConnection : public ConnectionInterface {
public:
    explicit RecordingConnection(std::vector<std::string>& log) : log_(log) {}
    ~RecordingConnection() override { log_.push_back("destroyed"); }

    bool open(std::string const& endpoint) override
    {
        log_.push_back("open " + endpoint);
        return true;
    }
    void close() override { log_.push_back("close"); }
    bool isOpen() const override
    {
        log_.push_back("isOpen");
        return false;
    }
    void send(std::string const& payload) override { log_.push_back("send " + payload); }
    void onReceive(std::function<void(std::string const& payload)> handler) override { handler("received"); }
    void onClose(std::function<void()> handler) override { handler(); }

private:
    std::vector<std::string>& log_;
};

TEST(Connection, reachesTheTransportThroughItsInterface)
{
    std::vector<std::string> log;
    std::unique_ptr<ConnectionInterface> connection = std::make_unique<RecordingConnection>(log);

    EXPECT_TRUE(connection->open("there"));
    EXPECT_FALSE(std::as_const(*connection).isOpen());
    connection->send("payload");
    connection->onReceive([&](std::string const& payload) { log.push_back("handler of " + payload); });
    connection->onClose([&] { log.push_back("handler of the end"); });
    connection->close();
    connection.reset();

    EXPECT_EQ(log, (std::vector<std::string>{"open there", "isOpen", "send payload", "handler of received",
                                             "handler of the end", "close", "destroyed"}));
}

}  // namespace
}  // namespace Zelm::Transport
