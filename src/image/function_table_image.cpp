// The section, little-endian:
//   chains     header and buckets, see Chain_Records
//   links      for each function the next one in its chain, or -1 (4)
//   functions  each: name index, parameter_count, flags, body_a, body_b (4 each);
//              its parameters, each: name index, flags, ident (4 each);
//              its locals, in the form of VariableHash

#include "image/chain_records.h"
#include "image/dictionary.h"
#include "image/function_table.h"
#include "image/little_endian.h"
#include "image/tagged_file.h"

#include <utility>

namespace {

constexpr int section_tag = Section_Tag("func");
constexpr int link_size = 4;
constexpr int function_header_size = 20;
constexpr int parameter_size = 12;

constexpr std::uint32_t most_parameters = 0xaaaaaaa;

constexpr Chain_Records::Form form = {"function_list_header", "function_hash_bucket", ".function_count",
                                      0xfffffff};

// What leads nowhere ends its chain.
bool Read_Links(TaggedFile* file, std::uint32_t functions, std::vector<int>& next) {
    std::vector<char> bytes;
    if (!file->Section_Read_Records(bytes, functions, link_size))
        return false;
    next.reserve(functions);
    for (std::size_t at = 0; at < bytes.size(); at += link_size) {
        const auto link = Get_Little_Endian<std::uint32_t>(&bytes[at]);
        next.push_back(link < functions ? static_cast<int>(link) : -1);
    }
    return true;
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
    Chain_Records records(form);
    if (!records.Take(buckets, bucket_bits, Entries()))
        return Error(records.fault);
    std::vector<char> chains = records.Bytes();
    for (const int link : next)
        Append_Little_Endian(chains, link);

    file->Section_Start(section_tag);
    if (!file->Section_Write_All(chains))
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
    if (!file->Section_Read_Start(section_tag, nullptr))
        return Error(file->error());
    Chain_Records records(form);
    if (!records.Read_Header(file) || !records.Read_Buckets(file))
        return Error(records.fault);
    std::vector<int> read_next;
    if (!Read_Links(file, records.entries, read_next))
        return Error(file->error());
    ChainHeads read_buckets(records.bucket_bits, 0);
    records.Set_Heads(read_buckets);
    std::int64_t name_room = file->Copy_Room();
    std::vector<std::unique_ptr<Function>> read_functions;
    while (read_functions.size() < records.entries) {
        auto function = std::make_unique<Function>(dictionary, 0);
        if (!Read_Function(file, name_room, *function))
            return false;
        function->index = static_cast<int>(read_functions.size());
        read_functions.push_back(std::move(function));
    }
    buckets = std::move(read_buckets);
    bucket_bits = records.bucket_bits;
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
