// The pieces below the messages: their records, hooks, lists, and the diagnostic file.
#include "ocsp_rows.h"

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>

using namespace karil_test;

namespace {

SWEPT_ROWS(OcspParts, CertStatus) {
    const Zone utc("UTC");
    OcspCertStatus status = {};
    const Exact element(row.octets("element"));
    const int32_t result = TRIED(KI_DecodeCertStatus(&status, &element.record));
    std::string all = result != KACERT_Ok     ? "status " + std::to_string(result)
                      : status.isGood != 0    ? "good"
                      : status.isRevoked != 0 ? "revoked"
                      : status.isUnknown != 0 ? "unknown"
                                              : "none";
    const int32_t time = status.revokedAt.isUtc != 0 ? status.revokedAt.utcValue : status.revokedAt.generalizedValue;
    all += time != 0 ? ' ' + std::to_string(time) : "";
    all += status.hasReason != 0 ? ' ' + toHex(status.reason) : "";
    all += status.information.length > 0 ? ' ' + toHex(status.information) : "";
    KI_ClearAnybuf(&status.reason);
    KI_ClearAnybuf(&status.information);
    EXPECT_EQ(all, row("answer"));
    EXPECT_EQ(KI_EncodeCertStatus(), KACERT_InvalidItemErr);
}

// A record of the test's own that is freed as the header says.
struct Parts {
    OcspBasicResponse response = {};
    Anybuf out = {};
    Parts() { KI_InitOCSPExtension(&response.data.extensions); }
    Parts(const Parts &) = delete;
    Parts &operator=(const Parts &) = delete;
    ~Parts() {
        OcspResponseData &data = response.data;
        OcspSignature &signature = response.signature;
        for (Anybuf *record : {&data.responder.derName, &data.responder.keyHash, &signature.algorithm.oid,
                               &signature.value, &signature.encoded, &response.signedOctets, &out})
            KI_ClearAnybuf(record);
        KI_FreeName(data.responder.name.next);
        KI_FreeAnybuf(data.responses.next);
        KI_FreeAnybuf(signature.certs.next);
        KI_FreeOCSPExtension(&data.extensions);
    }
};

// Records of a program's own are decoded and encoded again, part by part.
TEST(OcspParts, RecordsOfOnesOwn) {
    const Zone utc("UTC");
    const Octets name = commonName("R");
    const Octets id = seq({name, tlv(4, {0xAA})});
    const Octets time = tlv(0x17, text("200101000000Z"));
    const Octets nonce = seq({seq({oid("2B 06 01 05 05 07 30 01 02"), tlv(4, {1, 2})})});
    const Octets data = seq({hex("A0 03 02 01 02"), id, time, seq({hex("05 00"), hex("30 00")}), nonce});
    const Octets certs = tlv(0xA0, seq({hex("30 00")}));
    const Octets whole = seq({data, oid("2A 04"), tlv(4, {0, 63}), certs});
    sweep(
        [&] {
            Parts parts;
            OcspBasicResponse &response = parts.response;
            const Exact source(whole);
            ASSERT_EQ(TRIED(KI_DecodeBasicResponse(&response, &source.record)), KACERT_Ok);
            EXPECT_EQ(toHex(response.signedOctets), toHex(data));
            EXPECT_EQ(response.data.responseCount * 100u + response.signature.hasCerts, 201u);
            Anybuf &out = parts.out;
            EXPECT_EQ(TRIED(KI_EncodeResponseId(&response.data.responder, &out)), KACERT_InvalidParamErr);
            response.data.responder.hasName = 0;
            EXPECT_EQ(TRIED(KI_EncodeResponseId(&response.data.responder, &out)), KACERT_Ok);
            EXPECT_EQ(toHex(out), toHex(id));
            // No memory for the result is no failure: the record is empty then, the element null.
            const auto orNoMemory = [](int32_t status, bool isThere) {
                return status == KACERT_Ok && !isThere ? static_cast<int32_t>(KACERT_MemoryErr) : status;
            };
            const auto encodeData = [&] {
                const int32_t status = KI_EncodeResponseData(&response.data, &out);
                return orNoMemory(status, out.length > 0);
            };
            EXPECT_EQ(TRIED(encodeData()), KACERT_Ok);
            EXPECT_EQ(toHex(out), toHex(data));
            Anybuf *element = &out; // without a hook there is no result
            EXPECT_EQ(TRIED(KI_EncodeBasicResponse(&response, &element)), KACERT_Ok);
            EXPECT_EQ(element, nullptr);
            response.signature.signFunc = signByLength;
            const auto encode = [&] {
                const int32_t status = KI_EncodeBasicResponse(&response, &element);
                return orNoMemory(status, element != nullptr);
            };
            const int32_t status = TRIED(encode());
            EXPECT_EQ(answerOf(status, element), toHex(seq({data, oid("2A 04"), tlv(4, {0, 66}), certs})));
        },
        {{KACERT_MemoryErr}, false});
}

TEST(OcspParts, SignatureOfARequest) {
    Parts parts;
    OcspSignature &signature = parts.response.signature;
    const Exact octets(text("to be signed"));
    EXPECT_EQ(KI_EncodeOCSPSignature(&signature, &octets.record), KACERT_InvalidItemErr);
    signature.signFunc = signByLength;
    EXPECT_EQ(KI_EncodeOCSPSignature(&signature, &octets.record), KACERT_InvalidItemErr);
    KI_SetAttributeCharValue(&signature.algorithm.oid, bytesOf("\x2A").data(), 1);
    EXPECT_EQ(KI_EncodeOCSPSignature(&signature, &octets.record), KACERT_Ok);
    EXPECT_EQ(toHex(signature.encoded), toHex(seq({oid("2A"), tlv(4, {0, 12})})));
    EXPECT_EQ(signature.encoded.tag, 16u);
}

TEST(OcspParts, Extensions) {
    const Zone utc("UTC");
    OcspExtension extensions;
    EXPECT_EQ(KI_InitOCSPExtension(&extensions), KACERT_Ok);
    EXPECT_EQ(extensions.nonceType.id + extensions.crlId.type.id + extensions.crlEntryType.id, 3u);
    Anybuf *element = nullptr;
    const auto encoded = [&] {
        element = nullptr;
        const int32_t status = KI_EncodeOCSPExtension(&extensions, &element);
        return answerOf(status, element);
    };
    EXPECT_EQ(encoded(), "30 00");
    // All four, in the order of the wire and not of the list that was read; the encoder's list has no OCTET STRING.
    const std::string prefix = "2B 06 01 05 05 07 30 01 0";
    const Octets nonce = seq({oid(prefix + '2'), tlv(4, {9})});
    const Octets crlId = seq({oid(prefix + '3'), tlv(4, tlv(0xA0, tlv(0x16, text("u"))))});
    const Octets list = seq({oid("2A 03"), oid("2A 04")});
    const Octets cutoff = seq({oid(prefix + '6'), tlv(0x17, text("200101000000Z"))});
    const Exact source(seq({nonce, crlId, seq({oid(prefix + '4'), tlv(4, list)}), cutoff}));
    EXPECT_EQ(KI_DecodeOCSPExtension(&extensions, &source.record), KACERT_Ok);
    EXPECT_EQ(extensions.archiveCutoff.generalizedValue, Y2020);
    EXPECT_EQ(extensions.archiveCutoff.utcValue, Y2020);
    EXPECT_EQ(encoded(), toHex(seq({seq({oid(prefix + '4'), list}), cutoff, crlId, nonce})));
    EXPECT_EQ(KI_EncodeOCSPCrlId(&extensions.crlId, &element), KACERT_Ok);
    EXPECT_EQ(answerOf(0, element), toHex(crlId));
    extensions.crlId.hasUrl = 0;
    EXPECT_EQ(encoded(), "status 121");
    EXPECT_EQ(KI_FreeOCSPExtension(&extensions), KACERT_Ok);
    EXPECT_EQ(encoded(), "30 00");
    OcspCrlId lone = {};
    const Exact number(seq({oid(prefix + '3'), tlv(4, hex("A1 03 02 01 07"))}));
    EXPECT_EQ(KI_DecodeOCSPCrlId(&lone, &number.record), KACERT_Ok);
    EXPECT_EQ(lone.number * 10 + lone.hasNumber, 70u);
    KI_ClearAnybuf(&lone.type.oid);
    const Exact empty(seq({}));
    EXPECT_EQ(KI_DecodeOCSPCrlId(&lone, &empty.record), KACERT_InvalidItemErr);
}

// A hook that notes how it is called, and answers as it is told.
struct Plan {
    int32_t status;
    uint32_t length;
    int calls = 0;
    const void *parameter = nullptr;
    uint32_t bound = 0;
};
Plan *current = nullptr;
int32_t planned(const uint8_t *, uint32_t, uint8_t *output, uint32_t *outputLength, void *parameter) {
    ++current->calls;
    current->parameter = parameter;
    current->bound = *outputLength;
    if (parameter != nullptr)
        std::fill_n(static_cast<uint8_t *>(parameter), 3, uint8_t{0xEE}); // the copy is the call's own
    std::fill_n(output, std::min(current->length, *outputLength + 256), uint8_t{0xAB});
    *outputLength = current->length;
    return current->status;
}

// Encoding runs the hook `calls` times.
template <class Ctx, class SetHook> void checkHook(Ctx &ctx, SetHook setHook, uint32_t bound, int calls) {
    const std::tuple<int32_t, uint32_t, int32_t> rows[] = {
        {0, bound, KACERT_Ok}, {0, 0, KACERT_Ok}, {0, bound + 1, KACERT_InvalidLengthErr}, {-7, 1, -7}, {100, 1, 100}};
    for (const auto &[status, length, want] : rows) {
        Plan plan = {status, length};
        current = &plan;
        EXPECT_EQ(setHook(&ctx, planned, bytesOf("abc").data(), 3), KACERT_Ok);
        const std::string octets = written(ctx, 8192);
        EXPECT_EQ(octets[0] == 's' ? octets : "status 0", "status " + std::to_string(want));
        EXPECT_EQ(plan.calls, want == KACERT_Ok ? calls : 1);
        EXPECT_EQ(plan.bound, bound);
    }
    EXPECT_NE(setHook(&ctx, planned, nullptr, 1), KACERT_Ok);
}
template <class Ctx> Owner<Ctx> made(std::initializer_list<int32_t> ids) {
    Owner<Ctx> ctx = create<Ctx>();
    for (const int32_t id : ids)
        set(*ctx, id, "a");
    return ctx;
}
RequestPtr madeRequest() {
    RequestPtr request = made<RequestCtx>({OCSP_REQUEST_REQUESTOR_SIGNALGO});
    KA_OCSP_SetRequestAttributeInt(request.get(), OCSP_REQUEST_VERSION, 0);
    return request;
}

TEST(OcspParts, Hooks) {
    checkHook(*made<RequestListCtx>({15, 16, 17}), KA_OCSP_SetRequestListHashFunc, 64, 2);
    checkHook(*made<ResponseListCtx>({25, 26, 28}), KA_OCSP_SetResponseListHashFunc, 64, 2);
    checkHook(*madeRequest(), KA_OCSP_SetRequestSignFunc, 2048, 1);
    checkHook(*made<ResponseCtx>({48, 63, 59}), KA_OCSP_SetResponseSignFunc, 2048, 1);
    const ResponsePtr hashed = made<ResponseCtx>({48, 63, 55, 58});
    setSigning(*hashed, signByLength);
    checkHook(*hashed, KA_OCSP_SetResponseHashFunc, 64, 1);
}

// Without a parameter the hook gets null; with one, a copy that is wiped before it is freed.
TEST(OcspParts, ParametersAreCopiedAndWiped) {
    static bool isWiped;
    const RequestPtr request = madeRequest();
    Plan plan = {0, 1};
    current = &plan;
    KA_OCSP_SetRequestSignFunc(request.get(), planned, nullptr, -5);
    written(*request);
    EXPECT_EQ(plan.parameter, nullptr);
    KA_OCSP_SetRequestSignFunc(request.get(), planned, bytesOf("abc").data(), 3);
    isWiped = false;
    onRelease([](const void *block, size_t) {
        isWiped |= block == current->parameter && toHex(static_cast<const uint8_t *>(block), 3) == "00 00 00";
    });
    written(*request);
    onRelease(nullptr);
    EXPECT_TRUE(isWiped);
    EXPECT_EQ(toHex(request->signature.signParameter), toHex(bytesOf("abc")));
    KA_OCSP_SetRequestSignFunc(request.get(), planned, nullptr, 0); // an earlier parameter stays
    plan.parameter = nullptr;
    written(*request);
    EXPECT_NE(plan.parameter, nullptr);
}

// 100,000 entries in both directions: by a walk per append or Get it would take minutes.
TEST(OcspParts, ListsAreLinear) {
    const auto start = std::chrono::steady_clock::now();
    const RequestPtr request = madeRequest(), again = create<RequestCtx>();
    setSigning(*request, signByLength);
    const auto entry = [](uint32_t i) {
        return Octets{4, 3, static_cast<uint8_t>(i >> 16), static_cast<uint8_t>(i >> 8), static_cast<uint8_t>(i)};
    };
    for (uint32_t i = 1; i <= 100000; ++i)
        KA_OCSP_SetRequestSingleRequest(request.get(), entry(i).data(), 5);
    ASSERT_EQ(decode(*again, hex(written(*request, 600000))), KACERT_Ok);
    uint32_t count = 0, good = 0;
    EXPECT_EQ(KA_OCSP_GetRequestSingleRequestNum(again.get(), &count), KACERT_Ok);
    EXPECT_EQ(count, 100000u);
    for (uint32_t i = 1; i <= count; ++i)
        good += askSingle(*again, i) == toHex(entry(i)) ? 1 : 0;
    EXPECT_EQ(good, count);
    EXPECT_EQ(askSingle(*again, 2), toHex(entry(2))); // and back
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

constexpr char Diagnostic[] = "ka_ocsp_basic_response.der";
Octets contentOf(const char *file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The last source that was decoded, good or not; links and what is no regular file are left alone.
TEST(OcspParts, DiagnosticFile) {
    char folder[] = "/tmp/karil_ocsp_XXXXXX";
    char before[4096];
    ASSERT_NE(mkdtemp(folder), nullptr);
    ASSERT_NE(getcwd(before, sizeof before), nullptr);
    ASSERT_EQ(chdir(folder), 0);
    Parts parts;
    const auto decodeOne = [&](const Octets &octets) {
        const Exact source(octets);
        return KI_DecodeBasicResponse(&parts.response, &source.record);
    };
    EXPECT_EQ(decodeOne(text("a longer one")), KACERT_InvalidTagErr);
    EXPECT_EQ(contentOf(Diagnostic), text("a longer one"));
    EXPECT_EQ(decodeOne(hex("30 00")), KACERT_InvalidItemErr);
    EXPECT_EQ(contentOf(Diagnostic), hex("30 00"));
    failAllocation(Pool::Library, 1, false);
    EXPECT_EQ(decodeOne(hex("05 00")), KACERT_MemoryErr);
    endFailing();
    EXPECT_EQ(contentOf(Diagnostic), hex("05 00"));
    struct stat about = {};
    EXPECT_EQ(stat(Diagnostic, &about), 0);
    EXPECT_EQ(about.st_mode & 0777, 0600u);
    std::ofstream("target") << "kept";
    for (const bool isLink : {true, false}) { // and nobody waits for a reader of the fifo
        unlink(Diagnostic);
        ASSERT_EQ(isLink ? symlink("target", Diagnostic) : mkfifo(Diagnostic, 0600), 0);
        EXPECT_EQ(decodeOne(hex("30 00")), KACERT_InvalidItemErr);
    }
    EXPECT_EQ(contentOf("target"), text("kept"));
    unlink(Diagnostic);
    unlink("target");
    ASSERT_EQ(chdir(before), 0);
    EXPECT_EQ(rmdir(folder), 0);
}

} // namespace
