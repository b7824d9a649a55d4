// The rule of a make file, with its words escaped.

#include "deps/dependency_rule.h"

namespace {

// Backslashes ahead of a blank are doubled; elsewhere they stand for themselves.
std::string Escaped(const std::string& path) {
    std::string text;
    std::size_t backslashes = 0;
    for (char byte : path) {
        if (byte == ' ' || byte == '\t')
            text.append(backslashes, '\\');
        if (byte == ' ' || byte == '\t' || byte == '#' || byte == ':')
            text += '\\';
        if (byte == '$')
            text += '$';
        text += byte;
        backslashes = byte == '\\' ? backslashes + 1 : 0;
    }
    return text;
}

std::string Named(const std::string& path, const std::string& folder) {
    const bool counts_from_folder = !folder.empty() && !path.starts_with('/');
    return Escaped(counts_from_folder ? folder + "/" + path : path);
}

} // namespace

void Dependency_Rule::Add(const std::string& path) {
    if (known.insert(path).second)
        paths.push_back(path);
}

std::string Dependency_Rule::Text(const std::string& target, const std::string& folder) const {
    std::string rule = Escaped(target) + ":";
    std::string empty_rules;
    for (const std::string& path : paths) {
        const std::string name = Named(path, folder);
        rule += " \\\n  " + name;
        empty_rules += "\n" + name + ":\n";
    }
    return rule + "\n" + empty_rules;
}
