#include "party.h"

#include "decoded.h"

namespace tool {

Party partyOf(const Document &document) {
    const karil::Certificate cert = decodeCertificate(document.octets, document.file);
    const auto get = [&](std::int32_t id) {
        return valueOf(karil::ask(KACert_GetCertAttributeChar, cert, id), document.file);
    };
    Party party{document.file, document.octets, get(CERT_ISSUER_DERDN), get(CERT_SERIALNUMBER), nullptr};
    if (KeyPtr key = publicKeyOf(partsOf(cert).publicKey); isUsable(key.get()))
        party.publicKey = std::move(key);
    return party;
}

bool belongs(EVP_PKEY *key, const Party &party) {
    return party.publicKey != nullptr && EVP_PKEY_eq(key, party.publicKey.get()) == 1;
}

KeyedParty readKeyedParty(const std::string &certificate, const KeyFile &key) {
    KeyedParty keyed{readParty(certificate), readKey(key)};
    if (!belongs(keyed.key.get(), keyed.party))
        throw Failure{Exit::Misuse, keyed.party.file + ": the key is not that of this certificate"};
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
