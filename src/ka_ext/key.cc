// RSA keys between blocks of numbers and DER. Steps are not traced here: KA_PASS instead of KA_STEP.
#include "karil/key.h"

#include "ka_asn2.h"

#include <string.h>

using namespace karil;

namespace {

// Octets of the fields of a block, in its order, which is that of the integers.
using Fields = std::span<const uint32_t>;
constexpr uint32_t PublicFields[] = {256, 256};
constexpr uint32_t PrivateFields[] = {256, 256, 256, 128, 128, 128, 128, 128};

constexpr uint8_t OidRsaEncryption[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x01};

Bytes withoutZeros(Bytes field) {
    while (!field.empty() && field[0] == 0)
        field = field.subspan(1);
    return field;
}

// Room for any key that a block holds. The octets are secret.
constexpr uint32_t KeyRoom = 2048;
constexpr bool Wiped = true;

// INTEGER for each field of the block
Status writeNumbers(Writer &out, const uint8_t *block, Fields fields) {
    for (const uint32_t size : fields) {
        const Bytes number = withoutZeros({block, size});
        if (number.empty())
            return KACERT_MemoryErr;
        KA_PASS(out.number(number));
        block += size;
    }
    return KACERT_Ok;
}

// An INTEGER for each field, right-aligned. `missing`: answered if there are fewer.
Status readNumbers(Level integers, uint8_t *block, Fields fields, Status missing) {
    for (const uint32_t size : fields) {
        if (integers.empty())
            return missing;
        Element number;
        KA_PASS(readValue(integers.take(), number));
        if (number.bytes.size() > size)
            return KACERT_InvalidLengthErr;
        if (number.present())
            memcpy(block + size - number.bytes.size(), number.bytes.data(), number.bytes.size());
        block += size;
    }
    return KACERT_Ok;
}

Status nullPointer() {
    return KA_FAIL(KACERT_MemoryErr, "------>Pointer is NULL");
}

// Reads into a block of its own: `der` may lie in the caller's, which is written whatever comes of it.
template <uint32_t Size>
Status readKey(uint8_t *block, const uint8_t *der, int32_t length, Status (*read)(const Element &, uint8_t *)) {
    if (block == nullptr || der == nullptr)
        return nullPointer();
    if (length < 1)
        return KACERT_InvalidLengthErr;
    Secret<Size> numbers;
    const Status status = read({0, Bytes(der, static_cast<size_t>(length))}, numbers.octets);
    memcpy(block, numbers.octets, Size);
    return status;
}

// RSAPublicKey ::= SEQUENCE { modulus, publicExponent }
Status readPublic(const Element &key, uint8_t *block) {
    Level integers;
    KA_PASS(readSequence(key, integers));
    return readNumbers(integers, block, PublicFields, KACERT_InvalidParamErr);
}

// RSAPrivateKey ::= SEQUENCE { version, modulus, publicExponent, privateExponent, prime1, prime2, ... }
Status readPrivate(const Element &key, uint8_t *block) {
    Level integers;
    KA_PASS(readSequence(key, integers));
    integers.take(); // the version
    return readNumbers(integers, block, PrivateFields, KACERT_InvalidPrivateKeyErr);
}

} // namespace

int32_t KA_Encode_PublicKey(const uint8_t *numbers, uint8_t *result, uint32_t *resultLength) {
    if (numbers == nullptr || resultLength == nullptr)
        return nullPointer();
    const Bytes block(numbers, KA_PUBLIC_NUMBERS);
    const bool hasModulus = !withoutZeros(block.first(PublicFields[0])).empty();
    const bool hasExponent = !withoutZeros(block.subspan(PublicFields[0])).empty();
    if (hasModulus && !hasExponent)
        return KACERT_Ok;
    Writer key(KeyRoom, Wiped);
    Construct sequence(key, TagSequence);
    KA_PASS(writeNumbers(key, numbers, PublicFields));
    sequence.close();
    return handOut(key, result, resultLength);
}

int32_t KA_Encode_PrivateKey(const uint8_t *numbers, uint8_t *result, uint32_t *resultLength) {
    if (numbers == nullptr || resultLength == nullptr)
        return nullPointer();
    Writer key(KeyRoom, Wiped);
    Construct sequence(key, TagSequence);
    key.integer(0);
    KA_PASS(writeNumbers(key, numbers, PrivateFields));
    sequence.close();
    return handOut(key, result, resultLength);
}

int32_t KA_Decode_PublicKey(uint8_t *numbers, const uint8_t *der, int32_t length) {
    return readKey<KA_PUBLIC_NUMBERS>(numbers, der, length, readPublic);
}

int32_t KA_Decode_PrivateKey(uint8_t *numbers, const uint8_t *der, int32_t length) {
    return readKey<KA_PRIVATE_NUMBERS>(numbers, der, length, readPrivate);
}

int32_t KI_PKCS1to8KEY(const uint8_t *key, uint32_t length, uint8_t *result, uint32_t *resultLength) {
    if (key == nullptr || result == nullptr || resultLength == nullptr)
        return nullPointer();
    Writer wrapped(KeyRoom, Wiped);
    Construct sequence(wrapped, TagSequence);
    wrapped.integer(1);
    wrapped.objectId(OidRsaEncryption);
    wrapped.octetString({key, length});
    sequence.close();
    return handOut(wrapped, result, resultLength);
}
