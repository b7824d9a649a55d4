#ifndef IMAGE_TAGGED_FILE_H
#define IMAGE_TAGGED_FILE_H

#include "core/string.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class File;
class FileManager;

// A section's tag from its four letters.
constexpr int Section_Tag(const char (&letters)[5]) {
    std::uint32_t tag = 0;
    for (int i = 3; i >= 0; --i)
        tag = tag << 8 | static_cast<unsigned char>(letters[i]);
    return static_cast<int>(tag);
}

// The container of a compiled image: a header, sections one behind the other, and a directory that finds a
// section by its tag. Nothing that stands in a file is trusted.
//
// Operations answer false, 0 or -1 on failure, with the text in error(). A read that answers fewer bytes than
// were asked for is no failure, but leaves a text, too, for the caller that needed all of them. While nothing
// is open, everything but Create, Open, Close and Deactivate fails with "The file is not open".
class TaggedFile {
  public:
    static constexpr int signature_size = 16;
    static constexpr const char* end_of_file = "Unexpected end of file"; // the text of a short read

    // The manager outlives the object.
    explicit TaggedFile(FileManager* manager);
    TaggedFile(const TaggedFile&) = delete;
    TaggedFile& operator=(const TaggedFile&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~TaggedFile(); // what was written since the last Section_Flush can't be found again
    virtual const String& error();
    virtual bool Error(const String& text); // answers false

    // Opens a file for writing, in place of what was there. The signature is 16 bytes, or null for zeros;
    // the version is stored as given, 0 means the newest one.
    bool Create(const char* path, const char* signature, int version);
    // Opens an image for reading. The mode is made of FILE_MODE_ bits. The second form takes the file over,
    // except on failure.
    bool Open(const char* path, int mode);
    bool Open(const char* path, File* file);
    void Close();
    // Parks the file; the next operation brings it back.
    void Deactivate();

    [[nodiscard]] int version() const { return version_; }
    [[nodiscard]] const char* signature() const { return signature_; } // 16 bytes

    // Writing. A section lasts from its start to its end or the next start; several may have one tag, of
    // which the first is found. Section_Write answers the length.
    void Section_Start(int tag);
    int Section_Write(const char* data, int length);
    bool Section_Write_All(const std::vector<char>& bytes);
    void Section_End();
    // Ends an open section, and writes directory and header. Writing may go on, over the directory, and is to
    // be flushed again.
    bool Section_Flush();

    // Random access. The section becomes the current one and stays so until Section_Read_End. As long as
    // there is a current section, a tag that isn't found means that one: readers rely on it.
    int Section_Read(int tag, int offset, char* data, int length);
    // Sequential access, from the start of the section. size may be null.
    bool Section_Read_Start(int tag, int* size);
    int Section_Read(char* data, int length);
    void Section_Read_End();
    // Bytes of the current section behind the reading position that the file really has; 0 without a section.
    std::int64_t Section_Remaining();
    // True if the current section has size bytes there, or from an offset on. Whoever makes room for what a
    // count in the file announces asks this first. False leaves the text that the read would leave.
    bool Section_Holds(std::int64_t size);
    bool Section_Holds(std::int64_t offset, std::int64_t size);
    // The bytes that a reader may copy out of the file where several things may stand on the same ones, as
    // names and segments do: a small damaged file could fill the memory otherwise.
    std::int64_t Copy_Room();
    // Reads so many records, for which it makes room if the section has them. False, with a text, without
    // them.
    bool Section_Read_Records(std::vector<char>& records, std::uint32_t count, int record_size);

  private:
    static constexpr int header_size = 32;

    struct Directory_Entry {
        int tag;
        int offset; // from the start of the file
        int size;
    };

    bool Is_Open();
    bool Adopt(const char* path);
    bool Header_Read();
    bool Header_Write();
    bool Directory_Read(std::uint32_t entries);
    bool Directory_Write();
    bool Find_Section(int tag);
    std::int64_t Extent();
    bool In_Range(std::int64_t offset, std::int64_t length);
    int Read_Current(std::int64_t offset, char* data, int length);
    long Read_At(long at, char* data, long length);
    bool Write_At(long at, const char* data, long length);

    FileManager* manager;
    std::unique_ptr<File> file; // null while nothing is open
    String path_;
    String error_;
    int version_ = 0;
    char signature_[signature_size] = {};
    int directory_offset = 0;
    std::vector<Directory_Entry> directory;
    int current = -1;                   // entry that is being read, -1 for none
    std::int64_t position = 0;          // within it
    std::optional<int> write_tag;       // of the section that is being written
    int start = header_size;            // of that section in the file
    int running_position = header_size; // where writing goes on
    int written_size = 0;               // of that section
};

#endif
