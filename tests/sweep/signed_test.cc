// CRLs and requests: failing allocations, octets that are cut off or changed.
#include "allocation.h"
#include "signed_support.h"

using namespace karil_test;

namespace {

int32_t threeOctets(const uint8_t *, uint32_t, uint8_t *output, uint32_t *outputLength, void *) {
    *outputLength = 3;
    if (output != nullptr) std::fill_n(output, 3, uint8_t{0xAA});
    return 0;
}

struct Setting {
    int32_t id;
    const char *value;
};

template <class Ctx> CtxPtr<Ctx> createIn(Run &run) {
    Ctx *ctx = nullptr;
    run.step([&] { return Family<Ctx>::create(&ctx); });
    return CtxPtr<Ctx>(ctx);
}

template <class Ctx> void setAll(Run &run, const CtxPtr<Ctx> &ctx, std::initializer_list<Setting> settings) {
    run.step([&] { return Family<Ctx>::hook(ctx.get(), threeOctets, "key", 3); });
    for (const Setting &setting : settings) run.step([&] { return set(ctx, setting.id, hex(setting.value)); });
}

template <class Ctx> Octets encodeIn(Run &run, const CtxPtr<Ctx> &ctx) {
    Octets der(4096);
    uint32_t length = 0;
    run.step([&] { return Family<Ctx>::encode(ctx.get(), der.data(), &length); });
    der.resize(length);
    run.answer("DER", der);
    return der;
}

Octets buildCrl(Run &run) {
    const CrlPtr ctx = createIn<CrlEncodeCtx>(run);
    setAll(run, ctx,
           {{CRL_INNER_SIGNATUREALGORITHM, Sha1WithRsa},
            {CRL_OUTER_SIGNATUREALGORITHM, Sha1WithRsa},
            {CRL_ISSUER_ORGANIZATIONNAME, "D6 D0"},
            {CRL_ISSUER_COMMONNAME, "41"},
            {CRL_RevokedCertificates_DER, "30 14 30 12 02 01 03 17 0D 32 30 30 31 30 31 30 30 30 30 30 30 5A"},
            {CRL_CERT_SERIALNUMBER, "F1"},
            {CRLEX_CRLREASON, "01"},
            {CRLEX_CRLNUMBER, "80"},
            {CRLEX_DELTACRLINDICATOR, "01"},
            {CRLEX_AUTHORITY_KEYIDENTIFIER, "01"},
            {CRLEX_ISSUINGDIST_FULLNAME, "75"}});
    KACert_SetCrlAttributeInt(ctx.get(), CRL_THISUPDATE, 1577836800);
    KACert_SetCrlAttributeInt(ctx.get(), CRL_CERT_REVOCATIONDATE, 1577836800);
    Anybuf *list = nullptr;
    run.step([&] { return KI_CRL_AddRevokedCert(ctx.get(), nullptr, &list); });
    const Chain owned(list);
    run.answer("ready list", list);
    Anybuf *extension = nullptr;
    run.step([&] { return KI_CRL_WriteEntryExtension(ctx->firstRevoked, &extension); });
    const Chain ownedExtension(extension);
    run.answer("entry extension", extension);
    return encodeIn(run, ctx);
}

Octets buildCsr(Run &run) {
    const CsrPtr ctx = createIn<CsrEncodeCtx>(run);
    setAll(run, ctx,
           {{CSR_OUTER_SIGNATUREALGORITHM, Sha1WithRsa},
            {CSR_PUBLICKEY_ALGORITHM, RsaEncryption},
            {CSR_SUBJECTPUBLICKEYINFO, "30 00"},
            {CSR_SUBJECT_ORGANIZATIONNAME, "D6 D0"}});
    const uint8_t oid[] = {0x2A, 0x03};
    for (int count = 0; count < 2; ++count)
        run.step([&] { return KACert_SetCsrAttributePrivate(ctx.get(), oid, 2, oid, 2); });
    return encodeIn(run, ctx);
}

// The objects of unhindered runs.
Octets crl() {
    Run run(false);
    return buildCrl(run);
}
Octets csr() {
    Run run(false);
    return buildCsr(run);
}

template <class Ctx> void decodeIn(Run &run, const Octets &der, std::initializer_list<int32_t> ids) {
    const CtxPtr<Ctx> ctx = createIn<Ctx>(run);
    run.step([&] { return decode(ctx, der); });
    for (const int32_t id : ids) run.answer(std::to_string(id), hex(run.isWhole() ? get(ctx, id) : ""));
}

void decodeCrl(Run &run) {
    static const Octets der = crl();
    decodeIn<CrlDecodeCtx>(run, der,
                           {CRL_TBS_CERTLIST, CRL_CERT_SERIALNUMBER, CRLEX_CRLNUMBER, CRL_RevokedCertificates_DER});
}

void decodeCsr(Run &run) {
    static const Octets der = csr();
    decodeIn<CsrDecodeCtx>(run, der, {CSR_TBS_CSR, CSR_SUBJECT_ORGANIZATIONNAME, CSR_PUBLICKEY_ALGORITHM});
}

void seedCrl(Run &run) {
    static const Octets earlier = crl();
    CertParts parts;
    parts.setExtensions({extension("55 1D 0E", hex("04 02 07 08"))});
    const Octets der = parts.whole();
    CrlEncodeCtx *raw = nullptr;
    run.step([&] { return KACert_CreateCrlEncodeCtx_Ex(&raw, der.data(), static_cast<int32_t>(der.size())); });
    const CrlPtr ctx(raw);
    run.step([&] { return setCRL2Context(raw, earlier.data(), static_cast<int32_t>(earlier.size())); });
    run.answer("name", raw != nullptr ? raw->issuerDer : Anybuf{});
    run.answer("entries", raw != nullptr ? raw->revokedDer : Anybuf{});
}

TEST(FailingAllocations, CrlsAndRequests) {
    const Zone utc("UTC");
    const std::vector<int32_t> first = {KACERT_MemoryErr, KACERT_CrlNotEndErr};
    const Scenario scenarios[] = {
        {"build a CRL", [](karil_test::Run &run) { buildCrl(run); }},
        {"build a request", [](karil_test::Run &run) { buildCsr(run); }},
        {"decode a CRL", decodeCrl, first, {}, false},
        {"decode a request", decodeCsr, {KACERT_MemoryErr}, {}, false},
        {"seeded CRL", seedCrl, first},
    };
    for (const Scenario &scenario : scenarios) sweep(scenario, Pool::Library);
}

// Decodes octets in a heap block of just their size and asks for everything.
template <class Ctx> int32_t tryDecode(const Octets &der, int32_t firstId, int32_t lastId) {
    const std::unique_ptr<uint8_t[]> block(new uint8_t[der.size()]);
    std::copy(der.begin(), der.end(), block.get());
    const CtxPtr<Ctx> ctx = create<Ctx>();
    const int32_t status = Family<Ctx>::decode(ctx.get(), block.get(), static_cast<uint32_t>(der.size()));
    for (int32_t id = firstId; id <= lastId; ++id) get(ctx, id);
    return status;
}

template <class Ctx> void cutAndChange(const Octets &der, int32_t firstId, int32_t lastId) {
    ASSERT_EQ(tryDecode<Ctx>(der, firstId, lastId), KACERT_Ok);
    for (size_t size = 1; size < der.size(); ++size)
        EXPECT_NE(tryDecode<Ctx>(Octets(der.begin(), der.begin() + static_cast<ptrdiff_t>(size)), firstId, lastId),
                  KACERT_Ok);
    size_t refused = 0;
    for (size_t at = 0; at < der.size(); ++at)
        for (int value = 0; value < 256; ++value) {
            Octets changed = der;
            changed[at] = static_cast<uint8_t>(value);
            refused += tryDecode<Ctx>(changed, firstId, lastId) != KACERT_Ok ? 1 : 0;
        }
    EXPECT_GT(refused, der.size());
}

TEST(Hostile, CrlsAndRequestsCutAndChanged) {
    cutAndChange<CrlDecodeCtx>(crl(), CRL_TBS_CERTLIST, CRLEX_CRLREASON);
    cutAndChange<CsrDecodeCtx>(csr(), CSR_TBS_CSR, CSR_SUBJECTPUBLICKEYINFO);
}

} // namespace
