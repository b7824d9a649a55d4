// Functions by name, with their parameters.

#include "image/function_table.h"

#include "core/string_hash.h"
#include "core/text_length.h"
#include "core/text_words.h"
#include "image/dictionary.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int local_bucket_bits = 8;
constexpr int local_capacity = 64;
constexpr int function_capacity = 64;

// Adds one parameter as it is written, perhaps with "var" behind its name.
void Add_Written_Parameter(Function& function, std::string_view written) {
    written = Trimmed(written);
    const std::string_view name(written.begin(), std::find_if(written.begin(), written.end(), Is_Space));
    const bool by_reference = Same_Word(Trimmed(written.substr(name.size())), "var");
    function.AddParameter(by_reference, name.data(), Length_Of(name));
}

} // namespace

FunctionParameter::FunctionParameter(int name_index, String name, int flags, int ident)
    : name_index(name_index), name(std::move(name)), flags(flags), ident(ident) {
}

FunctionParameter::~FunctionParameter() = default;

Function::Function(Dictionary* dictionary, int flags)
    : flags(flags), dictionary(dictionary), locals(dictionary, local_bucket_bits, local_capacity, 0) {
}

Function::Function(TarnApplication* application, Dictionary* dictionary, Function& source)
    : index(source.index), flags(source.flags), name_index(source.name_index), name(source.name),
      body_a(source.body_a), body_b(source.body_b), dictionary(dictionary), engine_word(source.engine_word),
      locals(application, dictionary, source.locals, false) {
    for (const FunctionParameter* p = source.parameters.First(); p; p = source.parameters.Next())
        parameters.Insert(new FunctionParameter(*p), LIST_LAST);
}

Function::~Function() = default;

int Function::AddParameter(int flags, const char* name, int length) {
    length = Text_Length(name, length);
    const int added = dictionary->Entry_Add(name, length);
    const int ident = locals.Insert(added, name, length, nullptr);
    parameters.Insert(new FunctionParameter(added, String(name, length), flags, ident), LIST_LAST);
    return ident;
}

void Function::SetParameters(const char* text, int length) {
    std::string_view list = View(text, length);
    if (list.empty())
        return;
    if (list.back() == ',')
        list.remove_suffix(1);
    For_Each_Comma_Piece(list, [this](std::string_view piece) { Add_Written_Parameter(*this, piece); });
}

FunctionManager::FunctionManager(Dictionary* dictionary, int bucket_bits)
    : buckets(bucket_bits, function_capacity), bucket_bits(bucket_bits), dictionary(dictionary) {
}

FunctionManager::FunctionManager(TarnApplication* application, Dictionary* dictionary,
                                 FunctionManager& source)
    : buckets(source.buckets), bucket_bits(source.bucket_bits), next(source.next), dictionary(dictionary) {
    for (const auto& function : source.functions)
        functions.push_back(std::make_unique<Function>(application, dictionary, *function));
}

FunctionManager::~FunctionManager() = default;

// Chains come from a file, too: one that runs in a circle is left after as many steps as there are functions.
Function* FunctionManager::Function_Get(const char* text, int length) {
    const std::string_view name = View(text, length);
    int at = buckets.Head(Bucket_Of(name));
    for (std::size_t steps = 0; at >= 0 && steps < functions.size(); ++steps) {
        const int order = Order(name, at);
        if (order == 0)
            return functions[at].get();
        if (order < 0)
            break;
        at = next[at];
    }
    return nullptr;
}

const String& FunctionManager::error() {
    return error_;
}

bool FunctionManager::Error(const String& text) {
    error_ = text;
    return false;
}

Function* FunctionManager::Function_Add(Function* function) {
    const std::string_view name = function->name.view();
    const std::size_t bucket = Bucket_Of(name);
    int previous = -1;
    int at = buckets.Head(bucket);
    for (std::size_t steps = 0; at >= 0 && steps < functions.size() && Order(name, at) >= 0; ++steps) {
        previous = at;
        at = next[at];
    }
    function->index = Entries();
    if (previous < 0)
        buckets.Set_Head(bucket, function->index);
    else
        next[previous] = function->index;
    next.push_back(at);
    return functions.emplace_back(function).get();
}

Function* FunctionManager::Function_Add(Function* function, const char* name, int length) {
    function->name_index = dictionary->Entry_Add(name, length);
    function->name.assign(name, length);
    return Function_Add(function);
}

Function* FunctionManager::Function_Add(const char* name, int length, int flags) {
    return Function_Add(new Function(dictionary, flags | Function::flag_by_name), name, length);
}

Function* FunctionManager::Function_Add(int body_a, int body_b, const char* name, int length,
                                        const char* parameters, int parameters_length, int flags) {
    Function* function = Function_Add(new Function(dictionary, flags), name, length);
    function->body_a = body_a;
    function->body_b = body_b;
    function->SetParameters(parameters, parameters_length);
    return function;
}

Function* FunctionManager::Function_At(int index) const {
    return index >= 0 && index < Entries() ? functions[index].get() : nullptr;
}

std::size_t FunctionManager::Bucket_Of(std::string_view name) const {
    const std::uint32_t mask = (std::uint32_t{1} << (bucket_bits & 31)) - 1;
    return hashi(name.data(), static_cast<std::uint32_t>(name.size()), 0) & mask;
}

// The sign of a name against a function's: shorter names sort first.
int FunctionManager::Order(std::string_view name, int index) const {
    const std::string_view other = functions[index]->name.view();
    if (name.size() != other.size())
        return name.size() < other.size() ? -1 : 1;
    return memcmpi(name.data(), other.data(), name.size());
}
