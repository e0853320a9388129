#include "zelm/core/exceptions.h"
#include "zelm/metadata/writer_json.h"
#include "zelm/msgs/message.h"

#include <sstream>

namespace Zelm::Msgs {

namespace {

std::string jsonOf(MetaData::Element const& element)
{
    std::ostringstream text;
    MetaData::WriterJson::Write(element, text, true);
    return text.str();
}

}  // namespace

Message::MsgFactory::MsgFactory() = default;
Message::MsgFactory::~MsgFactory() = default;

Message::MsgFactory& Message::MsgFactory::Instance()
{
    static MsgFactory factory;
    return factory;
}

bool Message::MsgFactory::registerMessage(unsigned long id, Ctor ctor, std::string const& typeName)
{
    auto const [entry, isNew] = registeredMessages_.try_emplace(id, CtorAndType{ctor, typeName});
    if (!isNew && entry->second.ctor != ctor)
        entry->second.ctor = CtorConflict;
    return isNew;
}

void Message::MsgFactory::deregisterMessage(unsigned long id)
{
    registeredMessages_.erase(id);
}

std::shared_ptr<Message> Message::MsgFactory::create(MetaData::Element const& source) const
{
    MetaData::Element const& fields = source["MessageID"];
    Identifier id(0);
    id.copyFromMetaData(fields);

    auto const entry = registeredMessages_.find(id.value());
    if (entry == registeredMessages_.end())
        throw Exception::InvalidParameter("Can't construct class for message ID: " + jsonOf(fields));
    Ctor const ctor = entry->second.ctor;
    if (ctor == CtorConflict)
        throw Exception::InvalidOperation("Conflicting constructors registered for message ID: " + jsonOf(fields));
    return std::shared_ptr<Message>(ctor(source));
}

std::shared_ptr<Message> Message::CreateFromMetaData(MetaData::Element const& source)
{
    return MsgFactory::Instance().create(source);
}

Message::MsgFactory::Registry const& Message::getAllMessagesRegistry()
{
    return MsgFactory::Instance().registry();
}

}  // namespace Zelm::Msgs
