// Paths as elements: joining and collapsing.

#include "files/unix_file_path.h"

#include "core/string.h"
#include "core/text_length.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

namespace {

char* Joined(const char* directory, const char* name) {
    const std::size_t size = strlen(directory) + strlen(name) + 2;
    char* text = new char[size];
    snprintf(text, size, "%s/%s", directory, name);
    return text;
}

int Checked_Length(const char* path) {
    const std::size_t length = strlen(path);
    if (length >= INT_MAX)
        throw std::bad_alloc();
    return static_cast<int>(length);
}

} // namespace

UNIXFilePath::UNIXFilePath(const char* path) : UNIXFilePath(tarn_strdup(path ? path : ""), false) {
}

UNIXFilePath::UNIXFilePath(char* path, bool copy)
    : text(copy ? tarn_strdup(path) : path), length(Checked_Length(text.get())) {
    Parse();
}

UNIXFilePath::UNIXFilePath(const char* directory, const char* name)
    : UNIXFilePath(Joined(directory, name), false) {
}

UNIXFilePath::UNIXFilePath(UNIXFilePath& other)
    : UNIXFilePath(other.Collapsed_Path(nullptr, nullptr), false) {
}

UNIXFilePath::~UNIXFilePath() = default;

void UNIXFilePath::Parse() {
    collapsed.reset();
    collapsed_count = 0;
    absolute = text[0] == '/';

    // No two elements begin closer than two bytes.
    offsets = std::make_unique<int[]>(strlen(text.get()) / 2 + 1);
    offsets[0] = 0;
    element_count = 1;
    for (char* slash = strchr(text.get(), '/'); slash; slash = strchr(slash, '/')) {
        char* element = slash + strspn(slash, "/");
        if (!*element) {
            *slash = '\0';
            break;
        }
        offsets[element_count++] = static_cast<int>(element - text.get());
        slash = element;
    }
}

// Where the element ends: at a slash, at the NUL that Element or Span put there, or at the end of the text.
char* UNIXFilePath::End(int index) const {
    char* element = &text[offsets[index]];
    return element + strcspn(element, "/");
}

std::string_view UNIXFilePath::Name(int index) const {
    if (absolute && index == 0)
        return "/";
    const char* element = &text[offsets[index]];
    return std::string_view(element, End(index));
}

std::string_view UNIXFilePath::Last_Name() {
    return Collapsed_Count() > 0 ? Name(collapsed[collapsed_count - 1]) : std::string_view();
}

void UNIXFilePath::Collapse() {
    collapsed = std::make_unique<int[]>(static_cast<std::size_t>(element_count));
    collapsed_count = 0;
    for (int i = 0; i < element_count; ++i) {
        if (Name(i) == ".")
            continue;
        const std::string_view kept = Last_Name();
        if (Name(i) != ".." || kept.empty() || kept == "..")
            collapsed[collapsed_count++] = i;
        else if (kept != "/")
            --collapsed_count;
    }
}

int UNIXFilePath::Collapsed_Count() {
    if (!collapsed)
        Collapse();
    return collapsed_count;
}

const char* UNIXFilePath::Element(int index) {
    return Span(index, index);
}

const char* UNIXFilePath::Span(int first, int last) {
    if (first > last || first < 0 || last >= element_count)
        return nullptr;
    if (absolute && last == 0)
        return "/";
    for (int i = first; i < last; ++i)
        *End(i) = '/';
    *End(last) = '\0';
    return &text[offsets[first]];
}

bool UNIXFilePath::Begins_Like(UNIXFilePath& other, int count) {
    for (int i = 0; i < count; ++i)
        if (Name(collapsed[i]) != other.Name(other.collapsed[i]))
            return false;
    return true;
}

bool UNIXFilePath::Contains(UNIXFilePath& other) {
    const int count = Collapsed_Count();
    return count <= other.Collapsed_Count() && Begins_Like(other, count);
}

bool UNIXFilePath::Matches(UNIXFilePath& other, int skip) {
    const int count = Collapsed_Count();
    return count == other.Collapsed_Count() && Begins_Like(other, count - skip);
}

const char* UNIXFilePath::Collapsed_Filename() {
    const std::string_view name = Last_Name();
    if (Collapsed_Count() == 0 || name == "/" || name == "..")
        return ".";
    return Element(collapsed[collapsed_count - 1]);
}

const char* UNIXFilePath::Collapsed_Directory() {
    const int count = Collapsed_Count();
    if (count > 0 && Last_Name() == "..") // climbs above its start
        return Span(collapsed[0], collapsed[count - 1]);
    if (count < 2)
        return absolute ? "/" : ".";
    // Elements that were dropped in between are part of the span: it names the same directory.
    return Span(collapsed[0], collapsed[count - 2]);
}

char* UNIXFilePath::Collapsed_Path(int* path_length, int* size) {
    std::string path;
    for (int i = 0; i < Collapsed_Count(); ++i) {
        if (i > (absolute ? 1 : 0))
            path += '/';
        path += Name(collapsed[i]);
    }
    const bool bare = collapsed_count == (absolute ? 1 : 0);
    if (bare && !absolute)
        path.assign(1, '.');
    const int array_size = bare ? 2 : length + 1;
    char* result = new char[static_cast<std::size_t>(array_size)];
    memcpy(result, path.c_str(), path.length() + 1);
    if (path_length)
        *path_length = Length_Of(path);
    if (size)
        *size = array_size;
    return result;
}

void UNIXFilePath::Release() {
    (void)Whole(); // takes the NULs back
    offsets.reset();
    collapsed.reset();
    element_count = collapsed_count = 0;
    (void)text.release();
}
