// OCSP requests and responses, in the dialect of karil/ocsp.h.
#include "show.h"

#include "decoded.h"
#include "extensions.h"
#include "names.h"
#include "text.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace tool {
namespace {

constexpr std::string_view Hint = " (karil reads the OCSP messages of karil alone: see karil/ocsp.h)";

// Decoding a response leaves a file in the working directory (KI_DecodeBasicResponse): for as long as this lives, that
// is a new folder, which goes with it.
class Elsewhere {
public:
    Elsewhere() : before(open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        std::error_code failed;
        folder = std::filesystem::temp_directory_path(failed) / "karil.XXXXXX";
        if (before < 0 || mkdtemp(folder.data()) == nullptr || chdir(folder.c_str()) != 0)
            throw Failure{Exit::Unreadable, "no temporary folder can be made"};
    }
    ~Elsewhere() {
        (void)!fchdir(before);
        close(before);
        std::error_code failed;
        std::filesystem::remove_all(folder, failed);
    }
    Elsewhere(const Elsewhere &) = delete;
    Elsewhere &operator=(const Elsewhere &) = delete;

private:
    int before;
    std::string folder;
};

void showIdentity(Printer &printer, const OcspCertId &identity) {
    printer.field("serial number", hex(bytesOf(identity.serialNumber)));
    printer.field("hash algorithm", Identifier{bytesOf(identity.hashAlgorithm.oid)});
    printer.field("issuer name hash", hex(bytesOf(identity.hashedName)));
    printer.field("issuer key hash", hex(bytesOf(identity.hashedKey)));
}

void showSignature(const Shown &to, const OcspSignature &signature) {
    to.printer.field("signature algorithm", Identifier{bytesOf(signature.algorithm.oid)});
    showEach(to, "certificates", signature.certs.next, showCertificate);
}

void showExtensionsOf(Printer &printer, const OcspExtension &extensions) {
    if (extensions.hasNonce != 0)
        printer.field("nonce", hex(bytesOf(extensions.nonce)));
    if (extensions.hasArchiveCutoff != 0)
        printer.field("archive cutoff", Moment{extensions.archiveCutoff.utcValue});
    if (extensions.hasCrlId != 0)
        printer.field("CRL", karil::textOf(bytesOf(extensions.crlId.url)));
}

// Of a revoked certificate, whose status the library refuses, the octets tell when and why.
void showStatus(Printer &printer, const ResponseListCtx &single, const Element &status) {
    constexpr std::uint8_t revoked = TagContext0 + 1;
    if (status.tag == revoked) {
        const Elements parts(status.content);
        printer.field("status", std::string("revoked"));
        if (const auto seconds = secondsOf(parts[0]))
            printer.field("revoked", Moment{*seconds});
        const Element reason = elementOf(parts[1].content);
        if (reason.content.size() == 1)
            printer.field("reason", reasonName(reason.content[0]));
        return;
    }
    printer.field("status", std::string(single.isGood != 0 ? "good" : "unknown"));
    if (single.isUnknown != 0)
        printer.field("information", fromLocal(bytesOf(single.information)));
}

void showSingleRequest(const Shown &to, karil::Bytes der) {
    const auto single = valueOf(karil::OcspRequestList::make(), to.where);
    check(karil::call(KA_OCSP_DecodeRequestList, single, der), to.where);
    showIdentity(to.printer, single->certId);
}

void showSingleResponse(const Shown &to, karil::Bytes der) {
    const auto single = valueOf(karil::OcspResponseList::make(), to.where);
    const karil::StatusCode status = karil::call(KA_OCSP_DecodeResponseList, single, der);
    const Elements fields(elementOf(der).content);
    const bool isRevoked = fields[1].tag == TagContext0 + 1;
    if (!isRevoked)
        check(status, to.where);
    showIdentity(to.printer, single->certId);
    showStatus(to.printer, *single.get(), fields[1]);
    if (const auto seconds = secondsOf(fields[2]))
        to.printer.field("this update", Moment{*seconds});
    if (const auto seconds = secondsOf(elementOf(fields[3].content)))
        to.printer.field("next update", Moment{*seconds});
}

} // namespace

void showOcspRequest(const Shown &to, karil::Bytes der) {
    Printer &printer = to.printer;
    const auto request = valueOf(karil::OcspRequest::make(), to.where);
    check(karil::call(KA_OCSP_DecodeRequest, request, der), to.where + std::string(Hint));
    printer.field("version", std::int64_t{request->version} + 1);
    for (const Element &field : Elements(elementOf(bytesOf(request->tbs)).content))
        if (field.tag == TagContext0 + 1)
            showName(printer, "requestor", elementOf(field.content));
    showExtensionsOf(printer, request->extensions);
    showEach(to, "requests", request->requests.next, showSingleRequest);
    if (request->isSigned != 0)
        showSignature(to, request->signature);
}

void showOcspResponse(const Shown &to, karil::Bytes der) {
    constexpr std::array<const char *, 7> answers = {"successful", "malformedRequest", "internalError", "tryLater",
                                                     "status 4",   "sigRequired",      "unauthorized"};
    Printer &printer = to.printer;
    const auto response = valueOf(karil::OcspResponse::make(), to.where);
    {
        const Elsewhere folder;
        check(karil::call(KA_OCSP_DecodeResponse, response, der), to.where + std::string(Hint));
    }
    const karil::Bytes status = bytesOf(response->status);
    const bool isKnown = status.size() == 1 && status[0] < answers.size();
    printer.field("response status", isKnown ? answers[status[0]] : "status " + hex(status));
    if (response->hasBody == 0)
        return;
    const OcspBasicResponse &basic = response->basic;
    printer.field("type", Identifier{bytesOf(response->type)});
    const Elements fields(elementOf(bytesOf(basic.signedOctets)).content);
    for (const Element &field : Elements(fields[1].content))
        if (field.tag == TagSequence)
            showName(printer, "responder", field);
        else
            printer.field("responder key hash", hex(field.content));
    if (const auto seconds = secondsOf(fields[2]))
        printer.field("produced at", Moment{*seconds});
    showExtensionsOf(printer, basic.data.extensions);
    showEach(to, "responses", basic.data.responses.next, showSingleResponse);
    showSignature(to, basic.signature);
}

} // namespace tool
