#include "app/driver/unix_compiler_application.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <mpdecimal.h>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace {

// The descriptor of this file is closed, but can't keep what was written.
std::string file_that_fails_late;

} // namespace

extern "C" int close(int descriptor) {
    char path[4096];
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = file_that_fails_late.empty() ? 0 : readlink(link.c_str(), path, sizeof path);
    const int result = static_cast<int>(syscall(SYS_close, descriptor));
    if (length <= 0 || std::string(path, length) != file_that_fails_late)
        return result;
    file_that_fails_late.clear();
    errno = EIO;
    return -1;
}

namespace {

namespace fs = std::filesystem;

// Lays the options open.
class Open_Application : public UNIXCompilerApplication {
  public:
    using CompilerApplication::function_output_default;
    using CompilerApplication::pedantic_error;
    using CompilerApplication::pedantic_warn;
    using UNIXCompilerApplication::UNIXCompilerApplication;
};

// Runs of the compiler in a directory of their own, with good.tn (one text run) and bad.tn (one error).
class Driver : public testing::Test {
  protected:
    void SetUp() override {
        mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64);
        earlier = fs::current_path();
        std::string pattern = (fs::temp_directory_path() / "tnc_driver_XXXXXX").string();
        folder = mkdtemp(pattern.data());
        fs::current_path(folder);
        std::ofstream("good.tn") << "Hi";
        std::ofstream("bad.tn") << "<TnELSE>";
        fs::create_symlink("good.tn", "link.tn");
        fs::create_hard_link("good.tn", "hard.tn");
        fs::create_directory("folder");
    }
    void TearDown() override {
        fs::current_path(earlier);
        fs::remove_all(folder);
    }

    template <typename Function>
    void With_Application(const std::string& options, Function function) {
        std::istringstream line("/usr/bin/tnc " + options);
        std::vector<std::string> words(std::istream_iterator<std::string>(line), {});
        std::vector<char*> argv;
        for (std::string& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        Open_Application application(static_cast<int>(words.size()), argv.data());
        function(application);
    }

    int Run(const std::string& options) {
        int status = -1;
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        With_Application(options, [&](Open_Application& application) { status = application.Go(); });
        out = testing::internal::GetCapturedStdout();
        err = testing::internal::GetCapturedStderr();
        return status;
    }

    fs::path earlier, folder;
    std::string out, err;
};

TEST_F(Driver, Refused_Options_Leave_No_Output) {
    const std::string none = ": No such file or directory", list = "Invalid list of warning numbers '",
                      list_end = "'.  Must be 'all' or comma separated list of values between 1 and 99",
                      pedantic = "Invalid pedantic option '",
                      pedantic_end = "'.  Must be 'all' or type 'tnc --help' for list of valid options.";
    const struct {
        std::string options, error;
    } cases[] = {
        {"-", "No input file specified"},
        {"-dL good.tn", "Only one of -d or -L may be specified"},
        {"-Az good.tn", "Invalid option '-z'"},
        {"--Help good.tn", "Invalid option '--Help'"},
        {"-ofile", "Option '-o' requires an argument"},
        {"-C 3.99 good.tn", "Invalid engine version number 3.99"},
        {"-C 5.53 good.tn", "Invalid engine version number 5.53"},
        {"-C -1e-9 good.tn", "Invalid engine version number -0"},
        {"-O 0 good.tn", "Invalid value for obfuscation bytes"},
        {"-b ./none.so good.tn",
         "Unable to register .DLL/.so './none.so': ./none.so: cannot open shared object file" + none},
        {"-w 0 good.tn", list + "0" + list_end},
        {"-W 5, good.tn", list + "5," + list_end},
        {"-X 5,100 good.tn", list + "5,100" + list_end},
        {"-w all,5 good.tn", list + "all,5" + list_end},
        {"-p scope, good.tn", pedantic + pedantic_end},
        {"-P lock,all good.tn", pedantic + "all" + pedantic_end},
        {"good.tn -d", "Unable to open '-d'" + none},
        {"folder", "Unable to open 'folder': Is a directory"},
        {"-o none/x good.tn", "Unable to create 'none/x'" + none},
        {"-o link.tn none.tn good.tn", "Unable to write 'link.tn': it is one of the sources"},
        {"-o good.tn hard.tn", "Unable to write 'good.tn': it is one of the sources"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Run(c.options), 1) << c.options;
        EXPECT_EQ(out + err, "tnc: " + c.error + "\n") << c.options;
        EXPECT_TRUE(!fs::exists("output.tna") && fs::file_size("good.tn") == 2) << c.options;
    }
}

TEST_F(Driver, Accepted_Options_Write_The_Output_File) {
    for (const auto& [options, output] : {std::pair("- -A - good.tn", "output.tna"),
                                          {"-oignored a.out good.tn", "a.out"},
                                          {"-AfFo a.out -o b.out good.tn", "b.out"},
                                          {"-C 4 good.tn", "output.tna"},
                                          {"-C nan good.tn", "output.tna"},
                                          {"-O 99999999999999999999 good.tn", "output.tna"},
                                          {"-w 99,0x10 -W ALL -X all -w all good.tn", "output.tna"},
                                          {"-p scope,LOCK -P ALL -d good.tn", "output.tna"},
                                          {"-L good.tn good.tn", "output.tna"}}) {
        EXPECT_EQ(Run(options), 0) << options;
        EXPECT_EQ(out + err, "") << options;
        EXPECT_TRUE(fs::remove(output)) << options;
    }
}

TEST_F(Driver, Help_And_Version_End_The_Run_Behind_The_Options) {
    EXPECT_EQ(Run("--help"), 0);
    const std::string help = out;
    EXPECT_TRUE(help.starts_with("Usage: tnc [options] file...\n"
                                 "Options:\n"
                                 "  --help           Display this information\n"));
    EXPECT_NE(help.find("\n  -o <file>        Place output in <file>\n"), std::string::npos);
    EXPECT_TRUE(help.ends_with(R"(
  -A               Make access private by default for functions

<warning> may be one of:
  - One or more warning ids, separated by commas
  - The keyword "all", which indicates all warnings

<level> may be one or a comma separated list of the following:
    scope     Warn or error on unscoped variables.
    lock      Warn or error on TnFUNCTIONRETURN inside TnLOCKFILE.
    capture   Warn or error on TnFUNCTIONRETURN inside TnCAPTURE.
    async     Warn or error on TnFUNCTIONRETURN inside TnASYNC.
  or
    all       All of the above options.
)"));
    EXPECT_EQ(Run("--version --help -dL none.tn"), 0);
    EXPECT_EQ(out, "5.52\n" + help);
    EXPECT_EQ(Run("--version --bad"), 1);
    EXPECT_EQ(out + err, "5.52\ntnc: Invalid option '--bad'\n");
    EXPECT_FALSE(fs::exists("output.tna"));
}

// One row for each way in which a run fails with its output open. What out is, is other too, by a link.
TEST_F(Driver, Failed_Run_Leaves_No_Output) {
    const std::string refused = "page.tn:1: CE_186: TnINCLUDE cannot open file './out': it is the output\n";
    std::ofstream("page.tn") << R"(<TnINCLUDE FILE="./out">)";
    std::ofstream("text.tn") << R"(<TnINCLUDE FILE="./out" INTERPRET="off">)";
    const struct {
        void (*link)(const fs::path& target, const fs::path& link);
        const char* options;
        bool fails_late;
        std::string error;
    } cases[] = {
        {fs::create_hard_link, "-o out good.tn bad.tn none.tn", false,
         "bad.tn:1: CE_122: TnELSE without TnIF\n"},
        {fs::create_symlink, "-o out good.tn bad.tn", false, "bad.tn:1: CE_122: TnELSE without TnIF\n"},
        {fs::create_hard_link, "-o out good.tn", true, "tnc: Unable to write 'out': Input/output error\n"},
        {fs::create_hard_link, "-o out page.tn", false, refused},
        {fs::create_hard_link, "-o out text.tn", false, "text" + refused.substr(4)},
    };
    for (const auto& c : cases) {
        std::ofstream("other") << "of an earlier run";
        c.link("other", "out");
        file_that_fails_late = c.fails_late ? folder / "out" : "";
        EXPECT_EQ(Run(c.options), 1) << c.options;
        EXPECT_EQ(err, c.error) << c.options;
        EXPECT_FALSE(fs::is_symlink("out") || fs::exists("out")) << c.options;
        EXPECT_EQ(fs::file_size("other"), 0u) << c.options;
    }
}

TEST_F(Driver, Output_That_Is_No_Regular_File_Stays) {
    fs::create_symlink("/dev/full", "full");
    EXPECT_EQ(Run("-o full good.tn"), 1);
    EXPECT_EQ(err, "tnc: Unable to write 'full': No space left on device\n");
    EXPECT_TRUE(fs::is_symlink("full"));
}

TEST_F(Driver, Text_Of_Two_Gibibytes_Is_Not_Included) {
    std::ofstream("page.tn") << R"(<TnINCLUDE FILE="big.txt" INTERPRET="off">)";
    for (const std::uintmax_t gibibytes : {2, 4}) {
        std::ofstream("big.txt").close();
        fs::resize_file("big.txt", gibibytes << 30);
        EXPECT_EQ(Run("page.tn"), 1);
        EXPECT_EQ(err, "page.tn:1: CE_186: TnINCLUDE cannot open file 'big.txt': File too large\n");
    }
}

TEST_F(Driver, Options_Set_The_Fields_They_Name) {
    const struct {
        const char* options;
        int output, warn, error;
    } cases[] = {
        {"-f", 7, 0, 0}, {"-fF", 4, 0, 0},      {"-Ff", 4, 0, 0},
        {"-F", 0, 0, 0}, {"-p all", -1, -1, 0}, {"-p async -p Scope -P lock,capture", -1, 9, 6},
    };
    for (const auto& c : cases) {
        With_Application(std::string(c.options) + " -D Foo", [&](Open_Application& application) {
            application.CommandLine_Parse();
            EXPECT_EQ(application.function_output_default, c.output) << c.options;
            EXPECT_EQ(application.pedantic_warn, c.warn) << c.options;
            EXPECT_EQ(application.pedantic_error, c.error) << c.options;
            EXPECT_TRUE(application.Is_Defined("FOOT", 3) && !application.Is_Defined("fo", 2));
        });
    }
}

TEST_F(Driver, Warning_Options_Decide_What_Prints_And_What_Counts) {
    const struct {
        const char* options;
        int code;
        bool prints, counts;
    } cases[] = {
        {"", 49, true, false},
        {"", 50, false, false},
        {"-w all", 101, true, true},
        {"-w 0x11", 17, false, false},
        {"-w 17", 16, true, false},
        {"-W all", 51, true, false},
        {"-W 17 -w all", 17, false, false},
        {"-w all -X 17 -W 17", 17, true, true},
        {"-X 51", 51, false, false},
        {"-w 5,x", 5, false, false}, // refused, but what stands ahead holds
    };
    for (const auto& c : cases) {
        With_Application(c.options, [&](Open_Application& application) {
            testing::internal::CaptureStderr();
            application.CommandLine_Parse();
            testing::internal::GetCapturedStderr();
            testing::internal::CaptureStderr();
            EXPECT_EQ(application.CompileError(c.code, "a b.tn", 12, "text"), !c.counts) << c.options;
            const std::string line = (c.code < 100 ? "CW_" : "CE_") + std::to_string(c.code) + ": text\n";
            EXPECT_EQ(testing::internal::GetCapturedStderr(), c.prints ? "a b.tn:12: " + line : "")
                << c.options;
        });
    }
}

} // namespace
