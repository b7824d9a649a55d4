#include "app/services/tarn_application.h"
#include "backend/outputs/output.h"
#include "core/link_buffer.h"
#include "value/variable.h"

#include <climits>
#include <gtest/gtest.h>
#include <memory>
#include <mpdecimal.h>
#include <new>
#include <random>
#include <string>

namespace {

std::string written;

// The text with a bar behind each block.
std::string Blocks_Of(const LinkBuffer& buffer) {
    written.clear();
    NullOutput recorder([](const char* text, int length) {
        written.append(text, length).append("|");
        return length;
    });
    buffer.output(&recorder);
    return written;
}

TEST(LinkBuffer, Blocks_Are_Multiples_Of_Their_Size_Unless_Adopted) {
    LinkBuffer buffer(10, 5); // used anew after each release
    int length, capacity;
    EXPECT_STREQ(buffer.data(&length, nullptr), "");
    delete[] buffer.release(&length, &capacity, 9);
    EXPECT_EQ(capacity, 1); // whatever was asked for
    for (const auto& [wanted, size] : {std::pair(0, 10), {9, 10}, {10, 20}, {25, 30}}) {
        buffer.cat(std::string(wanted, 'x').data(), wanted);
        delete[] buffer.release(&length, &capacity, 0);
        EXPECT_EQ(length, wanted);
        EXPECT_EQ(capacity, size);
    }
    for (const std::string piece : {"abcde", "fghij", "klm", "nopqrstu"})
        buffer.cat(piece.data(), static_cast<int>(piece.size()));
    buffer.prepend("--", 2);
    buffer.prepend("", 0);
    EXPECT_EQ(Blocks_Of(buffer), "|--|abcdefghij|klmno|pqrstu|");
    delete[] buffer.release(&length, nullptr, 0);
    char* const array = new char[6]{'a', 'b'};
    buffer.prepend_nocopy(array, 2, 6);
    buffer.cat("cde", 3);
    EXPECT_EQ(buffer.data(&length, nullptr), array);
    EXPECT_EQ(buffer.release(&length, nullptr, 1), array);
    buffer.cat_nocopy(array, 5, 5);
    buffer.cat("f", 1);
    EXPECT_EQ(Blocks_Of(buffer), "abcde|f|");
}

TEST(LinkBuffer, Behaves_Like_A_String) {
    mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64);
    Variable variable("name", 4, "text", 4);
    mpd_t* const decimal = TarnApplication::itompd(nullptr, 77);
    std::mt19937 random(64);
    for (int round = 0; round < 2000; ++round) {
        LinkBuffer buffer(static_cast<int>(random() % 8), static_cast<int>(random() % 8));
        std::string model;
        for (int step = 0; step < 12; ++step) {
            const std::string piece(random() % 6, static_cast<char>('a' + step));
            const int size = static_cast<int>(piece.size()), room = size + static_cast<int>(random() % 3);
            char* const array = static_cast<char*>(std::memcpy(new char[room], piece.data(), size));
            auto other = std::make_unique<LinkBuffer>(3, 2);
            if (size > 0) {
                other->cat(piece.data(), size - 1);
                other->prepend(piece.data(), 1);
            }
            int length;
            switch (random() % 16) {
            case 0: buffer.cat(piece.data(), size), model += piece; break;
            case 1: buffer.prepend(piece.data(), size), model.insert(0, piece); break;
            case 2: buffer.cat(other.get()), model += piece; break;
            case 3: buffer.prepend(other.get()), model.insert(0, piece); break;
            case 4: buffer.cat(&buffer), model += std::string(model); break;
            case 5: buffer.prepend(&buffer), model += std::string(model); break;
            case 6: buffer.cat(2.5), buffer.cat(8), model += "2.58"; break;
            case 7: buffer.prepend(2.5), buffer.prepend(-12), model.insert(0, "-122.5"); break;
            case 8: buffer.cat(decimal), buffer.cat(&variable), model += "77text"; break;
            case 9: buffer.prepend(decimal), buffer.prepend(&variable), model.insert(0, "text77"); break;
            case 10: buffer.cat_hex(0xA9), model += "A9"; break;
            case 11: EXPECT_EQ(buffer.data(&length, nullptr), model); break;
            case 12: buffer.cat_nocopy(array, size, room), model += piece; continue;
            case 13: buffer.prepend_nocopy(array, size, room), model.insert(0, piece); continue;
            case 14: buffer.cat_destroy(other.release()), model += piece; break;
            case 15: buffer.prepend_destroy(other.release()), model.insert(0, piece); break;
            }
            delete[] array;
            EXPECT_TRUE(!other || other->data(&length, nullptr) == piece);
        }
        std::string copy(model.size(), '?');
        buffer.append_to(copy.data());
        ASSERT_EQ(copy, model);
    }
    mpd_del(decimal);
}

TEST(LinkBuffer, Refuses_Lengths_Beyond_An_Int_And_Frees_Long_Chains_Without_Recursion) {
    LinkBuffer buffer(10, 5), other(10, 5), chain(1, 1);
    buffer.cat_nocopy(new char[1], INT_MAX, INT_MAX); // the text isn't looked at
    other.cat("x", 1);
    int length;
    EXPECT_THROW(buffer.cat("x", 1), std::bad_alloc);
    EXPECT_THROW(buffer.prepend_destroy(&other), std::bad_alloc);
    EXPECT_THROW(buffer.data(&length, nullptr), std::bad_alloc);
    EXPECT_STREQ(other.data(&length, nullptr), "x");
    for (int i = 0; i < 300000; ++i)
        chain.prepend("x", 1);
}

} // namespace
