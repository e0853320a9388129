#include "metadata/census.h"

namespace Zelm::Benchmarks {

using namespace MetaData;

namespace {

class Counter : public ConstVisitor {
public:
    Census census;

    void Visit(Array const& array) override
    {
        ++census.arrays;
        census.elements += array.size();
        for (Element const& element : array)
            element.Accept(*this);
    }
    void Visit(Object const& object) override
    {
        ++census.objects;
        census.members += object.size();
        for (Object::Member const& member : object) {
            census.nameBytes += member.name().size();
            member.element().Accept(*this);
        }
    }
    void Visit(Trivial_T<double> const& value) override { number(value); }
    void Visit(Trivial_T<long> const& value) override { number(static_cast<double>(value)); }
    void Visit(Trivial_T<std::string> const& value) override
    {
        ++census.strings;
        census.stringBytes += static_cast<std::string const&>(value).size();
    }
    void Visit(Trivial_T<bool> const& value) override
    {
        ++census.booleans;
        census.trues += value ? 1 : 0;
    }
    void Visit(Null const&) override { ++census.nulls; }

private:
    void number(double value)
    {
        ++census.numbers;
        census.sum += value;
    }
};

}  // namespace

Census censusOf(Object const& object)
{
    Counter counter;
    static_cast<ConstVisitor&>(counter).Visit(object);
    return counter.census;
}

}  // namespace Zelm::Benchmarks
