// Variables: cached conversions, elements of arrays, tables by name and by slot, and the compiler's tables of
// names.
#include "app/services/tarn_application.h"
#include "core/hash_table.h"
#include "value/aggregate.h"
#include "value/user_variable_hash.h"
#include "value/variable.h"

#include <benchmark/benchmark.h>
#include <mpdecimal.h>
#include <random>
#include <string>
#include <vector>

namespace {

const bool decimal_context_is_set = mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64) == 0;

VariableHold Array(int count) {
    VariableHold array(new Variable);
    for (int i = 1; i <= count; ++i)
        array->Element(i, 1)->SetValue_Integer(i);
    return array;
}

std::vector<int> Random_Numbers(int count) {
    std::mt19937 random{1};
    std::vector<int> numbers(static_cast<std::size_t>(count));
    for (int& number : numbers)
        number = std::uniform_int_distribution<int>(1, count)(random);
    return numbers;
}

std::vector<std::string> Names(int count) {
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i)
        names.push_back("Variable_" + std::to_string(i));
    return names;
}

void Per_Item(benchmark::State& state) {
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

void Read_Converted(benchmark::State& state) {
    Variable variable("n", 1, "12.75", 5);
    for (auto _ : state) {
        benchmark::DoNotOptimize(variable.value_mpd());
        benchmark::DoNotOptimize(variable.value_integer());
        benchmark::DoNotOptimize(variable.value().text());
    }
}
BENCHMARK(Read_Converted);

void Convert(benchmark::State& state) {
    Variable variable;
    for (auto _ : state) {
        variable.SetValue_Integer(12345);
        benchmark::DoNotOptimize(variable.value().text());
    }
}
BENCHMARK(Convert);

void Fill_Array(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(Array(static_cast<int>(state.range(0))));
    Per_Item(state);
}
BENCHMARK(Fill_Array)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);

void Copy_Array(benchmark::State& state) {
    const VariableHold array = Array(static_cast<int>(state.range(0)));
    for (auto _ : state)
        Variable copy(*array);
    Per_Item(state);
}
BENCHMARK(Copy_Array)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);

void Serialize_Array(benchmark::State& state) {
    const VariableHold array = Array(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(array->value().length());
    Per_Item(state);
}
BENCHMARK(Serialize_Array)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);

void Elements_In_Order(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const VariableHold array = Array(count);
    for (auto _ : state)
        for (int i = 1; i <= count; ++i)
            benchmark::DoNotOptimize(array->Element(i, 0));
    Per_Item(state);
}
BENCHMARK(Elements_In_Order)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);

void Elements_At_Random(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const VariableHold array = Array(count);
    const std::vector<int> numbers = Random_Numbers(count);
    for (auto _ : state)
        for (int number : numbers)
            benchmark::DoNotOptimize(array->Element(number, 0));
    Per_Item(state);
}
BENCHMARK(Elements_At_Random)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);

void Compiler_Table(benchmark::State& state) {
    const std::vector<std::string> names = Names(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        HashTable<Variable> table(1, 1, 12, 512);
        for (const std::string& name : names) {
            const int length = static_cast<int>(name.size());
            if (!table.Find(name.data(), length))
                table.Insert(new Variable(name.data(), length, table.Entries()));
        }
    }
    Per_Item(state);
}
BENCHMARK(Compiler_Table)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);

void Find_By_Name(benchmark::State& state) {
    const std::vector<std::string> names = Names(static_cast<int>(state.range(0)));
    UserVariableHash table;
    for (const std::string& name : names)
        table.SetVariable(name.data(), -1, "1", 1);
    for (auto _ : state)
        for (const std::string& name : names) {
            Variable* found = nullptr;
            table.Find(&found, name.data(), static_cast<int>(name.size()), 0);
            benchmark::DoNotOptimize(found);
        }
    Per_Item(state);
}
BENCHMARK(Find_By_Name)->RangeMultiplier(10)->Range(100, 10000);

void Index_By_Slot(benchmark::State& state) {
    const std::vector<std::string> names = Names(static_cast<int>(state.range(0)));
    UserVariableHash table;
    for (const std::string& name : names)
        table.SetVariable(name.data(), -1, "1", 1);
    for (auto _ : state)
        for (int slot = 0; slot < table.Entries(); ++slot)
            benchmark::DoNotOptimize(table.Index(slot, 0));
    Per_Item(state);
}
BENCHMARK(Index_By_Slot)->RangeMultiplier(10)->Range(100, 10000);

} // namespace
