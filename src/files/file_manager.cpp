// What all file managers share: files that are parked, and errors.

#include "files/file_manager.h"

namespace {

bool Remove_From(List<File>& files, File* file) {
    if (!files.Seek(file))
        return false;
    files.Remove(LIST_CURRENT);
    return true;
}

} // namespace

FileManager::FileManager(TarnApplication* application) : application(application) {
}

const String& FileManager::error() const {
    return error_;
}

void FileManager::Error(const String& text) {
    error_ = text;
}

bool FileManager::Fail(const String& text) {
    Error(text);
    return false;
}

bool FileManager::Fail_System() {
    return Fail(lasterror());
}

bool FileManager::FreeFileSpace(int count) {
    if (max_files == 0)
        return true;
    if (count > max_files) {
        Error(String("Simultaneous request for ") + max_files +
              " file handles exceeds the maximum number of simultaneous file handles.");
        return false;
    }
    for (int needed = count + active.Entries(); needed > max_files; --needed) {
        File* oldest = active.Remove(LIST_LAST);
        inactive.Insert(oldest, LIST_FIRST);
        oldest->Deactivate();
    }
    return true;
}

File* FileManager::FileOpened(File* file) {
    active.Insert(file, LIST_FIRST);
    return file;
}

void FileManager::FileClosed(File* file) {
    if (!Remove_From(active, file))
        Remove_From(inactive, file);
}

void FileManager::DeactivateFile(File* file) {
    if (!Remove_From(active, file))
        return;
    inactive.Insert(file, LIST_LAST);
    file->Deactivate();
}

bool FileManager::ActivateFile(File* file) {
    if (Remove_From(active, file)) {
        active.Insert(file, LIST_FIRST);
        return true;
    }
    if (!FreeFileSpace(1))
        return false;
    if (!inactive.Seek(file))
        return Fail("Activation request for invalid or non-active file");
    String text;
    if (!file->Activate(text)) {
        Error(text);
        return false;
    }
    Remove_From(inactive, file);
    active.Insert(file, LIST_FIRST);
    return true;
}

void FileManager::MaxFiles(int count) {
    max_files = count;
}

void FileManager::SecurityOptions(int options) {
    security_options = options;
}
