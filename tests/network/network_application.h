#ifndef TESTS_NETWORK_NETWORK_APPLICATION_H
#define TESTS_NETWORK_NETWORK_APPLICATION_H

#include "app/config.h"
#include "app/unix_compiler_application.h"

#include <map>

// Settings that a test puts in place.
struct Test_Settings : Config {
    int Integer(Config_Setting setting) const override {
        const auto found = integers.find(setting);
        return found == integers.end() ? 0 : found->second;
    }
    const String& Text(Config_Setting setting) const override {
        const auto found = texts.find(setting);
        return found == texts.end() ? none : found->second;
    }

    std::map<Config_Setting, int> integers;
    std::map<Config_Setting, String> texts;
    String none;
};

// An application with settings and a network manager.
struct Network_Application : UNIXCompilerApplication {
    Network_Application() : UNIXCompilerApplication(1, arguments) {}
    Config* config() override { return &settings; }
    NetworkManager* networkmanager() override { return manager; }

    Test_Settings settings;
    NetworkManager* manager = nullptr;
    static inline char program[] = "test";
    static inline char* arguments[] = {program, nullptr};
};

#endif
