// Names and other texts in DER, as people read them.
#ifndef KARIL_TOOL_NAMES_H
#define KARIL_TOOL_NAMES_H

#include "der.h"
#include "printer.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tool {

// A string of any type in UTF-8. Types without a character set of their own are taken for code page 936.
std::string stringText(const Element &element);
bool isString(const Element &element);

// A time as the library reads it: two digits for the year, local time.
std::optional<std::int64_t> secondsOf(const Element &element);

// The attributes of a Name element in their order: dotted type and value.
std::vector<std::pair<std::string, std::string>> attributesOf(const Element &name);
// "C=CN, O=Example, CN=leaf".
std::string nameText(const Element &name);
// A list with each attribute of the name.
void showName(Printer &printer, std::string_view label, const Element &name);
// Whether two Name elements have the same attributes, whatever the types of their strings.
bool isSameName(const Element &one, const Element &other);

// The kind of a GeneralName, and its text.
std::pair<std::string, std::string> generalName(const Element &name);
void showGeneralNames(Printer &printer, std::string_view label, karil::Bytes names);

// The content octets of an INTEGER without its sign octet.
karil::Bytes magnitudeOf(const Element &integer);
// An INTEGER as a number, or as "0x..." if it is a large one.
Value numberOf(const Element &integer);

} // namespace tool

#endif
