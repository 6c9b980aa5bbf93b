#include "crypto.h"
#include "ocsp_rows.h"

#include <utility>

using namespace karil_test;

namespace {

SWEPT_ROWS(OcspRequest, EncodeList, {KACERT_MemoryErr, KACERT_InvalidItemErr, KACERT_InvalidParamErr}) {
    const RequestListPtr ctx = create<RequestListCtx>();
    EXPECT_EQ(takeAll(*ctx, row, "settings"), KACERT_Ok);
    if (row.number("hook") != 0)
        setHash(*ctx, echo);
    EXPECT_EQ(written(*ctx), row.hex("wire"));
}

SWEPT_ROWS(OcspRequest, DecodeList, {KACERT_MemoryErr}, false) {
    checkDecoding(*create<RequestListCtx>(), row);
}

SWEPT_ROWS(OcspRequest, Encode, {KACERT_MemoryErr, KACERT_InvalidItemErr}) {
    const Zone utc("UTC");
    const RequestPtr ctx = create<RequestCtx>();
    EXPECT_EQ(takeAll(*ctx, row, "settings"), KACERT_Ok);
    addSingles(*ctx, row);
    if (row.number("signed") != 0)
        setSigning(*ctx, signByLength);
    for (int times = 0; times < 2; ++times)
        checkWritten(*ctx, row);
}

ROWS(OcspRequest, Set) {
    EXPECT_EQ(takeAll(*create<RequestCtx>(), row, "settings"), row.number("status"));
}

SWEPT_ROWS(OcspRequest, Decode, {KACERT_MemoryErr, KACERT_InvalidItemErr}, false) {
    const Zone utc("UTC");
    checkDecoding(*create<RequestCtx>(), row);
}

// What was set is answered; switches answer a length, and what the message does not write nothing.
TEST(OcspRequest, SetAndGet) {
    const RequestPtr ctx = create<RequestCtx>();
    for (const int32_t id : {0, 2, 6, 8, 10, 12})
        EXPECT_EQ(ask(*ctx, id), "00") << id; // one octet that is not stored
    for (const int32_t id : {1, 5, 7, 9, 11, 13, 14, 35, 42})
        EXPECT_EQ(ask(*ctx, id), "untouched") << id;
    for (const int32_t id : {-1, 3, 4, 15, 22, 33, 46, 63, 64})
        EXPECT_EQ(ask(*ctx, id), "status 121") << id;
    set(*ctx, OCSP_EXT_NONCE_CRITICAL, "1");
    set(*ctx, OCSP_EXT_NONCE, "\x0A\x0B");
    set(*ctx, OCSP_EXT_ACCEPTABLERESON, "\x2A");
    EXPECT_EQ(ask(*ctx, OCSP_EXT_NONCE), "untouched");
    EXPECT_EQ(askNumber(*ctx, OCSP_EXT_CRL_NUM), "untouched");
    KA_OCSP_SetRequestAttributeInt(ctx.get(), OCSP_EXT_CRL_NUM, -2);
    KA_OCSP_SetRequestAttributeInt(ctx.get(), OCSP_EXT_CRL_TIME, 5);
    EXPECT_EQ(ask(*ctx, OCSP_EXT_NONCE), "0A 0B");
    EXPECT_EQ(ask(*ctx, OCSP_EXT_CRL_URL), "untouched");
    EXPECT_EQ(ask(*ctx, OCSP_EXT_ACCEPTABLERESON), "untouched");
    EXPECT_EQ(askNumber(*ctx, OCSP_EXT_CRL_NUM), "-2");
    EXPECT_EQ(askNumber(*ctx, OCSP_EXT_CRL_TIME), "5");
    EXPECT_EQ(askNumber(*ctx, OCSP_EXT_ARCHIVECUTOFF), "status 121");
    EXPECT_EQ(askNumber(*ctx, OCSP_EXT_NONCE), "status 121");
    ctx->extensions.hasAcceptable = 1;
    set(*ctx, OCSP_EXT_ACCEPTABLERESON, "\x2B");
    EXPECT_EQ(ask(*ctx, OCSP_EXT_ACCEPTABLERESON), "2B"); // one of them, the last
    set(*ctx, OCSP_REQUEST_REQUESTOR_PARAM, "p");
    EXPECT_EQ(ask(*ctx, OCSP_REQUEST_REQUESTOR_PARAM), "70");
}

TEST(OcspRequest, ListIdsThatAreNotSet) {
    const Trace trace;
    const RequestListPtr ctx = create<RequestListCtx>();
    for (const int32_t id : {int{14}, int{OCSP_REQUESTLIST_ISSUERHASHNAME}, int{OCSP_REQUESTLIST_ISSUERHASHKEY}, 23})
        EXPECT_EQ(set(*ctx, id, "a"), KACERT_InvalidItemErr) << id;
    EXPECT_EQ(set(*ctx, OCSP_REQUESTLIST_PARAM, "a"), KACERT_Ok);
    EXPECT_EQ(ask(*ctx, OCSP_REQUESTLIST_PARAM), "61");
    EXPECT_EQ(ask(*ctx, 23), "status 121");
    EXPECT_TRUE(trace.has("============>KA_OCSP_SetRequestListAttributeChar Begin") &&
                trace.has("============>KA_OCSP_SetRequestListAttributeChar End"));
    EXPECT_TRUE(trace.has("============>Set OCSP_REQUESTLIST_PARAM"));
    failAllocation(Pool::Library, 1, false);
    EXPECT_EQ(KA_OCSP_SetRequestListAttributeChar(ctx.get(), OCSP_REQUESTLIST_ISSUERNAME, bytesOf("a").data(), 1),
              KACERT_InvalidItemErr);
    endFailing();
    EXPECT_TRUE(trace.has("------------>OCSP_REQUESTLIST_ISSUERNAME Error"));
}

// The version of a decoded request counts as set once it was asked for.
TEST(OcspRequest, WhatWasDecodedIsEncodedAgain) {
    const Zone utc("UTC");
    const RequestPtr ctx = create<RequestCtx>();
    const Octets name = commonName("Requestor");
    const Octets nonce = seq({oid("2B 06 01 05 05 07 30 01 02"), tlv(4, {1, 2})});
    const Octets tbs = seq({hex("A0 03 02 01 01"), tlv(0xA1, name), seq({hex("05 00")}), tlv(0xA2, seq({nonce}))});
    const Octets signature = tlv(0xA0, seq({oid("2A 04"), tlv(4, {0, 56}), tlv(0xA0, seq({hex("30 00")}))}));
    const Octets whole = seq({tbs, signature});
    ASSERT_EQ(decode(*ctx, whole), KACERT_Ok);
    EXPECT_EQ(toHex(ctx->tbs), toHex(tbs));
    EXPECT_EQ(toHex(ctx->signature.value), "00 38");
    EXPECT_EQ(written(*ctx), "status 121");
    EXPECT_EQ(askNumber(*ctx, OCSP_REQUEST_VERSION), "1");
    EXPECT_EQ(written(*ctx), "status 121"); // a hook is missing
    setSigning(*ctx, signByLength);
    EXPECT_EQ(written(*ctx), toHex(whole));
    EXPECT_EQ(tbs.size(), 56u);
    EXPECT_EQ(set(*ctx, OCSP_REQUEST_REQUESTOR_COMMONNAME, "b"), KACERT_AttributeAlreadySet);

    const RequestListPtr list = create<RequestListCtx>();
    const Octets id = seq({oid("2A 03"), tlv(4, {1}), tlv(4, {2}), hex("02 01 05")});
    ASSERT_EQ(decode(*list, seq({id})), KACERT_Ok);
    EXPECT_EQ(written(*list), toHex(id)); // without the SEQUENCE around it
}

TEST(OcspRequest, ListsOfASecondDecoding) {
    const RequestPtr ctx = create<RequestCtx>();
    const auto request = [](const Octets &singles, const Octets &certificates) {
        return seq({seq({hex("A0 03 02 01 00"), tlv(0xA1, commonName("N")), seq({singles})}),
                    tlv(0xA0, seq({oid("2A 04"), tlv(4, {1}), tlv(0xA0, seq({certificates}))}))});
    };
    ASSERT_EQ(decode(*ctx, request(hex("05 00 01 01 FF"), hex("30 00 30 00"))), KACERT_Ok);
    ASSERT_EQ(decode(*ctx, request(hex("02 01 07"), hex("30 01 00"))), KACERT_Ok);
    EXPECT_EQ(askSingle(*ctx, 1) + ' ' + askSingle(*ctx, 2), "02 01 07 untouched");
    EXPECT_EQ(ask(*ctx, OCSP_REQUEST_REQUESTOR_CERTS), "30 03 30 01 00");
}

// A hook gets its parameter, of whatever length, as a copy: it answers the first octet, which it changes.
TEST(OcspRequest, ParametersOfOneOctet) {
    const auto first = [](const uint8_t *, uint32_t, uint8_t *output, uint32_t *length, void *parameter) {
        output[0] = std::exchange(*static_cast<uint8_t *>(parameter), uint8_t{0});
        *length = 1;
        return int32_t{0};
    };
    const uint8_t parameter = 0x5A;
    const RequestListPtr list = create<RequestListCtx>();
    for (const int32_t id : {OCSP_REQUESTLIST_HASHALGO, OCSP_REQUESTLIST_ISSUERNAME, OCSP_REQUESTLIST_ISSUERKEY,
                             OCSP_REQUESTLIST_SERIALNUMBER})
        set(*list, id, "\x2A");
    EXPECT_EQ(KA_OCSP_SetRequestListHashFunc(list.get(), first, &parameter, 1), KACERT_Ok);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(written(*list), toHex(seq({seq({oid("2A"), tlv(4, {0x5A}), tlv(4, {0x5A}), hex("02 01 2A")})})));
}

TEST(OcspRequest, PrivateExtensionsAreKept) {
    sweep(
        [] {
            const RequestPtr ctx = create<RequestCtx>();
            const Octets id = hex("2A 03"), value = hex("01 02");
            for (const uint8_t critical : hex("01 00"))
                EXPECT_EQ(TRIED(KA_OCSP_SetRequestPrivateAttribute(ctx.get(), id.data(), 2, value.data(), 2, critical)),
                          KACERT_Ok);
            EXPECT_EQ(KA_OCSP_SetRequestPrivateAttribute(ctx.get(), id.data(), 0, value.data(), 2, 1),
                      KACERT_InvalidItemErr);
            EXPECT_EQ(KA_OCSP_SetRequestPrivateAttribute(ctx.get(), id.data(), 2, value.data(), 0, 1),
                      KACERT_InvalidItemErr);
            const OcspExtension &ext = ctx->extensions;
            ASSERT_EQ(ext.hasPrivate * 10u + ext.privateCount, 12u);
            EXPECT_EQ(toHex(ext.privates->oid) + " = " + toHex(ext.privates->value), "2A 03 = 01 02");
            EXPECT_EQ(ext.privates->critical * 10 + ext.privates->next->critical, 10);
        },
        {{KACERT_MemoryErr, KACERT_InvalidItemErr}});
}

} // namespace
