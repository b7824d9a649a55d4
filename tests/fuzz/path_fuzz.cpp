// Paths and scope prefixes of names, beside a list of elements and a list of patterns.
#include "files/unix_file_path.h"
#include "input.h"
#include "value/variable_hash.h"

#include <cstring>
#include <memory>
#include <regex>
#include <vector>

namespace {

struct Model {
    struct Element {
        std::string name; // "/" for the root
        std::size_t start, end;
    };

    explicit Model(const std::string& text) : text(text), absolute(text[0] == '/') {
        if (absolute)
            elements.push_back({"/", 0, 1});
        for (std::size_t end, start = 0; (start = text.find_first_not_of('/', start)) != text.npos;
             start = end) {
            end = std::min(text.find('/', start), text.size());
            elements.push_back({text.substr(start, end - start), start, end});
        }
        if (elements.empty())
            elements.push_back({"", 0, 0});
        for (const Element& element : elements) {
            const bool climbs = element.name == "..";
            if (element.name == "." || (climbs && kept.size() == 1 && absolute))
                continue;
            if (climbs && !kept.empty() && kept.back()->name != "..")
                kept.pop_back();
            else
                kept.push_back(&element);
        }
    }
    Model(const Model&) = delete;

    std::string Span(const Element& first, const Element& last) const {
        return text.substr(first.start, last.end - first.start);
    }
    std::string Collapsed() const {
        std::string path;
        for (const Element* element : kept)
            path += (path.empty() || path == "/" ? "" : "/") + element->name;
        return kept.empty() ? "." : path;
    }
    std::string Directory() const {
        if (kept.empty())
            return ".";
        if (kept.back()->name == "..")
            return Span(*kept[0], *kept.back());
        if (kept.size() == 1)
            return absolute ? "/" : ".";
        return Span(*kept[0], *kept[kept.size() - 2]);
    }
    std::string Filename() const {
        const std::string name = kept.empty() ? "." : kept.back()->name;
        return name == "/" || name == ".." ? "." : name;
    }
    // Whether the first elements are those of the other.
    bool Agrees(const Model& other, int count) const {
        for (int i = 0; i < count; ++i)
            if (kept[i]->name != other.kept[i]->name)
                return false;
        return true;
    }

    std::string text;
    bool absolute;
    std::vector<Element> elements;
    std::vector<const Element*> kept;
};

bool Is(const char* text, const std::string& expected) {
    return text && text == expected;
}

// The elements cut the text, the spans mend it: so in any order.
void Ask(Input& input, UNIXFilePath& path, const Model& model) {
    const int count = static_cast<int>(model.elements.size());
    const int first = input.Between(-1, count), last = input.Between(-1, count);
    const bool inside = first >= 0 && first < count;
    switch (input.Below(5)) {
    case 0: CHECK(inside ? Is(path.Element(first), model.elements[first].name) : !path.Element(first)); break;
    case 1:
        if (inside && last < count && first <= last)
            CHECK(Is(path.Span(first, last), model.Span(model.elements[first], model.elements[last])));
        else
            CHECK(!path.Span(first, last));
        break;
    case 2: CHECK(Is(path.Collapsed_Filename(), model.Filename())); break;
    case 3: CHECK(Is(path.Collapsed_Directory(), model.Directory())); break;
    default: {
        int length, size;
        const std::unique_ptr<char[]> collapsed(path.Collapsed_Path(&length, &size));
        const bool bare = model.kept.size() == model.absolute;
        CHECK(Is(collapsed.get(), model.Collapsed()) && length == static_cast<int>(model.Collapsed().size()));
        CHECK(size == (bare ? 2 : static_cast<int>(model.text.size()) + 1));
    }
    }
}

std::string Pieces(Input& input, const std::vector<const char*>& pieces) {
    std::string text;
    for (unsigned left = input.Below(14); left > 0; --left)
        text += input.One_Of(pieces);
    return text;
}

void Try_Paths(Input& input) {
    const std::vector<const char*> pieces = {"a", "b", ".", "..", "/", "/", "/../", "//", "/./"};
    const std::string text = Pieces(input, pieces), tail = Pieces(input, pieces);
    UNIXFilePath path(text.empty() ? nullptr : text.c_str()), joined(text.c_str(), tail.c_str()),
        copy(joined);
    const Model model(text), long_model(text + "/" + tail), copied(long_model.Collapsed());
    for (int i = 0; i < 16; ++i) {
        Ask(input, path, model);
        Ask(input, joined, long_model);
        Ask(input, copy, copied);
        const int own = static_cast<int>(model.kept.size()), other = static_cast<int>(long_model.kept.size());
        const int skip = input.Between(0, 3);
        CHECK(path.Contains(joined) == (own <= other && model.Agrees(long_model, own)));
        CHECK(path.Matches(joined, skip) == (own == other && model.Agrees(long_model, own - skip)));
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
    while (input.More()) {
        const std::string text =
            Pieces(input, {"l", "LOCAL", "g", "Global", "s", "system", "d", "D", "database", "x", ".", "."});
        std::smatch match;
        const auto* const rule = std::find_if(std::begin(rules), std::end(rules), [&](const auto& r) {
            return std::regex_match(text, match, r.pattern);
        });
        const char *name = nullptr, *alias = nullptr;
        int name_length = 0, alias_length = 0;
        const int len = static_cast<int>(text.size());
        CHECK(VariableHash::Scope(text.c_str(), input.Below(2) ? -1 : len, &name, &name_length, &alias,
                                  &alias_length) == rule->scope);
        CHECK(std::string(name, name_length) == match[rule->name]);
        CHECK(rule->alias ? std::string(alias, alias_length) == match[rule->alias] : !alias);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    if (input.Below(8) == 0)
        Try_Scope(input);
    else
        while (input.More())
            Try_Paths(input);
    return 0;
}
