// What the pump writes on standard error about a message that nobody handles.

#include "zelm/msgs/message_pump.h"

#include "tests/msgs/pump_fixture.h"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <locale>
#include <sstream>
#include <streambuf>

namespace Zelm::Msgs {
namespace {

using ::testing::internal::CaptureStderr;
using ::testing::internal::GetCapturedStderr;
using namespace Testing;

class MessagePumpLine : public PumpFixture {};

TEST_F(MessagePumpLine, tellsOfAMessageThatNobodyHandles)
{
    MessagePump pump(queue, dispatcher, {{MessageKey(5, {}, {}), ignore}});
    put(id1234, {"a"});
    put(5);
    put(id1234, {"a", "b"}, {"x", "y"});
    put(0, {}, {"x"});

    CaptureStderr();
    EXPECT_TRUE(pump.start());
    pump.stop();
    std::string const printed = GetCapturedStderr();

    EXPECT_EQ(printed,
              "Received message ID: { 1, 2, 3, 4 }, from: { a }, for: {  } which didn't have a handler\n"
              "Received message ID: { 1, 2, 3, 4 }, from: { a, b }, for: { x, y } which didn't have a handler\n"
              "Received message ID: { 0, 0, 0, 0 }, from: {  }, for: { x } which didn't have a handler\n");
}

TEST_F(MessagePumpLine, showsNumbersInStandardErrorsOwnFormat)
{
    MessagePump pump(queue, dispatcher);
    put(Identifier::toValue(10, 255, 0, 65535));

    CaptureStderr();
    std::cerr << std::hex << std::showbase;
    EXPECT_TRUE(pump.start());
    pump.stop();
    std::cerr << std::dec << std::noshowbase;
    std::string const printed = GetCapturedStderr();

    EXPECT_EQ(printed,
              "Received message ID: { 0xa, 0xff, 0, 0xffff }, from: {  }, for: {  } which didn't have a handler\n");
}

/// Writes 65520 as 65'520.
class GroupedNumbers : public std::numpunct<char> {
    char do_thousands_sep() const override { return '\''; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_F(MessagePumpLine, showsNumbersInStandardErrorsOwnLocale)
{
    MessagePump pump(queue, dispatcher);
    put(Identifier::toValue(1, 1000, 0, 65535));

    CaptureStderr();
    std::locale const before = std::cerr.imbue(std::locale(std::cerr.getloc(), new GroupedNumbers));
    EXPECT_TRUE(pump.start());
    pump.stop();
    std::cerr.imbue(before);
    std::string const printed = GetCapturedStderr();

    EXPECT_EQ(printed,
              "Received message ID: { 1, 1'000, 0, 65'535 }, from: {  }, for: {  } which didn't have a handler\n");
}

/// Calls a function at each write, and counts flushes.
class ListeningBuffer : public std::streambuf {
public:
    explicit ListeningBuffer(std::function<void()> listener) : listener_(std::move(listener)) {}

    std::string text;
    int flushes = 0;

protected:
    int sync() override
    {
        ++flushes;
        return 0;
    }
    int_type overflow(int_type c) override
    {
        listener_();
        text.push_back(traits_type::to_char_type(c));
        return c;
    }
    std::streamsize xsputn(char const* characters, std::streamsize count) override
    {
        listener_();
        text.append(characters, static_cast<std::size_t>(count));
        return count;
    }

private:
    std::function<void()> listener_;
};

// A call of the pump from within would never return if the lock were held.
TEST_F(MessagePumpLine, isWrittenWithoutThePumpsLock)
{
    MessagePump pump(queue, dispatcher);
    ListeningBuffer buffer([&] { pump.removeEntriesFromDispatchTable({}); });
    std::streambuf* const before = std::cerr.rdbuf(&buffer);
    put(id1234);

    bool const started = pump.start();
    pump.stop();
    std::cerr.rdbuf(before);

    ASSERT_TRUE(started);
    EXPECT_EQ(buffer.text, "Received message ID: { 1, 2, 3, 4 }, from: {  }, for: {  } which didn't have a handler\n");
}

TEST_F(MessagePumpLine, isFlushed)
{
    MessagePump pump(queue, dispatcher);
    ListeningBuffer buffer([] {});
    put(id1234);
    std::streambuf* const before = std::cerr.rdbuf(&buffer);
    std::cerr << std::nounitbuf;

    bool const started = pump.start();
    pump.stop();
    std::cerr << std::unitbuf;
    std::cerr.rdbuf(before);

    ASSERT_TRUE(started);
    EXPECT_EQ(buffer.flushes, 1);
}

TEST_F(MessagePumpLine, staysWholeWhereSeveralPumpsSpeak)
{
    constexpr int pumps = 3;
    constexpr int messages = 200;
    std::vector<std::unique_ptr<MessagePump>> running;

    CaptureStderr();
    for (int i = 0; i < pumps; ++i) {
        auto const ownQueue = std::make_shared<FifoQueue>();
        for (int j = 0; j < messages; ++j)
            ownQueue->putMessage(message(id1234, {"a"}, {"x"}));
        running.push_back(std::make_unique<MessagePump>(ownQueue, dispatcher));
        EXPECT_TRUE(running.back()->start());
    }
    running.clear();
    std::istringstream printed(GetCapturedStderr());

    int lines = 0;
    for (std::string line; std::getline(printed, line); ++lines)
        ASSERT_EQ(line, "Received message ID: { 1, 2, 3, 4 }, from: { a }, for: { x } which didn't have a handler");
    EXPECT_EQ(lines, pumps * messages);
}

}  // namespace
}  // namespace Zelm::Msgs
