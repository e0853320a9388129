/// Eight threads at a queue that holds little: what was put is handled or counted as dropped, in order.
#include "tests/messaging/dispatching.h"
#include "tests/messaging/load.h"

#include "queues/fixed_depth_message_queue.h"

#include "zelm/msgs/message_pump.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <thread>
#include <vector>

namespace Zelm::Messaging {
namespace {

using namespace Testing;

TEST(FixedDepthUnderLoad, handlesOrCountsAsDroppedWhatWasPutAndKeepsTheOrder)
{
    auto const dispatcher = makeDispatcher();
    auto const queue = std::make_shared<FixedDepthMessageQueue>(Parts{"64"});
    long handled = 0;
    long outOfOrder = 0;
    std::array<unsigned long, producers> last{};
    Msgs::MessagePump pump;
    ASSERT_TRUE(pump.start(queue, dispatcher, {}));
    ASSERT_TRUE(pump.addEntriesToDispatchTable({{Msgs::MessageKey(everyMsg, {}, {}), [&](MessagePtr const& each) {
                                                     auto const number = each->id().value() & 0xFFFFFFFF;
                                                     auto& before = last[each->id().category()];
                                                     if (number <= before)
                                                         ++outOfOrder;
                                                     before = number;
                                                     ++handled;
                                                 }}}));

    std::vector<std::thread> threads;
    for (unsigned short producer = 0; producer < producers; ++producer)
        threads.emplace_back([&, producer] {
            auto const first = Identifier::toValue(producer, 0, 0, 0);
            for (unsigned long number = 1; number <= messagesOfOne * roundsOfDepth; ++number)
                EXPECT_TRUE(dispatcher->dispatchMessage(message(first + number)));
        });
    for (auto& thread : threads)
        thread.join();
    pump.stop();

    EXPECT_EQ(outOfOrder, 0);
    EXPECT_GT(handled, 0);
    EXPECT_EQ(handled + static_cast<long>(queue->droppedMessages()), messagesOfARound * roundsOfDepth);
}

}  // namespace
}  // namespace Zelm::Messaging
