// The certificates that the sweeps run on.
#pragma once

#include "cert_support.h"

namespace karil_test {

// A value for every id of KACert_SetCertAttributeChar but the names as DER, critical flags behind their values.
struct Setting {
    int32_t id;
    Octets value;
};
const std::vector<Setting> &everySetting();

// The ids that KACert_GetCertAttributeChar answers.
const std::vector<int32_t> &queries();

Octets shortCertificate(); // what fillCert() sets
Octets fullCertificate();  // every setting, and private extensions
// Those of the system and the library's own.
std::vector<Octets> allCertificates();

} // namespace karil_test
