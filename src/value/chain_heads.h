#ifndef VALUE_CHAIN_HEADS_H
#define VALUE_CHAIN_HEADS_H

#include <cstddef>
#include <map>
#include <vector>

// Where the chains of a hash table begin: by bucket, the number of the first entry. A table that comes from a
// file may name many millions of buckets and use few, so the array is made only where it is small against the
// entries.
class ChainHeads {
  public:
    // For 1 << bits buckets, with bits counted modulo 32, and so many entries to come.
    ChainHeads(int bits, int entries)
        : buckets(std::size_t{1} << (bits & 31)),
          all(buckets <= most_buckets_per_entry * static_cast<std::size_t>(entries) ? buckets : 0, -1) {}

    // -1 for an empty chain.
    [[nodiscard]] int Head(std::size_t bucket) const {
        if (!all.empty())
            return all[bucket];
        const auto found = few.find(bucket);
        return found != few.end() ? found->second : -1;
    }

    void Set_Head(std::size_t bucket, int head) {
        if (all.empty() && few.size() >= buckets / most_buckets_per_use)
            Make_Array();
        if (!all.empty())
            all[bucket] = head;
        else if (head >= 0)
            few[bucket] = head;
        else
            few.erase(bucket);
    }

    // Calls visit(bucket, head) for each bucket in use, ascending.
    template <class Visit>
    void For_Each(Visit visit) const {
        for (std::size_t bucket = 0; bucket < all.size(); ++bucket)
            if (all[bucket] >= 0)
                visit(static_cast<int>(bucket), all[bucket]);
        for (const auto& [bucket, head] : few)
            visit(static_cast<int>(bucket), head);
    }

  private:
    static constexpr std::size_t most_buckets_per_entry = 16;
    static constexpr std::size_t most_buckets_per_use = 8;

    void Make_Array() {
        all.assign(buckets, -1);
        for (const auto& [bucket, head] : few)
            all[bucket] = head;
        few.clear();
    }

    std::size_t buckets;
    std::vector<int> all;           // -1 for an empty chain; without elements as long as few are in use
    std::map<std::size_t, int> few; // the buckets in use until then
};

#endif
