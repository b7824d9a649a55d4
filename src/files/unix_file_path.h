#ifndef FILES_UNIX_FILE_PATH_H
#define FILES_UNIX_FILE_PATH_H

#include <memory>
#include <string_view>

// A path held as one text and cut into elements in place. An absolute path has the root as its element 0 and
// the names from element 1 on. Runs of slashes count as one separator, slashes at the end as none.
//
// Collapsing takes out "." and each ".." with the name before it, as text only: the file system isn't asked.
// A ".." above the root goes away, one above the start of a relative path stays.
//
// Element, Span, Collapsed_Filename and Collapsed_Directory answer text that belongs to the path. Element
// writes a NUL behind its element, Span takes such NULs back within the span; so the text of a Span is good
// until the next Span, or until an Element inside of it.
class UNIXFilePath {
  public:
    // A null path is the empty one.
    explicit UNIXFilePath(const char* path);
    // Adopts a path from new[] unless copy is set.
    UNIXFilePath(char* path, bool copy);
    // The two joined by "/".
    UNIXFilePath(const char* directory, const char* name);
    // The other's collapsed path.
    UNIXFilePath(UNIXFilePath& other);
    UNIXFilePath& operator=(const UNIXFilePath&) = delete;
    ~UNIXFilePath();

    void Parse();
    void Collapse();

    // "/" for the root; null when out of range.
    const char* Element(int index);
    // The text from one element through another; null when out of range or the wrong way round.
    const char* Span(int first, int last);
    // The whole path without slashes at its end, "/" for the root.
    const char* Whole() { return Span(0, element_count - 1); }

    // Whether the other path is this one or lies below it, and whether both are the same but for the last
    // skip elements; by collapsed elements.
    bool Contains(UNIXFilePath& other);
    bool Matches(UNIXFilePath& other, int skip);

    // "." when the path has no name of its own at its end.
    const char* Collapsed_Filename();
    const char* Collapsed_Directory();
    // A new array, the caller's. Length and size may be null; the size told is that of the array.
    char* Collapsed_Path(int* path_length, int* size);

    // Forgets the text without freeing it, for a caller that takes it over.
    void Release();

  private:
    char* End(int index) const;
    std::string_view Name(int index) const;
    std::string_view Last_Name(); // of the collapsed elements
    int Collapsed_Count();
    bool Begins_Like(UNIXFilePath& other, int count);

    // The order of the fields is part of the binary interface.
    std::unique_ptr<char[]> text;
    int length; // as constructed, ahead of any trimming
    int element_count = 0;
    std::unique_ptr<int[]> offsets; // of each element in text
    bool absolute = false;
    int collapsed_count = 0;
    std::unique_ptr<int[]> collapsed; // elements that survive collapsing; null until first needed
};

#endif
