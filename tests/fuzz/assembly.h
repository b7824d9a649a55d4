// Assembly text as instructions that name what they use by its content. Whatever an instruction names has to
// be there.
#ifndef FUZZ_ASSEMBLY_H
#define FUZZ_ASSEMBLY_H

#include "input.h"

#include <set>
#include <utility>
#include <vector>

class Assembly {
  public:
    explicit Assembly(std::string_view text) {
        for (std::size_t end; !text.empty(); text.remove_prefix(end)) {
            // A line feed within quotes doesn't end the item.
            for (end = 1; end < text.size() && text[end] != '\n'; ++end)
                if (text[end] == '"')
                    end = std::min(text.find('"', end + 1), text.size() - 1);
            Item(std::string(text.substr(1, end - 1)));
        }
        for (const std::string& label : used)
            CHECK(labels.contains(label));
    }

    // Without constants' directives. Constants that are joined, or printed one behind the other, are one.
    std::vector<std::pair<std::string, std::string>> items;
    std::vector<std::string> lines; // the numbers that were told

  private:
    void Item(const std::string& item) {
        const std::size_t tab = std::min(item.find('\t', 1), item.size());
        const std::string word = item.substr(0, tab), rest = item.substr(std::min(tab + 1, item.size()));
        const std::size_t end = rest.find('\t');
        if (word == ".string") {
            CHECK(rest.substr(0, end) == "s_" + std::to_string(strings.size()));
            strings.push_back(rest.substr(end + 2, rest.size() - end - 3));
            return;
        }
        if (item.starts_with("L_"))
            CHECK(item.back() == ':' && labels.insert(item.substr(0, item.size() - 1)).second);
        else if (item.starts_with(".function "))
            in_function = true, locals.clear();
        else if (item == ".endfunction")
            in_function = false;
        else if (word == ".local" || word == ".parameter")
            CHECK((in_function ? locals : globals).insert(rest.substr(0, end)).second);
        else if (word == ".global" || word == ".system")
            CHECK(globals.insert(rest.substr(0, end)).second);
        else if (item.starts_with('\t'))
            return Instruction(word.substr(1), rest);
        items.emplace_back(item, "");
    }
    void Instruction(const std::string& name, const std::string& operands) {
        if (name == "lineno")
            lines.push_back(operands);
        std::string told;
        for (std::size_t start = 0; start < operands.size();) {
            const std::size_t end = std::min(operands.find(", ", start), operands.size());
            told += Operand(name, operands.substr(start, end - start)) + ", ";
            start = end + 2;
        }
        const std::size_t count = items.size();
        const auto is = [&](std::size_t back, std::string_view wanted) {
            return count >= back && items[count - back].first == wanted;
        };
        std::size_t joined = 0;
        if (name == "cat" && is(1, "pushc") && is(2, "pushc"))
            joined = 2;
        else if (name.starts_with("out") && is(1, "pushc") && is(2, name) && is(3, "pushc"))
            joined = 3;
        if (!joined)
            return void(items.emplace_back(name, told));
        std::string& whole = items[count - joined].second;
        whole = whole.substr(0, whole.size() - 2) + items.back().second;
        items.pop_back();
    }
    std::string Operand(const std::string& name, const std::string& operand) {
        if (operand.starts_with("s_")) {
            const auto number = static_cast<std::size_t>(std::atoi(&operand[2]));
            CHECK(number < strings.size());
            return strings[number];
        }
        const bool local = in_function && operand.starts_with("l_") && name.find('g', 3) == name.npos;
        if (operand.starts_with("l_") || operand.starts_with("sys_"))
            CHECK((local ? locals : globals).contains(operand));
        if (operand.starts_with("L_"))
            used.insert(operand);
        return operand;
    }

    std::vector<std::string> strings;
    std::set<std::string> labels, used, locals, globals;
    bool in_function = false;
};

#endif
