// The three checks over any input: as what a fixed issuer issued, as an issuer, and as a request in DER or PEM. The
// seeds verify; what verifies must not do so any more with a bit of its signed part changed.
#include "issuer.h"

using namespace karil_fuzz;

namespace {

int32_t asCertificate(const Area &object) {
    return KA_VerifyCert(issuerCertificate().data(), sizeOf(issuerCertificate()), object.data(),
                         sizeOf(object.bytes()));
}
int32_t asCrl(const Area &object) {
    return KA_VerifyCrl(issuerCertificate().data(), sizeOf(issuerCertificate()), object.data(), sizeOf(object.bytes()));
}
int32_t asIssuer(const Area &object) {
    return KA_VerifyCert(object.data(), sizeOf(object.bytes()), issuerCertificate().data(),
                         sizeOf(issuerCertificate()));
}
int32_t asRequest(const Area &object) {
    return KA_VerifyCsr_Sign(object.data(), lengthOf(object.bytes()));
}
constexpr int32_t (*Checks[])(const Area &) = {asCertificate, asCrl, asRequest, asIssuer};
constexpr size_t Signed = 3; // the first checks of Checks are of the input's own signature

// An octet within the signed part, behind the headers.
constexpr size_t Within = 60;

void checkChanged(size_t check, const Area &object, uint8_t bit) {
    const Area changed(object.bytes());
    changed.data()[Within] ^= static_cast<uint8_t>(1u << bit);
    must(Checks[check](changed) != KACERT_Ok, "a signature holds for just its content");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    return setenv("TZ", "UTC", 1);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input{{data, size}};
    const uint8_t choice = input.octet();
    const size_t check = choice % std::size(Checks);
    const Area object(input.rest);
    const bool isDer = !input.rest.empty() && input.rest[0] == 0x30;
    if (input.rest.empty())
        return 0;
    if (Checks[check](object) == KACERT_Ok && check < Signed && isDer)
        checkChanged(check, object, choice >> 5);
    return 0;
}
