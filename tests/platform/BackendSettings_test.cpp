#include "platform/BackendSettings.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <type_traits>
#include <utility>

namespace {

TEST(BackendSettings, DefaultsAreTwoThousandMillionCellsFastUnicodeTables) {
    BackendSettings const settings;
    EXPECT_EQ(settings.getMaxCells(), 2000000000L);
    EXPECT_TRUE(settings.getFastTables());
    EXPECT_EQ(settings.getLocale(), "en_US.UTF-8");
    EXPECT_TRUE(settings.getUnicode());
}

TEST(BackendSettings, LimitIsKeptAsGiven) {
    BackendSettings settings;
    for (long const limit : {0L, -1L, 7L, std::numeric_limits<long>::max(), std::numeric_limits<long>::min()}) {
        settings.setMaxCells(limit);
        EXPECT_EQ(settings.getMaxCells(), limit);
    }
    EXPECT_TRUE((std::is_same_v<decltype(settings.getMaxCells()), long>));
}

TEST(BackendSettings, LocaleIsKeptAsGiven) {
    BackendSettings settings;
    for (std::string const& locale : {std::string("ja_JP.Shift_JIS"), std::string(), std::string(500, 'x')}) {
        settings.setLocale(locale);
        EXPECT_EQ(settings.getLocale(), locale);
    }
}

TEST(BackendSettings, SwitchesAreKeptApart) {
    BackendSettings settings;
    settings.setFastTables(false);
    EXPECT_FALSE(settings.getFastTables());
    EXPECT_TRUE(settings.getUnicode());
    settings.setUnicode(false);
    settings.setFastTables(true);
    EXPECT_TRUE(settings.getFastTables());
    EXPECT_FALSE(settings.getUnicode());
}

TEST(BackendSettings, CopiesAreIndependent) {
    BackendSettings first;
    first.setMaxCells(3);
    first.setLocale("first");
    BackendSettings copy(first);
    copy.setLocale("copy");
    EXPECT_EQ(copy.getMaxCells(), 3);
    EXPECT_EQ(first.getLocale(), "first");
    first = copy;
    copy.setMaxCells(4);
    EXPECT_EQ(first.getLocale(), "copy");
    EXPECT_EQ(first.getMaxCells(), 3);
}

} // namespace
