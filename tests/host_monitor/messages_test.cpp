// The messages of the example: their forms, and that the factory makes the same messages of them.
#include "host_monitor/alarm_message.h"
#include "host_monitor/host_readings.h"
#include "host_monitor/notices.h"

#include "zelm/metadata/element.h"
#include "zelm/metadata/reader_json.h"
#include "zelm/metadata/writer_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <sstream>
#include <typeinfo>

namespace HostMonitor {

using Zelm::MetaData::Element;
using Zelm::Msgs::Identifier;
using Zelm::Msgs::Message;

namespace {

std::string formOf(Message const& message)
{
    Element element;
    message.copyToMetaData(element);
    std::ostringstream text;
    Zelm::MetaData::WriterJson::Write(element, text, false);
    return text.str();
}

template <class M> std::shared_ptr<M> withAddresses()
{
    auto message = std::make_shared<M>();
    message->senderID = {"board", "kind", "id"};
    message->destID = {"board", "alarm"};
    return message;
}

/// One of each class, with something in every field.
std::vector<std::shared_ptr<Message>> oneOfEach()
{
    auto const cpu = withAddresses<CpuReading>();
    cpu->sequence = 7;
    cpu->time = 1'700'000'000'123;
    cpu->loadPercent = 12.5;
    CoreLoad core;
    core.core = 3;
    core.loadPercent = 25;
    cpu->cores = {core, CoreLoad()};

    auto const memory = withAddresses<MemoryReading>();
    memory->totalBytes = 1L << 40;
    memory->usedPercent = 0.1;
    memory->error = "half of it";

    auto const disk = withAddresses<DiskReading>();
    FileSystemUsage usage;
    usage.mountPoint = "/";
    usage.freeBytes = 4096;
    disk->fileSystems = {usage};

    auto const network = withAddresses<NetworkReading>();
    network->intervalMicroseconds = 5;
    InterfaceTraffic traffic;
    traffic.interfaceName = "lo";
    traffic.sentBytesPerSecond = 9;
    network->interfaces = {traffic};

    auto const alarm = withAddresses<AlarmMessage>();
    alarm->raised = true;
    alarm->sensor = "cpu";
    alarm->field = "loadPercent";
    alarm->value = 97.25;
    alarm->above = 90;
    alarm->readingSequence = 7;
    alarm->time = 1'700'000'000'123;

    auto const finished = withAddresses<FinishedMessage>();
    finished->published = 100;
    auto const failure = withAddresses<FailureMessage>();
    failure->error = "can't go on";
    return {cpu, memory, disk, network, alarm, finished, failure};
}

}  // namespace

TEST(Messages, areRebuiltFromTheirJsonTextAsWhatTheyWere)
{
    for (auto const& message : oneOfEach()) {
        auto const text = formOf(*message);
        SCOPED_TRACE(text);

        auto const rebuilt = Message::CreateFromMetaData(Zelm::Json::jsonStringtoMetaData(text));

        auto const& original = *message;
        auto const& again = *rebuilt;
        EXPECT_EQ(typeid(again), typeid(original));
        EXPECT_EQ(formOf(again), text);
    }
}

TEST(Messages, fillTheFieldsOfTheirClassWhenTheyAreRebuilt)
{
    auto const text = formOf(*oneOfEach().front());
    auto const rebuilt =
        std::dynamic_pointer_cast<CpuReading>(Message::CreateFromMetaData(Zelm::Json::jsonStringtoMetaData(text)));

    ASSERT_TRUE(rebuilt);
    EXPECT_EQ(rebuilt->sequence(), 7);
    EXPECT_EQ(rebuilt->loadPercent(), 12.5);
    ASSERT_EQ(rebuilt->cores().size(), 2U);
    EXPECT_EQ(rebuilt->cores()[0].loadPercent(), 25);
    EXPECT_FALSE(rebuilt->cores()[1].loadPercent.initialized());
}

TEST(Messages, haveIdentifiersOfCategoryOneThatAllDiffer)
{
    std::set<unsigned long> kinds;
    for (auto const& message : oneOfEach()) {
        EXPECT_EQ(message->id().category(), 1);
        EXPECT_TRUE(kinds.insert(message->id().value()).second) << formOf(*message);
    }
}

TEST(Messages, areTakenInByThePatternOfTheirGroupAlone)
{
    for (auto const& message : oneOfEach()) {
        SCOPED_TRACE(formOf(*message));
        bool const isReading = std::dynamic_pointer_cast<Reading>(message) != nullptr;
        bool const isAlarm = std::dynamic_pointer_cast<AlarmMessage>(message) != nullptr;

        EXPECT_EQ(Identifier(Kinds::everyReading).covers(message->id()), isReading);
        EXPECT_EQ(Identifier(Kinds::everyAlarm).covers(message->id()), isAlarm);
    }
}

TEST(Messages, leaveNoTraceOfFieldsThatArentSet)
{
    auto const text = formOf(MemoryReading());

    EXPECT_THAT(text, ::testing::StartsWith("{\"MessageID\":[1,1,2,1],\"MsgUUID\":\""));
    EXPECT_THAT(text, ::testing::EndsWith("\",\"sequence\":0,\"time\":0}"));
}

}  // namespace HostMonitor
