// Seeds of elements, texts and identifiers: what needs no object of any family.
#include "seeds.h"

namespace karil_fuzz {
namespace {

// Texts on both sides of a limit: 1,024 octets in code page 936 and in UTF-8.
void addLongTexts(Folder &texts) {
    for (const size_t count : {341u, 342u, 512u, 513u}) {
        texts.add({0}, repeated("\xB1\xB1", count));
        texts.add({1}, repeated("\x53\x17", count));
        texts.add({2}, repeated("\x53\x17", count));
        texts.add({3}, repeated("\xE5\x8C\x97", count));
        texts.add({4}, repeated("\xB1\xB1", count));
        texts.add({5}, repeated("\xE5\x8C\x97", count));
    }
}

} // namespace

// What no certificate has: headers in unusual forms, times, flags, numbers.
void addOddElements(Folder &elements) {
    const std::string_view odd[] = {{"\x30\x80\x02\x05", 4},
                                    {"\x30\x81\x03\x02\x01\x05", 6},
                                    {"\x1F\x81\x01\x05", 4},
                                    {"\x9F\x01\x81\x01\x05", 5},
                                    {"\x02\x03\x00\x81\x02", 5},
                                    {"\x01\x01\xFF", 3},
                                    {"\x02\x05\x01\x02\x03\x04", 6},
                                    {"\x31\x03\x02\x01\x05", 5},
                                    {"\x30\x84\x00\x00\x00\x00", 6},
                                    {"\x18\x0D"
                                     "300101000000Z",
                                     15}};
    for (const std::string_view element : odd)
        for (const uint8_t tag : Octets{0, 2, 3, 16, 17, 24})
            elements.add({tag, 3, 2}, bytesOf(element));
}

void addTexts(Folder texts) {
    addLongTexts(texts);
    const std::string_view samples[] = {"plain ASCII",
                                        Beijing,
                                        "\x80\xA2\xE3\xAA\xA1\xFE\xA0\xFF\x81",
                                        {"\x53\x17\x4E\xAC\x20\xAC\xE0\x00\x00\x61\x03\x01", 12},
                                        {"\xD8\x3D\xDE\x00\xDC\x00\xD8\x00", 8},
                                        "\xE5\x8C\x97\xE4\xBA\xAC\xF0\x9F\x98\x80\xC2\xED\xA0\x80"};
    for (uint8_t direction = 0; direction < 6; ++direction)
        for (const std::string_view sample : samples) {
            texts.add({direction}, bytesOf(sample));
            texts.add({direction}, repeated(sample, 40));
        }
}

void addOids(Folder oids) {
    for (const std::string_view oid :
         {"1.2.840.113549.1.1.5", "0.39", "1.40.1", "2.999 3", "2.5.29.4294967295", "1..2"})
        oids.add(bytesOf(oid));
    // More octets than there is room for, good and bad.
    Octets arcs = repeated("1.2.", 600);
    arcs.push_back('x');
    oids.add(arcs);
    arcs.back() = '1';
    oids.add(arcs);
}

// A certificate's size of octets as text, plain and in two blocks, and texts that bend the rules.
void addPem(Folder texts) {
    const Octets der = repeated("\x30\x82\xFF", 400);
    Octets pem(2000);
    uint32_t size = 0;
    must(DER2PEM_data_format(der.data(), sizeOf(der), pem.data(), &size, "-----BEGIN X-----", "-----END X-----") == 0,
         "a seed can be encoded");
    pem.resize(size);
    texts.add(pem);
    texts.add(repeated({reinterpret_cast<const char *>(pem.data()), 70}, 2));
    for (const std::string_view text :
         {"QUJD", "QUI=QUJ ", "QQ==", " UJD", "-----A-----\nQUJD\n-", "QUJD-", "-----A--"})
        texts.add(bytesOf(text));
}

void addDnStrings(Folder texts) {
    for (const std::string_view text :
         {"C=CN,O=o,OU=a,OU=b,CN=n,E=e,S=s,L=l,PA=p,PC=1,Phone=2,IDCard=3", "OU=a,CN=n,OU=b", "CN=,,C=O=x,cn=", "="})
        texts.add(bytesOf(text));
    texts.add(repeated("OU=x,", 206));
}

// Elements around octets that the scan passes over, on both sides of a limit; `depth` openings and closings.
void addIndefinite(Folder elements) {
    for (const size_t size : {1u, 122u, 250u, 251u, 252u, 253u, 254u, 510u})
        for (const size_t depth : {1u, 2u, 3u, 5u}) {
            Octets element = repeated("\x30\x80", depth);
            const uint8_t header[] = {0x04, 0x82, static_cast<uint8_t>(size >> 8), static_cast<uint8_t>(size)};
            element.insert(element.end(), header, header + 4);
            element.insert(element.end(), size + 2 * (depth - 1), 0x55);
            std::fill(element.end() - static_cast<long>(2 * (depth - 1)), element.end(), uint8_t{0});
            const uint8_t behind[] = {2, 1, 5, 0, 0};
            element.insert(element.end(), behind, behind + 5);
            elements.add(element);
            elements.add({0x31, 0x82, 0x02, 0x00}, element);
        }
    elements.add({0x30, 0x80, 0x04, 0x03, 0, 0, 0, 0, 0}, {});
    elements.add({0x30, 0x03, 0x02, 0x01, 0x05}, {});
    elements.add({0x31, 0x06, 0x04, 0x04, 0x30, 0x80, 0x00, 0x00}, {});
    elements.add({0x30, 0x80, 0, 0, 0, 0, 0xA0, 0x80, 0x30, 0x80, 0, 0, 0, 0}, {});
}

} // namespace karil_fuzz
