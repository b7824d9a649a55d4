// Speed of the compiler inside one process, and of the parts that write its output. bench/time_process.py
// times whole processes.

#include "app/driver/unix_compiler_application.h"
#include "backend/outputs/assembly_item.h"
#include "backend/outputs/compiler_output.h"
#include "backend/outputs/quoted_text.h"
#include "backend/queue/opcode_queue.h"
#include "backend/writers/file_compiler_parser.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <string>

namespace {

// A whole compilation of a generated page, from the command line to the closed output.
void Compile_Page(benchmark::State& state, const char* mix) {
    std::string program = "tnc";
    std::string option = "-o";
    std::string output = "/dev/null";
    std::string page = std::string(PAGES "/") + mix + "-" PAGE_SIZE ".tn";
    char* arguments[] = {program.data(), option.data(), output.data(), page.data(), nullptr};
    for (auto _ : state) {
        UNIXCompilerApplication application(4, arguments);
        if (application.Go() != 0) {
            state.SkipWithError("the page doesn't compile");
            return;
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(std::filesystem::file_size(page)));
}
BENCHMARK_CAPTURE(Compile_Page, text, "text")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Compile_Page, typical, "typical")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Compile_Page, code, "code")->Unit(benchmark::kMillisecond);

// Text runs of a given length with a quote in each.
void Quote_Text(benchmark::State& state) {
    const int length = static_cast<int>(state.range(0));
    std::string text(length, 'x');
    text[length / 2] = '"';
    StringOutput output;
    for (auto _ : state) {
        Write_Quoted_Text(&output, text.data(), length, EXPRESSION_STATE_TEXT);
        output.Clear();
    }
    state.SetBytesProcessed(state.iterations() * length);
}
BENCHMARK(Quote_Text)->Arg(10)->Arg(100)->Arg(1000)->Arg(100000);

// An expression of eight instructions, held back and then written to a fragment.
void Queue_Expression(benchmark::State& state) {
    StringOutput output;
    FileCompilerParser parser(new Tokenizer("", 0, 0), &output, nullptr, nullptr, -1, -1, START_FILE, nullptr,
                              nullptr, nullptr);
    OpcodeQueueQueue queue(&parser);
    for (auto _ : state) {
        for (int i = 0; i < 4; ++i) {
            queue.Queue_Variable_Instruction(0, i, SCOPE_GLOBAL, 0, 0);
            queue.Queue_Opcode(OPCODE_ADD, 0, 0);
        }
        queue.Flush();
        output.Clear();
    }
    state.SetItemsProcessed(state.iterations() * 8);
}
BENCHMARK(Queue_Expression);

} // namespace
