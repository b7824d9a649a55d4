#include "files/contained_operations.h"
#include "files/file_tree.h"
#include "files/lock_application.h"

#include <string_view>
#include <sys/sysmacros.h>
#include <tuple>

namespace {

const std::string path_message = "The specified path references a ";
const std::string outside_message = path_message + "path outside the configured ";
const std::string missing_message = path_message + "directory that does not exist";
const std::string link_message = path_message + "symbolic link";
const std::string recursive_message = path_message + "recursive symbolic link";
const std::string other_directory_message = link_message + " to a directory owned by a different user";
const std::string other_file_message = link_message + " to a directory or file owned by a different user";

constexpr int links = SECURITY_DATA_LINKS, any_owner = SECURITY_DATA_LINKS | SECURITY_DATA_OTHER_OWNER;
constexpr int absolute = SECURITY_DATA_ABSOLUTE;

class Contained : public File_Tree {
  protected:
    void SetUp() override {
        File_Tree::SetUp();
        manager = std::make_unique<UNIXFileManager>(&application);
        ASSERT_TRUE(manager->InitializeDataDirectory(At("root").c_str()));
        std::filesystem::create_directory(At("root/d"));
        for (const char* name : {"root/f", "root/aside", "root/d/g", "outside/o", "root2/x"})
            Put(name, name);
    }

    // What Exists answers: "yes", "no", or its message.
    std::string Exists(const char* path) {
        bool exists;
        manager->Error("silent");
        return !manager->Exists(data, path, &exists) ? Error() : exists ? "yes" : "no";
    }

    // The content of a file, or why it can't be opened.
    std::string Content(const char* path) {
        return see(manager->Open(data, path, FILE_MODE_READ)) ? observed.text : Error();
    }

    void Expect_Found(const char* path, const std::string& exists, const std::string& content) {
        EXPECT_EQ(Exists(path), exists) << path;
        EXPECT_EQ(Content(path), content) << path;
    }

    Lock_Application application;
};

TEST_F(Contained, Roots_Are_Refused_By_Name_And_Reason) {
    Link("root2", "link");
    Link("outside", "to_theirs");
    if (geteuid() == 0)
        Own("outside");
    const struct {
        std::string subject;
        Tarn_PathType type;
        int follow, follow_all;
        bool (*run)(UNIXFileManager& m, const char* p);
    } setups[] = {
        {"data directory", data, 4, 12, OPERATION(m.InitializeDataDirectory(p))},
        {"temporary directory", Tarn_PathType_Temp, 256, 768, OPERATION(m.InitializeTempDirectory(p))},
        {"script directory for 'm'", Tarn_PathType_Script, 1, 3,
         OPERATION(m.InitializeScriptDirectory(p, "m"))},
    };
    const std::string link = " references a symbolic link",
                      theirs = geteuid() ? "" : link + " to a directory owned by a different user";
    for (const auto& [subject, type, follow, follow_all, run] : setups)
        // clang-format off
        for (const auto& [path, options, reason] :
             std::initializer_list<std::tuple<std::string, int, std::string>>{
                 {"root", 0, " is not an absolute path"}, {At("root/f"), 0, " does not exist"},
                 {At("link"), 0, link}, {At("link"), follow, ""}, {At("to_theirs"), follow, theirs},
                 {At("to_theirs"), follow_all, ""}, {At("root2/./..//root/"), 0, ""}}) {
            // clang-format on
            UNIXFileManager fresh(nullptr);
            // What is refused leaves no earlier root behind.
            EXPECT_TRUE(type != Tarn_PathType_Script || run(fresh, At("root").c_str()));
            fresh.SecurityOptions(options);
            EXPECT_EQ(run(fresh, path.c_str()), reason.empty()) << path;
            EXPECT_EQ(fresh.error().view(), reason.empty() ? "" : "The configured " + subject + reason);
            EXPECT_EQ(fresh.Exists(type, ".", &observed.exists), reason.empty());
        }
    EXPECT_FALSE(manager->InitializeDataDirectory(nullptr));
}

TEST_F(Contained, Nothing_Works_Without_A_Root_Or_At_An_Unknown_One) {
    EXPECT_FALSE(manager->Delete(Tarn_PathType_Script, "f"));
    EXPECT_EQ(Error(), "There is no configured script directory");
    const auto unknown = static_cast<Tarn_PathType>(3);
    _UNIXContainedPathSettings settings;
    EXPECT_TRUE(manager->ContainedPathSettings(unknown, &settings) && !settings.root);
    EXPECT_EQ(manager->Lock(unknown, "f"), FILE_LOCK_FAILED);
    EXPECT_EQ(Error(), "Invalid argument");
    EXPECT_EQ(manager->NormalizeContainedPath(unknown, "f", nullptr, nullptr), nullptr);
    manager = std::make_unique<UNIXFileManager>(nullptr);
    EXPECT_FALSE(manager->InitializeDataDirectory(At("root/f").c_str()));
    for (const Contained_Operation& operation : contained_operations) {
        EXPECT_FALSE(operation.run(*manager, "f")) << operation.name;
        EXPECT_EQ(Error(), "There is no configured data directory");
    }
    EXPECT_FALSE(manager->Delete(Tarn_PathType_Temp, "f"));
    EXPECT_EQ(Error(), "There is no configured data directory");
}

TEST_F(Contained, No_Operation_Takes_A_Way_Out) {
    Link("../outside", "root/out");
    Link("d", "root/in");
    const std::string past = outside_message + "data directory";
    const struct {
        std::string directory; // of the operation's path
        int options;
        std::string message; // empty for none
    } cases[] = {
        // clang-format off
        {"..", 0, past}, {"../root2", 0, past}, {"./d/./../../outside/", 0, past},
        {At("outside"), absolute, past}, {At("root2"), absolute | any_owner, past}, {"/", absolute, past},
        {At("outside"), 0, missing_message}, {"none", 0, missing_message}, {"f", 0, missing_message},
        {std::string(5000, 'n'), 0, missing_message}, {"out", 0, link_message}, {"in", 0, link_message},
        {"../root/d", 0, ""}, {"//d///", 0, ""}, {At("root/d"), absolute, ""},
        // clang-format on
    };
    for (const auto& c : cases) {
        manager->SecurityOptions(c.options);
        for (const Contained_Operation& operation : contained_operations) {
            SCOPED_TRACE(operation.name + (" " + c.directory));
            if (c.message.empty()) {
                Put("root/d/x", "x");
                std::filesystem::create_directory(At("root/d/x_"));
            }
            application.passes = 1;
            const bool done = operation.run(*manager, (c.directory + operation.inside).c_str());
            EXPECT_EQ(done ? "" : Error(), c.message);
        }
    }
    EXPECT_EQ(Get("outside/o") + Get("root2/x"), "outside/oroot2/x");
}

TEST_F(Contained, Links_Are_Followed_One_By_One) {
    // clang-format off
    const std::string tree[][2] = {
        {"d/g", "to_g"}, {"d", "to_d"}, {"to_d/g", "twice"}, {At("root/f"), "whole"}, {"../outside/o", "out"},
        {"nothing", "dangling"}, {"none/x", "lost"}, {"self", "self"}, {"circle2", "circle1"},
        {"d/../circle1", "circle2"}, {"f", "chain0"},
    };
    // clang-format on
    for (const auto& [target, link] : tree)
        Link(target, "root/" + link);
    for (int i = 0; i < 60; ++i) // more than the system would follow
        Link("chain" + std::to_string(i), "root/chain" + std::to_string(i + 1));
    const std::string missing = System_Text(ENOENT);
    const struct {
        const char* path;
        std::string exists, content;
    } cases[] = {
        // clang-format off
        {"to_d/g", "yes", "root/d/g"}, {"twice", "yes", "root/d/g"}, {"whole", "yes", "root/f"},
        {"out", "yes", "outside/o"}, {"chain60", "yes", "root/f"}, {"dangling", "no", missing},
        {"lost", "no", missing}, {"self", recursive_message, recursive_message},
        {"circle1", recursive_message, recursive_message},
        // clang-format on
    };
    for (const auto& c : cases)
        for (const int options : {links, any_owner, SECURITY_DATA_OTHER_OWNER | SECURITY_SCRIPT_LINKS}) {
            manager->SecurityOptions(options);
            const bool follows = options & SECURITY_DATA_LINKS;
            Expect_Found(c.path, follows ? c.exists : link_message, follows ? c.content : link_message);
        }
    Expect_Found("f", "yes", "root/f");
    Expect_Found("none", "no", missing);
}

TEST_F(Contained, Owner_May_Not_Change_On_The_Way) {
    SKIP_UNLESS_ROOT();
    const char* const hops[] = {"root/l1", "root/l2", "root/l3", "root/f"};
    Link("l2", hops[0]);
    Link("l3", hops[1]);
    Link(At("root/f"), hops[2]);
    for (unsigned theirs = 0; theirs < 16; ++theirs) {
        for (unsigned i = 0; i < 4; ++i)
            ASSERT_EQ(lchown(At(hops[i]).c_str(), theirs >> i & 1 ? stranger : 0, 0), 0);
        const bool mixed = theirs != 0 && theirs != 15;
        manager->SecurityOptions(links);
        Expect_Found("l1", mixed ? other_file_message : "yes", mixed ? other_file_message : "root/f");
        Expect_Found("f", "yes", "root/f");
        manager->SecurityOptions(any_owner);
        Expect_Found("l1", "yes", "root/f");
    }
    Link("d", "root/to_d");
    Link("to_d/g", "root/to_g");
    Own("root/d");
    Expect_Found("to_g", "yes", "root/d/g");
    manager->SecurityOptions(links);
    Expect_Found("to_d/g", other_directory_message, other_directory_message);
    Expect_Found("to_g", other_directory_message, other_directory_message);
    Expect_Found("d/g", "yes", "root/d/g"); // no link, no question
}

// While a link is followed, its target is given away.
class Disturbed_Manager : public UNIXFileManager {
  public:
    using UNIXFileManager::UNIXFileManager;
    int RealizePath(const char* path, UNIXFilePath** out, bool allow_links, bool other_owner) override {
        if (victim && lchown(victim, 12345, 12345) != 0)
            return REALIZE_NOT_ENTERED;
        return UNIXFileManager::RealizePath(path, out, allow_links, other_owner);
    }
    const char* victim = nullptr;
};

TEST_F(Contained, Refused_File_Is_Neither_Emptied_Nor_Made) {
    SKIP_UNLESS_ROOT();
    Link("./f", "root/to_f");
    Link("none", "root/new");
    Disturbed_Manager disturbed(&application, *manager);
    disturbed.SecurityOptions(links);
    const std::string f = At("root/f");
    for (int mode = FILE_MODE_READ; mode <= (FILE_MODE_READ | FILE_MODE_WRITE); ++mode) {
        Put("root/f", "root/f");
        disturbed.victim = f.c_str();
        EXPECT_FALSE(see(disturbed.Open(data, "to_f", mode | FILE_MODE_TRUNCATE)));
        EXPECT_EQ(disturbed.error().view(), other_file_message);
        EXPECT_FALSE(disturbed.Open(data, "to_f", mode | FILE_MODE_TRUNCATE)); // theirs from the start
        EXPECT_FALSE(disturbed.Copy(data, "aside", data, "to_f"));
        EXPECT_EQ(Get("root/f"), "root/f");
        disturbed.victim = nullptr;
        ASSERT_EQ(chown(f.c_str(), 0, 0), 0);
        EXPECT_TRUE(see(disturbed.Open(data, "to_f", mode | FILE_MODE_TRUNCATE)) && Get("root/f").empty());
    }
    Own("root/new");
    EXPECT_FALSE(disturbed.Open(data, "new", FILE_MODE_WRITE | FILE_MODE_CREATE));
    EXPECT_FALSE(disturbed.TouchFile(data, "new") || std::filesystem::exists(At("root/none")));
    EXPECT_FALSE(disturbed.Exists(data, "new", &observed.exists) && observed.exists);
    EXPECT_TRUE(disturbed.TouchFile(data, "none") && !disturbed.TouchFile(data, "new"));
}

TEST_F(Contained, Opens_Count_Against_The_Limit_And_Are_Not_Inherited) {
    manager->MaxFiles(2);
    const int here = manager->SaveCurrentDirectory();
    char* name;
    const std::unique_ptr<File> first(manager->Open(data, "f", FILE_MODE_READ)),
        second(manager->MakeTemporary(data, "d", "t", &name, FILE_MODE_WRITE)),
        third(manager->Open(data, "d/g", FILE_MODE_READ));
    const std::unique_ptr<char[]> owner(name);
    manager->SecurityOptions(links);
    Link("f", "root/l");
    UNIXFileManager copy(nullptr, *manager); // with the roots, without options and limit
    EXPECT_TRUE(see(copy.Open(data, "f", FILE_MODE_READ)) && !copy.Open(data, "l", FILE_MODE_READ));
    EXPECT_EQ(Entries("/proc/self/fd"), descriptors + 5); // two files, two roots, and where it was
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        if (std::filesystem::read_symlink(entry).string().starts_with(base)) {
            EXPECT_EQ(fcntl(stoi(entry.path().filename().string()), F_GETFD), FD_CLOEXEC) << entry;
        }
    EXPECT_EQ(manager->RestoreCurrentDirectory(here), 0);
    EXPECT_EQ(manager->RestoreCurrentDirectory(-1), -1);
}

TEST_F(Contained, Pipes_And_Devices_Are_Asked_Without_Waiting) {
    ASSERT_EQ(mkfifo(At("root/pipe").c_str(), 0600), 0);
    EXPECT_TRUE(manager->Length(data, "pipe", &observed.length) && observed.length == 0);
    EXPECT_TRUE(manager->ChangeMode(data, "pipe", 0640) && manager->TouchFile(data, "pipe"));
    EXPECT_EQ(manager->Lock_Valid(data, "pipe"), FILE_LOCK_VALID);
    struct stat status;
    EXPECT_TRUE(manager->SetModifiedTime(data, "pipe", 7) && manager->Stat(data, "pipe", &status));
    EXPECT_TRUE(status.st_atime == 7 && status.st_mtime == 7 && status.st_mode == (S_IFIFO | 0640));
    if (geteuid() == 0 && mknod(At("root/null").c_str(), S_IFCHR | 0600, makedev(1, 3)) == 0) {
        EXPECT_TRUE(manager->Copy(data, "null", data, "aside") && Get("root/aside").empty());
    }
}

TEST_F(Contained, Files_Move_Between_Directories_And_Roots) {
    Link("../outside/o", "root/l");
    EXPECT_TRUE(manager->Rename(data, "l", data, "l2") && manager->Delete(data, "l2"));
    for (const char* same : {"d/../f", "//f"}) {
        EXPECT_TRUE(manager->Copy(data, "f", data, same)) << same;
        // There is no temporary root, and the data root stands in.
        EXPECT_TRUE(manager->Rename(data, "f", Tarn_PathType_Temp, same)) << same;
    }
    EXPECT_TRUE(manager->Rename(data, "f", data, "d/f") && Get("root/d/f") == "root/f");
    EXPECT_TRUE(manager->MakeDirectory(data, "e") && manager->Rename(data, "d", data, "d2"));
    EXPECT_FALSE(manager->Rename(data, "d2", data, "e/d"));
    EXPECT_EQ(Error(), "The source file is a directory");
    ASSERT_TRUE(manager->InitializeTempDirectory(At("root2").c_str()));
    EXPECT_TRUE(manager->Rename(Tarn_PathType_Temp, "x", data, "x") && Get("root/x") == "root2/x");
    EXPECT_FALSE(manager->Delete(Tarn_PathType_Temp, "../x"));
    EXPECT_EQ(Error(), outside_message + "temporary directory");
    EXPECT_TRUE(manager->MakeSymbolicLink(data, "d2/./g", data, "e/../l"));
    EXPECT_EQ(std::filesystem::read_symlink(At("root/l")), At("root/d2/g"));
    manager->SecurityOptions(absolute);
    for (const auto& [path, normal] : {std::pair("a//b/../../../x", At("x")), {"/etc/../x", "/x"}})
        EXPECT_EQ(
            std::unique_ptr<char[]>(manager->NormalizeContainedPath(data, path, nullptr, nullptr)).get(),
            normal);
}

TEST_F(Contained, Temporary_Name_Begins_With_Its_Directory) {
    char* name = nullptr;
    for (const auto& [directory, expected] : {std::pair<const char*, const char*>(nullptr, "t.0"),
                                              {"", "t.1"},
                                              {"d", "d/t.0"},
                                              {"d/", "d/t.1"},
                                              {"/d", "/d/t.2"}}) {
        EXPECT_TRUE(see(manager->MakeTemporary(data, directory, "t", &name, 0)));
        EXPECT_STREQ(name, expected);
        delete[] std::exchange(name, nullptr);
    }
    EXPECT_FALSE(manager->MakeTemporary(data, "d", "../t", &name, 0));
    EXPECT_EQ(Error(), "Invalid temporary filename prefix");
    for (int i = 0; i < 10; ++i)
        Put("u." + std::to_string(i), "");
    EXPECT_TRUE(see(manager->MakeTemporary(At("u").c_str(), &name, FILE_MODE_READ)));
    EXPECT_EQ(name, At("u.a"));
    delete[] name;
    EXPECT_FALSE(manager->MakeTemporary("none/t", &name, FILE_MODE_READ));
    EXPECT_EQ(Error(), System_Text(ENOENT));
}

TEST_F(Contained, Parked_File_Comes_Back_From_Anywhere_Unless_It_Became_A_Link) {
    const std::unique_ptr<File> file(manager->Open(data, "d/g", FILE_MODE_READ));
    std::filesystem::current_path("/");
    manager->DeactivateFile(file.get());
    EXPECT_EQ(file->Length(), 8);
    EXPECT_EQ(std::filesystem::current_path(), At("root/d"));
    manager->DeactivateFile(file.get());
    std::filesystem::remove(At("root/d/g"));
    Link("../f", "root/d/g");
    EXPECT_EQ(file->Length(), -1);
    EXPECT_EQ(file->error().text(), link_message);
}

} // namespace
