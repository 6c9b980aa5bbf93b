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

} // namespace
