#include "far_side.h"

#include "zelm/metadata/element.h"
#include "zelm/metadata/reader_json.h"
#include "zelm/msgs/message.h"

#include <utility>

namespace Soak {

using Zelm::Msgs::Message;
using Zelm::Msgs::MessageDispatcherInterface;

Wire::Wire(std::shared_ptr<MessageDispatcherInterface> farSide, Picks picks)
    : farSide_(std::move(farSide)), picks_(std::move(picks))
{
}

Wire::~Wire() = default;

bool Wire::forwardMessage(std::shared_ptr<Message const> message)
{
    if (!picks_(*message))
        return false;
    Zelm::MetaData::Element form;
    message->copyToMetaData(form);
    auto const text = Zelm::Json::metaDatatoJsonString(form.CastTo<Zelm::MetaData::Object>());
    farSide_->dispatchMessage(Message::CreateFromMetaData(Zelm::Json::jsonStringtoMetaData(text)));
    return true;
}

}  // namespace Soak
