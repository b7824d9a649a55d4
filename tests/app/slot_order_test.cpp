// Extension libraries and engines call virtual operations by their place in the table, and reach fields by
// their offset. Both are read out of pointers to members, as the platform's C++ binary interface lays them
// out.

#include "app/driver/unix_compiler_application.h"
#include "backend/outputs/compiler_output.h"
#include "backend/queue/opcode_queue.h"
#include "backend/writers/file_compiler_parser.h"
#include "core/calendar_time.h"
#include "core/splay_tree.h"
#include "extension/external_call.h"
#include "extension/external_library.h"
#include "files/unix_file_manager.h"
#include "frontend/scanner/tokenizer.h"
#include "image/dictionary.h"
#include "image/function_table.h"
#include "image/segment_manager.h"
#include "image/tagged_file.h"
#include "network/logging_network_connection.h"
#include "network/network_service.h"
#include "network/unix_network_connection.h"
#include "network/unix_network_manager.h"
#include "value/callback_variable.h"
#include "value/immutable_variable.h"
#include "value/reference_variable.h"
#include "value/variable_hash.h"
#include "value/variable_list.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>

namespace {

// One more than the offset in bytes.
template <typename Member>
int Slot(Member member) {
    std::intptr_t words[2];
    static_assert(sizeof member == sizeof words);
    memcpy(words, &member, sizeof words);
    return static_cast<int>((words[0] - 1) / static_cast<std::intptr_t>(sizeof(void*)));
}

// The overload of a class's operation with these arguments.
template <typename... Arguments>
struct With {
    template <typename Result, typename Class>
    static int Slot(Result (Class::*member)(Arguments...)) {
        return ::Slot(member);
    }
};

struct Place {
    const char* operation;
    int slot;
    int expected;
};

// clang-format off
#define PLACE(expected, operation) {#operation, Slot(&operation), expected}
#define PLACE_OF(expected, operation, ...) {#operation, With<__VA_ARGS__>::Slot(&operation), expected}
// clang-format on

// The last and some middle operations of each class.
const Place places[] = {
    PLACE_OF(24, TarnApplication::Error, const String&),
    PLACE(33, TarnApplication::TimeRemaining),
    PLACE(62, TarnApplication::ResolvePath),
    PLACE_OF(64, ConsoleApplication::CommandLine_Requires_Argument, char),
    PLACE(68, ConsoleApplication::ArgumentError),
    PLACE(79, CompilerApplication::Pedantic_Error),
    PLACE(13, List<String>::RemoveAll),
    PLACE(7, Stack<String>::Dump),
    PLACE_OF(8, Output::Flush, int),
    PLACE(13, Output::Write_Compressed_Full),
    PLACE(14, BufferedOutput::DoWrite),
    PLACE(15, CompilerOutput::Write_Lower),
    PLACE_OF(6, OpcodeQueue::Queue_Opcode, int, double),
    PLACE(10, OpcodeQueue::Flush),
    PLACE(26, Parser::Expression_Member),
    PLACE(39, Parser::Output_Assembly),
    PLACE(50, CompilerParser::Output_Operator_IncrementDecrement),
    PLACE_OF(58, CompilerParser::Output_Opcode, int, int, int),
    PLACE(65, CompilerParser::Output_Version),
    PLACE(76, CompilerParser::Last_File),
    PLACE_OF(5, File::Write, const char*, unsigned long),
    PLACE(12, File::Map),
    PLACE_OF(16, File::Error, const String&),
    PLACE_OF(21, FileManager::MakeTemporary, const char*, char**, int),
    PLACE_OF(22, FileManager::Open, Tarn_PathType, const char*, int),
    PLACE(53, FileManager::SecurityOptions),
    PLACE(65, UNIXFileManager::Stat),
    PLACE(3, ExternalLibrary::Get_Function),
    PLACE(5, ExternalCallManager::Register_Persistent),
    PLACE(16, NetworkManager::OpenURL_SendRequest),
    PLACE(27, NetworkManager::Error),
    PLACE_OF(6, NetworkConnection::Write, const char*, int, int),
    PLACE(9, NetworkConnection::ipaddress),
    PLACE(13, UNIXNetworkConnection::SSL_Write),
    PLACE(13, LoggingNetworkConnection::Log_Write_Failure),
    PLACE(6, NetworkService::Error),
    PLACE_OF(21, Variable::SetValue, Variable&),
    PLACE(38, Variable::ElementsUsed),
    PLACE(47, Variable::Make_CallbackStruct),
    PLACE(49, ReferenceVariable::TypeReferredTo),
    PLACE(49, ImmutableVariable::Lock),
    PLACE(49, CallbackVariable::Detach),
    PLACE(5, CallbackVariableCallback::Lookup),
    PLACE(13, AggregateElementTree::Displace),
    PLACE(15, VariableList::Destroy),
    PLACE_OF(19, VariableHash::Read, TaggedFile*, int),
    PLACE(27, VariableHash::RealIdentity),
    PLACE(3, TaggedFile::Error),
    PLACE(3, SegmentManager::Error),
    PLACE(3, Dictionary::Error),
    PLACE(4, FunctionManager::Error),
};

TEST(SlotOrder, Operations_Stand_Where_Libraries_Look_For_Them) {
    for (const Place& place : places)
        EXPECT_EQ(place.slot, place.expected) << place.operation;
}

// The number of the first field that doesn't stand right behind the one named before it; 0 when all do.
template <typename Class, typename... Fields>
int First_Out_Of_Order(Fields Class::*... fields) {
    int number = 0;
    int found = 0;
    std::ptrdiff_t end = -1;
    const auto look = [&](auto field, std::size_t size, std::ptrdiff_t alignment) {
        std::ptrdiff_t offset;
        static_assert(sizeof field == sizeof offset);
        memcpy(&offset, &field, sizeof offset);
        ++number;
        if (found == 0 && end >= 0 && offset != (end + alignment - 1) / alignment * alignment)
            found = number;
        end = offset + static_cast<std::ptrdiff_t>(size);
    };
    (look(fields, sizeof(Fields), alignof(Fields)), ...);
    return found;
}

// Fields of all kinds of access, since an explicit instantiation may name them.
template <typename Name, auto... fields>
struct Reveal {
    friend int Out_Of_Order(Name) { return First_Out_Of_Order(fields...); }
};

#define FIELDS(name, ...)                                                                                    \
    struct name {};                                                                                          \
    int Out_Of_Order(name);                                                                                  \
    template struct Reveal<name, __VA_ARGS__>;

// clang-format off
FIELDS(Tarn, &TarnApplication::ssl_library, &TarnApplication::ssl_state_, &TarnApplication::heartbeats,
       &TarnApplication::cancelled_, &TarnApplication::post_timed_out, &TarnApplication::global_deadline,
       &TarnApplication::post_deadline, &TarnApplication::log_include, &TarnApplication::log_exclude,
       &TarnApplication::language_, &TarnApplication::language_changes, &TarnApplication::default_language,
       &TarnApplication::default_language_changes, &TarnApplication::default_database,
       &TarnApplication::default_database_changes, &TarnApplication::charset_,
       &TarnApplication::charset_changes, &TarnApplication::charset_is_utf8)
FIELDS(Console, &ConsoleApplication::output_, &ConsoleApplication::basename_, &ConsoleApplication::hostname_,
       &ConsoleApplication::argc, &ConsoleApplication::argv)
FIELDS(Compiler, &CompilerApplication::output_path, &CompilerApplication::output_file,
       &CompilerApplication::assembly, &CompilerApplication::first_input,
       &CompilerApplication::stop_after_options, &CompilerApplication::defines,
       &CompilerApplication::max_engine_version, &CompilerApplication::engine_version,
       &CompilerApplication::obfuscate_bytes, &CompilerApplication::doxygen_output,
       &CompilerApplication::coverage_output, &CompilerApplication::function_output_default,
       &CompilerApplication::function_access_default, &CompilerApplication::pedantic_warn,
       &CompilerApplication::pedantic_error, &CompilerApplication::warning_flags)
FIELDS(UNIX_Compiler, &UNIXCompilerApplication::file_manager, &UNIXCompilerApplication::library_manager,
       &UNIXCompilerApplication::call_manager)
FIELDS(Scanner, &Parser::expression_parser, &Parser::tokenizer, &Parser::tag_lookup, &Parser::start_state,
       &Parser::application, &Parser::error_count, &Parser::state, &Parser::last_error,
       &Parser::capture_expression, &Parser::pending_text, &Parser::pending_length, &Parser::pending_is_html,
       &Parser::output_flags, &Parser::expression_opened_in_html, &Parser::value_text, &Parser::value_length,
       &Parser::tokenizer_stack)
FIELDS(Source, &Tokenizer::filemanager, &Tokenizer::buffer, &Tokenizer::length, &Tokenizer::position,
       &Tokenizer::bare_expression, &Tokenizer::open_pending, &Tokenizer::close_sent, &Tokenizer::file,
       &Tokenizer::filename, &Tokenizer::in_expression, &Tokenizer::lasterror, &Tokenizer::line)
FIELDS(Attribute, &AttributeValue::line, &AttributeValue::ident, &AttributeValue::expression,
       &AttributeValue::error_message, &AttributeValue::type, &AttributeValue::error_code,
       &AttributeValue::scope, &AttributeValue::member_ident, &AttributeValue::simple_text,
       &AttributeValue::qualifiers)
FIELDS(Numbered_List, &List<String>::own, &List<String>::entries, &List<String>::head, &List<String>::current,
       &List<String>::tail)
FIELDS(Numbered_Stack, &Stack<String>::own, &Stack<String>::entries, &Stack<String>::top,
       &Stack<String>::peek)
FIELDS(Sink, &Output::flags_, &Output::last_was_space)
FIELDS(Buffered_Sink, &BufferedOutput::buffer, &BufferedOutput::capacity, &BufferedOutput::fill)
FIELDS(Queue, &OpcodeQueue::parser, &OpcodeQueue::type)
FIELDS(Time, &TNTIME::epoch_seconds, &TNTIME::microseconds, &TNTIME::second, &TNTIME::minute, &TNTIME::hour,
       &TNTIME::day, &TNTIME::month, &TNTIME::month_name, &TNTIME::year, &TNTIME::weekday,
       &TNTIME::weekday_name, &TNTIME::day_of_year, &TNTIME::daylight_saving, &TNTIME::zone_name)
FIELDS(Generator, &CompilerParser::external_calls, &CompilerParser::string_table,
       &CompilerParser::function_stdout_default, &CompilerParser::function_access_default,
       &CompilerParser::saved_function_flags, &CompilerParser::saved_localized_flags,
       &CompilerParser::localized_text_flags, &CompilerParser::localized_text_count,
       &CompilerParser::saved_capture_flags, &CompilerParser::output_flags, &CompilerParser::tag_error_code,
       &CompilerParser::conditional_operators, &CompilerParser::subexpressions, &CompilerParser::current_tag,
       &CompilerParser::tag_name, &CompilerParser::current_attribute, &CompilerParser::localized_ids,
       &CompilerParser::localized_sequence, &CompilerParser::localized_text, &CompilerParser::local_variables,
       &CompilerParser::global_variables, &CompilerParser::system_variables,
       &CompilerParser::function_variables, &CompilerParser::scratch_variables,
       &CompilerParser::file_scratch_variables, &CompilerParser::function_scratch_variables,
       &CompilerParser::file_ident, &CompilerParser::attribute_lookup, &CompilerParser::next_string_ident,
       &CompilerParser::priority_bias, &CompilerParser::operators, &CompilerParser::referenced_functions,
       &CompilerParser::called_functions, &CompilerParser::unresolved_functions,
       &CompilerParser::defined_functions, &CompilerParser::open_calls, &CompilerParser::call_list,
       &CompilerParser::next_label, &CompilerParser::while_stack, &CompilerParser::if_stack,
       &CompilerParser::ifdef_stack, &CompilerParser::import_stack, &CompilerParser::commerce_stack,
       &CompilerParser::pop_stack, &CompilerParser::lockfile_stack, &CompilerParser::call_stack,
       &CompilerParser::foreach_stack, &CompilerParser::for_stack, &CompilerParser::capture_stack,
       &CompilerParser::async_depth, &CompilerParser::async_block, &CompilerParser::smtp_block,
       &CompilerParser::last_lineno, &CompilerParser::lineno_forced, &CompilerParser::saved_output,
       &CompilerParser::suspended_output, &CompilerParser::attribute_values, &CompilerParser::array_kind,
       &CompilerParser::array_count, &CompilerParser::array_values, &CompilerParser::discard_value,
       &CompilerParser::expression_type, &CompilerParser::interpret_expressions,
       &CompilerParser::filter_parser, &CompilerParser::owns_globals, &CompilerParser::owns_system,
       &CompilerParser::opcode_queue, &CompilerParser::include_interpret)
// clang-format on

TEST(FieldOrder, Fields_Stand_Behind_Each_Other) {
    EXPECT_EQ(Out_Of_Order(Tarn()), 0);
    EXPECT_EQ(Out_Of_Order(Console()), 0);
    EXPECT_EQ(Out_Of_Order(Compiler()), 0);
    EXPECT_EQ(Out_Of_Order(UNIX_Compiler()), 0);
    EXPECT_EQ(Out_Of_Order(Scanner()), 0);
    EXPECT_EQ(Out_Of_Order(Source()), 0);
    EXPECT_EQ(Out_Of_Order(Attribute()), 0);
    EXPECT_EQ(Out_Of_Order(Numbered_List()), 0);
    EXPECT_EQ(Out_Of_Order(Numbered_Stack()), 0);
    EXPECT_EQ(Out_Of_Order(Sink()), 0);
    EXPECT_EQ(Out_Of_Order(Buffered_Sink()), 0);
    EXPECT_EQ(Out_Of_Order(Queue()), 0);
    EXPECT_EQ(Out_Of_Order(Time()), 0);
    EXPECT_EQ(Out_Of_Order(Generator()), 0);
}

} // namespace
