#include "zelm/metadata/private/assembler.h"

#include "zelm/metadata/private/element_held.h"

#include <utility>

namespace Zelm::MetaData::Private {

Element Assembler::array(Element* parts, std::size_t count)
{
    Element result;
    result.held_ = Element::Held::make<Array>();
    Element::Held::value<Array>(result.held_).elements_.take(parts, count);
    return result;
}

Element Assembler::object(std::string* names, Element* parts, std::uint32_t const* order, std::size_t count)
{
    Element result;
    result.held_ = Element::Held::make<Object>();
    auto& members = Element::Held::value<Object>(result.held_).members_;
    for (std::size_t i = 0; i != count; ++i)
        members.emplace_hint(members.end(), std::move(names[order[i]]), std::move(parts[order[i]]));
    return result;
}

}  // namespace Zelm::MetaData::Private
