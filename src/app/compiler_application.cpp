#include "app/compiler_application.h"

#include "backend/compiler_output.h"
#include "backend/coverage_compiler_parser.h"
#include "backend/doxygen_compiler_parser.h"
#include "backend/engine_version.h"
#include "files/file_manager.h"
#include "frontend/tokenizer.h"

#include <cstring>
#include <sys/stat.h>

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

int CompilerApplication::Go() {
    first_input = CommandLine_Parse();
    if (first_input < 0)
        return 1;
    if (stop_after_options)
        return 0;
    if (!ValidateOptions() || !OpenOutput())
        return 1;
    bool is_compiled = Compile() && Finish_Output();
    Close_Output();
    if (!is_compiled)
        Remove_Output();
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
    output_file = filemanager()->Open(output_path, FILE_MODE_WRITE | FILE_MODE_CREATE | FILE_MODE_TRUNCATE);
    if (!output_file)
        return Path_Error("create", output_path, filemanager()->error());
    assembly = new FileOutput(output_file, output_buffer_size);
    return true;
}

bool CompilerApplication::Is_Defined(const char* name, int length) {
    return defines.Find(name, length) != nullptr;
}

// The list of lines is written as its parser goes. Others stay: taking large tables apart takes its time.
bool CompilerApplication::Compile() {
    parser = Make_Parser();
    bool is_compiled = Compile_Files();
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
        return std::make_unique<DoxygenCompilerParser>(nullptr, assembly, calls, this);
    if (coverage_output)
        return std::make_unique<CoverageCompilerParser>(nullptr, assembly, calls, this,
                                                        function_output_default, function_access_default,
                                                        START_FILE, nullptr, nullptr, nullptr);
    return std::make_unique<FileCompilerParser>(nullptr, assembly, calls, this, function_output_default,
                                                function_access_default, START_FILE, nullptr, nullptr,
                                                nullptr);
}

bool CompilerApplication::Finish_Output() {
    assembly->Flush();
    return !assembly->failed() || Path_Error("write", output_path, assembly->error());
}

void CompilerApplication::Close_Output() {
    delete assembly;
    assembly = nullptr;
    delete output_file;
    output_file = nullptr;
}

void CompilerApplication::End_Run() {
    parser.reset();
    Close_Output();
}

FileCompilerParser* CompilerApplication::Release_Parser() {
    return parser.release();
}

// Only a regular file is the run's own: a device or a pipe that -o names stays.
void CompilerApplication::Remove_Output() {
    int mode;
    if (filemanager()->Mode(output_path, &mode) && S_ISREG(mode))
        filemanager()->Delete(output_path);
}

bool CompilerApplication::Path_Error(const char* verb, const char* path, const String& reason) {
    return ArgumentError(String("Unable to ") + verb + " '" + path + "': " + reason.text());
}
