#include "files/contained_operations.h"
#include "files/file_tree.h"

namespace {

class Raw_Operations : public File_Tree {};

// clang-format off
bool (*const raw_operations[])(UNIXFileManager& m, const char* p) = {
    OPERATION(see(m.Open(p, FILE_MODE_WRITE | FILE_MODE_CREATE))), OPERATION(m.Lock_Valid(p) != FILE_LOCK_UNREADABLE),
    OPERATION(m.Delete(p)), OPERATION(m.Copy(p, "f")), OPERATION(m.Copy("f", p)), OPERATION(m.Rename(p, "f")),
    OPERATION(m.Rename("f", p)), OPERATION(m.TouchFile(p)), OPERATION(m.Exists(p, &observed.exists)),
    OPERATION(m.Length(p, &observed.length)), OPERATION(m.IsDirectory(p, &observed.directory)),
    OPERATION(m.Mode(p, &observed.mode)), OPERATION(m.ModifiedTime(p, &observed.time)), OPERATION(m.ChangeMode(p, 0600)),
    OPERATION(m.MakeDirectory(p)), OPERATION(m.RemoveDirectory(p)), OPERATION(m.MakeSymbolicLink("f", p)),
};
// clang-format on

TEST_F(Raw_Operations, Refuse_What_Is_No_Path) {
    Put("f", "abc");
    const std::string long_name(256, 'n'), long_path(5000, '/');
    for (const auto& [path, error] : {std::pair<const char*, int>(nullptr, ENOENT),
                                      {"", ENOENT},
                                      {"none/x", ENOENT},
                                      {"f/x", ENOTDIR},
                                      {long_name.c_str(), ENAMETOOLONG},
                                      {long_path.c_str(), ENAMETOOLONG}}) {
        for (const auto& operation : raw_operations) {
            EXPECT_FALSE(operation(*manager, path)) << &operation - raw_operations;
            EXPECT_EQ(Error(), System_Text(error)) << &operation - raw_operations;
        }
        manager->Error("none");
        EXPECT_FALSE(manager->SetModifiedTime(path, 1));
        EXPECT_EQ(Error(), "none");
    }
    EXPECT_EQ(Get("f"), "abc");
    EXPECT_TRUE(manager->Lock_Delete("none") && !manager->Lock_Delete("f/x"));
}

TEST_F(Raw_Operations, Do_What_They_Say) {
    Put("f", "abc");
    Link("f", "link");
    EXPECT_TRUE(manager->Exists("link", &observed.exists) && observed.exists);
    EXPECT_TRUE(manager->Length("link", &observed.length) && observed.length == 3);
    EXPECT_TRUE(manager->IsDirectory("root", &observed.directory) && observed.directory);
    EXPECT_TRUE(manager->SetModifiedTime("link", 86400));
    struct stat status;
    EXPECT_TRUE(stat("f", &status) == 0 && status.st_atime == 86400);
    EXPECT_TRUE(manager->ModifiedTime("f", &observed.time) && observed.time == 86400);
    EXPECT_TRUE(manager->ModifiedTime("link", &observed.time) && observed.time != 86400);
    EXPECT_TRUE(manager->TouchFile("f") && manager->ModifiedTime("f", &observed.time) &&
                observed.time != 86400);
    EXPECT_TRUE(manager->ChangeMode("link", 0640) && manager->Mode("f", &observed.mode));
    EXPECT_EQ(observed.mode, S_IFREG | 0640);
    EXPECT_TRUE(manager->MakeDirectory("d") && std::filesystem::is_directory(At("d")));
    EXPECT_TRUE(manager->RemoveDirectory("d") && manager->MakeSymbolicLink("nothing", "dangling"));
    EXPECT_EQ(std::filesystem::read_symlink(At("dangling")), "nothing");
    EXPECT_TRUE(manager->Rename("f", "g") && Get("g") == "abc" && manager->Delete("g"));
    EXPECT_EQ(Entries(base), 5);
    const mode_t mask = umask(0);
    EXPECT_TRUE(manager->TouchFile("new") && manager->Mode("new", &observed.mode));
    umask(mask);
    EXPECT_EQ(observed.mode, S_IFREG | 0644);
}

TEST_F(Raw_Operations, Copy_Replaces_The_Target_Unless_It_Is_The_Source) {
    Put("f", std::string(20000, 'x') + "end");
    Put("g", std::string(30000, 'y'));
    EXPECT_TRUE(manager->Copy("f", "g") && Get("g") == Get("f"));
    EXPECT_TRUE(manager->Copy("f", "/dev/null") && manager->Copy("/dev/null", "f") && Get("f").empty());
    Link("g", "link");
    std::filesystem::create_hard_link(At("g"), At("hard"));
    for (const char* same : {"g", "link", "hard", "root/../g"})
        EXPECT_TRUE(manager->Copy("g", same) && manager->Copy(same, "g") && Get("g").length() == 20003)
            << same;
    EXPECT_TRUE(manager->Rename("g", "g") && manager->Rename("g", "hard") && Get("g").length() == 20003);
    EXPECT_FALSE(manager->Copy("root", "g"));
    EXPECT_EQ(Error(), "The source file is a directory");
    EXPECT_FALSE(manager->Copy("g", "/dev/full"));
    EXPECT_EQ(Error(), System_Text(ENOSPC));
}

TEST_F(Raw_Operations, Rename_Across_File_Systems_Loses_Nothing) {
    EXPECT_FALSE(manager->Rename("/proc/self/mem", "g")); // opens, and can't be read
    EXPECT_EQ(Error(), System_Text(EIO));
    const std::string away = "/dev/shm" + base.substr(base.rfind('/'));
    Put("f", "abc");
    EXPECT_TRUE(manager->Rename("f", away.c_str()) && manager->Rename(away.c_str(), "g"));
    EXPECT_TRUE(Get("g") == "abc" && !std::filesystem::exists(away) && !std::filesystem::exists("f"));
}

} // namespace
