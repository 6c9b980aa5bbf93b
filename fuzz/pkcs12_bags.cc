// The bags and safes of PKCS#12. After an even octet: decodes the input as each of them, asks for everything, writes it
// again, and takes the same with the calls that need no context. After an odd one: a byte program, steps of a field and
// its octets, builds each of them.
#include "fuzz.h"

#include "bags.h"

using namespace karil_fuzz;

namespace {

int32_t copyingCipher(const uint8_t *, uint32_t, const uint8_t *, uint32_t, const uint8_t *, uint32_t, uint32_t,
                      const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength) {
    std::copy_n(input, inputLength, output);
    *outputLength = inputLength;
    return 0;
}

// A Parse of two fields returns what decoding returns, and stores nothing after a failure.
template <class Call> void parseTwo(size_t room, int32_t status, Call call) {
    const Area one(room), two(room);
    uint32_t lengths[2] = {UINT32_MAX, UINT32_MAX};
    must(call(one.data(), &lengths[0], two.data(), &lengths[1]) == status, "parsing is decoding");
    must((lengths[0] == UINT32_MAX) == (status != KACERT_Ok) && (lengths[1] == UINT32_MAX) == (status != KACERT_Ok),
         "there are outputs after a success alone");
}

void split(const Area &der, int32_t decoded) {
    const Area oid(der.bytes().size()), key(der.bytes().size()), salt(der.bytes().size());
    uint32_t lengths[3] = {}, iterations = 0;
    const int32_t status = KA_PKCS12_DealWithEncKeyBag(oid.data(), &lengths[0], key.data(), &lengths[1], salt.data(),
                                                       &lengths[2], &iterations, der.data(), lengthOf(der.bytes()));
    must(status != KACERT_Ok || decoded == KACERT_Ok, "what is split can be decoded");
    must(KA_PKCS12_ParseEncKeyBag(nullptr, 0, der.data(), lengthOf(der.bytes()), copyingCipher) == status,
         "both split alike");
}

void decodeAll(Bytes input) {
    const Area der(input);
    const int32_t length = lengthOf(input);
    int32_t number = 0;
    withEachBag([&](auto kit) {
        int32_t status = 0;
        must(isStable<decltype(kit)>(input, status), "what was written is written in the same way again");
        must(status == KACERT_Ok || (kit.Name != "crl" && kit.Name != "secret") || status >= KACERT_MemoryErr,
             "a status is known");
        const auto parse = [&](auto function, auto... more) {
            parseTwo(input.size(), status, [&](auto... out) { return function(out..., more..., der.data(), length); });
        };
        if (kit.Name == "key")
            parseTwo(input.size(), status,
                     [&](auto... out) { return KA_PKCS12_ParseKeyBag(&number, out..., der.data(), length); });
        if (kit.Name == "cert")
            parse(KA_PKCS12_ParseCertBag, &number);
        if (kit.Name == "crl")
            parse(KA_PKCS12_ParseCrlBag);
        if (kit.Name == "secret")
            parse(KA_PKCS12_ParseSecretContentsBag);
        if (kit.Name == "enc")
            split(der, status);
    });
}

template <class Kit> void build(Input program) {
    constexpr size_t Count = std::size(Kit::Fields);
    Bag<Kit> bag(4 * program.rest.size() + 256), again(bag.room);
    bool isRaw = false; // octets stand where an element belongs
    while (!program.rest.empty()) {
        const size_t at = program.octet() % (Count + 1);
        const Bytes value = program.take(program.octet());
        if (at < Count && Kit::Fields[at].name == "version" && value.empty())
            continue;
        const int32_t status = bag.set(at < Count ? Kit::Fields[at].name : "attribute 2A", value);
        const bool isElement =
            at == Count || (at < Count && (Kit::Fields[at].name == "parameter" || Kit::Fields[at].name == "bag"));
        isRaw |= status == KACERT_Ok && isElement;
    }
    const std::string held = bag.held(), written = bag.encoded();
    if (written[0] == 's')
        return;
    const int32_t status = again.decode(hex(written));
    const bool isRefused = Kit::Name == "crl" || Kit::Name == "secret";
    must(isRaw || status == (isRefused ? KACERT_InvalidItemErr : KACERT_Ok), "what was built can be read");
    must(isRaw || isRefused || Kit::Name == "enc" || again.held() == held, "and holds the same");
}

void generate(Bytes input) {
    const Area value(input), out(input.size() + 4096);
    const int32_t length = lengthOf(input), half = length / 2;
    uint32_t size = 0;
    const int32_t status = KA_PKCS12_GenEncKeyBag(value.data(), half, value.data(), length, nullptr, 0, value.data(),
                                                  half, 1, out.data(), &size, copyingCipher);
    must(status == (length > 2000 || half > 93 ? KACERT_InvalidLengthErr : KACERT_Ok), "the bounds hold");
    must(status != KACERT_Ok ||
             KA_PKCS12_ParseEncKeyBag(nullptr, 0, out.data(), static_cast<int32_t>(size), copyingCipher) == KACERT_Ok,
         "what was made can be taken apart");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 2)
        return 0;
    const Bytes input(data + 1, size - 1);
    if (data[0] % 2 == 0) {
        decodeAll(input);
        return 0;
    }
    withEachBag([&](auto kit) { build<decltype(kit)>({input}); });
    generate(input);
    return 0;
}
