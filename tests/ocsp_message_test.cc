// Requests and responses, and the single ones that they hold: questions and answers.
#include "ocsp_rows.h"

#include <functional>
#include <utility>

using namespace karil_test;

namespace {

template <class Use> void withMessage(const Row &row, Use use) {
    const Zone utc("UTC");
    const std::string &type = row("type");
    type == "request"    ? use(*create<RequestCtx>())
    : type == "response" ? use(*create<ResponseCtx>())
    : type == "question" ? use(*create<RequestListCtx>())
                         : use(*create<ResponseListCtx>());
}

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

template <class Ctx> void addMore(Ctx &ctx, const Row &row) {
    for (const std::string &more : row.list("more")) {
        int32_t status = KACERT_InvalidItemErr;
        if constexpr (std::is_same_v<Ctx, ResponseListCtx>) {
            status = setState(ctx, row, more);
        } else if constexpr (requires { Family<Ctx>::add; }) {
            const Octets octets = row.parse(more);
            status = TRIED(Family<Ctx>::add(&ctx, octets.data(), lengthOf(octets)));
        }
        EXPECT_EQ(status, KACERT_Ok) << more;
    }
}
template <class Ctx> void setHooks(Ctx &ctx) {
    if constexpr (requires { Family<Ctx>::hash; })
        setHash(ctx, echo);
    if constexpr (requires { Family<Ctx>::hook; })
        setSigning(ctx, signByLength);
}

SWEPT_ROWS(OcspMessage, Encode, {KACERT_MemoryErr, KACERT_InvalidItemErr, KACERT_InvalidParamErr}) {
    withMessage(row, [&](auto &ctx) {
        EXPECT_EQ(takeAll(ctx, row, "settings"), KACERT_Ok);
        addMore(ctx, row);
        if (row.number("hooks") != 0)
            setHooks(ctx);
        for (int times = 0; times < 2; ++times)
            EXPECT_EQ(written(ctx), row.hex("wire"));
    });
}

ROWS(OcspMessage, Set) {
    withMessage(row, [&](auto &ctx) { EXPECT_EQ(takeAll(ctx, row, "settings"), row.number("status")); });
}

// What was set is answered, in the order of the answers: asking for a number may change what is there.
ROWS(OcspMessage, Get) {
    withMessage(row, [&](auto &ctx) {
        const Trace trace;
        EXPECT_EQ(takeAll(ctx, row, "settings"), KACERT_Ok);
        checkAnswers(ctx, row);
        EXPECT_TRUE(trace.has(row("trace")));
    });
}

void decodeRow(const Row &row) {
    withMessage(row, [&](auto &ctx) {
        const Exact der(row.octets("der"));
        EXPECT_EQ(decode(ctx, der.bytes()), row.number("status"));
        checkAnswers(ctx, row);
    });
}
SWEPT_ROWS(OcspMessage, DecodeRequest, {KACERT_MemoryErr, KACERT_InvalidItemErr}, false) {
    decodeRow(row);
}
SWEPT_ROWS(OcspMessage, Decode, {KACERT_MemoryErr}, false) {
    decodeRow(row);
}

TEST(OcspMessage, OddAnswers) {
    const RequestPtr request = create<RequestCtx>();
    KA_OCSP_SetRequestAttributeInt(request.get(), OCSP_EXT_CRL_NUM, 1);
    request->extensions.hasAcceptable = 1;
    for (const char *one : {"\x2A", "\x2B"})
        set(*request, OCSP_EXT_ACCEPTABLERESON, one);
    EXPECT_EQ(ask(*request, OCSP_EXT_ACCEPTABLERESON), "2B"); // one of them, the last
    const Trace trace;
    const RequestListPtr question = create<RequestListCtx>();
    failAllocation(Pool::Library, 1, false);
    EXPECT_EQ(set(*question, OCSP_REQUESTLIST_ISSUERNAME, "a"), KACERT_InvalidItemErr);
    endFailing();
    EXPECT_TRUE(trace.has("------------>OCSP_REQUESTLIST_ISSUERNAME Error"));
    const ResponsePtr response = create<ResponseCtx>();
    const std::tuple<const char *, std::function<int32_t(const uint8_t *)>, int32_t> parameters[] = {
        {"question", [&](auto *p) { return KA_OCSP_SetRequestListHashFunc(question.get(), echo, p, 1); }, 108},
        {"request", [&](auto *p) { return KA_OCSP_SetRequestSignFunc(request.get(), echo, p, 1); }, 100},
        {"signing", [&](auto *p) { return KA_OCSP_SetResponseSignFunc(response.get(), echo, p, 1); }, 100},
        {"hashing", [&](auto *p) { return KA_OCSP_SetResponseHashFunc(response.get(), echo, p, 1); }, 100},
    };
    for (const auto &[name, set, want] : parameters) {
        failAllocation(Pool::Library, 1, false);
        EXPECT_EQ(set(bytesOf("p").data()), want) << name;
        endFailing();
    }
    EXPECT_EQ(set(*create<ResponseListCtx>(), 22, "a"), KACERT_InvalidItemErr);
    EXPECT_TRUE(trace.has("------------>OCSPAttributeType is Invalid Item"));
    EXPECT_EQ(KA_OCSP_SetResponseListAttributeChar(nullptr, 25, bytesOf("a").data(), 1), KACERT_InvalidItemErr);
    EXPECT_TRUE(trace.has("------------>The responder is Invalid Item"));
}

// The version of a decoded request counts as set once it was asked for.
TEST(OcspMessage, WhatWasDecodedIsEncodedAgain) {
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

TEST(OcspMessage, ListsOfASecondDecoding) {
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
TEST(OcspMessage, ParametersOfOneOctet) {
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

TEST(OcspMessage, PrivateExtensionsAreKept) {
    const Octets id = hex("2A 03"), value = hex("01 02");
    const auto add = [&](RequestCtx &ctx, int32_t idLength, int32_t length, uint8_t critical) {
        return KA_OCSP_SetRequestPrivateAttribute(&ctx, id.data(), idLength, value.data(), length, critical);
    };
    sweep(
        [&] {
            const RequestPtr ctx = create<RequestCtx>();
            for (const uint8_t critical : hex("01 00"))
                EXPECT_EQ(TRIED(add(*ctx, 2, 2, critical)), KACERT_Ok);
            EXPECT_EQ(add(*ctx, 0, 2, 1), KACERT_InvalidItemErr);
            EXPECT_EQ(add(*ctx, 2, 0, 1), KACERT_InvalidItemErr);
            const OcspExtension &ext = ctx->extensions;
            ASSERT_EQ(ext.hasPrivate * 10u + ext.privateCount, 12u);
            EXPECT_EQ(toHex(ext.privates->oid) + " = " + toHex(ext.privates->value), "2A 03 = 01 02");
            EXPECT_EQ(ext.privates->critical * 10 + ext.privates->next->critical, 10);
        },
        {{KACERT_MemoryErr, KACERT_InvalidItemErr}});
}

TEST(OcspMessage, StatusOfASingleResponse) {
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
TEST(OcspMessage, ReadingATimeChangesWhatIsWritten) {
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
}

// A name attribute that is refused has raised its flag; a name that was decoded has both.
TEST(OcspMessage, FlagsOfTheNameCollide) {
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

TEST(OcspMessage, AbsentArgumentsDoNothing) {
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
