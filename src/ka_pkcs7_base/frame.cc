// The ContentInfo frame, DigestInfo, and the calls on any content type.
#include "ka_pkcs7_base.h"

namespace karil {

namespace {

constexpr uint8_t ContentTypes[][ContentTypeSize] = {
    {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x01}, {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x02},
    {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x03}, {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x04},
    {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x05}, {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x06},
};

// What a caller's buffer for an identifier holds: a frame with a longer one is refused by all that split it.
constexpr uint32_t LongestOid = 20;

// Takes a value with its length, which may not be negative.
Status takeValue(const void *value, int32_t length) {
    if (length < 0)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    return length > 0 ? checkArguments({value}) : KACERT_Ok;
}

Status makeContentToSequence(const Anybuf *content, const uint8_t *oid, int32_t oidLength, Anybuf **out,
                             uint32_t number) {
    KA_PASS(checkArguments({out}));
    KA_PASS(takeValue(oid, oidLength));
    const uint64_t size = sizeOfElements(content);
    Writer whole(0);
    whole.reserve(size + static_cast<uint32_t>(oidLength) + 32);
    {
        const ContentFrame frame(whole, {oid, static_cast<size_t>(oidLength)}, size, number);
        for (const Anybuf *node = content; node != nullptr; node = node->next)
            whole.octets(bytesOf(*node));
    }
    KA_STEP_AS("------>KAsn1_WriteSequence", whole.moveTo(out));
    return KACERT_Ok;
}

// The content's elements as heap nodes.
Status copyContent(const ContentInfo &info, Chain &chain) {
    if (info.number == PKCS7_NO_CONTENT)
        return KACERT_Ok;
    if (!info.tagged.constructed)
        return newNode(info.tagged.content, chain.slot());
    Anybuf *last = nullptr;
    for (Level level = info.tagged.level; !level.empty();) {
        Anybuf **slot = chain.slot();
        KA_PASS(newNode(level.take(), slot));
        (*slot)->prev = last;
        last = *slot;
    }
    return KACERT_Ok;
}

Status splitContentInfo(const uint8_t *der, int32_t length, ContentInfo &info) {
    Element whole;
    KA_STEP_AS("------>KAsn1_GetCertLength", takeWhole(der, length, whole));
    return readContentInfo(whole, info);
}

Status makeSequenceToContent(const uint8_t *der, int32_t length, Anybuf **content, uint8_t *oid, uint32_t *oidLength,
                             uint32_t *number) {
    KA_PASS(checkArguments({der, content, oid, oidLength, number}));
    ContentInfo info;
    KA_PASS(splitContentInfo(der, length, info));
    Chain chain;
    KA_STEP_AS("------>KAsn1_ReadImplicit", copyContent(info, chain));
    if (!info.oid.empty())
        memcpy(oid, info.oid.data(), info.oid.size());
    *oidLength = static_cast<uint32_t>(info.oid.size());
    *number = info.number;
    chain.moveTo(content);
    return KACERT_Ok;
}

Status makeDigestInfo(const AlgorithmRecord *algorithm, const uint8_t *digest, int32_t digestLength, uint8_t *out,
                      uint32_t *outLength) {
    KA_PASS(checkArguments({algorithm, out, outLength}));
    KA_PASS(takeValue(digest, digestLength));
    Writer info(DigestInfoBound);
    KA_PASS(writeDigestInfo(info, bytesOf(algorithm->oid), {digest, static_cast<size_t>(digestLength)}));
    return handOut(info, out, outLength);
}

Status encodeTypeData(const uint8_t *der, int32_t length, int32_t type) {
    if (type < PKCS7_TYPE_DATA || type > PKCS7_TYPE_ENCRYPTEDDATA)
        return KA_FAIL(KAPKCS7_ContentTypeErr, "------>KAPKCS7_ContentTypeErr");
    KA_PASS(takeValue(der, length));
    Scratch copy;
    KA_STEP(KI_SetAttributeCharValue(&copy.record, der, static_cast<uint32_t>(length)));
    return KACERT_Ok;
}

Status decodeTypeData(const uint8_t *der, int32_t length, uint8_t *content, uint32_t *contentLength, int32_t *type) {
    KA_PASS(checkArguments({der, content, contentLength, type}));
    ContentInfo info;
    KA_STEP_AS("------>KI_MakeSequenceToContent", splitContentInfo(der, length, info));
    if (!info.content.present())
        return KA_FAIL(KAPKCS7_ContentTypeErr, "------>KAPKCS7_ContentTypeErr");
    // The octets come last: `content` may be where `der` is.
    *type = contentTypeOf(info.oid);
    *contentLength = static_cast<uint32_t>(info.content.bytes.size());
    memmove(content, info.content.bytes.data(), info.content.bytes.size());
    return KACERT_Ok;
}

} // namespace

Bytes contentTypeOid(int32_t type) {
    return ContentTypes[type - PKCS7_TYPE_DATA];
}

int32_t contentTypeOf(Bytes oid) {
    int32_t type = PKCS7_TYPE_DATA;
    while (type < PKCS7_TYPE_OTHER && !isContentType(oid, type))
        ++type;
    return type;
}

ContentFrame::ContentFrame(Writer &out, Bytes oid, uint64_t expected, uint32_t number)
    : info(out, TagSequence, expected + oid.size() + 16),
      content((out.objectId(oid), out), taggedSet(number), expected) {
}

Status checkBound(const Writer &out, uint32_t start, uint32_t bound) {
    KA_PASS(out.status());
    return out.size() - start <= bound ? KACERT_Ok : KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
}

Status takeWhole(const uint8_t *der, int32_t length, Element &out) {
    if (length < 0)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    auto size = static_cast<uint32_t>(length);
    if (size == 0)
        KA_STEP(KAsn1_GetCertLength(der, &size));
    Bytes rest(der, size);
    return next(rest, out, KACERT_LengthNotEqualErr, "------>KACERT_LengthNotEqualErr");
}

// ContentInfo ::= SEQUENCE { contentType OBJECT IDENTIFIER, content [0] EXPLICIT ANY OPTIONAL }
Status readContentInfo(const Element &whole, ContentInfo &out) {
    Level fields;
    Element oid;
    KA_PASS(readTyped(whole, oid, fields, KACERT_InvalidItemErr));
    if (oid.bytes.size() > LongestOid)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KAsn1_ReadObjectId");
    out = {};
    out.oid = oid.bytes;
    if (fields.empty())
        return KACERT_Ok;
    KA_STEP_AS("------>KAsn1_ReadImplicit", readImplicit(fields.take(), out.tagged));
    out.number = out.tagged.number;
    Level elements = out.tagged.level;
    out.content = out.tagged.constructed ? elements.take() : out.tagged.content;
    return KACERT_Ok;
}

Status writeDigestInfo(Writer &out, Bytes oid, Bytes digest) {
    const uint32_t start = out.size();
    {
        const Construct info(out, TagSequence);
        writeAlgorithm(out, oid);
        out.octetString(digest);
    }
    KA_PASS(out.status());
    return out.size() - start <= DigestInfoBound ? KACERT_Ok
                                                 : KA_FAIL(KACERT_InvalidLengthErr, "------>KI_MakeDigestInfo");
}

} // namespace karil

using namespace karil;

int32_t KI_MakeContentToSequence(const Anybuf *content, const uint8_t *oid, int32_t oidLength, Anybuf **out,
                                 uint32_t number) {
    return KA_FRAMED("KI_MakeContentToSequence", makeContentToSequence(content, oid, oidLength, out, number));
}

int32_t KI_MakeSequenceToContent(const uint8_t *der, int32_t length, Anybuf **content, uint8_t *oid,
                                 uint32_t *oidLength, uint32_t *number) {
    return KA_FRAMED("KI_MakeSequenceToContent", makeSequenceToContent(der, length, content, oid, oidLength, number));
}

int32_t KI_MakeDigestInfo(const AlgorithmRecord *algorithm, const uint8_t *digest, int32_t digestLength, uint8_t *out,
                          uint32_t *outLength) {
    return KA_FRAMED("KI_MakeDigestInfo", makeDigestInfo(algorithm, digest, digestLength, out, outLength));
}

int32_t KA_PKCS7_EncodePKCS7DerTypeData(uint8_t *, uint32_t *, const uint8_t *der, int32_t length, int32_t type) {
    return KA_FRAMED("KA_PKCS7_EncodePKCS7DerTypeData", encodeTypeData(der, length, type));
}

int32_t KA_PKCS7_DecodePKCS7DerTypeData(const uint8_t *der, int32_t length, uint8_t *content, uint32_t *contentLength,
                                        int32_t *type) {
    return KA_FRAMED("KA_PKCS7_DecodePKCS7DerTypeData", decodeTypeData(der, length, content, contentLength, type));
}
