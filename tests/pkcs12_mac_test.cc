// MacData and the parameters of password-based encryption.
#include "messages.h"
#include "rows.h"

using namespace karil_test;

namespace {

void put(Anybuf &record, const Octets &octets) {
    if (!octets.empty())
        TRIED(KI_SetAttributeCharValue(&record, octets.data(), sizeOf(octets)));
}

struct Mac {
    MacRecord record = {};

    Mac() = default;
    explicit Mac(const Row &row) : Mac() {
        put(record.macInput, row.octets("input"));
        put(record.macFuncParameter, text(row("hook")));
        record.macFunc = row("hook") != "-" ? plainHook : nullptr;
    }
    ~Mac() {
        for (Anybuf *field :
             {&record.digestAlgorithm.oid, &record.digest, &record.salt, &record.macInput, &record.macFuncParameter})
            KI_ClearAnybuf(field);
    }
    Mac(const Mac &) = delete;
    Mac &operator=(const Mac &) = delete;
};

SWEPT_ROWS(Pkcs12Mac, Parameter) {
    const Octets salt = row.octets("salt"), der = row.octets("der");
    const Exact encoded(der.size()), decoded(salt.size());
    uint32_t length = 0;
    uint32_t iterations = 0;
    const auto count = row.number<uint32_t>("iterations");
    EXPECT_EQ(TRIED(KA_PKCS12_EncodeParameter(salt.data(), sizeOf(salt), count, encoded.data(), &length)), KACERT_Ok);
    EXPECT_EQ(toHex(encoded.data(), length), toHex(der));
    EXPECT_EQ(KA_PKCS12_DecodeParameter(decoded.data(), &length, &iterations, der.data(), sizeOf(der)), KACERT_Ok);
    EXPECT_EQ(toHex(decoded.data(), length), toHex(salt));
    EXPECT_EQ(iterations, count);
}

ROWS(Pkcs12Mac, Open) {
    const Exact der(row.octets("der"));
    const Exact salt(Octets(1, 0xEE));
    uint32_t length = 77;
    uint32_t iterations = 77;
    const int32_t status =
        KA_PKCS12_DecodeParameter(salt.data(), &length, &iterations, der.data(), row.number<uint32_t>("length"));
    const std::string answer = toHex(salt.data(), std::min(length, 1u)) + " / " + std::to_string(iterations);
    EXPECT_EQ(status == KACERT_Ok ? answer : "status " + std::to_string(status), row("want"));
    EXPECT_TRUE(status == KACERT_Ok || answer == "EE / 77");
}

SWEPT_ROWS(Pkcs12Mac, Decode) {
    Mac mac(row);
    MacRecord &is = mac.record;
    const Exact der(row.octets("der"));
    put(is.digest, text("old"));
    is.verified = 1;
    // The frame's words end in a blank, which a field of a row cannot.
    const std::string words = row("words") + (row("words").starts_with('=') ? " " : "");
    const Trace trace;
    const int32_t status = TRIED(KA_PKCS12_DecodeMac(&is, &der.record));
    EXPECT_EQ(status, row.number("status"));
    const std::string digest = is.digest.length > 8 ? std::to_string(is.digest.length) + " octets" : toHex(is.digest);
    EXPECT_EQ("[" + digest + "] [" + toHex(is.salt) + "] " + std::to_string(is.iterations) + ' ' +
                  std::to_string(is.verified),
              row("want"));
    EXPECT_EQ(toHex(is.digestAlgorithm.oid), row("want").starts_with("[6F") ? "" : "2B 0E 03 02 1A");
    EXPECT_TRUE(isHindered() || trace.has(words));
}

SWEPT_ROWS(Pkcs12Mac, Encode) {
    Mac mac(row);
    put(mac.record.digestAlgorithm.oid, row.octets("oid"));
    put(mac.record.salt, row.octets("salt"));
    mac.record.iterations = row.number<uint32_t>("iterations");
    Anybuf *out = nullptr;
    const int32_t status = TRIED(KA_PKCS12_EncodeMac(&mac.record, &out));
    EXPECT_EQ(answerOf(status, out), row.hex("want"));
    EXPECT_TRUE(status != KACERT_Ok || toHex(mac.record.digest) == "61 62 63");
}

// What a record holds can be decoded into it.
TEST(Pkcs12Mac, DecodesWhatItHolds) {
    Mac mac;
    put(mac.record.digest, hex("30 12 30 0C 30 04 06 02 2A 03 04 04 01 02 03 04 04 02 05 06"));
    EXPECT_EQ(KA_PKCS12_DecodeMac(&mac.record, &mac.record.digest), KACERT_Ok);
    EXPECT_EQ(toHex(mac.record.digest) + " / " + toHex(mac.record.salt), "01 02 03 04 / 05 06");
}

} // namespace
