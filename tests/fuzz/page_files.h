// The files that a page may include, in memory.
#ifndef FUZZ_PAGE_FILES_H
#define FUZZ_PAGE_FILES_H

#include "files/file.h"
#include "files/unix_file_manager.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

// A text that is there as long as it is mapped: each mapping is memory of its own, so that a sanitizer sees
// whoever looks at one that is gone.
class Page_File : public File {
  public:
    Page_File(FileManager* manager, const char* path, std::string_view text, bool comes_back)
        : File(manager, path), text(text), comes_back(comes_back) {}
    ~Page_File() override = default;

    bool OwnerID(int*) override { return false; }
    bool GroupID(int*) override { return false; }
    long Read(char*, unsigned long) override { return -1; }
    long Write(const char*, unsigned long) override { return -1; }
    long Seek(long) override { return -1; }
    long Tell() override { return -1; }
    long Length() override { return static_cast<long>(text.size()); }
    bool IsDirectory(bool* directory) override { return *directory = false, true; }
    bool Lock(FileLockType, long, unsigned long) override { return false; }
    bool Release(long, unsigned long) override { return false; }
    const char* Map(long, long) override {
        mapping = std::make_unique<char[]>(text.size());
        return std::copy(text.begin(), text.end(), mapping.get()), mapping.get();
    }
    void Release() override { mapping.reset(); }
    bool Activate(String& error) override {
        if (!comes_back)
            error = std::strerror(ENOENT);
        return comes_back;
    }
    bool Deactivate() override { return true; }
    bool Stat(struct stat* status) override {
        *status = {};
        status->st_mode = S_IFREG;
        status->st_size = Length();
        return true;
    }

  private:
    std::string_view text;
    bool comes_back;
    std::unique_ptr<char[]> mapping;
};

// Every name is one of the texts: the first file is the first, then the first byte of a name chooses. A name
// that ends in ! is gone when a page comes back to it. So many files are opened that pages can nest and
// repeat, and no more.
class Page_Files : public UNIXFileManager {
  public:
    Page_Files(TarnApplication* application, std::vector<std::string_view> texts)
        : UNIXFileManager(application), texts(std::move(texts)) {}

    using UNIXFileManager::IsDirectory;
    using UNIXFileManager::Open;
    bool IsDirectory(const char*, bool* directory) override { return *directory = false, true; }
    File* Open(const char* path, int) override {
        if (path[0] == '\0' || ++opened > 12) {
            Error(std::strerror(ENOENT));
            return nullptr;
        }
        const std::string_view text =
            texts[opened == 1 ? 0 : static_cast<unsigned char>(path[0]) % texts.size()];
        return new Page_File(this, path, text, path[std::strlen(path) - 1] != '!');
    }

  private:
    std::vector<std::string_view> texts;
    int opened = 0;
};

#endif
