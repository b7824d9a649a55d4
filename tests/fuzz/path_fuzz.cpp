// Paths and scope prefixes of names, beside the standard library's paths and a list of patterns.
#include "files/unix_file_path.h"
#include "input.h"
#include "value/variable_hash.h"

#include <filesystem>
#include <memory>
#include <regex>
#include <vector>

namespace {

std::filesystem::path Normal(const std::string& text) {
    const std::size_t slashes = std::min(text.find_first_not_of('/'), text.size());
    const auto normal = std::filesystem::path((slashes ? "/" : "") + text.substr(slashes)).lexically_normal();
    return normal.has_filename() || !normal.has_relative_path() ? normal : normal.parent_path();
}

std::vector<std::filesystem::path> Kept(const std::filesystem::path& normal) {
    return normal == "." ? std::vector<std::filesystem::path>() : std::vector(normal.begin(), normal.end());
}

// The elements cut the text, the spans mend it: so in any order.
void Ask(Input& input, UNIXFilePath& path, const std::string& text) {
    std::vector<std::pair<std::size_t, std::size_t>> ends;
    if (text[0] == '/')
        ends.emplace_back(0, 1);
    for (std::size_t end, start = 0; (start = text.find_first_not_of('/', start)) != text.npos; start = end)
        ends.emplace_back(start, end = std::min(text.find('/', start), text.size()));
    const int count = static_cast<int>(ends.size()), first = input.Between(-1, count);
    const int last = input.Below(2) ? first : input.Between(-1, count);
    const char* const span = first == last ? path.Element(first) : path.Span(first, last);
    if (first >= 0 && first <= last && last < count)
        CHECK(span && span == text.substr(ends[first].first, ends[last].second - ends[first].first));
    else
        CHECK(!span);
    const auto normal = Normal(text), above = normal.has_parent_path() ? normal.parent_path() : ".";
    const bool climbs = normal.filename() == "..";
    if (input.Below(2)) {
        const std::string name = path.Collapsed_Filename();
        CHECK(name == (climbs || !normal.has_filename() ? "." : normal.filename()));
        // What was dropped may stand within, but not at the end.
        const std::filesystem::path directory = path.Collapsed_Directory();
        CHECK(Normal(directory) == (climbs ? normal : above));
        CHECK(directory.filename() == (climbs ? normal : above).filename());
    }
    int length, size;
    const std::unique_ptr<char[]> collapsed(path.Collapsed_Path(&length, &size));
    CHECK(collapsed.get() == normal.string() && length == static_cast<int>(normal.string().size()));
    CHECK(size == (normal == "." || normal == "/" ? 2 : static_cast<int>(text.size()) + 1));
}

void Try_Paths(Input& input) {
    const std::string_view pieces = "a|b|.|..|/|/|/../|//|/./";
    const std::string text = input.Piece(pieces) + input.Pieces(12, pieces), tail = input.Pieces(12, pieces);
    const std::string whole = text + "/" + tail;
    UNIXFilePath path(text.c_str()), joined(text.c_str(), tail.c_str()), copy(joined);
    const auto own = Kept(Normal(text)), other = Kept(Normal(whole));
    const int same = static_cast<int>(
        std::mismatch(own.begin(), own.end(), other.begin(), other.end()).first - own.begin());
    for (int i = 0; i < 16; ++i) {
        Ask(input, path, text);
        Ask(input, joined, whole);
        Ask(input, copy, Normal(whole));
        const int size = static_cast<int>(own.size()), skip = input.Between(0, 3);
        CHECK(path.Contains(joined) == (same == size));
        CHECK(path.Matches(joined, skip) == (own.size() == other.size() && same >= size - skip));
    }
}

void Try_Scope(Input& input) {
    static const struct {
        int scope, alias, name; // alias and name by the number of their group, 0 for none
        std::regex pattern;
    } rules[] = {
        {3, 1, 2, std::regex("(.)\\.d(?:atabase)?\\.(.+)", std::regex::icase)},
        {0, 0, 1, std::regex("l(?:ocal)?\\.(.*)", std::regex::icase)},
        {1, 0, 1, std::regex("g(?:lobal)?\\.(.*)", std::regex::icase)},
        {2, 0, 1, std::regex("s(?:ystem)?\\.(.*)", std::regex::icase)},
        {3, 1, 2, std::regex("()d\\.(.*)", std::regex::icase)},
        {5, 0, 1, std::regex("(.\\..*)")},
        {3, 1, 2, std::regex("([^.]*)\\.d(?:atabase)?\\.(.*)", std::regex::icase)},
        {3, 1, 2, std::regex("()database\\.(..+)", std::regex::icase)},
        {5, 0, 1, std::regex("(.*)")},
    };
    const std::string text = input.Pieces(12, "l|LOCAL|g|Global|s|system|d|D|database|x|.|.");
    std::smatch match;
    const auto* rule = rules;
    while (!std::regex_match(text, match, rule->pattern))
        ++rule;
    const char *name = nullptr, *alias = nullptr;
    int name_length = 0, alias_length = 0;
    const int length = input.Below(2) ? -1 : static_cast<int>(text.size());
    CHECK(VariableHash::Scope(text.c_str(), length, &name, &name_length, &alias, &alias_length) ==
          rule->scope);
    CHECK(std::string(name, name_length) == match[rule->name]);
    CHECK(rule->alias ? std::string(alias, alias_length) == match[rule->alias] : !alias);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    while (input.More())
        input.Below(4) ? Try_Paths(input) : Try_Scope(input);
    UNIXFilePath none(nullptr);
    CHECK(std::string(none.Collapsed_Directory()) == "." && std::string(none.Collapsed_Filename()).empty());
    return 0;
}
