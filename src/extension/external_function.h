// How the program reads the records that an extension library exports.
#ifndef EXTENSION_EXTERNAL_FUNCTION_H
#define EXTENSION_EXTERNAL_FUNCTION_H

#include "extension/tarn_extension.h"

#include <span>

// A null array is an empty one, whatever the count says.
inline std::span<const _TN_EL_Parameter> Parameters_Of(const _TN_EL_Function& function) {
    const bool some = function.parameters && function.parameter_count > 0;
    return {function.parameters, some ? static_cast<std::size_t>(function.parameter_count) : 0};
}

inline constexpr char function_table_symbol[] = "tarn_function_table";
using External_Function_Table = decltype(&tarn_function_table);

#endif
