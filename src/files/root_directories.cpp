// The three root directories that contained paths live in: setting them up, and the policy that goes with
// each.

#include "files/descriptor.h"
#include "files/unix_file_manager.h"
#include "files/unix_file_path.h"

#include <iterator>
#include <memory>

namespace {

struct Root_Policy {
    const char* name;                 // in messages
    int links, other_owner, absolute; // bits of the security options
};

// By Tarn_PathType.
constexpr Root_Policy policies[] = {
    {"data", SECURITY_DATA_LINKS, SECURITY_DATA_OTHER_OWNER, SECURITY_DATA_ABSOLUTE},
    {"script", SECURITY_SCRIPT_LINKS, SECURITY_SCRIPT_OTHER_OWNER, SECURITY_SCRIPT_ABSOLUTE},
    {"temporary", SECURITY_TEMP_LINKS, SECURITY_TEMP_OTHER_OWNER, 0},
};
static_assert(std::size(policies) == Tarn_PathType_Temp + 1);

// By RealizeStatus.
constexpr const char* setup_failures[] = {
    nullptr,
    " does not exist",
    " references a symbolic link",
    " references a symbolic link to a directory owned by a different user",
};
static_assert(std::size(setup_failures) == REALIZE_OTHER_OWNER + 1);

} // namespace

UNIXFileManager::UNIXFileManager(TarnApplication* application, UNIXFileManager& other)
    : FileManager(application), script(Duplicate(other.script)), data(Duplicate(other.data)),
      temp(Duplicate(other.temp)) {
}

UNIXFileManager::~UNIXFileManager() {
    for (const int descriptor : {script.descriptor, data.descriptor, temp.descriptor})
        if (descriptor >= 0)
            close(descriptor);
}

UNIXFileManager::Root UNIXFileManager::Duplicate(const Root& root) {
    return {root.path ? std::make_unique<UNIXFilePath>(*root.path) : nullptr,
            fcntl(root.descriptor, F_DUPFD_CLOEXEC, 0)};
}

UNIXFileManager::Root* UNIXFileManager::Root_Of(Tarn_PathType type) {
    switch (type) {
    case Tarn_PathType_Data: return &data;
    case Tarn_PathType_Script: return &script;
    case Tarn_PathType_Temp: return &temp;
    }
    return nullptr;
}

const char* UNIXFileManager::Root_Name(Tarn_PathType type) {
    return policies[type].name;
}

bool UNIXFileManager::InitializeScriptDirectory(const char* path, const char* name) {
    if (script.descriptor >= 0)
        close(script.descriptor);
    script.descriptor = -1;
    return Initialize_Root(Tarn_PathType_Script, path, name);
}

bool UNIXFileManager::InitializeDataDirectory(const char* path) {
    return Initialize_Root(Tarn_PathType_Data, path, nullptr);
}

bool UNIXFileManager::InitializeTempDirectory(const char* path) {
    return Initialize_Root(Tarn_PathType_Temp, path, nullptr);
}

bool UNIXFileManager::Initialize_Root(Tarn_PathType type, const char* path, const char* label) {
    const Root_Policy& policy = policies[type];
    String subject = String("The configured ") + policy.name + " directory";
    if (label)
        subject += String(" for '") + label + "'";

    Root& root = *Root_Of(type);
    root.path.reset();
    if (!path || *path != '/')
        return Fail(subject + " is not an absolute path");

    UNIXFilePath* real = nullptr;
    const int status =
        RealizePath(path, &real, security_options & policy.links, security_options & policy.other_owner);
    std::unique_ptr<UNIXFilePath> holder(real);
    // The descriptor is taken wherever that ended; one of the data and temporary directory stays open beside
    // it.
    root.descriptor = SaveCurrentDirectory();
    if (root.descriptor < 0)
        return Fail_System();
    if (status != REALIZE_RESOLVED)
        return Fail(subject + setup_failures[status]);
    root.path = std::move(holder);
    return true;
}

bool UNIXFileManager::ContainedPathSettings(Tarn_PathType type, _UNIXContainedPathSettings* settings) {
    if (type == Tarn_PathType_Temp && !temp.path)
        type = Tarn_PathType_Data;
    const Root* root = Root_Of(type);
    if (!root)
        return true;
    const Root_Policy& policy = policies[type];
    if (!root->path)
        return Fail(String("There is no configured ") + policy.name + " directory");
    settings->directory_fd = root->descriptor;
    settings->root = root->path.get();
    settings->allow_links = security_options & policy.links;
    settings->allow_other_owner = security_options & policy.other_owner;
    settings->allow_absolute = security_options & policy.absolute;
    return true;
}

int UNIXFileManager::SaveCurrentDirectory() {
    return Open_Path(".", O_RDONLY);
}

int UNIXFileManager::RestoreCurrentDirectory(int descriptor) {
    if (descriptor < 0)
        return -1;
    const Descriptor closing(descriptor);
    return fchdir(descriptor);
}
