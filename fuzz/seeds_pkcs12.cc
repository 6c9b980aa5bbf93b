// Seeds of PKCS#12.
#include "bags.h"
#include "foreign.h"
#include "seeds.h"

namespace karil_fuzz {
namespace {

// The octets under the password "pw" and the salt "salt", by one round.
Octets enciphered(const Octets &algorithm, const Octets &plain) {
    Octets out(plain.size() + 8);
    uint32_t length = 0;
    must(KA_PKCS12_PbeWithDigestAlgoAndEncrypt(algorithm.data(), sizeOf(algorithm), bytesOf("pw").data(), 2,
                                               bytesOf("salt").data(), 4, 1, plain.data(), sizeOf(plain), out.data(),
                                               &length) == KACERT_Ok,
         "a seed is enciphered");
    out.resize(length);
    return out;
}

// A PFX with a key and a certificate, each with attributes, by the algorithms that end in these octets.
Octets pfxSeed(uint8_t keyAlgorithm, uint8_t certAlgorithm, bool isKeyFirst) {
    const Octets parameter = seq({tlv(0x04, text("salt")), hex("02 01 01")});
    const Octets pkcs12 = hex("2A 86 48 86 F7 0D 01 0C 01");
    const auto bag = [](const char *type, const Octets &value, const Octets &attributes) {
        return seq({seq({oid(type), tlv(0xA0, value), tlv(0x31, attributes)})});
    };
    const auto info = [](const Octets &content) {
        return seq({oid("2A 86 48 86 F7 0D 01 07 01"), tlv(0xA0, tlv(0x04, content))});
    };
    const Octets attribute = seq({oid("2A 05"), tlv(0x31, hex("0C 01 61"))});
    const Octets keyType = cat({pkcs12, {keyAlgorithm}}), certType = cat({pkcs12, {certAlgorithm}});
    const Octets plain = seq({hex("02 01 00"), algorithm(RsaEncryption), tlv(0x04, text("key")), tlv(0xA0, attribute)});
    const Octets key = info(bag("2A 86 48 86 F7 0D 01 0C 0A 01 02",
                                seq({seq({tlv(0x06, keyType), parameter}), tlv(0x04, enciphered(keyType, plain))}),
                                cat({attribute, attribute})));
    const Octets certs =
        bag("2A 86 48 86 F7 0D 01 0C 0A 01 03",
            seq({oid("2A 86 48 86 F7 0D 01 09 16 01"), tlv(0xA0, tlv(0x04, text("certificate")))}), attribute);
    const Octets content = seq({oid("2A 86 48 86 F7 0D 01 07 01"), seq({tlv(0x06, certType), parameter}),
                                tlv(0x80, enciphered(certType, certs))});
    const Octets encrypted = seq({oid("2A 86 48 86 F7 0D 01 07 06"), tlv(0xA0, seq({hex("02 01 00"), content}))});
    const Octets safe = isKeyFirst ? seq({key, info(certs)}) : seq({encrypted, key});
    Octets macKey(20), mac(20);
    uint32_t length = 0;
    KA_PKCS12_GenRandomFromPassword(KA_DIGEST_SHA1, bytesOf("pw").data(), 2, bytesOf("salt").data(), 4, 3, 1,
                                    macKey.data(), 20);
    KA_PKCS12_HMAC(KA_DIGEST_SHA1, macKey.data(), 20, safe.data(), sizeOf(safe), mac.data(), &length);
    return seq({hex("02 01 03"), info(safe),
                seq({seq({algorithm("2B 0E 03 02 1A"), tlv(0x04, mac)}), tlv(0x04, text("salt")), hex("02 01 01")})});
}

} // namespace

void addPfx(Folder files, Folder safes, Folder programs) {
    for (uint8_t algorithm = 1; algorithm <= 6; ++algorithm) {
        files.add(pfxSeed(algorithm, static_cast<uint8_t>(7 - algorithm), algorithm % 3 == 0));
        safes.add(pfxSeed(algorithm, algorithm, false));
    }
    const Octets message = seq({hex("02 01 01"), hex("31 00"),
                                seq({oid("2A 86 48 86 F7 0D 01 07 01"), tlv(0xA0, hex("04 04 30 02 30 00"))}),
                                tlv(0xA0, hex("30 00")), hex("31 00")});
    safes.add(seq({hex("02 01 03"), seq({oid("2A 86 48 86 F7 0D 01 07 02"), tlv(0xA0, message)})}));
    programs.add(
        {2, 'p', 'w', 8, 3, 'k', 'e', 'y', 9, 4, 'c', 'e', 'r', 't', 0, 1, 5, 1, 6, 1, 1, 5, 1, 6, 3, 1, 5, 1, 6}, {});
}

// Each bag with all its fields and attributes, and a program that sets them.
void addBags(Folder bags) {
    withEachBag([&](auto kit) {
        Bag<decltype(kit)> bag;
        for (const auto &field : kit.Fields)
            must(bag.set(field.name, hex("30 06 04 01 73 02 01 05")) == KACERT_Ok, "a field can be set");
        for (int i = 0; i < 2; ++i)
            bag.set("attribute 2A03", hex("05 00"));
        bags.add({0}, hex(bag.encoded()));
    });
    bags.add(hex("01 00 01 00 01 02 2A 03 02 03 30 01 61 00 02 05 00 03 02 05 00"));
}

// Each algorithm with a password of two octets and a salt of one; MacData and parameters as the text.
void addPkcs12Crypt(Folder inputs) {
    for (uint8_t choice = 0; choice < 13; ++choice)
        inputs.add({choice, 2, 2, 1, 'p', 'w', 0x5A}, Octets(choice, 0xAA));
    const Octets info = seq({algorithm("2B 0E 03 02 1A"), tlv(0x04, Octets(20, 1))});
    inputs.add({0, 1, 1, 0, 'k'}, seq({info, hex("04 02 01 02 02 02 07 D0")}));
    inputs.add({0, 1, 16, 16}, cat({Octets(32, 1), seq({hex("04 02 01 02 02 02 07 D0")})}));
}

// A bundle as it is; items that are enciphered; two certificates beside a key.
void addForeign(Folder inputs) {
    const Octets info = keyInfo(Octets(20, 0x5A));
    const Octets safe = oneCertificate(Octets(40, 0xA5));
    for (const uint8_t last : {uint8_t{1}, uint8_t{3}, uint8_t{6}}) {
        const Octets id = cat({hex("2A864886F70D010C01"), {last}});
        inputs.add({0},
                   foreignBundle({id, 1, info, {}, 0, hex("02 01 01")}, {id, 1, safe, {16}, 0, hex("02 01 01")}, "pw"));
        inputs.add({1, last, 1, last, 1, 2, 16, 24, 0, static_cast<uint8_t>(info.size())}, cat({info, safe}));
    }
    const Octets two = cat({{0x30, static_cast<uint8_t>(2 * (safe.size() - 2))},
                            {safe.begin() + 2, safe.end()},
                            {safe.begin() + 2, safe.end()}});
    inputs.add({2, static_cast<uint8_t>(info.size())}, cat({info, two}));
}

} // namespace karil_fuzz
