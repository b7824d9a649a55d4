#include "extension/external_call.h"
#include "extension/unix_external_library.h"
#include "value/variable.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string>

namespace {

// Null unless the library is loaded.
void* Symbol(const char* path, const char* name) {
    void* const library = dlopen(path, RTLD_LAZY | RTLD_NOLOAD);
    if (library)
        dlclose(library);
    return library ? dlsym(library, name) : nullptr;
}

const char* const missing_path = "/nowhere/at-all.so";

TEST(ExternalLibrary, Is_Loaded_Once_And_Closed_Unless_It_Is_To_Last) {
    std::unique_ptr<ExternalLibrary> lasting;
    {
        UNIXExternalLibraryManager libraries;
        ExternalLibrary* const whole = libraries.Lookup(whole_library_path, ExternalLibrary::BUILTIN);
        ASSERT_NE(whole, nullptr);
        EXPECT_EQ(libraries.Lookup(whole_library_path, ExternalLibrary::LASTING), whole);
        lasting.reset(libraries.Lookup(symbolless_library_path, ExternalLibrary::LASTING));
        whole->filename = "of another name";
    }
    EXPECT_EQ(Symbol(whole_library_path, "calls"), nullptr);
    EXPECT_NE(Symbol(symbolless_library_path, "calls"), nullptr);
    UNIXExternalLibrary library;
    EXPECT_EQ(library.Get_Function("malloc"), nullptr);
    for (const char* const path : {whole_library_path, whole_library_path, symbolless_library_path}) {
        ASSERT_TRUE(library.Load(path, RTLD_LAZY)); // in place of the one before
        EXPECT_FALSE(library.Load(missing_path, RTLD_LAZY));
        EXPECT_EQ(library.Get_Function("calls"), Symbol(path, "calls"));
    }
    EXPECT_EQ(Symbol(whole_library_path, "calls"), nullptr);
}

class ExternalCallTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(calls.RegisterDSO(whole_library_path)) << calls.lasterror.text(); }
    template <class T>
    static T& Value(const char* name) {
        return *static_cast<T*>(Symbol(whole_library_path, name));
    }
    UNIXExternalLibraryManager libraries;
    ExternalCallManager calls{&libraries};
};

TEST_F(ExternalCallTest, Functions_Are_Found_In_Any_Case_And_The_First_Of_Its_Name) {
    ExternalCallManager later(&libraries);
    EXPECT_EQ(later.Lookup_External("keeper", -1), nullptr);
    Value<const void*>("answer") = &Value<char>("functionless");
    for (int count = 0; count < 40; ++count)
        ASSERT_TRUE(later.RegisterDSO(whole_library_path));
    EXPECT_EQ(later.Lookup_External("keeper", -1), nullptr);
    const _TN_EL_Function shadowed[] = {{"keeper", 6, 2, nullptr, nullptr}, {}};
    const _TN_EL_Descriptor second = {nullptr, shadowed};
    Value<const void*>("answer") = &second;
    ASSERT_TRUE(calls.RegisterDSO(whole_library_path));
    Value<const void*>("answer") = &Value<char>("whole");
    ExternalCallManager copy(&libraries, later); // registers anew
    for (ExternalCallManager* const manager : {&calls, &copy}) {
        ExternalCall* const keeper = manager->Lookup_External("KEEPERS", 6);
        ASSERT_NE(keeper, nullptr);
        EXPECT_EQ(keeper->record->parameter_count, 0);
        EXPECT_TRUE(Parameters_Of(*manager->Lookup_External("blank", -1)->record).empty());
        EXPECT_EQ(manager->Lookup_External("keeper", -1), keeper);
        EXPECT_EQ(manager->Lookup_External("keep", -1), nullptr);
        EXPECT_EQ(manager->Lookup_External(nullptr, -1), nullptr);
    }
    ASSERT_TRUE(later.RegisterDSO(whole_library_path));
    EXPECT_NE(later.Lookup_External("Swap_In", -1), calls.Lookup_External("swap_in", -1));
}

TEST_F(ExternalCallTest, Refused_Libraries_Tell_Why) {
    EXPECT_FALSE(calls.RegisterDSO(symbolless_library_path));
    EXPECT_EQ(calls.lasterror.view(), "Unknown symbol 'tarn_function_table'");
    Value<const void*>("answer") = nullptr;
    EXPECT_FALSE(calls.RegisterDSO(whole_library_path));
    EXPECT_EQ(calls.lasterror.view(), "Unable to retrieve function descriptor table");
    EXPECT_FALSE(calls.RegisterDSO(missing_path));
    EXPECT_TRUE(calls.lasterror.contains(missing_path));
}

TEST_F(ExternalCallTest, Result_Is_Made_Anew_Where_It_Is_Held) {
    ExternalCall* const blank = calls.Lookup_External("swap_in", -1);
    Value<void (*)()>("on_release") = [] {};
    Variable* const held = blank->result;
    held->SetValue("left", 4);
    held->IncRefCount();
    EXPECT_EQ(blank->Call(nullptr, nullptr), 1);
    EXPECT_NE(blank->result, held);
    EXPECT_EQ(held->refcount(), 1);
    EXPECT_FALSE(held->IsNULL());
    held->DecRefCount();
    const Variable* const reused = blank->result;
    blank->result->SetValue("left", 4);
    EXPECT_EQ(blank->Call(nullptr, nullptr), 1);
    EXPECT_EQ(blank->result, reused);
    EXPECT_TRUE(blank->result->IsNULL());
    EXPECT_EQ(Value<int>("calls"), 2);
}

// What is found while something is released.
ExternalCallManager* asked;
std::string told;

void Free(void* vm, void* value) {
    told += vm ? "?" : static_cast<const char*>(value);
    for (const char* const name : {"pool", "cache", "later"})
        told += asked->Lookup_Persistent(name, -1) ? std::string(" ") + name : "";
    for (const char* const name : {"keeper", "swap_in", "blank"})
        told += asked->Lookup_External(name, -1) ? std::string(" ") + name : "";
}

TEST_F(ExternalCallTest, What_Is_Released_Is_Not_Found_Any_More) {
    static char texts[][10] = {"; old:", "; pool:", "; cache:", "; data:", "; later:"};
    told.clear();
    {
        ExternalCallManager dying(&libraries);
        asked = &dying;
        dying.Register_Persistent(nullptr, "Pool", -1, texts[0], Free);
        EXPECT_EQ(dying.Lookup_Persistent("poolside", 4), texts[0]);
        dying.Register_Persistent(nullptr, "POOL", 4, texts[1], Free);
        dying.Register_Persistent(nullptr, "byte", -1, new char, nullptr);
        dying.Register_Persistent(nullptr, "cache", -1, texts[2], Free);
        ASSERT_TRUE(dying.RegisterDSO(whole_library_path));
        Value<void (*)()>("on_release") = [] {
            Free(nullptr, texts[3]);
            asked->Register_Persistent(nullptr, "later", -1, texts[4], Free);
        };
        for (const char* const name : {"keeper", "swap_in"})
            dying.Lookup_External(name, -1)->Call(nullptr, nullptr);
    }
    EXPECT_EQ(told, "; old:; pool: cache keeper swap_in; cache: keeper swap_in"
                    "; data: swap_in; data: later; later:; later:");
}

} // namespace
