#include "core/crc32.h"

#include <gtest/gtest.h>

TEST(Crc32, Catalogue_Value_Whole_And_In_Pieces) {
    const auto* digits = reinterpret_cast<const unsigned char*>("123456789");
    EXPECT_EQ(crc32_final(crc32_data(crc32_init(), digits, 9)), 0xFC891918u);
    EXPECT_EQ(crc32_final(crc32_data(crc32_data(crc32_init(), digits, 4), digits + 4, 5)), 0xFC891918u);
}

TEST(Crc32, No_Data_Leaves_It_Unchanged) {
    EXPECT_EQ(crc32_data(0x1234, nullptr, 0), 0x1234u);
    EXPECT_EQ(crc32_data(0x1234, nullptr, -1), 0x1234u);
}
