// Extension libraries and engines call virtual operations by their place in the table. This test reads the
// place out of pointers to members, as the platform's C++ binary interface lays them out: one more than the
// offset in bytes.

#include "app/unix_compiler_application.h"
#include "backend/compiler_output.h"
#include "backend/file_compiler_parser.h"
#include "backend/opcode_queue.h"
#include "core/splay_tree.h"
#include "extension/external_call.h"
#include "extension/external_library.h"
#include "files/unix_file_manager.h"
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

// The first, the last and some middle operations of each class. The destructor has two places, the first two
// where it is declared first.
const Place places[] = {
    PLACE(2, TarnApplication::networkmanager),
    PLACE(8, TarnApplication::config),
    PLACE(13, TarnApplication::SetOutput),
    PLACE(19, TarnApplication::cancelled),
    PLACE_OF(24, TarnApplication::Error, const String&),
    PLACE_OF(26, TarnApplication::Error, const char*, int),
    PLACE(33, TarnApplication::TimeRemaining),
    PLACE(34, TarnApplication::language),
    PLACE(44, TarnApplication::SetLanguage),
    PLACE(48, TarnApplication::SSL_Available),
    PLACE(53, TarnApplication::Log_Description),
    PLACE(62, TarnApplication::ResolvePath),
    PLACE(63, ConsoleApplication::CommandLine_Parse),
    PLACE_OF(64, ConsoleApplication::CommandLine_Requires_Argument, char),
    PLACE(68, ConsoleApplication::ArgumentError),
    PLACE(69, CompilerApplication::externalcallmanager),
    PLACE(70, CompilerApplication::Go),
    PLACE(74, CompilerApplication::CompileError),
    PLACE(79, CompilerApplication::Pedantic_Error),
    PLACE(2, List<String>::Insert),
    PLACE(5, List<String>::Seek),
    PLACE(8, List<String>::Current),
    PLACE(13, List<String>::RemoveAll),
    PLACE(2, Stack<String>::Entries),
    PLACE(4, Stack<String>::Pop),
    PLACE(5, Stack<String>::Top),
    PLACE(7, Stack<String>::Dump),
    PLACE(2, HashTable<String>::Dump),
    PLACE(2, Output::Write_Error),
    PLACE(5, Output::Write),
    PLACE_OF(8, Output::Flush, int),
    PLACE(13, Output::Write_Compressed_Full),
    PLACE(14, BufferedOutput::DoWrite),
    PLACE(15, CompilerOutput::Write_Lower),
    PLACE(2, OpcodeQueue::Clear_RHS),
    PLACE(4, OpcodeQueue::Queue_Opcode_With_Label),
    PLACE_OF(6, OpcodeQueue::Queue_Opcode, int, double),
    PLACE(10, OpcodeQueue::Flush),
    PLACE(2, QueuedOpcode::Output),
    PLACE(0, Parser::Set_Tokenizer),
    PLACE(4, Parser::Linenumber),
    PLACE(12, Parser::Start_Of_Tag),
    PLACE(26, Parser::Expression_Member),
    PLACE(39, Parser::Output_Assembly),
    PLACE(40, CompilerParser::Find_ScratchVariable_Ident),
    PLACE(44, CompilerParser::Unknown_Common),
    PLACE(50, CompilerParser::Output_Operator_IncrementDecrement),
    PLACE(51, CompilerParser::Generate_Label),
    PLACE_OF(58, CompilerParser::Output_Opcode, int, int, int),
    PLACE(65, CompilerParser::Output_Version),
    PLACE(76, CompilerParser::Last_File),
    PLACE(2, File::OwnerID),
    PLACE_OF(5, File::Write, const char*, unsigned long),
    PLACE(12, File::Map),
    PLACE_OF(16, File::Error, const String&),
    PLACE(2, FileManager::lasterror),
    PLACE_OF(3, FileManager::Open, const char*, int),
    PLACE_OF(21, FileManager::MakeTemporary, const char*, char**, int),
    PLACE_OF(22, FileManager::Open, Tarn_PathType, const char*, int),
    PLACE(42, FileManager::DirectoryListing),
    PLACE(53, FileManager::SecurityOptions),
    PLACE(54, UNIXFileManager::InitializeScriptDirectory),
    PLACE(57, UNIXFileManager::OpenContained),
    PLACE(65, UNIXFileManager::Stat),
    PLACE(2, ExternalLibrary::Load),
    PLACE(3, ExternalLibrary::Get_Function),
    PLACE(2, ExternalLibraryManager::Lookup),
    PLACE(3, ExternalLibraryManager::Load),
    PLACE(2, ExternalCallManager::RegisterDSO),
    PLACE(3, ExternalCallManager::Lookup_External),
    PLACE(5, ExternalCallManager::Register_Persistent),
    PLACE(2, NetworkManager::IsIPAddress),
    PLACE(9, NetworkManager::Connect),
    PLACE(11, NetworkManager::SSL_Connect),
    PLACE(16, NetworkManager::OpenURL_SendRequest),
    PLACE(21, NetworkManager::Verify_Certificate_Pinning),
    PLACE(25, NetworkManager::SplitURL),
    PLACE(27, NetworkManager::Error),
    PLACE(2, NetworkConnection::EstablishTLSConnection),
    PLACE_OF(6, NetworkConnection::Write, const char*, int, int),
    PLACE(9, NetworkConnection::ipaddress),
    PLACE(10, UNIXNetworkConnection::EstablishTCPConnection),
    PLACE(13, UNIXNetworkConnection::SSL_Write),
    PLACE(10, LoggingNetworkConnection::Log_Read),
    PLACE(13, LoggingNetworkConnection::Log_Write_Failure),
    PLACE(2, NetworkService::Connection),
    PLACE(6, NetworkService::Error),
    PLACE(2, Variable::Clone),
    PLACE(9, Variable::value_compare),
    PLACE_OF(21, Variable::SetValue, Variable&),
    PLACE(30, Variable::DeleteElements),
    PLACE(38, Variable::ElementsUsed),
    PLACE(45, Variable::Serialize),
    PLACE(47, Variable::Make_CallbackStruct),
    PLACE(49, ReferenceVariable::TypeReferredTo),
    PLACE(49, ImmutableVariable::Lock),
    PLACE(49, CallbackVariable::Detach),
    PLACE(5, CallbackVariableCallback::Lookup),
    PLACE(13, AggregateElementTree::Displace),
    PLACE(15, VariableList::Destroy),
    PLACE_OF(4, VariableHash::Insert, int),
    PLACE(13, VariableHash::Find),
    PLACE_OF(19, VariableHash::Read, TaggedFile*, int),
    PLACE(27, VariableHash::RealIdentity),
    PLACE(3, TaggedFile::Error),
    PLACE(3, SegmentManager::Error),
    PLACE(3, Dictionary::Error),
    PLACE(2, FunctionManager::Function_Get),
    PLACE(4, FunctionManager::Error),
};

TEST(SlotOrder, Operations_Stand_Where_Libraries_Look_For_Them) {
    for (const Place& place : places)
        EXPECT_EQ(place.slot, place.expected) << place.operation;
}

} // namespace
