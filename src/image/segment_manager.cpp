// The section, little-endian:
//   header           entries (4 bytes), start (4)
//   segment headers  for each segment: offset in the data (4), size (4, signed)
//   data             of the segments, back to back

#include "image/segment_manager.h"

#include "image/little_endian.h"
#include "image/tagged_file.h"

namespace {

constexpr int section_tag = Section_Tag("segs");
constexpr int header_size = 8;
constexpr int segment_header_size = 8;
constexpr std::uint32_t most_entries = 0xfffffff;

} // namespace

SegmentManager::SegmentManager() : segments(1) {
}

SegmentManager::SegmentManager(const SegmentManager& source) : start(source.start) {
    for (const auto& segment : source.segments)
        segments.push_back(segment ? std::make_unique<Segment>(*segment)
                                   : std::make_unique<Segment>(Entries()));
}

SegmentManager::~SegmentManager() = default;

const String& SegmentManager::error() {
    return error_;
}

bool SegmentManager::Error(const String& text) {
    error_ = text;
    return false;
}

Segment* SegmentManager::Start() {
    auto& segment = segments[start];
    if (!segment)
        segment = std::make_unique<Segment>(start);
    return segment.get();
}

Segment* SegmentManager::Segment_Add() {
    return segments.emplace_back(std::make_unique<Segment>(Entries())).get();
}

Segment* SegmentManager::Segment_Get(int id) const {
    return id >= 0 && id < Entries() ? segments[id].get() : nullptr;
}

bool SegmentManager::Read(TaggedFile* file) {
    const bool read = Read_Section(file);
    file->Section_Read_End();
    return read;
}

bool SegmentManager::Write(TaggedFile* file) {
    std::vector<char> headers;
    Append_Little_Endian(headers, Entries());
    Append_Little_Endian(headers, start);
    std::int64_t offset = 0;
    for (const auto& segment : segments) {
        const int size = segment ? segment->size : 0;
        Append_Little_Endian(headers, static_cast<std::uint32_t>(offset));
        Append_Little_Endian(headers, size);
        offset += size;
    }
    file->Section_Start(section_tag);
    if (!file->Section_Write_All(headers))
        return Error(file->error());
    for (const auto& segment : segments)
        if (segment && !segment->Write(file))
            return Error(file->error());
    file->Section_End();
    return true;
}

bool SegmentManager::Read_Section(TaggedFile* file) {
    char header[header_size];
    if (file->Section_Read(section_tag, 0, header, header_size) != header_size)
        return Error(file->error());
    const auto entries = Get_Little_Endian<std::uint32_t>(header);
    const auto read_start = Get_Little_Endian<std::int32_t>(header + 4);
    if (read_start < 0 || entries <= static_cast<std::uint32_t>(read_start))
        return Error("segment_list.start out of range");
    if (entries > most_entries)
        return Error("segment_list.entries out of range");
    Segments read;
    if (!Read_Segments(file, entries, read))
        return false;
    segments.swap(read);
    start = read_start;
    return true;
}

bool SegmentManager::Read_Segments(TaggedFile* file, std::size_t entries, Segments& read) {
    const std::int64_t data_start = header_size + static_cast<std::int64_t>(entries) * segment_header_size;
    if (!file->Section_Holds(header_size, data_start - header_size))
        return Error(file->error());
    std::vector<char> headers(static_cast<std::size_t>(data_start) - header_size);
    const int length = static_cast<int>(headers.size());
    if (file->Section_Read(section_tag, header_size, headers.data(), length) != length)
        return Error(file->error());
    std::int64_t room = file->Copy_Room();
    for (const char* record = headers.data(); read.size() < entries; record += segment_header_size) {
        const std::int64_t offset = data_start + Get_Little_Endian<std::uint32_t>(record);
        const auto size = Get_Little_Endian<std::int32_t>(record + 4);
        if (size < 0)
            return Error("segment_header.size out of range");
        if (!file->Section_Holds(offset, size))
            return Error(file->error());
        room -= size;
        if (room < 0)
            return Error(TaggedFile::end_of_file);
        const int id = static_cast<int>(read.size());
        read.push_back(std::make_unique<Segment>(id, new char[static_cast<std::size_t>(size)], size, size));
        if (file->Section_Read(section_tag, static_cast<int>(offset), read.back()->data.get(), size) != size)
            return Error(file->error());
    }
    return true;
}
