#include "image/function_table.h"

#include "image_fixture.h"

#include <climits>

namespace {

class FunctionTableTest : public ImageTest {
  protected:
    FunctionTableTest() {
        for (const char* text : {"main", "sum", "max", "a", "b"})
            names.Entry_Add(text, -1);
    }
    bool Read_Functions(FunctionManager& into, const std::string& bytes) {
        return Read(into, {{"func", bytes}, {"more", std::string(100, '\0')}});
    }
    // "name(flags: parameter slot/flags ...)" for a function, "" for none.
    static std::string Told(Function* function) {
        if (!function)
            return "";
        std::string text = std::string(function->name.view()) + "(" + std::to_string(function->flags) + ":";
        for (auto* p = function->parameters.First(); p; p = function->parameters.Next())
            text += " " + std::string(p->name.view()) + " " + std::to_string(p->ident) + "/" +
                    std::to_string(p->flags);
        return text + ")";
    }
    // The chain of a table of one bucket, by name.
    std::string Chain(FunctionManager& functions) {
        const std::string bytes = Written(functions).substr(32);
        std::string text;
        for (int at = bytes[9]; at >= 0 && at < functions.Entries(); at = bytes[13 + 4 * at])
            text += std::string(functions.Function_At(at)->name.view()) + " ";
        return text;
    }

    Dictionary names;
    FunctionManager table{&names, 0};
    // One bucket: max, sum, main. The function sum has the parameters a and b; main is known by its name.
    static constexpr int head = 9;
    static constexpr int links = 13;
    static constexpr int first = 25;
    static constexpr int second = first + 27;
    const std::string no_locals = Word(0) + "\x08" + Dwords({0});
    const std::string locals =
        Word(1) + std::string(1, '\0') + Dwords({2}) + Word(0) + Dwords({0, 3, 1, 4, -1});
    const std::string section = Word(1) + std::string(1, '\0') + Dwords({3}) + Word(0) +
                                Dwords({2, -1, 0, 1}) + Dwords({0, 0, 1, -1, -1}) + no_locals +
                                Dwords({1, 2, 4, 100, 200, 3, 0, 0, 4, 1, 1}) + locals +
                                Dwords({2, 0, 0, 300, 400}) + no_locals;
};

TEST_F(FunctionTableTest, Chains_Are_Sorted_And_Ignore_Case) {
    for (const char* name : {"bb", "c", "BA", "aa", "_a", "ccc", "bB"})
        table.Function_Add(name, -1, 4);
    EXPECT_EQ(Chain(table), "c _a aa BA bb bB ccc ");
    EXPECT_EQ(table.Function_Get("BB", -1), table.Function_At(0));
    EXPECT_EQ(Told(table.Function_Get("ba..", 2)), "BA(5:)");
    for (const char* name : {"", "a", "ab", "bc", "cc", "dddd"})
        EXPECT_EQ(table.Function_Get(name, -1), nullptr) << name;
    EXPECT_EQ(table.Function_At(7), nullptr);
    EXPECT_EQ(table.Function_At(-1), nullptr);
}

TEST_F(FunctionTableTest, Many_Functions_Are_Found) {
    FunctionManager functions(&names, 4);
    for (int i = 0; i < 300; i++)
        functions.Function_Add(("f" + std::to_string(i)).c_str(), -1, 0);
    for (int i = 0; i < 300; i++)
        EXPECT_EQ(functions.Function_Get(("F" + std::to_string(i)).c_str(), -1), functions.Function_At(i));
    FunctionManager read(&names, 0);
    Written(functions);
    TaggedFile file(&files);
    ASSERT_TRUE(file.Open(path.c_str(), FILE_MODE_READ));
    ASSERT_TRUE(read.Read(&file));
    for (int i = 0; i < 300; i++)
        EXPECT_EQ(read.Function_Get(("F" + std::to_string(i)).c_str(), -1), read.Function_At(i));
    EXPECT_EQ(Written(read), Written(functions));
}

TEST_F(FunctionTableTest, Parameters_Are_Split_As_Written) {
    const struct {
        const char* text;
        const char* told;
    } cases[] = {
        {"", "f(0:)"},
        {"x", "f(0: x 0/0)"},
        {" x ,\ty var, z\n", "f(0: x 0/0 y 1/1 z 2/0)"},
        {"x \t VAR ,", "f(0: x 0/1)"},
        {"x variable,y va,z a var", "f(0: x 0/0 y 1/0 z 2/0)"},
        {"x,,y", "f(0: x 0/0  1/0 y 2/0)"},
        {"x,x", "f(0: x 0/0 x 1/0)"},
        {"var", "f(0: var 0/0)"},
    };
    for (const auto& c : cases) {
        Function* const function = table.Function_Add(1, 2, "f", 1, c.text, -1, 0);
        EXPECT_EQ(Told(function), c.told);
        EXPECT_EQ(function->locals.Entries(), function->parameters.Entries());
        EXPECT_EQ(function->body_a + function->body_b, 3);
    }
    std::string many;
    for (int i = 0; i < 1000; i++)
        many += "p" + std::to_string(i) + ", ";
    EXPECT_EQ(table.Function_Add(1, 2, "f", 1, many.data(), -1, 0)->parameters.Entries(), 1001); // one blank
}

TEST_F(FunctionTableTest, Parameter_Is_A_Local_With_One_Name) {
    Function* const function = table.Function_Add(new Function(&names, 0), "f", -1);
    EXPECT_EQ(function->name.index(), 5);
    EXPECT_EQ(function->body_a, -1);
    EXPECT_EQ(function->AddParameter(0, "x", -1), 0);
    EXPECT_EQ(function->AddParameter(1, "y...", 1), 1);
    EXPECT_EQ(function->locals.Seek(-1, "Y", 1, nullptr), 1);
    EXPECT_EQ(names.Entry_Add("next", -1), 8);
}

TEST_F(FunctionTableTest, Section_Is_Read_And_Written_Back) {
    table.Function_Add("gone", -1, 0);
    ASSERT_TRUE(Read_Functions(table, section));
    EXPECT_EQ(Told(table.Function_Get("MAIN", -1)), "main(1:)");
    EXPECT_EQ(Told(table.Function_Get("sum", -1)), "sum(4: a 0/0 b 1/1)");
    EXPECT_EQ(Told(table.Function_Get("max", -1)), "max(0:)");
    EXPECT_EQ(table.Function_Get("gone", -1), nullptr);
    EXPECT_EQ(table.Function_At(1)->body_b, 200);
    EXPECT_EQ(table.Function_At(1)->locals.Seek(-1, "B", 1, nullptr), 1);
    EXPECT_EQ(Written(table), Image({{"func", section}}));

    Dictionary copied_names(names);
    FunctionManager copy(nullptr, &copied_names, table);
    table.Function_At(1)->AddParameter(0, "c", 1);
    table.Function_Add("mi", -1, 0);
    EXPECT_EQ(Chain(table), "mi max sum main ");
    EXPECT_EQ(Written(copy), Image({{"func", section}}));
    EXPECT_EQ(copy.Function_Get("sum", -1)->locals.dictionary(), &copied_names);

    ASSERT_TRUE(Read_Functions(table, Word(0) + "\x0c" + Dwords({0})));
    EXPECT_EQ(table.Entries(), 0);
}

TEST_F(FunctionTableTest, Bucket_Bits_Of_32_Are_One_Bucket) {
    ASSERT_TRUE(Read_Functions(table, Patched(section, 2, "\x20")));
    EXPECT_NE(table.Function_Get("sum", -1), nullptr);
    EXPECT_EQ(Written(table), Image({{"func", Patched(section, 2, "\x20")}}));
}

TEST_F(FunctionTableTest, Fields_Out_Of_Range_Are_Refused) {
    const char* const bits = "function_list_header.bucket_bits out of range";
    const char* const size = "read_bucket_size out of range";
    const char* const count = "function_list_header.function_count out of range";
    const char* const entries = "function_list_header.bucket_entries out of range";
    const char* const index = "function_hash_bucket.index out of range";
    const char* const name = "Invalid function header name index";
    const char* const parameters = "function_header.parameter_count out of range";
    const char* const parameter_name = "Invalid function parameter name index";
    const char* const cut = "Unexpected end of file";
    const Refusal cases[] = {
        {2, "\x21", bits},
        {2, "\xff", bits},
        {2, "\x1d", size},
        {2, "\x1f", size},
        {3, Dwords({0x10000000}), count},
        {3, Dwords({0x20000000}), count},
        {3, Dwords({-1}), count},
        {3, Dwords({0xfffffff}), cut},
        {3, Dwords({INT_MAX}), count},
        {0, Word(0xffff), entries},
        {0, Word(0x8000), entries},
        {0, Word(0x7fff), cut},
        {0, Word(0x8000) + "\x21", bits},
        {7, Word(1), index},
        {7, Word(0xffff), index},
        {7, Word(0x7fff), index},
        {first, Dwords({5}), name},
        {first, Dwords({-1}), name},
        {second, Dwords({INT_MAX}), name},
        {second + 4, Dwords({0xaaaaaab}), parameters},
        {second + 4, Dwords({-1}), parameters},
        {second + 4, Dwords({0xaaaaaaa}), cut},
        {second + 20, Dwords({5}), parameter_name},
        {second + 32, Dwords({-1}), parameter_name},
        {second + 46, "\x21", "variable_hash_header.bucket_bits out of range"},
        {second + 51, Word(1), "variable_hash_bucket.index out of range"},
    };
    ASSERT_TRUE(Read_Functions(table, section));
    const std::string before = Written(table);
    for (const Refusal& c : cases) {
        EXPECT_FALSE(Read_Functions(table, Patched(section, c.at, c.patch))) << c.at;
        EXPECT_EQ(table.error().view(), c.error) << c.at;
    }
    for (size_t length = 0; length < section.size(); length++)
        EXPECT_FALSE(Read_Functions(table, section.substr(0, length))) << length;
    EXPECT_EQ(Written(table), before);
}

TEST_F(FunctionTableTest, Damaged_Chains_End) {
    const Refusal cases[] = {
        {links, Dwords({2}), ""}, // a circle
        {links, Dwords({0}), ""}, {links, Dwords({3}), ""}, {links, Dwords({INT_MIN}), ""},
        {head, Dwords({3}), ""},  {head, Dwords({-2}), ""}, {head, Dwords({INT_MAX}), ""},
    };
    for (const Refusal& c : cases) {
        FunctionManager read(&names, 8);
        ASSERT_TRUE(Read_Functions(read, Patched(section, c.at, c.patch))) << c.at;
        EXPECT_EQ(Told(read.Function_Get("sum", -1)), c.at == head ? "" : "sum(4: a 0/0 b 1/1)");
        EXPECT_EQ(read.Function_Get("zzzz", -1), nullptr);
        Function* const added = read.Function_Add("mi", -1, 0);
        EXPECT_EQ(read.Function_Get("MI", -1), added);
        Written(read);
    }
}

TEST_F(FunctionTableTest, More_Buckets_Than_The_Format_Has_Are_Not_Written) {
    FunctionManager wide(&names, 20);
    for (int i = 0; i < 100; i++)
        wide.Function_Add(("f" + std::to_string(i)).c_str(), -1, 0);
    TaggedFile file(&files);
    ASSERT_TRUE(file.Create(path.c_str(), nullptr, 0));
    EXPECT_FALSE(wide.Write(&file));
    EXPECT_EQ(wide.error().view(), "function_hash_bucket.index out of range");
}

} // namespace
