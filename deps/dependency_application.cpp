// The compiler of tnc-deps: it notes what a compilation opens, and writes the rule.

#include "deps/dependency_application.h"

#include "app/driver/run_guard.h"
#include "backend/outputs/compiler_output.h"
#include "extension/external_function.h"
#include "extension/external_library.h"
#include "files/file_status.h"

#include <dlfcn.h>
#include <filesystem>
#include <memory>
#include <string_view>

namespace {

constexpr int rule_buffer_size = 4096;

constexpr std::string_view rule_option = "deps";
constexpr std::string_view target_option = "target";
constexpr std::string_view absolute_option = "absolute";
constexpr std::string_view help_option = "help";

constexpr const char* own_usage = R"(
Besides, the files that the output was made of are written as a rule for make:
  --deps <file>    Place the rule in <file>, by default the output with .d behind it
  --target <name>  Call the output <name> in the rule
  --absolute       Write the paths of what it was made of from the root
)";

} // namespace

Dependency_Application::Dependency_Application(int argc, char** argv)
    : UNIXCompilerApplication(argc, argv), file_manager(this, [this](const char* path) { rule.Add(path); }) {
    Run_Guard::Watch_Sources(&file_manager);
}

Dependency_Application::~Dependency_Application() {
    End_Run();
    Run_Guard::Watch_Sources(nullptr);
}

bool Dependency_Application::CommandLine_Requires_Argument(const char* option) {
    return option == rule_option || option == target_option;
}

bool Dependency_Application::CommandLine_Process_Option(char option, const char* value) {
    if (!UNIXCompilerApplication::CommandLine_Process_Option(option, value))
        return false;
    if (option == 'b')
        Record_Library(value);
    return true;
}

bool Dependency_Application::CommandLine_Process_Option_Long(const char* option, const char* value) {
    if (option == rule_option) {
        rule_path = value;
        return true;
    }
    if (option == target_option) {
        target = value;
        return true;
    }
    if (option == absolute_option) {
        std::error_code error;
        folder = std::filesystem::current_path(error).string();
        return !error ||
               ArgumentError(String("Unable to find the current directory: ") + error.message().c_str());
    }
    if (!UNIXCompilerApplication::CommandLine_Process_Option_Long(option, value))
        return false;
    if (option == help_option)
        output()->Write(own_usage, -1);
    return true;
}

// The loader may have searched for the library: it tells where it was.
void Dependency_Application::Record_Library(const char* path) {
    ExternalLibrary* library = librarymanager()->Lookup(path, ExternalLibrary::FUNCTIONS);
    void* const table = library ? library->Get_Function(function_table_symbol) : nullptr;
    Dl_info info;
    if (table && dladdr(table, &info) != 0)
        rule.Add(info.dli_fname);
}

bool Dependency_Application::Finish_Output() {
    return UNIXCompilerApplication::Finish_Output() && Write_Rule();
}

bool Dependency_Application::Write_Rule() {
    const std::string rule_path = this->rule_path ? this->rule_path : std::string(output_path) + ".d";
    for (const std::string& path : rule.Paths()) {
        if (path.find('\n') != std::string::npos)
            return Path_Error("name", path.c_str(), "a rule has no form for a line feed");
        if (Same_File(rule_path.c_str(), path.c_str()))
            return Path_Error("write", rule_path.c_str(), "it is one of the sources");
    }
    std::error_code error; // as of a path that leads nowhere
    if (Same_File(rule_path.c_str(), output_path) && std::filesystem::is_regular_file(output_path, error))
        return Path_Error("write", output_path, "it is the output");
    return Write(rule_path.c_str(), rule.Text(target ? target : output_path, folder));
}

bool Dependency_Application::Write(const char* path, const std::string& text) {
    const int mode = FILE_MODE_WRITE | FILE_MODE_CREATE | FILE_MODE_TRUNCATE;
    const std::unique_ptr<File> file(filemanager()->Open(path, mode));
    if (!file)
        return Path_Error("create", path, filemanager()->error());
    FileOutput rule_output(file.get(), rule_buffer_size);
    rule_output.Write(text.data(), static_cast<int>(text.size()));
    rule_output.Flush();
    if (rule_output.failed())
        return Path_Error("write", path, rule_output.error());
    return file->Deactivate() || Path_Error("write", path, file->error());
}
