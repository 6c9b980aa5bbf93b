// Names: distinguished names, the table of their attributes, general names.
#pragma once

#include "karil/name.h"

#include "ka_asn2.h"

namespace karil {

enum class WireString { ByContent, Printable, Ia5 };

// All that is known of a name attribute. One more is one row of attributes.cc.
struct NameAttribute {
    uint32_t kind;
    WireString wire;
    Bytes oid;
    const char *key; // in the text form
};

// In the order of the text form.
constexpr size_t NameKinds = 10;
std::span<const NameAttribute, NameKinds> nameAttributes();
const NameAttribute *attributeOfKind(uint32_t kind);
const NameAttribute *attributeOfOid(Bytes oid);

// Appends an attribute of the table with a copy of `value`, tag 19. The list is walked from its head: a caller may free
// or fill a name by itself, so that no hint to its end would hold.
[[nodiscard]] Status appendName(NameRecord &head, uint32_t kind, Bytes value);

// The first attribute of the kind, or null.
const NameRecord *findName(const NameRecord &head, uint32_t kind);

[[nodiscard]] Status decodeName(const Element &source, NameRecord &head);
[[nodiscard]] Status decodeGeneralNames(const Element &source, GeneralNameRecord &names, uint8_t &found);
// Frees what the slots hold, for a record that goes itself.
void freeGeneralNames(GeneralNameRecord &names);

// The wire strings' tags are set in the records of `head`.
[[nodiscard]] Status encodeName(Writer &out, const NameRecord &head);
[[nodiscard]] Status encodeGeneralNames(Writer &out, GeneralNameRecord &names);

// What the conversions of text.h take and answer.
using Conversion = int32_t (*)(const uint8_t *, int32_t, uint8_t *, uint32_t *);

// A converted text.
class Converted {
public:
    [[nodiscard]] Status from(Conversion convert, Bytes text);
    Bytes bytes() const { return {octets, size}; }

private:
    uint8_t octets[2048];
    uint32_t size = 0;
};

// UTF8String
[[nodiscard]] Status writeUtf8(Writer &out, Bytes text);

// Converts a text that was read. The result replaces what stood in `out`, with the tag given; it is the text itself if
// that is kept and the conversion leaves it as it is.
[[nodiscard]] Status storeConverted(Conversion convert, const Element &text, uint32_t tag, Anybuf &out);

} // namespace karil
