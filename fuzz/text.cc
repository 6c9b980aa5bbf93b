// The six text conversions. The first octet chooses one, the rest is the text.
#include "fuzz.h"

#include <optional>

using namespace karil_fuzz;

namespace {

enum class Form { Local, Bmp, Utf8 };

struct Direction {
    int32_t (*convert)(const uint8_t *, int32_t, uint8_t *, uint32_t *);
    Form from;
    Form to;
};
constexpr Direction Directions[] = {
    {KI_Chinese2BmpString, Form::Local, Form::Bmp},   {KI_BmpString2Chinese, Form::Bmp, Form::Local},
    {KI_BmpString2UTF8, Form::Bmp, Form::Utf8},       {KI_UTF82BmpString, Form::Utf8, Form::Bmp},
    {KI_Chinese2UTF8String, Form::Local, Form::Utf8}, {KI_UTF8String2Chinese, Form::Utf8, Form::Local},
};
constexpr size_t areaOf(Form form) {
    return form == Form::Bmp ? 2048 : 1024;
}

bool isContinuation(Bytes text, size_t at) {
    return at < text.size() && text[at] >= 0x80 && text[at] <= 0xBF;
}

// The octets of the first character (Unicode 3.9, table 3-7), 0 for none.
size_t utf8Character(Bytes text) {
    const uint8_t lead = text[0];
    if (lead < 0x80)
        return 1;
    const size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    for (size_t at = 1; at < size; ++at)
        if (!isContinuation(text, at))
            return 0;
    const uint8_t low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const uint8_t high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    return lead >= 0xC2 && lead <= 0xF4 && text[1] >= low && text[1] <= high ? size : 0;
}

void checkUtf8(Bytes text) {
    while (!text.empty()) {
        const size_t size = utf8Character(text);
        must(size != 0, "UTF-8 comes out well-formed");
        text = text.subspan(size);
    }
}

// None of the converters into BMP text may leave a surrogate without its partner.
void checkBmp(Bytes text) {
    must(text.size() % 2 == 0, "BMP text has two octets a unit");
    bool isHigh = false;
    for (size_t at = 0; at < text.size(); at += 2) {
        const uint8_t kind = text[at] & 0xFC;
        must(isHigh == (kind == 0xDC), "surrogates come in pairs");
        isHigh = kind == 0xD8;
    }
    must(!isHigh, "the last surrogate has its partner");
}

// What a conversion gives; nothing where it leaves the outputs as they were.
std::optional<Octets> convert(const Direction &direction, Bytes text) {
    const Area source(text);
    constexpr uint32_t Untouched = 0xA5A5A5A5;
    uint32_t size = Untouched;
    const int32_t status = direction.convert(source.data(), lengthOf(text), nullptr, &size);
    must(status == (text.size() > areaOf(direction.from) ? KACERT_InvalidLengthErr : KACERT_Ok),
         "only a source above the limit is refused");
    if (size == Untouched)
        return std::nullopt;
    must(size >= 1 && size <= areaOf(direction.to), "the result has its area's size at the most");
    const Area result(size);
    uint32_t again = Untouched;
    must(direction.convert(source.data(), lengthOf(text), result.data(), &again) == KACERT_Ok && again == size,
         "asking and converting agree");
    if (direction.to == Form::Utf8)
        checkUtf8(result.bytes());
    if (direction.to == Form::Bmp)
        checkBmp(result.bytes());
    return Octets(result.bytes().begin(), result.bytes().end());
}

using Pair = const Direction *[2];
constexpr Pair LocalPair = {&Directions[0], &Directions[1]};
constexpr Pair Utf8Pair = {&Directions[3], &Directions[2]};

// To BMP text and back; nothing where a step gives nothing.
std::optional<Octets> pass(const Pair &pair, Bytes text) {
    const std::optional<Octets> middle = convert(*pair[0], text);
    return middle ? convert(*pair[1], *middle) : std::nullopt;
}

void checkStable(const Pair &pair, Bytes text) {
    const std::optional<Octets> once = pass(pair, text);
    must(once && equal(*once, text), "what a converter made comes back as it was");
}

void checkRoundTrip(const Pair &pair, Bytes text) {
    const std::optional<Octets> once = pass(pair, text);
    const bool isAscii = std::all_of(text.begin(), text.end(), [](uint8_t c) { return c < 0x80; });
    if (isAscii && !text.empty() && text.size() <= 1024)
        must(once && equal(*once, text), "ASCII comes back as it was");
    if (once)
        checkStable(pair, *once);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input{{data, size}};
    const Direction &direction = Directions[input.octet() % std::size(Directions)];
    const std::optional<Octets> result = convert(direction, input.rest);
    if (result && direction.to != Form::Bmp)
        checkStable(direction.to == Form::Local ? LocalPair : Utf8Pair, *result);
    if (direction.from != Form::Bmp)
        checkRoundTrip(direction.from == Form::Local ? LocalPair : Utf8Pair, input.rest);
    return 0;
}
