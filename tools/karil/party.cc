#include "party.h"

#include "decoded.h"

namespace tool {

Party partyOf(const Document &document) {
    const karil::Certificate cert = decodeCertificate(document.octets, document.file);
    const auto get = [&](std::int32_t id) {
        return valueOf(karil::ask(KACert_GetCertAttributeChar, cert, id), document.file);
    };
    return {document.file, document.octets, get(CERT_ISSUER_DERDN), get(CERT_SERIALNUMBER),
            get(CERT_SUBJECTPUBLICKEYINFO)};
}

KeyedParty readKeyedParty(const std::string &certificate, const std::string &key) {
    KeyedParty keyed{readParty(certificate), readKey(key)};
    checkBelongs(keyed.key.get(), keyed.party.publicKey, keyed.party.file);
    return keyed;
}

std::vector<Party> readChain(const std::string &path) {
    std::vector<Party> chain;
    if (!path.empty())
        for (const Document &document : readDocuments(path))
            chain.push_back(partyOf(document));
    return chain;
}

} // namespace tool
