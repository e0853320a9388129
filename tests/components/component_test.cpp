#include "zelm/components/component.h"

#include "tests/components/scripted.h"
#include "tests/support/vtable_slot.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

namespace Zelm {
namespace {

using Testing::Plain;
using Testing::slotOf;

class Passive : public Component_Base, public LifeCycle::PassiveInterface {
public:
    void startLifeCycle() override { running = true; }
    void endLifeCycle() override { running = false; }
    bool running = false;
};

struct BehindComponent : ComponentInterface {
    virtual void next() = 0;
};

class BehindPassive : public LifeCycle::PassiveInterface {
public:
    virtual void next() = 0;

protected:
    ~BehindPassive() = default;
};

TEST(ComponentInterface, hasItsFunctionsInTheOrderThatLibrariesAreBuiltFor)
{
    EXPECT_EQ(slotOf(&ComponentInterface::instanceId), 0);
    EXPECT_EQ(slotOf(&ComponentInterface::setInstanceId), 1);
    EXPECT_EQ(slotOf(&BehindComponent::next), 4);
}

TEST(PassiveInterface, hasItsFunctionsInTheOrderThatLibrariesAreBuiltFor)
{
    EXPECT_EQ(slotOf(&LifeCycle::PassiveInterface::startLifeCycle), 0);
    EXPECT_EQ(slotOf(&LifeCycle::PassiveInterface::endLifeCycle), 1);
    EXPECT_EQ(slotOf(&BehindPassive::next), 2);
}

TEST(ComponentBase, startsWithAnEmptyInstanceId)
{
    EXPECT_EQ(Plain().instanceId(), "");
}

TEST(ComponentBase, keepsTheInstanceIdThatWasSetLast)
{
    Plain component;

    component.setInstanceId("a");
    component.setInstanceId("b");

    EXPECT_EQ(component.instanceId(), "b");
}

TEST(ComponentBase, keepsOneIdHoweverOftenItIsInherited)
{
    class Left : public virtual ComponentInterface {};
    class Both : public Left, public Component_Base {};
    Both both;

    static_cast<Left&>(both).setInstanceId("one");

    EXPECT_EQ(both.Component_Base::instanceId(), "one");
}

TEST(PassiveInterface, isReachedFromAComponentByItsDynamicType)
{
    auto const passive = std::make_shared<Passive>();
    std::shared_ptr<ComponentInterface> const component = passive;

    dynamic_cast<LifeCycle::PassiveInterface&>(*component).startLifeCycle();

    EXPECT_TRUE(passive->running);
    EXPECT_FALSE(std::dynamic_pointer_cast<LifeCycle::PassiveInterface>(
        std::shared_ptr<ComponentInterface>(std::make_shared<Plain>())));
}

TEST(PassiveInterface, hasNoVirtualDestructorAndIsNotDeletedThrough)
{
    EXPECT_FALSE(std::has_virtual_destructor_v<LifeCycle::PassiveInterface>);
    EXPECT_FALSE(std::is_destructible_v<LifeCycle::PassiveInterface>);
    EXPECT_TRUE(std::has_virtual_destructor_v<ComponentInterface>);
}

}  // namespace
}  // namespace Zelm
