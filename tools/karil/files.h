// Files and pipes: what is read, and the PEM in it; what is written.
#ifndef KARIL_TOOL_FILES_H
#define KARIL_TOOL_FILES_H

#include "failure.h"

#include <string>
#include <string_view>
#include <vector>

namespace tool {

// One object out of a file.
struct Document {
    karil::Octets octets;
    std::string label; // of its PEM block; empty for DER
    std::string file;  // its name, as messages show it; with several blocks "NAME, block 2"
};

// The name of a file in messages: "-" is standard input.
std::string nameOf(const std::string &path);

// Everything in a file; "-" is standard input.
karil::Octets readFile(const std::string &path);

// The objects in a file: each PEM block, with text around it skipped, or else the DER that the file is.
std::vector<Document> readDocuments(const std::string &path);

// The objects in octets that were read already; `file` names them.
std::vector<Document> documentsOf(karil::Octets octets, const std::string &file);

// The one object in a file that a command wants one of.
Document readDocument(const std::string &path);

std::string pemText(karil::Bytes der, std::string_view label);

// Who may read a file that is written. A private one has mode 0600 from its creation on, whatever the umask.
enum class Mode { Public, Private };
// Whether a file that is there may be written over.
enum class Existing { Replace, Refuse };

// Writes a file: a new one beside it takes its place when it is whole. "-" and "" are standard output.
void writeFile(const std::string &path, karil::Bytes octets, Mode mode, Existing existing = Existing::Replace);

} // namespace tool

#endif
