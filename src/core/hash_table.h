#ifndef CORE_HASH_TABLE_H
#define CORE_HASH_TABLE_H

#include "core/index_hash.h"
#include "core/resized_array.h"
#include "core/text_length.h"
#include "core/text_search.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

class String;

// What a table has to know about the class of its elements stands beside that class, as an overload found by
// argument:
//     std::string_view Hash_Key(const T& element);
// and is called afresh at each use. What the key points to must live, unchanged, as long as the element is in
// a table, also in one that doesn't own it.
//
// A class whose keys compare without regard to case whatever the table's flag says has this set. In a table
// that regards case, two of its keys that differ in case alone are then equals if hash() puts them in one
// bucket, and strangers if it doesn't: few buckets make more of them equal.
template <class T>
inline constexpr bool Hash_Key_Ignores_Case = false;

template <>
inline constexpr bool Hash_Key_Ignores_Case<String> = true;

// A table of element pointers by key, walked in the order of insertion. Elements stand in slots that are
// filled one behind the other; a removed element leaves a null slot, which is taken off only at the end.
// Duplicates are not refused: of elements with equal keys the one inserted first is found, then the next
// after its removal.
//
// Beneath, an index leads from a hash of the key, of its own, to the slots; it grows with the number of
// distinct keys and is filled by open addressing, so that bucket_bits bounds no speed: it only says what
// hash() answers. Elements with equal keys share one place of the index and are chained through `next`. A
// lookup allocates nothing; insertion takes constant time, behind any number of equals too; Dump costs what
// was in use.
//
// The elements are deleted by Dump and by the destructor when the table owns them.
template <class T>
class HashTable {
  public:
    // As a rule owning, regardless of case, hash() of 12 bits, room for 512 elements at first. bucket_bits
    // counts as 0 below 0, and as 30 above 30. The room grows by 512 whatever it was; 0 is good.
    explicit HashTable(int own = 1, int case_insensitive = 1, int bucket_bits = 12, int initial_slots = 512);
    // Shares the elements, with the cursor at 0. The own flag is copied as it stands: of an owning table and
    // its copy only one may be dumped or destroyed with elements in it.
    HashTable(const HashTable& other);
    HashTable& operator=(const HashTable&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~HashTable();
    // Empties the table. The cursor is left where it is.
    virtual void Dump();
    // The bucket of the element's key, as below. The index goes by the key itself: overriding this moves
    // nothing.
    virtual unsigned hash(T* e) const { return Bucket(Hash_Key(*e)); }
    // Below 0 when the first sorts ahead of the second, 0 when they are equal: by length, the shorter first,
    // then byte by byte, regardless of case as the table or the class has it. Searches ask only whether the
    // answer is 0, and only of elements whose keys have one index hash: an override can tell such keys apart,
    // but can't make others equal.
    virtual int Compare(T* a, T* b) const;
    virtual int Compare(T* e, const char* key, int len) const { return Compare_Key(e, View(key, len)); }

    // The low bucket_bits bits of hash or hashi of the key. Here and below a length of -1 means up to the
    // NUL, and a null key is the empty one.
    unsigned hash(const char* key, int len) const;

    void Insert(T* e);
    // The first element with the key of e, which is e itself when there was none: then it is inserted.
    T* Find_Or_Insert(T* e);
    // The first element with this key. When there is none, make() is called for one with it, which is
    // inserted; make may answer null, and nothing is inserted then. It must leave the table alone.
    template <class Make>
    T* Find_Or_Make(const char* key, int len, Make make);
    // From now on the elements are the caller's to delete.
    void Disown() { own = 0; }
    // The first element with this key, or null.
    T* Find(const char* key, int len) const;
    T* Find(T* e) const;
    // Takes out the first element with this key and hands it over; null when there is none.
    T* Remove(const char* key, int len);

    // The element in slot i; null for an empty slot and for i outside.
    T* Index(int i) const { return i >= 0 && i < entries ? slots[i] : nullptr; }
    // One past the last slot in use, emptied slots included: not the number of elements.
    int Entries() const { return entries; }

    // The cursor stands on a slot, ahead of the first, or behind the last. A walk that ended behind the last
    // meets what is inserted afterwards.
    T* First() { return Walk_Forward(0); }
    T* Last() { return Walk_Backward(entries - 1); }
    T* Current() const { return Index(cursor); }
    T* Next() { return Walk_Forward(behind_last ? cursor : cursor + 1); }
    T* Previous() { return Walk_Backward(std::min(cursor, entries) - 1); }

  protected:
    // A place of the index. `link` is 0 when it is free, else twice one more than a slot. The lowest bit of
    // `link` tells that the slot is the last of a ring of equals, chained through `next` in the order of
    // insertion and from the last to the first; without it the slot's element has no equals.
    struct Place {
        std::uint32_t hash;
        std::uint32_t link;

        int slot() const { return static_cast<int>(link >> 1) - 1; }
        bool has_equals() const { return link & 1; }
    };

    // The order of the fields is part of the binary interface.
    int own;
    int case_insensitive;
    Place* buckets = nullptr; // the index, null until something is inserted
    int bucket_bits;          // of hash()
    int bucket_count;         // 1 << bucket_bits
    int buckets_used = 0;     // up by each insertion into a free place, down by each removal; decides nothing
    int* next = nullptr;      // meaningful for elements with equals only
    T** slots = nullptr;
    int capacity; // of next and slots, by the rule of 512
    int entries = 0;
    int cursor = 0;
    bool behind_last = false; // the cursor waits behind the last slot for what comes
    int room = 0;             // what is allocated for next and slots
    std::size_t places = 0;   // size of the index, a power of two
    std::size_t places_used = 0;

  private:
    static constexpr int slot_growth = 512;
    static constexpr int least_room = 32;
    static constexpr std::size_t least_places = 64;

    unsigned Bucket(std::string_view key) const;
    std::uint32_t Index_Hash(std::string_view key) const;
    std::uint32_t Index_Hash(T* e) const { return Index_Hash(Hash_Key(*e)); }
    int Compare_Key(T* e, std::string_view key) const;

    template <class Equal>
    Place* Look_Up(std::uint32_t hash, Equal equal) const;
    Place* Look_Up(std::uint32_t hash, T* e) const;
    void Append(T* e, std::uint32_t hash, Place& place);
    int First_Slot(const Place& place) const;
    T* Find_Element(const Place* place) const;
    void Make_Room();
    void Grow_Index();
    void Append_Equal(Place& place, int slot);
    void Remove_First(Place& place);
    void Free_Place(Place& place);
    void Clear_Index();
    void Delete_Elements();
    T* Walk_Forward(int from);
    T* Walk_Backward(int from);
};

template <class T>
HashTable<T>::HashTable(int own, int case_insensitive, int bucket_bits, int initial_slots)
    : own(own), case_insensitive(case_insensitive), bucket_bits(std::clamp(bucket_bits, 0, 30)),
      bucket_count(1 << this->bucket_bits), capacity(std::max(initial_slots, 0)) {
}

template <class T>
HashTable<T>::HashTable(const HashTable& other)
    : HashTable(0, other.case_insensitive, other.bucket_bits, other.capacity) {
    if (other.entries) {
        slots = Resized_Array(slots, static_cast<std::size_t>(other.room));
        next = Resized_Array(next, static_cast<std::size_t>(other.room));
        buckets = Resized_Array(buckets, other.places);
        std::copy_n(other.slots, other.entries, slots);
        // Parts of it were never set.
        std::memcpy(next, other.next, static_cast<unsigned>(other.entries) * sizeof *next);
        std::copy_n(other.buckets, other.places, buckets);
        room = other.room;
        places = other.places;
        places_used = other.places_used;
    }
    entries = other.entries;
    buckets_used = other.buckets_used;
    own = other.own;
}

template <class T>
HashTable<T>::~HashTable() {
    Delete_Elements();
    std::free(buckets);
    std::free(next);
    std::free(slots);
}

template <class T>
void HashTable<T>::Dump() {
    Delete_Elements();
    Clear_Index();
    entries = 0;
}

template <class T>
int HashTable<T>::Compare(T* a, T* b) const {
    return Compare_Key(a, Hash_Key(*b));
}

template <class T>
unsigned HashTable<T>::hash(const char* key, int len) const {
    return Bucket(View(key, len));
}

template <class T>
void HashTable<T>::Insert(T* e) {
    Make_Room();
    const std::uint32_t hash = Index_Hash(e);
    Append(e, hash, *Look_Up(hash, e));
}

template <class T>
T* HashTable<T>::Find_Or_Insert(T* e) {
    Make_Room();
    const std::uint32_t hash = Index_Hash(e);
    Place* place = Look_Up(hash, e);
    if (T* found = Find_Element(place))
        return found;
    Append(e, hash, *place);
    return e;
}

template <class T>
template <class Make>
T* HashTable<T>::Find_Or_Make(const char* key, int len, Make make) {
    Make_Room();
    const std::string_view text = View(key, len);
    const int length = Length_Of(text);
    const std::uint32_t hash = Index_Hash(text);
    Place* place = Look_Up(hash, [&](T* e) { return Compare(e, text.data(), length); });
    if (T* found = Find_Element(place))
        return found;
    T* made = make();
    if (made)
        Append(made, hash, *place);
    return made;
}

// Behind the equals at the place that was looked up for it, if there are any.
template <class T>
void HashTable<T>::Append(T* e, std::uint32_t hash, Place& place) {
    const int slot = entries;
    slots[slot] = e;
    if (place.link)
        Append_Equal(place, slot);
    else {
        place = {hash, static_cast<std::uint32_t>(slot + 1) << 1};
        ++places_used;
        ++buckets_used;
    }
    ++entries;
}

template <class T>
T* HashTable<T>::Find(const char* key, int len) const {
    if (!places_used)
        return nullptr;
    const std::string_view text = View(key, len);
    const int length = Length_Of(text);
    return Find_Element(Look_Up(Index_Hash(text), [&](T* e) { return Compare(e, text.data(), length); }));
}

template <class T>
T* HashTable<T>::Find(T* e) const {
    if (!places_used)
        return nullptr;
    return Find_Element(Look_Up(Index_Hash(e), e));
}

template <class T>
T* HashTable<T>::Remove(const char* key, int len) {
    if (!places_used)
        return nullptr;
    const std::string_view text = View(key, len);
    const int length = Length_Of(text);
    Place* place = Look_Up(Index_Hash(text), [&](T* e) { return Compare(e, text.data(), length); });
    if (!place->link)
        return nullptr;
    const int slot = First_Slot(*place);
    T* e = slots[slot];
    Remove_First(*place);
    slots[slot] = nullptr;
    --buckets_used;
    while (entries && !slots[entries - 1])
        --entries;
    if (behind_last)
        cursor = std::min(cursor, entries);
    return e;
}

template <class T>
unsigned HashTable<T>::Bucket(std::string_view key) const {
    const std::uint32_t len = static_cast<std::uint32_t>(key.size());
    const std::uint32_t full = case_insensitive ? ::hashi(key.data(), len, 0) : ::hash(key.data(), len, 0);
    return full & (bucket_count - 1);
}

template <class T>
std::uint32_t HashTable<T>::Index_Hash(std::string_view key) const {
    if (case_insensitive)
        return Hash_For_Index(key, Joining_Cases());
    // Of keys that differ in case alone those of one bucket have one hash, and those of two buckets two.
    return Hash_Key_Ignores_Case<T> ? Hash_For_Index(key, Joining_Cases()) ^ Bucket(key)
                                    : Hash_For_Index(key, string_hash_detail::As_Written());
}

// Shorter keys sort first.
template <class T>
int HashTable<T>::Compare_Key(T* e, std::string_view key) const {
    const std::string_view own_key = Hash_Key(*e);
    if (own_key.size() != key.size())
        return own_key.size() < key.size() ? -1 : 1;
    if (key.empty())
        return 0;
    const int exact = std::memcmp(own_key.data(), key.data(), key.size());
    if (exact == 0 || !(case_insensitive || Hash_Key_Ignores_Case<T>))
        return exact;
    return memcmpi(own_key.data(), key.data(), key.size());
}

// The place of the first element for which `equal` answers 0, or the free place where it would stand. There
// must be an index, which always has a free place.
template <class T>
template <class Equal>
typename HashTable<T>::Place* HashTable<T>::Look_Up(std::uint32_t hash, Equal equal) const {
    for (std::size_t i = hash & (places - 1);; i = (i + 1) & (places - 1)) {
        Place& place = buckets[i];
        if (!place.link || (place.hash == hash && equal(slots[place.slot()]) == 0))
            return &place;
    }
}

template <class T>
typename HashTable<T>::Place* HashTable<T>::Look_Up(std::uint32_t hash, T* e) const {
    return Look_Up(hash, [&](T* other) { return Compare(e, other); });
}

template <class T>
int HashTable<T>::First_Slot(const Place& place) const {
    return place.has_equals() ? next[place.slot()] : place.slot();
}

template <class T>
T* HashTable<T>::Find_Element(const Place* place) const {
    return place->link ? slots[First_Slot(*place)] : nullptr;
}

// Room for one more slot and one more place.
template <class T>
void HashTable<T>::Make_Room() {
    if (entries == capacity) {
        if (capacity > INT_MAX - slot_growth)
            throw std::bad_alloc();
        capacity += slot_growth;
    }
    if (entries == room) {
        const int grown = room > INT_MAX / 2 ? INT_MAX : std::max(2 * room, least_room);
        slots = Resized_Array(slots, static_cast<std::size_t>(grown));
        next = Resized_Array(next, static_cast<std::size_t>(grown));
        room = grown;
    }
    if ((places_used + 1) * 4 > places * 3)
        Grow_Index();
}

template <class T>
void HashTable<T>::Grow_Index() {
    const std::size_t grown_places = std::max(2 * places, least_places);
    Place* grown = Zeroed_Array<Place>(grown_places);
    for (std::size_t old = 0; old < places; ++old) {
        if (!buckets[old].link)
            continue;
        std::size_t i = buckets[old].hash & (grown_places - 1);
        while (grown[i].link)
            i = (i + 1) & (grown_places - 1);
        grown[i] = buckets[old];
    }
    std::free(buckets);
    buckets = grown;
    places = grown_places;
}

template <class T>
void HashTable<T>::Append_Equal(Place& place, int slot) {
    const int last = place.slot();
    next[slot] = First_Slot(place);
    next[last] = slot;
    place.link = static_cast<std::uint32_t>(slot + 1) << 1 | 1;
}

template <class T>
void HashTable<T>::Remove_First(Place& place) {
    const int first = First_Slot(place);
    if (first == place.slot())
        Free_Place(place);
    else
        next[place.slot()] = next[first];
}

// Closes the gap: what stands behind moves up, unless that led it ahead of the place that its hash names.
template <class T>
void HashTable<T>::Free_Place(Place& place) {
    const std::size_t mask = places - 1;
    std::size_t gap = &place - buckets;
    for (std::size_t i = (gap + 1) & mask; buckets[i].link; i = (i + 1) & mask) {
        const std::size_t home = buckets[i].hash & mask;
        if (((i - home) & mask) < ((i - gap) & mask))
            continue;
        buckets[gap] = buckets[i];
        gap = i;
    }
    buckets[gap] = {};
    --places_used;
}

// An index much larger than what was in it is given up, so that clearing it again and again costs no more
// than its use.
template <class T>
void HashTable<T>::Clear_Index() {
    buckets_used = 0;
    if (!places_used)
        return;
    if (places > least_places + 4 * places_used) {
        std::free(buckets);
        buckets = nullptr;
        places = 0;
    } else
        std::memset(buckets, 0, places * sizeof *buckets);
    places_used = 0;
}

template <class T>
void HashTable<T>::Delete_Elements() {
    if (!own)
        return;
    for (int i = 0; i < entries; ++i)
        delete slots[i];
}

template <class T>
T* HashTable<T>::Walk_Forward(int from) {
    for (int i = from; i < entries; ++i) {
        if (slots[i]) {
            cursor = i;
            behind_last = false;
            return slots[i];
        }
    }
    cursor = entries;
    behind_last = true;
    return nullptr;
}

template <class T>
T* HashTable<T>::Walk_Backward(int from) {
    behind_last = false;
    for (cursor = from; cursor >= 0; --cursor) {
        if (slots[cursor])
            return slots[cursor];
    }
    cursor = -1;
    return nullptr;
}

#endif
