// The way of the assembly to the lines of the sources, and the HTML of these.
#include "view/compiled_page.h"

#include "app/services/tarn_application.h"
#include "page_parts.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <fstream>
#include <sstream>

namespace {

String As_String(std::string_view text) {
    if (text.size() > INT_MAX)
        throw std::bad_alloc();
    return String(text.data(), static_cast<int>(text.size()));
}

std::string Escaped(std::string_view text) {
    return std::string(TarnApplication::EncodeEntities(As_String(text)).view());
}

std::string Paragraph(const std::string& style, const std::string& html) {
    return "<p class=\"" + style + "\">" + html + "</p>";
}

std::string Id(Place place) {
    return "f" + std::to_string(place.section) + "-" + std::to_string(place.line);
}

std::string Link(Place place, std::string_view text) {
    return "<a href=\"#" + Id(place) + "\">" + Escaped(text) + "</a>";
}

} // namespace

// A zero byte ends a source.
int Compiled_Page::Add_Section(const std::string& file, Place included_at) {
    const int number = static_cast<int>(sections.size());
    if (included_at.section >= 0)
        At(included_at).remarks += Paragraph("include", Link({number, 1}, file));
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(stream), {});
    std::istringstream text(bytes.c_str());
    std::vector<Source_Line>& lines = sections.emplace_back(Section{file, included_at}).lines;
    for (std::string line; std::getline(text, line) || lines.empty();)
        lines.push_back({line});
    return number;
}

// The line, or the nearest that there is.
Compiled_Page::Source_Line& Compiled_Page::At(Place place) {
    std::vector<Source_Line>& lines = sections.at(place.section).lines;
    return lines[std::clamp(place.line, 1, static_cast<int>(lines.size())) - 1];
}

void Compiled_Page::Add_Diagnostic(std::string_view file, int line, bool is_error, const std::string& text) {
    int number = static_cast<int>(sections.size()) - 1;
    while (number > 0 && sections[number].file != file)
        --number;
    ++(is_error ? errors : warnings);
    At({number, line}).remarks += Paragraph(is_error ? "error" : "warning", Escaped(text));
}

// Each item begins with its line feed. Others stand in quoted text, where a quote has an escape.
int Compiled_Page::DoWrite(const char* text, int length) {
    for (const char byte : std::string_view(text, static_cast<std::size_t>(length))) {
        if (byte == '\n' && !in_quotes) {
            End_Item();
            item_start = {section, text_line != 0 ? text_line : line_of_scanner()};
            item_is_text = text_line != 0;
            continue;
        }
        item += byte;
        if (byte == '"' && (item.starts_with(".string\t") || item.starts_with(".localized")))
            in_quotes = !in_quotes;
    }
    return length;
}

// The script wants to know the part, since each function numbers its variables anew.
void Compiled_Page::End_Item() {
    in_quotes = false;
    if (item.empty())
        return;
    if (item.starts_with("\tlineno\t"))
        std::from_chars(item.data() + item.rfind('\t') + 1, item.data() + item.size(), code_line);
    const bool is_instruction = item.starts_with('\t'), is_label = item.ends_with(':');
    if ((is_instruction || is_label) && !item_is_text && !item.starts_with("\tsourcefile"))
        item_start.line = code_line;
    instructions += is_instruction;
    part += item.starts_with(".function ");
    const std::string style = is_instruction ? "code" : is_label ? "label" : "directive";
    std::string html = Escaped(item);
    if (is_instruction)
        html.replace(std::min(html.find('\t', 1), html.size()), 1, "</b> ").replace(0, 1, "<b>");
    At(item_start).code += Paragraph(style + "\" data-part=\"" + std::to_string(part), html);
    part += item == ".endfunction";
    item.clear();
}

std::string Compiled_Page::Section_Html(int number) const {
    const auto& [file, from, lines] = sections.at(number);
    std::string html = "<section>\n<h2>" + Escaped(file);
    if (from.section >= 0)
        html += Link(from, "from " + sections.at(from.section).file + ":" + std::to_string(from.line));
    html += "</h2>\n<table>\n";
    Place place{number, 1};
    for (const auto& [text, remarks, code] : lines) {
        html +=
            "<tr id=\"" + Id(place) + "\"><th>" + Link(place, std::to_string(place.line)) + "</th><td><pre>";
        html += Escaped(text) + "</pre>";
        html.append(remarks).append("</td><td>").append(code).append("</td></tr>\n");
        ++place.line;
    }
    return html + "</table>\n</section>\n";
}

String Compiled_Page::Html() {
    End_Item();
    const std::string title = Escaped(sections.front().file);
    std::string html = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<meta "
                       "http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src ";
    html += "'unsafe-inline'; script-src 'unsafe-inline'\">\n<title>" + title + "</title>\n<style>" +
            std::string(page_style) + "</style>\n</head>\n<body>\n<header>\n<h1>" + title + "</h1>\n";
    for (const auto& [what, number] :
         {std::pair("instruction", instructions), {"error", errors}, {"warning", warnings}})
        if (number != 0)
            html += Paragraph(what, std::to_string(number) + " " + what + (number == 1 ? "" : "s"));
    html += page_controls;
    for (int number = 0; number < static_cast<int>(sections.size()); ++number)
        html += Section_Html(number);
    return As_String(html + "<script>" + std::string(page_script) + "</script>\n</body>\n</html>\n");
}
