// Strings, tables and number conversions next to what the standard library offers for the same.
#include "app/services/tarn_application.h"
#include "core/hash_table.h"
#include "core/string.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <charconv>
#include <map>
#include <mpdecimal.h>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

constexpr std::string_view piece = "pushc s_12\n";

void Append_Piece(String& text) {
    text.cat(piece.data(), static_cast<int>(piece.size()));
}

void Append_Piece(std::string& text) {
    text.append(piece);
}

void Append_Character(String& text) {
    text.cat('x');
}

void Append_Character(std::string& text) {
    text.push_back('x');
}

template <class Text, void append(Text&)>
void Cat(benchmark::State& state) {
    for (auto _ : state) {
        Text text;
        for (std::int64_t i = 0; i < state.range(0); ++i)
            append(text);
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK_TEMPLATE(Cat, String, Append_Piece)->Arg(2)->Arg(100)->Arg(100000);
BENCHMARK_TEMPLATE(Cat, std::string, Append_Piece)->Arg(2)->Arg(100)->Arg(100000);
BENCHMARK_TEMPLATE(Cat, String, Append_Character)->Arg(16)->Arg(100000);
BENCHMARK_TEMPLATE(Cat, std::string, Append_Character)->Arg(16)->Arg(100000);

// Names as a page has them, in an order that has nothing to do with where they stand in memory.
std::vector<std::string> Names(std::int64_t count) {
    std::vector<std::string> names;
    for (std::int64_t i = 0; i < count; ++i)
        names.push_back("l.basket_item_" + std::to_string(i));
    std::shuffle(names.begin(), names.end(), std::mt19937(1));
    return names;
}

struct Entry {
    std::string name;
};

std::string_view Hash_Key(const Entry& entry) {
    return entry.name;
}

using Standard_Table = std::unordered_map<std::string_view, Entry*>;

template <int ignore_case>
struct Own_Table {
    HashTable<Entry> table{0, ignore_case, 12, 512};

    void Insert(Entry* entry) { table.Insert(entry); }
    Entry* Find(const std::string& name) const {
        return table.Find(name.data(), static_cast<int>(name.size()));
    }
};

struct Map_Table {
    Standard_Table table;

    void Insert(Entry* entry) { table.emplace(entry->name, entry); }
    Entry* Find(const std::string& name) const {
        const auto at = table.find(name);
        return at == table.end() ? nullptr : at->second;
    }
};

// Keeps equals in the order of their insertion, as the own table does.
struct Multimap_Table {
    std::multimap<std::string_view, Entry*> table;

    void Insert(Entry* entry) { table.emplace(entry->name, entry); }
};

template <class Table>
void Insert_All(Table& table, std::vector<Entry>& entries) {
    for (Entry& entry : entries)
        table.Insert(&entry);
}

std::vector<Entry> Entries(const std::vector<std::string>& names) {
    std::vector<Entry> entries;
    for (const std::string& name : names)
        entries.push_back({name});
    return entries;
}

template <class Table>
void Table_Insert(benchmark::State& state) {
    std::vector<Entry> entries = Entries(Names(state.range(0)));
    for (auto _ : state) {
        Table table;
        Insert_All(table, entries);
        benchmark::DoNotOptimize(table);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

enum Searched { Present, Absent };

template <class Table, Searched searched>
void Table_Find(benchmark::State& state) {
    std::vector<std::string> names = Names(state.range(0));
    std::vector<Entry> entries = Entries(names);
    Table table;
    Insert_All(table, entries);
    std::shuffle(names.begin(), names.end(), std::mt19937(2));
    for (std::string& name : names)
        name += searched == Absent ? "_" : "";
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(table.Find(names[i]));
        i = i + 1 < names.size() ? i + 1 : 0;
    }
    state.SetItemsProcessed(state.iterations());
}

// Equals behind equals, as the table of all calls has them.
template <class Table>
void Insert_Equals(benchmark::State& state) {
    std::vector<Entry> entries(static_cast<std::size_t>(state.range(0)), Entry{"l.same_name"});
    for (auto _ : state) {
        Table table;
        Insert_All(table, entries);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK_TEMPLATE(Table_Insert, Own_Table<1>)->RangeMultiplier(10)->Range(1000, 1000000);
BENCHMARK_TEMPLATE(Table_Insert, Own_Table<0>)->RangeMultiplier(10)->Range(1000, 1000000);
BENCHMARK_TEMPLATE(Table_Insert, Map_Table)->RangeMultiplier(10)->Range(1000, 1000000);
BENCHMARK_TEMPLATE(Table_Find, Own_Table<1>, Present)->RangeMultiplier(10)->Range(1000, 1000000);
BENCHMARK_TEMPLATE(Table_Find, Own_Table<0>, Present)->RangeMultiplier(10)->Range(1000, 1000000);
BENCHMARK_TEMPLATE(Table_Find, Map_Table, Present)->RangeMultiplier(10)->Range(1000, 1000000);
BENCHMARK_TEMPLATE(Table_Find, Own_Table<1>, Absent)->Arg(1000)->Arg(1000000);
BENCHMARK_TEMPLATE(Table_Find, Map_Table, Absent)->Arg(1000)->Arg(1000000);
BENCHMARK_TEMPLATE(Insert_Equals, Own_Table<1>)->Arg(1000)->Arg(30000)->Arg(1000000);
BENCHMARK_TEMPLATE(Insert_Equals, Multimap_Table)->Arg(1000)->Arg(30000)->Arg(1000000);

std::vector<double> Numbers() {
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> prices(-10000, 10000);
    std::vector<double> numbers;
    for (int i = 0; i < 1000; ++i)
        numbers.push_back(prices(random));
    return numbers;
}

void Double_To_Text(benchmark::State& state) {
    const std::vector<double> numbers = Numbers();
    std::size_t i = 0;
    for (auto _ : state) {
        String text;
        int len, size;
        char* digits = TarnApplication::dtos(numbers[i++ % numbers.size()], &len, &size);
        text.assign_nocopy(digits, len, size);
        benchmark::DoNotOptimize(text);
    }
}

void Double_To_Text_By_To_Chars(benchmark::State& state) {
    const std::vector<double> numbers = Numbers();
    std::size_t i = 0;
    for (auto _ : state) {
        char digits[512];
        const double number = numbers[i++ % numbers.size()];
        char* end = std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed).ptr;
        std::string text(&digits[0], end);
        benchmark::DoNotOptimize(text);
    }
}

void Text_To_Decimal(benchmark::State& state) {
    mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64);
    mpd_t* target = mpd_qnew();
    for (auto _ : state)
        benchmark::DoNotOptimize(TarnApplication::stompd(target, "12345.67", 8, 9, nullptr));
    mpd_del(target);
}

void Text_To_Double_By_From_Chars(benchmark::State& state) {
    constexpr std::string_view text = "12345.67";
    for (auto _ : state) {
        double value;
        benchmark::DoNotOptimize(std::from_chars(text.data(), text.data() + text.size(), value));
        benchmark::DoNotOptimize(value);
    }
}

BENCHMARK(Double_To_Text);
BENCHMARK(Double_To_Text_By_To_Chars);
BENCHMARK(Text_To_Decimal);
BENCHMARK(Text_To_Double_By_From_Chars);

} // namespace
