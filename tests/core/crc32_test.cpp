#include "core/crc32.h"

#include <gtest/gtest.h>

TEST(Crc32, Catalogue_Value_In_Pieces) {
    const auto* digits = reinterpret_cast<const unsigned char*>("123456789");
    const unsigned begun = crc32_data(crc32_init(), digits, 4);
    EXPECT_EQ(crc32_data(begun, nullptr, -1), begun);
    EXPECT_EQ(crc32_final(crc32_data(begun, digits + 4, 5)), 0xFC891918u);
}
