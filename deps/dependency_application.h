#ifndef DEPS_DEPENDENCY_APPLICATION_H
#define DEPS_DEPENDENCY_APPLICATION_H

#include "app/driver/unix_compiler_application.h"
#include "deps/dependency_rule.h"
#include "deps/recording_file_manager.h"

#include <string>

// The compiler, which besides writes down what its output was made of: sources, includes, extension
// libraries.
class Dependency_Application : public UNIXCompilerApplication {
  public:
    Dependency_Application(int argc, char** argv);
    ~Dependency_Application() override;

    FileManager* filemanager() override { return &file_manager; }
    bool CommandLine_Requires_Argument(const char* option) override;
    bool CommandLine_Process_Option(char option, const char* value) override;
    bool CommandLine_Process_Option_Long(const char* option, const char* value) override;

  protected:
    // A run whose rule can't be written leaves no output either.
    bool Finish_Output() override;

  private:
    void Record_Library(const char* path);
    bool Write_Rule();
    bool Write(const char* path, const std::string& text);

    Dependency_Rule rule;
    Recording_File_Manager file_manager;
    const char* rule_path = nullptr; // --deps; null: the output's path with ".d" behind it
    const char* target = nullptr;    // --target; null: the output's path
    std::string folder;              // --absolute: the current one; else empty
};

#endif
