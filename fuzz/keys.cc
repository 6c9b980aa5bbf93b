// A key is decoded, written again and decoded once more; what stands behind it in the block is not touched.
#include "fuzz.h"

using namespace karil_fuzz;

namespace {

struct Form {
    size_t size; // of the block
    int32_t (*decode)(uint8_t *numbers, const uint8_t *der, int32_t length);
    int32_t (*encode)(const uint8_t *numbers, uint8_t *result, uint32_t *length);
};
constexpr Form Forms[] = {{KA_PUBLIC_NUMBERS, KA_Decode_PublicKey, KA_Encode_PublicKey},
                          {KA_PRIVATE_NUMBERS, KA_Decode_PrivateKey, KA_Encode_PrivateKey}};

// The DER of a block; nothing where a number is zero.
Octets encode(const Form &form, const Area &numbers) {
    uint32_t size = 0;
    const int32_t status = form.encode(numbers.data(), nullptr, &size);
    must(status == KACERT_Ok || (status == KACERT_MemoryErr && size == 0), "a block is written or has a zero");
    if (size == 0)
        return {};
    const Area der(size);
    uint32_t given = 0;
    must(form.encode(numbers.data(), der.data(), &given) == KACERT_Ok && given == size, "asking and answering agree");
    return {der.bytes().begin(), der.bytes().end()};
}

void bothWays(const Form &form, Bytes input) {
    const Area der(input);
    const Area numbers(form.size);
    std::fill_n(numbers.data(), form.size, uint8_t{0x5A});
    if (form.decode(numbers.data(), der.data(), lengthOf(input)) != KACERT_Ok)
        return;
    const Octets written = encode(form, numbers);
    if (written.empty())
        return;
    const Area again(form.size);
    must(form.decode(again.data(), written.data(), lengthOf(written)) == KACERT_Ok, "what was written can be read");
    must(equal(again.bytes(), numbers.bytes()), "with the same numbers");
    must(encode(form, again) == written, "and is written alike");
}

// The octets as the numbers themselves.
void fromNumbers(const Form &form, Bytes input) {
    const Area numbers(form.size);
    for (size_t at = 0; at < form.size && !input.empty(); ++at)
        numbers.data()[at] = input[at % input.size()];
    bothWays(form, encode(form, numbers));
}

void wrap(Bytes key) {
    const Area wrapped(key.size() + 26);
    uint32_t size = 0;
    must(KI_PKCS1to8KEY(key.data(), sizeOf(key), wrapped.data(), &size) == KACERT_Ok, "a key is wrapped");
    must(size <= wrapped.bytes().size() && equal(wrapped.bytes().subspan(size - key.size(), key.size()), key),
         "and stands at the end");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input{{data, size}};
    const Form &form = Forms[input.octet() & 1];
    bothWays(form, input.rest);
    fromNumbers(form, input.rest);
    if (!input.rest.empty())
        wrap(input.rest);
    return 0;
}
