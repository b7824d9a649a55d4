#include "network/http_response_stream.h"
#include "network/network_output.h"
#include "network/network_support.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

struct Header_Output : NullOutput {
    void Header(const char* name, const char* value) override { seen += name + "="s + value; }
    void Write_Error(const char* text, int) override { seen += text; }
    std::string seen;
};

TEST(NetworkOutput, Writes_To_The_Connection_And_Hands_Headers_On) {
    Network_Application application;
    Script script{.write_limit = 5};
    Scripted_Connection connection(&application, script);
    Header_Output inner;
    NetworkOutput output(&inner, &connection, 5, 4);
    output.Header("a", "b");
    output.Write_Error("!", 1);
    EXPECT_EQ(output.Write("abcdef", -1), 6);
    EXPECT_EQ(script.written + inner.seen, "abcda=b!");
    EXPECT_EQ(output.Flush(), 1);
    EXPECT_STREQ(output.error().text(), "peer took a part");
}

} // namespace
