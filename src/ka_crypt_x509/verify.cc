// One link of trust: names, times and the signature of an object against the key that signed it.
#include "karil/verify.h"
#include "karil/cert.h"
#include "karil/crl.h"
#include "karil/csr.h"
#include "karil/key.h"
#include "karil/pem.h"

#include "ka_low.h"

#include <string.h>
#include <time.h>

using namespace karil;

namespace {

constexpr uint32_t LargestOid = 128;
constexpr uint32_t LargestSignature = 512;
constexpr uint32_t LargestKey = 512;
constexpr uint32_t LargestPemRequest = 5000;
constexpr uint32_t SmallestPemRequest = 128;
// A key of more octets than this has a modulus of 2,048 bits.
constexpr uint32_t SmallKey = 150;

// The digest id by the first octets of the signature algorithm. rsaEncryption names no digest: its id is one that
// verification does not know.
struct SignatureAlgorithm {
    uint8_t oid[9];
    int32_t digestId;
};
constexpr SignatureAlgorithm Algorithms[] = {
    {{0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x01}, 200},
    {{0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x02}, KA_DIGEST_MD2},
    {{0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x04}, KA_DIGEST_MD5},
    {{0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x05}, KA_DIGEST_SHA1},
};

// The functions and ids of a family whose objects are signed.
template <class Context> struct Family {
    using Ctx = Context;
    int32_t (*create)(Ctx **out);
    int32_t (*destroy)(Ctx *ctx);
    int32_t (*decode)(Ctx *ctx, const uint8_t *der, uint32_t length);
    int32_t (*get)(Ctx *ctx, int32_t id, uint8_t *result, uint32_t *length);
    const char *createWords;
    const char *decodeWords;
    const char *getWords;
    int32_t algorithm;
    int32_t signature;
    int32_t tbs;
};
#define KA_FAMILY(NAME, ...)                                                                                           \
    {                                                                                                                  \
        KACert_Create##NAME##DecodeCtx, KACert_Destroy##NAME##DecodeCtx, KACert_Decode##NAME,                          \
            KACert_Get##NAME##AttributeChar, "------>KACert_Create" #NAME "DecodeCtx", "------>KACert_Decode" #NAME,   \
            "------>KACert_Get" #NAME "AttributeChar", __VA_ARGS__                                                     \
    }
constexpr Family<CertDecodeCtx> Certificates =
    KA_FAMILY(Cert, CERT_OUTER_SIGNATUREALGORITHM, CERT_CA_SIGNATURE, CERT_TBS_CERTIFICATE);
constexpr Family<CrlDecodeCtx> Crls = KA_FAMILY(Crl, CRL_OUTER_SIGNATUREALGORITHM, CRL_CA_SIGNATURE, CRL_TBS_CERTLIST);
constexpr Family<CsrDecodeCtx> Requests = KA_FAMILY(Csr, CSR_OUTER_SIGNATUREALGORITHM, CSR_SELF_SIGNATURE, CSR_TBS_CSR);

// An answer of bounded size.
template <uint32_t Size> struct Octets {
    uint8_t data[Size];
    uint32_t length = 0;

    Bytes bytes() const { return {data, length}; }
};

// A decoded object of a family.
template <const auto &Of> struct Object {
    typename std::remove_reference_t<decltype(Of)>::Ctx *ctx = nullptr;

    Object() = default;
    Object(const Object &) = delete;
    Object &operator=(const Object &) = delete;
    ~Object() { Of.destroy(ctx); }

    Status open(Bytes der) {
        KA_STEP_AS(Of.createWords, Of.create(&ctx));
        KA_STEP_AS(Of.decodeWords, Of.decode(ctx, der.data(), static_cast<uint32_t>(der.size())));
        return KACERT_Ok;
    }
    Status lengthOf(int32_t id, uint32_t &length) const {
        length = 0;
        KA_STEP_AS(Of.getWords, Of.get(ctx, id, nullptr, &length));
        return KACERT_Ok;
    }
    template <uint32_t Size> Status get(int32_t id, Octets<Size> &out) const {
        KA_PASS(lengthOf(id, out.length));
        if (out.length > Size)
            return KA_FAIL(KACERT_InvalidLengthErr, Of.getWords);
        KA_STEP_AS(Of.getWords, Of.get(ctx, id, out.data, &out.length));
        return KACERT_Ok;
    }
};

// What is compared and verified.
struct Check {
    int32_t digestId = 0;
    Octets<LargestSignature> signature;
    Owned<uint8_t> tbs;
    uint32_t tbsLength = 0;
    RsaPublicKeyRecord key = {};
};

Status findDigest(Bytes oid, int32_t &digestId) {
    for (const SignatureAlgorithm &algorithm : Algorithms)
        if (oid.size() >= sizeof algorithm.oid && equal(oid.first(sizeof algorithm.oid), algorithm.oid)) {
            digestId = algorithm.digestId;
            return KACERT_Ok;
        }
    return KA_FAIL(KACERT_InvalidSignatureAlgErr, "------>KACERT_InvalidSignatureAlgErr");
}

template <const auto &Of> Status readDigest(const Object<Of> &object, Check &check) {
    Octets<LargestOid> oid;
    KA_PASS(object.get(Of.algorithm, oid));
    return findDigest(oid.bytes(), check.digestId);
}

template <const auto &Of> Status readSigned(const Object<Of> &object, Check &check) {
    KA_PASS(object.get(Of.signature, check.signature));
    KA_PASS(object.lengthOf(Of.tbs, check.tbsLength));
    check.tbs = KA_BLOCK(check.tbsLength);
    if (check.tbs == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    KA_STEP_AS(Of.getWords, Of.get(object.ctx, Of.tbs, check.tbs.get(), &check.tbsLength));
    return KACERT_Ok;
}

Status readKey(Bytes der, Check &check) {
    KA_STEP(KA_Decode_PublicKey(check.key.modulus, der.data(), static_cast<int32_t>(der.size())));
    check.key.bits = der.size() > SmallKey ? 2048 : 1024;
    return KACERT_Ok;
}

Status verify(const Check &check) {
    int32_t verdict = 0;
    const Status status = KA_PKCS7_VerifySignature(check.digestId, check.tbs.get(), check.tbsLength,
                                                   check.signature.data, check.signature.length, &check.key, &verdict);
    if (status != KACERT_Ok || verdict != 1)
        return KA_FAIL(KACERT_VerifySignatureErr, "------>KA_PKCS7_VerifySignature");
    return KACERT_Ok;
}

// The DN attributes answer nothing if no text can be made. Here that must not count as an empty name.
Status readName(const NameRecord &head, Scratch &text) {
    KA_STEP(KI_GetDN(&text.record, &head));
    return KACERT_Ok;
}

struct Validity {
    uint32_t from = 0;
    uint32_t to = 0;
};

Status readTime(const CertDecodeCtx *ctx, int32_t id, uint32_t &time) {
    int32_t value = 0;
    KA_STEP(KACert_GetCertAttributeInt(ctx, id, &value));
    time = static_cast<uint32_t>(value);
    return KACERT_Ok;
}

Status readValidity(const CertDecodeCtx *ctx, Validity &validity) {
    KA_PASS(readTime(ctx, CERT_VALIDFROM, validity.from));
    return readTime(ctx, CERT_VALIDTO, validity.to);
}

// What is taken from the issuer's certificate.
struct Issuer {
    Scratch name;
    Octets<LargestKey> key;
    Validity validity;
};

Status readIssuer(Bytes der, Issuer &issuer) {
    Object<Certificates> certificate;
    KA_PASS(certificate.open(der));
    KA_PASS(readName(certificate.ctx->subject, issuer.name));
    KA_PASS(certificate.get(CERT_SUBJECTPUBLICKEYINFO, issuer.key));
    return readValidity(certificate.ctx, issuer.validity);
}

Status compareNames(const Issuer &issuer, const NameRecord &head) {
    Scratch name;
    KA_PASS(readName(head, name));
    if (!equal(bytesOf(issuer.name.record), bytesOf(name.record)))
        return KA_FAIL(KACERT_DnNotEqualErr, "------>KACERT_DnNotEqualErr");
    return KACERT_Ok;
}

Status checkTimes(const Object<Certificates> &subject, const Issuer &issuer) {
    const auto now = static_cast<uint32_t>(time(nullptr));
    Validity own;
    KA_PASS(readValidity(subject.ctx, own));
    if (own.from < issuer.validity.from || own.from > now || own.to > issuer.validity.to || own.to < now)
        return KA_FAIL(KACERT_TimeOutRangeErr, "------>KACERT_TimeOutRangeErr");
    return KACERT_Ok;
}
// The dates of a CRL are not looked at.
Status checkTimes(const Object<Crls> &, const Issuer &) {
    return KACERT_Ok;
}

template <const auto &Of> Status verifyIssued(Bytes issuerDer, Bytes der) {
    if (issuerDer.data() == nullptr || der.data() == nullptr)
        return KA_FAIL(KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr");
    Issuer issuer;
    KA_PASS(readIssuer(issuerDer, issuer));
    Object<Of> object;
    KA_PASS(object.open(der));
    KA_PASS(compareNames(issuer, object.ctx->issuer));
    KA_PASS(checkTimes(object, issuer));
    Check check;
    KA_PASS(readDigest(object, check));
    KA_PASS(readSigned(object, check));
    KA_PASS(readKey(issuer.key.bytes(), check));
    return verify(check);
}

Status verifyRequest(Bytes der) {
    Object<Requests> request;
    KA_PASS(request.open(der));
    Check check;
    KA_PASS(readDigest(request, check));
    Octets<LargestKey> key;
    KA_PASS(request.get(CSR_SUBJECTPUBLICKEYINFO, key));
    KA_PASS(readKey(key.bytes(), check));
    KA_PASS(readSigned(request, check));
    return verify(check);
}

// The area holds whatever the text may decode to, which has fewer octets than the text.
Status verifyPemRequest(const uint8_t *pem, uint32_t length) {
    const Owned<uint8_t> der = KA_BLOCK(length);
    if (der == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    uint32_t size = 0;
    KA_STEP_AS("------>PEM2DER_data_format Err", PEM2DER_data_format(pem, length, der.get(), &size));
    if (size > LargestPemRequest)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    if (size < SmallestPemRequest)
        return KA_FAIL(KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr");
    return verifyRequest({der.get(), size});
}

} // namespace

int32_t KA_VerifyCert(const uint8_t *issuer, uint32_t issuerLength, const uint8_t *subject, uint32_t subjectLength) {
    return KA_FRAMED("KA_VerifyCert", verifyIssued<Certificates>({issuer, issuerLength}, {subject, subjectLength}));
}

int32_t KA_VerifyCrl(const uint8_t *issuer, uint32_t issuerLength, const uint8_t *crl, uint32_t crlLength) {
    return KA_FRAMED("KA_VerifyCrl", verifyIssued<Crls>({issuer, issuerLength}, {crl, crlLength}));
}

int32_t KA_VerifyCsr_Sign(const uint8_t *request, int32_t length) {
    KA_FRAME("KA_VerifyCsr_Sign");
    if (request == nullptr || length < 1)
        return KA_FAIL(KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr");
    if (request[0] == 0x30)
        KA_PASS(verifyRequest({request, static_cast<size_t>(length)}));
    else
        KA_PASS(verifyPemRequest(request, static_cast<uint32_t>(length)));
    return KA_DONE();
}
