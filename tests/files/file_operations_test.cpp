// Every operation on a path, raw and below a root: what it does, what it refuses, and that nothing leads out.

#include "files/file_tree.h"

#include <atomic>
#include <iostream>
#include <sys/sysmacros.h>
#include <thread>

namespace {

using Manager = UNIXFileManager;
constexpr Tarn_PathType data = Tarn_PathType_Data;

// What the operations below have found out.
struct Observation {
    std::string text;
    unsigned long length = 0;
    long time = 0;
    int mode = 0;
    bool exists = false;
    bool directory = false;
} observed;

bool see(File* opened) {
    const std::unique_ptr<File> file(opened);
    char buffer[64];
    const long length = file ? file->Read(buffer, sizeof buffer) : -1;
    observed.text.assign(buffer, length < 0 ? 0 : static_cast<std::size_t>(length));
    return file != nullptr;
}

bool see_temporary(UNIXFileManager& m, const char* path, const char* prefix) {
    char* name = nullptr;
    const bool made = see(prefix ? m.MakeTemporary(data, path, prefix, &name, FILE_MODE_READ)
                                 : m.MakeTemporaryLike(data, path, &name, FILE_MODE_READ));
    const std::unique_ptr<char[]> owner(name);
    return made && m.Delete(data, name);
}

bool see_names(UNIXFileManager& m, const char* path) {
    List<String> names(1);
    const bool done = m.DirectoryListing(data, path, &names);
    for (const String* name = names.First(); name; name = names.Next())
        observed.text += name->text();
    return done;
}

// An operation on a path, beside the file "aside" and the name "new": on one of the data directory, and for
// most on a raw one too.
struct File_Operation {
    template <typename Run>
    File_Operation(const char* inside, bool on_file, const char* name, Run run)
        : inside(inside), on_file(on_file), name(name), contained(run) {
        if constexpr (std::is_invocable_v<Run, UNIXFileManager&, const char*>)
            raw = run;
    }

    const char* inside; // what makes the path out of that of a directory
    bool on_file;       // looks at the last name, or opens it; may be run on any file
    const char* name;
    bool (*contained)(UNIXFileManager& m, const char* p, Tarn_PathType in);
    bool (*raw)(UNIXFileManager& m, const char* p) = nullptr;
};

// clang-format off
#define BOTH(...) #__VA_ARGS__, [](Manager& m, const char* p, auto... in) -> bool { return __VA_ARGS__; }
#define CONTAINED(...) #__VA_ARGS__, [](Manager& m, const char* p, Tarn_PathType) { return __VA_ARGS__; }

const File_Operation file_operations[] = {
    {"/x", true, BOTH(see(m.Open(in..., p, FILE_MODE_READ)))},
    {"/x", true, BOTH(see(m.Open(in..., p, FILE_MODE_READ | FILE_MODE_TRUNCATE)))},
    {"/x", true, BOTH(see(m.Open(in..., p, FILE_MODE_WRITE | FILE_MODE_CREATE | FILE_MODE_TRUNCATE)))},
    {"/x.l", false, BOTH(m.Lock(in..., p) == FILE_LOCK_HELD && m.Lock_Delete(in..., p))},
    {"/x", true, BOTH(m.Lock_Valid(in..., p) != FILE_LOCK_UNREADABLE)},
    {"/x", false, CONTAINED(m.Lock_Delete(data, p))},
    {"/x", false, BOTH(m.Delete(in..., p))},
    {"/x", true, BOTH(m.Copy(in..., p, in..., "aside") && see(m.Open(in..., "aside", FILE_MODE_READ)))},
    {"/x", true, BOTH(m.Copy(in..., "aside", in..., p))},
    {"/x", false, BOTH(m.Rename(in..., p, in..., "aside") && see(m.Open(in..., "aside", FILE_MODE_READ)))},
    {"/x", false, BOTH(m.TouchFile(in..., "new") && m.Rename(in..., "new", in..., p))},
    {"/x", false, CONTAINED(m.Rename(data, p, data, (std::string(p) + "2").c_str()))},
    {"/x", true, BOTH(m.TouchFile(in..., p))},
    {"/x_", false, BOTH(m.Exists(in..., p, &observed.exists))},
    {"/x", true, BOTH(m.Length(in..., p, &observed.length))},
    {"/x", true, BOTH(m.IsDirectory(in..., p, &observed.directory))},
    {"/x", true, CONTAINED(m.SetModifiedTime(data, p, 1))},
    {"/x", true, BOTH(m.ModifiedTime(in..., p, &observed.time))},
    {"/x.d", false, BOTH(m.MakeDirectory(in..., p) && m.RemoveDirectory(in..., p))},
    {"/x_", false, BOTH(m.RemoveDirectory(in..., p))},
    {"/x.s", false, BOTH(m.MakeSymbolicLink(in..., "aside", in..., p) && m.Delete(in..., p))},
    {"/x", false, CONTAINED(m.MakeSymbolicLink(data, p, data, "new") && m.Delete(data, "new"))},
    {"/x", true, BOTH(m.Mode(in..., p, &observed.mode))},
    {"/x", true, BOTH(m.ChangeMode(in..., p, 0700))},
    {"", false, CONTAINED(see_temporary(m, p, "t"))},
    {"/x", false, CONTAINED(see_temporary(m, p, nullptr))},
    {"", false, CONTAINED(see_names(m, p))},
};
// clang-format on

const std::string path_message = "The specified path references a ";
const std::string outside_message = path_message + "path outside the configured ";
const std::string missing_message = path_message + "directory that does not exist";
const std::string link_message = path_message + "symbolic link";
const std::string recursive_message = path_message + "recursive symbolic link";
const std::string other_directory_message = link_message + " to a directory owned by a different user";
const std::string other_file_message = link_message + " to a directory or file owned by a different user";

constexpr int links = SECURITY_DATA_LINKS, any_owner = SECURITY_DATA_LINKS | SECURITY_DATA_OTHER_OWNER;
constexpr int absolute = SECURITY_DATA_ABSOLUTE;

class File_Operations : public File_Tree {
  protected:
    void SetUp() override {
        File_Tree::SetUp();
        ASSERT_TRUE(manager->InitializeDataDirectory(At("root").c_str()));
        fs::create_directory(At("root/d"));
        for (const char* name : {"root/f", "root/aside", "root/d/g", "outside/o", "root2/x"})
            Put(name, name);
    }

    // The content of a file of the root, or why it can't be opened. Exists tells the same.
    std::string Content(const char* path) {
        bool exists = false;
        const std::string refused = Why(manager->Exists(data, path, &exists));
        const bool opened = see(manager->Open(data, path, FILE_MODE_READ));
        EXPECT_TRUE(exists == opened && refused == (opened || Error() == missing ? "" : Error())) << path;
        return opened ? observed.text : Error();
    }

    const std::string missing = System_Text(ENOENT);
};

TEST_F(File_Operations, Roots_Are_Refused_By_Name_And_Reason) {
    Link("root2", "link");
    Link("outside", "to_theirs");
    if (geteuid() == 0)
        Own("outside");
    const std::string link = " references a symbolic link",
                      theirs = geteuid() ? "" : link + " to a directory owned by a different user";
    const struct {
        std::string path;
        int options; // of the script directory
        std::string reason;
    } cases[] = {
        // clang-format off
        {"root", 0, " is not an absolute path"}, {At("root/f"), 0, " does not exist"}, {At("link"), 0, link},
        {At("link"), 1, ""}, {At("to_theirs"), 1, theirs}, {At("to_theirs"), 3, ""},
        {At("root2/./..//root/"), 0, ""},
        // clang-format on
    };
    for (const auto& [path, options, reason] : cases) {
        const char* p = path.c_str();
        for (const auto& [type, factor, subject] : {std::tuple(Tarn_PathType_Data, 4, "data directory"),
                                                    {Tarn_PathType_Temp, 256, "temporary directory"},
                                                    {Tarn_PathType_Script, 1, "script directory for 'm'"}}) {
            UNIXFileManager fresh(nullptr);
            // What is refused leaves no earlier root behind.
            EXPECT_TRUE(fresh.InitializeScriptDirectory(At("root").c_str(), nullptr));
            fresh.SecurityOptions(options * factor);
            const bool done = type == Tarn_PathType_Data   ? fresh.InitializeDataDirectory(p)
                              : type == Tarn_PathType_Temp ? fresh.InitializeTempDirectory(p)
                                                           : fresh.InitializeScriptDirectory(p, "m");
            EXPECT_EQ(done, reason.empty()) << path;
            EXPECT_EQ(fresh.error().view(), done ? "" : "The configured " + (subject + reason));
            EXPECT_EQ(fresh.Exists(type, ".", &observed.exists), done);
        }
    }
    EXPECT_FALSE(manager->InitializeDataDirectory(nullptr) || manager->Delete(Tarn_PathType_Temp, "f"));
    EXPECT_EQ(Error(), "There is no configured data directory");
    EXPECT_TRUE(manager->InitializeScriptDirectory("/", nullptr));
    EXPECT_FALSE(manager->InitializeScriptDirectory(nullptr, nullptr));
    const int next = manager->SaveCurrentDirectory(); // has the number of the root that is gone
    EXPECT_FALSE(manager->InitializeScriptDirectory(nullptr, nullptr));
    EXPECT_EQ(manager->RestoreCurrentDirectory(next), 0);
    const auto unknown = static_cast<Tarn_PathType>(3);
    _UNIXContainedPathSettings settings;
    EXPECT_TRUE(manager->ContainedPathSettings(unknown, &settings) && !settings.root);
    EXPECT_EQ(Why(manager->Delete(unknown, "f")), "Invalid argument");
    EXPECT_FALSE(manager->NormalizeContainedPath(unknown, "f", nullptr, nullptr));
}

TEST_F(File_Operations, Take_No_Way_Out_And_No_Way_To_Nowhere) {
    constexpr int raw = -1, rootless = -2;
    Link("../outside", "root/out");
    Link("d", "root/in");
    const std::string past = outside_message + "data directory", not_named = System_Text(ENAMETOOLONG);
    const struct {
        std::string path; // of a directory, where it isn't raw
        int options;
        std::string message; // empty for none
    } cases[] = {
        // clang-format off
        {"", raw, missing}, {"none/x", raw, missing}, {"f/x", raw, System_Text(ENOTDIR)},
        {std::string(256, 'n'), raw, not_named}, {std::string(5000, '/'), raw, not_named},
        {"", rootless, "There is no configured data directory"},
        {"..", 0, past}, {"../root2", 0, past}, {"./d/./../../outside/", 0, past},
        {At("outside"), absolute, past}, {At("root2"), absolute | any_owner, past}, {"/", absolute, past},
        {At("outside"), 0, missing_message}, {"none", 0, missing_message}, {"f", 0, missing_message},
        {std::string(5000, 'n'), 0, missing_message}, {"out", 0, link_message}, {"in", 0, link_message},
        {"../root/d", 0, ""}, {"//d///", 0, ""}, {At("root/d"), absolute, ""},
        // clang-format on
    };
    UNIXFileManager fresh(&application);
    for (const auto& [path, options, message] : cases)
        for (const File_Operation& operation : file_operations) {
            if (options == raw && !operation.raw)
                continue;
            Put("root/d/x", "x");
            fs::create_directory(At("root/d/x_"));
            application.passes = 1;
            UNIXFileManager& m = options == rootless ? fresh : *manager;
            m.SecurityOptions(std::max(options, 0));
            const bool done = options == raw
                                  ? operation.raw(m, path.empty() ? nullptr : path.c_str())
                                  : operation.contained(m, (path + operation.inside).c_str(), data);
            EXPECT_EQ(done ? "" : m.error().view(), message) << operation.name << " of " << path;
        }
    EXPECT_EQ(Get("outside/o") + Get("root2/x") + Get("root/f"), "outside/oroot2/xroot/f");
    manager->Error("none");
    EXPECT_EQ(Why(manager->SetModifiedTime("f/x", 1)), "none");
    EXPECT_TRUE(manager->Lock_Delete("none") && !manager->Lock_Delete(At("root/f/x").c_str()));
}

TEST_F(File_Operations, Follow_Links_One_By_One) {
    const struct {
        std::string target, path, content; // the path begins with the link
    } cases[] = {
        // clang-format off
        {"d/g", "to_g", "root/d/g"}, {"d", "to_d/g", "root/d/g"}, {"to_d/g", "twice", "root/d/g"},
        {At("root/f"), "whole", "root/f"}, {"../outside/o", "out", "outside/o"},
        {"nothing", "dangling", missing}, {"none/x", "lost", missing},
        {"self", "self", recursive_message}, {"2", "1", recursive_message},
        {"d/../1", "2", recursive_message}, {"f", "c0", "root/f"}, {"c59", "c60", "root/f"},
        // clang-format on
    };
    for (const auto& c : cases)
        Link(c.target, "root/" + c.path.substr(0, c.path.find('/')));
    for (int i = 0; i < 59; ++i) // more than the system would follow
        Link("c" + std::to_string(i), "root/c" + std::to_string(i + 1));
    for (const auto& c : cases)
        for (const int options : {links, any_owner, SECURITY_DATA_OTHER_OWNER | SECURITY_SCRIPT_LINKS}) {
            manager->SecurityOptions(options);
            EXPECT_EQ(Content(c.path.c_str()), options & links ? c.content : link_message) << c.path;
        }
    EXPECT_EQ(Content("f") + Content("none"), "root/f" + missing);
}

TEST_F(File_Operations, Follow_Links_Of_One_Owner) {
    SKIP_UNLESS_ROOT();
    const char* const hops[] = {"root/l1", "root/l2", "root/l3", "root/f"};
    Link("l2", hops[0]);
    Link("l3", hops[1]);
    Link(At("root/f"), hops[2]);
    for (unsigned theirs = 0; theirs < 16; ++theirs) {
        for (unsigned i = 0; i < 4; ++i)
            Own(hops[i], theirs >> i & 1);
        manager->SecurityOptions(links);
        EXPECT_EQ(Content("l1"), theirs == 0 || theirs == 15 ? "root/f" : other_file_message) << theirs;
        EXPECT_EQ(Content("f"), "root/f");
        manager->SecurityOptions(any_owner);
        EXPECT_EQ(Content("l1"), "root/f");
    }
    Link("d", "root/to_d");
    Link("to_d/g", "root/to_g");
    Own("root/d");
    EXPECT_EQ(Content("to_g"), "root/d/g");
    manager->SecurityOptions(links);
    EXPECT_EQ(Content("to_d/g") + Content("to_g"), other_directory_message + other_directory_message);
    EXPECT_TRUE(!manager->Open(data, "to_d", FILE_MODE_WRITE) && Error() == other_file_message);
    EXPECT_EQ(Content("d/g"), "root/d/g"); // no link, no question
}

// While a link is followed, its target is given away.
class Disturbed_Manager : public UNIXFileManager {
  public:
    using UNIXFileManager::UNIXFileManager;
    int RealizePath(const char* path, UNIXFilePath** out, bool allow_links, bool other_owner) override {
        if (!victim.empty() && lchown(victim.c_str(), 12345, 12345) != 0)
            return REALIZE_NOT_ENTERED;
        return UNIXFileManager::RealizePath(path, out, allow_links, other_owner);
    }
    std::string victim;
};

TEST_F(File_Operations, Neither_Empty_Nor_Make_What_They_Refuse) {
    SKIP_UNLESS_ROOT();
    Link("./f", "root/to_f");
    Link("./to_f", "root/to_link");
    Link("none", "root/new");
    Disturbed_Manager disturbed(&application, *manager);
    disturbed.SecurityOptions(links);
    for (int mode = FILE_MODE_READ; mode <= (FILE_MODE_READ | FILE_MODE_WRITE); ++mode) {
        Put("root/f", "root/f");
        disturbed.victim = At("root/f");
        EXPECT_FALSE(see(disturbed.Open(data, "to_f", mode | FILE_MODE_TRUNCATE)));
        EXPECT_EQ(disturbed.error().view(), other_file_message);
        Own("root/f", 0);
        EXPECT_FALSE(disturbed.Exists(data, "to_f", &observed.exists));
        EXPECT_FALSE(disturbed.Open(data, "to_f", mode | FILE_MODE_TRUNCATE)); // theirs from the start
        EXPECT_TRUE(!disturbed.Copy(data, "aside", data, "to_f") && Get("root/f") == "root/f");
        disturbed.victim.clear();
        Own("root/f", 0);
        EXPECT_TRUE(see(disturbed.Open(data, "to_f", mode | FILE_MODE_TRUNCATE)) && Get("root/f").empty());
    }
    disturbed.victim = At("root/to_f");
    EXPECT_FALSE(see(disturbed.Open(data, "to_link", FILE_MODE_READ)));
    EXPECT_EQ(disturbed.error().view(), other_file_message);
    Own("root/new");
    EXPECT_FALSE(disturbed.Open(data, "new", FILE_MODE_WRITE | FILE_MODE_CREATE));
    EXPECT_FALSE(disturbed.TouchFile(data, "new") || fs::exists(At("root/none")));
    EXPECT_TRUE(disturbed.TouchFile(data, "none") && !disturbed.TouchFile(data, "new"));
}

TEST_F(File_Operations, Count_Open_Files_And_Keep_Them_From_Children) {
    manager->MaxFiles(2);
    const int here = manager->SaveCurrentDirectory();
    char* name = nullptr;
    const std::unique_ptr<File> first(manager->Open(data, "f", FILE_MODE_READ)),
        second(manager->MakeTemporary(data, "d", "t", &name, FILE_MODE_WRITE)),
        third(manager->Open(data, "d/g", FILE_MODE_READ));
    const std::unique_ptr<char[]> owner(name);
    manager->SecurityOptions(links);
    Link("f", "root/l");
    UNIXFileManager copy(nullptr, *manager); // with the roots, without options and limit
    ASSERT_TRUE(first && second && third);
    EXPECT_TRUE(see(copy.Open(data, "f", FILE_MODE_READ)) && !copy.Open(data, "l", FILE_MODE_READ));
    EXPECT_EQ(Entries("/proc/self/fd"), descriptors + 5); // two files, two roots, and where it was
    for (const auto& entry : fs::directory_iterator("/proc/self/fd"))
        if (fs::read_symlink(entry).string().starts_with(base)) {
            EXPECT_EQ(fcntl(std::stoi(entry.path().filename()), F_GETFD), FD_CLOEXEC) << entry;
        }
    EXPECT_EQ(manager->RestoreCurrentDirectory(here), 0);
    EXPECT_EQ(manager->RestoreCurrentDirectory(-1), -1);

    // A parked file comes back from anywhere, unless it became a link.
    manager->SecurityOptions(0);
    manager->DeactivateFile(third.get());
    fs::current_path("/");
    EXPECT_TRUE(third->Length() == 8 && fs::current_path() == At("root/d"));
    manager->DeactivateFile(third.get());
    fs::rename(At("root/l"), At("root/d/g"));
    EXPECT_EQ(third->Length(), -1);
    EXPECT_EQ(third->error().view(), link_message);
    manager->MaxFiles(1);
    EXPECT_FALSE(manager->Copy(data, "f", data, "aside")); // which takes two
}

TEST_F(File_Operations, Do_What_They_Say) {
    UNIXFileManager& m = *manager;
    Link("d/g", "root/link");
    EXPECT_TRUE(m.Exists("link", &observed.exists) && observed.exists);
    EXPECT_TRUE(m.Length("link", &observed.length) && observed.length == 8);
    EXPECT_TRUE(m.IsDirectory("d", &observed.directory) && observed.directory);
    struct stat s;
    EXPECT_TRUE(m.SetModifiedTime("link", 86400) && stat("d/g", &s) == 0 && s.st_atime == 86400);
    EXPECT_TRUE(m.ModifiedTime("d/g", &observed.time) && observed.time == 86400);
    EXPECT_TRUE(m.ModifiedTime("link", &observed.time) && observed.time != 86400);
    EXPECT_TRUE(m.TouchFile("link") && stat("d/g", &s) == 0 && s.st_mtime != 86400);
    EXPECT_TRUE(m.ChangeMode("link", 0640) && m.Mode("d/g", &observed.mode));
    EXPECT_EQ(observed.mode, S_IFREG | 0640);
    EXPECT_TRUE(m.MakeDirectory("e") && fs::is_directory("e") && m.RemoveDirectory("e") && !fs::exists("e"));
    EXPECT_TRUE(m.MakeSymbolicLink("nothing", "l") && fs::read_symlink("l") == "nothing" && m.Delete("l"));
    const mode_t mask = umask(0);
    EXPECT_TRUE(m.TouchFile("new") && stat("new", &s) == 0 && s.st_mode == (S_IFREG | 0644));
    umask(mask);

    // Pipes and devices are asked without waiting.
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    EXPECT_TRUE(m.Length(data, "pipe", &observed.length) && observed.length == 0);
    EXPECT_TRUE(m.ChangeMode(data, "pipe", 0640) && m.TouchFile(data, "pipe"));
    EXPECT_EQ(m.Lock_Valid(data, "pipe"), FILE_LOCK_VALID);
    EXPECT_TRUE(m.SetModifiedTime(data, "pipe", 7) && m.Stat(data, "pipe", &s));
    EXPECT_TRUE(s.st_atime == 7 && s.st_mtime == 7 && s.st_mode == (S_IFIFO | 0640));
    if (geteuid() == 0 && mknod("null", S_IFCHR | 0600, makedev(1, 3)) == 0) {
        EXPECT_TRUE(m.Copy(data, "null", data, "aside") && Get("root/aside").empty());
    }
}

TEST_F(File_Operations, Copy_And_Rename_Lose_Nothing) {
    UNIXFileManager& m = *manager;
    Put("root/f", std::string(20000, 'x') + "end");
    EXPECT_TRUE(m.Copy("f", "d/g") && Get("root/d/g") == Get("root/f") && m.Copy("f", "/dev/null"));
    EXPECT_TRUE(m.Copy("aside", "f") && Get("root/f") == "root/aside");
    Link("f", "root/link");
    fs::create_hard_link("f", "hard");
    for (const char* same : {"f", "link", "hard", "d/../f"})
        EXPECT_TRUE(m.Copy("f", same) && m.Copy(same, "f") && Get("root/f") == "root/aside") << same;
    for (const char* same : {"f", "d/../f", "//f", "hard"}) // in the data root, for want of a temporary one
        EXPECT_TRUE(m.Copy(data, "f", data, same) && m.Rename(data, "f", Tarn_PathType_Temp, same)) << same;
    EXPECT_TRUE(m.Rename("f", "f") && m.Rename("f", "hard") && Get("root/f") == "root/aside");
    EXPECT_EQ(Why(m.Copy("../root", "d/g")), "The source file is a directory");
    EXPECT_EQ(Why(m.Copy("f", "/dev/full")), System_Text(ENOSPC));
    EXPECT_EQ(Why(m.Rename("/proc/self/mem", "g")), System_Text(EIO)); // opens, and can't be read
    const std::string away = "/dev/shm" + base.substr(base.rfind('/'));
    EXPECT_TRUE(m.Rename("f", away.c_str()) && m.Rename(away.c_str(), "f") && Get("root/f") == "root/aside");
    EXPECT_FALSE(fs::exists(away));

    EXPECT_TRUE(m.Rename(data, "f", data, "d/f") && Get("root/d/f") == "root/aside");
    EXPECT_TRUE(!fs::exists(At("root/f")) && m.Rename(data, "link", data, "l2") && m.Delete(data, "l2"));
    EXPECT_TRUE(m.MakeDirectory(data, "e") && m.Rename(data, "d", data, "d2"));
    EXPECT_EQ(Why(m.Rename(data, "d2", data, "e/d")), "The source file is a directory");
    ASSERT_TRUE(m.InitializeTempDirectory(At("root2").c_str()));
    EXPECT_TRUE(m.Rename(Tarn_PathType_Temp, "x", data, "x") && Get("root/x") == "root2/x");
    EXPECT_EQ(Why(m.Delete(Tarn_PathType_Temp, "../x")), outside_message + "temporary directory");
    EXPECT_TRUE(m.MakeSymbolicLink(data, "d2/./f", data, "e/../l"));
    EXPECT_EQ(fs::read_symlink(At("root/l")), At("root/d2/f"));
    m.SecurityOptions(absolute);
    for (const auto& [path, normal] : {std::pair("a//b/../../../x", At("x")), {"/etc/../x", "/x"}})
        EXPECT_EQ(std::unique_ptr<char[]>(m.NormalizeContainedPath(data, path, nullptr, nullptr)).get(),
                  normal);
}

TEST_F(File_Operations, Temporary_Name_Begins_With_Its_Directory) {
    char* name = nullptr;
    for (const auto& [directory, expected] : {std::pair<const char*, const char*>(nullptr, "t.0"),
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
    ASSERT_TRUE(see(manager->MakeTemporary(At("u").c_str(), &name, FILE_MODE_READ)));
    EXPECT_EQ(name, At("u.a"));
    delete[] name;
    EXPECT_FALSE(manager->MakeTemporary("none/t", &name, FILE_MODE_READ));
    EXPECT_EQ(Error(), missing);
}

// What no operation may see: the content of a file, and a name.
constexpr char secret[] = "secret of others";
constexpr long secret_time = 86400;
constexpr int secret_mode = S_IFREG | 0711;

struct Containment_Race : File_Tree, testing::WithParamInterface<int> {};

// Below the root, a file and a directory change places with a stranger's links out of it to own targets, and
// with each other, while every contained operation is tried. Nothing outside may be changed, and nothing of
// it may be seen. RACE_TRIES in the environment makes it long.
TEST_P(Containment_Race, Leads_Nowhere_Outside) {
    if (GetParam() != 0)
        SKIP_UNLESS_ROOT();
    Put("outside/x", secret);
    Put(std::string("outside/") + secret, "");
    Put("root/f", "own");
    for (const char* directory : {"root/d", "outside/x_"})
        fs::create_directory(directory);
    fs::permissions("outside/x", fs::perms(secret_mode & 0777));
    ASSERT_TRUE(manager->SetModifiedTime("outside/x", secret_time));
    for (const auto& [target, link] :
         {std::pair("../outside/x", "to_file"), {"../outside", "to_directory"}}) {
        Link(target, std::string("root/") + link);
        if (geteuid() == 0)
            Own(std::string("root/") + link);
    }
    ASSERT_TRUE(manager->InitializeDataDirectory(At("root").c_str()));
    manager->SecurityOptions(GetParam());

    const Descriptor root(Open_Path(".", O_RDONLY)), own(Open_Path("d", O_RDONLY));
    ASSERT_TRUE(root && own);
    // The times of change of all that is outside tell of each touch.
    const auto outside = [this] {
        std::string times;
        for (const char* name : {"outside", "outside/x", "outside/x_", "outside/secret of others"}) {
            struct stat s = {};
            EXPECT_EQ(lstat(At(name).c_str(), &s), 0);
            times += std::to_string(s.st_ctim.tv_sec) + '.' + std::to_string(s.st_ctim.tv_nsec) + ' ';
        }
        return times;
    };
    const std::string before = outside();
    const char* const wanted = getenv("RACE_TRIES");
    const int least = wanted ? atoi(wanted) : 70000;
    std::atomic<int> swaps = 0;
    std::jthread other([&](const std::stop_token& end) {
        const char* const pairs[][2] = {{"f", "to_file"}, {"d", "to_directory"}, {"f", "d"}};
        for (unsigned i = 1; !end.stop_requested(); i = i * 1664525 + 1013904223) {
            const auto& [a, b] = pairs[(i >> 16) % std::size(pairs)];
            swaps += renameat2(root.get(), a, root.get(), b, RENAME_EXCHANGE) == 0;
        }
    });
    int done = 0, tries = 0;
    for (; swaps < least || tries < least; ++tries) {
        const File_Operation& operation = file_operations[tries % std::size(file_operations)];
        const bool on_file = operation.on_file && tries / std::size(file_operations) % 2;
        close(openat(own.get(), "x", O_CREAT | O_WRONLY | O_CLOEXEC, 0600)); // which some take away
        observed = {};
        application.passes = 1;
        done += operation.contained(*manager, on_file ? "f" : (std::string("d") + operation.inside).c_str(),
                                    data);
        ASSERT_FALSE(observed.exists || observed.text.find(secret) != std::string::npos ||
                     observed.length == sizeof secret - 1 || observed.time == secret_time ||
                     observed.mode == secret_mode)
            << operation.name;
    }
    other.request_stop();
    other.join();
    EXPECT_EQ(outside(), before);
    std::cout << swaps << " swaps, " << tries << " operations, of which " << done << " done; "
              << (HasFailure() ? "escapes" : "0 escapes") << '\n';
    EXPECT_TRUE(done > tries / 100 && done < tries * 99 / 100) << "a race with but one side: " << done;
}

INSTANTIATE_TEST_SUITE_P(Without_And_With_Links, Containment_Race, testing::Values(0, SECURITY_DATA_LINKS));

} // namespace
