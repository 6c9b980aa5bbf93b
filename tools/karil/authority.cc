#include "authority.h"

#include "dates.h"
#include "decoded.h"
#include "options.h"
#include "party.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {
namespace {

constexpr int IndexFormat = 1;

void makeFolder(const std::string &path) {
    if (mkdir(path.c_str(), 0777) != 0 && errno != EEXIST)
        throw Failure{Exit::Unreadable, path + " cannot be made: " + std::strerror(errno)};
}

nlohmann::json jsonOf(const Issued &issued) {
    nlohmann::json entry{{"subject", issued.subject}, {"notAfter", issued.notAfter}};
    if (issued.revoked) {
        entry["revoked"] = *issued.revoked;
        entry["reason"] = issued.reason;
    }
    return entry;
}

Issued issuedOf(const nlohmann::json &entry) {
    Issued issued{entry.at("subject").get<std::string>(), entry.at("notAfter").get<std::int64_t>(), {}, 0};
    if (entry.contains("revoked")) {
        issued.revoked = entry.at("revoked").get<std::int64_t>();
        issued.reason = entry.at("reason").get<std::uint8_t>();
    }
    return issued;
}

bool isSerial(std::string_view text) {
    return !text.empty() && text.size() % 2 == 0 &&
           text.find_first_not_of("0123456789ABCDEF") == std::string_view::npos;
}

void writeIndex(const std::string &path, const std::map<std::string, Issued> &issued, std::uint64_t crlNumber,
                Existing existing) {
    nlohmann::json index{{"format", IndexFormat}, {"crlNumber", crlNumber}, {"issued", nlohmann::json::object()}};
    for (const auto &[serial, entry] : issued)
        index["issued"][serial] = jsonOf(entry);
    const std::string text = index.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
    writeFile(path, karil::bytesOf(text), Mode::Public, existing);
}

} // namespace

void Authority::create(const std::string &folder, EVP_PKEY *key, karil::Bytes certificate) {
    makeFolder(folder);
    makeFolder(folder + "/issued");
    // The key comes first: where there is one, the folder is left as it is.
    writeKey(folder + "/authority.key", key, false);
    writePem(folder + "/authority.pem", certificate, Kind::Certificate, Existing::Refuse);
    writeIndex(folder + "/index.json", {}, 0, Existing::Refuse);
}

Authority::Authority(const std::string &where)
    : folder(where), lock(open(where.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (lock < 0)
        throw Failure{Exit::Unreadable, folder + " is no authority's folder: " + std::strerror(errno)};
    try {
        while (flock(lock, LOCK_EX) != 0)
            if (errno != EINTR)
                throw Failure{Exit::Unreadable, folder + " cannot be locked: " + std::strerror(errno)};
        load();
    } catch (...) {
        close(lock);
        throw;
    }
}

Authority::~Authority() {
    close(lock);
}

void Authority::load() {
    const std::string file = path("authority.pem");
    KeyedParty own = readKeyedParty(file, {path("authority.key"), ""});
    key = std::move(own.key);
    certificate = std::move(own.party.certificate);
    const DatesInUtc utc;
    const karil::Certificate cert = decodeCertificate(certificate, file);
    const auto get = [&](std::int32_t id) { return valueOf(karil::ask(KACert_GetCertAttributeChar, cert, id), file); };
    keyId = get(CERTEX_SUBJECTKEYIDENTIFIER);
    name = get(CERT_SUBJECT_DERDN);
    notAfter = dateOf(cert, CERT_VALIDTO);

    const std::string indexFile = path("index.json");
    const karil::Octets text = readFile(indexFile);
    try {
        const nlohmann::json index = nlohmann::json::parse(text);
        if (index.at("format").get<int>() != IndexFormat)
            throw Failure{Exit::Unreadable, indexFile + ": of a format that this version does not know"};
        crlNumber = index.at("crlNumber").get<std::uint64_t>();
        for (const auto &[serial, entry] : index.at("issued").items()) {
            if (!isSerial(serial))
                throw Failure{Exit::Unreadable, std::string(indexFile).append(": no serial number: ").append(serial)};
            issued[serial] = issuedOf(entry);
        }
    } catch (const nlohmann::json::exception &damage) {
        throw Failure{Exit::Unreadable, indexFile + ": " + damage.what()};
    }
}

void Authority::save() const {
    writeIndex(path("index.json"), issued, crlNumber, Existing::Replace);
}

Issued &Authority::find(const std::string &serial) {
    const auto found = issued.find(serial);
    if (found == issued.end())
        throw Failure{Exit::Misuse, "this authority has issued no certificate with the serial number " + serial};
    return found->second;
}

} // namespace tool
