#include "reporters/table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace HostMonitor {

using ::testing::ElementsAre;

namespace {

constexpr std::size_t wide = 1000;

Table disks()
{
    Table table({{"mount point", Table::Align::Left}, {"free", Table::Align::Right}, {"used %", Table::Align::Right}},
                1);
    table.addRow({"/", "10.0 GiB", "5.0"});
    table.addRow({"/home/everybody", "1.0 B", "100.0"});
    return table;
}

}  // namespace

TEST(Table, alignsEachColumnAsItIsTold)
{
    EXPECT_THAT(disks().lines(wide),
                ElementsAre("mount point          free  used %",  //
                            "/                10.0 GiB     5.0", "/home/everybody     1.0 B   100.0"));
}

TEST(Table, isItsHeadingsIfItHasNoRows)
{
    EXPECT_THAT(Table({{"a", Table::Align::Left}, {"b", Table::Align::Left}}).lines(wide), ElementsAre("a  b"));
}

TEST(Table, hasNoBlanksAtTheEndsOfItsLines)
{
    Table table({{"a", Table::Align::Left}, {"bcd", Table::Align::Left}});
    table.addRow({"1", ""});

    EXPECT_THAT(table.lines(wide), ElementsAre("a  bcd", "1"));
}

TEST(Table, takesRowsThatAreTooShortOrTooLong)
{
    Table table({{"a", Table::Align::Left}, {"b", Table::Align::Left}});
    table.addRow({"1"});
    table.addRow({"1", "2", "3"});

    EXPECT_THAT(table.lines(wide), ElementsAre("a  b", "1", "1  2"));
}

TEST(Table, putsWhatDoesntFitBelowWithItsKeysAgain)
{
    EXPECT_THAT(disks().lines(25), ElementsAre("mount point          free",  //
                                               "/                10.0 GiB",
                                               "/home/everybody     1.0 B",  //
                                               "mount point      used %",    //
                                               "/                   5.0",    //
                                               "/home/everybody   100.0"));
}

TEST(Table, keepsOneColumnBesideItsKeysHoweverNarrowTheWidthIs)
{
    Table table({{"key", Table::Align::Left}, {"a", Table::Align::Left}, {"b", Table::Align::Left}}, 1);

    EXPECT_THAT(table.lines(0), ElementsAre("key  a", "key  b"));
}

TEST(Table, countsCharactersAndNotBytes)
{
    Table table({{"é", Table::Align::Right}, {"b", Table::Align::Right}});
    table.addRow({"ab", "€"});

    EXPECT_THAT(table.lines(wide), ElementsAre(" é  b", "ab  €"));
}

TEST(CutToWidth, neverCutsACharacterInTwo)
{
    EXPECT_EQ(cutToWidth("aé€b", 0), "");
    EXPECT_EQ(cutToWidth("aé€b", 1), "a");
    EXPECT_EQ(cutToWidth("aé€b", 2), "aé");
    EXPECT_EQ(cutToWidth("aé€b", 3), "aé€");
    EXPECT_EQ(cutToWidth("aé€b", 4), "aé€b");
    EXPECT_EQ(cutToWidth("aé€b", 5), "aé€b");
}

}  // namespace HostMonitor
