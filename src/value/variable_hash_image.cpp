// The persisted form of a table, little-endian:
//   chains   header and buckets, see Chain_Records
//   slots    dictionary id of the name (4), next slot in the chain or -1 (4)

#include "image/chain_records.h"
#include "image/little_endian.h"
#include "image/tagged_file.h"
#include "value/variable_hash.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace {

constexpr int slot_size = 8;

constexpr Chain_Records::Form form = {"variable_hash_header", "variable_hash_bucket", ".variable_count",
                                      0x7ffffff};

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
    Chain_Records records(form);
    if (!records.Read_Header(file) || !records.Read_Buckets(file))
        return Error(records.fault);
    std::vector<char> slots;
    if (!file->Section_Read_Records(slots, records.entries, slot_size))
        return Error(file->error());

    const int count = static_cast<int>(records.entries);
    VariableHash read(dictionary_, records.bucket_bits, count, count);
    records.Set_Heads(read.buckets);
    for (int slot = 0; slot < count; ++slot) {
        const char* record = &slots[static_cast<std::size_t>(slot) * slot_size];
        read.entries[slot].id = Get_Little_Endian<std::int32_t>(record);
        const auto link = Get_Little_Endian<std::int32_t>(record + 4);
        read.next[slot] = read.Is_Slot(link) ? link : -1;
    }
    read.bucket_entries = records.bucket_entries;
    Swap_Structure(read);
    return true;
}

bool VariableHash::Write(TaggedFile* file) {
    Chain_Records records(form);
    if (!records.Take(buckets, bucket_bits, variable_count))
        return Error(records.fault);
    std::vector<char> slots;
    for (int slot = 0; slot < variable_count; ++slot) {
        Append_Little_Endian(slots, entries[slot].id);
        Append_Little_Endian(slots, next[slot]);
    }
    if (!file->Section_Write_All(records.Bytes()) || !file->Section_Write_All(slots))
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
