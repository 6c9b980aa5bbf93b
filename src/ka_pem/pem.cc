#include "ka_pem.h"

#include <string.h>

using namespace karil;

namespace {

constexpr size_t LineLength = 64;
constexpr size_t Hyphens = 5;

Owned<uint8_t> workArea(uint64_t size) {
    if (size > UINT32_MAX)
        return nullptr;
    return Owned<uint8_t>(static_cast<uint8_t *>(KAPR_Malloc(KA_SOURCE, __LINE__, static_cast<uint32_t>(size))));
}

uint8_t *putLine(uint8_t *at, const void *line, size_t size) {
    memcpy(at, line, size);
    at[size] = '\r';
    at[size + 1] = '\n';
    return at + size + 2;
}

uint8_t *putLabel(uint8_t *at, const char *label) {
    return *label != '\0' ? putLine(at, label, strlen(label)) : at;
}

// Goes to the next hyphen. False where there is none.
bool goToHyphen(Bytes &text) {
    const void *found = text.empty() ? nullptr : memchr(text.data(), '-', text.size());
    if (found == nullptr)
        return false;
    text = text.subspan(static_cast<size_t>(static_cast<const uint8_t *>(found) - text.data()));
    return true;
}

// Goes over a row of hyphens. False where the text ends within.
bool skipHyphens(Bytes &text) {
    if (text.size() < Hyphens)
        return false;
    text = text.subspan(Hyphens);
    return true;
}

// What stands between the labels, or all where there is no label.
bool findBody(Bytes text, Bytes &body) {
    body = text;
    if (!goToHyphen(text))
        return true;
    if (!skipHyphens(text) || !goToHyphen(text) || !skipHyphens(text))
        return false;
    body = text;
    if (!goToHyphen(text))
        return false;
    body = body.first(body.size() - text.size());
    return true;
}

// The body without line ends, up to a zero.
Bytes joinLines(Bytes body, uint8_t *area) {
    uint8_t *at = area;
    for (const uint8_t c : body) {
        if (c == 0)
            break;
        if (c != '\r' && c != '\n')
            *at++ = c;
    }
    return {area, static_cast<size_t>(at - area)};
}

} // namespace

int32_t DER2PEM_data_format(const uint8_t *der, int32_t length, uint8_t *pem, uint32_t *pemLength, const char *header,
                            const char *footer) {
    if (length < 0 || pemLength == nullptr)
        return -1;
    if (length == 0) {
        *pemLength = 0;
        return 0;
    }
    if (der == nullptr || pem == nullptr || header == nullptr || footer == nullptr)
        return -1;
    const Bytes octets(der, static_cast<size_t>(length));
    const uint64_t size = base64Size(octets.size());
    const Owned<uint8_t> text = workArea(size);
    if (text == nullptr || size + size / LineLength * 2 + strlen(header) + strlen(footer) + 6 > UINT32_MAX)
        return -1;
    writeBase64(octets, text.get());
    uint8_t *at = putLabel(pem, header);
    for (Bytes rest(text.get(), size); !rest.empty();) {
        const size_t line = rest.size() < LineLength ? rest.size() : LineLength;
        at = putLine(at, rest.data(), line);
        rest = rest.subspan(line);
    }
    at = putLabel(at, footer);
    *pemLength = static_cast<uint32_t>(at - pem);
    return 0;
}

int32_t PEM2DER_data_format(const uint8_t *pem, int32_t length, uint8_t *der, uint32_t *derLength) {
    if (length < 0 || derLength == nullptr)
        return -1;
    if (length == 0) {
        *derLength = 0;
        return 0;
    }
    Bytes body;
    if (pem == nullptr || der == nullptr || !findBody({pem, static_cast<size_t>(length)}, body))
        return -1;
    const Owned<uint8_t> text = workArea(body.size());
    if (text == nullptr)
        return -1;
    return readBase64(joinLines(body, text.get()), der, *derLength) ? 0 : -1;
}
