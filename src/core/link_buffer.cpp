// The chain of blocks: growth at both ends, joining, and what is written out of it.

#include "core/link_buffer.h"

#include "app/services/tarn_application.h"
#include "backend/outputs/output.h"
#include "value/variable.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <new>
#include <utility>

namespace {

using Block_Owner = std::unique_ptr<LinkBuffer_Block>;

Block_Owner Block_Around(std::unique_ptr<char[]> data, int used, int capacity) {
    auto block = std::make_unique<LinkBuffer_Block>(data.get(), used, capacity);
    (void)data.release(); // the block's now
    return block;
}

// A block that holds a copy of the text, of the next multiple of step above its length.
Block_Owner Block_Of_Copy(const char* text, int text_length, int step) {
    const std::int64_t capacity = (text_length / step + std::int64_t{1}) * step;
    if (capacity > INT_MAX)
        throw std::bad_alloc();
    auto data = std::make_unique_for_overwrite<char[]>(capacity);
    std::copy_n(text, text_length, data.get());
    return Block_Around(std::move(data), text_length, static_cast<int>(capacity));
}

template <typename Number>
void Add_Number(LinkBuffer& buffer, void (LinkBuffer::*add)(const char*, int, int),
                char* (*to_text)(Number, int*, int*), Number number) {
    int length;
    int size;
    const char* text = to_text(number, &length, &size);
    (buffer.*add)(text, length, size);
}

} // namespace

LinkBuffer_Block::LinkBuffer_Block(char* data, int used, int capacity)
    : data(data), used(used), capacity(capacity) {
}

// One after the other, since a chain may be longer than the stack is deep.
LinkBuffer_Block::~LinkBuffer_Block() {
    while (next != nullptr)
        next = std::move(next->next);
}

LinkBuffer::LinkBuffer(int first_size, int block_size)
    : first_size(std::max(first_size, 1)), block_size(std::max(block_size, 1)) {
}

LinkBuffer::~LinkBuffer() = default;

void LinkBuffer::cat(const char* text, int text_length) {
    Check_Fits(text_length);
    if (head == nullptr)
        return Link_Last(Block_Of_Copy(text, text_length, first_size));
    const int fitting = std::min(text_length, tail->capacity - tail->used);
    Block_Owner rest;
    if (fitting < text_length)
        rest = Block_Of_Copy(text + fitting, text_length - fitting, block_size);
    std::copy_n(text, fitting, tail->data.get() + tail->used);
    tail->used += fitting;
    length += fitting;
    if (rest != nullptr)
        Link_Last(std::move(rest));
}

void LinkBuffer::cat_nocopy(const char* text, int text_length, int capacity) {
    std::unique_ptr<char[]> data(const_cast<char*>(text));
    Check_Fits(text_length);
    Link_Last(Block_Around(std::move(data), text_length, capacity));
}

void LinkBuffer::cat_hex(unsigned char byte) {
    constexpr const char* digits = "0123456789ABCDEF";
    const char text[] = {digits[byte >> 4], digits[byte & 15]};
    cat(text, sizeof text);
}

void LinkBuffer::cat(int number) {
    Add_Number(*this, &LinkBuffer::cat_nocopy, TarnApplication::itos, number);
}

void LinkBuffer::cat(double number) {
    Add_Number(*this, &LinkBuffer::cat_nocopy, TarnApplication::dtos, number);
}

void LinkBuffer::cat(mpd_t* number) {
    Add_Number(*this, &LinkBuffer::cat_nocopy, TarnApplication::mpdtos, number);
}

void LinkBuffer::cat(Variable* variable) {
    const String& value = variable->value();
    cat(value.text(), value.length());
}

void LinkBuffer::cat(LinkBuffer* other) {
    Check_Fits(other->length);
    // The end is noted first: it moves when the buffer is appended to itself.
    const LinkBuffer_Block* last = other->tail;
    const int last_used = last == nullptr ? 0 : last->used;
    for (const LinkBuffer_Block* block = other->head.get(); block != nullptr; block = block->next.get()) {
        const int used = block == last ? last_used : block->used;
        if (used > 0)
            cat(block->data.get(), used);
        if (block == last)
            break;
    }
}

void LinkBuffer::cat_destroy(LinkBuffer* other) {
    Check_Fits(other->length);
    if (other->head != nullptr) {
        other->head->previous = tail;
        (tail == nullptr ? head : tail->next) = std::move(other->head);
        tail = other->tail;
        length += other->length;
    }
    delete other;
}

void LinkBuffer::prepend(const char* text, int text_length) {
    if (head == nullptr)
        return cat(text, text_length);
    Check_Fits(text_length);
    Link_First(Block_Of_Copy(text, text_length, block_size));
}

void LinkBuffer::prepend_nocopy(const char* text, int text_length, int capacity) {
    std::unique_ptr<char[]> data(const_cast<char*>(text));
    Check_Fits(text_length);
    Link_First(Block_Around(std::move(data), text_length, capacity));
}

void LinkBuffer::prepend(int number) {
    Add_Number(*this, &LinkBuffer::prepend_nocopy, TarnApplication::itos, number);
}

void LinkBuffer::prepend(double number) {
    Add_Number(*this, &LinkBuffer::prepend_nocopy, TarnApplication::dtos, number);
}

void LinkBuffer::prepend(mpd_t* number) {
    Add_Number(*this, &LinkBuffer::prepend_nocopy, TarnApplication::mpdtos, number);
}

void LinkBuffer::prepend(Variable* variable) {
    const String& value = variable->value();
    prepend(value.text(), value.length());
}

void LinkBuffer::prepend(LinkBuffer* other) {
    Check_Fits(other->length);
    // The beginning is noted first: it moves when the buffer is put in front of itself.
    const LinkBuffer_Block* first = other->head.get();
    for (const LinkBuffer_Block* block = other->tail; block != nullptr; block = block->previous) {
        prepend(block->data.get(), block->used);
        if (block == first)
            break;
    }
}

void LinkBuffer::prepend_destroy(LinkBuffer* other) {
    Check_Fits(other->length);
    if (other->head != nullptr) {
        (head == nullptr ? tail : head->previous) = other->tail;
        other->tail->next = std::move(head);
        head = std::move(other->head);
        length += other->length;
    }
    delete other;
}

void LinkBuffer::append_to(char* target) const {
    for (const LinkBuffer_Block* block = head.get(); block != nullptr; block = block->next.get())
        target = std::copy_n(block->data.get(), block->used, target);
}

void LinkBuffer::output(Output* out) const {
    for (const LinkBuffer_Block* block = head.get(); block != nullptr; block = block->next.get())
        out->Write(block->data.get(), block->used);
}

void LinkBuffer::coalesce(int extra) {
    if (head == nullptr || (head.get() == tail && extra <= head->capacity - head->used))
        return;
    Check_Fits(extra);
    auto data = std::make_unique_for_overwrite<char[]>(length + extra);
    append_to(data.get());
    head = Block_Around(std::move(data), length, length + extra);
    tail = head.get();
}

const char* LinkBuffer::data(int* text_length, int* capacity) {
    coalesce(1);
    *text_length = length;
    if (capacity != nullptr)
        *capacity = head == nullptr ? 1 : head->capacity;
    if (head == nullptr)
        return "";
    head->data[length] = '\0';
    return head->data.get();
}

char* LinkBuffer::release(int* text_length, int* capacity, int extra) {
    if (head == nullptr)
        Link_Last(Block_Around(std::make_unique<char[]>(1), 0, 1));
    else
        coalesce(extra);
    *text_length = std::exchange(length, 0);
    if (capacity != nullptr)
        *capacity = head->capacity;
    char* array = head->data.release();
    head.reset();
    tail = nullptr;
    return array;
}

// Called before anything is changed.
void LinkBuffer::Check_Fits(int more) const {
    if (more > INT_MAX - length)
        throw std::bad_alloc();
}

void LinkBuffer::Link_First(Block_Owner block) {
    length += block->used;
    (head == nullptr ? tail : head->previous) = block.get();
    block->next = std::move(head);
    head = std::move(block);
}

void LinkBuffer::Link_Last(Block_Owner block) {
    length += block->used;
    block->previous = tail;
    tail = block.get();
    (block->previous == nullptr ? head : block->previous->next) = std::move(block);
}
