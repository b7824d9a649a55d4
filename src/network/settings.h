#ifndef NETWORK_SETTINGS_H
#define NETWORK_SETTINGS_H

#include "app/services/config.h"
#include "app/services/tarn_application.h"
#include "core/string.h"

#include <string_view>

// The engine's settings; 0 and empty in a program that has none.
inline int Integer_Setting(TarnApplication* application, Config_Setting setting) {
    const Config* const config = application->config();
    return config ? config->Integer(setting) : 0;
}

inline std::string_view Text_Setting(TarnApplication* application, Config_Setting setting) {
    const Config* const config = application->config();
    return config ? config->Text(setting).view() : std::string_view();
}

#endif
