// Faults of messages that were there once.
#include "testkit.h"

#include "messages.h"

using namespace karil_test;

namespace {

// What a part holds can be decoded into it.
template <class Ctx> void decodeOwn(int32_t id, Anybuf Ctx::*field, std::string_view der, std::string_view want) {
    const Owner<Ctx> ctx = create<Ctx>();
    EXPECT_EQ(set(*ctx, id, hex(der)), KACERT_Ok);
    EXPECT_EQ(Family<Ctx>::decode(ctx.get(), (*ctx.*field).data, 0), KACERT_Ok);
    EXPECT_EQ(toHex(*ctx.*field), want);
}
TEST(Pkcs7Regression, PartsDecodeWhatTheyHold) {
    decodeOwn(PKCS7_ENCRYPT_ENCRYPTEDCONTENT, &EncryptedContentCtx::encryptedContent,
              "30 0D 06 02 2A 03 30 04 06 02 2A 04 80 01 78", "78");
    decodeOwn(PKCS7_RECIPIENT_ENCRYPTED_KEY, &RecipientInfoCtx::encryptedKey,
              "30 13 02 01 00 30 05 30 00 02 01 05 30 04 06 02 2A 03 04 01 78", "78");
    decodeOwn(PKCS7_SIGNER_SERIAL, &SignerInfoCtx::serial,
              "30 19 02 01 01 30 05 30 00 02 01 05 30 04 06 02 2A 03 30 04 06 02 2A 04 04 01 78", "05");
}

// A frame whose identifier is too long is refused as one that cannot be split, not as one of another type.
template <class Ctx>
std::string frameStatuses(int32_t (*make)(Ctx **), int32_t (*free)(Ctx *),
                          int32_t (*decode)(Ctx *, const uint8_t *, int32_t)) {
    Ctx *ctx = nullptr;
    std::string all;
    EXPECT_EQ(make(&ctx), KACERT_Ok);
    for (const size_t size : {20u, 21u, 1000u}) {
        const Exact der(seq({tlv(0x06, Octets(size, 0x2A)), hex("A0 02 30 00")}));
        all += std::to_string(decode(ctx, der.data(), lengthOf(der.bytes()))) + ' ';
    }
    free(ctx);
    return all;
}
TEST(Pkcs7Regression, LongIdentifiers) {
    EXPECT_EQ(frameStatuses(KA_PKCS7_CreateDataDecodeCtx, KA_PKCS7_DestoryDataDecodeCtx, KA_PKCS7_DecodePKCS7Data),
              "122 101 101 ");
    EXPECT_EQ(frameStatuses(KA_PKCS7_CreateDigestedDataDecodeCtx, KA_PKCS7_DestoryDigestedDataDecodeCtx,
                            KA_PKCS7_DecodePKCS7DigestedData),
              "122 101 101 ");
    EXPECT_EQ(frameStatuses(KA_PKCS7_CreateSignedDataDecodeCtx, KA_PKCS7_DestroySignedDataDecodeCtx,
                            KA_PKCS7_DecodeSignedData),
              "122 101 101 ");
    EXPECT_EQ(frameStatuses(KA_PKCS7_CreateEnvelopedDataDecodeCtx, KA_PKCS7_DestroyEnvelopedDataDecodeCtx,
                            KA_PKCS7_DecodePKCS7EnvelopedData),
              "122 101 101 ");
    EXPECT_EQ(frameStatuses(KA_PKCS7_CreateEncryptedDataDecodeCtx, KA_PKCS7_DestoryEncryptedDataDecodeCtx,
                            KA_PKCS7_DecodePKCS7EncryptedData),
              "121 121 121 ");
    EXPECT_EQ(frameStatuses(KA_PKCS7_CreateSignedAndEnvelopedDataDecodeCtx,
                            KA_PKCS7_DestorySignedAndEnvelopedDataDecodeCtx, KA_PKCS7_DecodeSignedAndEnvelopedData),
              "122 122 122 ");
}

} // namespace
