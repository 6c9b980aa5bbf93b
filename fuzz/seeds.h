// The seeds of the fuzz targets. Each function fills the folder of one target, or of a few that share objects.
#pragma once

#include "fuzz.h"

#include <filesystem>
#include <fstream>

namespace karil_fuzz {

struct Folder {
    std::filesystem::path path;
    int count = 0;

    void add(Bytes seed) {
        std::ofstream file(path / std::to_string(count++), std::ios::binary);
        file.write(reinterpret_cast<const char *>(seed.data()), static_cast<std::streamsize>(seed.size()));
        must(file.good(), "a seed can be written");
    }
    void add(std::initializer_list<uint8_t> front, Bytes rest) {
        Octets seed(front);
        seed.insert(seed.end(), rest.begin(), rest.end());
        add(seed);
    }
};

// Two characters in code page 936.
inline constexpr char Beijing[] = "\xB1\xB1\xBE\xA9";

inline Octets repeated(std::string_view text, size_t count) {
    Octets all;
    while (count-- > 0)
        all.insert(all.end(), text.begin(), text.end());
    return all;
}

void addCertificates(Folder certificates, Folder &elements, Folder names);
void addPrograms(Folder programs);
void addCrls(Folder crls);
void addRequests(Folder requests);
void addSigned(Folder objects);
void addKeys(Folder keys);

void addOddElements(Folder &elements);
void addTexts(Folder texts);
void addOids(Folder oids);
void addPem(Folder texts);
void addDnStrings(Folder texts);
void addIndefinite(Folder elements);

void addOcsp(Folder messages);
void addOcspPrograms(Folder programs);
void addSigners(Folder signers);
void addMessages(Folder messages);
void addMessagePrograms(Folder programs);

void addPkcs12Crypt(Folder inputs);
void addBags(Folder bags);
void addPfx(Folder files, Folder safes, Folder programs);
void addForeign(Folder inputs);

} // namespace karil_fuzz
