// A forwarder: two dispatchers that share their messages, as text over a wire.
#include "components.h"
#include "ideas.h"
#include "plant_messages.h"
#include "printing.h"

#include "zelm/metadata/element.h"
#include "zelm/metadata/reader_json.h"
#include "zelm/metadata/reflector.h"

#include <iostream>

using namespace Zelm;
using namespace Zelm::Msgs;

namespace MessagePatterns {

namespace {

// quote begins: forwarder class
/// The mark of a message that came over the wire.
struct CameBy : MetaData::MirroredObject {
    MetaData::Reflector<std::string, false, true> wire{this, "Wire", "wire 1"};
};

/// One end of a wire. Attached before it is added to a dispatcher and detached after it was removed, so that it needs
/// no lock: once removeForwarder has returned nobody is within forwardMessage any more.
class WireEnd final : public ForwarderInterface {
public:
    void connect(WireEnd& other) { other_ = &other; }

    bool attach(std::weak_ptr<MessageDispatcherInterface> local) override
    {
        if (!local_.expired() || local.expired())
            return false;
        local_ = std::move(local);
        return true;
    }
    bool forwardMessage(MessagePointer message) override
    {
        if (message->hasExtendedField("CameBy"))
            return false;  // what came over the wire doesn't go back
        MetaData::Element form;
        message->copyToMetaData(form);
        other_->receive(Json::metaDatatoJsonString(form.CastTo<MetaData::Object>()));
        return true;
    }
    void detach() override { local_.reset(); }

private:
    void receive(std::string const& text)
    {
        auto const message = Message::CreateFromMetaData(Json::jsonStringtoMetaData(text));
        message->setExtendedField("CameBy", CameBy());
        if (auto const dispatcher = local_.lock())
            dispatcher->dispatchMessage(message);
    }

    WireEnd* other_ = nullptr;
    std::weak_ptr<MessageDispatcherInterface> local_;
};
// quote ends: forwarder class

}  // namespace

void showForwarder()
{
    // quote begins: forwarder
    Dispatcher const plant = dispatcherCalled("plant");
    Dispatcher const office = dispatcherCalled("office");
    auto const plantEnd = std::make_shared<WireEnd>();
    auto const officeEnd = std::make_shared<WireEnd>();
    plantEnd->connect(*officeEnd);
    officeEnd->connect(*plantEnd);
    plantEnd->attach(plant);
    officeEnd->attach(office);
    plant->addForwarder(plantEnd);
    office->addForwarder(officeEnd);

    Queue const desk = makeQueue(MessageDispatcherInterface::QueueType);
    office->subscribe(desk, {"plant"});
    plant->dispatchMessage(std::make_shared<Temperature>(Address{"plant", "line 1", "oven"}, 180.5));
    printAll("desk", desk);
    // quote ends: forwarder

    // quote begins: end of forwarder
    plant->removeForwarder(plantEnd);
    office->removeForwarder(officeEnd);
    plantEnd->detach();
    officeEnd->detach();
    // quote ends: end of forwarder
    office->disconnectQueue(desk);
}

}  // namespace MessagePatterns
