#include "sensors/file_system_usage.h"

#include "../support/temporary_directory.h"

#include <gtest/gtest.h>

#include <limits>

namespace HostMonitor {

namespace {

/// 100 blocks, 40 of them free, 20 for everybody.
struct statvfs someStatus()
{
    struct statvfs status = {};
    status.f_bsize = 8192;
    status.f_frsize = 4096;
    status.f_blocks = 100;
    status.f_bfree = 40;
    status.f_bavail = 20;
    status.f_files = 1000;
    status.f_ffree = 900;
    return status;
}

}  // namespace

TEST(FileSystemUsage, isCountedInFragments)
{
    FileSystemUsage usage;
    assignUsage(someStatus(), usage);

    EXPECT_EQ(usage.totalBytes(), 100 * 4096);
    EXPECT_EQ(usage.freeBytes(), 40 * 4096);
    EXPECT_EQ(usage.availableBytes(), 20 * 4096);
    EXPECT_EQ(usage.usedBytes(), 60 * 4096);
    EXPECT_EQ(usage.totalFiles(), 1000);
    EXPECT_EQ(usage.freeFiles(), 900);
}

TEST(FileSystemUsage, isAShareOfWhatUsersCanHave)
{
    FileSystemUsage usage;
    assignUsage(someStatus(), usage);

    EXPECT_EQ(usage.usedPercent(), 75);
}

TEST(FileSystemUsage, isCountedInBlocksWhereThereIsNoFragmentSize)
{
    auto status = someStatus();
    status.f_frsize = 0;
    FileSystemUsage usage;
    assignUsage(status, usage);

    EXPECT_EQ(usage.totalBytes(), 100 * 8192);
}

TEST(FileSystemUsage, ofAFileSystemWithoutBlocksHasNoShare)
{
    FileSystemUsage usage;
    assignUsage({}, usage);

    EXPECT_EQ(usage.totalBytes(), 0);
    EXPECT_EQ(usage.usedBytes(), 0);
    EXPECT_FALSE(usage.usedPercent.initialized());
    EXPECT_FALSE(usage.totalFiles.initialized());
    EXPECT_FALSE(usage.freeFiles.initialized());
}

TEST(FileSystemUsage, isNeverNegativeNorOverflows)
{
    auto status = someStatus();
    status.f_bfree = 101;
    FileSystemUsage usage;
    assignUsage(status, usage);
    EXPECT_EQ(usage.usedBytes(), 0);

    status.f_blocks = std::numeric_limits<fsblkcnt_t>::max();
    assignUsage(status, usage);
    EXPECT_EQ(usage.totalBytes(), std::numeric_limits<long>::max());
}

TEST(FileSystemUsage, isThatOfTheFileSystemThatThePathLiesIn)
{
    Zelm::Testing::TemporaryDirectory const directory;
    auto const usage = examineFileSystem(directory.path());

    struct statvfs status = {};
    ASSERT_EQ(statvfs(directory.path().c_str(), &status), 0);
    // The free space changes while others write; these two don't.
    EXPECT_EQ(usage.mountPoint(), directory.path());
    EXPECT_EQ(static_cast<unsigned long>(usage.totalBytes()), status.f_blocks * status.f_frsize);
    EXPECT_EQ(usage.usedBytes(), usage.totalBytes() - usage.freeBytes());
    EXPECT_FALSE(usage.error.initialized());
}

TEST(FileSystemUsage, hasAnErrorAndNoNumbersForAPathThatIsntThere)
{
    Zelm::Testing::TemporaryDirectory const directory;
    auto const usage = examineFileSystem(directory / "absent");

    EXPECT_EQ(usage.mountPoint(), directory / "absent");
    EXPECT_EQ(usage.error(), "No such file or directory");
    EXPECT_FALSE(usage.totalBytes.initialized());
    EXPECT_FALSE(usage.usedBytes.initialized());
}

}  // namespace HostMonitor
