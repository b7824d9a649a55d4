#ifndef CORE_STAT_HASH_TABLE_H
#define CORE_STAT_HASH_TABLE_H

#include "core/file_identity.h"
#include "core/hash_table.h"

#include <sys/stat.h>

// A table of files by identity, device and inode. It is searched with elements; no text is the key of any.

inline std::uint32_t Identity_Hash(const struct stat& file) {
    const auto bytes_of = [](const auto& number) { return reinterpret_cast<const char*>(&number); };
    const std::uint32_t device = hash(bytes_of(file.st_dev), sizeof file.st_dev, 0);
    return hash(bytes_of(file.st_ino), sizeof file.st_ino, device);
}

template <>
inline std::uint32_t HashTable<struct stat>::Index_Hash(struct stat* e) const {
    return Identity_Hash(*e);
}

template <>
inline unsigned HashTable<struct stat>::hash(struct stat* e) const {
    return Identity_Hash(*e) & (bucket_count - 1);
}

template <>
inline int HashTable<struct stat>::Compare(struct stat* a, struct stat* b) const {
    return Same_File(*a, *b) ? 0 : -1;
}

template <>
inline int HashTable<struct stat>::Compare(struct stat*, const char*, int) const {
    return -1;
}

#endif
