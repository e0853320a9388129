#include "zelm/metadata/element.h"

#include <limits>
#include <stdexcept>
#include <utility>

namespace Zelm::MetaData {

Array::iterator Array::insert(Element&& element, iterator position)
{
    return elements_.insert(position, std::move(element));
}

Array::iterator Array::erase(iterator position)
{
    return elements_.erase(position);
}

void Array::resize(unsigned long size)
{
    elements_.resize(size);
}

void Array::clear()
{
    elements_.clear();
}

void Array::reserve(unsigned long size)
{
    elements_.reserve(size);
}

Element& Array::operator[](unsigned long index)
{
    if (index >= size()) {
        if (index == std::numeric_limits<unsigned long>::max())
            throw std::length_error("Array index beyond any size");
        resize(index + 1);
    }
    return elements_[index];
}

Element const& Array::operator[](unsigned long index) const
{
    if (index >= size())
        throw Zelm::Exception::InvalidParameter("Array out of bounds");
    return elements_[index];
}

}  // namespace Zelm::MetaData
