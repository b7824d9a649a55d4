// What the program offers to extension libraries, read out of its dynamic symbol table, and what it makes of
// one.

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

namespace {

std::string Output_Of(const std::string& command) {
    std::string output;
    std::FILE* const pipe = popen(command.c_str(), "r");
    char piece[4096];
    while (std::size_t length = std::fread(piece, 1, sizeof piece, pipe))
        output.append(piece, length);
    return pclose(pipe) == 0 ? output : "failed: " + output;
}

std::set<std::string> Exported_Symbols() {
    std::set<std::string> symbols;
    std::istringstream lines(Output_Of("nm -D --defined-only --format=posix " tnc_path));
    for (std::string line; std::getline(lines, line);)
        symbols.insert(line.substr(0, line.find(' ')));
    return symbols;
}

TEST(Exports, Hold_The_C_Interface_And_The_Classes) {
    const std::set<std::string> symbols = Exported_Symbols();
    const char* const c_names[] = {
#define STUB(result, name) #name,
#include "extension/c_interface.def"
    };
    EXPECT_EQ(std::size(c_names), 194u);
    for (const char* const name : c_names)
        EXPECT_EQ(symbols.count(name), 1u) << name;
    for (const char* const name : {"_ZN6String6assignEPKci", "_ZTV8Variable", "_ZTV11FileManager",
                                   "_ZN19ExternalCallManager11RegisterDSOEPKc"})
        EXPECT_EQ(symbols.count(name), 1u) << name;
}

// A page that calls functions of a library: heads for what it calls, in any case, and none for the rest.
TEST(Exports, Let_A_Library_Declare_Functions_Of_A_Page) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("tnc_export_test_" + std::to_string(getpid()));
    std::filesystem::create_directory(folder);
    std::ofstream(folder / "a.tn") << "<TnEVAL EXPR=\"{SWAP_IN(1, l.x)}\">";
    EXPECT_EQ(Output_Of("cd " + folder.string() + " && " tnc_path " -b " whole_library_path " a.tn 2>&1"),
              "");
    std::ostringstream assembly;
    assembly << std::ifstream(folder / "output.tna").rdbuf();
    EXPECT_EQ(assembly.str(), "\n.string\ts_0\t\"a.tn\""
                              "\n\tsourcefile\ts_0"
                              "\n.local\tl_0\t\"x\""
                              "\n\tlineno\t1"
                              "\n\tpushi\t1"
                              "\n\tpushl\tl_0"
                              "\n\tcall\tswap_in"
                              "\n\tsourcefile\ts_0"
                              "\n\tlineno\t1"
                              "\n\tout"
                              "\n\n.function swap_in\texternal\tstdoutinherit"
                              "\n.parameter\tl_0\t\"value\""
                              "\n.parameter\tl_1\t\"target\"\treference"
                              "\n.endfunction"
                              "\n; end of compiled file\n");
    std::filesystem::remove_all(folder);
}

} // namespace
