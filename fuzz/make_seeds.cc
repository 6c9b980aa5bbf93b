// Writes what the fuzzer starts from: make_seeds FOLDER fills FOLDER/TARGET for each target.
#include "seeds.h"

using namespace karil_fuzz;

int main(int count, char **arguments) {
    must(count == 2, "usage: make_seeds FOLDER");
    const auto folder = [&](const char *target) {
        const std::filesystem::path path = std::filesystem::path(arguments[1]) / target;
        std::filesystem::create_directories(path);
        return Folder{path};
    };
    Folder elements = folder("asn1_readers");
    addCertificates(folder("cert_decode"), elements, folder("names"));
    addOddElements(elements);
    addTexts(folder("text"));
    addOids(folder("oid_text"));
    addPrograms(folder("cert_build"));
    addCrls(folder("crl"));
    addRequests(folder("csr"));
    addOcsp(folder("ocsp"));
    addOcspPrograms(folder("ocsp_build"));
    addSigned(folder("verify"));
    addKeys(folder("keys"));
    addPem(folder("pem"));
    addPfx(folder("pfx"), folder("auth_safe"), folder("pfx_build"));
    addDnStrings(folder("dn_string"));
    addIndefinite(folder("indefinite"));
    addSigners(folder("signers"));
    addMessages(folder("messages"));
    addBags(folder("pkcs12_bags"));
    addPkcs12Crypt(folder("pkcs12_crypt"));
    addForeign(folder("pkcs12_foreign"));
    addMessagePrograms(folder("messages_build"));
    return 0;
}
