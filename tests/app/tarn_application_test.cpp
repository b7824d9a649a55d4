#include "app/driver/unix_compiler_application.h"
#include "app/services/config.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

struct Error_Output : NullOutput {
    void Write_Error(const char* text, int length) override { all.append(text, length); }
    std::string all;
};

// An application of its own name and error output, whose option --value takes a value.
struct Test_Application : UNIXCompilerApplication, Config {
    explicit Test_Application(const std::vector<const char*>& words = {"C:\\bin/dir\\program"})
        : UNIXCompilerApplication(static_cast<int>(words.size()), const_cast<char**>(words.data())) {}

    Output* output() override { return &errors; }
    Config* config() override { return is_configured ? this : nullptr; }
    int Integer(Config_Setting setting) const override {
        return setting == CONFIG_TIMEOUT ? 1000 : setting == CONFIG_POST_TIMEOUT ? 10 : -1;
    }
    const String& Text(Config_Setting) const override { return none; }
    bool CommandLine_Requires_Argument(const char* option) override { return !strcmp(option, "value"); }
    bool CommandLine_Process_Option_Long(const char* option, const char* value) override {
        processed += std::string(option) + "=" + (value ? value : "none") + " ";
        return true;
    }
    static std::string Listed(List<LogFilterEntry>& filters) {
        std::string text;
        for (LogFilterEntry* entry = filters.First(); entry; entry = filters.Next())
            text += std::string(entry->name.get(), static_cast<std::size_t>(entry->name_length)) + ":" +
                    std::to_string(entry->low) + "-" + std::to_string(entry->high) + " ";
        return text;
    }
    std::string Filters() { return Listed(log_include) + "! " + Listed(log_exclude); }

    using TarnApplication::global_deadline;
    using TarnApplication::post_deadline;
    using TarnApplication::post_timed_out;

    bool is_configured = true;
    Error_Output errors;
    std::string processed;
    String none;
};

TEST(TarnApplication, Counts_The_Changes_Of_Its_Defaults) {
    Test_Application application;
    application.SetLanguage("de", -1);
    application.SetLanguage("english", 2);
    application.SetDefaultLanguage("fr", 2);
    application.SetDefaultDatabase("shop:x", 4);
    EXPECT_EQ(application.language().view(), "en");
    EXPECT_EQ(application.defaultlanguage().view(), "fr");
    EXPECT_EQ(application.defaultdatabase().view(), "shop");
    EXPECT_EQ(application.languagecount() * 100 + application.defaultlanguagecount() * 10 +
                  application.defaultdatabasecount(),
              322); // each from 1 on
    EXPECT_STREQ(application.GetCharacterSet(), application.charset().text());
}

TEST(TarnApplication, Log_Filters_Are_Read_Entry_By_Entry) {
    Test_Application application;
    for (const auto& [text, filters] : {
             std::pair(" ! name : 3 - 17 , b", "b:0-0 ! name:3-17 "),
             {"a,,b, ,!,:3,c", "a:0-0 b:0-0 c:0-0 ! "},
             {"", "! "},
             {"a-4,b:-5,c:1-x junk:9,d -7,!b!", "a-4:0-0 b:0-5 c:1-0 d:0-0 ! b!:0-0 "},
             {"a:99999999999-88888888888888888888", "a:2147483647-2147483647 ! "},
         }) {
        application.ParseLogFilter(text);
        EXPECT_EQ(application.Filters(), filters) << text;
    }
}

TEST(TarnApplication, Deadlines_Come_From_The_Settings_And_Pass_With_Time) {
    Test_Application application;
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

    application.is_configured = false;
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
    const struct {
        std::vector<const char*> words;
        int first_input;
        const char *processed, *error;
    } cases[] = {
        {{"c/d\\e", "--value", "--plain", "--plain", "file", "--plain"}, 4, "value=--plain plain=none ", ""},
        {{"c/d\\e", "--value"}, -1, "", "e: Option '--value' requires an argument\n"},
        {{"c/d\\e"}, 1, "", ""},
    };
    for (const auto& [words, first_input, processed, error] : cases) {
        Test_Application application(words);
        EXPECT_EQ(application.CommandLine_Parse(), first_input);
        EXPECT_EQ(application.processed, processed);
        EXPECT_EQ(application.errors.all, error);
    }
}

TEST(ConsoleApplication, Runtime_Errors_Are_Shown_On_Demand_Under_The_Name_In_Force) {
    struct : Test_Application {
        const char* basename() override { return "other"; }
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
