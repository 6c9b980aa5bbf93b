#include "ka_name.h"

namespace karil {

namespace {

constexpr uint8_t Country[] = {0x55, 0x04, 0x06};
constexpr uint8_t Organization[] = {0x55, 0x04, 0x0A};
constexpr uint8_t OrganizationalUnit[] = {0x55, 0x04, 0x0B};
constexpr uint8_t CommonName[] = {0x55, 0x04, 0x03};
constexpr uint8_t Email[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x09, 0x01};
constexpr uint8_t StateOrProvince[] = {0x55, 0x04, 0x08};
constexpr uint8_t Locality[] = {0x55, 0x04, 0x07};
constexpr uint8_t PostalAddress[] = {0x55, 0x04, 0x10};
constexpr uint8_t PostalCode[] = {0x55, 0x04, 0x11};
constexpr uint8_t Telephone[] = {0x55, 0x04, 0x14};

constexpr NameAttribute Attributes[NameKinds] = {
    {KA_NAME_COUNTRY, WireString::Printable, Country, "C="},
    {KA_NAME_ORGANIZATION, WireString::ByContent, Organization, "O="},
    {KA_NAME_ORGANIZATIONALUNIT, WireString::ByContent, OrganizationalUnit, "OU="},
    {KA_NAME_COMMONNAME, WireString::ByContent, CommonName, "CN="},
    {KA_NAME_EMAIL, WireString::Ia5, Email, "E="},
    {KA_NAME_STATEORPROVINCE, WireString::ByContent, StateOrProvince, "S="},
    {KA_NAME_LOCALITY, WireString::ByContent, Locality, "L="},
    {KA_NAME_POSTALADDRESS, WireString::ByContent, PostalAddress, "PA="},
    {KA_NAME_POSTALCODE, WireString::ByContent, PostalCode, "PC="},
    {KA_NAME_TELEPHONE, WireString::Printable, Telephone, "Phone="},
};

} // namespace

std::span<const NameAttribute, NameKinds> nameAttributes() {
    return Attributes;
}

const NameAttribute *attributeOfKind(uint32_t kind) {
    for (const NameAttribute &attribute : Attributes)
        if (attribute.kind == kind)
            return &attribute;
    return nullptr;
}

const NameAttribute *attributeOfOid(Bytes oid) {
    for (const NameAttribute &attribute : Attributes)
        if (equal(attribute.oid, oid))
            return &attribute;
    return nullptr;
}

} // namespace karil
