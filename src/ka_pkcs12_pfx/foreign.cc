// Bundles whose shrouded key and certificate come in OCTET STRING pieces.
#include "foreign.h"

#include "karil/pfx_foreign.h"

#include "cipher.h"
#include "ka_pkcs7_base.h"

namespace karil {

namespace {

constexpr uint8_t OctetStringTag = 0x04;
constexpr uint32_t LongestNoParameter = 8;
constexpr uint32_t LongestNoContent = 7;

Status refuse(const char *words) {
    return KA_FAIL(NotWalkable, words);
}

// What the walk answers for a status of the calls inside.
Status answerOf(Status status, const char *words) {
    if (status == KACERT_Ok)
        return KACERT_Ok;
    return KA_FAIL(status == KACERT_MemoryErr ? NoWalkMemory : NotWalkable, words);
}

struct Protection {
    const PbeAlgorithm *algorithm = nullptr;
    Bytes salt;
    uint32_t iterations = 0;
};

// tag, length, SEQUENCE { OCTET STRING salt, INTEGER }, each with a length of one octet. Of the INTEGER one octet is
// taken, whatever its length.
bool readParameter(Bytes element, Protection &out) {
    constexpr size_t SaltAt = 6;
    if (element.size() < SaltAt || element[2] != 0x30 || element[4] != 0x04)
        return false;
    const size_t countAt = SaltAt + element[5];
    if (element.size() < countAt + 3 || element[countAt] != 0x02)
        return false;
    out.salt = element.subspan(SaltAt, element[5]);
    out.iterations = element[countAt + 2];
    return true;
}

bool findData(Walker &walker) {
    for (Node node; walker.next(node);)
        if (node.isPrimitive() && isContentType(node.content(), PKCS7_TYPE_DATA))
            return true;
    return false;
}

Status findProtection(Walker &walker, Protection &out) {
    out = {};
    for (Node node; out.algorithm == nullptr && walker.next(node);)
        if (node.isPrimitive())
            out.algorithm = pbeAlgorithm(node.content());
    if (out.algorithm == nullptr)
        return refuse("------------>The algorithm is not there");
    for (Node node; walker.next(node);)
        if (node.length > LongestNoParameter && readParameter(node.from, out))
            return KACERT_Ok;
    return refuse("------------>The parameter is not there");
}

// The content as its length alone tells where it begins: with 255 or 65,535 octets that is one octet late. A content
// that is too large for this is empty.
bool readContent(const Node &node, Bytes &out) {
    const uint32_t length = node.length;
    out = {};
    if (length >= 0xFFFFFF)
        return true;
    const size_t at = length < 0x80 ? 2 : length < 0xFF ? 3 : length < 0xFFFF ? 4 : 5;
    if (at + length > node.from.size())
        return false;
    out = node.from.subspan(at, length);
    return true;
}

Status findContent(Walker &walker, Bytes &out) {
    for (Node node; walker.next(node);)
        if (node.isPrimitive() && node.length > LongestNoContent)
            return readContent(node, out) ? KACERT_Ok : refuse("------------>The content is cut off");
    return refuse("------------>The content is not there");
}

// Octets that were deciphered.
struct Plain {
    SecretBlock block;
    uint32_t size = 0;

    explicit Plain(size_t room) : block(KA_BLOCK(room), room) {}
    Bytes octets() const { return {block.octets.get(), size}; }
};

Status openKey(const Protection &by, Bytes password, Bytes sealed, Plain &out) {
    const Bytes oid = by.algorithm->oid;
    return answerOf(
        KA_PKCS12_PbeWithDigestAlgoAndDecrypt(oid.data(), static_cast<uint32_t>(oid.size()), password.data(),
                                              static_cast<uint32_t>(password.size()), by.salt.data(),
                                              static_cast<uint32_t>(by.salt.size()), by.iterations, sealed.data(),
                                              static_cast<uint32_t>(sealed.size()), out.block.octets.get(), &out.size),
        "------------>KA_PKCS12_PbeWithDigestAlgoAndDecrypt");
}

// Padding of more than a block is none; its octets are not looked at.
uint32_t paddingOf(const PbeCipher &cipher, Bytes plain) {
    return cipher.isStream() || plain.back() > PbeBlock ? 0 : plain.back();
}

Status openPiece(PbeCipher &cipher, Bytes piece, Plain &out) {
    if (piece.empty() || (!cipher.isStream() && piece.size() % PbeBlock != 0))
        return refuse("------------>The piece is no whole number of blocks");
    cipher.run(piece, out.block.octets.get() + out.size);
    out.size += static_cast<uint32_t>(piece.size());
    return KACERT_Ok;
}

// One stream over pieces that follow each other, until the plain text has as many octets as its own header tells. The
// piece with which it should have them is the only one that loses its padding. No piece is read twice, so that the
// plain text has the room of the input.
Status openPieces(Walker &walker, const Protection &by, Bytes password, Plain &out) {
    PbeCipher cipher(*by.algorithm, Direction::Decrypt);
    KA_PASS(answerOf(cipher.setPassword(password, by.salt, by.iterations), "------------>The key is not derived"));
    Bytes piece;
    KA_PASS(findContent(walker, piece));
    KA_PASS(openPiece(cipher, piece, out));
    Node head;
    if (!readNode(out.octets(), head))
        return refuse("------------>The plain text is no element");
    const size_t total = head.headerSize + head.length;
    while (out.size < total) {
        KA_PASS(findContent(walker, piece));
        const bool isLast = out.size + piece.size() >= total;
        KA_PASS(openPiece(cipher, piece, out));
        if (isLast)
            out.size -= paddingOf(cipher, out.octets());
    }
    return KACERT_Ok;
}

// The first OCTET STRING of a plain text, up to the end that its own header tells, if it tells one.
Status findOctetString(Bytes plain, Bytes &out) {
    Node node;
    if (readNode(plain, node) && node.isDefinite() && node.headerSize + node.length < plain.size())
        plain = plain.first(node.headerSize + node.length);
    KA_PASS(Walker::check(plain));
    for (Walker walker(plain); walker.next(node);)
        if (node.tag == OctetStringTag) {
            out = node.content();
            return KACERT_Ok;
        }
    return refuse("------------>The OCTET STRING is not there");
}

struct Output {
    uint8_t *octets;
    uint32_t *length;

    bool isThere() const { return octets != nullptr && length != nullptr; }
    void store(Bytes value) const {
        *length = static_cast<uint32_t>(value.size());
        if (!value.empty())
            memcpy(octets, value.data(), value.size());
    }
};

Status readBundle(Bytes input, Bytes password, const Output &certificate, const Output &key) {
    if (input.data() == nullptr || (password.data() == nullptr && !password.empty()) || !certificate.isThere() ||
        !key.isThere())
        return refuse("------------>Pointer is NULL");
    KA_PASS(Walker::check(input));
    Walker walker(input);
    if (!findData(walker))
        return refuse("------------>The content type is not there");
    Protection by;
    Bytes sealedKey;
    KA_PASS(findProtection(walker, by));
    KA_PASS(findContent(walker, sealedKey));
    Plain keyPlain(sealedKey.size());
    Plain certificatePlain(input.size());
    if (keyPlain.block.octets == nullptr || certificatePlain.block.octets == nullptr)
        return KA_FAIL(NoWalkMemory, "------------>KAPR_Malloc");
    KA_PASS(openKey(by, password, sealedKey, keyPlain));
    KA_PASS(findProtection(walker, by));
    KA_PASS(openPieces(walker, by, password, certificatePlain));
    Bytes keyOctets;
    Bytes certificateOctets;
    KA_PASS(findOctetString(keyPlain.octets(), keyOctets));
    KA_PASS(findOctetString(certificatePlain.octets(), certificateOctets));
    key.store(keyOctets);
    certificate.store(certificateOctets);
    return KACERT_Ok;
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KA_PKCS12_GetKeyAndCertFromNspP12(const uint8_t *input, uint32_t inputLength, const uint8_t *password,
                                          uint32_t passwordLength, uint8_t *certificate, uint32_t *certificateLength,
                                          uint8_t *key, uint32_t *keyLength) {
    return KA_FRAMED("KA_PKCS12_GetKeyAndCertFromNspP12",
                     readBundle({input, inputLength}, {password, passwordLength}, {certificate, certificateLength},
                                {key, keyLength}));
}
