// The options of the compiler: one table, in the order of the usage text.

#include "app/driver/compiler_application.h"
#include "backend/instructions/engine_version.h"
#include "core/text_length.h"
#include "core/text_words.h"
#include "extension/external_call.h"
#include "frontend/scanner/parser_types.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

constexpr double oldest_engine_version = file_version_engines[FILE_VERSION_SECOND];

constexpr const char* usage_of_values = R"(
<warning> may be one of:
  - One or more warning ids, separated by commas
  - The keyword "all", which indicates all warnings

<level> may be one or a comma separated list of the following:
)";

constexpr const char* usage_end = R"(  or
    all       All of the above options.
)";

struct Pedantic_Keyword {
    std::string_view word;
    Pedantic_Check check;
    const char* help;
};

constexpr Pedantic_Keyword pedantic_keywords[] = {
    {"scope", PEDANTIC_SCOPE, "Warn or error on unscoped variables."},
    {"lock", PEDANTIC_LOCK, "Warn or error on TnFUNCTIONRETURN inside TnLOCKFILE."},
    {"capture", PEDANTIC_CAPTURE, "Warn or error on TnFUNCTIONRETURN inside TnCAPTURE."},
    {"async", PEDANTIC_ASYNC, "Warn or error on TnFUNCTIONRETURN inside TnASYNC."},
};

// Calls the function with each piece between commas, empty ones included, until it answers false.
template <typename Function>
bool For_Each_Piece(const char* list, Function function) {
    for (;;) {
        const std::size_t length = strcspn(list, ",");
        if (!function(std::string_view(list, length)))
            return false;
        if (!list[length])
            return true;
        list += length + 1;
    }
}

} // namespace

struct CompilerApplication::Option {
    char letter;           // NUL: the option has a long name
    const char* long_name; // null: it has a letter
    const char* argument;  // what the help calls its value; null when it takes none
    const char* help;
    bool (*process)(CompilerApplication& application, const char* value);
};

const CompilerApplication::Option CompilerApplication::options[] = {
    {'\0', "help", nullptr, "Display this information",
     [](CompilerApplication& application, const char*) {
         application.Print_Usage();
         application.stop_after_options = true;
         return true;
     }},
    {'\0', "version", nullptr, "Display version number and exit",
     [](CompilerApplication& application, const char*) {
         application.output()->Write((String(program_version) + "\n").text(), -1);
         application.stop_after_options = true;
         return true;
     }},
    {'b', nullptr, "<file>", "Search .DLL/.so <file> for unresolved function calls",
     [](CompilerApplication& application, const char* value) {
         ExternalCallManager* calls = application.externalcallmanager();
         return calls->RegisterDSO(value) ||
                application.ArgumentError(String("Unable to register .DLL/.so '") + value +
                                          "': " + calls->lasterror);
     }},
    {'w', nullptr, "<warning>", "Suppress warning <warning>",
     [](CompilerApplication& application, const char* value) {
         return application.CommandLine_Warning_Flags(value, WARNING_SUPPRESSED, true);
     }},
    {'W', nullptr, "<warning>", "Enable otherwise supressed warning <warning>",
     [](CompilerApplication& application, const char* value) {
         return application.CommandLine_Warning_Flags(value, WARNING_SUPPRESSED, false);
     }},
    {'X', nullptr, "<warning>", "Abort compilation on warning <warning>",
     [](CompilerApplication& application, const char* value) {
         return application.CommandLine_Warning_Flags(value, WARNING_ABORTS, true);
     }},
    {'o', nullptr, "<file>", "Place output in <file>",
     [](CompilerApplication& application, const char* value) {
         application.output_path = value;
         return true;
     }},
    {'C', nullptr, "<version>", "Generate code compatible with <version>",
     [](CompilerApplication& application, const char* value) {
         const double version = strtod(value, nullptr);
         if (version < oldest_engine_version || version > application.max_engine_version)
             return application.ArgumentError(String("Invalid engine version number ") + version);
         application.engine_version = version;
         return true;
     }},
    {'p', nullptr, "<level>", "Warn on various pedantic syntax issues",
     [](CompilerApplication& application, const char* value) {
         return application.CommandLine_Pedantic_Flags(value, 0);
     }},
    {'P', nullptr, "<level>", "Error on various pedantic syntax issues",
     [](CompilerApplication& application, const char* value) {
         return application.CommandLine_Pedantic_Flags(value, 1);
     }},
    {'d', nullptr, nullptr, "Generate pseudo-C code suitable for use with Doxygen",
     [](CompilerApplication& application, const char*) {
         application.doxygen_output = true;
         return true;
     }},
    {'L', nullptr, nullptr, "Generate a list of line numbers containing code",
     [](CompilerApplication& application, const char*) {
         application.coverage_output = true;
         return true;
     }},
    {'D', nullptr, "<token>", "Define a value for use in TnIFDEF and TnIFNDEF",
     [](CompilerApplication& application, const char* value) {
         application.defines.Insert(new String(value));
         return true;
     }},
    {'O', nullptr, "<bytes>", "Obfuscate constants by splitting them into <bytes> bytes",
     [](CompilerApplication& application, const char* value) {
         const long bytes = strtol(value, nullptr, 10);
         if (bytes <= 0)
             return application.ArgumentError("Invalid value for obfuscation bytes");
         application.obfuscate_bytes = bytes < INT_MAX ? static_cast<int>(bytes) : INT_MAX;
         return true;
     }},
    {'f', nullptr, nullptr, "Enable whitespace compression by default for functions",
     [](CompilerApplication& application, const char*) {
         int& flags = application.function_output_default;
         flags = flags == -1 ? OUTPUT_HTML | OUTPUT_TEXT | OUTPUT_COMPRESS : flags | OUTPUT_COMPRESS;
         return true;
     }},
    {'F', nullptr, nullptr, "Disable text and html output by default for functions",
     [](CompilerApplication& application, const char*) {
         int& flags = application.function_output_default;
         flags = flags == -1 ? 0 : flags & ~(OUTPUT_HTML | OUTPUT_TEXT);
         return true;
     }},
    {'A', nullptr, nullptr, "Make access private by default for functions",
     [](CompilerApplication& application, const char*) {
         application.function_access_default = ACCESS_PRIVATE;
         return true;
     }},
};

// Null for a letter that is no option.
const CompilerApplication::Option* CompilerApplication::Find_Option(char letter) {
    for (const Option& option : options) {
        if (option.letter == letter)
            return &option;
    }
    return nullptr;
}

void CompilerApplication::Print_Usage() {
    String text = String("Usage: ") + basename() + " [options] file...\nOptions:\n";
    char line[120];
    for (const Option& option : options) {
        if (option.long_name)
            snprintf(line, sizeof line, "  --%-15s%s\n", option.long_name, option.help);
        else if (option.argument)
            snprintf(line, sizeof line, "  -%c %-14s%s\n", option.letter, option.argument, option.help);
        else
            snprintf(line, sizeof line, "  -%-16c%s\n", option.letter, option.help);
        text.cat(line, -1);
    }
    text += usage_of_values;
    for (const Pedantic_Keyword& keyword : pedantic_keywords) {
        snprintf(line, sizeof line, "    %-10s%s\n", keyword.word.data(), keyword.help);
        text.cat(line, -1);
    }
    text += usage_end;
    output()->Write(text.text(), text.length());
}

bool CompilerApplication::CommandLine_Requires_Argument(char letter) {
    const Option* option = Find_Option(letter);
    return option && option->argument;
}

bool CompilerApplication::CommandLine_Requires_Argument(const char*) {
    return false;
}

bool CompilerApplication::CommandLine_Process_Option(char letter, const char* value) {
    if (const Option* option = Find_Option(letter))
        return option->process(*this, value);
    return ArgumentError(String("Invalid option '-") + letter + "'");
}

bool CompilerApplication::CommandLine_Process_Option_Long(const char* name, const char* value) {
    for (const Option& option : options) {
        if (option.long_name && strcmp(option.long_name, name) == 0)
            return option.process(*this, value);
    }
    return ArgumentError(String("Invalid option '--") + name + "'");
}

// Pieces ahead of a bad one stay applied.
bool CompilerApplication::CommandLine_Warning_Flags(const char* list, char mask, bool set) {
    auto apply = [&](int number) {
        if (set)
            warning_flags[number] |= mask;
        else
            warning_flags[number] &= static_cast<char>(~mask);
    };
    if (Same_Word(list, "all")) {
        for (int number = 0; number <= LAST_WARNING; ++number)
            apply(number);
        return true;
    }
    const bool is_good = For_Each_Piece(list, [&](std::string_view piece) {
        const int number = stoi(piece.data(), Length_Of(piece), nullptr);
        if (number < 1 || number > LAST_WARNING)
            return false;
        apply(number);
        return true;
    });
    return is_good || ArgumentError(String("Invalid list of warning numbers '") + list +
                                    "'.  Must be 'all' or comma separated list of values between 1 and 99");
}

bool CompilerApplication::CommandLine_Pedantic_Flags(const char* list, int is_error) {
    int& checks = is_error ? pedantic_error : pedantic_warn;
    if (Same_Word(list, "all")) {
        checks = -1;
        return true;
    }
    return For_Each_Piece(list, [&](std::string_view piece) {
        for (const Pedantic_Keyword& keyword : pedantic_keywords) {
            if (Same_Word(piece, keyword.word)) {
                checks |= keyword.check;
                return true;
            }
        }
        return ArgumentError("Invalid pedantic option '" + String(piece.data(), Length_Of(piece)) +
                             "'.  Must be 'all' or type 'tnc --help' for list of valid options.");
    });
}
