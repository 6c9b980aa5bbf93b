// The bags and safes of PKCS#12 behind one set of names. For tests and fuzz targets alike.
#pragma once

#include "objects.h"

namespace karil_test {

// A field, and what a bag's functions are called.
template <class C> struct BagField {
    std::string_view name;
    int32_t (*set)(C *, const uint8_t *, int32_t);
    int32_t (*get)(const C *, uint8_t *, uint32_t *);
};
#define KIT_FIELD(NAME, FIELD)                                                                                         \
    { NAME, KA_PKCS12_Set##FIELD, KA_PKCS12_Get##FIELD }
#define KIT_ATTRIBUTES(BAG)                                                                                            \
    static constexpr auto setAttribute = KA_PKCS12_Set##BAG##Attribute;                                                \
    static constexpr auto getAttribute = KA_PKCS12_Get##BAG##Attribute;                                                \
    static constexpr auto countAttributes = KA_PKCS12_Get##BAG##AttributeNum;
#define KIT_BAG(KIT, NAME, BAG, CODE, DESTROY, MORE, ...)                                                              \
    struct KIT {                                                                                                       \
        using Ctx = BAG##Ctx;                                                                                          \
        static constexpr std::string_view Name = NAME;                                                                 \
        static constexpr auto create = KA_PKCS12_CreateEncode##BAG;                                                    \
        static constexpr auto destroy = KA_PKCS12_##DESTROY##Encode##BAG;                                              \
        static constexpr auto encode = KA_PKCS12_Encode##CODE;                                                         \
        static constexpr auto decode = KA_PKCS12_Decode##CODE;                                                         \
        static constexpr BagField<Ctx> Fields[] = {__VA_ARGS__};                                                       \
        MORE                                                                                                           \
    }

inline int32_t setVersion(KeyBagCtx *ctx, const uint8_t *value, int32_t) {
    return KA_PKCS12_SetKeyBagVersion(ctx, value[0]);
}
inline int32_t getVersion(const KeyBagCtx *ctx, uint8_t *result, uint32_t *length) {
    int32_t version = 0;
    const int32_t status = KA_PKCS12_GetKeyBagVersion(ctx, &version);
    *result = static_cast<uint8_t>(version);
    *length = 1;
    return status;
}
template <int32_t IsText> int32_t setCertificate(CertBagCtx *ctx, const uint8_t *value, int32_t length) {
    return KA_PKCS12_SetCertBagCertificate(ctx, value, length, IsText);
}
inline int32_t getCertificate(const CertBagCtx *ctx, uint8_t *result, uint32_t *length) {
    int32_t isText = 7;
    const int32_t status = KA_PKCS12_GetCertBagCertificate(ctx, result, length, &isText);
    return isText == (status == KACERT_Ok ? -1 : 7) ? status : -1;
}

KIT_BAG(KeyKit, "key", KeyBag, KeyBag, Destroy, KIT_ATTRIBUTES(KeyBag), {"version", setVersion, getVersion},
        KIT_FIELD("algorithm", KeyBagAlgorithm), KIT_FIELD("key", KeyBagKey));
KIT_BAG(EncKit, "enc", EncKeyBag, EncKeyBag, Destory, , KIT_FIELD("algorithm", EncKeyBagAlgo),
        KIT_FIELD("parameter", EncKeyBagParameter), KIT_FIELD("key", EncKeyBagEncKey));
KIT_BAG(CertKit, "cert", CertBag, CertBag, Destory, , KIT_FIELD("id", CertBagID),
        {"value", setCertificate<-1>, getCertificate}, {"text", setCertificate<1>, nullptr});
KIT_BAG(CrlKit, "crl", CrlBag, CrlBag, Destory, , KIT_FIELD("id", CrlBagID), KIT_FIELD("value", CrlBagCrl));
KIT_BAG(SecretKit, "secret", SecretContentsBag, SecretContentsBag, Destory, , KIT_FIELD("id", SecretContentsBagID),
        KIT_FIELD("value", SecretContentsBagContents));
KIT_BAG(SafeKit, "safe", SafeBag, SafeBag, Destory, KIT_ATTRIBUTES(SafeBag), KIT_FIELD("id", SafeBagOID),
        KIT_FIELD("content", SafeBagContent));
KIT_BAG(ContentsKit, "contents", SafeContents, SafeContent, Destory, ,
        {"bag", KA_PKCS12_SetSafeContents_SafeBag, nullptr});

// Calls with each kit, or with the one of that name.
template <class Use> void withEachBag(const Use &use) {
    [&]<class... Kit>(Kit... kit) { (use(kit), ...); }(KeyKit(), EncKit(), CertKit(), CrlKit(), SecretKit(), SafeKit(),
                                                       ContentsKit());
}
template <class Use> void withBag(std::string_view name, const Use &use) {
    withEachBag([&](auto kit) { kit.Name == name ? use(kit) : void(); });
}

// A context. `room`: of each buffer that is answered into.
template <class Kit> struct Bag {
    typename Kit::Ctx *ctx = nullptr;
    size_t room;

    explicit Bag(size_t size = 4096) : room(size) { TRIED(Kit::create(&ctx)); }
    Bag(const Bag &) = delete;
    Bag &operator=(const Bag &) = delete;
    ~Bag() { ctx != nullptr ? Kit::destroy(ctx) : 0; }
    // "attribute 2A03": one of that identifier.
    int32_t set(std::string_view name, Bytes octets) {
        const Exact value(octets);
        for (const auto &field : Kit::Fields)
            if (field.name == name)
                return TRIED(field.set(ctx, value.data(), lengthOf(octets)));
        if constexpr (requires { Kit::setAttribute; }) {
            const Exact id(hex(name.substr(std::string_view("attribute").size())));
            return TRIED(Kit::setAttribute(ctx, id.data(), lengthOf(id.bytes()), value.data(), lengthOf(octets)));
        }
        return -1;
    }
    int32_t decode(Bytes der) {
        const Exact exact(der);
        return TRIED(Kit::decode(ctx, exact.data(), lengthOf(der)));
    }
    // "status N", or what is written.
    std::string encoded() const {
        const Exact area(room);
        uint32_t length = 12345;
        const int32_t status = TRIED(Kit::encode(ctx, area.data(), &length));
        return status == KACERT_Ok ? toHex(area.data(), length) : "status " + std::to_string(status);
    }
    // An attribute as "name=value"; "" if the index leaves the outputs as they are.
    std::string attribute(int32_t index) const {
        const Exact name(room), value(room);
        uint32_t lengths[2] = {UINT32_MAX, UINT32_MAX};
        Kit::getAttribute(ctx, name.data(), &lengths[0], value.data(), &lengths[1], index);
        return lengths[0] == UINT32_MAX ? "" : toHex(name.data(), lengths[0]) + "=" + toHex(value.data(), lengths[1]);
    }
    // A bag of SafeContents as "[bag]", or "" as above.
    std::string bagAt(int32_t index) const {
        const Exact area(room);
        uint32_t length = UINT32_MAX;
        const int32_t status = KA_PKCS12_GetSafeContents_SafeBag(ctx, area.data(), &length, index);
        return status != KACERT_Ok    ? "status " + std::to_string(status)
               : length == UINT32_MAX ? ""
                                      : "[" + toHex(area.data(), length) + "]";
    }
    // All that it answers, with " / " between; "-" for what is refused and "." for what has no octets.
    std::string held() const {
        std::string all;
        const auto add = [&](const std::string &one) { all += (all.empty() ? "" : " / ") + (one.empty() ? "." : one); };
        for (const auto &field : Kit::Fields) {
            const Exact area(room);
            uint32_t length = 0;
            if (field.get != nullptr)
                add(field.get(ctx, area.data(), &length) == KACERT_Ok ? toHex(area.data(), length) : "-");
        }
        uint32_t count = 0, index = 1;
        if constexpr (requires { Kit::countAttributes; })
            for (Kit::countAttributes(ctx, &count); index <= count; ++index)
                add(attribute(static_cast<int32_t>(index)));
        if constexpr (std::is_same_v<Kit, ContentsKit>)
            for (KA_PKCS12_GetSafeContents_SafeBagNum(ctx, &count); index <= count; ++index)
                add(bagAt(static_cast<int32_t>(index)));
        return all;
    }
};

// Decodes, asks for everything, writes it, and decodes that. False if it is then written in another way.
template <class Kit> bool isStable(Bytes der, int32_t &status) {
    Bag<Kit> bag(der.size() + 256), again(der.size() + 256);
    status = bag.decode(der);
    bag.held();
    const std::string written = bag.encoded();
    return status != KACERT_Ok || written[0] == 's' ||
           (again.decode(hex(written)) == KACERT_Ok && again.encoded() == written);
}

} // namespace karil_test
