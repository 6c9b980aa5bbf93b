#include "cp936_table.h"
#include "ka_low.h"

#include <algorithm>
#include <string.h>

using namespace karil;

namespace {

constexpr size_t WideLimit = 2048;
// Room for every result of a source within its limit, so that the conversions below need not look at what is left:
// a unit becomes three octets at most, an octet of a narrow text becomes two.
constexpr size_t Room = WideLimit / 2 * 3;
static_assert(Room >= NarrowLimit * 2);
constexpr uint32_t Replacement = 0xFFFD;

uint32_t unitAt(const uint8_t *at) {
    return uint32_t{at[0]} << 8 | at[1];
}

uint8_t *putUnit(uint8_t *out, uint32_t unit) {
    *out++ = static_cast<uint8_t>(unit >> 8);
    *out++ = static_cast<uint8_t>(unit);
    return out;
}

uint8_t *chineseToBmp(Bytes source, uint8_t *out) {
    for (size_t at = 0; at < source.size();) {
        const uint8_t lead = source[at++];
        uint32_t unit = OctetUnits[lead];
        if (lead > 0x80 && lead < 0xFF && at < source.size()) {
            const uint8_t trail = source[at++];
            unit = trail < 0x40 ? '?' : PairUnits[lead - 0x81][trail - 0x40];
        }
        out = putUnit(out, unit);
    }
    return out;
}

// The letter that `base` and `mark` make together, or 0.
uint32_t composed(uint32_t base, uint32_t mark) {
    const Composition *end = Compositions + CompositionCount;
    const Composition *found = std::lower_bound(Compositions, end, mark << 16 | base, [](auto &row, uint32_t key) {
        return (uint32_t{row.mark} << 16 | row.base) < key;
    });
    return found != end && found->mark == mark && found->base == base ? found->letter : 0;
}

uint32_t octetsOf(uint32_t unit) {
    return UnitOctets[UnitPages[unit >> 8]][unit & 0xFF];
}

uint8_t *bmpToChinese(Bytes source, uint8_t *out) {
    uint32_t last = 0;
    uint8_t *lastOut = out;
    for (size_t at = 0; at + 1 < source.size(); at += 2) {
        uint32_t unit = unitAt(&source[at]);
        uint32_t octets = octetsOf(unit);
        if (octets == '?')
            // A composed letter takes the place of its base, and may take a further mark.
            if (const uint32_t letter = composed(last, unit); letter != 0) {
                unit = letter;
                octets = octetsOf(letter);
                out = lastOut;
            }
        last = unit;
        lastOut = out;
        if (octets > 0xFF)
            *out++ = static_cast<uint8_t>(octets >> 8);
        *out++ = static_cast<uint8_t>(octets);
    }
    return out;
}

uint8_t *putUtf8(uint8_t *out, uint32_t code) {
    constexpr uint8_t Leads[] = {0, 0xC0, 0xE0, 0xF0};
    const uint32_t more = code < 0x80 ? 0 : code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    *out++ = static_cast<uint8_t>(Leads[more] | code >> (6 * more));
    for (uint32_t left = more; left > 0; --left)
        *out++ = static_cast<uint8_t>(0x80 | (code >> (6 * (left - 1)) & 0x3F));
    return out;
}

uint8_t *bmpToUtf8(Bytes source, uint8_t *out) {
    for (size_t at = 0; at + 1 < source.size(); at += 2) {
        uint32_t code = unitAt(&source[at]);
        if (code >= 0xD800 && code < 0xE000) {
            const uint32_t low = code < 0xDC00 && at + 3 < source.size() ? unitAt(&source[at + 2]) : 0;
            if (low >= 0xDC00 && low < 0xE000) {
                code = 0x10000 + ((code - 0xD800) << 10 | (low - 0xDC00));
                at += 2;
            } else {
                code = Replacement;
            }
        }
        out = putUtf8(out, code);
    }
    return out;
}

// Takes one sequence, or the octets of a broken one that belong together: its maximal subpart (Unicode 3.9, table
// 3-7), which becomes one U+FFFD.
uint32_t takeSequence(Bytes source, size_t &at) {
    const uint8_t lead = source[at++];
    if (lead < 0x80)
        return lead;
    // Most are of three octets, as those of Chinese characters are.
    if (lead > 0xE0 && lead < 0xED && at + 1 < source.size() && (source[at] & 0xC0) == 0x80 &&
        (source[at + 1] & 0xC0) == 0x80) {
        at += 2;
        return (lead & 0x0Fu) << 12 | (source[at - 2] & 0x3Fu) << 6 | (source[at - 1] & 0x3Fu);
    }
    if (lead < 0xC2 || lead > 0xF4)
        return Replacement;
    uint32_t more = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    uint8_t low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    uint8_t high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    uint32_t code = lead & (0x3Fu >> more);
    for (; more > 0; --more) {
        if (at >= source.size() || source[at] < low || source[at] > high)
            return Replacement;
        code = code << 6 | (source[at++] & 0x3F);
        low = 0x80;
        high = 0xBF;
    }
    return code;
}

uint8_t *utf8ToBmp(Bytes source, uint8_t *out) {
    for (size_t at = 0; at < source.size();) {
        const uint32_t code = takeSequence(source, at);
        if (code < 0x10000) {
            out = putUnit(out, code);
        } else {
            out = putUnit(out, 0xD800 + ((code - 0x10000) >> 10));
            out = putUnit(out, 0xDC00 + (code & 0x3FF));
        }
    }
    return out;
}

struct Route {
    uint8_t *(*convert)(Bytes source, uint8_t *out); // returns where the result ends
    int32_t sourceLimit;
    size_t resultLimit;
    const char *limitWords; // null: refused without a trace
    const char *words;      // of a failed conversion
};
constexpr Route ChineseToBmp = {chineseToBmp, NarrowLimit, WideLimit, nullptr, "------>MultiByteToWideChar"};
constexpr Route BmpToChinese = {bmpToChinese, WideLimit, NarrowLimit, nullptr, "------>WideCharToMultiByte"};
constexpr Route BmpToUtf8 = {bmpToUtf8, WideLimit, NarrowLimit, "------>KI_BmpString2UTF8函数输入长度太长",
                             "------>WideCharToMultiByte函数失败"};
constexpr Route Utf8ToBmp = {utf8ToBmp, NarrowLimit, WideLimit, "------>KI_UTF82BmpString函数输入长度太长",
                             "------>MultiByteToWideChar函数失败"};

Status convert(const Route &route, const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength) {
    if (resultLength == nullptr || (source == nullptr && length > 0))
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    if (length > route.sourceLimit)
        return route.limitWords != nullptr ? KA_FAIL(KACERT_InvalidLengthErr, route.limitWords)
                                           : Status{KACERT_InvalidLengthErr};
    uint8_t area[Room];
    const uint8_t *end = route.convert({source, length < 0 ? 0 : static_cast<size_t>(length)}, area);
    const auto size = static_cast<size_t>(end - area);
    if (size < 1 || size > route.resultLimit)
        return KA_FAIL(KACERT_Ok, route.words);
    *resultLength = static_cast<uint32_t>(size);
    if (result != nullptr)
        memcpy(result, area, size);
    return KACERT_Ok;
}

// False if the text needs a conversion, with the outputs as they were.
bool copyPlain(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength) {
    if (source == nullptr || resultLength == nullptr || length < 1)
        return false;
    const Bytes text(source, static_cast<size_t>(length));
    if (!isPlainText(text))
        return false;
    *resultLength = static_cast<uint32_t>(length);
    if (result != nullptr)
        memcpy(result, source, text.size());
    return true;
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
    uint8_t bmp[WideLimit];
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
    uint8_t bmp[WideLimit];
    uint32_t bmpLength = 0;
    KA_STEP_AS("------>KI_UTF82BmpString函数失败", KI_UTF82BmpString(source, length, bmp, &bmpLength));
    KA_STEP_AS("------>KI_BmpString2Chinese函数失败",
               KI_BmpString2Chinese(bmp, static_cast<int32_t>(bmpLength), result, resultLength));
    return KA_DONE();
}
