// The buckets of persisted hash tables.

#include "image/chain_records.h"

#include "image/little_endian.h"
#include "image/tagged_file.h"
#include "value/chain_heads.h"

namespace {

constexpr int header_size = 7;
constexpr int bucket_size = 6;

constexpr int most_bucket_bits = 32; // counted modulo 32, so that 32 means one bucket
constexpr std::uint32_t most_buckets = 0x1fffffff;

} // namespace

bool Chain_Records::Fail(const char* record, const char* field) {
    fault = String(record) + field + " out of range";
    return false;
}

bool Chain_Records::Read_Header(TaggedFile* file) {
    std::vector<char> header;
    if (!file->Section_Read_Records(header, 1, header_size)) {
        fault = file->error();
        return false;
    }
    bucket_entries = Get_Little_Endian<std::int16_t>(&header[0]);
    bucket_bits = Get_Little_Endian<std::uint8_t>(&header[2]);
    entries = Get_Little_Endian<std::uint32_t>(&header[3]);
    if (bucket_bits > most_bucket_bits)
        return Fail(form.header, ".bucket_bits");
    if (Bucket_Count() > most_buckets)
        return Fail("read_bucket_size", "");
    if (entries > form.most_entries)
        return Fail(form.header, form.count);
    return bucket_entries >= 0 || Fail(form.header, ".bucket_entries");
}

bool Chain_Records::Read_Buckets(TaggedFile* file) {
    if (!file->Section_Read_Records(buckets, static_cast<std::uint32_t>(bucket_entries), bucket_size)) {
        fault = file->error();
        return false;
    }
    for (std::size_t at = 0; at < buckets.size(); at += bucket_size) {
        const auto index = Get_Little_Endian<std::int16_t>(&buckets[at]);
        if (index < 0 || static_cast<std::uint32_t>(index) >= Bucket_Count())
            return Fail(form.bucket, ".index");
    }
    return true;
}

void Chain_Records::Set_Heads(ChainHeads& heads) const {
    for (std::size_t at = 0; at < buckets.size(); at += bucket_size) {
        const auto head = Get_Little_Endian<std::uint32_t>(&buckets[at + 2]);
        heads.Set_Head(Get_Little_Endian<std::uint16_t>(&buckets[at]),
                       head < entries ? static_cast<int>(head) : -1);
    }
}

bool Chain_Records::Take(const ChainHeads& heads, int bits, int count) {
    bucket_bits = bits;
    entries = static_cast<std::uint32_t>(count);
    int last_used = 0;
    heads.For_Each([&](int bucket, int head) {
        Append_Little_Endian(buckets, static_cast<std::int16_t>(bucket));
        Append_Little_Endian(buckets, head);
        ++bucket_entries;
        last_used = bucket;
    });
    if (last_used > INT16_MAX)
        return Fail(form.bucket, ".index");
    return bucket_entries <= INT16_MAX || Fail(form.header, ".bucket_entries");
}

std::vector<char> Chain_Records::Bytes() const {
    std::vector<char> bytes;
    Append_Little_Endian(bytes, static_cast<std::int16_t>(bucket_entries));
    Append_Little_Endian(bytes, static_cast<std::uint8_t>(bucket_bits));
    Append_Little_Endian(bytes, entries);
    bytes.insert(bytes.end(), buckets.begin(), buckets.end());
    return bytes;
}
