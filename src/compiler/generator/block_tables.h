// The families of blocks: their stacks, the jumps out of them, and the loops of the engine.
#ifndef COMPILER_BLOCK_TABLES_H
#define COMPILER_BLOCK_TABLES_H

#include "backend/instructions/opcode.h"
#include "compiler/generator/compiler_parser.h"

#include <optional>

// In the order in which blocks that are still open are reported at the end.
struct CompilerParser::Block_Family {
    int tag;
    Stack<Resolution_Info> CompilerParser::*stack; // null for the conditional blocks, whose records differ
};

inline constexpr CompilerParser::Block_Family CompilerParser::block_families[] = {
    {Tag::If, &CompilerParser::if_stack},
    {Tag::Ifdef, nullptr},
    {Tag::Commerce, &CompilerParser::commerce_stack},
    {Tag::Import, &CompilerParser::import_stack},
    {Tag::Pop, &CompilerParser::pop_stack},
    {Tag::Lockfile, &CompilerParser::lockfile_stack},
    {Tag::While, &CompilerParser::while_stack},
    {Tag::Call, &CompilerParser::call_stack},
    {Tag::Capture, &CompilerParser::capture_stack},
    {Tag::For, &CompilerParser::for_stack},
    {Tag::Foreach, &CompilerParser::foreach_stack},
};

// A tag that acts on the innermost block of a family.
struct CompilerParser::Block_Jump {
    int tag;
    int family; // its tag
    int opcode;
    std::optional<ParserLabelType> target;
    Message outside;
    bool then_leaves = false; // the loops of the engine fall out of their loop instruction at the last round
};

inline constexpr CompilerParser::Block_Jump CompilerParser::block_jumps[] = {
    {Tag::While_Stop, Tag::While, OPCODE_JMP, LABEL_END, Message::While_Stop_Outside},
    {Tag::While_Continue, Tag::While, OPCODE_JMP, LABEL_START, Message::While_Continue_Outside},
    {Tag::For_Stop, Tag::For, OPCODE_JMP, LABEL_END, Message::For_Stop_Outside},
    {Tag::For_Continue, Tag::For, OPCODE_JMP, LABEL_LOOP, Message::For_Continue_Outside},
    {Tag::Foreach_Stop, Tag::Foreach, OPCODE_JMP, LABEL_END, Message::Foreach_Stop_Outside},
    {Tag::Foreach_Continue, Tag::Foreach, OPCODE_JMP, LABEL_LOOP, Message::Foreach_Continue_Outside},
    {Tag::Import_Stop, Tag::Import, OPCODE_IMPORT_STOP, LABEL_END, Message::Import_Stop_Outside},
    {Tag::Import_Continue, Tag::Import, OPCODE_IMPORT_LOOP, LABEL_START, Message::Import_Continue_Outside,
     true},
    {Tag::Pop_Stop, Tag::Pop, OPCODE_POP3_STOP, LABEL_END, Message::Pop_Stop_Outside},
    {Tag::Pop_Continue, Tag::Pop, OPCODE_POP3_LOOP, LABEL_START, Message::Pop_Continue_Outside, true},
    {Tag::Pop_Delete, Tag::Pop, OPCODE_POP3_DELETE, std::nullopt, Message::Pop_Delete_Outside},
    {Tag::Call_Stop, Tag::Call, OPCODE_HTTP_STOP, LABEL_END, Message::Call_Stop_Outside},
    {Tag::Call_Continue, Tag::Call, OPCODE_HTTP_LOOP, LABEL_START, Message::Call_Continue_Outside, true},
    {Tag::Commerce_Stop, Tag::Commerce, OPCODE_COMMERCE_STOP, LABEL_END, Message::Commerce_Stop_Outside},
    {Tag::Commerce_Continue, Tag::Commerce, OPCODE_COMMERCE_LOOP, LABEL_START,
     Message::Commerce_Continue_Outside, true},
};

// A block whose body the engine runs in a loop.
struct CompilerParser::Loop_Block {
    int tag;
    int loop_opcode;
    bool has_frame; // of variables: spush at the start, spop behind the closing label
};

inline constexpr CompilerParser::Loop_Block CompilerParser::loop_blocks[] = {
    {Tag::Import, OPCODE_IMPORT_LOOP, false},
    {Tag::Pop, OPCODE_POP3_LOOP, false},
    {Tag::Commerce, OPCODE_COMMERCE_LOOP, true},
    {Tag::Call, OPCODE_HTTP_LOOP, true},
};

#endif
