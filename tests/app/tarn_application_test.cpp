#include "app/services/config.h"
#include "app/services/console_application.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

class Fixed_Config : public Config {
  public:
    int Integer(Config_Setting setting) const override {
        return setting == CONFIG_TIMEOUT ? 1000 : setting == CONFIG_POST_TIMEOUT ? 10 : -1;
    }
    const String& Text(Config_Setting) const override { return none; }

    String none;
};

char program[] = "C:\\bin/dir\\program";
char* arguments[] = {program, nullptr};

class Test_Application : public ConsoleApplication {
  public:
    Test_Application() : ConsoleApplication(1, arguments) {}

    FileManager* filemanager() override { return nullptr; }
    ExternalLibraryManager* librarymanager() override { return nullptr; }
    const char* lasterror() override { return ""; }
    Config* config() override { return settings; }
    bool CommandLine_Requires_Argument(char) override { return false; }
    bool CommandLine_Requires_Argument(const char* option) override { return std::string(option) == "value"; }
    bool CommandLine_Process_Option(char, const char*) override { return true; }
    bool CommandLine_Process_Option_Long(const char* option, const char* value) override {
        processed.push_back(std::string(option) + "=" + (value ? value : "none"));
        return true;
    }

    void Set_Arguments(std::vector<char*> words) {
        argv_storage = std::move(words);
        argc = static_cast<int>(argv_storage.size());
        argv = argv_storage.data();
    }
    std::string Filters() {
        std::string text;
        for (LogFilterEntry* entry = log_include.First(); entry; entry = log_include.Next())
            text += Describe(*entry);
        for (LogFilterEntry* entry = log_exclude.First(); entry; entry = log_exclude.Next())
            text += "!" + Describe(*entry);
        return text;
    }
    static std::string Describe(const LogFilterEntry& entry) {
        return std::string(entry.name, static_cast<std::size_t>(entry.name_length)) + ":" +
               std::to_string(entry.low) + "-" + std::to_string(entry.high) + " ";
    }

    using TarnApplication::global_deadline;
    using TarnApplication::post_deadline;
    using TarnApplication::post_timed_out;

    Config* settings = nullptr;
    std::vector<std::string> processed;
    std::vector<char*> argv_storage;
};

TEST(TarnApplication, Log_Filters_Are_Read_Entry_By_Entry) {
    const struct {
        const char* text;
        const char* filters;
    } cases[] = {
        {"", ""},
        {"name:3", "name:3-0 "},
        {" ! name : 3 - 17 , b", "b:0-0 !name:3-17 "},
        {"a,,b, ,!,:3,c", "a:0-0 b:0-0 c:0-0 "},
        {"a-4,b:-5,c:1-x junk:9,d -7,!b!", "a-4:0-0 b:0-5 c:1-0 d:0-0 !b!:0-0 "},
        {"a:99999999999-88888888888888888888", "a:2147483647-2147483647 "},
    };
    for (const auto& c : cases) {
        Test_Application application;
        application.ParseLogFilter("earlier,!other");
        application.ParseLogFilter(c.text);
        EXPECT_EQ(application.Filters(), c.filters) << c.text;
    }
}

TEST(TarnApplication, Deadlines_Come_From_The_Settings_And_Pass_With_Time) {
    Test_Application application;
    Fixed_Config config;
    application.settings = &config;
    application.ResetGlobalTimeout();
    application.ResetPOSTTimeout();
    EXPECT_NEAR(static_cast<double>(application.post_deadline - time(nullptr)), 10, 2);
    EXPECT_NEAR(static_cast<double>(application.TimeRemaining()), 1000, 2);

    application.global_deadline = 100;
    application.post_deadline = 50;
    application.Heartbeat(50);
    EXPECT_EQ(application.post_timed_out, 0);
    application.Heartbeat(51);
    EXPECT_TRUE(application.post_timed_out == 1 && !application.cancelled());
    application.Heartbeat(101);
    EXPECT_TRUE(application.cancelled());
    EXPECT_EQ(application.TimeRemaining(), 0);

    application.settings = nullptr;
    application.ResetGlobalTimeout();
    application.ResetPOSTTimeout();
    application.Heartbeat(1L << 40);
    EXPECT_FALSE(application.cancelled() || application.post_timed_out);
    EXPECT_EQ(application.TimeRemaining(), -1);
}

TEST(TarnApplication, Character_Set_Is_Compared_Whole_And_In_Any_Case) {
    Test_Application application;
    application.SetCharacterSet("utf-88", -1);
    EXPECT_FALSE(application.CharacterSetIsUTF8());
    application.SetCharacterSet("UTF-8", -1);
    EXPECT_TRUE(application.CharacterSetIsUTF8());
    EXPECT_EQ(application.charsetcount(), 3);
}

TEST(ConsoleApplication, Long_Options_Take_The_Next_Argument_As_Value) {
    char value[] = "--value", plain[] = "--plain", file[] = "file";
    Test_Application application;
    application.Set_Arguments({program, value, plain, plain, file, plain});
    EXPECT_EQ(application.CommandLine_Parse(), 4);
    EXPECT_EQ(application.processed, std::vector<std::string>({"value=--plain", "plain=none"}));

    application.Set_Arguments({program, value});
    testing::internal::CaptureStderr();
    EXPECT_EQ(application.CommandLine_Parse(), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "program: Option '--value' requires an argument\n");
    application.Set_Arguments({program});
    EXPECT_EQ(application.CommandLine_Parse(), 1);
}

// Errors go through the output in force, under the name that the program answers.
TEST(ConsoleApplication, Errors_Go_To_The_Output_In_Force) {
    class Other_Name : public Test_Application {
        const char* basename() override { return "other"; }
        Output* output() override { return &errors; }

      public:
        class : public NullOutput {
          public:
            void Write_Error(const char* text, int length) override { all.append(text, length); }
            std::string all;
        } errors;
    } application;
    application.Notify_RuntimeError(1, "hidden", false);
    application.Notify_RuntimeError(1, "shown ", true);
    application.ArgumentError("text");
    EXPECT_EQ(application.errors.all, "shown other: text\n");
}

TEST(ConsoleOutput, Text_With_A_Line_End_Goes_Out_At_Once) {
    ConsoleOutput output(16);
    for (const auto& [text, shown] : {std::pair{"ab", ""}, {"c\n", "abc\n"}, {"d\re", "d\re"}}) {
        testing::internal::CaptureStdout();
        output.Write(text, -1);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), shown);
    }
}

} // namespace
