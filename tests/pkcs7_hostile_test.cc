// Messages that are changed, cut off or wrong from the start: a status always, a fault never.
#include "message_rows.h"

using namespace karil_test;

namespace {

template <class Ctx> int32_t use(Bytes der) {
    const Use one = useAll<Ctx>(der);
    EXPECT_TRUE(one.status == KACERT_Ok || (one.status >= KACERT_MemoryErr && one.status <= KAPKCS7_ContentTypeErr));
    EXPECT_TRUE(one.isVerdictKept);
    return one.status;
}

// The longest message of the rows.
template <class Ctx> void changeAll(const char *file, const char *type) {
    Octets der;
    for (const Row &row : rowsOf(file, "Encode"))
        if (row("want")[0] != 's' && (type == nullptr || row("type") == type) && row.octets("want").size() > der.size())
            der = row.octets("want");
    cutAndChange(der, use<Ctx>);
}

TEST(Pkcs7Hostile, EveryOctetChanged) {
    changeAll<DataCtx>("Pkcs7Message", "data");
    changeAll<DigestedDataCtx>("Pkcs7Digested", nullptr);
    changeAll<EnvelopedDataCtx>("Pkcs7Message", "enveloped");
    changeAll<EncryptedDataCtx>("Pkcs7Message", "encrypted");
    changeAll<SignedDataCtx>("Pkcs7Message", "signed");
    changeAll<SignedAndEnvelopedDataCtx>("Pkcs7Message", "both");
}

// Each into every family's decoder, its own one first, and into the one for any type.
TEST(Pkcs7Hostile, NamedInputs) {
    const Octets types = hex("2A 86 48 86 F7 0D 01 07"), data = oid("2A 86 48 86 F7 0D 01 07 01");
    const Octets id = seq({commonName("A"), hex("02 01 05")}), alg = algorithm("2A 03");
    const auto framed = [&](uint8_t type, const Octets &content) {
        return seq({tlv(0x06, cat({types, {type}})), tlv(0xA0, content)});
    };
    const auto signedBy = [&](const Octets &signers) {
        return framed(2, seq({hex("02 01 01 31 00"), seq({data}), signers}));
    };
    const auto attributed = [&](const Octets &attributes, const Octets &signature) {
        return signedBy(set({seq({hex("02 01 01"), id, alg, attributes, alg, signature})}));
    };
    const auto enveloped = [&](const Octets &recipients, const Octets &cipher) {
        return framed(3, seq({hex("02 01 00"), recipients, seq({data, cipher, hex("80 01 AA")})}));
    };
    const auto recipient = [&](const Octets &algorithm, const Octets &key) {
        return set({seq({hex("02 01 00"), id, algorithm, key})});
    };
    Octets deep = hex("05 00");
    for (int i = 0; i < 10000; ++i)
        deep = tlv(0x30, deep);
    const auto asSigned = use<SignedDataCtx>, asEnveloped = use<EnvelopedDataCtx>;
    const struct {
        const char *name;
        Octets der;
        int32_t (*own)(Bytes);
        int32_t want;
    } rows[] = {
        {"another type in an attribute's value", attributed(tlv(0xA0, seq({oid("2A 05"), hex("02 00")})), hex("04 00")),
         asSigned, KACERT_InvalidTagErr},
        {"an empty SET of attributes", attributed(hex("A0 00"), hex("04 01 AA")), asSigned, KACERT_Ok},
        {"an empty SET of values", attributed(tlv(0xA0, seq({oid("2A 05"), hex("31 00")})), hex("04 00")), asSigned,
         KACERT_Ok},
        {"no content, and an empty SET of signers", signedBy(hex("31 00")), asSigned, KACERT_Ok},
        {"nothing in the content's tag", framed(2, {}), asSigned, KACERT_InvalidItemErr},
        {"a signature of 0 octets", attributed({}, hex("04 00")), asSigned, KACERT_Ok},
        {"an algorithm without identifier",
         signedBy(set({seq({hex("02 01 01"), id, hex("30 00"), alg, hex("04 00")})})), asSigned, KACERT_CertNotEndErr},
        {"nesting in an attribute's value", attributed(tlv(0xA0, seq({oid("2A 05"), set({deep})})), hex("04 00")),
         asSigned, KACERT_Ok},
        {"nesting in the content",
         framed(2,
                seq({hex("02 01 01 31 00"), seq({oid("2A 86 48 86 F7 0D 01 07 02"), tlv(0xA0, deep)}), hex("31 00")})),
         asSigned, KACERT_Ok},
        {"an identifier of 0 octets", seq({hex("06 00"), tlv(0xA0, hex("04 00"))}), asSigned, KAPKCS7_ContentTypeErr},
        {"an identifier of 1,000 octets", seq({tlv(0x06, Octets(1000, 0x2A)), tlv(0xA0, hex("04 00"))}), asSigned,
         KACERT_InvalidLengthErr},
        {"a length of 4 GB", hex("30 84 FF FF FF FF 06 01 2A"), asSigned, KACERT_LengthNotEqualErr},
        {"an inner length of 4 GB", seq({hex("06 09"), types, hex("02 A0 84 FF FF FF FF 30 00")}), asSigned,
         KACERT_InvalidLengthErr},
        {"an empty SET of recipients", enveloped(hex("31 00"), alg), asEnveloped, KACERT_Ok},
        {"algorithms without parameters", enveloped(recipient(seq({oid("2A")}), hex("04 01 AA")), seq({oid("2A")})),
         asEnveloped, KACERT_Ok},
        {"a key that opens to 0 octets", enveloped(recipient(alg, hex("04 01 AA")), alg), asEnveloped, KACERT_Ok},
        {"a key of 0 octets", enveloped(recipient(alg, hex("04 00")), alg), asEnveloped, KACERT_Ok},
        {"digested without anything", framed(5, hex("30 00")), use<DigestedDataCtx>, KACERT_InvalidItemErr},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(row.own(row.der), row.want) << row.name;
        for (const auto each : {use<SignedDataCtx>, use<DataCtx>, use<DigestedDataCtx>, use<EnvelopedDataCtx>,
                                use<EncryptedDataCtx>, use<SignedAndEnvelopedDataCtx>})
            each(row.der);
        const Exact der(row.der), content(row.der.size());
        uint32_t length = 0;
        int32_t type = 0;
        KA_PKCS7_DecodePKCS7DerTypeData(der.data(), lengthOf(row.der), content.data(), &length, &type);
    }
}

} // namespace
