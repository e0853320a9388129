/// @file
/// Makes a message class known to the factory that rebuilds messages from their form:
///
///     bool const isRegistered = registerMessage<CpuReading>("CpuReading");
///     ...
///     auto const reading = Message::CreateFromMetaData(form);  // a CpuReading
///
/// Do it at namespace scope, in one source file of one library, the one that all users of the class are linked with. A
/// header that did it would do it in each of them, every time with another function, and the factory takes that for a
/// conflict.
///
/// Thread-safety: registration belongs to the loading of a library, before messages are created from forms.
#pragma once

#include "zelm/metadata/element.h"
#include "zelm/msgs/message.h"

#include <memory>
#include <string>

namespace HostMonitor {

template <class M> Zelm::Msgs::Message* createFromForm(Zelm::MetaData::Element const& form)
{
    auto message = std::make_unique<M>();
    message->copyFromMetaData(form);
    return message.release();
}

/// False if somebody else has registered a message of that identifier.
template <class M> bool registerMessage(std::string const& typeName)
{
    return Zelm::Msgs::Message::MsgFactory::Instance().registerMessage(M().id().value(), createFromForm<M>, typeName);
}

}  // namespace HostMonitor
