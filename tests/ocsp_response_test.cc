#include "crypto.h"
#include "ocsp_rows.h"

using namespace karil_test;

namespace {

int32_t setState(ResponseListCtx &ctx, const Row &row, const std::string &state) {
    const size_t end = state.find(' ');
    const std::string word = state.substr(0, end);
    const std::string rest = end == std::string::npos ? "" : state.substr(end + 1);
    if (word == "good")
        return TRIED(KA_OCSP_SetResponseList_CertStatusGood(&ctx));
    const size_t next = rest.find(' ');
    const Octets octets = row.parse(word == "unknown" ? rest : next == std::string::npos ? "" : rest.substr(next));
    if (word == "unknown")
        return TRIED(KA_OCSP_SetResponseList_CertStatusUnInfo(&ctx, octets.data(), lengthOf(octets)));
    return TRIED(KA_OCSP_SetResponseList_CertStatusRevoke(&ctx, std::stoi(rest), 0, octets.data(), lengthOf(octets)));
}

SWEPT_ROWS(OcspResponse, EncodeList, {KACERT_MemoryErr, KACERT_InvalidParamErr}) {
    const Zone utc("UTC");
    const ResponseListPtr ctx = create<ResponseListCtx>();
    EXPECT_EQ(takeAll(*ctx, row, "settings"), KACERT_Ok);
    for (const std::string &state : row.list("state"))
        EXPECT_EQ(setState(*ctx, row, state), KACERT_Ok);
    setHash(*ctx, echo);
    checkWritten(*ctx, row);
}

SWEPT_ROWS(OcspResponse, DecodeList, {KACERT_MemoryErr}, false) {
    const Zone utc("UTC");
    const ResponseListPtr ctx = create<ResponseListCtx>();
    checkDecoding(*ctx, row);
}

SWEPT_ROWS(OcspResponse, Encode, {KACERT_MemoryErr, KACERT_InvalidItemErr, KACERT_InvalidParamErr}) {
    const Zone utc("UTC");
    const ResponsePtr ctx = create<ResponseCtx>();
    EXPECT_EQ(takeAll(*ctx, row, "settings"), KACERT_Ok);
    addSingles(*ctx, row);
    if (row.number("hooks") != 0) {
        setHash(*ctx, echo);
        setSigning(*ctx, signByLength);
    }
    for (int times = 0; times < 2; ++times)
        checkWritten(*ctx, row);
}

ROWS(OcspResponse, Set) {
    EXPECT_EQ(takeAll(*create<ResponseCtx>(), row, "settings"), row.number("status"));
}

SWEPT_ROWS(OcspResponse, Decode, {KACERT_MemoryErr}, false) {
    const Zone utc("UTC");
    checkDecoding(*create<ResponseCtx>(), row);
}

TEST(OcspResponse, StatusOfASingleResponse) {
    const Zone utc("UTC");
    const ResponseListPtr ctx = create<ResponseListCtx>();
    EXPECT_EQ(stateOf(*ctx), "none");
    const Octets octets = hex("0A 0B");
    EXPECT_EQ(KA_OCSP_SetResponseList_CertStatusRevoke(ctx.get(), 0, 1, octets.data(), 2), KACERT_InvalidItemErr);
    EXPECT_EQ(KA_OCSP_SetResponseList_CertStatusUnInfo(ctx.get(), octets.data(), 0), KACERT_InvalidItemErr);
    EXPECT_EQ(stateOf(*ctx), "none");
    KA_OCSP_SetResponseList_CertStatusRevoke(ctx.get(), 5, 1, nullptr, 2);
    EXPECT_EQ(stateOf(*ctx), "revoked 5");
    KA_OCSP_SetResponseList_CertStatusRevoke(ctx.get(), 6, 1, octets.data(), 2);
    EXPECT_EQ(stateOf(*ctx), "revoked 6 0A 0B");
    int32_t status = 0;
    int32_t time = 0;
    EXPECT_EQ(KA_OCSP_GetResponseListCertSatus(ctx.get(), &status, &time, nullptr, nullptr, nullptr, nullptr),
              KACERT_InvalidItemErr);
    EXPECT_EQ(status + time, 0);
    KA_OCSP_SetResponseList_CertStatusUnInfo(ctx.get(), octets.data(), 1);
    EXPECT_EQ(stateOf(*ctx), "unknown 0A");
    KA_OCSP_SetResponseList_CertStatusGood(ctx.get());
    EXPECT_EQ(stateOf(*ctx), "good");
}

// Reading a time makes it a GeneralizedTime, and a next update be there.
TEST(OcspResponse, ReadingATimeChangesWhatIsWritten) {
    const Zone utc("UTC");
    const ResponseListPtr ctx = create<ResponseListCtx>();
    const Octets id = seq({oid("2A 03"), tlv(4, {1}), tlv(4, {2}), hex("02 01 05")});
    const Octets utcTime = tlv(0x17, text("200101000000Z"));
    const Octets newTime = tlv(0x18, text("200101000000Z"));
    ASSERT_EQ(decode(*ctx, seq({id, hex("80 00"), utcTime})), KACERT_Ok);
    EXPECT_EQ(written(*ctx), toHex(seq({id, hex("80 00"), utcTime})));
    EXPECT_EQ(askNumber(*ctx, OCSP_RESPONDERLIST_THISUPDATE), std::to_string(Y2020));
    EXPECT_EQ(written(*ctx), toHex(seq({id, hex("80 00"), newTime})));
    EXPECT_EQ(askNumber(*ctx, OCSP_RESPONDERLIST_NEXTUPDATE), "0");
    EXPECT_EQ(written(*ctx), toHex(seq({id, hex("80 00"), newTime, tlv(0xA0, tlv(0x18, text("700101000000Z")))})));
    EXPECT_EQ(askNumber(*ctx, OCSP_RESPONDERLIST_SERIALNUMBER), "status 121");
    EXPECT_EQ(KA_OCSP_SetResponseListAttributeInt(ctx.get(), OCSP_RESPONDERLIST_THISUPDATE, -1), KACERT_InvalidItemErr);
    EXPECT_EQ(KA_OCSP_SetResponseListAttributeInt(ctx.get(), OCSP_RESPONDERLIST_CERTID, 1), KACERT_InvalidItemErr);
}

TEST(OcspResponse, IdsThatAreNotSet) {
    const Trace trace;
    const ResponseListPtr ctx = create<ResponseListCtx>();
    for (const int32_t id : {22, 23, 24, 27, 29, 33}) {
        EXPECT_EQ(set(*ctx, id, "a"), KACERT_InvalidItemErr) << id;
        EXPECT_EQ(ask(*ctx, id), id == 27 || id == 29 ? "" : "status 121") << id;
    }
    EXPECT_TRUE(trace.has("------------>OCSPAttributeType is Invalid Item"));
    EXPECT_EQ(KA_OCSP_SetResponseListAttributeChar(nullptr, 25, bytesOf("a").data(), 1), KACERT_InvalidItemErr);
    EXPECT_TRUE(trace.has("------------>The responder is Invalid Item"));
    const ResponsePtr response = create<ResponseCtx>();
    for (const int32_t id : {45, 46, 47, 64})
        EXPECT_EQ(ask(*response, id), "status 121") << id;
    EXPECT_EQ(askNumber(*response, 48), "status 121");
    set(*response, OCSP_RESPONSE_PARAM, "p");
    set(*response, OCSP_RESPONSE_RESPONDERID_KEY, "k");
    EXPECT_EQ(ask(*response, OCSP_RESPONSE_PARAM) + ask(*response, OCSP_RESPONSE_RESPONDERID_KEY), "706B");
}

// A name attribute that is refused has raised its flag; a name that was decoded has both.
TEST(OcspResponse, FlagsOfTheNameCollide) {
    const ResponsePtr ctx = create<ResponseCtx>();
    setSigning(*ctx, signByLength);
    set(*ctx, OCSP_RESPONSE_STATUS, std::string_view("\0", 1));
    set(*ctx, OCSP_RESPONSETYPE, "\x2A");
    EXPECT_EQ(askNumber(*ctx, OCSP_RESPONSE_VERSION), "untouched");
    set(*ctx, OCSP_RESPONSE_RESPONDERID_DN, "\x30");
    EXPECT_EQ(askNumber(*ctx, OCSP_RESPONSE_VERSION), "0");
    EXPECT_EQ(written(*ctx).substr(0, 2), "30");
    const Trace trace;
    EXPECT_EQ(set(*ctx, OCSP_RESPONSE_RESPONDERID_EMAIL, "x"), KACERT_AttributeAlreadySet);
    EXPECT_TRUE(trace.has("------------>The DN already exsist"));
    EXPECT_EQ(written(*ctx), "status 108");
}

TEST(OcspResponse, AbsentArgumentsDoNothing) {
    const ResponsePtr ctx = create<ResponseCtx>();
    const uint8_t octet = 5;
    EXPECT_EQ(KA_OCSP_SetResponseSingleResponse(ctx.get(), &octet, 0), KACERT_Ok);
    EXPECT_EQ(ctx->basic.data.responseCount, 0u);
    EXPECT_EQ(KA_OCSP_SetResponseSingleResponse(ctx.get(), &octet, 1), KACERT_Ok);
    EXPECT_EQ(ctx->basic.data.responseCount, 1u);
    EXPECT_EQ(KA_OCSP_SetResponsePrivateAttribute() + KA_OCSP_GetResponsePrivateAttribute() +
                  KA_OCSP_GetRequestPrivateAttribute(),
              KACERT_Ok);
    const ResponseListPtr list = create<ResponseListCtx>();
    EXPECT_EQ(KA_OCSP_SetResponseListHashFunc(list.get(), nullptr, &octet, 1), KACERT_Ok);
    EXPECT_EQ(list->certId.hashParameter.length, 0u);
}

} // namespace
