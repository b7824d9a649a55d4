#include "image/function_table.h"
#include "image_fixture.h"

#include <sstream>

namespace {

class FunctionTableTest : public ImageTest {
  protected:
    // "index name(flags: parameter slot/flags ...)" for a function, "" for none.
    static std::string Told(Function* function) {
        std::ostringstream text;
        if (function)
            text << function->index << ' ' << function->name.text() << '(' << function->flags << ':';
        for (auto* p = function ? function->parameters.First() : nullptr; p; p = function->parameters.Next())
            text << ' ' << p->name.text() << ' ' << p->ident << '/' << p->flags;
        return text.str() + (function ? ")" : "");
    }

    FunctionManager table{&names, 0};
    // One bucket: max, sum, main. The function sum has the parameters a and b; main is known by its name.
    static constexpr int head = 9;
    static constexpr int links = 13;
    static constexpr int first = 25;
    static constexpr int second = first + 27;
    const std::string no_locals = Number(8 << 16, 7);
    const std::string locals = Number(1, 3) + Dwords({2}) + Number(0, 2) + Dwords({0, 3, 1, 4, -1});
    const std::string section = Number(1, 3) + Dwords({3}) + Number(0, 2) + Dwords({2, -1, 0, 1}) +
                                Dwords({0, 0, 1, -1, -1}) + no_locals +
                                Dwords({1, 2, 4, 100, 200, 3, 0, 0, 4, 1, 1}) + locals +
                                Dwords({2, 0, 0, 300, 400}) + no_locals;
};

TEST_F(FunctionTableTest, Chains_Are_Sorted_And_Ignore_Case) {
    for (const char* name : {"bb", "c", "BA", "aa", "_a", "ccc", "bB"})
        table.Function_Add(name, -1, 4);
    // The head and the links: c, _a, aa, BA, bb, bB, ccc.
    EXPECT_EQ(Written(table).substr(32 + head, 4 * 8), Dwords({1, 6, 4, 0, 2, 3, -1, 5}));
    EXPECT_EQ(Told(table.Function_Get("BB", -1)), "0 bb(5:)");
    EXPECT_EQ(Told(table.Function_Get("ba..", 2)), "2 BA(5:)");
    for (const char* name : {"", "ab", "bc", "dddd"})
        EXPECT_EQ(table.Function_Get(name, -1), nullptr) << name;
    Function* const named = new Function(&names, 0);
    named->name = "Max";
    named->name_index = 2;
    EXPECT_EQ(Told(table.Function_Add(named)), "7 Max(0:)");
    EXPECT_EQ(table.Function_Get("maX", -1), named);
}

TEST_F(FunctionTableTest, Many_Functions_Are_Found) {
    FunctionManager many(&names, 4);
    for (int i = 0; i < 300; ++i)
        many.Function_Add(("f" + std::to_string(i)).c_str(), -1, 0);
    ASSERT_TRUE(Read(table, {"func", Written(many).substr(32)}));
    for (int i = 0; i < 300; ++i)
        EXPECT_EQ(table.Function_Get(("F" + std::to_string(i)).c_str(), -1), table.Function_At(i));
    EXPECT_EQ(Written(table), Written(many));
}

TEST_F(FunctionTableTest, Parameters_Are_Split_As_Written) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "0 f(0:)"},
        {" x ,\ty var, z\n", "1 f(0: x 0/0 y 1/1 z 2/0)"},
        {"x \t VAR ,", "2 f(0: x 0/1)"},
        {"x variable,y va,z a var", "3 f(0: x 0/0 y 1/0 z 2/0)"},
        {"x,,x", "4 f(0: x 0/0  1/0 x 2/0)"},
        {"\fvar\v", "5 f(0: var 0/0)"},
        {"\vx\f\vvar\f", "6 f(0: x 0/1)"},
    };
    for (const auto& [text, told] : cases)
        EXPECT_EQ(Told(table.Function_Add(1, 2, "f", 1, text, -1, 0)), told);
    const int index = names.Entry_Add("last", -1);
    Function* const function = table.Function_Add(1, 2, "f", -1, "x", -1, 0);
    EXPECT_EQ(function->AddParameter(1, "y...", 1), 1);
    EXPECT_EQ(function->locals.Seek(-1, "Y", 1, nullptr), 1);
    EXPECT_EQ(function->name_index, index + 1); // one entry for each name, in the order of a program
    EXPECT_EQ(function->parameters.First()->name_index, index + 2);
}

TEST_F(FunctionTableTest, Section_Is_Read_And_Written_Back) {
    table.Function_Add("gone", -1, 0);
    ASSERT_TRUE(Read(table, {"func", section}));
    Dictionary copied_names(names);
    FunctionManager copy(nullptr, &copied_names, table);
    for (FunctionManager* functions : {&table, &copy}) {
        for (const char* told : {"0 main(1:)", "1 sum(4: a 0/0 b 1/1)", "2 max(0:)"})
            EXPECT_EQ(Told(functions->Function_Get(told + 2, static_cast<int>(strcspn(told, "(") - 2))),
                      told);
        EXPECT_EQ(functions->Function_Get("gone", -1), nullptr);
        EXPECT_EQ(functions->Function_At(1)->locals.Seek(-1, "B", 1, nullptr), 1);
        EXPECT_EQ(Written(*functions), Image({{"func", section}}));
    }
    EXPECT_EQ(copy.Function_Get("sum", -1)->locals.dictionary(), &copied_names);
    copy.Function_At(1)->AddParameter(0, "c", 1);
    copy.Function_Add("mi", -1, 0);
    EXPECT_EQ(Told(copy.Function_Get("sum", -1)), "1 sum(4: a 0/0 b 1/1 c 2/0)");
    EXPECT_EQ(Written(table), Image({{"func", section}}));

    const std::string wrapped = Patch{2, 32, 1}(section); // to one bucket
    ASSERT_TRUE(Read(table, {"func", wrapped}));
    EXPECT_EQ(Told(table.Function_Get("max", -1)), "2 max(0:)");
    EXPECT_EQ(Written(table), Image({{"func", wrapped}}));
}

TEST_F(FunctionTableTest, Fields_Out_Of_Range_Are_Refused) {
    ASSERT_TRUE(Read(table, {"func", section}));
    Expect_Refused(
        table, {"func", section},
        {{"function_list_header.bucket_bits out of range", {{2, 33, 1}, {2, -1, 1}, {0, 0x218000, 3}}},
         {"read_bucket_size out of range", {{2, 29, 1}, {2, 31, 1}}},
         {"function_list_header.function_count out of range", {{3, 0x10000000}, {3, INT_MAX}, {3, -1}}},
         {"function_list_header.bucket_entries out of range", {{0, -1, 2}, {0, 0x8000, 2}}},
         {"function_hash_bucket.index out of range", {{7, 1, 2}, {7, -1, 2}, {7, 0x7fff, 2}}},
         {"Invalid function header name index", {{first, 5}, {first, -1}, {second, INT_MAX}}},
         {"function_header.parameter_count out of range", {{second + 4, 0xaaaaaab}, {second + 4, -1}}},
         {"Invalid function parameter name index", {{second + 20, 5}, {second + 32, -1}}},
         {"variable_hash_header.bucket_bits out of range", {{second + 46, 33, 1}}},
         {"Invalid size", {{second + 4, 0xaaaaaaa}}},
         {"Unexpected end of file", {{0, 0x7fff, 2}, {3, 0xfffffff}, {second + 47, 0x7ffffff}}}});
}

TEST_F(FunctionTableTest, Damaged_Chains_End) {
    for (const Patch& patch :
         {Patch{links, 2}, {links, 0}, {links, 3}, {links, INT_MIN}, {head, 3}, {head, -2}}) {
        FunctionManager read(&names, 8);
        ASSERT_TRUE(Read(read, {"func", patch(section)}));
        EXPECT_EQ(Told(read.Function_Get("sum", -1)), patch.at == head ? "" : "1 sum(4: a 0/0 b 1/1)");
        EXPECT_EQ(read.Function_Get("zzzz", -1), nullptr);
        Function* const added = read.Function_Add("mi", -1, 0);
        EXPECT_EQ(read.Function_Get("MI", -1), added);
    }
}

} // namespace
