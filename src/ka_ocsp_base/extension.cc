#include "ka_ocsp_base.h"

namespace karil {

void prepareExtensions(OcspExtension &extensions) {
    extensions = {};
    for (AlgorithmRecord *type :
         {&extensions.nonceType, &extensions.crlId.type, &extensions.acceptableType, &extensions.archiveCutoffType,
          &extensions.serviceLocatorType, &extensions.crlEntryType})
        type->id = 1;
}

void freeExtensions(OcspExtension &extensions) {
    for (Anybuf *field : {&extensions.nonceType.oid, &extensions.nonce, &extensions.crlId.type.oid,
                          &extensions.crlId.url, &extensions.acceptableType.oid, &extensions.archiveCutoffType.oid,
                          &extensions.serviceLocatorType.oid, &extensions.crlEntryType.oid})
        freeData(*field);
    freeList(extensions.acceptable);
    freeList(extensions.privates);
    extensions = {};
}

namespace {

Status newAlgorithm(NodePtr<OcspAlgorithmNode> &node) {
    void *record = nullptr;
    KA_PASS(makeRecord(&node, sizeof(OcspAlgorithmNode), record));
    node.reset(static_cast<OcspAlgorithmNode *>(record));
    node->algorithm.id = 1;
    return KACERT_Ok;
}

void addAlgorithm(OcspExtension &extensions, NodePtr<OcspAlgorithmNode> node) {
    append<&OcspAlgorithmNode::next>(extensions.acceptable, extensions.acceptableLast, node.release());
}

// SEQUENCE { OBJECT IDENTIFIER, SEQUENCE OF OBJECT IDENTIFIER }
void writeAcceptable(Writer &out, const OcspExtension &extensions) {
    const Construct extension(out, TagSequence);
    out.objectId(bytesOf(extensions.acceptableType.oid));
    const Construct list(out, TagSequence);
    for (const OcspAlgorithmNode *node = extensions.acceptable; node != nullptr; node = node->next)
        out.objectId(bytesOf(node->algorithm.oid));
}

// SEQUENCE { OBJECT IDENTIFIER, time }
Status writeArchiveCutoff(Writer &out, const OcspExtension &extensions) {
    if (!isGiven(extensions.archiveCutoffType.oid))
        return refuseItem();
    const Construct extension(out, TagSequence);
    out.objectId(bytesOf(extensions.archiveCutoffType.oid));
    LocalClock clock;
    return writeTime(out, extensions.archiveCutoff.isUtc != 0, secondsOf(extensions.archiveCutoff), clock);
}

// SEQUENCE { OBJECT IDENTIFIER, OCTET STRING { [0] EXPLICIT IA5String } }
Status writeCrlId(Writer &out, const OcspCrlId &crlId) {
    if (!isGiven(crlId.type.oid) || crlId.hasUrl == 0)
        return refuseItem();
    const Construct extension(out, TagSequence);
    out.objectId(bytesOf(crlId.type.oid));
    {
        const Construct value(out, TagOctetString);
        const Construct url(out, 0xA0);
        out.element(TagIa5String, bytesOf(crlId.url));
    }
    // A time is not written, but it has to be one.
    if (crlId.hasTime != 0 && crlId.time < 0)
        return KA_FAIL(KACERT_InvalidTimeErr, "------------>KAsn1_WriteGeneralizedTime");
    return out.status();
}

// SEQUENCE { OBJECT IDENTIFIER, OCTET STRING }
Status writeNonce(Writer &out, const OcspExtension &extensions) {
    if (!isGiven(extensions.nonce))
        return refuseItem();
    const Construct extension(out, TagSequence);
    out.objectId(bytesOf(extensions.nonceType.oid));
    out.octetString(bytesOf(extensions.nonce));
    return out.status();
}

// What decoding a CRL id refuses.
constexpr char InvalidCrlId[] = "------------>The input is Invalid Item";

// OCTET STRING { CHOICE { [0] EXPLICIT IA5String, [1] EXPLICIT INTEGER, [2] EXPLICIT time } }
Status readCrlIdValue(const Element &element, OcspCrlId &crlId) {
    Element value;
    KA_STEP_AS("------------>KAsn1_ReadOctetString", readValue(element, value));
    Element content;
    KA_STEP_AS("------------>KAsn1_ReadExplicit Err", readValue(value, content));
    switch (content.tag) {
    case 0xA0: {
        Element url;
        KA_STEP_AS("------------>KAsn1_ReadIa5String", readValue(content, url));
        KA_STEP_AS("------------>KI_CopyAnybuf", store(crlId.url, url));
        crlId.hasUrl = 1;
        return KACERT_Ok;
    }
    case 0xA1:
        KA_STEP_AS("------------>KAsn1_ReadInteger", readInteger(content, crlId.number));
        return KACERT_Ok;
    case 0xA2: // A time is read under the tag of what holds it, which is never a time's.
        return KA_FAIL(KACERT_InvalidTagErr, "------------>KAsn1_ReadUtcTime");
    default:
        return refuseItem(InvalidCrlId);
    }
}

// `fields`: after the identifier.
Status readCrlIdFields(const Element &oid, Level &fields, OcspCrlId &crlId) {
    KA_STEP_AS("------------>KI_CopyAlgorithm", store(crlId.type.oid, oid));
    Element value;
    KA_PASS(takeItem(fields, value, InvalidCrlId));
    return readCrlIdValue(value, crlId);
}

Status readNonce(const Element &oid, Level &fields, OcspExtension &extensions) {
    extensions.hasNonce = 1;
    KA_STEP_AS("------------>KI_CopyAlgorithm", store(extensions.nonceType.oid, oid));
    Element value;
    KA_PASS(takeItem(fields, value));
    return readOctets(value, extensions.nonce);
}

Status readCrlIdExtension(const Element &oid, Level &fields, OcspExtension &extensions) {
    extensions.hasCrlId = 1;
    KA_STEP_AS("------------>KI_DecodeOCSPCrlId", readCrlIdFields(oid, fields, extensions.crlId));
    return KACERT_Ok;
}

// OCTET STRING { SEQUENCE OF OBJECT IDENTIFIER }
Status readAcceptable(const Element &oid, Level &fields, OcspExtension &extensions) {
    extensions.hasAcceptable = 1;
    KA_STEP_AS("------------>KI_CopyAlgorithm", store(extensions.acceptableType.oid, oid));
    Element value;
    KA_PASS(takeItem(fields, value));
    KA_STEP_AS("------------>KAsn1_ReadOctetString", readValue(value, value));
    Level list;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(value, list));
    while (!list.empty()) {
        NodePtr<OcspAlgorithmNode> node;
        KA_PASS(newAlgorithm(node));
        KA_PASS(readOid(list.take(), node->algorithm));
        addAlgorithm(extensions, std::move(node));
    }
    return KACERT_Ok;
}

Status readArchiveCutoff(const Element &oid, Level &fields, OcspExtension &extensions) {
    extensions.hasArchiveCutoff = 1;
    KA_STEP_AS("------------>KI_CopyAlgorithm", store(extensions.archiveCutoffType.oid, oid));
    Element value;
    KA_PASS(takeItem(fields, value));
    KA_STEP_AS("------------>KAsn1_ReadUtcTime", readTimeAlike(value, extensions.archiveCutoff));
    return KACERT_Ok;
}

struct Kind {
    Bytes oid;
    Status (*read)(const Element &oid, Level &fields, OcspExtension &extensions);
};
constexpr Kind Kinds[] = {
    {OidNonce, readNonce},
    {OidCrlId, readCrlIdExtension},
    {OidAcceptable, readAcceptable},
    {OidArchiveCutoff, readArchiveCutoff},
};

// Identifiers are compared over the length of the one that was read, which may be a cut one.
bool matches(Bytes read, Bytes known) {
    return read.size() <= known.size() && equal(read, known.first(read.size()));
}

// Extension ::= SEQUENCE { OBJECT IDENTIFIER, value }
Status readExtension(const Element &element, OcspExtension &extensions) {
    Element oid;
    Level fields;
    KA_PASS(readTyped(element, oid, fields, KACERT_InvalidItemErr, InvalidItem));
    for (const Kind &kind : Kinds)
        if (matches(oid.bytes, kind.oid))
            return kind.read(oid, fields, extensions);
    return KACERT_Ok;
}

} // namespace

Status writeExtensions(Writer &out, const OcspExtension &extensions) {
    const Construct sequence(out, TagSequence);
    if (extensions.hasAcceptable != 0)
        writeAcceptable(out, extensions);
    if (extensions.hasArchiveCutoff != 0)
        KA_PASS(writeArchiveCutoff(out, extensions));
    if (extensions.hasCrlId != 0)
        KA_STEP_AS("------------>KI_EncodeOCSPCrlId", writeCrlId(out, extensions.crlId));
    if (extensions.hasNonce != 0)
        KA_PASS(writeNonce(out, extensions));
    return out.status();
}

Status readExtensions(const Element &element, OcspExtension &extensions) {
    Level list;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(element, list));
    while (!list.empty())
        KA_PASS(readExtension(list.take(), extensions));
    return KACERT_Ok;
}

Status setAcceptable(OcspExtension &extensions, Bytes oid) {
    NodePtr<OcspAlgorithmNode> node;
    KA_PASS(newAlgorithm(node));
    KA_PASS(setOctets(node->algorithm.oid, oid));
    freeList(extensions.acceptable);
    extensions.acceptableLast = nullptr;
    addAlgorithm(extensions, std::move(node));
    return KACERT_Ok;
}

Status addPrivate(OcspExtension &extensions, Bytes oid, Bytes value, uint8_t critical) {
    void *record = nullptr;
    KA_PASS(makeRecord(&extensions, sizeof(OcspPrivateNode), record));
    NodePtr<OcspPrivateNode> node(static_cast<OcspPrivateNode *>(record));
    node->id = 1;
    node->critical = critical;
    KA_PASS(setOctets(node->oid, oid));
    KA_PASS(setOctets(node->value, value));
    append<&OcspPrivateNode::next>(extensions.privates, extensions.privatesLast, node.release());
    ++extensions.privateCount;
    extensions.hasPrivate = 1;
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KI_InitOCSPExtension(OcspExtension *extensions) {
    KA_FRAME("KI_InitOCSPExtension");
    KA_PASS(checkItems({extensions}));
    prepareExtensions(*extensions);
    return KA_DONE();
}

int32_t KI_FreeOCSPExtension(OcspExtension *extensions) {
    KA_FRAME("KI_FreeOCSPExtension");
    if (extensions == nullptr)
        return KACERT_InvalidItemErr;
    freeExtensions(*extensions);
    return KA_DONE();
}

int32_t KI_EncodeOCSPExtension(const OcspExtension *extensions, Anybuf **out) {
    KA_FRAME("KI_EncodeOCSPExtension");
    if (extensions == nullptr)
        return KACERT_Ok;
    KA_PASS(checkItems({out}));
    Writer sequence;
    KA_PASS(writeExtensions(sequence, *extensions));
    KA_STEP_AS("------------>KAsn1_WriteSequence", sequence.moveTo(out));
    return KA_DONE();
}

int32_t KI_DecodeOCSPExtension(OcspExtension *extensions, const Anybuf *source) {
    KA_FRAME("KI_DecodeOCSPExtension");
    Scratch copy;
    KA_PASS(copySource(extensions, source, copy));
    KA_PASS(readExtensions(elementOf(copy.record), *extensions));
    return KA_DONE();
}

int32_t KI_EncodeOCSPCrlId(const OcspCrlId *crlId, Anybuf **out) {
    KA_FRAME("KI_EncodeOCSPCrlId");
    KA_PASS(checkItems({crlId, out}));
    Writer extension;
    KA_PASS(writeCrlId(extension, *crlId));
    KA_STEP_AS("------------>KAsn1_WriteSequence", extension.moveTo(out));
    return KA_DONE();
}

int32_t KI_DecodeOCSPCrlId(OcspCrlId *crlId, const Anybuf *source) {
    KA_FRAME("KI_DecodeOCSPCrlId");
    Scratch copy;
    KA_PASS(copySource(crlId, source, copy, InvalidCrlId));
    Element oid;
    Level fields;
    KA_PASS(readTyped(elementOf(copy.record), oid, fields, KACERT_InvalidItemErr, InvalidCrlId));
    KA_PASS(readCrlIdFields(oid, fields, *crlId));
    return KA_DONE();
}
