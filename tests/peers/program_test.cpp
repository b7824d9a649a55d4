// TLS comes from the application that has it; the compiler has none.

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

TEST(Program, Links_No_TLS_Library) {
    std::FILE* const pipe = popen("readelf -d " tnc_path, "r");
    std::string needed;
    char line[512];
    while (std::fgets(line, sizeof line, pipe)) {
        if (std::string(line).find("(NEEDED)") != std::string::npos)
            needed += line;
    }
    ASSERT_EQ(pclose(pipe), 0);
    EXPECT_NE(needed.find("libc.so"), std::string::npos);
    for (const char* const name : {"ssl", "crypto", "tls"})
        EXPECT_EQ(needed.find(name), std::string::npos) << needed;
}

} // namespace
