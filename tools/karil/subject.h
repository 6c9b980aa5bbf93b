// Names as they are typed: a subject in one line, DNS names.
#ifndef KARIL_TOOL_SUBJECT_H
#define KARIL_TOOL_SUBJECT_H

#include "failure.h"

#include <string>
#include <vector>

namespace tool {

// An attribute of a name. `place`: counted from the family's id of the country, CERT_SUBJECT_COUNTRYNAME for one.
struct NamePart {
    std::int32_t place;
    karil::Octets text; // code page 936
};

// What --subject takes, for its help.
extern const char *const SubjectHelp;

// Reads "C=CN,O=Example,CN=www.example.com". A backslash takes the next character as it is.
std::vector<NamePart> readSubject(const std::string &text);

// Sets the parts one by one. `country`: the family's id of the country.
template <class Set, class Handle>
void setName(Set set, const Handle &handle, std::int32_t country, const std::vector<NamePart> &parts) {
    for (const NamePart &part : parts)
        check(karil::call(set, handle, country + part.place, part.text), "the subject", Exit::Misuse);
}

// A SubjectAltName (RFC 5280 4.2.1.6) with DNS names. A Failure for what is none.
karil::Octets dnsAltNames(const std::vector<std::string> &names);

// The attributes of a request (RFC 2986 4.1) that ask for a SubjectAltName, and the names that such attributes ask for.
karil::Octets requestForNames(karil::Bytes altNames);
std::vector<std::string> requestedNames(karil::Bytes attributes);

} // namespace tool

#endif
