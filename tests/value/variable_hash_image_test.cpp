#include "core/string_hash.h"
#include "image/image_fixture.h"
#include "value/cloned_variable_hash.h"
#include "value/reference_variable_hash.h"
#include "value/system_variable_hash.h"
#include "value_fixture.h"

// A table as a part of an image: what it writes to its section, and reads from there.
struct Persisted {
    VariableHash& table;
    static constexpr int tag = 0x73726176; // "vars"

    bool Read(TaggedFile* file) { return table.Read(file, tag); }
    bool Write(TaggedFile* file) { return table.Write(file, tag); }
    const String& error() { return table.error(); }
};

class VariableHashImageTest : public ImageTest {
  protected:
    // The names main, sum, max, a and b, in slots of these numbers and one chain, the shortest first.
    static Section Table(int bits) {
        return {"vars", Number(1, 2) + Number(bits, 1) + Number(5, 4) + Number(0, 2) + Number(3, 4) +
                            Dwords({0, -1, 1, 0, 2, 1, 3, 4, 4, 2})};
    }
    bool Load(VariableHash& table, const Section& section) {
        Persisted part{table};
        return Read(part, section);
    }
    std::string Saved(VariableHash& table) {
        Persisted part{table};
        return Written(part);
    }
};

TEST_F(VariableHashImageTest, Table_Comes_Back_Without_Variables) {
    for (const int bits : {0, 32}) { // one bucket
        VariableHash table(&names, 0, 2, 0);
        for (int id = 0; id < 5; ++id)
            table.Insert(id);
        table.SetVariable("sum", -1, "1", 1);
        EXPECT_EQ(Saved(table), Image({Table(0)}));
        VariableHash read(&names, 12, 512, 0);
        read.SetVariable("main", -1, "gone", -1);
        ASSERT_TRUE(Load(read, Table(bits)));
        EXPECT_EQ(read.Size(), 5);
        EXPECT_EQ(Look(read, "main") + Look(read, "Sum") + Look(read, "none"), "--none");
        EXPECT_EQ(read.Index(1, 1)->name().view(), "sum");
        EXPECT_EQ(Saved(read), Image({Table(bits)}));
        EXPECT_EQ(read.Insert("more", -1), 5);
        EXPECT_EQ(read.Seek(-1, "More", -1, nullptr), 5);
    }
    VariableHash small(&names, 3, 0, 0);
    small.Insert(4);
    EXPECT_EQ(Saved(small), Image({{"vars", Number(1, 2) + Number(3, 1) + Number(1, 4) +
                                                Number(hashi("b", 1, 0) & 7, 2) + Dwords({0, 4, -1})}}));
}

TEST_F(VariableHashImageTest, Damaged_Table_Is_Refused) {
    VariableHash table(&names, 12, 512, 0);
    ASSERT_TRUE(Load(table, Table(0)));
    Persisted part{table};
    Expect_Refused(part, Table(0),
                   {{"variable_hash_header.bucket_bits out of range", {{2, 33, 1}, {0, -1}}},
                    {"read_bucket_size out of range", {{2, 29, 1}, {2, 0xffffff1d}}},
                    {"variable_hash_header.variable_count out of range", {{3, 0x8000000}, {3, -1}}},
                    {"variable_hash_header.bucket_entries out of range", {{0, -1, 2}}},
                    {"variable_hash_bucket.index out of range", {{7, 1, 2}, {7, -1, 2}}}});
    EXPECT_FALSE(Load(table, {"vars", Patch{3, 0x7ffffff}(Table(0).second)})); // more than the file has
    EXPECT_EQ(Look(table, "max"), "-");
    const std::string bytes = Table(0).second;
    ASSERT_TRUE(Load(table, {"vars", Patch{25, 9}(bytes)})); // a link to no slot ends its chain
    EXPECT_EQ(Saved(table), Image({{"vars", Patch{25, -1}(bytes)}}));
}

// Heads, links and ids that point anywhere: whatever is read, searches end and stay inside.
TEST_F(VariableHashImageTest, Damaged_Chains_End) {
    const Section section = Table(4);
    for (std::size_t at = 7; at < section.second.size(); ++at)
        for (const int value : {0, 1, 2, 4, 5, 0x7f, 0x80, 0xff}) {
            VariableHash read(&names, 4, 0, 0);
            if (!Load(read, {"vars", Patch{at, value, 1}(section.second)}))
                continue;
            for (const char* name : {"main", "sum", "max", "a", "b", "none"})
                Look(read, name, 1);
            for (int i = 0; i < 4; ++i)
                read.Insert(("new" + std::to_string(i)).c_str(), -1);
            EXPECT_EQ(Look(read, "NEW3"), "-");
            for (int slot = 0; slot < read.Entries(); ++slot)
                EXPECT_NE(read.Index(slot, 1), nullptr);
        }
}

TEST_F(VariableHashImageTest, View_Knows_Names_By_Its_Own_Numbers) {
    Dictionary target_names;
    VariableHash plain(&target_names, 4, 0, 0);
    SystemVariableHash system(&target_names, 4, 0);
    for (VariableHash* target : {&plain, static_cast<VariableHash*>(&system)}) {
        target->SetVariable("other", -1, "0", 1);
        target->SetVariable("SUM", -1, "1", 1);
        ReferenceVariableHash view(&names, target, 4, 0);
        ASSERT_TRUE(Load(view, Table(0)));
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
        view.Insert("more", -1);
        EXPECT_EQ(view.Entries(), 6);
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
        clone.Push();
        EXPECT_EQ(clone.Pop(), target == &system);
    }
}
