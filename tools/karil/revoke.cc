// karil revoke, karil crl.
#include "authority.h"
#include "command.h"
#include "dates.h"
#include "der_write.h"
#include "options.h"
#include "party.h"
#include "text.h"

#include <algorithm>
#include <cctype>
#include <ctime>
#include <memory>
#include <unistd.h>

namespace tool {
namespace {

// The reasons of RFC 5280 5.3.1 that are for good, and for certificates such as these.
constexpr std::uint8_t Reasons[] = {0, 1, 2, 3, 4, 5, 9};
constexpr std::uint8_t Unspecified = 0;

std::vector<std::string> reasonNames() {
    std::vector<std::string> names;
    for (const std::uint8_t reason : Reasons)
        names.push_back(reasonName(reason));
    return names;
}

// A serial number as the index has it: of a certificate's file, or as it was typed, with colons or without.
std::string serialOf(const std::string &argument, const Authority &authority) {
    if (argument == "-" || access(argument.c_str(), F_OK) == 0) {
        const Party party = readParty(argument);
        if (!isSame(party.issuer, authority.name))
            throw Failure{Exit::Misuse, party.file + ": another authority has issued this certificate"};
        return hex(party.serial);
    }
    std::string serial;
    for (const char character : argument) {
        if (isxdigit(static_cast<unsigned char>(character)) != 0)
            serial += static_cast<char>(toupper(static_cast<unsigned char>(character)));
        else if (character != ':' && character != ' ')
            throw Failure{Exit::Misuse, argument + " is neither a file nor a serial number"};
    }
    return serial;
}

struct RevokeOptions {
    std::string folder;
    std::string certificate;
    std::string reason = reasonName(Unspecified);
};

Exit revoke(const RevokeOptions &options) {
    Authority authority(options.folder);
    const std::string serial = serialOf(options.certificate, authority);
    Issued &issued = authority.find(serial);
    if (issued.revoked)
        throw Failure{Exit::Misuse, serial + " was revoked on " + timeText(*issued.revoked)};
    issued.revoked = time(nullptr);
    issued.reason = *std::ranges::find_if(Reasons, [&](auto reason) { return reasonName(reason) == options.reason; });
    authority.save();
    say("revoked " + serial + "; the next list will have it", options.folder);
    return Exit::Good;
}

karil::Octets octetsOfHex(const std::string &digits) {
    karil::Octets octets;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        octets.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return octets;
}

// Big-endian, without leading zeros.
karil::Octets magnitude(std::uint64_t number) {
    karil::Octets octets;
    for (; number != 0; number >>= 8)
        octets.insert(octets.begin(), static_cast<std::uint8_t>(number));
    return octets;
}

void addEntry(CrlEncodeCtx *list, const std::string &serial, const Issued &issued, const std::string &what) {
    check(karil::call(KACert_SetCrlAttributeChar, list, CRL_CERT_SERIALNUMBER, octetsOfHex(serial)), what);
    check(KACert_SetCrlAttributeInt(list, CRL_CERT_REVOCATIONDATE, static_cast<std::int32_t>(*issued.revoked)), what);
    // RFC 5280 5.3.1: the reason "unspecified" is left out.
    if (issued.reason != Unspecified)
        check(KACert_SetCrlAttributeChar(list, CRLEX_CRLREASON, &issued.reason, 1), what);
}

karil::Octets makeList(const Authority &authority, const Validity &validity, const Digest &digest) {
    const std::string what = "the new list";
    CrlEncodeCtx *made = nullptr;
    check(karil::call(KACert_CreateCrlEncodeCtx_Ex, &made, authority.certificate), what);
    const karil::RevocationList list(made);
    const std::pair<std::int32_t, std::int32_t> numbers[] = {
        {CRL_VERSION, 1}, {CRL_THISUPDATE, validity.from}, {CRL_NEXTUPDATE, validity.to}};
    for (const auto &[id, value] : numbers)
        check(karil::call(KACert_SetCrlAttributeInt, list, id, value), what);
    const karil::Octets number = magnitude(authority.crlNumber);
    const std::pair<std::int32_t, karil::Bytes> values[] = {{CRL_INNER_SIGNATUREALGORITHM, digest.withRsa},
                                                            {CRL_OUTER_SIGNATUREALGORITHM, digest.withRsa},
                                                            {CRLEX_CRLNUMBER, number}};
    for (const auto &[id, value] : values)
        check(karil::call(KACert_SetCrlAttributeChar, list, id, value), what);
    for (const auto &[serial, issued] : authority.issued)
        if (issued.revoked)
            addEntry(list.get(), serial, issued, what);
    Signs signs{authority.key.get(), &digest};
    setHook(KACert_SetCrlSignFunc, list.get(), signs, what);
    const DatesInUtc utc;
    return valueOf(karil::ask(KACert_EncodeCrl, list), what);
}

struct CrlOptions {
    std::string folder;
    int days = daysUpTo(30);
    std::string digest;
    std::string out;
};

Exit makeCrl(const CrlOptions &options) {
    const Validity validity = validFor(options.days);
    Authority authority(options.folder);
    ++authority.crlNumber;
    const karil::Octets list = makeList(authority, validity, digestByName(options.digest));
    // A number that was counted and not used does no harm; one that was used twice would.
    authority.save();
    writePem(authority.path("crl.pem"), list, Kind::RevocationList);
    if (!options.out.empty())
        writePem(options.out, list, Kind::RevocationList);
    const auto count =
        std::ranges::count_if(authority.issued, [](const auto &entry) { return entry.second.revoked.has_value(); });
    say("list " + std::to_string(authority.crlNumber) + ": " + std::to_string(count) +
            " revoked, the next one is due " + timeText(validity.to),
        options.out.empty() ? options.folder : options.out);
    return Exit::Good;
}

} // namespace

void addRevoke(CLI::App &app, Run &run) {
    const auto options = std::make_shared<RevokeOptions>();
    CLI::App *command = app.add_subcommand("revoke", "Revokes a certificate that an authority has issued");
    command->add_option("CERT", options->certificate, "The certificate's file, or its serial number")->required();
    addFolder(*command, options->folder);
    command->add_option("--reason", options->reason, "Why")->check(CLI::IsMember(reasonNames()))->capture_default_str();
    command->callback([options, &run] { run = [options] { return revoke(*options); }; });
}

void addCrl(CLI::App &app, Run &run) {
    const auto options = std::make_shared<CrlOptions>();
    CLI::App *command = app.add_subcommand("crl", "Writes an authority's next list of revoked certificates");
    addFolder(*command, options->folder);
    addDays(*command, options->days, "When the list after it is due");
    addDigest(*command, options->digest);
    command->add_option("-o,--out", options->out, "Another file for it; it always goes to crl.pem in the folder");
    command->callback([options, &run] { run = [options] { return makeCrl(*options); }; });
}

} // namespace tool
