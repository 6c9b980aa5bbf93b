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
void checkHostile(const std::string &type, const Octets &der, int32_t want) {
    static const std::map<std::string, int32_t (*)(Bytes)> all = {
        {"data", use<DataCtx>},
        {"digested", use<DigestedDataCtx>},
        {"signed", use<SignedDataCtx>},
        {"enveloped", use<EnvelopedDataCtx>},
        {"encrypted", use<EncryptedDataCtx>},
        {"both", use<SignedAndEnvelopedDataCtx>},
    };
    EXPECT_EQ(all.at(type)(der), want);
    for (const auto &[name, each] : all)
        each(der);
    const Exact input(der), content(der.size());
    uint32_t length = 0;
    int32_t found = 0;
    KA_PKCS7_DecodePKCS7DerTypeData(input.data(), lengthOf(der), content.data(), &length, &found);
}
ROWS(Pkcs7Message, Hostile) {
    checkHostile(row("type"), row.octets("der"), row.number("status"));
}

// In an attribute's value and in the content; neither is opened.
TEST(Pkcs7Hostile, DeepNesting) {
    const Octets identity = seq({commonName("A"), hex("02 01 05")}), alg = algorithm("2A 03");
    const Octets signedOid = oid("2A 86 48 86 F7 0D 01 07 02");
    Octets deep = hex("05 00");
    for (int i = 0; i < 10000; ++i)
        deep = tlv(0x30, deep);
    const auto check = [&](const Octets &content, const Octets &signers) {
        const Octets message = seq({hex("02 01 01 31 00"), seq({signedOid, content}), tlv(0x31, signers)});
        checkHostile("signed", seq({signedOid, tlv(0xA0, message)}), KACERT_Ok);
    };
    check(tlv(0xA0, deep), {});
    check({}, seq({hex("02 01 01"), identity, alg, tlv(0xA0, seq({oid("2A 05"), set({deep})})), alg, hex("04 00")}));
}

} // namespace
