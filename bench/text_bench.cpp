// Searches next to what the C library and the standard library offer for the same, and the digests and
// encoders.
#include "core/base64.h"
#include "core/crc32.h"
#include "core/md5.h"
#include "core/text_search.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace {

constexpr std::string_view pattern = "</TnCOMMENT>";

// Page text of about the size wanted, with the pattern at its end only.
std::string Page(std::size_t size) {
    constexpr std::string_view row =
        "<tr><td class=\"name\">Table row</td><td>42.50</td></tr>\n<!-- TnCO -->\n";
    std::string page;
    while (page.size() + row.size() + pattern.size() <= size)
        page += row;
    return page.append(pattern);
}

void Report_Bytes(benchmark::State& state) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

using Search = int (*)(const char*, int, const char*, int);

template <Search search>
void Own_Search(benchmark::State& state) {
    const std::string page = Page(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(search(pattern.data(), static_cast<int>(pattern.size()), page.data(),
                                        static_cast<int>(page.size())));
    }
    Report_Bytes(state);
}

void Peer_memmem(benchmark::State& state) {
    const std::string page = Page(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(memmem(page.data(), page.size(), pattern.data(), pattern.size()));
    Report_Bytes(state);
}

void Peer_strcasestr(benchmark::State& state) {
    const std::string page = Page(state.range(0));
    const std::string wanted(pattern);
    for (auto _ : state)
        benchmark::DoNotOptimize(strcasestr(page.c_str(), wanted.c_str()));
    Report_Bytes(state);
}

void Peer_std_boyer_moore_horspool(benchmark::State& state) {
    const std::string page = Page(state.range(0));
    for (auto _ : state) {
        const std::boyer_moore_horspool_searcher searcher(pattern.begin(), pattern.end());
        benchmark::DoNotOptimize(std::search(page.begin(), page.end(), searcher));
    }
    Report_Bytes(state);
}

// With a second argument of 1 the names differ in case.
template <int (*compare)(const void*, const void*, std::size_t)>
void Compare_Names(benchmark::State& state) {
    const std::string a(state.range(0), 'n');
    std::string b = a;
    if (state.range(1) != 0)
        b.back() = 'N';
    for (auto _ : state)
        benchmark::DoNotOptimize(compare(a.data(), b.data(), a.size()));
    Report_Bytes(state);
}

int Peer_strncasecmp(const void* a, const void* b, std::size_t n) {
    return strncasecmp(static_cast<const char*>(a), static_cast<const char*>(b), n);
}

void MD5_Digest(benchmark::State& state) {
    const std::vector<unsigned char> data(state.range(0), 'x');
    unsigned char digest[16];
    for (auto _ : state) {
        MD5Encoder().Encode(data.data(), data.size(), digest);
        benchmark::DoNotOptimize(digest);
    }
    Report_Bytes(state);
}

void CRC32(benchmark::State& state) {
    const std::vector<unsigned char> data(state.range(0), 'x');
    for (auto _ : state)
        benchmark::DoNotOptimize(crc32_data(crc32_init(), data.data(), static_cast<int>(data.size())));
    Report_Bytes(state);
}

template <int (*convert)(const unsigned char*, unsigned char*, int)>
void Base64(benchmark::State& state) {
    const std::vector<unsigned char> data(state.range(0), 'x');
    std::vector<unsigned char> out(data.size() * 2);
    for (auto _ : state)
        benchmark::DoNotOptimize(convert(data.data(), out.data(), static_cast<int>(data.size())));
    Report_Bytes(state);
}

BENCHMARK(Own_Search<bf_search>)->Name("bf_search")->Arg(300)->Arg(65536);
BENCHMARK(Own_Search<bm_search>)->Name("bm_search")->Arg(300)->Arg(65536);
BENCHMARK(Own_Search<rk_search>)->Name("rk_search")->Arg(300)->Arg(65536);
BENCHMARK(Peer_memmem)->Name("peer/memmem")->Arg(300)->Arg(65536);
BENCHMARK(Peer_std_boyer_moore_horspool)->Name("peer/boyer_moore_horspool")->Arg(300)->Arg(65536);
BENCHMARK(Own_Search<bf_searchi>)->Name("bf_searchi")->Arg(300)->Arg(65536);
BENCHMARK(Own_Search<bm_searchi>)->Name("bm_searchi")->Arg(300)->Arg(65536);
BENCHMARK(Peer_strcasestr)->Name("peer/strcasestr")->Arg(300)->Arg(65536);
BENCHMARK(Compare_Names<memcmpi>)->Name("memcmpi")->ArgsProduct({{8, 64}, {0, 1}});
BENCHMARK(Compare_Names<Peer_strncasecmp>)->Name("peer/strncasecmp")->ArgsProduct({{8, 64}, {0, 1}});
BENCHMARK(MD5_Digest)->Name("MD5Encoder")->Arg(32)->Arg(65536);
BENCHMARK(CRC32)->Name("crc32_data")->Arg(65536);
BENCHMARK(Base64<tn_base64_encode>)->Name("tn_base64_encode")->Arg(65536);
BENCHMARK(Base64<tn_base64_decode>)->Name("tn_base64_decode")->Arg(65536);

} // namespace
