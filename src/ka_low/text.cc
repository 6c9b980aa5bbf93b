#include "cp936.h"
#include "ka_low.h"

#include <errno.h>
#include <iconv.h>
#include <string.h>

using namespace karil;

namespace {

constexpr size_t WideArea = 2048;
constexpr size_t NarrowArea = 1024;

// What stands for octets that the converter cannot take.
struct Mend {
    size_t passed;
    uint8_t octets[3];
    size_t size;
};

Mend mendPair(Bytes rest) {
    if (rest.size() < 2 || rest[0] < 0x81 || rest[0] == 0xFF)
        return {1, {0, '?'}, 2};
    const uint32_t code = privateOfPair(rest[0], rest[1]);
    if (code == 0)
        return {2, {0, '?'}, 2};
    return {2, {static_cast<uint8_t>(code >> 8), static_cast<uint8_t>(code)}, 2};
}

Mend mendUnit(Bytes rest) {
    const uint32_t pair = pairOfPrivate(uint32_t{rest[0]} << 8 | rest[1]);
    if (pair == 0)
        return {2, {'?'}, 1};
    return {2, {static_cast<uint8_t>(pair >> 8), static_cast<uint8_t>(pair)}, 2};
}

// A lone surrogate becomes U+FFFD.
Mend mendSurrogate(Bytes) {
    return {2, {0xEF, 0xBF, 0xBD}, 3};
}

// The octets of a broken sequence that belong together: its maximal subpart (Unicode 3.9, table 3-7).
size_t brokenSequence(Bytes rest) {
    const uint8_t lead = rest[0];
    if (lead < 0xC2 || lead > 0xF4)
        return 1;
    const size_t whole = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    uint8_t low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    uint8_t high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    size_t size = 1;
    while (size < whole && size < rest.size() && rest[size] >= low && rest[size] <= high) {
        low = 0x80;
        high = 0xBF;
        ++size;
    }
    return size;
}

Mend mendSequence(Bytes rest) {
    return {brokenSequence(rest), {0xFF, 0xFD}, 2};
}

// One direction of conversion. BMP text is on the side that is not narrow.
struct Route {
    const char *from;
    const char *to;
    bool fromBmp;
    int32_t limit;
    const char *limitWords; // null: refused without a trace
    Mend (*mend)(Bytes rest);
    bool composes;
    const char *words; // of a failed conversion
};
constexpr Route ChineseToBmp = {"CP936", "UTF-16BE", false, 1024,
                                nullptr, mendPair,   false, "------>MultiByteToWideChar"};
constexpr Route BmpToChinese = {"UTF-16BE", "CP936", true, 2048, nullptr, mendUnit, true, "------>WideCharToMultiByte"};
constexpr Route BmpToUtf8 = {"UTF-16BE",
                             "UTF-8",
                             true,
                             2048,
                             "------>KI_BmpString2UTF8函数输入长度太长",
                             mendSurrogate,
                             false,
                             "------>WideCharToMultiByte函数失败"};
constexpr Route Utf8ToBmp = {"UTF-8",
                             "UTF-16BE",
                             false,
                             1024,
                             "------>KI_UTF82BmpString函数输入长度太长",
                             mendSequence,
                             false,
                             "------>MultiByteToWideChar函数失败"};

class Converter {
public:
    explicit Converter(const Route &route) : descriptor(iconv_open(route.to, route.from)) {}
    ~Converter() {
        if (isOpen())
            iconv_close(descriptor);
    }
    Converter(const Converter &) = delete;
    Converter &operator=(const Converter &) = delete;
    bool isOpen() const { return reinterpret_cast<intptr_t>(descriptor) != -1; }

    // Converts as far as it goes; false where the area is full.
    bool run(Bytes &rest, std::span<uint8_t> &area) {
        char *in = reinterpret_cast<char *>(const_cast<uint8_t *>(rest.data()));
        char *out = reinterpret_cast<char *>(area.data());
        size_t inLeft = rest.size();
        size_t outLeft = area.size();
        const bool stopped = iconv(descriptor, &in, &inLeft, &out, &outLeft) == static_cast<size_t>(-1);
        const bool isFull = stopped && errno == E2BIG;
        rest = rest.last(inLeft);
        area = area.last(outLeft);
        return !isFull;
    }

private:
    iconv_t descriptor;
};

// Puts composed letters in the place of a base letter and its combining marks.
Bytes compose(Bytes text, std::span<uint8_t, WideArea> area) {
    size_t size = 0;
    for (size_t at = 0; at < text.size(); at += 2) {
        const uint32_t unit = uint32_t{text[at]} << 8 | text[at + 1];
        const uint32_t letter = size == 0 ? 0 : composed(uint32_t{area[size - 2]} << 8 | area[size - 1], unit);
        size -= letter != 0 ? 2 : 0;
        const uint32_t stored = letter != 0 ? letter : unit;
        area[size++] = static_cast<uint8_t>(stored >> 8);
        area[size++] = static_cast<uint8_t>(stored);
    }
    return area.first(size);
}

bool isAscii(Bytes text, bool isBmp) {
    uint8_t odd = 0;
    uint8_t even = 0;
    for (size_t at = 1; at < text.size(); at += 2) {
        even |= text[at - 1];
        odd |= text[at];
    }
    if (text.size() % 2 != 0)
        even |= text.back();
    return odd < 0x80 && even < (isBmp ? 1 : 0x80);
}

// ASCII is the same in all three encodings but for the octet in front. Gives the octets written, 0 for none or too
// many.
size_t copyAscii(Bytes text, bool isBmp, std::span<uint8_t> area) {
    const size_t size = isBmp ? text.size() / 2 : text.size() * 2;
    if (size > area.size())
        return 0;
    for (size_t at = 0; at < size; ++at)
        area[at] = isBmp ? text[2 * at + 1] : at % 2 == 0 ? uint8_t{0} : text[at / 2];
    return size;
}

size_t transcode(const Route &route, Bytes rest, std::span<uint8_t> area) {
    Converter converter(route);
    if (!converter.isOpen())
        return 0;
    const size_t whole = area.size();
    for (;;) {
        if (!converter.run(rest, area))
            return 0;
        if (rest.empty())
            return whole - area.size();
        const Mend mend = route.mend(rest);
        if (mend.size > area.size())
            return 0;
        memcpy(area.data(), mend.octets, mend.size);
        area = area.subspan(mend.size);
        rest = rest.subspan(mend.passed);
    }
}

size_t convertText(const Route &route, Bytes text, std::span<uint8_t> area) {
    if (isAscii(text, route.fromBmp))
        return copyAscii(text, route.fromBmp, area);
    uint8_t wide[WideArea];
    return transcode(route, route.composes ? compose(text, wide) : text, area);
}

// Text that is all ASCII, is not empty and fits every area. False leaves the outputs as they were.
bool copyPlain(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength) {
    if (source == nullptr || resultLength == nullptr || length < 1 || length > static_cast<int32_t>(NarrowArea))
        return false;
    const auto size = static_cast<size_t>(length);
    if (!isAscii({source, size}, false))
        return false;
    *resultLength = static_cast<uint32_t>(size);
    if (result != nullptr)
        memcpy(result, source, size);
    return true;
}

Status convert(const Route &route, const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength) {
    if (resultLength == nullptr || (source == nullptr && length > 0))
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    if (length > route.limit)
        return route.limitWords != nullptr ? KA_FAIL(KACERT_InvalidLengthErr, route.limitWords)
                                           : Status{KACERT_InvalidLengthErr};
    const size_t octets = length < 0 ? 0 : static_cast<size_t>(length);
    uint8_t area[WideArea];
    const size_t size = convertText(route, {source, route.fromBmp ? octets & ~size_t{1} : octets},
                                    {area, route.fromBmp ? NarrowArea : WideArea});
    if (size < 1)
        return KA_FAIL(KACERT_Ok, route.words);
    *resultLength = static_cast<uint32_t>(size);
    if (result != nullptr)
        memcpy(result, area, size);
    return KACERT_Ok;
}

} // namespace

int32_t KI_Chinese2BmpString(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KI_Chinese2BmpString", convert(ChineseToBmp, source, length, result, resultLength));
}

int32_t KI_BmpString2Chinese(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KI_BmpString2Chinese", convert(BmpToChinese, source, length, result, resultLength));
}

int32_t KI_BmpString2UTF8(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KI_BmpString2UTF8", convert(BmpToUtf8, source, length, result, resultLength));
}

int32_t KI_UTF82BmpString(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KI_UTF82BmpString", convert(Utf8ToBmp, source, length, result, resultLength));
}

// Two steps by way of BMP text. ASCII is the same at both ends and needs neither.
int32_t KI_Chinese2UTF8String(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength) {
    KA_FRAME("KI_Chinese2UTF8String");
    if (copyPlain(source, length, result, resultLength))
        return KA_DONE();
    uint8_t bmp[WideArea];
    uint32_t bmpLength = 0;
    KA_STEP_AS("------>MKI_Chinese2BmpString函数失败", KI_Chinese2BmpString(source, length, bmp, &bmpLength));
    KA_STEP_AS("------>KI_BmpString2UTF8函数失败",
               KI_BmpString2UTF8(bmp, static_cast<int32_t>(bmpLength), result, resultLength));
    return KA_DONE();
}

int32_t KI_UTF8String2Chinese(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength) {
    KA_FRAME("KI_UTF8String2Chinese");
    if (copyPlain(source, length, result, resultLength))
        return KA_DONE();
    uint8_t bmp[WideArea];
    uint32_t bmpLength = 0;
    KA_STEP_AS("------>KI_UTF82BmpString函数失败", KI_UTF82BmpString(source, length, bmp, &bmpLength));
    KA_STEP_AS("------>KI_BmpString2Chinese函数失败",
               KI_BmpString2Chinese(bmp, static_cast<int32_t>(bmpLength), result, resultLength));
    return KA_DONE();
}
