// The list of receivers that are on their way out.
#include "dispatcher/retired_receivers.h"

#include "tests/messaging/dispatching.h"

#include <gtest/gtest.h>

namespace Zelm::Messaging {
namespace {

std::shared_ptr<Receiver> retiringReceiver()
{
    return std::make_shared<QueueReceiver>(Testing::makeQueue());
}

void retire(RetiredReceivers& retired, void const* whom, std::shared_ptr<Receiver> const& receiver)
{
    retired.makeRoom();
    retired.add(whom, receiver);
}

TEST(RetiredReceivers, areFoundOneAfterTheOtherByTheNameOfTheirQueue)
{
    int const queue = 0;
    int const otherQueue = 0;
    auto const first = retiringReceiver();
    auto const others = retiringReceiver();
    auto const second = retiringReceiver();
    RetiredReceivers retired;
    retire(retired, &queue, first);
    retire(retired, &otherQueue, others);
    retire(retired, &queue, second);

    unsigned long last = 0;
    EXPECT_EQ(retired.next(&queue, last), first);
    EXPECT_EQ(retired.next(&queue, last), second);
    EXPECT_EQ(retired.next(&queue, last), nullptr);
}

// A delivery may end between the disconnecting, which forgets those that are gone, and the search.
TEST(RetiredReceivers, areSkippedIfTheirDeliveryIsOverByNow)
{
    int const queue = 0;
    auto gone = retiringReceiver();
    auto const there = retiringReceiver();
    RetiredReceivers retired;
    retire(retired, &queue, gone);
    retire(retired, &queue, there);
    gone.reset();

    unsigned long last = 0;
    EXPECT_EQ(retired.next(&queue, last), there);
    EXPECT_EQ(retired.next(&queue, last), nullptr);
}

}  // namespace
}  // namespace Zelm::Messaging
