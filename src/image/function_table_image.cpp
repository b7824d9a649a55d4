// The section, little-endian:
//   header     bucket_entries (2 bytes, signed), bucket_bits (1), function_count (4)
//   buckets    for each bucket in use, ascending: index (2, signed), first function (4)
//   links      for each function the next one in its chain, or -1 (4)
//   functions  each: name index, parameter_count, flags, body_a, body_b (4 each);
//              its parameters, each: name index, flags, ident (4 each);
//              its locals, in the form of VariableHash

#include "image/dictionary.h"
#include "image/function_table.h"
#include "image/little_endian.h"
#include "image/tagged_file.h"

#include <utility>

namespace {

constexpr int section_tag = Section_Tag("func");
constexpr int header_size = 7;
constexpr int bucket_record_size = 6;
constexpr int link_size = 4;
constexpr int function_header_size = 20;
constexpr int parameter_size = 12;

constexpr int most_bucket_bits = 32; // counted modulo 32, so that 32 means one bucket
constexpr std::uint32_t most_buckets = 0x1fffffff;
constexpr std::uint32_t most_functions = 0xfffffff;
constexpr std::uint32_t most_parameters = 0xaaaaaaa;

struct Header {
    int bucket_entries;
    int bucket_bits;
    std::uint32_t function_count;

    [[nodiscard]] std::uint32_t Buckets() const { return std::uint32_t{1} << (bucket_bits & 31); }
};

// What is wrong with a header, null for nothing.
const char* Header_Fault(const Header& header) {
    if (header.bucket_bits > most_bucket_bits)
        return "function_list_header.bucket_bits out of range";
    if (header.Buckets() > most_buckets)
        return "read_bucket_size out of range";
    if (header.function_count > most_functions)
        return "function_list_header.function_count out of range";
    if (header.bucket_entries < 0)
        return "function_list_header.bucket_entries out of range";
    return nullptr;
}

// Reads the buckets and the links. Answers what is wrong, null for nothing. What leads nowhere ends its
// chain.
const char* Read_Chains(TaggedFile* file, const Header& header, ChainHeads& buckets, std::vector<int>& next) {
    const auto function_at = [&](const char* record) {
        const auto function = Get_Little_Endian<std::uint32_t>(record);
        return function < header.function_count ? static_cast<int>(function) : -1;
    };
    std::vector<char> bytes;
    if (!file->Section_Read_Records(bytes, static_cast<std::uint32_t>(header.bucket_entries),
                                    bucket_record_size))
        return file->error().text();
    for (std::size_t at = 0; at < bytes.size(); at += bucket_record_size) {
        const auto index = Get_Little_Endian<std::int16_t>(&bytes[at]);
        if (index < 0 || static_cast<std::uint32_t>(index) >= header.Buckets())
            return "function_hash_bucket.index out of range";
        buckets.Set_Head(index, function_at(&bytes[at + 2]));
    }
    if (!file->Section_Read_Records(bytes, header.function_count, link_size))
        return file->error().text();
    next.reserve(header.function_count);
    for (std::size_t at = 0; at < bytes.size(); at += link_size)
        next.push_back(function_at(&bytes[at]));
    return nullptr;
}

// A function's header and parameters.
std::vector<char> Record_Of(Function& function) {
    std::vector<char> record;
    for (const int field : {function.name_index, function.parameters.Entries(), function.flags,
                            function.body_a, function.body_b})
        Append_Little_Endian(record, field);
    for (const FunctionParameter* parameter = function.parameters.First(); parameter;
         parameter = function.parameters.Next())
        for (const int field : {parameter->name_index, parameter->flags, parameter->ident})
            Append_Little_Endian(record, field);
    return record;
}

} // namespace

bool FunctionManager::Read(TaggedFile* file) {
    const bool read = Read_Section(file);
    file->Section_Read_End();
    return read;
}

bool FunctionManager::Write(TaggedFile* file) {
    std::vector<char> chains;
    int used = 0;
    int last_used = 0;
    buckets.For_Each([&](int bucket, int head) {
        Append_Little_Endian(chains, static_cast<std::int16_t>(bucket));
        Append_Little_Endian(chains, head);
        ++used;
        last_used = bucket;
    });
    if (last_used > INT16_MAX)
        return Error("function_hash_bucket.index out of range");
    if (used > INT16_MAX)
        return Error("function_list_header.bucket_entries out of range");
    std::vector<char> header;
    Append_Little_Endian(header, static_cast<std::int16_t>(used));
    Append_Little_Endian(header, static_cast<std::uint8_t>(bucket_bits));
    Append_Little_Endian(header, Entries());
    for (const int link : next)
        Append_Little_Endian(chains, link);

    file->Section_Start(section_tag);
    if (!file->Section_Write_All(header) || !file->Section_Write_All(chains))
        return Error(file->error());
    for (const auto& function : functions) {
        if (!file->Section_Write_All(Record_Of(*function)))
            return Error(file->error());
        if (!function->locals.Write(file))
            return Error(function->locals.error());
    }
    return true;
}

bool FunctionManager::Read_Section(TaggedFile* file) {
    std::vector<char> bytes;
    if (!file->Section_Read_Start(section_tag, nullptr) || !file->Section_Read_Records(bytes, 1, header_size))
        return Error(file->error());
    const Header header{Get_Little_Endian<std::int16_t>(&bytes[0]),
                        Get_Little_Endian<std::uint8_t>(&bytes[2]),
                        Get_Little_Endian<std::uint32_t>(&bytes[3])};
    if (const char* fault = Header_Fault(header))
        return Error(fault);

    ChainHeads read_buckets(header.bucket_bits, 0);
    std::vector<int> read_next;
    if (const char* fault = Read_Chains(file, header, read_buckets, read_next))
        return Error(fault);
    std::int64_t name_room = file->Copy_Room();
    std::vector<std::unique_ptr<Function>> read_functions;
    while (read_functions.size() < header.function_count) {
        auto function = std::make_unique<Function>(dictionary, 0);
        if (!Read_Function(file, name_room, *function))
            return false;
        function->index = static_cast<int>(read_functions.size());
        read_functions.push_back(std::move(function));
    }
    buckets = std::move(read_buckets);
    bucket_bits = header.bucket_bits;
    next.swap(read_next);
    functions.swap(read_functions);
    return true;
}

bool FunctionManager::Read_Function(TaggedFile* file, std::int64_t& name_room, Function& function) {
    char header[function_header_size];
    if (file->Section_Read(header, function_header_size) != function_header_size)
        return Error(file->error());
    function.name_index = Get_Little_Endian<std::int32_t>(header);
    if (!Read_Name(function.name_index, "Invalid function header name index", name_room, function.name))
        return false;
    const auto parameter_count = Get_Little_Endian<std::uint32_t>(header + 4);
    if (parameter_count > most_parameters)
        return Error("function_header.parameter_count out of range");
    function.flags = Get_Little_Endian<std::int32_t>(header + 8);
    function.body_a = Get_Little_Endian<std::int32_t>(header + 12);
    function.body_b = Get_Little_Endian<std::int32_t>(header + 16);
    return Read_Parameters(file, name_room, parameter_count, function) &&
           (function.locals.Read(file) || Error(function.locals.error()));
}

bool FunctionManager::Read_Parameters(TaggedFile* file, std::int64_t& name_room, std::uint32_t count,
                                      Function& function) {
    std::vector<char> bytes;
    if (!file->Section_Read_Records(bytes, count, parameter_size))
        return Error(file->error());
    for (std::size_t at = 0; at < bytes.size(); at += parameter_size) {
        String name;
        const auto name_index = Get_Little_Endian<std::int32_t>(&bytes[at]);
        if (!Read_Name(name_index, "Invalid function parameter name index", name_room, name))
            return false;
        const auto flags = Get_Little_Endian<std::int32_t>(&bytes[at + 4]);
        const auto ident = Get_Little_Endian<std::int32_t>(&bytes[at + 8]);
        function.parameters.Insert(new FunctionParameter(name_index, std::move(name), flags, ident),
                                   LIST_LAST);
    }
    return true;
}

// A name of the dictionary, as long as there is room for names: very many things of a damaged file may have
// one long text as their name.
bool FunctionManager::Read_Name(int index, const char* unknown, std::int64_t& room, String& name) {
    int length = 0;
    const char* text = dictionary->Entry(index, &length);
    if (!text)
        return Error(unknown);
    room -= length;
    if (room < 0)
        return Error(TaggedFile::end_of_file);
    name.assign(text, length);
    return true;
}
