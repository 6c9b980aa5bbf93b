// Opens any ContentInfo: decodes it as every kind of message, asks for everything, verifies, opens, and writes again.
#include "fuzz.h"

#include "whole_messages.h"

using namespace karil_fuzz;

namespace {

template <class Ctx> void use(Bytes der) {
    must(karil_test::useAll<Ctx>(der).isVerdictKept, "a signer's mark is that of its last verdict");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    const Area der(Bytes{data, size});
    const Area content(size);
    uint32_t length = 0;
    int32_t type = 0;
    const int32_t status =
        KA_PKCS7_DecodePKCS7DerTypeData(der.data(), static_cast<int32_t>(size), content.data(), &length, &type);
    must(status != KACERT_Ok || (length > 0 && length < size), "a content is shorter than its frame");
    use<DataCtx>(der.bytes());
    use<DigestedDataCtx>(der.bytes());
    use<SignedDataCtx>(der.bytes());
    use<EnvelopedDataCtx>(der.bytes());
    use<EncryptedDataCtx>(der.bytes());
    use<SignedAndEnvelopedDataCtx>(der.bytes());
    return 0;
}
