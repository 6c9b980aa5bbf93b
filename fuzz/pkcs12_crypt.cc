// Derivation, ciphers, MacData and parameters with any arguments: what is enciphered comes back, what is read is
// written.
#include "fuzz.h"

using namespace karil_fuzz;

namespace {

struct Arguments {
    Bytes oid, password, salt, text;
    uint32_t iterations;
};

Bytes oidOf(uint8_t choice, Bytes own) {
    static const std::vector<Octets> known = [] {
        std::vector<Octets> all;
        for (uint8_t last = 1; last < 7; ++last)
            all.push_back(cat({hex("2A864886F70D010C01"), {last}}));
        for (const uint8_t last : hex("01 03 04 06 0A 0B"))
            all.push_back(cat({hex("2A864886F70D0105"), {last}}));
        return all;
    }();
    return choice < known.size() ? Bytes(known[choice]) : own;
}

void encipher(const Arguments &from) {
    PbeHookParam parameter = {from.oid.data(),  sizeOf(from.oid),  from.password.data(), sizeOf(from.password),
                              from.salt.data(), sizeOf(from.salt), from.iterations};
    const Area sealed(from.text.size() + 8);
    const Area opened(from.text.size() + 8);
    uint32_t length = 0;
    if (KA_EncryptFunc_Ref(from.text.data(), sizeOf(from.text), sealed.data(), &length, &parameter) == KACERT_Ok) {
        const int32_t status = KA_DecryptFunc_Ref(sealed.data(), length, opened.data(), &length, &parameter);
        // An empty text is all padding, which is refused.
        must(status == (from.text.empty() && length > 0 ? KACERT_InvalidLengthErr : KACERT_Ok), "it can be opened");
        must(status != KACERT_Ok || equal({opened.data(), length}, from.text), "the text comes back");
    }
    const int32_t status = KA_DecryptFunc_Ref(from.text.data(), sizeOf(from.text), opened.data(), &length, &parameter);
    must(status != KACERT_Ok || length <= from.text.size(), "a plain text is no longer than its cipher text");
    const Area derived(from.text.size());
    KA_PKCS12_GenRandomFromPassword(from.text.size() % 9, from.password.data(), sizeOf(from.password), from.salt.data(),
                                    sizeOf(from.salt), 3, from.iterations, derived.data(), sizeOf(derived.bytes()));
}

// Key and IV as they come.
void encipherWithKey(const Arguments &from) {
    const Area area(from.text.size() + 16);
    uint32_t length = 0;
    for (const auto call : {KA_PKCS12_DESEncrypt, KA_PKCS12_DESDecrypt})
        call(from.oid.data(), sizeOf(from.oid), from.password.data(), sizeOf(from.password), from.salt.data(),
             sizeOf(from.salt), from.text.data(), sizeOf(from.text), area.data(), &length);
    for (const auto call : {KA_PKCS12_AESEncrypt, KA_PKCS12_AESDecrypt})
        call(2, from.password.data(), sizeOf(from.password), from.salt.data(), sizeOf(from.salt), from.text.data(),
             sizeOf(from.text), area.data(), &length);
    if (KA_PKCS12_AESEncrypt(2, hex("0102030405060708090A0B0C0D0E0F10").data(), 16, Octets(16).data(), 16,
                             from.text.data(), sizeOf(from.text), area.data(), &length) == KACERT_Ok) {
        must(KA_PKCS12_AESDecrypt(2, hex("0102030405060708090A0B0C0D0E0F10").data(), 16, Octets(16).data(), 16,
                                  area.data(), length, area.data(), &length) == KACERT_Ok,
             "AES can be opened");
        must(equal({area.data(), length}, from.text), "the text comes back from AES");
    }
}

void readParameter(Bytes der) {
    const Area salt(der.size());
    const Area again(der.size() + 20);
    uint32_t length = 0;
    uint32_t iterations = 0;
    if (der.empty() || KA_PKCS12_DecodeParameter(salt.data(), &length, &iterations, der.data(), sizeOf(der)) != 0)
        return;
    uint32_t size = 0;
    must(KA_PKCS12_EncodeParameter(salt.data(), length, iterations, again.data(), &size) == KACERT_Ok, "it is written");
    const Area second(size);
    uint32_t count = 0;
    must(KA_PKCS12_DecodeParameter(second.data(), &length, &count, again.data(), size) == KACERT_Ok &&
             count == iterations && equal({second.data(), length}, {salt.data(), length}),
         "a parameter comes back");
}

void readMac(Bytes der, Bytes key) {
    HmacHookParam parameter = {KA_DIGEST_SHA1, key.data(), sizeOf(key)};
    const Area source(der);
    uint8_t input[] = "content";
    MacRecord mac = {};
    mac.macFunc = KA_HMACFunc_Ref;
    mac.macInput = {input, 7, 0, 0, 0, nullptr, nullptr};
    mac.macFuncParameter = {reinterpret_cast<uint8_t *>(&parameter), sizeof parameter, 0, 0, 0, nullptr, nullptr};
    const int32_t status = KA_PKCS12_DecodeMac(&mac, &source.record);
    Chain again;
    if (status == KACERT_Ok && made(again, KA_PKCS12_EncodeMac, &mac) == KACERT_Ok)
        must(KA_PKCS12_DecodeMac(&mac, again.get()) == KACERT_Ok && mac.verified == 1, "what was written verifies");
    for (Anybuf *field : {&mac.digestAlgorithm.oid, &mac.digest, &mac.salt})
        KI_ClearAnybuf(field);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input = {{data, size}};
    const uint8_t choice = input.octet();
    Arguments from = {};
    from.iterations = input.octet();
    from.password = input.take(input.octet());
    from.salt = input.take(input.octet());
    from.text = input.rest;
    from.oid = oidOf(choice % 16, from.salt);
    encipher(from);
    encipherWithKey(from);
    readParameter(from.text);
    readMac(from.text, from.password);
    return 0;
}
