// Text for people: what comes out of files, in UTF-8 and without anything that a terminal would obey.
#ifndef KARIL_TOOL_TEXT_H
#define KARIL_TOOL_TEXT_H

#include "karil/karil.hpp"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

// Code page 936 as UTF-8.
std::string fromLocal(karil::Bytes text);
// UTF-8 as code page 936. Empty if it is too long; a character that has no place becomes "?".
karil::Octets toLocal(std::string_view text);
// BMP text (UTF-16 with the high octet first) as UTF-8.
std::string fromBmp(karil::Bytes text);

// Characters that change what a terminal does or how it shows other characters (C0, C1, DEL, marks of direction and of
// lines) become \uXXXX, a backslash becomes two, and octets that are no UTF-8 become U+FFFD.
std::string escaped(std::string_view text);
// A string of JSON, with its quotes. The same characters are written as \uXXXX, which JSON reads as themselves.
std::string jsonString(std::string_view text);

// Two upper-case digits an octet, with `separator` between octets if it is not zero.
std::string hex(karil::Bytes octets, char separator = 0);

// A moment, in the local zone: "2026-11-21 20:00:00 CST (+08:00)", and for programs "2026-11-21T20:00:00+08:00".
std::string timeText(std::int64_t seconds);
std::string timeIso(std::int64_t seconds);

// Content octets of an object identifier: dotted text, and the name that it has here, or the dotted text again.
std::string dotted(karil::Bytes oid);
std::string oidName(karil::Bytes oid);

// The usages that are set in the content of a KeyUsage BIT STRING, unused-bits octet first.
std::vector<std::string> keyUsages(karil::Bytes bits);
// The word for a CRLReason.
std::string reasonName(unsigned reason);

} // namespace tool

#endif
