// The run of the compiler: the output is opened, the sources are compiled one after the other by one parser,
// and what is left decides the exit status.

#include "app/driver/compiler_application.h"

#include "app/driver/run_guard.h"
#include "backend/instructions/engine_version.h"
#include "backend/outputs/compiler_output.h"
#include "backend/writers/coverage_compiler_parser.h"
#include "backend/writers/doxygen_compiler_parser.h"
#include "files/file_manager.h"
#include "files/file_status.h"
#include "frontend/scanner/tokenizer.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

namespace {

constexpr int output_buffer_size = 64 * 1024; // what goes to the system in one step

// The upper half of the warnings is off until it is asked for.
constexpr int FIRST_WARNING_OFF = 50;

} // namespace

CompilerApplication::CompilerApplication(int argc, char** argv)
    : ConsoleApplication(argc, argv), first_input(argc),
      defines(1, 1, table_bucket_bits, table_initial_slots), max_engine_version(newest_engine_version),
      engine_version(max_engine_version) {
    memset(warning_flags, 0, FIRST_WARNING_OFF);
    memset(warning_flags + FIRST_WARNING_OFF, WARNING_SUPPRESSED, sizeof warning_flags - FIRST_WARNING_OFF);
}

CompilerApplication::~CompilerApplication() {
    End_Run();
}

// Whatever the tables of a run without memory are, they stay: to take them apart may take memory.
int CompilerApplication::Go() {
    try {
        return Run();
    } catch (const std::bad_alloc&) {
        Discard_Output();
        ArgumentError(strerror(ENOMEM));
        return 1;
    }
}

int CompilerApplication::Run() {
    first_input = CommandLine_Parse();
    if (first_input < 0)
        return 1;
    if (stop_after_options)
        return Finish_Console() ? 0 : 1;
    if (!ValidateOptions() || !OpenOutput())
        return 1;
    const bool is_compiled = Compile() && Finish_Output();
    if (!is_compiled)
        Discard_Output();
    Close_Output();
    return is_compiled ? 0 : 1;
}

bool CompilerApplication::ValidateOptions() {
    if (first_input >= argc)
        return ArgumentError("No input file specified");
    if (doxygen_output && coverage_output)
        return ArgumentError("Only one of -d or -L may be specified");
    return true;
}

bool CompilerApplication::OpenOutput() {
    Close_Output();
    for (int input = first_input; input < argc; ++input) {
        if (Same_File(output_path, argv[input]))
            return Path_Error("write", output_path, "it is one of the sources");
    }
    Run_Guard::Expect_Output(output_path);
    output_file.reset(
        filemanager()->Open(output_path, FILE_MODE_WRITE | FILE_MODE_CREATE | FILE_MODE_TRUNCATE));
    if (!output_file) {
        Run_Guard::Forget_Output();
        return Path_Error("create", output_path, filemanager()->error());
    }
    assembly = std::make_unique<FileOutput>(output_file.get(), output_buffer_size);
    return true;
}

bool CompilerApplication::Is_Defined(const char* name, int length) {
    return defines.Find(name, length) != nullptr;
}

// The list of lines is written as its parser goes. Others stay: taking large tables apart takes its time.
bool CompilerApplication::Compile() {
    parser = Make_Parser();
    const bool is_compiled = Compile_Files();
    if (coverage_output)
        parser.reset();
    return is_compiled;
}

// One parser serves all files, so that functions, labels and strings stay known from file to file.
bool CompilerApplication::Compile_Files() {
    for (int input = first_input; input < argc; ++input) {
        auto* tokenizer = new Tokenizer(filemanager());
        delete parser->Set_Tokenizer(tokenizer);
        if (!tokenizer->Open(String(argv[input], -1)))
            return Path_Error("open", argv[input], tokenizer->lasterror);
        if (input == argc - 1)
            parser->Last_File();
        if (parser->Start() != 0)
            return false;
    }
    return true;
}

std::unique_ptr<FileCompilerParser> CompilerApplication::Make_Parser() {
    ExternalCallManager* calls = externalcallmanager();
    if (doxygen_output)
        return std::make_unique<DoxygenCompilerParser>(nullptr, assembly.get(), calls, this);
    if (coverage_output)
        return std::make_unique<CoverageCompilerParser>(nullptr, assembly.get(), calls, this,
                                                        function_output_default, function_access_default,
                                                        START_FILE, nullptr, nullptr, nullptr);
    return std::make_unique<FileCompilerParser>(nullptr, assembly.get(), calls, this, function_output_default,
                                                function_access_default, START_FILE, nullptr, nullptr,
                                                nullptr);
}

bool CompilerApplication::Finish_Console() {
    output()->Flush();
    return !ferror(stdout) || ArgumentError("Unable to write to standard output");
}

// File systems that write late tell at the close what they could not keep.
bool CompilerApplication::Finish_Output() {
    assembly->Flush();
    if (assembly->failed())
        return Path_Error("write", output_path, assembly->error());
    return output_file->Deactivate() || Path_Error("write", output_path, output_file->error());
}

void CompilerApplication::Close_Output() {
    assembly.reset();
    output_file.reset();
    Run_Guard::Forget_Output();
}

void CompilerApplication::End_Run() {
    parser.reset();
    Close_Output();
}

FileCompilerParser* CompilerApplication::Release_Parser() {
    return parser.release();
}

void CompilerApplication::Source_Error(const String& path, const char* reason) {
    Path_Error("read", path.text(), reason);
}

bool CompilerApplication::Is_Output(const File_Stamp& file) const {
    struct stat output;
    return output_file && output_file->Stat(&output) && file.Is(output);
}

// A device or a pipe that -o names is not the run's own and stays. A file is emptied first: under other
// names, and in a folder that can't be changed, it would go on to hold half of the assembly.
void CompilerApplication::Discard_Output() {
    if (assembly)
        assembly->Abandon();
    if (Run_Guard::Cut_Output() && !filemanager()->Delete(output_path))
        Path_Error("remove", output_path, filemanager()->error());
}

bool CompilerApplication::Path_Error(const char* verb, const char* path, const String& reason) {
    return ArgumentError(String("Unable to ") + verb + " '" + path + "': " + reason.text());
}
