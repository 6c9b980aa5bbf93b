// Signed messages: the digest of the content, the signature and the chain of each signer.
#include "verify.h"

#include "crypto.h"
#include "names.h"
#include "text.h"

#include "karil/oids.h"

#include <openssl/err.h>
#include <openssl/rsa.h>

#include <algorithm>
#include <array>

namespace tool {
namespace {

struct Message {
    karil::Bytes contentType;
    karil::Bytes content;
    std::vector<karil::Certificate> certificates;
    const std::vector<karil::Certificate> &issuers;
};

bool isSame(const karil::Certificate &one, const karil::Certificate &other) {
    return std::ranges::equal(bytesOf(one->encoded), bytesOf(other->encoded));
}

// `whole`: a SignerInfo element.
const karil::Certificate *certificateOf(const Message &message, const Element &whole) {
    const Elements id(Elements(whole.content)[1].content);
    const auto isIt = [&](const karil::Certificate &each) {
        const CertificateParts parts = partsOf(each);
        return isSameName(parts.issuer, id[0]) && std::ranges::equal(magnitudeOf(parts.serial), magnitudeOf(id[1]));
    };
    for (const auto *list : {&message.certificates, &message.issuers})
        if (const auto found = std::find_if(list->begin(), list->end(), isIt); found != list->end())
            return &*found;
    return nullptr;
}

const AttributeRecord *attributeOf(const SignerInfoCtx &signer, karil::Bytes oid) {
    const AttributeRecord *each = signer.attributes;
    while (each != nullptr && !std::ranges::equal(bytesOf(each->oid), oid))
        each = each->next;
    return each;
}

// The library looks at the signature of the attributes alone; that they are the content's is told here.
Check checkDigest(const SignerInfoCtx &signer, const Message &message, const EVP_MD *digest) {
    const AttributeRecord *held = attributeOf(signer, KARIL_OID_MESSAGE_DIGEST);
    const AttributeRecord *type = attributeOf(signer, KARIL_OID_CONTENT_TYPE);
    if (held == nullptr || type == nullptr)
        return {"digest", false, "the attributes do not tell digest and content type"};
    if (!std::ranges::equal(elementOf(bytesOf(type->value)).content, message.contentType))
        return {"digest", false, "the attributes are those of another content type"};
    const bool isGood = std::ranges::equal(elementOf(bytesOf(held->value)).content, digestOf(digest, message.content));
    return {"digest", isGood, oidName(bytesOf(signer.digestAlgorithm.oid))};
}

template <class Set, class Callable>
karil::StatusCode setHook(Set set, SignerInfoCtx &signer, const karil::Hook<Callable> &hook) {
    using Hook = karil::Hook<Callable>;
    return set(&signer, Hook::function(), hook.parameter(), static_cast<std::int32_t>(Hook::size()));
}

Check checkSigner(SignerInfoCtx &signer, const EVP_MD *digest, const karil::Certificate &certificate) {
    const std::string algorithm = oidName(bytesOf(signer.digestEncAlgorithm.oid));
    const KeyPtr key = publicKeyOf(partsOf(certificate).publicKey);
    if (!key || EVP_PKEY_get_base_id(key.get()) != EVP_PKEY_RSA || algorithm == "RSASSA-PSS")
        throw Failure{Exit::Unreadable, inWords(KACERT_InvalidSignatureAlgErr, "a signer with " + algorithm)};
    // Nothing may be thrown through the library.
    const auto digesting = [&](karil::Bytes input, std::uint8_t *output, std::uint32_t &length) -> std::int32_t {
        const bool isDone = EVP_Digest(input.data(), input.size(), output, &length, digest, nullptr) == 1;
        return isDone ? KACERT_Ok : KAPKCS7_DigestAlgErr;
    };
    // libcrypto looks at the modulus alone for how much it writes, and takes none above 16,384 bits.
    const auto opening = [&](karil::Bytes input, std::uint8_t *output, std::uint32_t &length) -> std::int32_t {
        std::array<std::uint8_t, 16384 / 8> opened{};
        std::size_t size = opened.size();
        const std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> ctx(EVP_PKEY_CTX_new(key.get(), nullptr),
                                                                              EVP_PKEY_CTX_free);
        const bool isOpened = ctx && EVP_PKEY_get_bits(key.get()) <= 16384 &&
                              EVP_PKEY_verify_recover_init(ctx.get()) == 1 &&
                              EVP_PKEY_CTX_set_rsa_padding(ctx.get(), RSA_PKCS1_PADDING) == 1 &&
                              EVP_PKEY_verify_recover(ctx.get(), opened.data(), &size, input.data(), input.size()) == 1;
        ERR_clear_error();
        if (!isOpened || size > length)
            return KACERT_VerifySignatureErr;
        std::copy_n(opened.begin(), size, output);
        length = static_cast<std::uint32_t>(size);
        return KACERT_Ok;
    };
    check(setHook(KA_PKCS7_SetSignerInfoDigestFunc, signer, karil::Hook(digesting)), "the signer");
    check(setHook(KA_PKCS7_SetSignerInfoDecSignFunc, signer, karil::Hook(opening)), "the signer");
    std::int32_t verdict = PKCS7_VERDICT_BAD;
    const karil::StatusCode status = KA_PKCS7_VerifySignerSignature(&signer, &verdict);
    if (status != karil::StatusCode(KACERT_VerifySignatureErr))
        check(status, "the signer");
    return {"signature", status && verdict == PKCS7_VERDICT_GOOD, algorithm};
}

// The certificate in a list that is a good issuer of another.
const karil::Certificate *above(const std::vector<karil::Certificate> &list, const karil::Certificate &certificate) {
    const Element issuer = partsOf(certificate).issuer;
    const auto found = std::find_if(list.begin(), list.end(), [&](const karil::Certificate &each) {
        return isSameName(partsOf(each).subject, issuer) && areGood(checkCertificate(certificate, each));
    });
    return found == list.end() ? nullptr : &*found;
}

// From the signer's certificate up to one that is trusted, by way of those in the message.
Check checkChain(const Message &message, const karil::Certificate &first) {
    constexpr int longest = 10;
    const karil::Certificate *current = &first;
    std::string words = nameText(partsOf(first).subject);
    for (int i = 0; i < longest; ++i) {
        const bool isTrusted = std::any_of(message.issuers.begin(), message.issuers.end(),
                                           [&](const karil::Certificate &each) { return isSame(each, *current); });
        if (isTrusted)
            return {"chain", true, words};
        const karil::Certificate *next = above(message.issuers, *current);
        if (next == nullptr)
            next = above(message.certificates, *current);
        if (next == nullptr || isSame(*next, *current))
            break;
        current = next;
        words += " < " + nameText(partsOf(*current).subject);
    }
    return {"chain", false, words + " is under none of the issuers"};
}

bool verifySigner(Printer &printer, SignerInfoCtx &signer, const Element &whole, const Message &message) {
    const Elements id(Elements(whole.content)[1].content);
    printer.field("issuer", nameText(id[0]));
    printer.field("serial number", hex(magnitudeOf(id[1])));
    const karil::Certificate *certificate = certificateOf(message, whole);
    if (certificate == nullptr) {
        showChecks(printer, {{"certificate", false, "it is neither in the message nor an issuer"}});
        return false;
    }
    printer.field("subject", nameText(partsOf(*certificate).subject));
    const EVP_MD *digest = digestNamed(bytesOf(signer.digestAlgorithm.oid));
    if (digest == nullptr)
        throw Failure{Exit::Unreadable, inWords(KAPKCS7_DigestAlgErr, oidName(bytesOf(signer.digestAlgorithm.oid)))};
    Checks checks;
    if (signer.attributesSet != 0)
        checks.push_back(checkDigest(signer, message, digest));
    checks.push_back(checkSigner(signer, digest, *certificate));
    checks.push_back(checkDates(*certificate));
    if (!message.issuers.empty())
        checks.push_back(checkChain(message, *certificate));
    showChecks(printer, checks);
    if (message.issuers.empty())
        printer.field("chain", std::string("not judged without --issuer"));
    return areGood(checks);
}

} // namespace

bool verifyMessage(Printer &printer, const Document &document, const VerifyOptions &options,
                   const std::vector<karil::Certificate> &issuers) {
    const auto decoded = valueOf(karil::SignedData::make(), document.file);
    check(karil::call(KA_PKCS7_DecodeSignedData, decoded, document.octets), document.file);
    Message message{bytesOf(decoded->contentType.oid), bytesOf(decoded->content), {}, issuers};
    const bool isData = std::ranges::equal(message.contentType, KARIL_OID_DATA);
    // Of other types the content is a whole element, whose header is not digested.
    if (!isData && !message.content.empty())
        message.content = elementOf(message.content).content;
    karil::Octets named;
    if (!options.content.empty()) {
        if (!message.content.empty())
            throw Failure{Exit::Misuse, document.file + " holds its content: leave --content out"};
        named = readFile(options.content);
        message.content = named;
    } else if (message.content.empty())
        throw Failure{Exit::Misuse, document.file + " does not hold its content: name it with --content FILE"};
    std::int64_t unreadable = 0;
    for (const Anybuf *each = decoded->certificates; each != nullptr; each = each->next) {
        karil::Certificate certificate = valueOf(karil::Certificate::make(), document.file);
        if (karil::call(KACert_DecodeCert, certificate, bytesOf(*each)))
            message.certificates.push_back(std::move(certificate));
        else
            ++unreadable;
    }
    if (unreadable > 0)
        printer.field("certificates that cannot be read", unreadable);
    bool isGood = decoded->signerInfos != nullptr;
    const Anybuf *whole = decoded->signerSet;
    const Printer::Level signers = printer.list("signers");
    for (SignerInfoCtx *signer = decoded->signerInfos; signer != nullptr && whole != nullptr; signer = signer->next) {
        if (!named.empty())
            check(karil::call(KA_PKCS7_SetSignerInfoAttributeChar, signer, PKCS7_SIGNER_CONTENT, named), "the content");
        const Printer::Level one = printer.item();
        isGood = verifySigner(printer, *signer, elementOf(bytesOf(*whole)), message) && isGood;
        whole = whole->next;
    }
    return isGood;
}

} // namespace tool
