#include "samples.h"

namespace karil_test {

const std::vector<Setting> &everySetting() {
    static const std::vector<Setting> settings = [] {
        std::vector<Setting> all;
        for (const Row &row : rowsOf("Samples", "EverySetting"))
            for (const auto &[id, value] : row.settings("settings")) all.push_back({std::stoi(id), value});
        return all;
    }();
    return settings;
}

const std::vector<int32_t> &queries() {
    static const std::vector<int32_t> ids = [] {
        std::vector<int32_t> all;
        const CertPtr ctx = newCert();
        uint32_t length = 0;
        for (int32_t id = 0; id <= 600; ++id)
            if (KACert_GetCertAttributeChar(ctx.get(), id, nullptr, &length) == KACERT_Ok) all.push_back(id);
        return all;
    }();
    return ids;
}

Octets shortCertificate() {
    const CertPtr ctx = newCert();
    fillCert(ctx);
    return encoded(ctx);
}

Octets fullCertificate() {
    const CertPtr ctx = newCert();
    for (const Setting &setting : everySetting()) setChar(ctx, setting.id, setting.value);
    KACert_SetCertAttributeInt(ctx.get(), CERT_VERSION, 2);
    KACert_SetCertAttributeInt(ctx.get(), CERT_VALIDFROM, 1577836800); // 2020-01-01 UTC
    KACert_SetCertAttributeInt(ctx.get(), CERT_VALIDTO, 1893456000);   // 2030-01-01 UTC
    const Octets oid = hex("2A 03 05");
    const Octets value = text("value");
    for (const int32_t type : {4, 19})
        KACert_SetCertAttributePrivate_ForValue(ctx.get(), oid.data(), 3, 1, value.data(), 5, type);
    KACert_SetCertSignFunc(ctx.get(), fixedSignature, nullptr, 0);
    return encoded(ctx);
}

std::vector<Octets> allCertificates() {
    std::vector<Octets> all = systemCertificates();
    all.push_back(shortCertificate());
    all.push_back(fullCertificate());
    return all;
}

} // namespace karil_test
