// What all kinds of files share.

#include "files/file.h"

#include "files/file_manager.h"

#include <cstring>
#include <new>

namespace {

char* Copied_Path(const char* path) {
    if (char* copy = strdup(path))
        return copy;
    throw std::bad_alloc();
}

} // namespace

File::File(FileManager* manager, const char* path)
    : manager(manager), contained(0), path_type(Tarn_PathType_Data), path(Copied_Path(path)) {
}

File::File(FileManager* manager, Tarn_PathType type, const char* path)
    : manager(manager), contained(1), path_type(type), path(Copied_Path(path)) {
}

File::~File() {
    manager->FileClosed(this);
}

void File::Error(const String& text) {
    error_ = text;
}

const String& File::error() const {
    return error_;
}

long File::Write(const String& text) {
    return Write(text.text(), static_cast<unsigned long>(text.length()));
}

long File::Read(unsigned char* buffer, unsigned long length) {
    return Read(reinterpret_cast<char*>(buffer), length);
}

long File::Write(const unsigned char* text, unsigned long length) {
    return Write(reinterpret_cast<const char*>(text), length);
}
