// The file, little-endian:
//   header     magic "Tarn" (4 bytes), version (4), signature (16), directory_offset (4, signed),
//              directory_entries (4, signed)
//   sections
//   directory  for each section: tag (4), section_offset (4, signed), section_size (4, signed)

#include "image/tagged_file.h"

#include "backend/instructions/engine_version.h"
#include "files/file_manager.h"
#include "image/little_endian.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace {

constexpr char magic[4] = {'T', 'a', 'r', 'n'};
constexpr int directory_entry_size = 12;
constexpr int directory_growth = 16;
constexpr int oldest_version = file_version_major << 16 | FILE_VERSION_SECOND;
constexpr int newest_version = file_version_major << 16 | newest_file_version;
constexpr std::uint32_t most_entries = 0xaaaaaaa;

// What may be copied for each byte of the file, and ahead of that.
constexpr std::int64_t copies_per_byte = 3;
constexpr std::int64_t copies_ahead = 1 << 19;

} // namespace

TaggedFile::TaggedFile(FileManager* manager) : manager(manager) {
}

TaggedFile::~TaggedFile() = default;

const String& TaggedFile::error() {
    return error_;
}

bool TaggedFile::Error(const String& text) {
    error_ = text;
    return false;
}

bool TaggedFile::Create(const char* path, const char* signature, int version) {
    Close();
    file.reset(manager->Open(path, FILE_MODE_WRITE | FILE_MODE_CREATE | FILE_MODE_TRUNCATE));
    if (!file)
        return Error(manager->error());
    path_.assign(path, -1);
    version_ = version ? version : newest_version;
    std::fill_n(signature_, signature_size, '\0');
    if (signature)
        std::copy_n(signature, signature_size, signature_);
    directory.reserve(directory_growth);
    if (Header_Write())
        return true;
    Close();
    return false;
}

bool TaggedFile::Open(const char* path, int mode) {
    Close();
    file.reset(manager->Open(path, mode));
    if (!file)
        return Error(manager->error());
    if (Adopt(path))
        return true;
    Close();
    return false;
}

bool TaggedFile::Open(const char* path, File* file) {
    Close();
    this->file.reset(file);
    if (Adopt(path))
        return true;
    static_cast<void>(this->file.release()); // the caller's again
    Close();
    return false;
}

void TaggedFile::Close() {
    file.reset();
    path_.destroy();
    directory.clear();
    directory_offset = 0;
    Section_Read_End();
    write_tag.reset();
    start = running_position = header_size;
    written_size = 0;
}

void TaggedFile::Deactivate() {
    if (file)
        manager->DeactivateFile(file.get());
}

void TaggedFile::Section_Start(int tag) {
    Section_End();
    write_tag = tag;
    start = running_position;
    written_size = 0;
}

int TaggedFile::Section_Write(const char* data, int length) {
    if (!Is_Open())
        return -1;
    if (length < 0 || length > INT_MAX - running_position) {
        Error("Invalid size");
        return -1;
    }
    if (!Write_At(running_position, data, length))
        return -1;
    running_position += length;
    written_size += length;
    return length;
}

bool TaggedFile::Section_Write_All(const std::vector<char>& bytes) {
    const int length = static_cast<int>(std::min<std::size_t>(bytes.size(), INT_MAX)); // which is refused
    return Section_Write(bytes.data(), length) == length;
}

void TaggedFile::Section_End() {
    if (!Is_Open() || !write_tag)
        return;
    directory.push_back({*write_tag, start, written_size});
    write_tag.reset();
}

bool TaggedFile::Section_Flush() {
    if (!Is_Open())
        return false;
    Section_End();
    directory_offset = running_position;
    return Directory_Write() && Header_Write();
}

int TaggedFile::Section_Read(int tag, int offset, char* data, int length) {
    return Find_Section(tag) ? Read_Current(offset, data, length) : -1;
}

bool TaggedFile::Section_Read_Start(int tag, int* size) {
    if (!Find_Section(tag))
        return false;
    const Directory_Entry& section = directory[current];
    if (file->Seek(section.offset) != section.offset)
        return Error(end_of_file);
    position = 0;
    if (size)
        *size = section.size;
    return true;
}

int TaggedFile::Section_Read(char* data, int length) {
    if (current >= 0 && position > directory[current].size) {
        Error("Read past end of section boundary");
        return -1;
    }
    const int read = Read_Current(position, data, length);
    position += std::max(read, 0);
    return read;
}

void TaggedFile::Section_Read_End() {
    current = -1;
    position = 0;
}

std::int64_t TaggedFile::Section_Remaining() {
    return std::max<std::int64_t>(Extent() - position, 0);
}

bool TaggedFile::Section_Holds(std::int64_t size) {
    return Section_Holds(position, size);
}

bool TaggedFile::Section_Holds(std::int64_t offset, std::int64_t size) {
    return In_Range(offset, size) && (offset + size <= Extent() || Error(end_of_file));
}

std::int64_t TaggedFile::Copy_Room() {
    return file ? copies_per_byte * file->Length() + copies_ahead : 0;
}

bool TaggedFile::Section_Read_Records(std::vector<char>& records, std::uint32_t count, int record_size) {
    const std::int64_t size = std::int64_t{count} * record_size;
    if (!Section_Holds(size))
        return false;
    records.resize(static_cast<std::size_t>(size));
    return Section_Read(records.data(), static_cast<int>(size)) == size;
}

bool TaggedFile::Is_Open() {
    return file || Error("The file is not open");
}

bool TaggedFile::Adopt(const char* path) {
    path_.assign(path, -1);
    return Header_Read();
}

bool TaggedFile::Header_Read() {
    char header[header_size];
    const bool whole = file && Read_At(0, header, header_size) == header_size;
    if (!whole || Get_Little_Endian<std::int32_t>(header + 24) < 0 ||
        Get_Little_Endian<std::int32_t>(header + 28) < 0 || std::memcmp(header, magic, sizeof magic) != 0)
        return Error("File is either corrupt or not a valid compiled Tarn Script file");
    version_ = Get_Little_Endian<std::int32_t>(header + 4);
    if (version_ < oldest_version || version_ > newest_version)
        return Error("File was generated by an incompatible version of the Tarn Script Compiler");
    std::copy_n(header + 8, signature_size, signature_);
    directory_offset = Get_Little_Endian<std::int32_t>(header + 24);
    return Directory_Read(Get_Little_Endian<std::uint32_t>(header + 28));
}

bool TaggedFile::Header_Write() {
    char header[header_size];
    std::copy_n(magic, sizeof magic, header);
    Put_Little_Endian(header + 4, version_);
    std::copy_n(signature_, signature_size, header + 8);
    Put_Little_Endian(header + 24, directory_offset);
    Put_Little_Endian(header + 28, static_cast<std::uint32_t>(directory.size()));
    return Write_At(0, header, header_size);
}

bool TaggedFile::Directory_Read(std::uint32_t entries) {
    if (entries > most_entries)
        return Error("header.directory_entries out of range");
    const std::int64_t size = std::int64_t{entries} * directory_entry_size;
    const auto truncated = [this] { return Error("Unexpected end of file while reading directory"); };
    if (size > std::max<std::int64_t>(file->Length() - directory_offset, 0))
        return truncated();
    std::vector<char> bytes(static_cast<std::size_t>(size));
    if (Read_At(directory_offset, bytes.data(), size) != size)
        return truncated();
    directory.reserve(entries);
    for (const char* record = bytes.data(); directory.size() < entries; record += directory_entry_size) {
        const Directory_Entry entry{Get_Little_Endian<std::int32_t>(record),
                                    Get_Little_Endian<std::int32_t>(record + 4),
                                    Get_Little_Endian<std::int32_t>(record + 8)};
        if (entry.offset < 0)
            return Error("directory[ entry ].section_offset out of range");
        if (entry.size < 0)
            return Error("directory[ entry ].section_size out of range");
        directory.push_back(entry);
    }
    return true;
}

bool TaggedFile::Directory_Write() {
    std::vector<char> bytes;
    for (const Directory_Entry& entry : directory) {
        Append_Little_Endian(bytes, entry.tag);
        Append_Little_Endian(bytes, entry.offset);
        Append_Little_Endian(bytes, entry.size);
    }
    return Write_At(directory_offset, bytes.data(), static_cast<long>(bytes.size()));
}

// Makes the first section with this tag the current one. Where there is none, the section that is current
// goes on being used, and only without one does the search fail.
bool TaggedFile::Find_Section(int tag) {
    if (!Is_Open())
        return false;
    if (current >= 0 && directory[current].tag == tag)
        return true;
    const auto found = std::find_if(directory.begin(), directory.end(),
                                    [tag](const Directory_Entry& entry) { return entry.tag == tag; });
    if (found != directory.end())
        current = static_cast<int>(found - directory.begin());
    return current >= 0 || Error("Invalid section");
}

// How much of the current section the file has.
std::int64_t TaggedFile::Extent() {
    if (current < 0)
        return 0;
    const Directory_Entry& section = directory[current];
    return std::clamp<std::int64_t>(file->Length() - section.offset, 0, section.size);
}

// Refuses what begins outside the current section, and a length that no file can have behind its start.
bool TaggedFile::In_Range(std::int64_t offset, std::int64_t length) {
    if (!Is_Open())
        return false;
    if (current < 0)
        return Error("Invalid section");
    const Directory_Entry& section = directory[current];
    const std::int64_t longest = std::int64_t{INT_MAX} - section.offset;
    if (offset < 0 || offset > section.size || offset > longest)
        return Error("Invalid offset");
    return (length >= 0 && length <= longest) || Error("Invalid size");
}

int TaggedFile::Read_Current(std::int64_t offset, char* data, int length) {
    if (!In_Range(offset, length))
        return -1;
    const Directory_Entry& section = directory[current];
    const std::int64_t wanted = std::min<std::int64_t>(length, section.size - offset);
    const int read = static_cast<int>(Read_At(section.offset + offset, data, wanted));
    if (read >= 0 && read < length)
        Error(end_of_file);
    return read;
}

// Reads up to the end of the file. -1 on failure.
long TaggedFile::Read_At(long at, char* data, long length) {
    if (file->Seek(at) != at) {
        Error(end_of_file);
        return -1;
    }
    long done = 0;
    while (done < length) {
        const long read = file->Read(data + done, static_cast<unsigned long>(length - done));
        if (read < 0) {
            Error(file->error());
            return -1;
        }
        if (read == 0)
            break;
        done += read;
    }
    return done;
}

bool TaggedFile::Write_At(long at, const char* data, long length) {
    if (file->Seek(at) != at)
        return Error(file->error());
    for (long done = 0; done < length;) {
        const long written = file->Write(data + done, static_cast<unsigned long>(length - done));
        if (written <= 0)
            return Error(file->error());
        done += written;
    }
    return true;
}
