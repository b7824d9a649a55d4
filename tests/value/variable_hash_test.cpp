#include "core/string_hash.h"
#include "image/image_fixture.h"
#include "value/cloned_variable_hash.h"
#include "value/reference_variable_hash.h"
#include "value/system_variable_hash.h"
#include "value/user_variable_hash.h"
#include "value/value_support.h"
#include "value/variable_list.h"

class VariableHashTest : public testing::Test {
  protected:
    static Variable* Named(const char* name, const char* value) { return new Variable(name, -1, value, -1); }

    UserVariableHash table;
    Dictionary dictionary;
    SystemVariableHash system{&dictionary, 4, 0};
};

TEST_F(VariableHashTest, Names_Ignore_Case_And_Keep_Their_Slots) {
    VariableHash crowded(&dictionary, 1, 0, 0); // two chains
    for (int i = 0; i < 600; ++i)
        EXPECT_EQ(crowded.Insert(("Name_" + std::to_string(i)).c_str(), -1), i);
    EXPECT_EQ(crowded.Size(), 1024);
    EXPECT_EQ(crowded.Insert("nAME_1", -1), 600); // not refused, and not found
    EXPECT_EQ(crowded.Seek(-1, "naMe_1", -1, nullptr), 1);
    _VH_Entry* entry = nullptr;
    EXPECT_EQ(crowded.Seek(3, nullptr, -1, &entry), 3); // by the id of its name
    EXPECT_EQ(entry->id, 3);
    EXPECT_EQ(crowded.Insert(7777), 601);
    EXPECT_EQ(crowded.Seek(7777, nullptr, -1, nullptr), -1);
    EXPECT_TRUE(crowded.Index(601, 1)->IsNULL());
    EXPECT_EQ(crowded.Index(602, 1), nullptr);
    EXPECT_EQ(crowded.Index(-1, 1), nullptr);
}

TEST_F(VariableHashTest, Table_Takes_Over_One_Count) {
    VariableHold variable(Named("v", "1")), target = New("t");
    for (int i = 0; i < 3; ++i)
        table.SetVariable(Hold(variable.get()).release());
    EXPECT_EQ(variable->refcount(), 2);
    table.SetVariable_Reference(0, target.get());
    table.SetVariable_Reference(0, table.Index(0, 0)); // which it holds
    EXPECT_EQ(table.Index(0, 0)->NextIdentity(), target.get());
    EXPECT_EQ(table.Index(0, 0)->name().view(), "v");
    EXPECT_EQ(variable->refcount(), 1);
    table.SetVariable_Reference(1, target.get());
    table.Insert("null", -1);
    VariableList list;
    table.AllocatedVars(&list);
    EXPECT_EQ(list.Entries(), 1);
    EXPECT_EQ(target->refcount(), 3);
    table.Dump();
    EXPECT_EQ(Look(table, "V"), "-");
    EXPECT_EQ(Text(*list.First()), "t");
}

TEST_F(VariableHashTest, Compound_Names_Lead_To_Elements) {
    table.SetVariable("s", 1, "scalar", -1);
    const struct {
        const char* name;
        int create;
        const char* result; // "null", or "bad" for a malformed index
    } cases[] = {
        {"s", 0, "scalar"},       {"none", 0, "null"},     {"none:a[", 0, "null"},
        {"s:a", 0, "null"},       {"a[1]:b", 1, ""},       {"A[ 1 ]:B", 0, ""},
        {"a[1]:c", 0, "null"},    {"a[]", 0, "null"},      {"a[]", 1, ""},
        {"a[0]", 0, ""},          {"a[x]", 1, "bad"},      {"a[1", 1, "bad"},
        {"a[-1]", 1, "bad"},      {"a[1]b", 0, "bad"},     {"a[2147483648]", 1, "bad"},
        {"a[1]]", 0, "bad"},      {"a[\t2\n]", 0, "null"}, {"a[4294967297]", 1, "bad"},
        {"a[2147483647]", 1, ""}, {":m", 1, ""},           {"a[1]::", 1, ""},
        {"a[1:b]", 1, "bad"},
    };
    for (const auto& c : cases) {
        Variable* found = nullptr;
        const bool good = table.LookupVariable_Fancy(&found, c.name, -1, c.create);
        EXPECT_EQ(!good ? "bad" : found ? Text(*found) : "null", std::string(c.result)) << c.name;
        EXPECT_TRUE(good || !found) << c.name;
    }
    EXPECT_EQ(table.error().view(), "Array index must be positive integer");
    EXPECT_EQ(Look(table, "a:"), "none");
    std::string deep = "deep";
    for (int i = 0; i < 50000; ++i)
        deep += i % 2 ? "[1]" : ":m";
    table.SetVariable_Fancy(deep.data(), static_cast<int>(deep.size()), "leaf", -1, 0);
    EXPECT_EQ(Look(table, "deep"), "leaf");
}

TEST_F(VariableHashTest, Values_Are_Set_And_Appended_By_Compound_Names) {
    const char* const steps[][4] = {
        // name, value, "+" to append, what x then is
        {"x", "5", "+", "5"},     {"x", "6", "+", "5,6"}, {"x", "7", "+", "5,6,7"}, {"x", "1", "", "1"},
        {"x[2]", "8", "+", "8"},  {"x[", "9", "", "8"},   {"x:m", "2", "", "2"},    {"x", "3", "+", "3"},
        {"x[3]", "4", "", "3,4"}, {"x", "5", "+", "3,5"},
    };
    for (const auto& [name, value, append, result] : steps) {
        table.SetVariable_Fancy(name, -1, value, -1, *append);
        EXPECT_EQ(Look(table, "x"), result) << name << value;
    }
}

TEST_F(VariableHashTest, Copies_Share_Names_Not_Variables) {
    system.SetVariable(Named("a", "1"));
    VariableHash empty(system);
    EXPECT_EQ(Look(empty, "A"), "-");
    ClonedVariableHash clone(nullptr, &dictionary, system, true);
    clone.Push();
    clone.SetVariable(Named("a", "2"));
    clone.SetVariable_Fancy("a", -1, "4", 1, 1); // never appends
    EXPECT_EQ(clone.Version() - system.Version(), 1);
    EXPECT_EQ(Look(clone, "a"), "4");
    clone.Pop();
    _VH_Entry* entry = nullptr;
    EXPECT_EQ(clone.Seek(-1, "a", -1, &entry), 0);
    EXPECT_EQ(entry->version, -1); // as before the scope: that of a copy
}

// A table as a part of an image: what it writes to its section, and reads from there.
struct Persisted {
    VariableHash& table;
    static constexpr int tag = 0x73726176; // "vars"

    bool Read(TaggedFile* file) { return table.Read(file, tag); }
    bool Write(TaggedFile* file) { return table.Write(file, tag); }
};

// The names main, sum, max, a and b, in slots of these numbers and one chain, the shortest first.
Section Table(int bits) {
    return {"vars", Number(1, 2) + Number(bits, 1) + Number(5, 4) + Number(0, 2) + Number(3, 4) +
                        Dwords({0, -1, 1, 0, 2, 1, 3, 4, 4, 2})};
}

using VariableHashImageTest = ImageTest;

TEST_F(VariableHashImageTest, Table_Comes_Back_Without_Variables) {
    for (const int bits : {0, 32}) { // one bucket
        VariableHash read(&names, 12, 512, 0);
        Persisted part{read};
        read.SetVariable("main", -1, "gone", -1);
        ASSERT_TRUE(Read(part, Table(bits)));
        EXPECT_EQ(read.Size(), 5);
        EXPECT_EQ(Look(read, "main") + Look(read, "Sum") + Look(read, "none"), "--none");
        EXPECT_EQ(read.Index(1, 1)->name().view(), "sum");
        EXPECT_EQ(Written(part), Image({Table(bits)}));
        EXPECT_EQ(read.Insert("more", -1), 5);
        EXPECT_EQ(read.Seek(-1, "More", -1, nullptr), 5);
    }
    for (const int link : {-1, 3, 9}) { // the end of its chain, back, and to no slot, which ends it
        VariableHash read(&names, 12, 512, 0);
        Persisted part{read};
        ASSERT_TRUE(Read(part, {"vars", Patch{25, link}(Table(0).second)}));
        EXPECT_EQ(Look(read, "other"), "none");
        EXPECT_EQ(Written(part), Image({{"vars", Patch{25, link < 5 ? link : -1}(Table(0).second)}}));
    }
    VariableHash small(&names, 3, 0, 0);
    Persisted part{small};
    small.Insert(4);
    EXPECT_EQ(Written(part), Image({{"vars", Number(1, 2) + Number(3, 1) + Number(1, 4) +
                                                 Number(hashi("b", 1, 0) & 7, 2) + Dwords({0, 4, -1})}}));
}

TEST_F(VariableHashImageTest, View_Knows_Names_By_Its_Own_Numbers) {
    Dictionary target_names;
    VariableHash plain(&target_names, 4, 0, 0);
    SystemVariableHash system(&target_names, 4, 0);
    for (VariableHash* target : {&plain, static_cast<VariableHash*>(&system)}) {
        target->SetVariable("other", -1, "0", 1);
        target->SetVariable("SUM", -1, "1", 1);
        ReferenceVariableHash view(&names, target, 4, 0);
        Persisted part{view};
        ASSERT_TRUE(Read(part, Table(0)));
        EXPECT_EQ(Look(view, "main"), "-"); // a slot here, none there
        EXPECT_EQ(view.Index(0, 0), nullptr);
        EXPECT_EQ(view.Index(0, 1)->name().view(), "main");
        EXPECT_EQ(Look(*target, "main"), "");
        EXPECT_EQ(Look(view, "other"), "0"); // a slot there, none here
        EXPECT_EQ(Text(*view.Index(1, 0)), "1");
        view.SetVariable("max", -1, "2", 1);
        EXPECT_EQ(view.Seek(-1, "max", -1, nullptr), 3);
        EXPECT_EQ(Text(*view.Index(2, 0)), "2");
        view.SetVariable_Reference(3, target->Index(0, 0));
        EXPECT_EQ(Look(*target, "a"), "0");
        EXPECT_EQ(view.Index(5, 1), nullptr);
        EXPECT_EQ(view.Size(), 5);
        Variable* found = nullptr;
        EXPECT_FALSE(view.LookupVariable_Fancy(&found, "main[", -1, 1));
        EXPECT_EQ(view.error().view(), "Array index must be positive integer");
        // A clone of the view has a target of its own, with names of its own.
        const int known = target_names.Entry_Add("", 0);
        ClonedVariableHash clone(nullptr, &names, view, true);
        EXPECT_EQ(Text(*clone.Index(1, 0)), "1");
        clone.SetVariable("sum", -1, "changed", -1);
        EXPECT_EQ(Text(*view.Index(1, 0)), "1");
        clone.SetVariable("added", -1, "x", 1);
        EXPECT_EQ(target_names.Entry_Add("", 0), known + 1);
    }
}
