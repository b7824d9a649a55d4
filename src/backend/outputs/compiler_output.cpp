// Where assembly text goes: a file, a fragment, nowhere.

#include "backend/outputs/compiler_output.h"

#include "core/string_hash.h"
#include "core/text_length.h"
#include "files/file.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>

namespace {

// Eight letters at a time; answers the end of the copy.
char* Copy_Lower(const char* text, int length, char* copy) {
    using string_hash_detail::Ignoring_Case;
    for (; length >= 8; text += 8, copy += 8, length -= 8) {
        std::uint64_t word;
        std::memcpy(&word, text, sizeof word);
        word = Ignoring_Case::Fold(word);
        std::memcpy(copy, &word, sizeof word);
    }
    return std::transform(text, text + length, copy, [](char byte) {
        return static_cast<char>(
            Ignoring_Case::Fold(static_cast<unsigned>(static_cast<unsigned char>(byte))));
    });
}

} // namespace

CompilerOutput::CompilerOutput(int capacity) : BufferedOutput(capacity, item_limit) {
}

CompilerOutput::~CompilerOutput() = default;

int CompilerOutput::Write_Lower(const char* text, int length) {
    length = Text_Length(text, length);
    const char* end = text + length;
    while (text != end) {
        const int piece = static_cast<int>(std::min<std::ptrdiff_t>(end - text, item_limit));
        Commit(Copy_Lower(text, piece, Reserve(piece)));
        text += piece;
    }
    return length;
}

FileOutput::FileOutput(File* file, int capacity) : CompilerOutput(capacity), file(file) {
}

FileOutput::~FileOutput() {
    Flush();
}

int FileOutput::Write(const char* text, int length) {
    length = Text_Length(text, length);
    if (length <= capacity)
        return CompilerOutput::Write(text, length);
    Flush();
    DoWrite(text, length);
    last_was_space = Is_Space(text[length - 1]);
    return length;
}

int FileOutput::DoWrite(const char* text, int length) {
    for (int written = 0; written < length && !failed_;) {
        const long result = file->Write(text + written, static_cast<unsigned long>(length - written));
        failed_ = result <= 0;
        written += failed_ ? 0 : static_cast<int>(result);
    }
    if (failed_ && error_.length() == 0)
        error_ = file->error();
    return failed_ ? -1 : length;
}

void FileOutput::Abandon() {
    fill = 0;
    failed_ = true;
}

StringOutput::StringOutput() : CompilerOutput(fragment_capacity) {
}

StringOutput::~StringOutput() = default;

int StringOutput::DoWrite(const char* text, int length) {
    flushed.cat(text, length);
    return length;
}

// Only what is not written yet: a long text grows by moving, and is there twice meanwhile.
void StringOutput::Expect(std::size_t length) {
    if (flushed.length() != 0 || length > INT_MAX)
        return;
    const int capacity = static_cast<int>(length);
    flushed.assign_nocopy(new char[length], 0, capacity);
}

const char* StringOutput::Contents(int* length) {
    Flush();
    *length = flushed.length();
    return flushed.text();
}

int StringOutput::Move_Contents(CompilerOutput* target) {
    const int moved = flushed.length() + fill;
    if (flushed.length() != 0) {
        target->Write(flushed.text(), flushed.length());
        flushed.truncate(0);
    }
    target->Put(buffer.get(), fill);
    fill = 0;
    return moved;
}

void StringOutput::Clear() {
    flushed.truncate(0);
    fill = 0;
    last_was_space = 1;
}

NullCompilerOutput::NullCompilerOutput() : CompilerOutput(0) {
}

NullCompilerOutput::~NullCompilerOutput() = default;

int NullCompilerOutput::Write(const char* text, int length) {
    return Text_Length(text, length);
}

int NullCompilerOutput::DoWrite(const char*, int length) {
    return length;
}
