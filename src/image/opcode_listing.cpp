// Code as a listing for people.

#include "backend/instructions/opcode.h"
#include "core/text_length.h"
#include "image/segment.h"

#include <cstdio>

namespace {

struct Close_Listing {
    void operator()(FILE* listing) const { std::fclose(listing); }
};
using Listing = std::unique_ptr<FILE, Close_Listing>;

void Write_Name(FILE* listing, int opcode) {
    const Opcode_Info* row = Find_Opcode(opcode);
    if (row && !row->listing.empty())
        std::fprintf(listing, "%.*s\t", Length_Of(row->listing), row->listing.data());
    else
        std::fputs("Illegal Instruction\n", listing);
}

// Writes the operand at an offset, and answers the offset behind it; -1 where the code ends within it.
int Write_Operand(FILE* listing, const Segment& segment, int offset, Operand_Kind kind, const char* lead) {
    if (kind == Operand_Kind::INTEGER) {
        std::int32_t value = 0;
        offset = segment.Read_Dword(offset, &value);
        if (offset >= 0)
            std::fprintf(listing, "%sdword:%d", lead, value);
    } else if (kind == Operand_Kind::DOUBLE) {
        double value = 0;
        offset = segment.Read_Double(offset, &value);
        if (offset >= 0)
            std::fprintf(listing, "%sdouble:%f", lead, value);
    }
    return offset;
}

// Answers the offset behind the instruction, -1 where the code ends within it. The operands follow from the
// opcode's bits alone, so that the listing keeps in step behind an instruction that it doesn't know.
int Write_Instruction(FILE* listing, const Segment& segment, int offset) {
    std::uint16_t opcode = 0;
    const int operands = segment.Read_Word(offset, &opcode);
    if (operands < 0)
        return -1;
    std::fprintf(listing, "%d\t", offset);
    Write_Name(listing, opcode);
    const int second = Write_Operand(listing, segment, operands, First_Operand(opcode), "");
    const int next = Write_Operand(listing, segment, second, Second_Operand(opcode), ", ");
    // Bits that mean no kind of operand end no line.
    if (next >= 0 && Second_Operand(opcode) <= Operand_Kind::DOUBLE)
        std::fputc('\n', listing);
    return next;
}

} // namespace

void Segment::Dump(const char* path, const char* expression, int length) const {
    const Listing listing(path ? std::fopen(path, "we") : nullptr);
    if (!listing)
        return;
    std::fprintf(listing.get(), "\n\nExpression: %.*s\n", length, expression ? expression : "");
    for (int offset = 0; offset >= 0 && offset < size;)
        offset = Write_Instruction(listing.get(), *this, offset);
}
