#include "ka_name.h"

#include <string.h>

namespace karil {

// What the conversions of text.h give at the most.
static constexpr size_t LongestText = 2048;

Status convertText(Conversion convert, const Element &text, uint32_t tag, Anybuf &out) {
    if (text.bytes.size() > INT32_MAX)
        return KACERT_InvalidLengthErr;
    uint8_t converted[LongestText];
    uint32_t size = 0;
    KA_PASS(convert(text.bytes.data(), static_cast<int32_t>(text.bytes.size()), converted, &size));
    if (text.isKept && text.present() && equal(text.bytes, {converted, size}))
        return store(out, {tag, text.bytes, true});
    Owned<uint8_t> data = KA_BLOCK(size);
    if (data == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    memcpy(data.get(), converted, size);
    freeData(out);
    out = {data.release(), size, 0, 2, tag, nullptr, nullptr};
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KI_EnCodeUtf8(const uint8_t *text, int32_t length, Anybuf **out) {
    KA_FRAME("KI_EnCodeUtf8");
    if (text == nullptr || length < 0 || out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Scratch utf8;
    KA_STEP_AS("------>KI_Chinese2UTF8String",
               convertText(KI_Chinese2UTF8String, Element{0, {text, static_cast<size_t>(length)}}, TagUtf8String,
                           utf8.record));
    KA_STEP(KAsn1_WriteUTF8String(&utf8.record, out));
    return KA_DONE();
}
