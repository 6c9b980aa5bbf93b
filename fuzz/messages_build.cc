// Makes messages of every kind, and their parts, by calls as the input says. What is encoded twice is the same both
// times, its signatures are good, and it decodes.
#include "fuzz.h"

#include "whole_messages.h"

#include <utility>

using namespace karil_fuzz;

namespace {

// Hooks by the first octet of their parameter, which they change if it is a copy for them alone:
//     0 fails; 1 writes nothing; 2 reports more than the bound and writes beyond it; others add it to each octet of the
//     input, as far as there is room
template <bool IsCopy>
int32_t hook(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength, void *parameter) {
    auto *kind = static_cast<uint8_t *>(parameter);
    const uint8_t how = kind != nullptr ? std::exchange(*kind, IsCopy ? uint8_t{0} : *kind) : uint8_t{3};
    const uint32_t room = *outputLength + (how == 2 ? 256 : 0);
    *outputLength = how < 2 ? 0 : how == 2 ? room : std::min(inputLength, room);
    for (uint32_t i = 0; i < *outputLength; ++i)
        output[i] = static_cast<uint8_t>((i < inputLength ? input[i] : 0) + how);
    return how == 0 ? 7 : 0;
}

// One message, as the input makes it.
struct Builder {
    Input input;
    bool isDer = true; // all that is given as an element is one

    Bytes piece() { return input.take(input.octet() % 40); }
    // A whole element mostly: a name, or any.
    Bytes element(bool isName = false) {
        static const Octets Elements[] = {hex("30 00"), commonName("A"), hex("05 00"), hex("04 02 30 80")};
        const uint8_t choice = input.octet();
        if (choice < 224)
            return Elements[choice % (isName ? 2 : 4)];
        isDer = false;
        return piece();
    }
    Bytes oid() {
        const uint8_t choice = input.octet() % 4;
        return choice == 0   ? bytesOf(DataOid)
               : choice == 1 ? bytesOf(Sha1Oid)
               : choice == 2 ? bytesOf("\x2A")
                             : piece();
    }
    // Sets a hook, with a parameter of 0 to 3 octets.
    template <auto Set, class Ctx> void setHook(Ctx &ctx) {
        const Bytes parameter = input.take(input.octet() % 4);
        Set(&ctx, hook<!std::is_same_v<Ctx, DigestedDataCtx>>, parameter.data(), lengthOf(parameter));
    }
    // Attributes numbered from `first`.
    template <class Ctx> void setSome(Ctx &ctx, int32_t first, int32_t count) {
        for (int left = input.octet() % 8; left > 0; --left) {
            const int32_t id = first + input.octet() % count;
            const bool isName = id == PKCS7_SIGNER_DN || id == PKCS7_RECIPIENT_DN;
            if (isName || id == PKCS7_ENCRYPT_PARAMETER)
                set(ctx, id, element(isName));
            else
                set(ctx, id, input.octet() % 2 == 0 ? oid() : piece());
        }
    }

    SignerPtr signer() {
        SignerPtr ctx = plainSigner();
        setHook<KA_PKCS7_SetSignerInfoDigestFunc>(*ctx);
        // What opens a signature has to undo the signing, as a copy does.
        if (input.octet() % 4 == 0)
            setHook<KA_PKCS7_SetSignerInfoEncSignFunc>(*ctx);
        setSome(*ctx, PKCS7_SIGNER_DN, 15);
        for (int left = input.octet() % 4; left > 0; --left) {
            const auto add = input.octet() % 2 == 0 ? KA_PKCS7_SetSignerAttribute : KA_PKCS7_SetSignerUnAttribute;
            const Bytes type = oid(), content = element();
            add(ctx.get(), type.data(), lengthOf(type), content.data(), lengthOf(content));
        }
        return ctx;
    }
    RecipientPtr recipient() {
        RecipientPtr ctx = plainRecipient();
        setHook<KA_PKCS7_SetRecipientInfoKeyEncFunc>(*ctx);
        setSome(*ctx, PKCS7_RECIPIENT_DN, 14);
        return ctx;
    }
    ContentPtr content() {
        ContentPtr ctx = plainContent();
        setHook<KA_PKCS7_SetEncryptContentEncFunc>(*ctx);
        setSome(*ctx, PKCS7_ENCRYPT_CONTENT_TYPE, 5);
        return ctx;
    }
    // A second one stays with whoever gave it, or takes the place of the first.
    template <class Ctx> void giveContent(Ctx &ctx) {
        ContentPtr part = content();
        Family<Ctx>::setContent(&ctx, part.get());
        if (ctx.encryptedContent == part.get())
            (void)part.release();
    }
    template <class Ctx> void giveParts(Ctx &ctx) {
        const uint8_t counts = input.octet();
        if constexpr (hasSigners<Ctx>)
            for (int left = counts % 4; left > 0; --left)
                handOver(Family<Ctx>::setSigner, ctx, signer());
        if constexpr (hasRecipients<Ctx>)
            for (int left = counts / 4 % 4; left > 0; --left)
                handOver(Family<Ctx>::setRecipient, ctx, recipient());
        if constexpr (hasEncrypted<Ctx>)
            for (int left = counts / 16 % 4; left > 0; --left)
                giveContent(ctx);
        if constexpr (std::is_same_v<Ctx, DigestedDataCtx>)
            setHook<KA_PKCS7_SetDigestedDataHashFunc>(ctx);
    }
};

// A signature that was made by copying is good, whatever was signed.
void checkSigners(SignerInfoCtx *signer) {
    for (; signer != nullptr; signer = signer->next) {
        int32_t verdict = 0;
        const int32_t status = KA_PKCS7_VerifySignerSignature(signer, &verdict);
        must(signer->signFunc != plainHook || (status == KACERT_Ok && verdict == PKCS7_VERDICT_GOOD),
             "what was signed verifies");
    }
}

template <class Ctx> void decodeAgain(Bytes der, const Ctx &from) {
    const Owner<Ctx> ctx = create<Ctx>();
    must(Family<Ctx>::decode(ctx.get(), der.data(), lengthOf(der)) == KACERT_Ok, "what was built decodes");
    if constexpr (std::is_same_v<Ctx, SignedDataCtx>)
        must(ctx->signerCount == from.signerCount && ctx->certificateCount == from.certificateCount &&
                 (ctx->content.length == 0 || equal(bytesOf(ctx->content), bytesOf(from.content))),
             "it is the same message");
    if constexpr (hasRecipients<Ctx>)
        must(ctx->recipientCount == from.recipientCount2, "it has the same recipients");
}

// `version`: the id, 0 without one; the others are octets, identifiers and elements.
struct Ids {
    int32_t version;
    std::initializer_list<int32_t> oids;
    std::initializer_list<int32_t> elements;
    std::initializer_list<int32_t> octets;
};
template <class Ctx> void build(Builder &from, const Ids &ids) {
    const Owner<Ctx> ctx = create<Ctx>();
    const uint8_t omitted = from.input.octet();
    if (omitted % 8 != 7)
        Family<Ctx>::setInt(ctx.get(), ids.version, omitted);
    for (const int32_t id : ids.oids)
        set(*ctx, id, from.oid());
    for (const int32_t id : ids.elements)
        for (int left = from.input.octet() % 3; left > 0; --left)
            set(*ctx, id, from.element());
    // Of another type than data a content is an element.
    const bool isData = equal(bytesOf(ctx->contentType.oid), bytesOf(DataOid));
    for (const int32_t id : ids.octets) {
        const Octets many(from.input.octet() * 48u, 'x');
        set(*ctx, id, !isData ? from.element() : many.size() > 9000 ? Bytes(many) : from.piece());
    }
    from.giveParts(*ctx);
    uint32_t length = 0, again = 0;
    if (Family<Ctx>::encode(ctx.get(), nullptr, &length) != KACERT_Ok)
        return;
    const Area der(length);
    must(Family<Ctx>::encode(ctx.get(), der.data(), &again) == KACERT_Ok && again == length,
         "a message is the same each time");
    if constexpr (hasSigners<Ctx>)
        checkSigners(ctx->signerInfos);
    if (from.isDer)
        decodeAgain(der.bytes(), *ctx);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Builder from = {{{data, size}}};
    switch (from.input.octet() % 5) {
    case 0:
        build<DigestedDataCtx>(from, {61, {62, 63}, {}, {64}});
        break;
    case 1:
        build<SignedDataCtx>(from, {38, {39, 40}, {42, 43}, {41}});
        break;
    case 2:
        build<EnvelopedDataCtx>(from, {51, {53}, {}, {52, 54}});
        break;
    case 3:
        build<EncryptedDataCtx>(from, {58, {59}, {}, {60}});
        break;
    default:
        build<SignedAndEnvelopedDataCtx>(from, {44, {47, 49}, {45, 46}, {48, 50}});
        break;
    }
    return 0;
}
