#include "plant_messages.h"

#include "zelm/metadata/element.h"

using namespace Zelm;

namespace MessagePatterns {

// quote begins: registration
namespace {

template <class T> Message* fromForm(MetaData::Element const& form)
{
    return new T(form.CastTo<MetaData::Object>());
}

}  // namespace

void registerPlantMessages()
{
    auto& factory = Message::MsgFactory::Instance();
    factory.registerMessage(Temperature::MsgID(), fromForm<Temperature>, "Temperature");
    factory.registerMessage(HeatOrder::MsgID(), fromForm<HeatOrder>, "HeatOrder");
}
// quote ends: registration

}  // namespace MessagePatterns
