#include "ka_name.h"

namespace karil {

Status Converted::from(Conversion convert, Bytes text) {
    size = 0;
    if (text.size() > INT32_MAX)
        return KACERT_InvalidLengthErr;
    return convert(text.data(), static_cast<int32_t>(text.size()), octets, &size);
}

Status storeConverted(Conversion convert, const Element &text, uint32_t tag, Anybuf &out) {
    Converted converted;
    KA_PASS(converted.from(convert, text.bytes));
    const bool isSame = text.isKept && text.present() && equal(text.bytes, converted.bytes());
    return store(out, {tag, isSame ? text.bytes : converted.bytes(), isSame});
}

// UTF8String
Status writeUtf8(Writer &out, Bytes text) {
    Converted utf8;
    KA_STEP_AS("------>KI_Chinese2UTF8String", utf8.from(KI_Chinese2UTF8String, text));
    out.element(TagUtf8String, utf8.bytes());
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KI_EnCodeUtf8(const uint8_t *text, int32_t length, Anybuf **out) {
    KA_FRAME("KI_EnCodeUtf8");
    if (text == nullptr || length < 0 || out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Writer utf8(0);
    KA_PASS(writeUtf8(utf8, {text, static_cast<size_t>(length)}));
    KA_STEP_AS("------>KAsn1_WriteUTF8String", utf8.moveTo(out));
    return KA_DONE();
}
