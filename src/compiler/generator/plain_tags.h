// The tags that push all their values and write one instruction.
#ifndef COMPILER_PLAIN_TAGS_H
#define COMPILER_PLAIN_TAGS_H

#include "app/services/diagnostics.h"
#include "backend/instructions/engine_version.h"
#include "backend/instructions/opcode.h"
#include "frontend/scanner/tag_lookup.h"

#include <optional>

struct Plain_Tag {
    int tag;
    int opcode;
    std::optional<Message> incomplete = {}; // when a value is missing; without one it is the empty constant
    File_Version version = FILE_VERSION_FIRST; // demanded behind the instruction, unless it is the first
};

inline constexpr Plain_Tag plain_tags[] = {
    {Tag::Eval, OPCODE_OUT, Message::Eval_Requires_Expression},
    {Tag::Hide, OPCODE_HIDE, Message::Hide_Requires_Fields},
    {Tag::Export, OPCODE_EXPORT, Message::Export_Requires_File},
    {Tag::Close, OPCODE_DBCLOSE},
    {Tag::Find, OPCODE_DBFIND},
    {Tag::Setindex, OPCODE_DBSETINDEX},
    {Tag::Update, OPCODE_DBUPDATE},
    {Tag::Delete, OPCODE_DBDELETE},
    {Tag::Undelete, OPCODE_DBUNDELETE},
    {Tag::Add, OPCODE_DBADD},
    {Tag::Pack, OPCODE_DBPACK},
    {Tag::Reindex, OPCODE_DBREINDEX},
    {Tag::Closeview, OPCODE_DBCLOSEVIEW},
    {Tag::Commit, OPCODE_DBCOMMIT, {}, FILE_VERSION_OPEN_FLAGS},
    {Tag::Rollback, OPCODE_DBROLLBACK, {}, FILE_VERSION_OPEN_FLAGS},
    {Tag::Transact, OPCODE_DBTRANSACT, {}, FILE_VERSION_REFERENCES},
    {Tag::Dbcommand, OPCODE_DBCOMMAND, {}, FILE_VERSION_REFERENCES},
};

#endif
