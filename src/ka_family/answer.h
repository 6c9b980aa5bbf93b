// What Get functions answer: the length and, with a buffer, the octets.
#pragma once

#include "ka_name.h"

namespace karil {

// Where an answer goes, and what is traced with it: with the octets, and with the length alone.
struct Answer {
    uint8_t *result;
    uint32_t *length;
    const char *words;
    const char *lengthWords;
};

[[nodiscard]] Status answerOctets(const Answer &answer, Bytes value);
// Octets that are there only with their flag; without it nothing is stored.
[[nodiscard]] Status answerIf(bool isThere, const Answer &answer, Bytes value);
// Octets that cannot be asked for without a buffer.
[[nodiscard]] Status answerIntoBuffer(const Answer &answer, Bytes value);
// The octets of one field with the length of another, followed by zeros if it is longer.
[[nodiscard]] Status answerWithLengthOf(const Anybuf &other, const Answer &answer, const Anybuf &octets);
// The first attribute of the kind; nothing is stored if there is none.
[[nodiscard]] Status answerName(const NameRecord &head, uint32_t kind, const Answer &answer);
// All organizational units, joined by ",OU=". They cannot be asked for without a buffer.
[[nodiscard]] Status answerUnits(const NameRecord &head, const Answer &answer);
// The text of KI_GetDN, which is kept in `cache`.
[[nodiscard]] Status answerText(Anybuf &cache, const NameRecord &head, const Answer &answer);

// The same without a trace.
void handOut(const Anybuf &source, uint8_t *result, uint32_t *resultLength);

} // namespace karil
