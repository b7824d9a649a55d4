// The persisted form of a table, little-endian:
//   header   bucket_entries (2 bytes, signed), bucket_bits (1), variable_count (4)
//   buckets  for each bucket in use, ascending: index (2, signed), head slot (4)
//   slots    dictionary id of the name (4), next slot in the chain or -1 (4)

#include "image/little_endian.h"
#include "image/tagged_file.h"
#include "value/variable_hash.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace {

constexpr int header_size = 7;
constexpr int bucket_size_in_file = 6;
constexpr int slot_size_in_file = 8;

constexpr int most_bucket_bits = 32; // counted modulo 32, so that 32 means one bucket
constexpr std::uint32_t most_buckets = 0x1fffffff;
constexpr std::uint32_t most_variables = 0x7ffffff;

struct Header {
    int bucket_entries;
    int bucket_bits;
    std::uint32_t variable_count;
};

// What is wrong with a header, null for nothing.
const char* Header_Fault(const Header& header) {
    if (header.bucket_bits > most_bucket_bits)
        return "variable_hash_header.bucket_bits out of range";
    if (std::uint32_t{1} << (header.bucket_bits & 31) > most_buckets)
        return "read_bucket_size out of range";
    if (header.variable_count > most_variables)
        return "variable_hash_header.variable_count out of range";
    if (header.bucket_entries < 0)
        return "variable_hash_header.bucket_entries out of range";
    return nullptr;
}

} // namespace

bool VariableHash::Read(TaggedFile* file, int tag) {
    const bool read = file->Section_Read_Start(tag, nullptr) ? Read(file) : Error(file->error());
    file->Section_Read_End();
    return read;
}

bool VariableHash::Write(TaggedFile* file, int tag) {
    file->Section_Start(tag);
    const bool written = Write(file);
    file->Section_End();
    return written;
}

bool VariableHash::Read(TaggedFile* file) {
    std::vector<char> bytes;
    if (!file->Section_Read_Records(bytes, 1, header_size))
        return Error(file->error());
    const Header header{Get_Little_Endian<std::int16_t>(&bytes[0]),
                        Get_Little_Endian<std::uint8_t>(&bytes[2]),
                        Get_Little_Endian<std::uint32_t>(&bytes[3])};
    if (const char* fault = Header_Fault(header))
        return Error(fault);
    std::vector<char> chains;
    if (!file->Section_Read_Records(chains, static_cast<std::uint32_t>(header.bucket_entries),
                                    bucket_size_in_file))
        return Error(file->error());
    const std::int64_t read_bucket_size = std::int64_t{1} << (header.bucket_bits & 31);
    for (std::size_t at = 0; at < chains.size(); at += bucket_size_in_file) {
        const auto index = Get_Little_Endian<std::int16_t>(&chains[at]);
        if (index < 0 || index >= read_bucket_size)
            return Error("variable_hash_bucket.index out of range");
    }
    std::vector<char> slots;
    if (!file->Section_Read_Records(slots, header.variable_count, slot_size_in_file))
        return Error(file->error());

    const int count = static_cast<int>(header.variable_count);
    VariableHash read(dictionary_, header.bucket_bits, count, count);
    for (std::size_t at = 0; at < chains.size(); at += bucket_size_in_file) {
        const auto head = Get_Little_Endian<std::int32_t>(&chains[at + 2]);
        read.buckets.Set_Head(Get_Little_Endian<std::uint16_t>(&chains[at]), read.Is_Slot(head) ? head : -1);
    }
    for (int slot = 0; slot < count; ++slot) {
        const char* record = &slots[static_cast<std::size_t>(slot) * slot_size_in_file];
        read.entries[slot].id = Get_Little_Endian<std::int32_t>(record);
        const auto link = Get_Little_Endian<std::int32_t>(record + 4);
        read.next[slot] = read.Is_Slot(link) ? link : -1;
    }
    read.bucket_entries = header.bucket_entries;
    Swap_Structure(read);
    return true;
}

bool VariableHash::Write(TaggedFile* file) {
    std::vector<char> used_buckets;
    int used = 0;
    int last_used = 0;
    buckets.For_Each([&](int bucket, int head) {
        Append_Little_Endian(used_buckets, static_cast<std::int16_t>(bucket));
        Append_Little_Endian(used_buckets, head);
        ++used;
        last_used = bucket;
    });
    if (last_used > INT16_MAX)
        return Error("variable_hash_bucket.index out of range");
    if (used > INT16_MAX)
        return Error("variable_hash_header.bucket_entries out of range");
    std::vector<char> header;
    Append_Little_Endian(header, static_cast<std::int16_t>(used));
    Append_Little_Endian(header, static_cast<std::uint8_t>(bucket_bits));
    Append_Little_Endian(header, variable_count);
    std::vector<char> slots;
    for (int slot = 0; slot < variable_count; ++slot) {
        Append_Little_Endian(slots, entries[slot].id);
        Append_Little_Endian(slots, next[slot]);
    }
    if (!file->Section_Write_All(header) || !file->Section_Write_All(used_buckets) ||
        !file->Section_Write_All(slots))
        return Error(file->error());
    return true;
}

void VariableHash::Swap_Structure(VariableHash& other) {
    std::swap(buckets, other.buckets);
    std::swap(bucket_bits, other.bucket_bits);
    std::swap(bucket_size, other.bucket_size);
    std::swap(bucket_entries, other.bucket_entries);
    std::swap(next, other.next);
    std::swap(capacity, other.capacity);
    std::swap(entries, other.entries);
    std::swap(variable_count, other.variable_count);
}
