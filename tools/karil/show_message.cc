// PKCS#7 messages of any type.
#include "show.h"

#include "decoded.h"
#include "names.h"
#include "text.h"

namespace tool {
namespace {

template <class Ctx>
Ctx decoded(const Shown &to, std::int32_t (*decode)(typename Ctx::Ctx *, const std::uint8_t *, std::int32_t),
            karil::Bytes der) {
    Ctx object = valueOf(Ctx::make(), to.where);
    check(karil::call(decode, object, der), to.where);
    return object;
}

// IssuerAndSerialNumber, the second element of signers and recipients.
void showIssuerAndSerial(Printer &printer, const Element &whole) {
    const Elements fields(Elements(whole.content)[1].content);
    showName(printer, "issuer", fields[0]);
    printer.field("serial number", hex(magnitudeOf(fields[1])));
}

// `whole`: the signers as the message has them, in the order of the records.
void showSigners(Printer &printer, const SignerInfoCtx *first, const Anybuf *whole) {
    const Printer::Level list = printer.list("signers");
    for (; first != nullptr && whole != nullptr; first = first->next, whole = whole->next) {
        const Printer::Level one = printer.item();
        showIssuerAndSerial(printer, elementOf(bytesOf(*whole)));
        printer.field("digest algorithm", Identifier{bytesOf(first->digestAlgorithm.oid)});
        printer.field("signature algorithm", Identifier{bytesOf(first->digestEncAlgorithm.oid)});
        showAttributes(printer, "attributes", first->attributes);
        showAttributes(printer, "unauthenticated attributes", first->unAttributes);
    }
}

void showRecipients(Printer &printer, const RecipientInfoCtx *first, const Anybuf *whole) {
    const Printer::Level list = printer.list("recipients");
    for (; first != nullptr && whole != nullptr; first = first->next, whole = whole->next) {
        const Printer::Level one = printer.item();
        showIssuerAndSerial(printer, elementOf(bytesOf(*whole)));
        printer.field("key encryption algorithm", Identifier{bytesOf(first->keyEncryptionAlgorithm.oid)});
    }
}

void showContent(Printer &printer, karil::Bytes type, karil::Bytes content) {
    printer.field("content type", Identifier{type});
    printer.field("content octets", static_cast<std::int64_t>(content.size()));
}

void showCipher(Printer &printer, const EncryptedContentCtx *content) {
    if (content == nullptr)
        return;
    printer.field("content type", Identifier{bytesOf(content->contentType.oid)});
    printer.field("cipher", Identifier{bytesOf(content->encryptionAlgorithm.oid)});
    printer.field("cipher text octets", std::int64_t{content->encryptedContent.length});
}

// What SignedData and SignedAndEnvelopedData have in common.
template <class Ctx> void showSigned(const Shown &to, const Ctx &message) {
    std::vector<std::string> digests;
    for (const DigestAlgorithmNode *each = message.digestAlgorithms; each != nullptr; each = each->next)
        digests.push_back(oidName(bytesOf(each->oid)));
    to.printer.words("digest algorithms", digests);
    showEach(to, "certificates", message.certificates, showCertificate);
    showEach(to, "CRLs", message.crls, showRevocationList);
    showSigners(to.printer, message.signerInfos, message.signerSet);
}

void showType(Printer &printer, const char *type, std::uint32_t version) {
    printer.field("type", std::string(type));
    printer.field("version", std::int64_t{version});
}

} // namespace

void showMessage(const Shown &to, karil::Bytes der) {
    Printer &printer = to.printer;
    karil::Octets content(der.size());
    std::uint32_t length = 0;
    std::int32_t type = 0;
    check(karil::call(KA_PKCS7_DecodePKCS7DerTypeData, der, content.data(), &length, &type), to.where);
    switch (type) {
    case PKCS7_TYPE_DATA: {
        const auto message = decoded<karil::Data>(to, KA_PKCS7_DecodePKCS7Data, der);
        printer.field("type", std::string("data"));
        printer.field("content octets", std::int64_t{message->content.length});
        return;
    }
    case PKCS7_TYPE_SIGNEDDATA: {
        const auto message = decoded<karil::SignedData>(to, KA_PKCS7_DecodeSignedData, der);
        showType(printer, "signedData", message->version);
        showContent(printer, bytesOf(message->contentType.oid), bytesOf(message->content));
        return showSigned(to, *message.get());
    }
    case PKCS7_TYPE_ENVELOPEDDATA: {
        const auto message = decoded<karil::EnvelopedData>(to, KA_PKCS7_DecodePKCS7EnvelopedData, der);
        showType(printer, "envelopedData", message->version);
        showRecipients(printer, message->recipients, message->recipientSet);
        return showCipher(printer, message->encryptedContent);
    }
    case PKCS7_TYPE_SIGNEDANDENVELOPEDDATA: {
        const auto message = decoded<karil::SignedAndEnvelopedData>(to, KA_PKCS7_DecodeSignedAndEnvelopedData, der);
        showType(printer, "signedAndEnvelopedData", message->version);
        showRecipients(printer, message->recipients, message->recipientSet);
        showCipher(printer, message->encryptedContent);
        return showSigned(to, *message.get());
    }
    case PKCS7_TYPE_DIGESTEDDATA: {
        const auto message = decoded<karil::DigestedData>(to, KA_PKCS7_DecodePKCS7DigestedData, der);
        showType(printer, "digestedData", message->version);
        printer.field("digest algorithm", Identifier{bytesOf(message->digestAlgorithm.oid)});
        printer.field("digest", hex(bytesOf(message->digest)));
        return showContent(printer, bytesOf(message->contentType.oid), bytesOf(message->content));
    }
    case PKCS7_TYPE_ENCRYPTEDDATA: {
        const auto message = decoded<karil::EncryptedData>(to, KA_PKCS7_DecodePKCS7EncryptedData, der);
        showType(printer, "encryptedData", message->version);
        return showCipher(printer, message->encryptedContent);
    }
    default:
        throw Failure{Exit::Unreadable, inWords(KAPKCS7_ContentTypeErr, to.where)};
    }
}

} // namespace tool
