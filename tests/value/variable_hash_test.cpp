#include "image/dictionary.h"
#include "value/cloned_variable_hash.h"
#include "value/system_variable_hash.h"
#include "value/user_variable_hash.h"
#include "value/variable_list.h"
#include "value_fixture.h"

#include <map>
#include <optional>
#include <random>
#include <utility>
#include <vector>

class VariableHashTest : public ValueTest {
  protected:
    static Variable* Named(const char* name, const char* value) { return new Variable(name, -1, value, -1); }

    UserVariableHash table;
    Dictionary dictionary;
    SystemVariableHash system{&dictionary, 4, 0};
};

TEST_F(VariableHashTest, Names_Ignore_Case_And_Keep_Their_Slots) {
    VariableHash crowded(&dictionary, 1, 0, 0); // two chains
    for (int i = 0; i < 600; ++i)
        EXPECT_EQ(crowded.Insert(("Name_" + std::to_string(i * 7 % 600)).c_str(), -1), i);
    EXPECT_EQ(crowded.Size(), 1024);
    for (int i = 0; i < 600; ++i)
        EXPECT_EQ(crowded.Seek(-1, ("nAME_" + std::to_string(i * 7 % 600)).c_str(), -1, nullptr), i);
    EXPECT_EQ(crowded.Seek(-1, "Name_", -1, nullptr), -1);
    EXPECT_EQ(crowded.Insert("name_7", -1), 600); // not refused, and not found
    EXPECT_EQ(crowded.Seek(-1, "name_7", -1, nullptr), 1);
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
    VariableHold variable(Named("v", "1"));
    for (int i = 0; i < 3; ++i)
        table.SetVariable(Hold(variable.get()).release());
    EXPECT_EQ(variable->refcount(), 2);
    VariableHold target = New("t");
    table.SetVariable_Reference(0, target.get());
    EXPECT_EQ(variable->refcount(), 1);
    Variable* reference = table.Index(0, 0);
    EXPECT_EQ(reference->RealIdentity(), target.get());
    EXPECT_EQ(reference->name().view(), "v");
    table.SetVariable_Reference(0, reference);
    EXPECT_EQ(table.Index(0, 0), reference);
    table.SetVariable_Reference(1, target.get());
    EXPECT_EQ(target->refcount(), 2);
    VariableList list;
    table.Insert("null", -1);
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
    EXPECT_EQ(Look(system, "a"), "1");
    EXPECT_EQ(Text(*clone.Index(0, 0)), "4");
    clone.Pop();
    EXPECT_EQ(Look(clone, "a"), "1");
    _VH_Entry* entry = nullptr;
    EXPECT_EQ(clone.Seek(-1, "a", -1, &entry), 0);
    EXPECT_EQ(entry->version, -1); // as before the scope: that of a copy
    table.SetVariable("b", 1, "3", 1);
    EXPECT_EQ(Look(*std::make_unique<ClonedVariableHash>(nullptr, table.dictionary(), table, true), "b"),
              "3");
    system.Push(); // left open, with something saved
    system.SetVariable(Named("a", "5"));
}

// Scopes are of the table with them; what they recorded is put back in this order.
void Agree_With_A_Model(VariableHash& real, bool scoped) {
    using Content = std::optional<std::string>;
    std::mt19937 random{7};
    std::map<std::string, int> slots;
    std::vector<Content> contents;
    std::vector<std::vector<std::pair<int, Content>>> scopes;
    auto store = [&](const std::string& name, const Content& content) {
        const auto [place, is_new] = slots.try_emplace(name, static_cast<int>(contents.size()));
        if (is_new)
            contents.emplace_back();
        if (!scopes.empty())
            scopes.back().emplace_back(place->second, contents[place->second]);
        contents[place->second] = content;
    };
    for (int step = 0; step < 5000; ++step) {
        const std::string name = "name" + std::to_string(random() % 40);
        const std::string value = std::to_string(step);
        const auto place = slots.find(name);
        Content* there = place == slots.end() ? nullptr : &contents[place->second];
        const bool has_value = there && *there;
        switch (random() % 9) {
        case 0:
            real.SetVariable(new Variable(name.c_str(), -1, value.c_str(), -1)), store(name, value);
            break;
        case 1:
            if (!scopes.empty() || !there)
                real.Insert(name.c_str(), -1), store(name, std::nullopt);
            break;
        case 2:
            real.SetVariable(name.c_str(), -1, value.c_str(), -1);
            has_value ? void(*there = value) : store(name, value); // in place, which no scope takes back
            break;
        case 3:
            Look(real, name.c_str(), 1);
            if (there && !has_value)
                store(name, "");
            break;
        case 4:
            if (there)
                real.SetVariable_Reference(place->second, VariableHold(new Variable("", 0, step)).get()),
                    store(name, value);
            break;
        case 5:
            EXPECT_EQ(real.ClearVariable(name.c_str(), -1), has_value);
            if (has_value)
                *there = "";
            break;
        case 6:
            real.Push();
            scopes.resize(scopes.size() + scoped);
            break;
        default:
            EXPECT_EQ(real.Pop(), !scopes.empty());
            if (scopes.empty())
                break;
            for (const auto& [slot, content] : scopes.back())
                contents[slot] = content;
            scopes.pop_back();
        }
        const auto now = slots.find(name);
        ASSERT_EQ(Look(real, name.c_str()),
                  now == slots.end() ? "none" : contents[now->second].value_or("-"));
        ASSERT_EQ(real.Entries(), static_cast<int>(contents.size()));
    }
}

TEST_F(VariableHashTest, Random_Operations_Agree_With_A_Model) {
    ClonedVariableHash clone(nullptr, &dictionary, table, true); // holds its variables itself
    Agree_With_A_Model(clone, false);
    EXPECT_EQ(clone.RealIdentity(), &clone);
    EXPECT_EQ(table.Entries(), 0);
    Agree_With_A_Model(table, false);
    Agree_With_A_Model(system, true);
}

TEST(VariableScope, Comes_From_The_Prefix) {
    const struct {
        const char* text;
        const char* split; // the scope's number, the name, and "of" the alias
    } cases[] = {
        {"", "5 "},
        {"l.", "0 "},
        {"S.x.y", "2 x.y"},
        {"d.x", "3 x of "},
        {"D.d.x", "3 x of D"},
        {"x.y", "5 x.y"},
        {"a.D.x", "3 x of a"},
        {"l.d.", "0 d."},
        {"a.database.x", "3 x of a"},
        {"g.database.", "1 database."},
        {"name", "5 name"},
        {"LOCAL.d.x", "0 d.x"},
        {"Global.", "1 "},
        {"system.x", "2 x"},
        {"xy.d.", "3  of xy"},
        {".d.z", "3 z of "},
        {"xy.DataBase.z", "3 z of xy"},
        {"database.xy", "3 xy of "},
        {"database.x", "5 database.x"},
        {"database.d.x", "3 x of database"},
    };
    for (const auto& c : cases) {
        const char* name = nullptr;
        const char* alias = nullptr;
        int name_length = 0;
        int alias_length = 0;
        const int scope = VariableHash::Scope(c.text, -1, &name, &name_length, &alias, &alias_length);
        std::string split = std::to_string(scope) + " " + std::string(name, name_length);
        if (alias)
            split += " of " + std::string(alias, alias_length);
        EXPECT_EQ(split, c.split) << c.text;
    }
}
