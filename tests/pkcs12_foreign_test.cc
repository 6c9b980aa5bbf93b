// Bundles that other programs write in forms of their own.
#include "rows.h"

#include "foreign.h"

using namespace karil_test;

namespace {

constexpr std::string_view Password = "sesame";

// "status N", with which nothing is written, or key and certificate in hex.
std::string read(Bytes input, std::string_view password = Password) {
    const Exact der(input);
    const Exact key(Octets(input.size(), 0xEE)), certificate(Octets(input.size(), 0xEE));
    uint32_t keyLength = 12345, certificateLength = 12345;
    const Bytes secret = bytesOf(password);
    const int32_t status =
        TRIED(KA_PKCS12_GetKeyAndCertFromNspP12(der.data(), sizeOf(input), secret.data(), sizeOf(secret),
                                                certificate.data(), &certificateLength, key.data(), &keyLength));
    if (status == 0)
        return toHex(key.data(), keyLength) + " / " + toHex(certificate.data(), certificateLength);
    EXPECT_EQ(toHex(key.bytes()) + toHex(certificate.bytes()),
              toHex(Octets(input.size(), 0xEE)) + toHex(Octets(input.size(), 0xEE)));
    EXPECT_EQ(keyLength + certificateLength, 24690u);
    return "status " + std::to_string(status);
}

Octets counted(size_t size) {
    Octets octets(size);
    for (size_t i = 0; i < size; ++i)
        octets[i] = static_cast<uint8_t>(i * 5 + 1);
    return octets;
}

SWEPT_ROWS(Pkcs12Foreign, Bundles, .statuses = {1}) {
    const Octets key = counted(row.number<size_t>("key"));
    Octets certificate = counted(row.number<size_t>("certificate"));
    certificate.back() = row.octets("last")[0];
    const Octets oid = row.octets("oid"), count = row.octets("count");
    std::vector<size_t> cuts;
    for (const std::string &cut : row.list("cuts"))
        cuts.push_back(std::stoul(cut));
    static std::string place;
    static Octets bundle;
    if (place != row.place) { // not under failing allocations
        const auto rounds = row.number<uint32_t>("iterations");
        bundle = foreignBundle({oid, rounds, keyInfo(key), {}, 0, count},
                               {oid, rounds, oneCertificate(certificate), cuts, row.number<size_t>("left"), count},
                               Password);
        place = row.place;
    }
    const auto status = row.number("status");
    EXPECT_EQ(read(bundle), status == 0 ? toHex(key) + " / " + toHex(certificate) : "status " + std::to_string(status));
}

ROWS(Pkcs12Foreign, Refused) {
    EXPECT_EQ(read(row.octets("der")), "status -1");
}

// Every prefix that lacks an octet of a cipher text, a wrong password, and the reader of PFX files.
TEST(Pkcs12Foreign, OneReaderTakesIt) {
    const ForeignItem key = {hex("2A864886F70D010C0104"), 7, keyInfo(counted(20))};
    const Octets bundle = foreignBundle(key, {key.oid, 7, oneCertificate(counted(30)), {16, 16}}, Password);
    const std::string want = toHex(counted(20)) + " / " + toHex(counted(30));
    const size_t ends = 10; // five pairs of octets
    for (size_t size = 0; size <= bundle.size(); ++size) {
        const bool isWhole = size >= bundle.size() - ends && (bundle.size() - size) % 2 == 0;
        EXPECT_EQ(read(Bytes(bundle).first(size)), isWhole ? want : "status -1") << size;
    }
    EXPECT_EQ(read(bundle, "Sesame"), "status -1");
    PfxCtx *ctx = nullptr;
    int32_t verdict = 0;
    EXPECT_EQ(KA_PKCS12_CreateDecodePfx(&ctx), KACERT_Ok);
    EXPECT_NE(KA_PKCS12_DecodePFX(ctx, bytesOf(Password).data(), 6, bundle.data(), lengthOf(bundle), &verdict), 0);
    KA_PKCS12_DestroyDecodePFX(ctx);
}

TEST(Pkcs12Foreign, KeysAreWiped) {
    const ForeignItem item = {hex("2A864886F70D010C0101"), 7, keyInfo(counted(40))};
    const Octets bundle = foreignBundle(item, {item.oid, 7, oneCertificate(counted(9))}, Password);
    // Two plain texts, a derivation for each.
    EXPECT_EQ(releasedWith({counted(40)}, 4, [&] { EXPECT_NE(read(bundle)[0], 's'); }), 0);
}

SWEPT_ROWS(Pkcs12Foreign, Gfan) {
    const Exact bags(row.octets("bags")), keyBag(row.octets("keyBag"));
    Octets area[] = {Octets(32, 0xEE), Octets(32, 0xEE), Octets(32, 0xEE)};
    uint32_t length[] = {32, 32, 32};
    const Trace trace;
    const int32_t status = TRIED(KA_PKCS12_Decode_GFAN(bags.data(), lengthOf(bags.bytes()), keyBag.data(),
                                                       lengthOf(keyBag.bytes()), area[0].data(), &length[0],
                                                       area[1].data(), &length[1], area[2].data(), &length[2]));
    EXPECT_EQ(status, row.number("status"));
    const std::string_view want[] = {"the key", "second one", "first"};
    for (size_t i = 0; i < 3; ++i)
        EXPECT_EQ(toHex(area[i].data(), length[i]), toHex(status == KACERT_Ok ? text(want[i]) : Octets(32, 0xEE)));
    EXPECT_TRUE(isHindered() || trace.has(row("words")));
}

} // namespace
