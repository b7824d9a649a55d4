// What the program makes of an extension library.

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace {

// What comes of a page, assembly and diagnostics, from a word on.
std::string Compiled(const std::string& page, const char* from) {
    const std::string path = testing::TempDir() + "export_test." + std::to_string(getpid());
    std::ofstream(path) << page;
    const std::string command = tnc_path " -b " whole_library_path " -o /dev/stdout " + path + " 2>&1";
    std::FILE* const output = popen(command.c_str(), "r");
    std::string text;
    for (int byte; (byte = std::getc(output)) != EOF;)
        text += static_cast<char>(byte);
    pclose(output);
    std::remove(path.c_str());
    return text.substr(std::min(text.find(from), text.size()));
}

// Heads for what is called, in any case, and none for the rest; null parameters are none, whatever their
// count.
TEST(Exports, Let_A_Library_Declare_Functions_Of_A_Page) {
    EXPECT_EQ(Compiled("<TnEVAL EXPR=\"{SWAP_IN(1, blank(l.x, 2))}\">", ".function"),
              ".function blank\texternal\tstdoutinherit"
              "\n.endfunction"
              "\n\n.function swap_in\texternal\tstdoutinherit"
              "\n.parameter\tl_0\t\"value\""
              "\n.parameter\tl_1\t\"target\"\treference"
              "\n.endfunction"
              "\n; end of compiled file\n");
    const std::string error = "CE_180: Function \"blank\" takes 2 parameters, called with 1 parameters\n";
    EXPECT_EQ(Compiled("<TnEVAL EXPR=\"{blank(1)}\">", "CE_").substr(0, error.size()), error);
}

} // namespace
