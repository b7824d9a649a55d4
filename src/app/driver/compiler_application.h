#ifndef APP_COMPILER_APPLICATION_H
#define APP_COMPILER_APPLICATION_H

#include "app/services/console_application.h"
#include "app/services/diagnostics.h"
#include "core/hash_table.h"

#include <memory>

class ExternalCallManager;
class File;
class FileCompilerParser;
class File_Stamp;
class FileOutput;

// Bits of the pedantic checks; the order of their keywords on the command line.
enum Pedantic_Check : int {
    PEDANTIC_SCOPE = 1,   // a variable without scope prefix
    PEDANTIC_LOCK = 2,    // TnFUNCTIONRETURN inside TnLOCKFILE
    PEDANTIC_CAPTURE = 4, // TnFUNCTIONRETURN inside TnCAPTURE
    PEDANTIC_ASYNC = 8    // TnFUNCTIONRETURN inside TnASYNCHRONOUS
};

// Bits of warning_flags. Suppression comes first: a warning with both bits is neither printed nor counted.
enum Warning_Flag : char {
    WARNING_SUPPRESSED = 1, // not printed
    WARNING_ABORTS = 2      // counts as an error
};

// One run of the compiler: options, output file, one parser for all input files, and the diagnostics that it
// reports. The platform class adds the services.
class CompilerApplication : public ConsoleApplication {
  public:
    CompilerApplication(int argc, char** argv);
    ~CompilerApplication() override;

    bool CommandLine_Requires_Argument(char option) override;
    bool CommandLine_Requires_Argument(const char* option) override;
    bool CommandLine_Process_Option(char option, const char* value) override;
    bool CommandLine_Process_Option_Long(const char* option, const char* value) override;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ExternalCallManager* externalcallmanager() = 0;
    // Runs the program; the answer is its exit status, 0 or 1. A failed run leaves no output file.
    virtual int Go();
    // These two have printed their message when they answer false. An output that is one of the sources or of
    // the loaded libraries, by whatever name, is refused before it is opened.
    virtual bool ValidateOptions();
    virtual bool OpenOutput();
    // Whether -D gave the name, in any case.
    virtual bool Is_Defined(const char* name, int length);
    // Prints the diagnostic unless it is a suppressed warning. False means that it counts as an error.
    virtual bool CompileError(ErrorCode code, const char* file, int line, const String& message);
    virtual bool Error_WillPrint(ErrorCode code);
    // Sets or clears a bit of warning_flags for a list like "1,17" or "all".
    virtual bool CommandLine_Warning_Flags(const char* list, char mask, bool set);
    // Adds the checks of a list like "scope,lock" or "all" to the warnings or to the errors.
    virtual bool CommandLine_Pedantic_Flags(const char* list, int is_error);
    // Sets of Pedantic_Check.
    virtual int Pedantic_Warn() { return pedantic_warn; }
    virtual int Pedantic_Error() { return pedantic_error; }

    // Prints that a source can't be relied on.
    void Source_Error(const String& path, const char* reason);
    // Whether it tells of the output of this run.
    bool Is_Output(const File_Stamp& file) const;

    // Hands over the parser of the last run, with all tables that it has made; null without one, and when its
    // end was part of the run. It may be deleted as long as the application lives.
    [[nodiscard]] FileCompilerParser* Release_Parser();

    // Read directly by the code generator. The order of the fields is part of the binary interface.
  protected:
    const char* output_path = "output.tna"; // -o: the argument itself
    std::unique_ptr<File> output_file;
    std::unique_ptr<FileOutput> assembly; // over output_file
    int first_input;                      // index in argv
    bool stop_after_options = false;      // --help and --version
    HashTable<String> defines;            // -D
    double max_engine_version;

  public:
    double engine_version;   // -C: the engine that code is generated for
    int obfuscate_bytes = 0; // -O: constants are split into pieces of that many bytes; 0 leaves them whole

  protected:
    bool doxygen_output = false;          // -d
    bool coverage_output = false;         // -L
    int function_output_default = -1;     // -f, -F: output flags of functions; -1 is not set
    int function_access_default = -1;     // -A: Function_Access
    int pedantic_warn = 0;                // -p: Pedantic_Check bits
    int pedantic_error = 0;               // -P
    char warning_flags[LAST_WARNING + 1]; // Warning_Flag bits by warning number

    // Ends what OpenOutput began.
    void Close_Output();
    // Ends everything that a run has left; before the file manager goes.
    void End_Run();
    // Leaves nothing of what was written.
    void Discard_Output();
    // Prints that the path could not be opened, created and so on; answers false.
    bool Path_Error(const char* verb, const char* path, const String& reason);

    // Makes the parser and writes what it makes of all files to the output. After false nothing of that is
    // kept.
    virtual bool Compile();
    // What is left to do behind that. False when any write or the end of the file failed, with the message
    // printed.
    virtual bool Finish_Output();
    // With the parser; false after the first file with an error.
    bool Compile_Files();

    std::unique_ptr<FileCompilerParser> parser; // of the last run

  private:
    struct Option;
    static const Option options[];
    static const Option* Find_Option(char letter);
    void Print_Usage();

    int Run();
    // Whether all went out that the options printed.
    bool Finish_Console();
    std::unique_ptr<FileCompilerParser> Make_Parser();
};

#endif
