// A small authority in a folder:
//
//     authority.key     its private key, mode 0600
//     authority.pem     its certificate
//     index.json        what it issued and revoked, and the number of its last CRL
//     issued/SERIAL.pem each certificate that it issued
//     crl.pem           its last CRL
#ifndef KARIL_TOOL_AUTHORITY_H
#define KARIL_TOOL_AUTHORITY_H

#include "key.h"

#include <map>
#include <optional>
#include <string>

namespace tool {

// A certificate in the index, under its serial number in upper-case hexadecimal digits.
struct Issued {
    std::string subject;
    std::int64_t notAfter = 0;
    std::optional<std::int64_t> revoked; // when
    std::uint8_t reason = 0;             // a CRLReason
};

class Authority {
public:
    // Makes the folder; a Failure if there is an authority in it. `certificate`: in DER.
    static void create(const std::string &folder, EVP_PKEY *key, karil::Bytes certificate);

    // Opens the folder and keeps it locked, so that other runs wait until this one has ended.
    explicit Authority(const std::string &folder);
    ~Authority();
    Authority(const Authority &) = delete;
    Authority &operator=(const Authority &) = delete;

    // Replaces index.json.
    void save() const;

    std::string path(const std::string &file) const { return folder + "/" + file; }
    // A certificate of the index; a Failure if there is none.
    Issued &find(const std::string &serial);

    KeyPtr key;
    karil::Octets certificate;
    karil::Octets keyId; // its subject key identifier
    karil::Octets name;  // its subject, a whole Name
    std::int64_t notAfter = 0;
    std::map<std::string, Issued> issued;
    std::uint64_t crlNumber = 0;

private:
    void load();

    std::string folder;
    int lock;
};

} // namespace tool

#endif
