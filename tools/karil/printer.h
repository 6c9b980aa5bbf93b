// Writes what a command found, as text for people or as JSON, to standard output as it comes: nothing but the open
// levels is kept. A label is the field's name in words, "not before"; its JSON key is made of it: "notBefore".
#ifndef KARIL_TOOL_PRINTER_H
#define KARIL_TOOL_PRINTER_H

#include "karil/karil.hpp"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace tool {

// Seconds since 1970.
struct Moment {
    std::int64_t seconds;
};

// Content octets of an object identifier: "name (1.2.3)" in text, the name in JSON; the dotted text if it has no name.
struct Identifier {
    karil::Bytes oid;
};

using Value = std::variant<std::string, std::int64_t, bool, Moment, Identifier>;

enum class Form { Text, Json };

class Printer {
public:
    // Colours are used for text on a terminal, unless NO_COLOR is set.
    explicit Printer(Form chosen);
    // Writes what is left; all levels must be closed.
    ~Printer();
    Printer(const Printer &) = delete;
    Printer &operator=(const Printer &) = delete;

    // A level that ends with the variable that holds it.
    class [[nodiscard]] Level {
    public:
        explicit Level(Printer &owner) : printer(owner) {}
        ~Level() { printer.close(); }
        Level(const Level &) = delete;
        Level &operator=(const Level &) = delete;

    private:
        Printer &printer;
    };

    // A group of fields, and a list. In a list and at the outermost level the label is left out of JSON; at the
    // outermost level text has no line for it.
    Level object(std::string_view label);
    Level list(std::string_view label);
    // An object in a list.
    Level item();

    void field(std::string_view label, const Value &value);
    // A list of words: in one line of text.
    void words(std::string_view label, const std::vector<std::string> &values);
    // One line of text for a small object in a list, its values one after the other.
    void row(std::initializer_list<std::pair<std::string_view, Value>> cells);
    // The same for a named value: "name: value".
    void pair(std::pair<std::string_view, std::string> name, std::pair<std::string_view, std::string> value);
    bool isForPrograms() const { return form == Form::Json; }

    // Hands over what was written so far. Throws a Failure if standard output cannot be written.
    void flush();

private:
    void begin(std::string_view label);
    Level open(std::string_view label, char bracket);
    void close();
    void textLine(std::string_view label, std::string_view value);
    void append(const Value &value);
    void jsonKey(std::string_view label);

    struct Open {
        bool isList;
        bool hasMembers;
        int indent;   // of the fields in it
        bool newItem; // the next line of text begins with "- "
    };
    Form form;
    bool colours;
    std::vector<Open> levels;
    std::string pending;
};

} // namespace tool

#endif
