// The text of instructions and labels.

#include "app/services/tarn_application.h"
#include "backend/outputs/assembly_item.h"
#include "backend/queue/opcode_queue.h"
#include "backend/writers/file_compiler_parser.h"

#include <cstring>
#include <memory>

namespace {

// The piece of a variable instruction between its direction and its number.
std::string_view Scope_Piece(Variable_Scope scope) {
    switch (scope) {
    case SCOPE_LOCAL: return "l\tl_";
    case SCOPE_GLOBAL: return "g\tl_";
    case SCOPE_SYSTEM: return "s\tsys_";
    case SCOPE_DATABASE: return "dc\ts_";
    case SCOPE_LOCAL_BY_NAME: return "lvnc\ts_";
    case SCOPE_UNSCOPED: return "nc\ts_";
    }
    return "";
}

void Write_Plain(CompilerOutput* output, const Opcode_Info& row, int first) {
    Assembly_Item item(output);
    item.Head(row);
    if (row.operands != Operand_Form::NONE)
        item.Number(first);
}

static_assert(Opcode_Info::head_size + QueuedOpcode_Text::padding <= Assembly_Item::plain_limit);

// The row of a record that is all plain text: a plain instruction, or a short number as it is spelled. Null
// for all others.
const Opcode_Info* Plain_Row(const QueuedOpcode& record) {
    switch (record.kind) {
    case QUEUED_NUMBERS: return Find_Plain_Opcode(record.opcode);
    case QUEUED_TEXT: break;
    case QUEUED_CALL: return nullptr;
    }
    const auto& pushed = static_cast<const QueuedOpcode_Text&>(record);
    const bool plain =
        pushed.opcode == OPCODE_PUSHI && pushed.length < QueuedOpcode_Text::padding && !pushed.lower;
    return plain ? &Opcode_Row(OPCODE_PUSHI) : nullptr;
}

char* Put_Plain(char* target, const QueuedOpcode& record, const Opcode_Info& row) {
    target = Assembly_Item::Put_Head(target, row);
    if (record.kind == QUEUED_TEXT) {
        const auto& pushed = static_cast<const QueuedOpcode_Text&>(record);
        std::memcpy(target, pushed.text, QueuedOpcode_Text::padding);
        return target + pushed.length;
    }
    // Written in any case, and counted where there is one: no branch to foresee.
    char* end = Assembly_Item::Put_Number(target, static_cast<const QueuedOpcode_Integer&>(record).first);
    return row.operands == Operand_Form::NONE ? target : end;
}

} // namespace

void FileCompilerParser::Output_Variable_Instruction(int is_pop, int ident, Variable_Scope scope, int alias,
                                                     int by_reference) {
    Assembly_Item item(output);
    item.Text(!is_pop ? "\n\tpush" : by_reference ? "\n\tpopr" : "\n\tpop").Text(Scope_Piece(scope));
    if (scope == SCOPE_DATABASE)
        item.Number(alias).Text(", s_");
    item.Number(ident);
}

void FileCompilerParser::Generate_Label(ParserLabelType type, int number) {
    Assembly_Item(output).Text(label_texts[type]).Number(number);
}

void FileCompilerParser::Output_Generated_Label(ParserLabelType type, int number) {
    Assembly_Item(output).Text("\n");
    Generate_Label(type, number);
    Assembly_Item(output).Text(":");
}

void FileCompilerParser::Output_Opcode_With_Label(int opcode, ParserLabelType type, int number) {
    Follow_LineNo();
    const Opcode_Info* row = Find_Opcode(opcode);
    if (row && (row->operands == Operand_Form::LABEL || row->operands == Operand_Form::LABEL_IMMEDIATE))
        Assembly_Item(output).Head(*row);
    Generate_Label(type, number);
}

void FileCompilerParser::Output_Opcode_With_Label_and_Immediate(int opcode, ParserLabelType type, int number,
                                                                int immediate) {
    Output_Opcode_With_Label(opcode, type, number);
    Assembly_Item(output).Text(", ").Number(immediate);
}

void FileCompilerParser::Output_Opcode(int opcode, double value) {
    Follow_LineNo();
    if (opcode == OPCODE_PUSHF)
        Assembly_Item(output).Head(Opcode_Row(opcode));
    else
        Note<Message::Internal_Opcode_Double>(); // the number is written all the same
    int length;
    const std::unique_ptr<char[]> number(TarnApplication::dtos(value, &length, nullptr));
    output->Write(number.get(), length);
}

void FileCompilerParser::Output_Opcode(int opcode, int first, int second) {
    if (opcode != OPCODE_LINENO && opcode != OPCODE_SOURCEFILE)
        Follow_LineNo();
    const Opcode_Info* row = Find_Opcode(opcode);
    if (row && row->plain)
        return Write_Plain(output, *row, first);
    Output_Special_Opcode(row, opcode, first, second);
}

void FileCompilerParser::Output_Special_Opcode(const Opcode_Info* row, int opcode, int first, int second) {
    const Operand_Form form = row ? row->operands : Operand_Form::ENGINE;
    switch (form) {
    case Operand_Form::READ_ONLY: return Output_Read_Only_Access(opcode);
    case Operand_Form::LABEL:
    case Operand_Form::LABEL_IMMEDIATE:
    case Operand_Form::TEXT:
    case Operand_Form::REAL:
    case Operand_Form::ENGINE: return Output_Unknown_Opcode(opcode, first);
    default: break;
    }
    Assembly_Item(output)
        .Head(*row)
        .Number(first)
        .Text(form == Operand_Form::FIELD ? ", s_" : ", ")
        .Number(second);
}

void FileCompilerParser::Output_Pushed_Constant(int ident, int opcode) {
    Follow_LineNo();
    Assembly_Item(output).Head(Opcode_Row(OPCODE_PUSHC)).Number(ident).Head(Opcode_Row(opcode));
}

// Plain records of one line go out together.
QueuedOpcode* FileCompilerParser::Output_Run(QueuedOpcode* first, const QueuedOpcode* end) {
    const Opcode_Info* row = Plain_Row(*first);
    if (!row)
        return CompilerParser::Output_Run(first, end);
    const int line = first->line;
    Force_LineNo(line);
    QueuedOpcode* entry = first;
    while (row) {
        char* position = output->Reserve(CompilerOutput::item_limit);
        const char* const last_start = position + CompilerOutput::item_limit - Assembly_Item::plain_limit;
        while (row && position <= last_start) {
            position = Put_Plain(position, *entry, *row);
            entry = entry->Next();
            row = entry != end && entry->line == line ? Plain_Row(*entry) : nullptr;
        }
        output->Commit(position);
    }
    return entry;
}

void FileCompilerParser::Output_Opcode(int opcode, const char* text, int length, int lower) {
    Follow_LineNo();
    if (opcode == OPCODE_CALL || opcode == OPCODE_PUSHF || opcode == OPCODE_PUSHI)
        Assembly_Item(output).Head(Opcode_Row(opcode));
    if (lower)
        output->Write_Lower(text, length);
    else
        output->Write(text, length);
}

// Engines without read-only access get the writable instruction instead.
void FileCompilerParser::Output_Read_Only_Access(int opcode) {
    if (Engine_Version() > last_writable_access_engine) {
        Assembly_Item(output).Head(Opcode_Row(opcode));
        (void)Output_Version(file_version_major, FILE_VERSION_READ_ONLY_ELEMENTS);
    } else {
        Assembly_Item(output).Head(Opcode_Row(Writable_Access(opcode)));
    }
}

void FileCompilerParser::Output_Unknown_Opcode(int opcode, int first) {
    Note<Message::Internal_Opcode>(); // an instruction has no status to answer
    if (First_Operand(opcode) != Operand_Kind::NONE)
        Assembly_Item(output).Number(first);
}
