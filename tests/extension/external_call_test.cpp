#include "extension/external_call.h"

#include "extension/unix_external_library.h"
#include "value/variable.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <string>

namespace {

std::string Text(const String& string) {
    return {string.text(), static_cast<std::size_t>(string.length())};
}

int& Counter(const char* name) {
    void* const library = dlopen(whole_library_path, RTLD_LAZY | RTLD_NOLOAD);
    int* const counter = static_cast<int*>(dlsym(library, name));
    dlclose(library);
    return *counter;
}

TEST(ExternalCallManager, Finds_Functions_In_Any_Case_And_The_First_Of_Its_Name) {
    UNIXExternalLibraryManager libraries;
    ExternalCallManager calls(&libraries);
    EXPECT_EQ(calls.Lookup_External("keeper", -1), nullptr);
    ASSERT_TRUE(calls.RegisterDSO(functionless_library_path));
    ASSERT_TRUE(calls.RegisterDSO(whole_library_path)) << calls.lasterror.text();
    ASSERT_TRUE(calls.RegisterDSO(whole_library_path));

    ExternalCall* const keeper = calls.Lookup_External("KEEPERS", 6);
    ASSERT_NE(keeper, nullptr);
    EXPECT_EQ(keeper->record->parameter_count, 0);
    EXPECT_EQ(calls.Lookup_External("keeper", -1), keeper);
    const ExternalCall* const swap = calls.Lookup_External("Swap_In", -1);
    ASSERT_NE(swap, nullptr);
    ASSERT_EQ(swap->record->parameter_count, 2);
    EXPECT_FALSE(swap->record->parameters[0].flags & EXTERNAL_PARAMETER_BY_REFERENCE);
    EXPECT_TRUE(swap->record->parameters[1].flags & EXTERNAL_PARAMETER_BY_REFERENCE);
    EXPECT_EQ(calls.Lookup_External("keep", -1), nullptr);
    EXPECT_EQ(calls.Lookup_External(nullptr, -1), nullptr);

    ExternalCallManager copy(&libraries, calls);
    EXPECT_NE(copy.Lookup_External("keeper", -1), nullptr);
    EXPECT_NE(copy.Lookup_External("keeper", -1), keeper);
}

TEST(ExternalCallManager, Tells_Why_A_Library_Is_Refused) {
    UNIXExternalLibraryManager libraries;
    ExternalCallManager calls(&libraries);
    EXPECT_FALSE(calls.RegisterDSO(symbolless_library_path));
    EXPECT_EQ(Text(calls.lasterror), "Unknown symbol 'tarn_function_table'");
    EXPECT_FALSE(calls.RegisterDSO(tableless_library_path));
    EXPECT_EQ(Text(calls.lasterror), "Unable to retrieve function descriptor table");
    EXPECT_FALSE(calls.RegisterDSO("/nowhere/at-all.so"));
    EXPECT_NE(Text(calls.lasterror).find("/nowhere/at-all.so"), std::string::npos);
}

TEST(ExternalCallManager, Grows_Beyond_Sixteen_Libraries) {
    UNIXExternalLibraryManager libraries;
    ExternalCallManager calls(&libraries);
    for (int count = 0; count < 40; ++count)
        ASSERT_TRUE(calls.RegisterDSO(count == 39 ? whole_library_path : functionless_library_path));
    EXPECT_NE(calls.Lookup_External("swap_in", -1), nullptr);
}

TEST(ExternalCall, Keeps_Data_Between_Calls_And_Releases_It_Once) {
    UNIXExternalLibraryManager libraries;
    ASSERT_NE(libraries.Lookup(whole_library_path, ExternalLibrary::FUNCTIONS), nullptr);
    const int calls_before = Counter("calls");
    const int releases_before = Counter("releases");
    {
        ExternalCallManager calls(&libraries);
        ASSERT_TRUE(calls.RegisterDSO(whole_library_path));
        ExternalCall* const keeper = calls.Lookup_External("keeper", -1);
        EXPECT_EQ(keeper->Call(nullptr, nullptr), 1);
        Variable* const held = keeper->result;
        held->IncRefCount();
        EXPECT_EQ(keeper->Call(nullptr, nullptr), 1);
        EXPECT_NE(keeper->result, held) << "the result of the first call was still in use";
        EXPECT_EQ(held->refcount(), 1);
        held->DecRefCount();
        EXPECT_EQ(Counter("calls") - calls_before, 2);
    }
    EXPECT_EQ(Counter("releases") - releases_before, 1);
}

std::string freed;

void Note_Free(void* vm, void* value) {
    freed += vm ? "?" : static_cast<const char*>(value);
}

TEST(ExternalCallManager, Keeps_One_Persistent_Value_For_A_Name) {
    static char first[] = "first ";
    static char second[] = "second ";
    freed.clear();
    {
        ExternalCallManager calls(nullptr);
        EXPECT_EQ(calls.Lookup_Persistent("pool", 4), nullptr);
        calls.Register_Persistent(nullptr, "Pool", -1, first, Note_Free);
        EXPECT_EQ(calls.Lookup_Persistent("poolside", 4), first);
        calls.Register_Persistent(nullptr, "POOL", 4, second, Note_Free);
        EXPECT_EQ(freed, "first ");
        EXPECT_EQ(calls.Lookup_Persistent("pool", -1), second);
        calls.Register_Persistent(nullptr, "byte", -1, new char, nullptr);
    }
    EXPECT_EQ(freed, "first second ");
}

} // namespace
