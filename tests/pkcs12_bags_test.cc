// The bags and safes of PKCS#12.
#include "crypto.h"

#include "bags.h"
#include "rows.h"

#include <openssl/pkcs12.h>

using namespace karil_test;

namespace {

std::string answered(int32_t status, const std::string &answer) {
    return status == KACERT_Ok ? answer : "status " + std::to_string(status);
}

SWEPT_ROWS(Pkcs12Bags, Encode) {
    withBag(row("bag"), [&](auto kit) {
        Bag<decltype(kit)> bag;
        int32_t status = KACERT_Ok;
        for (const auto &[name, value] : row.settings("set")) {
            EXPECT_EQ(status, KACERT_Ok) << "before " << name;
            status = bag.set(name, value);
        }
        const std::string want = row.hex("want");
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(status == KACERT_Ok ? bag.encoded() : answered(status, ""), want);
        if (want[0] == 's')
            return;
        status = bag.decode(hex(want));
        EXPECT_EQ(answered(status, bag.held()), row("back"));
    });
}

// Into a context that holds something: what is decoded takes its place, and after a failure all is as it was.
SWEPT_ROWS(Pkcs12Bags, Decode) {
    withBag(row("bag"), [&](auto kit) {
        Bag<decltype(kit)> bag;
        bag.set(kit.Fields[std::size(kit.Fields) - 1].name, hex("30 00"));
        bag.set("attribute 2A07", hex("05 00"));
        const std::string before = bag.held();
        const Trace trace;
        const int32_t status = bag.decode(row.octets("der"));
        EXPECT_EQ(answered(status, bag.held()), row("want"));
        EXPECT_TRUE(status == KACERT_Ok || bag.held() == before);
        std::string words = row("trace");
        std::replace(words.begin(), words.end(), '+', ' '); // at the end of words, where a blank would get lost
        EXPECT_TRUE(trace.has(words) || isHindered()) << words;
    });
}

// Attributes and bags by number, forwards and backwards.
TEST(Pkcs12Bags, Indexes) {
    Bag<KeyKit> key;
    Bag<SafeKit> safe;
    Bag<ContentsKit> contents;
    EXPECT_EQ(key.attribute(1) + safe.attribute(1) + contents.bagAt(1), "");
    for (const char *name : {"attribute 01", "attribute 02", "attribute 03"}) {
        key.set(name, {});
        safe.set(name, hex("05"));
        contents.set("bag", hex(name + 10));
    }
    const std::tuple<int32_t, const char *, const char *, const char *> rows[] = {
        {2, "02=", "02=05", "[02]"}, {3, "03=", "03=05", "[03]"}, {1, "01=", "01=05", "[01]"}, {4, "03=", "", ""},
        {3, "03=", "03=05", "[03]"}, {INT32_MAX, "03=", "", ""},  {0, "", "=", "[]"},          {-1, "", "", ""},
    };
    for (const auto &[index, ofKey, ofSafe, bag] : rows)
        EXPECT_EQ(key.attribute(index) + ' ' + safe.attribute(index) + ' ' + contents.bagAt(index),
                  std::string(ofKey) + ' ' + ofSafe + ' ' + bag)
            << index;
    contents.ctx->count = 4;
    EXPECT_EQ(contents.bagAt(4), "status 121");
}

TEST(Pkcs12Bags, NegativeLengths) {
    const Exact octets(hex("05"));
    withEachBag([&](auto kit) {
        Bag<decltype(kit)> bag;
        EXPECT_EQ(kit.Fields[std::size(kit.Fields) - 1].set(bag.ctx, octets.data(), -1),
                  kit.Name == "contents" ? 121 : 108);
        const bool isExact = kit.Name == "key" || kit.Name == "enc" || kit.Name == "contents";
        EXPECT_EQ(kit.decode(bag.ctx, octets.data(), -1), isExact ? 102 : kit.Name == "safe" ? 108 : 101) << kit.Name;
    });
}

// What a call stores in two buffers, "one / two", or the status; outputs stay as they are after a failure.
template <class Call> std::string stored(Call call) {
    const Exact one(64), two(64);
    uint32_t lengths[2] = {0, 0};
    const int32_t status = TRIED(call(one.data(), &lengths[0], two.data(), &lengths[1]));
    EXPECT_TRUE(status == KACERT_Ok || lengths[0] + lengths[1] == 0);
    return answered(status, toHex(one.data(), lengths[0]) + " / " + toHex(two.data(), lengths[1]));
}

// The calls without a context of the caller's. Three bags return 108 for want of memory for their own.
TEST(Pkcs12Bags, GenAndParse) {
    const Exact id(hex("2A 03")), value(hex("AA BB")), cert(hex("30 0A 06 02 2A 03 A0 04 04 02 AA BB")),
        name(hex("30 0A 06 02 2A 03 A0 04 16 02 AA BB")),
        key(hex("30 0F 02 01 07 30 06 06 02 2A 03 05 00 04 02 AA BB"));
    int32_t number = 0;
    const auto genCert = [&](auto *one, auto *length, auto...) {
        return KA_PKCS12_GenCertBag(value.data(), 2, id.data(), 2, number, one, length);
    };
    const auto genKey = [&](auto *one, auto *length, auto...) {
        return KA_PKCS12_GenKeyBag(7, id.data(), 2, value.data(), 2, one, length);
    };
    const auto run = [&] {
        for (const int32_t isText : {-1, 0, 1, 5}) {
            number = isText;
            EXPECT_EQ(stored(genCert), toHex(isText < 1 ? cert.bytes() : name.bytes()) + " / ");
        }
        for (const auto gen : {KA_PKCS12_GenCrlBag, KA_PKCS12_GenSecretContentsBag})
            for (const int32_t length : {2, -1})
                EXPECT_EQ(stored([&](auto *one, auto *size, auto...) {
                              return gen(value.data(), 2, id.data(), length, one, size);
                          }),
                          length < 0 ? "status 108" : toHex(cert.bytes()) + " / ");
        EXPECT_EQ(stored(genKey), toHex(key.bytes()) + " / ");
        EXPECT_EQ(stored([&](auto... out) { return KA_PKCS12_ParseCertBag(out..., &number, name.data(), 0); }),
                  "AA BB / 2A 03");
        EXPECT_EQ(number, -1);
        for (const auto parse : {KA_PKCS12_ParseCrlBag, KA_PKCS12_ParseSecretContentsBag})
            EXPECT_EQ(stored([&](auto... out) { return parse(out..., cert.data(), 12); }), "status 121");
        for (const int32_t length : {17, 16})
            EXPECT_EQ(stored([&](auto... out) { return KA_PKCS12_ParseKeyBag(&number, out..., key.data(), length); }),
                      length == 17 ? "2A 03 / AA BB" : "status 102");
        EXPECT_EQ(number, 7);
    };
    sweep(run, {{KACERT_MemoryErr, KACERT_InvalidParamErr}});
    failAllocation(Pool::Library, 1, true);
    EXPECT_EQ(stored(genCert) + stored(genKey), "status 108status 100");
    endFailing();
    // The key may take the bag's place.
    uint32_t lengths[2] = {};
    KA_PKCS12_ParseKeyBag(&number, id.data(), &lengths[0], key.data(), &lengths[1], key.data(), 17);
    EXPECT_EQ(toHex(key.data(), lengths[1]), "AA BB");
}

// A cipher that copies, and notes what else it is called with. It fills up to `cipherWrites` octets, as far as there is
// room for sure, and fails after 77 iterations.
std::string cipherSaw;
uint32_t cipherWrites;
int32_t copying(const uint8_t *oid, uint32_t oidLength, const uint8_t *password, uint32_t passwordLength,
                const uint8_t *salt, uint32_t saltLength, uint32_t iterations, const uint8_t *input,
                uint32_t inputLength, uint8_t *output, uint32_t *outputLength) {
    cipherSaw = toHex(oid, oidLength) + " / " + toHex(password, passwordLength) + " / " + toHex(salt, saltLength) +
                " / " + std::to_string(iterations) + " / " + std::to_string(inputLength);
    *outputLength = std::max(inputLength, cipherWrites);
    std::fill_n(output, std::min(*outputLength, 3024u), uint8_t{0xEE});
    std::copy_n(input, inputLength, output);
    return iterations == 77 ? 55 : 0;
}

SWEPT_ROWS(Pkcs12Bags, GenEncKey) {
    const Exact id(hex("2A 03")), password(text("pw")), key(row.octets("key")), salt(row.octets("salt")), out(8192);
    const auto passwordLength = row.number("password"), iterations = row.number("iterations");
    cipherWrites = row.number<uint32_t>("writes");
    uint32_t length = 12345;
    const int32_t status = TRIED(KA_PKCS12_GenEncKeyBag(
        id.data(), 2, key.data(), lengthOf(key.bytes()), passwordLength > 0 ? password.data() : nullptr, passwordLength,
        salt.data(), lengthOf(salt.bytes()), iterations, out.data(), &length, copying));
    EXPECT_EQ(status, row.number("status"));
    EXPECT_EQ(status == KACERT_Ok, length != 12345);
    if (status != KACERT_Ok)
        return;
    Octets sealed = copyOf(key.bytes());
    sealed.resize(std::max(sealed.size(), size_t{cipherWrites}), 0xEE);
    const Exact der(Bytes(out.data(), length)), readId(2), readSalt(salt.bytes().size());
    const std::string saw = cipherSaw.substr(0, cipherSaw.rfind('/'));
    EXPECT_EQ(
        TRIED(KA_PKCS12_ParseEncKeyBag(password.data(), passwordLength, der.data(), lengthOf(der.bytes()), copying)),
        KACERT_Ok);
    EXPECT_EQ(saw + "/ " + std::to_string(sealed.size()), cipherSaw);
    // The key may take the bag's place.
    uint32_t sizes[3] = {}, count = 0;
    EXPECT_EQ(KA_PKCS12_DealWithEncKeyBag(readId.data(), &sizes[0], der.data(), &sizes[1], readSalt.data(), &sizes[2],
                                          &count, der.data(), lengthOf(der.bytes())),
              KACERT_Ok);
    EXPECT_EQ(toHex(readId.data(), sizes[0]) + " / " + toHex(readSalt.data(), sizes[2]),
              "2A 03 / " + toHex(salt.bytes()));
    EXPECT_EQ(toHex(der.data(), sizes[1]), toHex(sealed));
    EXPECT_EQ(count, static_cast<uint32_t>(iterations));
}

// Bags that cannot be taken apart.
ROWS(Pkcs12Bags, Split) {
    const Exact der(row.octets("der"));
    uint8_t octets[512];
    uint32_t lengths[4] = {7, 7, 7, 7};
    EXPECT_EQ(KA_PKCS12_DealWithEncKeyBag(octets, &lengths[0], octets, &lengths[1], octets, &lengths[2], &lengths[3],
                                          der.data(), lengthOf(der.bytes())),
              row.number("split"));
    EXPECT_EQ(lengths[0] + lengths[1] + lengths[2] + lengths[3], 28u);
    EXPECT_EQ(KA_PKCS12_ParseEncKeyBag(nullptr, 0, der.data(), lengthOf(der.bytes()), copying), row.number("parse"));
}

// A key of libcrypto's with an attribute is written as it was; what it is enciphered to libcrypto opens.
TEST(Pkcs12Bags, LibcryptoReadsThemAndIsRead) {
    const Pkey pair = keyOf(keyPair().secret);
    const Ssl<PKCS8_PRIV_KEY_INFO_free> info(EVP_PKEY2PKCS8(pair.get()));
    ASSERT_EQ(PKCS8_pkey_add1_attr_by_NID(info.get(), NID_friendlyName, MBSTRING_UTF8, bytesOf("key").data(), 3), 1);
    const Octets plain = derOf(i2d_PKCS8_PRIV_KEY_INFO, info.get());
    Bag<KeyKit> key;
    EXPECT_EQ(key.decode(plain), KACERT_Ok);
    EXPECT_EQ(key.encoded(), toHex(plain));
    EXPECT_EQ(key.attribute(1), "2A 86 48 86 F7 0D 01 09 14=1E 06 00 6B 00 65 00 79");

    const Octets tripleDes = hex("2A 86 48 86 F7 0D 01 0C 01 03"), salt = text("saltsalt");
    Octets bag(4096);
    uint32_t length = 0;
    ASSERT_EQ(KA_PKCS12_GenEncKeyBag(tripleDes.data(), 10, plain.data(), lengthOf(plain), text("pw").data(), 2,
                                     salt.data(), 8, 3, bag.data(), &length, KA_PKCS12_PbeWithDigestAlgoAndEncrypt),
              KACERT_Ok);
    bag.resize(length);
    EXPECT_EQ(KA_PKCS12_ParseEncKeyBag(text("pw").data(), 2, bag.data(), lengthOf(bag),
                                       KA_PKCS12_PbeWithDigestAlgoAndDecrypt),
              KACERT_Ok);
    const auto shrouded = parsed<d2i_X509_SIG, X509_SIG_free>(bag);
    ASSERT_NE(shrouded, nullptr);
    const Ssl<PKCS8_PRIV_KEY_INFO_free> opened(PKCS8_decrypt(shrouded.get(), "pw", 2));
    ASSERT_NE(opened, nullptr);
    EXPECT_EQ(derOf(i2d_PKCS8_PRIV_KEY_INFO, opened.get()), plain);
}

// A private key in every bag that can hold one.
TEST(Pkcs12Bags, KeysAreWiped) {
    const Octets id = hex("2A"), key = text("a private key");
    const auto work = [&] {
        withEachBag([&](auto kit) {
            Bag<decltype(kit)> bag;
            for (const auto &field : kit.Fields)
                for (int i = 0; i < 2; ++i)
                    bag.set(field.name,
                            field.name == "algorithm" || field.name == "id" || kit.Name == "enc" ? id : key);
            const std::string der = bag.encoded();
            for (int i = 0; i < 3; ++i)
                bag.decode(hex(der));
            bag.decode(hex("30 00"));
        });
        const Exact area(4096);
        uint32_t length = 0;
        EXPECT_EQ(KA_PKCS12_GenKeyBag(0, id.data(), 1, key.data(), 13, area.data(), &length), KACERT_Ok);
        EXPECT_EQ(KA_PKCS12_GenEncKeyBag(id.data(), 1, key.data(), 13, nullptr, 0, id.data(), 1, 77, area.data(),
                                         &length, copying),
                  55);
    };
    EXPECT_EQ(releasedWith({text("private")}, 20, work), 0);
}

template <class Kit> int32_t use(Bytes der) {
    int32_t status = -1;
    EXPECT_TRUE(isStable<Kit>(der, status)) << toHex(der);
    return status;
}

TEST(Pkcs12Bags, CutAndChanged) {
    for (const Row &row : rowsOf("Pkcs12Bags", "Encode"))
        if (row("want")[0] != 's' && row("back")[0] != 's')
            withBag(row("bag"), [&](auto kit) { cutAndChange(row.octets("want"), use<decltype(kit)>); });
}

TEST(Pkcs12Bags, NamedInputs) {
    Octets deep = hex("05 00"), safe = seq({oid("2A"), tlv(0xA0, hex("30 00"))}), many;
    for (int i = 0; i < 10000; ++i) {
        deep = tlv(0x30, deep);
        many.insert(many.end(), safe.begin(), safe.end());
    }
    const struct {
        const char *name, *bag;
        Octets der;
        int32_t want;
    } rows[] = {
        {"nesting 10,000 deep in a safe bag", "safe", seq({oid("2A"), tlv(0xA0, deep)}), 0},
        {"in a certificate", "cert", seq({oid("2A"), tlv(0xA0, deep)}), 0},
        {"in an attribute", "key",
         seq({hex("02 01 00"), seq({oid("2A")}), hex("04 00"), tlv(0xA0, seq({oid("2A"), set({deep})}))}), 0},
        {"in a parameter", "enc", seq({seq({oid("2A"), deep}), hex("04 00")}), 0},
        {"in a safe", "contents", deep, 0},
        {"a length of 4 GB", "key", hex("30 84 FF FF FF FF 02 01 00"), 102},
        {"an inner length of 4 GB", "enc", hex("30 08 30 84 FF FF FF FF 06 00"), 101},
    };
    for (const auto &row : rows)
        withBag(row.bag, [&](auto kit) { EXPECT_EQ(use<decltype(kit)>(row.der), row.want) << row.name; });
    Bag<ContentsKit> contents(1 << 20);
    many = tlv(0x30, many);
    EXPECT_EQ(contents.decode(many), KACERT_Ok);
    EXPECT_EQ(contents.encoded(), toHex(many));
    EXPECT_EQ(contents.bagAt(10000), "[" + toHex(safe) + "]");
    EXPECT_EQ(contents.bagAt(10001), "");
}

} // namespace
