// Options that several commands have, and what they write alike.
#ifndef KARIL_TOOL_OPTIONS_H
#define KARIL_TOOL_OPTIONS_H

#include "files.h"
#include "key.h"
#include "kind.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace tool {

// --bits: of a key that is made.
void addBits(CLI::App &command, int &bits);
// --key and --key-password-file.
void addKeyFile(CLI::App &command, KeyFile &key, const std::string &what);
// --digest: of a signature. `digest` becomes the one that is taken by default.
void addDigest(CLI::App &command, std::string &digest);
// --days: `days` holds those that are taken by default.
void addDays(CLI::App &command, int &days, const std::string &help);
// --dns.
void addDnsNames(CLI::App &command, std::vector<std::string> &names, const std::string &help);
// --authority.
void addFolder(CLI::App &command, std::string &folder);
// --password-file.
void addPasswordFile(CLI::App &command, std::string &file);
// -o, --out: `what` is written. Standard output is taken by default.
void addOut(CLI::App &command, std::string &out, const std::string &what);

// The same for a message, with --der.
void addMessageOut(CLI::App &command, std::string &out, bool &isDer);

// Writes an object as PEM, with the mode that its kind needs.
void writePem(const std::string &path, karil::Bytes der, Kind kind, Existing existing = Existing::Replace);

// Writes a message as PEM, or as DER.
void writeMessage(const std::string &path, karil::Bytes der, bool isDer);

// Says on standard output what was done, unless what was made went there.
void say(const std::string &words, const std::string &out);

} // namespace tool

#endif
