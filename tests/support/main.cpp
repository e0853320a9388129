#include "child_process.h"

#include <gmock/gmock.h>

int main(int argc, char** argv)
{
    if (auto const status = Zelm::Testing::runAsChild(argc, argv))
        return *status;
    ::testing::InitGoogleMock(&argc, argv);
    ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
    return RUN_ALL_TESTS();
}
