// OCSP messages by karil.
#include "ocsp.h"
#include "ocsp_messages.h"

#include <dlfcn.h>

namespace karil_bench {

using namespace karil_test;

namespace {

constexpr std::string_view Sha1Oid = "\x2B\x0E\x03\x02\x1A";
constexpr std::string_view BasicOid = "\x2B\x06\x01\x05\x05\x07\x30\x01\x01";
constexpr int32_t Sha1 = KA_DIGEST_SHA1;

int32_t copyingSignature(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength, void *) {
    *outputLength = SignatureSize;
    std::copy_n(input, std::min<size_t>(inputLength, SignatureSize), output);
    return KACERT_Ok;
}

template <class Ctx> Octets made(Ctx &ctx, size_t room) {
    Octets der(room);
    uint32_t length = 0;
    must(Family<Ctx>::encode(&ctx, der.data(), &length) == KACERT_Ok && length > 0 && length <= room, "karil encodes");
    der.resize(length);
    return der;
}

Octets singleRequest(int32_t index) {
    const RequestListPtr list = create<RequestListCtx>();
    must(set(*list, OCSP_REQUESTLIST_HASHALGO, Sha1Oid) == KACERT_Ok &&
             set(*list, OCSP_REQUESTLIST_ISSUERNAME, party().issuer) == KACERT_Ok &&
             set(*list, OCSP_REQUESTLIST_ISSUERKEY, party().publicKey) == KACERT_Ok &&
             set(*list, OCSP_REQUESTLIST_SERIALNUMBER, serialOf(index)) == KACERT_Ok &&
             KA_OCSP_SetRequestListHashFunc(list.get(), KA_DigestFunc_Ref, reinterpret_cast<const uint8_t *>(&Sha1),
                                            sizeof Sha1) == KACERT_Ok,
         "karil takes what a single request is made of");
    return made(*list, 512);
}

RequestPtr emptyRequest() {
    RequestPtr ctx = create<RequestCtx>();
    must(KA_OCSP_SetRequestAttributeInt(ctx.get(), OCSP_REQUEST_VERSION, 0) == KACERT_Ok &&
             set(*ctx, OCSP_REQUEST_REQUESTOR_DN, party().issuer) == KACERT_Ok &&
             set(*ctx, OCSP_EXT_NONCE_CRITICAL, "1") == KACERT_Ok && set(*ctx, OCSP_EXT_NONCE, Nonce) == KACERT_Ok &&
             KA_OCSP_SetRequestAttributeInt(ctx.get(), OCSP_EXT_ARCHIVECUTOFF, ArchiveCutoff) == KACERT_Ok,
         "karil takes what a request is made of");
    return ctx;
}

template <class Ctx> void add(Ctx &ctx, Bytes single) {
    must(Family<Ctx>::add(&ctx, single.data(), lengthOf(single)) == KACERT_Ok, "karil takes an entry");
}

Octets singleResponse(Bytes id) {
    const ResponseListPtr list = create<ResponseListCtx>();
    must(set(*list, OCSP_RESPONDERLIST_CERTID, id) == KACERT_Ok &&
             KA_OCSP_SetResponseList_CertStatusGood(list.get()) == KACERT_Ok &&
             KA_OCSP_SetResponseListAttributeInt(list.get(), OCSP_RESPONDERLIST_THISUPDATE, ThisUpdate) == KACERT_Ok &&
             KA_OCSP_SetResponseListAttributeInt(list.get(), OCSP_RESPONDERLIST_NEXTUPDATE, NextUpdate) == KACERT_Ok,
         "karil takes what a single response is made of");
    return made(*list, 512);
}

// The identity out of a single request.
Octets identity(int32_t index) {
    const RequestListPtr list = create<RequestListCtx>();
    must(decode(*list, singleRequest(index)) == KACERT_Ok, "karil decodes a single request");
    return copyOf(bytesOf(list->certId.whole));
}

ResponsePtr emptyResponse() {
    ResponsePtr ctx = create<ResponseCtx>();
    const uint8_t successful = 0;
    must(set(*ctx, OCSP_RESPONSE_STATUS, Bytes(&successful, 1)) == KACERT_Ok &&
             set(*ctx, OCSP_RESPONSETYPE, BasicOid) == KACERT_Ok &&
             KA_OCSP_SetResponseAttributeInt(ctx.get(), OCSP_RESPONSE_VERSION, 0) == KACERT_Ok &&
             KA_OCSP_SetResponseAttributeInt(ctx.get(), OCSP_RESPONSE_PRODUCEDAT, ThisUpdate) == KACERT_Ok &&
             set(*ctx, OCSP_RESPONSE_RESPONDERID_DN, party().issuer) == KACERT_Ok &&
             set(*ctx, OCSP_RESPONSE_SIGNALGO, Sha1WithRsaOid) == KACERT_Ok &&
             set(*ctx, OCSP_RESPONSE_CERTS, party().certificate) == KACERT_Ok &&
             KA_OCSP_SetResponseSignFunc(ctx.get(), copyingSignature, nullptr, 0) == KACERT_Ok,
         "karil takes what a response is made of");
    return ctx;
}

// Three functions of the other library.
struct WithFile {
    decltype(&KA_OCSP_CreateDecodeResponse) create;
    decltype(&KA_OCSP_DecodeResponse) decode;
    decltype(&KA_OCSP_DestoryDecodeResponse) destroy;
};
const WithFile &withFile() {
    static const WithFile all = [] {
        void *const library = dlopen(KARIL_WITH_FILE, RTLD_NOW | RTLD_LOCAL);
        must(library != nullptr, "the library with the diagnostic file is there");
        const auto find = [&](auto &function, const char *name) {
            function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(dlsym(library, name));
            must(function != nullptr, name);
        };
        WithFile found = {};
        find(found.create, "KA_OCSP_CreateDecodeResponse");
        find(found.decode, "KA_OCSP_DecodeResponse");
        find(found.destroy, "KA_OCSP_DestoryDecodeResponse");
        return found;
    }();
    return all;
}

} // namespace

Octets serialOf(int32_t index) {
    return {0x51, 2, 3, 4, 5, 6, static_cast<uint8_t>(index >> 8), static_cast<uint8_t>(index)};
}

Octets requestByKaril(int32_t count) {
    const RequestPtr ctx = emptyRequest();
    for (int32_t i = 0; i < count; ++i)
        add(*ctx, singleRequest(i));
    return made(*ctx, static_cast<size_t>(count) * 128 + 1024);
}

void readRequestWithKaril(Bytes der) {
    must(decode(*create<RequestCtx>(), der) == KACERT_Ok, "karil decodes the request");
}

Octets responseByKaril(int32_t count) {
    static std::vector<Octets> identities;
    for (int32_t i = static_cast<int32_t>(identities.size()); i < count; ++i)
        identities.push_back(identity(i));
    const ResponsePtr ctx = emptyResponse();
    for (int32_t i = 0; i < count; ++i)
        add(*ctx, singleResponse(identities[static_cast<size_t>(i)]));
    return made(*ctx, static_cast<size_t>(count) * 128 + 4096);
}

void readResponseWithKaril(Bytes der) {
    must(decode(*create<ResponseCtx>(), der) == KACERT_Ok, "karil decodes the response");
}

void readResponseWithFile(Bytes der) {
    const WithFile &library = withFile();
    ResponseCtx *ctx = nullptr;
    must(library.create(&ctx) == KACERT_Ok && library.decode(ctx, der.data(), sizeOf(der)) == KACERT_Ok,
         "karil decodes the response");
    library.destroy(ctx);
}

void growRequests(int32_t count) {
    static const Octets single = singleRequest(0);
    const RequestPtr ctx = emptyRequest();
    for (int32_t i = 0; i < count; ++i)
        add(*ctx, single);
    const RequestPtr again = create<RequestCtx>();
    must(decode(*again, made(*ctx, static_cast<size_t>(count) * 128 + 1024)) == KACERT_Ok, "karil decodes the request");
    for (int32_t i = 1; i <= count; ++i) {
        uint8_t found[512];
        uint32_t length = 0;
        must(KA_OCSP_GetRequestSingleRequest(again.get(), found, &length, static_cast<uint32_t>(i)) == KACERT_Ok &&
                 length > 0,
             "a single request is answered");
    }
}

void growResponses(int32_t count) {
    static const Octets single = singleResponse(identity(0));
    const ResponsePtr ctx = emptyResponse();
    for (int32_t i = 0; i < count; ++i)
        add(*ctx, single);
    const ResponsePtr again = create<ResponseCtx>();
    must(decode(*again, made(*ctx, static_cast<size_t>(count) * 128 + 4096)) == KACERT_Ok &&
             again->basic.data.responseCount == static_cast<uint32_t>(count),
         "karil decodes the response");
}

} // namespace karil_bench
