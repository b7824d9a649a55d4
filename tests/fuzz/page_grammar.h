// Pages that mean something, for the most part: written by the tables of tags and attributes from the bytes
// of an input.
#ifndef FUZZ_PAGE_GRAMMAR_H
#define FUZZ_PAGE_GRAMMAR_H

#include "compiler/records/attribute_routes.h"
#include "input.h"

#include <map>
#include <vector>

class Page_Grammar {
  public:
    explicit Page_Grammar(Input& input) : input(input) {}

    // What the calls need, ahead of the rest.
    std::string Page() {
        return "<TnFUNCTION NAME=\"f0\">" + Body(2) +
               "</TnFUNCTION><TnFUNCTION NAME=\"f2\" PARAMETERS=\"a, b var\">" + Body(2) +
               "<TnFUNCTIONRETURN VALUE=\"{" + Expression(2) + "}\"></TnFUNCTION>" + Body(3);
    }
    // For an include.
    std::string Body(int depth) {
        std::string text;
        for (unsigned left = input.Below(6); left > 0; --left)
            text += depth > 0 && input.Below(3) ? Tag_Text(depth) : input.Piece(texts);
        return text;
    }

  private:
    static constexpr const char* texts =
        "text|\n| <b>bold</b> |a longer text, \"of\" 'some' words|<a href=\"{l.a}\">|&[%element( g.b )%]";
    static constexpr const char* names = "l.a|l.b|g.a|g.b|s.a|x|d.a|al.d.b";
    static constexpr const char* words = "x|y|text|html|expression|variable|public|en-US|a,b|top";
    static constexpr const char* operators[] = {
#define OPERATOR(name, id, key, priority, operands, type, opcode)                                            \
    operands == 2 && std::string_view(#opcode) != "NONE" ? key : nullptr,
#include "frontend/scanner/operators.def"
    };
    static constexpr int blocks[] = {
        Tag::If,    Tag::While,    Tag::For,       Tag::Foreach,     Tag::Import,        Tag::Pop,
        Tag::Call,  Tag::Commerce, Tag::Smtp,      Tag::Lockfile,    Tag::Capture,       Tag::Asynchronous,
        Tag::Ifdef, Tag::Ifndef,   Tag::Localized, Tag::Assignarray, Tag::Referencearray};
    // These stand within others alone.
    static constexpr int parts[] = {Tag::Else, Tag::Elseif, Tag::Function, Tag::Function_Return,
                                    Tag::Localized_Token};

    static const char* Word(int attribute) {
        static const std::map<int, const char*> keys = {
#define ATTRIBUTE(name, id, key) {id, key},
#include "frontend/scanner/attributes.def"
        };
        return keys.at(attribute);
    }

    std::string Name() {
        return input.Piece(names) + (input.Below(4) ? "" : input.Below(2) ? ":m" : "[" + Expression(1) + "]");
    }
    std::string Expression(int depth) {
        const unsigned choice = depth > 0 ? input.Below(12) : input.Below(5);
        const auto inner = [&] { return Expression(depth - 1); };
        const char* const binary = input.One_Of(operators);
        switch (choice) {
        case 0: return std::to_string(input.Below(300));
        case 1: return input.Below(2) ? "2.5" : "(-3)";
        case 2: return "'" + input.Piece(words) + " of a literal'";
        case 5: return "(" + inner() + ")";
        case 6: return input.Below(2) ? "NOT " + inner() : "ISNULL " + Name();
        case 7: return input.Below(2) ? Name() + "++" : "--" + Name();
        case 8: return "f0()";
        case 9: return "f2(" + inner() + ", l.a)";
        case 10:
        case 11: return binary ? inner() + " " + binary + " " + inner() : "['y'].f2(" + inner() + ", l.b)";
        default: return Name();
        }
    }
    std::string Value(const Attribute_Route& route) {
        const std::string expression = "{" + Expression(3) + "}";
        if (route.element < 0)
            return input.Piece(words);
        switch (route.convert) {
        case Convert::Variable_Name: // a warning of it would end the loop's code
            return input.Below(2) ? "l.a" : expression;
        case Convert::Target_Variable:
        case Convert::Reference_Name: return input.Below(4) ? Name() : expression;
        case Convert::Whole_Name: return "name";
        case Convert::Positive_Number:
        case Convert::Array_Index:
        case Convert::Index: return input.Below(2) ? std::to_string(1 + input.Below(9)) : expression;
        case Convert::Dynamic_Text: return expression;
        case Convert::Array_Member:
        case Convert::Member: return input.Below(2) ? "m" : expression;
        case Convert::Certificate_Type: return "pem";
        case Convert::Directive_Text:
            return route.attribute == Attribute::Name   ? input.Piece(words)
                   : route.attribute == Attribute::File ? "y"
                                                        : "expression";
        default: return input.Below(2) ? input.Piece(words) : expression;
        }
    }
    // The counts and conditions of loops exclude others.
    bool Is_Given(const Attribute_Route& route) {
        const bool excludes = route.attribute == Attribute::Count ||
                              route.attribute == Attribute::Certvalue ||
                              (route.tag == Tag::For && route.attribute == Attribute::Expression);
        return route.element < 0 || excludes ? input.Below(16) == 0
                                             : route.element < required_slots[route.tag] || input.Below(16);
    }
    std::string Start(int tag) {
        std::string text = "<" + std::string(Tag_Word(tag));
        for (const Attribute_Route& route : attribute_routes)
            if (route.tag == tag && route.attribute >= 0 && Is_Given(route))
                text += std::string(" ") + Word(route.attribute) + "=\"" + Value(route) + "\"";
        return text + ">";
    }
    std::string Member_Of(int tag) {
        if (tag != Tag::Localized)
            return Start(input.Below(2) ? Tag::Dimension : Tag::Member);
        if (input.Below(4) == 0)
            return Start(Tag::Localized_Token);
        return Start(Tag::Localized_Text) + input.Piece(texts) + "</TnLOCALIZED-TEXT>";
    }
    std::string Tag_Text(int depth) {
        const auto has = [](const auto& tags, int tag) {
            return std::count(std::begin(tags), std::end(tags), tag) > 0;
        };
        const int tag =
            input.Below(2) ? input.One_Of(blocks) : input.Between(0, std::size(required_slots) - 1);
        if (!has(blocks, tag))
            return required_slots[tag] == NO_SLOTS || has(parts, tag) ? "" : Start(tag);
        const std::string word = Tag_Word(tag);
        const bool loops = tag == Tag::While || tag == Tag::For || tag == Tag::Foreach;
        std::string text = Start(tag);
        if (tag == Tag::Localized || tag == Tag::Assignarray || tag == Tag::Referencearray) {
            for (unsigned left = input.Below(16); left > 0; --left)
                text += Member_Of(tag);
            return text + "</" + word + ">";
        }
        text += Body(depth - 1);
        if (tag == Tag::If && input.Below(2))
            text += Start(Tag::Elseif) + Body(depth - 1) + "<TnELSE>";
        if (loops && input.Below(2))
            text += "<" + word + (input.Below(2) ? "STOP>" : "CONTINUE>");
        return text + Body(depth - 1) + "</" + word + ">";
    }

    Input& input;
};

#endif
