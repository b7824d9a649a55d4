// The section, little-endian:
//   header   entries (4 bytes), data_size (4), header_word (4)
//   entries  offset in the data (4, signed), size (4)
//   data     data_size bytes

#include "image/dictionary.h"

#include "core/text_length.h"
#include "core/text_search.h"
#include "image/little_endian.h"
#include "image/tagged_file.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <unordered_map>

namespace {

constexpr int section_tag = Section_Tag("dict");
constexpr int header_size = 12;
constexpr int entry_size = 8;
constexpr int data_block_size = 8192;
constexpr std::uint32_t most_entries = 0x7ffffff;
constexpr std::uint32_t most_blocks = 0x3ffff;

// The next multiple of the block size above a length, as far as a capacity goes.
int Block_Capacity(int length) {
    const std::int64_t capacity = (std::int64_t{length} / data_block_size + 1) * data_block_size;
    return static_cast<int>(std::min<std::int64_t>(capacity, INT_MAX));
}

} // namespace

DictionaryDataBlock::DictionaryDataBlock(int capacity)
    : data(new char[static_cast<std::size_t>(capacity)]), capacity(capacity) {
}

DictionaryDataBlock::~DictionaryDataBlock() = default;

int DictionaryDataBlock::Add(const char* text, int length) {
    const int found = used < length ? -1 : bm_search(text, length, data.get(), used);
    return found >= 0 ? found : Append(text, length);
}

int DictionaryDataBlock::Append(const char* text, int length) {
    if (length > capacity - used)
        return -1;
    std::memcpy(data.get() + used, text, static_cast<std::size_t>(length));
    used += length;
    return used - length;
}

Dictionary::Dictionary() = default;

Dictionary::Dictionary(const Dictionary& source) : entries(source.entries), header_word(source.header_word) {
    std::unordered_map<const DictionaryDataBlock*, DictionaryDataBlock*> copies;
    for (const auto& block : source.blocks) {
        DictionaryDataBlock* copy = Add_Block(block->capacity);
        copy->Append(block->data.get(), block->used);
        copies[block.get()] = copy;
    }
    for (Entry_Record& entry : entries)
        entry.block = copies[entry.block];
}

Dictionary::~Dictionary() = default;

const String& Dictionary::error() {
    return error_;
}

bool Dictionary::Error(const String& text) {
    error_ = text;
    return false;
}

int Dictionary::Entry_Add(const char* text, int length) {
    entries.push_back(Place(text, Text_Length(text, length)));
    return static_cast<int>(entries.size()) - 1;
}

const char* Dictionary::Entry(int index, int* size) {
    *size = 0;
    if (index < 0 || static_cast<std::size_t>(index) >= entries.size())
        return nullptr;
    const Entry_Record& entry = entries[index];
    *size = entry.size;
    return entry.block->data.get() + entry.offset;
}

// Texts of a file may overlap in ways that adding doesn't find again: what has no room in the packed block
// gets a further one.
void Dictionary::Compress() {
    Dictionary packed;
    packed.Add_Block(static_cast<int>(std::min<std::int64_t>(Set_Bases(), INT_MAX)));
    for (const Entry_Record& entry : entries)
        packed.Entry_Add(entry.block->data.get() + entry.offset, entry.size);
    Swap_Texts(packed);
}

bool Dictionary::Read(TaggedFile* file) {
    const bool read = Read_Section(file);
    file->Section_Read_End();
    return read;
}

bool Dictionary::Write(TaggedFile* file) {
    std::vector<char> bytes;
    file->Section_Start(section_tag);
    Append_Little_Endian(bytes, static_cast<std::uint32_t>(entries.size()));
    Append_Little_Endian(bytes, static_cast<std::uint32_t>(Set_Bases()));
    Append_Little_Endian(bytes, header_word);
    for (const Entry_Record& entry : entries) {
        Append_Little_Endian(bytes, entry.block->base + entry.offset);
        Append_Little_Endian(bytes, entry.size);
    }
    if (!file->Section_Write_All(bytes))
        return Error(file->error());
    for (const auto& block : blocks)
        if (file->Section_Write(block->data.get(), block->used) != block->used)
            return Error(file->error());
    file->Section_End();
    return true;
}

DictionaryDataBlock* Dictionary::Add_Block(int capacity) {
    return blocks.emplace_back(std::make_unique<DictionaryDataBlock>(capacity)).get();
}

// Finds or makes room for a text.
Dictionary::Entry_Record Dictionary::Place(const char* text, int length) {
    int offset = blocks.empty() ? -1 : blocks.back()->Add(text, length);
    if (offset < 0)
        offset = Add_Block(Block_Capacity(length))->Add(text, length);
    return {blocks.back().get(), offset, length};
}

// Lays the blocks out one behind the other. Answers the size of all of them.
std::int64_t Dictionary::Set_Bases() {
    std::int64_t base = 0;
    for (const auto& block : blocks) {
        block->base = static_cast<int>(base);
        base += block->used;
    }
    return base;
}

void Dictionary::Swap_Texts(Dictionary& other) {
    entries.swap(other.entries);
    blocks.swap(other.blocks);
}

bool Dictionary::Read_Section(TaggedFile* file) {
    char header[header_size];
    if (!file->Section_Read_Start(section_tag, nullptr) ||
        file->Section_Read(header, header_size) != header_size)
        return Error(file->error());
    const auto entry_count = Get_Little_Endian<std::uint32_t>(header);
    const auto data_size = Get_Little_Endian<std::uint32_t>(header + 4);
    if (entry_count > most_entries)
        return Error("dictionary_header.entries out of range");
    if (data_size / data_block_size + 1 > most_blocks)
        return Error("( dictionary_header.data_size / TF_DATA_BLOCK_SIZE ) + 1 out of range");

    std::vector<char> table;
    if (!file->Section_Read_Records(table, entry_count, entry_size))
        return Error(file->error());
    // The entries are judged by the data that is there, before its size is.
    Dictionary read;
    const int available = static_cast<int>(std::min<std::int64_t>(data_size, file->Section_Remaining()));
    DictionaryDataBlock* block = read.Add_Block(Block_Capacity(available));
    block->used = file->Section_Read(block->data.get(), available);
    if (block->used < 0)
        return Error(file->error());
    if (const char* fault = read.Add_Records(table))
        return Error(fault);
    if (block->used != static_cast<int>(data_size))
        return Error(TaggedFile::end_of_file);
    Swap_Texts(read);
    header_word = Get_Little_Endian<std::int32_t>(header + 8);
    return true;
}

// Adds the entries of a section whose data is the last block. Answers what is wrong, null for nothing.
const char* Dictionary::Add_Records(const std::vector<char>& table) {
    DictionaryDataBlock* block = blocks.back().get();
    entries.reserve(table.size() / entry_size);
    for (std::size_t at = 0; at < table.size(); at += entry_size) {
        const auto offset = Get_Little_Endian<std::int32_t>(&table[at]);
        const auto size = Get_Little_Endian<std::uint32_t>(&table[at + 4]);
        if (offset < 0 || offset >= block->used)
            return "dictionary_entry.offset out of range";
        if (std::int64_t{offset} + size > block->used)
            return "dictionary_entry.offset + dictionary_entry.size out of range";
        entries.push_back({block, offset, static_cast<int>(size)});
    }
    return nullptr;
}
