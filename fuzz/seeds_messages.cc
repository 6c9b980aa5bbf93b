// Seeds of OCSP and PKCS#7 messages.
#include "seeds.h"

#include "whole_messages.h"

namespace karil_fuzz {
namespace {

// A message of every kind, with two of each part that it can have.
template <class Ctx> void addMessage(Folder &messages, int32_t version, std::initializer_list<int32_t> contents) {
    const Owner<Ctx> ctx = create<Ctx>();
    must(version == 0 || Family<Ctx>::setInt(ctx.get(), version, 1) == KACERT_Ok, "a version can be set");
    for (const int32_t id : contents)
        set(*ctx, id,
            id == 40 || id == 49 || id == 53 || id == 59 || id == 63 ? DataOid : std::string_view("\x30\x00", 2));
    for (int i = 0; i < 2; ++i) {
        if constexpr (hasSigners<Ctx>) {
            SignerPtr signer = plainSigner();
            const Bytes value = bytesOf("\x05\x01\x61");
            must(i == 0 || KA_PKCS7_SetSignerAttribute(signer.get(), value.data(), 2, value.data(), 3) == KACERT_Ok,
                 "an attribute");
            handOver(Family<Ctx>::setSigner, *ctx, std::move(signer));
        }
        if constexpr (hasRecipients<Ctx>)
            handOver(Family<Ctx>::setRecipient, *ctx, plainRecipient());
    }
    if constexpr (hasEncrypted<Ctx>)
        handOver(Family<Ctx>::setContent, *ctx, plainContent());
    if constexpr (std::is_same_v<Ctx, DigestedDataCtx>)
        KA_PKCS7_SetDigestedDataHashFunc(ctx.get(), plainHook, nullptr, 0);
    int32_t status = 0;
    messages.add(encode(*ctx, &status));
    must(status == KACERT_Ok, "a message can be encoded");
}

} // namespace

// With and without attributes, over a content that the signer alone knows.
void addSigners(Folder signers) {
    for (const bool hasAttributes : {false, true}) {
        const SignerPtr ctx = create<SignerInfoCtx>();
        const std::pair<int32_t, std::string_view> fields[] = {
            {PKCS7_ISSUER_COMMONNAME, "Root"},  {PKCS7_ISSUER_ORGANIZATION, Beijing},  {PKCS7_SIGNER_SERIAL, "\x81"},
            {PKCS7_DIGEST_ALGO, Sha1Oid},       {PKCS7_SIGNER_DIGEST_ENC_ALG, "\x2A"}, {PKCS7_SIGNER_CONTENT, "a"},
            {PKCS7_SIGNER_CONTENTTYPE, DataOid}};
        for (const auto &[id, value] : fields)
            must(set(*ctx, id, value) == KACERT_Ok, "a field can be set");
        const Bytes value = bytesOf("\x05\x01\x61");
        for (const auto add : {KA_PKCS7_SetSignerAttribute, KA_PKCS7_SetSignerUnAttribute})
            must(!hasAttributes || add(ctx.get(), value.data(), 2, value.data(), 3) == KACERT_Ok, "an attribute");
        KA_PKCS7_SetSignerInfoDigestFunc(ctx.get(), plainHook, "n", 1);
        KA_PKCS7_SetSignerInfoEncSignFunc(ctx.get(), plainHook, "c", 1);
        const Area der(1024);
        uint32_t length = 0;
        must(KA_PKCS7_EncodeSignerInfo(ctx.get(), der.data(), &length) == KACERT_Ok, "a signer can be encoded");
        signers.add(der.bytes().first(length));
    }
}

// The four objects of OCSP with everything that is read in them; the first octet is the target's own.
void addOcsp(Folder messages) {
    const auto oid = [](uint8_t last) { return tlv(6, cat({{0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x30, 0x01, last}})); };
    const Octets time = tlv(0x18, cat({{'2', '0', '0', '1', '0', '1', '0', '0', '0', '0', '0', '0', 'Z'}}));
    const Octets name = tlv(
        0x30, cat({tlv(0x31, cat({tlv(0x30, cat({tlv(6, cat({{0x55, 0x04, 0x03}})), tlv(0x13, cat({{'N'}}))}))}))}));
    const Octets list = tlv(0x30, cat({oid(1)}));
    const Octets url = tlv(0xA0, cat({tlv(0x16, cat({{'u'}}))}));
    const Octets extensions =
        tlv(0x30, cat({tlv(0x30, cat({oid(4), tlv(4, cat({list}))})), tlv(0x30, cat({oid(6), time})),
                       tlv(0x30, cat({oid(3), tlv(4, cat({url}))})), tlv(0x30, cat({oid(2), tlv(4, cat({{1, 2}}))}))}));
    const Octets certificates = tlv(0xA0, cat({tlv(0x30, cat({{0x30, 0}}))}));
    const Octets id = tlv(0x30, cat({oid(9), tlv(4, cat({{'n'}})), tlv(4, cat({{'k'}})), {2, 1, 5}}));
    const Octets request = tlv(0x30, cat({id}));
    const Octets version = tlv(0xA0, cat({{2, 1, 0}}));
    const Octets tbs = tlv(
        0x30, cat({version, tlv(0xA1, cat({name})), tlv(0x30, cat({request, request})), tlv(0xA2, cat({extensions}))}));
    const Octets signature = tlv(0x30, cat({oid(8), tlv(4, cat({{7}})), certificates}));
    const Octets single = tlv(0x30, cat({id, {0x82, 1, 'i'}, time, tlv(0xA0, cat({time}))}));
    const Octets data = tlv(
        0x30, cat({version, tlv(0x30, cat({name, tlv(4, cat({{7}}))})), time, tlv(0x30, cat({single})), extensions}));
    const Octets basic = tlv(0x30, cat({data, oid(8), tlv(4, cat({{7}})), certificates}));
    messages.add({0}, request);
    messages.add({1}, tlv(0x30, cat({tbs, tlv(0xA0, cat({signature}))})));
    messages.add({2}, single);
    messages.add({3}, tlv(0x30, cat({{10, 1, 0}, tlv(0xA0, cat({tlv(0x30, cat({oid(1), tlv(4, cat({basic}))}))}))})));
}

// Programs of the target that builds: which message, then counted attributes of its list, the state, those of the
// whole.
void addOcspPrograms(Folder programs) {
    programs.add({0, 5, 15, 1, 5, 16, 1, 'n', 17, 1, 'k', 20, 2, 0x2A, 3, 33, 1, 0,
                  0, 0, 0,  0, 4, 33, 1, 0,   1,  2, 8,   9,  0, 1,    1, 9,  1, 5},
                 {});
    programs.add({1, 5, 25, 1, 5,  26, 1, 'n', 28, 1,    'k', 30, 2, 0x2A, 3,  23, 1, 9,
                  1, 1, 1,  4, 48, 1,  0, 63,  1,  0x2A, 59,  2,  7, 7,    46, 1,  0},
                 {});
}

void addMessages(Folder messages) {
    addMessage<DataCtx>(messages, 0, {0});
    addMessage<DigestedDataCtx>(messages, 61, {62, 63, 64});
    addMessage<SignedDataCtx>(messages, 38, {39, 40, 41, 42, 42, 43, 43});
    addMessage<EnvelopedDataCtx>(messages, 51, {52, 53, 54});
    addMessage<EncryptedDataCtx>(messages, 58, {59, 60});
    addMessage<SignedAndEnvelopedDataCtx>(messages, 44, {45, 46, 47, 48, 49, 50});
}

// Programs of the target that builds: a message of each kind with one of each part. First the kind and the version;
// attributes; parts by number; each part's hooks and attributes.
void addMessagePrograms(Folder programs) {
    programs.add({0, 0, 1, 0, 0, 4, 'a', 'b', 'c', 'd', 0, 1, 3}, {});
    const Octets signer = {1, 3, 1, 0, 2, 0, 2, 0, 1, 2, 0};
    programs.add(cat({{1, 1, 1, 0, 1, 1, 1, 1, 0, 3, 'a', 'b', 'c', 2}, signer, signer}));
    programs.add({2, 0, 0, 0, 3, 'a', 'b', 'c', 0, 3, 'k', 'e', 'y', 0x14, 1, 3, 0, 1, 3, 0}, {});
    programs.add({3, 0, 0, 0, 3, 'a', 'b', 'c', 0x10, 1, 3, 0}, {});
    programs.add(
        cat({{4, 1, 1, 0, 1, 1, 1, 1, 0, 3, 'a', 'b', 'c', 0, 3, 'k', 'e', 'y', 0x15}, signer, {1, 3, 0, 1, 3, 0}}));
}

} // namespace karil_fuzz
