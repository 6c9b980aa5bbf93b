// The readers of foreign bundles: any input, and bundles whose plain texts are any octets, cut anywhere.
#include "fuzz.h"

#include "foreign.h"

using namespace karil_fuzz;

namespace {

void read(Bytes input) {
    const Area der(input);
    const Area key(input.size());
    const Area certificate(input.size());
    uint32_t keyLength = 0;
    uint32_t certificateLength = 0;
    const int32_t status =
        KA_PKCS12_GetKeyAndCertFromNspP12(der.data(), sizeOf(input), bytesOf("pw").data(), 2, certificate.data(),
                                          &certificateLength, key.data(), &keyLength);
    must(status == 0 || status == -1, "no other answer");
    must(keyLength <= input.size() && certificateLength <= input.size(), "what is read was there");
}

void readEnciphered(Input input) {
    const Octets known[] = {hex("2A864886F70D010C0101"), hex("2A864886F70D010C0103"), hex("2A864886F70D010506")};
    ForeignItem key = {known[input.octet() % 3], input.octet() % 4u, {}};
    ForeignItem certificate = {known[input.octet() % 3], input.octet() % 4u, {}};
    key.count = hex("02 01 00");
    key.count[2] = static_cast<uint8_t>(key.iterations);
    certificate.count = hex("02 01 00");
    certificate.count[2] = static_cast<uint8_t>(certificate.iterations);
    for (uint8_t cuts = input.octet() % 6; cuts > 0; --cuts)
        certificate.cuts.push_back(input.octet());
    certificate.left = input.octet() % 2 * 8u;
    key.plain = copyOf(input.take(input.octet()));
    certificate.plain = cat({copyOf(input.rest), Octets(8)});
    const Octets bundle = foreignBundle(key, certificate, "pw");
    read(bundle);
}

void readPlain(Input input) {
    const Area keyBag(input.take(input.octet()));
    const Area safe(input.rest);
    const Area outputs[] = {Area(keyBag.record.length), Area(safe.record.length), Area(safe.record.length)};
    uint32_t lengths[3] = {};
    KA_PKCS12_Decode_GFAN(safe.data(), lengthOf(safe.bytes()), keyBag.data(), lengthOf(keyBag.bytes()),
                          outputs[0].data(), &lengths[0], outputs[1].data(), &lengths[1], outputs[2].data(),
                          &lengths[2]);
    for (size_t i = 0; i < 3; ++i)
        must(lengths[i] <= outputs[i].record.length, "what is read was there");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input = {{data, size}};
    switch (input.octet() % 3) {
    case 0:
        read(input.rest);
        break;
    case 1:
        readEnciphered(input);
        break;
    default:
        readPlain(input);
        break;
    }
    return 0;
}
