#include "ka_pem.h"

#include <algorithm>

namespace karil {

bool split(Bytes text, uint8_t octet, Bytes &front, Bytes &after) {
    const auto *at = text.empty() ? nullptr : static_cast<const uint8_t *>(memchr(text.data(), octet, text.size()));
    if (at == nullptr)
        return false;
    front = text.first(static_cast<size_t>(at - text.data()));
    after = text.subspan(front.size() + 1);
    return true;
}

} // namespace karil

using namespace karil;

namespace {

constexpr size_t LineSize = 64;
constexpr size_t DashesSize = 5;

uint8_t *putLine(uint8_t *at, Bytes line) {
    memcpy(at, line.data(), line.size());
    at[line.size()] = '\r';
    at[line.size() + 1] = '\n';
    return at + line.size() + 2;
}

uint64_t lineSize(Bytes line) {
    return line.empty() ? 0 : line.size() + 2;
}

// Passes over the next five octets that start with a hyphen.
bool passDashes(Bytes &text) {
    Bytes front;
    Bytes after;
    if (!split(text, '-', front, after))
        return false;
    text = after.subspan(std::min(DashesSize - 1, after.size()));
    return true;
}

// What stands between header and footer, or all of a text without a hyphen.
bool findBody(Bytes text, Bytes &body) {
    Bytes after = text;
    body = text;
    if (!passDashes(after))
        return true;
    return passDashes(after) && split(after, '-', body, after);
}

// Copies text without `end`, each part by `copy`.
template <class Copy> uint8_t *copyParts(Bytes text, uint8_t end, uint8_t *at, Copy copy) {
    Bytes part;
    Bytes after;
    for (; split(text, end, part, after); text = after)
        at = copy(part, at);
    return copy(text, at);
}

uint8_t *copyAll(Bytes text, uint8_t *at) {
    if (!text.empty())
        memcpy(at, text.data(), text.size());
    return at + text.size();
}

uint8_t *copyLines(Bytes text, uint8_t *at) {
    return copyParts(text, '\n', at, copyAll);
}

// Copies the body without its line ends, as far as a zero octet.
Bytes copyBody(Bytes body, uint8_t *area) {
    Bytes after;
    split(body, 0, body, after);
    return {area, copyParts(body, '\r', area, copyLines)};
}

} // namespace

int32_t DER2PEM_data_format(const uint8_t *der, uint32_t length, uint8_t *output, uint32_t *outputLength,
                            const char *header, const char *footer) {
    if (outputLength == nullptr)
        return Refused;
    if (length == 0) {
        *outputLength = 0;
        return KACERT_Ok;
    }
    if (der == nullptr || output == nullptr || header == nullptr || footer == nullptr)
        return Refused;
    const Bytes first = bytesOf(header);
    const Bytes last = bytesOf(footer);
    const uint64_t size = encodedSize(length);
    if (lineSize(first) + size + (size + LineSize - 1) / LineSize * 2 + lineSize(last) > UINT32_MAX)
        return Refused;
    const Owned<uint8_t> area = KA_BLOCK(size + 1);
    if (area == nullptr || base64_encode(der, length, area.get()) != KACERT_Ok)
        return Refused;
    uint8_t *at = first.empty() ? output : putLine(output, first);
    for (Bytes rest(area.get(), static_cast<size_t>(size)); !rest.empty();
         rest = rest.subspan(std::min(LineSize, rest.size())))
        at = putLine(at, rest.first(std::min(LineSize, rest.size())));
    at = last.empty() ? at : putLine(at, last);
    *outputLength = static_cast<uint32_t>(at - output);
    return KACERT_Ok;
}

int32_t PEM2DER_data_format(const uint8_t *pem, uint32_t length, uint8_t *output, uint32_t *outputLength) {
    if (outputLength == nullptr)
        return Refused;
    if (length == 0) {
        *outputLength = 0;
        return KACERT_Ok;
    }
    Bytes body;
    if (pem == nullptr || output == nullptr || !findBody({pem, length}, body))
        return Refused;
    const Owned<uint8_t> area = KA_BLOCK(uint64_t{body.size()} + 1);
    if (area == nullptr)
        return Refused;
    return decodeBase64(copyBody(body, area.get()), output, outputLength);
}
