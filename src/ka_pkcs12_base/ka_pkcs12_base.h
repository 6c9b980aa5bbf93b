// MacData and the parameters of password-based encryption, for the folders that write and read them as parts.
#pragma once

#include "karil/pkcs12_mac.h"

#include "ka_family.h"

namespace karil {

// PBEParameter ::= SEQUENCE { salt OCTET STRING, iterations INTEGER }
void writeParameter(Writer &out, Bytes salt, uint32_t iterations);
// The salt is borrowed. Exactly one element.
[[nodiscard]] Status readParameter(const Element &element, Bytes &salt, uint32_t &iterations);

// MacData ::= SEQUENCE { mac DigestInfo, macSalt OCTET STRING, iterations INTEGER DEFAULT 1 }
void initMac(MacRecord &mac); // of a zeroed record
// Runs the hook.
[[nodiscard]] Status writeMac(Writer &out, MacRecord &mac);
// Stores what was read; of a kept element the records hold parts. Neither the hook nor `verified` is touched.
[[nodiscard]] Status readMac(const Element &element, MacRecord &mac);
// Runs the hook and stores in `verified` whether it makes the digest.
[[nodiscard]] Status checkMac(MacRecord &mac);
// Forgets what decoding stores: `verified`, algorithm, digest, salt, iterations.
void forgetMac(MacRecord &mac);
// Frees all that the record holds.
void clearMac(MacRecord &mac);

} // namespace karil
