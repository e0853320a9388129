#include "zelm/components/component.h"

namespace Zelm {

ComponentInterface::~ComponentInterface() = default;

Component_Base::~Component_Base() = default;

std::string const& Component_Base::instanceId() const
{
    return instanceId_;
}

void Component_Base::setInstanceId(std::string const& instanceId)
{
    instanceId_ = instanceId;
}

}  // namespace Zelm
