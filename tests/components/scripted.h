/// @file
/// Components of the test program's own, and checks in a child that are silent as long as they hold.
#pragma once

#include "tests/support/temporary_installation.h"
#include "zelm/components/component.h"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <string>
#include <utility>

namespace Zelm::Testing {

class Plain : public Component_Base {};

/// Calls what it was given in its start and its end.
class Scripted : public Component_Base, public LifeCycle::PassiveInterface {
public:
    using Action = std::function<void(Scripted&)>;
    explicit Scripted(Action start = {}, Action end = {}) : start_(std::move(start)), end_(std::move(end)) {}
    void startLifeCycle() override
    {
        if (start_)
            start_(*this);
    }
    void endLifeCycle() override
    {
        if (end_)
            end_(*this);
    }

private:
    Action start_;
    Action end_;
};

/// Prints a check that failed; the child's output stays empty if all is well.
inline void check(bool holds, char const* what)
{
    if (!holds)
        std::cout << "not so: " << what << std::endl;
}

#define ZELM_CHECK(condition) check(condition, #condition)

/// Runs a child in an installation without libraries and expects that all its checks hold.
inline void expectChecksHold(std::string const& name)
{
    TemporaryInstallation const installation;
    auto const child = installation.run(name);
    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.err, "Failed to open: " + installation.mapFile() + "\n");
    EXPECT_EQ(child.status, 0);
}

}  // namespace Zelm::Testing
