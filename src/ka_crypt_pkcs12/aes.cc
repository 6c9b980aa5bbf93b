// AES with a key of 128 bits. Both directions have the same frame words.
#include "ka_crypt_pkcs12.h"

using namespace karil;

namespace {

constexpr int32_t ModeEcb = 1;
constexpr int32_t ModeCbc = 2;
constexpr char Begin[] = "=====>KA_PKCS12_AESEncrypt函数 START";
constexpr char End[] = "=====>KA_PKCS12_AESEncrypt函数 END";

struct AesJob {
    int32_t mode;
    const uint8_t *key;
    uint32_t keyLength;
    const uint8_t *iv;
    uint32_t ivLength;
    const uint8_t *input;
    uint32_t inputLength;
    uint8_t *output;
    uint32_t *outputLength;

    Bytes octets() const { return {input, inputLength}; }
};

Status refuse(const char *words) {
    return KA_FAIL(KACERT_InvalidParamErr, words);
}

Status checkKey(const AesJob &job) {
    if (job.mode != ModeEcb && job.mode != ModeCbc)
        return refuse("----->algMode参数err");
    if (job.key == nullptr)
        return refuse("----->key参数err");
    if (job.keyLength != AesCipher::Block)
        return refuse("----->keyLen参数err");
    if (job.mode == ModeCbc && job.iv == nullptr)
        return refuse("----->pIv参数err");
    if (job.mode == ModeCbc && job.ivLength != AesCipher::Block)
        return refuse("----->pIvLen参数err");
    return KACERT_Ok;
}

// `wrongLength`: the words of an input length that is refused, or null.
Status check(const AesJob &job, const char *wrongLength) {
    KA_PASS(checkKey(job));
    if (job.input == nullptr)
        return refuse("----->input参数err");
    if (wrongLength != nullptr)
        return refuse(wrongLength);
    if (job.output == nullptr)
        return refuse("----->output参数err");
    if (job.outputLength == nullptr)
        return refuse("----->outputLen参数err");
    if (job.mode != ModeCbc)
        return KA_FAIL(KACERT_AttributeNotSupportErr, "----->KACERT_AttributeNotSupportErr");
    return KACERT_Ok;
}

// Only the last block is padded in a place of its own.
Status encrypt(const AesJob &job) {
    KA_PASS(check(job, job.inputLength == 0 ? "----->inputLen参数err" : nullptr));
    const uint32_t count = AesCipher::Block - job.inputLength % AesCipher::Block;
    if (job.inputLength > UINT32_MAX - count)
        return KA_FAIL(KACERT_InvalidLengthErr, "----->inputLen参数err");
    const uint32_t whole = job.inputLength + count - AesCipher::Block;
    Secret<AesCipher::Block> last;
    memset(last.octets, static_cast<int>(count), AesCipher::Block);
    memcpy(last.octets, job.input + whole, AesCipher::Block - count);
    AesCipher cipher(Direction::Encrypt);
    KA_STEP_AS("----->AES_set_encrypt_key函数err", cipher.setKey(job.key, job.iv));
    KA_PASS(cipher.run(job.octets().first(whole), job.output));
    KA_PASS(cipher.run(last.octets, job.output + whole));
    *job.outputLength = whole + AesCipher::Block;
    return KACERT_Ok;
}

// The last block comes first: with its count the padding is refused before any octet is written.
Status decrypt(const AesJob &job) {
    constexpr uint32_t Block = AesCipher::Block;
    KA_PASS(check(job, job.inputLength % Block != 0 ? "----->inputLen参数err, Must 16*n" : nullptr));
    if (job.inputLength == 0)
        return KA_FAIL(KACERT_InvalidLengthErr, "----->inputLen参数err");
    const uint32_t lastAt = job.inputLength - Block;
    AesCipher cipher(Direction::Decrypt);
    KA_STEP_AS("----->AES_set_decrypt_key函数err",
               cipher.setKey(job.key, lastAt > 0 ? job.input + lastAt - Block : job.iv));
    Secret<Block> last;
    KA_PASS(cipher.run(job.octets().subspan(lastAt), last.octets));
    const uint8_t count = last.octets[Block - 1];
    if (count > Block)
        return KA_FAIL(KACERT_InvalidLengthErr, "----->KACERT_InvalidLengthErr");
    KA_PASS(cipher.setIv(job.iv));
    KA_PASS(cipher.run(job.octets().first(lastAt), job.output));
    memcpy(job.output + lastAt, last.octets, Block - count);
    memset(job.output + job.inputLength - count, 0, count);
    *job.outputLength = job.inputLength - count;
    return KACERT_Ok;
}

Status inFrame(Status (*run)(const AesJob &), const AesJob &job) {
    KA_FRAME_AS(Begin, End);
    KA_PASS(run(job));
    return KA_DONE();
}

} // namespace

int32_t KA_PKCS12_AESEncrypt(int32_t algMode, const uint8_t *key, uint32_t keyLen, const uint8_t *pIv, uint32_t pIvLen,
                             const uint8_t *input, uint32_t inputLen, uint8_t *output, uint32_t *outputLen) {
    return inFrame(encrypt, {algMode, key, keyLen, pIv, pIvLen, input, inputLen, output, outputLen});
}

int32_t KA_PKCS12_AESDecrypt(int32_t algMode, const uint8_t *key, uint32_t keyLen, const uint8_t *pIv, uint32_t pIvLen,
                             const uint8_t *input, uint32_t inputLen, uint8_t *output, uint32_t *outputLen) {
    return inFrame(decrypt, {algMode, key, keyLen, pIv, pIvLen, input, inputLen, output, outputLen});
}
