// A small DER builder for expected and hostile octets, written apart from the library's writers.
#pragma once

#include "support.h"

#include <initializer_list>

namespace karil_test {

inline Octets cat(std::initializer_list<Octets> parts) {
    Octets all;
    for (const Octets &part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

inline Octets tlv(uint8_t tag, const Octets &content) {
    Octets out{tag};
    const size_t size = content.size();
    if (size < 0x80) {
        out.push_back(static_cast<uint8_t>(size));
    } else {
        Octets length;
        for (size_t rest = size; rest != 0; rest >>= 8) length.insert(length.begin(), static_cast<uint8_t>(rest));
        out.push_back(static_cast<uint8_t>(0x80 | length.size()));
        out.insert(out.end(), length.begin(), length.end());
    }
    out.insert(out.end(), content.begin(), content.end());
    return out;
}

inline Octets tlv(uint8_t tag, std::initializer_list<Octets> parts) { return tlv(tag, cat(parts)); }

inline Octets seq(std::initializer_list<Octets> parts) { return tlv(0x30, cat(parts)); }

inline Octets set(std::initializer_list<Octets> parts) { return tlv(0x31, cat(parts)); }

// An OBJECT IDENTIFIER from content octets in hex.
inline Octets oid(std::string_view content) { return tlv(0x06, hex(content)); }

// Name with one PrintableString attribute 2.5.4.3.
inline Octets commonName(std::string_view characters) {
    return seq({set({seq({oid("55 04 03"), tlv(0x13, text(characters))})})});
}

// Extension ::= SEQUENCE { extnID, critical where `flag` has octets, extnValue }
inline Octets extension(std::string_view id, const Octets &value, const Octets &flag = {}) {
    return seq({oid(id), flag, tlv(0x04, value)});
}

} // namespace karil_test
