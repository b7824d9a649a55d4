// Extension libraries and engines call virtual operations by their place in the table, and reach fields by
// their offset. Both are read out of pointers to members, as the platform's C++ binary interface lays them
// out.

#include "app/driver/unix_compiler_application.h"
#include "backend/outputs/compiler_output.h"
#include "backend/queue/opcode_queue.h"
#include "backend/writers/file_compiler_parser.h"
#include "core/calendar_time.h"
#include "core/link_buffer.h"
#include "core/md5.h"
#include "core/splay_tree.h"
#include "extension/external_call.h"
#include "extension/external_library.h"
#include "files/unix_file.h"
#include "files/unix_file_manager.h"
#include "files/unix_file_path.h"
#include "frontend/scanner/expression_parser.h"
#include "frontend/scanner/tokenizer.h"
#include "image/dictionary.h"
#include "image/function_table.h"
#include "image/segment_manager.h"
#include "image/tagged_file.h"
#include "network/http_response_stream.h"
#include "network/logging_network_connection.h"
#include "network/network_service.h"
#include "network/unix_network_connection.h"
#include "network/unix_network_manager.h"
#include "value/callback_variable.h"
#include "value/immutable_variable.h"
#include "value/reference_variable.h"
#include "value/system_variable_hash.h"
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

const struct {
    const char* operation;
    int slot;
    int expected;
} places[] = {
// clang-format off
#define PLACE(expected, operation, ...)                                                                      \
    {#operation, __VA_OPT__(With<__VA_ARGS__>::)Slot(&operation), expected}
    // The last operation of each class, and some of those that have overloads.
    PLACE(24, TarnApplication::Error, const String&), PLACE(62, TarnApplication::ResolvePath),
    PLACE(68, ConsoleApplication::ArgumentError), PLACE(79, CompilerApplication::Pedantic_Error),
    PLACE(13, List<String>::RemoveAll), PLACE(7, Stack<String>::Dump),
    PLACE(8, Output::Flush, int), PLACE(13, Output::Write_Compressed_Full),
    PLACE(14, BufferedOutput::DoWrite), PLACE(15, CompilerOutput::Write_Lower),
    PLACE(6, OpcodeQueue::Queue_Opcode, int, double), PLACE(10, OpcodeQueue::Flush),
    PLACE(39, Parser::Output_Assembly),
    PLACE(58, CompilerParser::Output_Opcode, int, int, int), PLACE(76, CompilerParser::Last_File),
    PLACE(5, File::Write, const char*, unsigned long), PLACE(16, File::Error, const String&),
    PLACE(21, FileManager::MakeTemporary, const char*, char**, int),
    PLACE(22, FileManager::Open, Tarn_PathType, const char*, int),
    PLACE(53, FileManager::SecurityOptions), PLACE(65, UNIXFileManager::Stat),
    PLACE(3, ExternalLibrary::Get_Function), PLACE(5, ExternalCallManager::Register_Persistent),
    PLACE(27, NetworkManager::Error), PLACE(6, NetworkService::Error),
    PLACE(6, NetworkConnection::Write, const char*, int, int), PLACE(9, NetworkConnection::ipaddress),
    PLACE(13, UNIXNetworkConnection::SSL_Write), PLACE(13, LoggingNetworkConnection::Log_Write_Failure),
    PLACE(21, Variable::SetValue, Variable&), PLACE(47, Variable::Make_CallbackStruct),
    PLACE(49, ReferenceVariable::TypeReferredTo), PLACE(49, ImmutableVariable::Lock),
    PLACE(49, CallbackVariable::Detach), PLACE(5, CallbackVariableCallback::Lookup),
    PLACE(13, AggregateElementTree::Displace), PLACE(15, VariableList::Destroy),
    PLACE(19, VariableHash::Read, TaggedFile*, int), PLACE(27, VariableHash::RealIdentity),
    PLACE(3, TaggedFile::Error), PLACE(3, SegmentManager::Error), PLACE(3, Dictionary::Error),
    PLACE(4, FunctionManager::Error),
    // clang-format on
};

TEST(SlotOrder, Operations_Stand_Where_Libraries_Look_For_Them) {
    for (const auto& place : places)
        EXPECT_EQ(place.slot, place.expected) << place.operation;
}

// The number of the first field that doesn't stand right behind the one named before it; 0 when all do.
template <typename Class, typename... Fields>
int First_Out_Of_Order(Fields Class::*... fields) {
    int number = 0, found = 0;
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

// Puts the class ahead of each of its fields.
#define EXPAND(...) EXPAND_3(EXPAND_3(EXPAND_3(EXPAND_3(__VA_ARGS__))))
#define EXPAND_3(...) EXPAND_2(EXPAND_2(EXPAND_2(EXPAND_2(__VA_ARGS__))))
#define EXPAND_2(...) EXPAND_1(EXPAND_1(EXPAND_1(EXPAND_1(__VA_ARGS__))))
#define EXPAND_1(...) __VA_ARGS__
#define OF(...) EXPAND(OF_EACH(__VA_ARGS__))
#define OF_EACH(Class, field, ...) &Class::field __VA_OPT__(, OF_NEXT PARENTHESES(Class, __VA_ARGS__))
#define OF_NEXT() OF_EACH
#define PARENTHESES ()

// Fields of all kinds of access: this source is compiled without access control.
#define FIELDS(name, ...)                                                                                    \
    TEST(FieldOrder, name) {                                                                                 \
        EXPECT_EQ(First_Out_Of_Order(OF(__VA_ARGS__)), 0);                                                   \
    }

using Numbers = SplayTree<int, int>;

// clang-format off
FIELDS(Tarn, TarnApplication, ssl_library, ssl_state_, heartbeats, cancelled_, post_timed_out,
       global_deadline, post_deadline, log_include, log_exclude, language_, language_changes,
       default_language, default_language_changes, default_database, default_database_changes, charset_,
       charset_changes, charset_is_utf8)
FIELDS(Console, ConsoleApplication, output_, basename_, hostname_, argc, argv)
FIELDS(Compiler, CompilerApplication, output_path, output_file, assembly, first_input, stop_after_options,
       defines, max_engine_version, engine_version, obfuscate_bytes, doxygen_output, coverage_output,
       function_output_default, function_access_default, pedantic_warn, pedantic_error, warning_flags)
FIELDS(UNIX_Compiler, UNIXCompilerApplication, file_manager, library_manager, call_manager)
FIELDS(Scanner, Parser, expression_parser, tokenizer, tag_lookup, start_state, application, error_count,
       state, last_error, capture_expression, pending_text, pending_length, pending_is_html, output_flags,
       expression_opened_in_html, value_text, value_length, tokenizer_stack)
FIELDS(Source, Tokenizer, filemanager, buffer, length, position, bare_expression, open_pending, close_sent,
       file, filename, in_expression, lasterror, line, line_start, peek_text, peek_length, peek_type)
FIELDS(Attribute, AttributeValue, line, ident, expression, error_message, type, error_code, scope,
       member_ident, simple_text, qualifiers)
FIELDS(Attributes, AttributeValueArray, unused, parser, capacity, last_used, values, grow_by)
FIELDS(Expressions, ExpressionParser, parser, operator_lookup, minus_operator, operand_seen, scan_state,
       dot_count, first_dot, last_dot, text, paren_depth)
FIELDS(Tag_Key, _TagLookup, id, kind, required, optional, length, key)
FIELDS(Attribute_Key, _AttributeLookup, id, kind, required, optional, length, key)
FIELDS(Operator_Key, _OperatorLookup, id, kind, priority, operands, type, length, key)
FIELDS(Waiting_Operator, Operator, id, priority, operands, flags)
FIELDS(Text, String, buffer, capacity_, length_)
FIELDS(Table, HashTable<String>, own, case_insensitive, buckets, bucket_bits, bucket_count, buckets_used, next,
       slots, capacity, entries, cursor)
FIELDS(Tree, Numbers, own, entries, root)
FIELDS(Tree_Node, SplayTreeNode<int>, left, right, element)
FIELDS(Chain, LinkBuffer, head, tail, length, first_size, block_size)
FIELDS(Chain_Block, LinkBuffer_Block, data, used, capacity, next, previous)
FIELDS(Digest, MD5Encoder, state, count)
FIELDS(Value, Variable, name_, string, integer, decimal, valid, primary, aggregate, elements, refcount_, link)
FIELDS(Immutable_Value, ImmutableVariable, locked, null_element)
FIELDS(Supplier, CallbackVariableCallback, attached, result)
FIELDS(Element_Key, AggregateIndex, name, number, serialized_)
FIELDS(Element, AggregateElement, index_, var_)
FIELDS(Variables, VariableHash, buckets, bucket_bits, bucket_size, bucket_entries, next, capacity, entries,
       variable_count, dictionary_, error_)
FIELDS(Variable_Slot, _VH_Entry, id, version, var)
FIELDS(System_Variables, SystemVariableHash, level, scopes, current)
FIELDS(System_Change, _SVH_Entry, slot, version, var)
FIELDS(Files, FileManager, application, error_, max_files, security_options, active, inactive)
FIELDS(Any_File, File, manager, contained, path_type, path, error_)
FIELDS(UNIX_File, UNIXFile, descriptor, mapping, mapping_length, open_flags, position)
FIELDS(Roots, UNIXFileManager, script, data, temp)
FIELDS(File_Root, UNIXFileManager::Root, path, descriptor)
FIELDS(Root_Settings, _UNIXContainedPathSettings, directory_fd, root, allow_links, allow_other_owner,
       allow_absolute)
FIELDS(Path, UNIXFilePath, text, length, element_count, offsets, absolute, collapsed_count, collapsed)
FIELDS(Connection, UNIXNetworkConnection, socket, tls_handle, peer_certificate, client_certificate, client_key)
FIELDS(Response, HTTPResponseStream, headers_, status_, content_length_, connection, timeout, chunked,
       chunk_size, chunk_offset, total_read_, error_)
FIELDS(Libraries, ExternalCallManager, library_manager, calls, lasterror, registered, registered_capacity,
       registered_count, persistent)
FIELDS(Numbered_List, List<String>, own, entries, head, current, tail)
FIELDS(List_Node, ListNode<String>, previous, next, element)
FIELDS(Numbered_Stack, Stack<String>, own, entries, top, peek)
FIELDS(Stack_Node, StackNode<String>, next, element)
FIELDS(Sink, Output, flags_, last_was_space)
FIELDS(Buffered_Sink, BufferedOutput, buffer, capacity, fill)
FIELDS(Queue, OpcodeQueue, parser, type)
FIELDS(Time, TNTIME, epoch_seconds, microseconds, second, minute, hour, day, month, month_name, year, weekday,
       weekday_name, day_of_year, daylight_saving, zone_name)
FIELDS(Generator, CompilerParser, external_calls, string_table, function_stdout_default,
       function_access_default, saved_function_flags, saved_localized_flags, localized_text_flags,
       localized_text_count, saved_capture_flags, output_flags, tag_error_code, conditional_operators,
       subexpressions, current_tag, tag_name, current_attribute, localized_ids, localized_sequence,
       localized_text, local_variables, global_variables, system_variables, function_variables,
       scratch_variables, file_scratch_variables, function_scratch_variables, file_ident, attribute_lookup,
       next_string_ident, priority_bias, operators, referenced_functions, called_functions,
       unresolved_functions, defined_functions, open_calls, call_list, next_label, while_stack, if_stack,
       ifdef_stack, import_stack, commerce_stack, pop_stack, lockfile_stack, call_stack, foreach_stack,
       for_stack, capture_stack, async_depth, async_block, smtp_block, last_lineno, lineno_forced,
       saved_output, suspended_output, attribute_values, array_kind, array_count, array_values, discard_value,
       expression_type, interpret_expressions, filter_parser, owns_globals, owns_system, opcode_queue,
       include_interpret)
FIELDS(Assembly, FileCompilerParser, output, last_file)
// clang-format on

} // namespace
