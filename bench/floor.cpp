// floor SOURCE OUTPUT: a lower bound for tnc. Turns the pages of gen_pages.py, and no others, into the same
// assembly in one pass: no attribute tables, no checks, no messages; names and texts are slices of the mapped
// source, found in one flat table by their hash.
#include <charconv>
#include <cstdint>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using Text = std::string_view;

class Table {
  public:
    // Whether `text` is new, and its number.
    std::pair<bool, int> Number(Text text) {
        if (2 * static_cast<std::size_t>(count) >= slots.size())
            Grow();
        const std::size_t hash = std::hash<Text>()(text);
        Slot& slot = Find(hash, text);
        const bool added = slot.number < 0;
        if (added)
            slot = {hash, text, count++};
        return {added, slot.number};
    }

  private:
    struct Slot {
        std::size_t hash = 0;
        Text text;
        int number = -1;
    };
    Slot& Find(std::size_t hash, Text text) {
        std::size_t at = hash & (slots.size() - 1);
        while (slots[at].number >= 0 && (slots[at].hash != hash || slots[at].text != text))
            at = (at + 1) & (slots.size() - 1);
        return slots[at];
    }
    void Grow() {
        std::vector<Slot> old(slots.size() * 4);
        old.swap(slots);
        for (const Slot& slot : old)
            if (slot.number >= 0)
                Find(slot.hash, slot.text) = slot;
    }
    std::vector<Slot> slots = std::vector<Slot>(1 << 10);
    int count = 0;
};

struct Operator {
    Text word, instruction;
    int priority;
};
constexpr Operator operators[] = {{"AND", "and", 1}, {"GT", "gt", 2}, {"LT", "lt", 2},
                                  {"EQ", "eq", 2},   {"NE", "ne", 2}, {"$", "cat", 3},
                                  {"+", "add", 3},   {"-", "sub", 3}, {"*", "mul", 4}};

constexpr Text digest = ":00000000000000000000000000000000";

class Emitter {
  public:
    Emitter(Text source, int file) : at(source.data()), end(at + source.size()), file(file) {}

    void Page(Text name) {
        Put(out,
            {"\n.string\ts_", Number(strings.Number(name).second), "\t\"", name, "\"\n\tsourcefile\ts_0\n"});
        Function();
        while (at < end)
            *at == '<' ? Tag() : Prose();
        Lineno();
        Put(out, {body, "\n; end of compiled file\n"});
        Flush(0);
    }

  private:
    // The digits of a number, held until the next four numbers.
    Text Number(int number) {
        char* digits = held[next_held++ % 4];
        return Text(digits, std::to_chars(digits, digits + 12, number).ptr - digits);
    }
    static void Put(std::string& to, std::initializer_list<Text> texts) {
        for (const Text text : texts)
            to.append(text);
    }
    void Flush(std::size_t most) {
        if (out.size() > most) {
            if (write(file, out.data(), out.size()) != static_cast<ssize_t>(out.size()))
                _exit(1);
            out.clear();
        }
    }
    Text Until(char stop) {
        const char* start = at;
        const void* found = memchr(at, stop, end - at);
        at = found ? static_cast<const char*>(found) : end;
        return Text(start, at - start);
    }
    void Skip(std::size_t count) { at += count; }
    bool Starts(Text word) const { return Text(at, end - at).substr(0, word.size()) == word; }
    void Lineno() {
        if (line != last_line)
            Put(body, {"\n\tlineno\t", Number(last_line = line)});
    }
    void Commit() {
        out += body;
        body.clear();
        Flush(1 << 16);
    }

    int String(Text text) {
        const auto [added, number] = strings.Number(text);
        if (added) {
            Put(out, {"\n.string\ts_", Number(number), "\t\""});
            for (std::size_t quote; (quote = text.find('"')) != Text::npos; text.remove_prefix(quote + 1))
                Put(out, {text.substr(0, quote), "\\22"});
            Put(out, {text, "\""});
        }
        return number;
    }
    void Write_Text(Text text, Text instruction) {
        Put(body, {"\n\tpushc\ts_", Number(String(text)), instruction});
        Commit();
    }
    void Prose() {
        const Text text = Until('<');
        Write_Text(text, "\n\tout_comp");
        for (const char c : text)
            line += c == '\n';
    }
    int Variable() {
        const char* start = at += 2;
        while (*at >= '0' && *at <= 'z' && *at != '[')
            ++at;
        const Text name(start, at - start);
        const auto [added, number] = names.Number(name);
        if (added)
            Put(out, {"\n.global\tl_", Number(number), "\t\"", name, "\""});
        return number;
    }
    void Operand() {
        if (*at == '(') {
            Skip(1);
            Expression(0);
            Skip(1);
        } else if (*at == '\'') {
            Skip(1);
            Put(body, {"\n\tpushc\ts_", Number(String(Until('\'')))});
            Skip(1);
        } else if (*at == 't') {
            Skip(6);
            in_call = true;
            Expression(0);
            Skip(2);
            Expression(0);
            Skip(1);
            in_call = false;
            Put(body, {"\n\tcall\ttotal\n\tsourcefile\ts_0\n\tlineno\t", Number(line)});
        } else if (*at == 'g') {
            Put(body, {"\n\tpushg\tl_", Number(Variable())});
            if (*at == '[') {
                Skip(1);
                Put(body, {"\n\tpushi\t", Until(']'), in_call ? "\n\telem" : "\n\telem_ro\n.version\t1.3"});
                Skip(1);
            }
        } else {
            const char* start = at;
            while (*at >= '0' && *at <= '9')
                ++at;
            Put(body, {"\n\tpushi\t", Text(start, at - start)});
        }
    }
    const Operator* Next(int priority) {
        if (*at != ' ')
            return nullptr;
        for (const Operator& op : operators)
            if (at[1] == op.word[0] && op.priority > priority)
                return &op;
        return nullptr;
    }
    void Expression(int priority) {
        Operand();
        while (const Operator* op = Next(priority)) {
            Skip(op->word.size() + 2);
            Expression(op->priority);
            Put(body, {"\n\t", op->instruction});
        }
    }
    void Braces() {
        Until('{');
        Skip(1);
        Expression(0);
        Skip(3);
    }

    void Function() {
        Until('\n');
        Put(out, {"\n.function "
                  "total\tstdoutinherit\n\tsourcefile\ts_0\n.parameter\tl_0\t\"a\"\n.parameter\tl_1\t\"b\"\n",
                  "\tlineno\t1\n\tpushl\tl_0\n\tpushl\tl_1\n\tadd\n\tret\n.endfunction"});
    }
    int Local(std::initializer_list<Text> parts) {
        std::string& name = locals.emplace_back();
        Put(name, parts);
        const auto [added, number] = names.Number(name);
        if (added)
            Put(out, {"\n.local\tl_", Number(number), "\t\"", name, "\""});
        return number;
    }
    void For() {
        const std::string label(Number(labels));
        Until('{');
        Skip(1);
        const std::string count(Number(Variable()));
        Skip(3);
        const std::string i(Number(Local({"__scratch:for_index_", label, digest})));
        const std::string most(Number(Local({"__scratch:for_count_", Number(++loops), digest})));
        Put(body, {"\n\tpushl\tl_", Number(Local({"i"})), "\n\tpoprl\tl_", i});
        Lineno();
        Put(body, {"\n\tpushg\tl_",
                   count,
                   "\n\tpushi\t0\n\tbitor\n\tpopl\tl_",
                   most,
                   "\n\tpushi\t1\n\tpopl\tl_",
                   i,
                   "\n\tjmp\tL_start_",
                   label,
                   "\nL_loop_",
                   label,
                   ":\n\tpushl\tl_",
                   i,
                   "\n\tpushi\t1\n\tadd\n\tpopl\tl_",
                   i,
                   "\nL_start_",
                   label,
                   ":\n\tpushl\tl_",
                   i,
                   "\n\tpushl\tl_",
                   most,
                   "\n\tle\n\tjmp_eq\tL_end_",
                   label});
    }
    void End(bool loop) {
        Lineno();
        const Text n = Number(open.back());
        loops -= loop;
        if (loop)
            Put(body, {"\n\tjmp\tL_loop_", n, "\nL_end_", n, ":"});
        else
            Put(body, {"\nL_start_", n, ":\nL_end_", n, ":"});
        open.pop_back();
        Until('>');
        Skip(1);
    }
    void Tag() {
        if (Starts("</Tn"))
            return End(at[4] == 'F'), Commit();
        if (!Starts("<Tn")) {
            const char* start = at;
            Until('>');
            Skip(1);
            return Write_Text(Text(start, at - start), "\n\tout");
        }
        if (at[3] == 'F' || at[3] == 'I')
            open.push_back(++labels);
        if (at[3] == 'F')
            return For(), Commit();
        Lineno();
        if (at[3] == 'I') {
            Braces();
            Put(body, {"\n\tjmp_eq\tL_start_", Number(open.back())});
        } else if (at[3] == 'E') {
            Braces();
            body += "\n\tout";
        } else {
            Until('g');
            const int name = Variable();
            Braces();
            Put(body, {"\n\tpopg\tl_", Number(name)});
        }
        Commit();
    }

    const char *at, *end;
    int file, line = 1, last_line = 1, labels = 0, loops = 0;
    unsigned next_held = 0;
    char held[4][12];
    bool in_call = false;
    Table strings, names;
    std::vector<int> open;
    std::deque<std::string> locals;
    std::string out, body;
};

} // namespace

int main(int, char** arguments) {
    const int source = open(arguments[1], O_RDONLY),
              output = open(arguments[2], O_WRONLY | O_CREAT | O_TRUNC, 0644);
    struct stat status;
    if (source < 0 || output < 0 || fstat(source, &status) != 0)
        return 1;
    void* text = mmap(nullptr, status.st_size, PROT_READ, MAP_PRIVATE, source, 0);
    if (text == MAP_FAILED)
        return 1;
    Emitter({static_cast<const char*>(text), static_cast<std::size_t>(status.st_size)}, output)
        .Page(arguments[1]);
}
