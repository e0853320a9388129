#include "zelm/metadata/element.h"

#include <gtest/gtest.h>

namespace Zelm::MetaData {
namespace {

TEST(Element, isNullByDefault)
{
    Element const element;

    EXPECT_EQ(element.GetElementType(), ElementType::Null);
}

TEST(Element, buildsTheTreeThatAChainOfIndexingNames)
{
    Element element;

    element["a"]["b"][2] = Element(Trivial_T<long>(7));

    Element const& view = element;
    EXPECT_EQ(view["a"]["b"][2].asInt64(), 7);
    EXPECT_EQ(view["a"]["b"][0].GetElementType(), ElementType::Null);
}

}  // namespace
}  // namespace Zelm::MetaData
